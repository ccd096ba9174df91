"""C++ sources as far as planting faults needs them: what is code, where literals and statements stand.

Not a parser: it relies on the shape that clang-format gives the sources (braces around every branch, blanks around
binary operators, none around template brackets).
"""

import re
from dataclasses import dataclass, field

_TOKENS = re.compile(
    r"""(?P<comment>//[^\n]*|/\*.*?\*/)
      | (?P<raw>\b(?:L|u8|u|U)?R"(?P<fence>[^(\s]*)\(.*?\)(?P=fence)")
      | (?P<text>(?:\b(?:L|u8|u|U))?"(?:\\.|[^"\\\n])*")
      | (?P<character>(?:\b(?:L|u8|u|U))?'(?:\\.|[^'\\\n])+')
      | (?P<directive>^[ \t]*\#(?:\\\n|[^\n])*)
      | (?P<number>\b\d(?:[\w.]|'(?=\w))*)""",
    re.VERBOSE | re.DOTALL | re.MULTILINE,
)

_TYPE_BRACE = re.compile(r"(?:^|[;{}\s])(?:namespace|class|struct|union|enum|extern)\b[^;{}()]*$")
_BLOCK_BRACE = re.compile(r"(?:\)|\]|\b(?:const|noexcept|override|mutable|try|else|do)|\)\s*->\s*[\w:<>&* ]+)\s*$")
_LABEL = re.compile(r"\s*(?:(?:case\s+(?:[^:;{}]|::)+|default|public|private|protected)\s*:(?!:)\s*)+")


@dataclass(frozen=True)
class Span:
    start: int
    end: int


@dataclass(frozen=True)
class Statement(Span):
    """A statement that ends in a semicolon, semicolon included; statements of one block share the block's number."""

    block: int


@dataclass
class CppSource:
    text: str
    code: str = ""  # the text with comments, literals and directives blanked out: the same places, nothing to stumble on
    texts: list = field(default_factory=list)
    characters: list = field(default_factory=list)
    numbers: list = field(default_factory=list)
    statements: list = field(default_factory=list)

    def __post_init__(self):
        self._blank()
        self._find_statements()

    def _blank(self):
        blanked = list(self.text)
        for token in _TOKENS.finditer(self.text):
            kind = token.lastgroup if token.lastgroup != "fence" else "raw"
            if kind == "number":
                self.numbers.append(Span(*token.span()))
                continue
            if kind in ("text", "character"):
                getattr(self, kind + "s").append(Span(*token.span()))
            filler = "0" if kind in ("text", "raw", "character") else " "
            for place in range(*token.span()):
                if blanked[place] != "\n":
                    blanked[place] = filler
        self.code = "".join(blanked)

    def _find_statements(self):
        start = 0
        depth = 0  # of parentheses and of the braces of initializers
        braces = []
        block = 0
        blocks = [block]
        for place, character in enumerate(self.code):
            if character in "([":
                depth += 1
            elif character in ")]":
                depth -= 1
            elif character == "{":
                before = self.code[start:place]
                if _TYPE_BRACE.search(before):
                    kind = "type"
                elif _BLOCK_BRACE.search(before) or _LABEL.fullmatch(before) or not before.strip():
                    kind = "block"
                else:
                    kind = "value"
                braces.append((kind, depth, start))
                if kind == "value":
                    depth += 1
                else:
                    depth = 0
                    start = place + 1
                    block += 1
                    blocks.append(block if kind == "block" else -block)
            elif character == "}" and braces:
                kind, depth, outer = braces.pop()
                if kind != "value":
                    blocks.pop()
                    # Behind a lambda's body the statement that holds it goes on.
                    start = outer if depth else place + 1
            elif character == ";" and depth == 0:
                if blocks[-1] > 0:
                    self._add_statement(start, place + 1, blocks[-1])
                start = place + 1

    def _add_statement(self, start, end, block):
        label = _LABEL.match(self.code, start, end)
        start = label.end() if label else start
        start += len(self.code[start:end]) - len(self.code[start:end].lstrip())
        if end - start > 1:
            self.statements.append(Statement(start, end, block))

    def closing(self, opening):
        """The place of the bracket that closes the one at `opening`."""
        depth = 0
        for place in range(opening, len(self.code)):
            depth += self.code[place] in "([{"
            depth -= self.code[place] in ")]}"
            if depth == 0:
                return place
        raise ValueError(f"nothing closes the bracket at {opening}")

    def line_of(self, place):
        return self.text.count("\n", 0, place) + 1
