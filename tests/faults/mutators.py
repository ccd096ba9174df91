"""The kinds of faults: each function yields (start, end, replacement) for every place where its fault can stand."""

import re
from collections import Counter
from dataclasses import replace

from faults.cpp_source import CppSource
from faults.fault import make_fault

_COMPARISONS = {"<": "<=", "<=": "<", ">": ">=", ">=": ">", "==": "!=", "!=": "=="}
_OPERATORS = {
    "+": "-", "-": "+", "*": "/", "/": "*", "%": "/", "<<": ">>", ">>": "<<", "&": "|", "^": "|",
    "&&": "||", "||": "&&", "+=": "-=", "-=": "+=", "/=": "*=", "*=": "/=", "|=": "&=", "&=": "|=",
}  # fmt: skip
_WORDS = {"true": "false", "false": "true", "TRUE": "FALSE", "FALSE": "TRUE", "++": "--", "--": "++"}

_EXPRESSION = re.compile(r"(?:\+\+|--|\*+|\(\*?)?[\w:]+(?:<[\w:]+>)?\s*(?:\(|\.|->|\[|\)|\+\+|--|;|[-+*/%|&^]?=|<<=|>>=)")
_NO_EXPRESSION = re.compile(r"(?:return|throw|break|continue|goto|using|static_assert|delete|else|if|case|do)\b")
# A lock, or another object that is there for its destructor; where it is used again, leaving it out does not compile.
_GUARD = re.compile(r"(?:const\s+)?(?!return\b|throw\b)[\w:]+(?:<[\w:]+>)?\s+\w+\(.*\);", re.DOTALL)
_ROOM = re.compile(r"[\w.>-]+(?:\.|->)reserve\(")  # set aside ahead of time: a matter of time alone
_FLAG = r"\b[A-Z][A-Z0-9]*_[A-Z0-9_]+\b"


def _swap_tokens(source, pattern, table):
    for token in re.finditer(pattern, source.code):
        yield token.start(1), token.end(1), table[token[1]]


def change_comparison(source):
    return _swap_tokens(source, r"(?<=\s)(<|<=|>|>=|==|!=)(?=\s)", _COMPARISONS)


def change_operator(source):
    return _swap_tokens(source, r"(?<=\s)(\+|-|\*|/|%|<<|>>|&|\^|&&|\|\||[-+*/|&]=)(?=\s)", _OPERATORS)


def change_word(source):
    return _swap_tokens(source, r"(\b(?:true|false|TRUE|FALSE)\b|\+\+|--)", _WORDS)


def drop_sign(source):
    """A negation, a complement or a minus left out."""
    for sign in re.finditer(r"(?<![\w)\]])(?!~\w+\(\) )[!~-](?=[\w({])", source.code):
        yield sign.start(), sign.end(), ""


def change_number(source):
    """One more and one less."""
    for number in source.numbers:
        token = re.fullmatch(r"(0[xX][\dA-Fa-f']+|\d[\d']*)([uUlLzZ]*)", source.text[number.start : number.end])
        if token:
            value = int(token[1].replace("'", ""), 0 if token[1][1:2] in "xX" else 10)
            style = "0x{:X}" if token[1][:2].lower() == "0x" else "{}"
            for other in (value + 1, value - 1) if value else (value + 1,):
                yield number.start, number.end, style.format(other) + token[2]


def _other_character(character):
    if character.isalpha():
        return "q" if character in "xX" else "x"
    return "7" if character.isdigit() else "_"


def change_text(source):
    """One character in the middle of a text, or the first one, and the text left empty."""
    for span in source.texts:
        text = source.text[span.start : span.end]
        first = text.index('"') + 1
        places = [first + match.start() for match in re.finditer(r"(?<!\\)[A-Za-z0-9]", text[first:-1])]
        plain = [place for place in places if not re.search(r"\\[A-Za-z0-9]{0,8}$", text[first:place])]
        if plain:
            place = span.start + plain[len(plain) // 2]
            yield place, place + 1, _other_character(source.text[place])
        if len(text) - 1 > first:
            yield span.start + first, span.end - 1, ""


def change_character(source):
    for span in source.characters:
        inner = span.start + source.text[span.start : span.end].index("'") + 1
        if span.end - inner == 2:
            yield inner, inner + 1, _other_character(source.text[inner])


def drop_flag(source):
    """One flag of several, or the only one."""
    alone = rf"(?<=[(,=] ){_FLAG}(?=[,);])|(?<=\(){_FLAG}(?=[,)])"
    for pattern, left in ((rf"{_FLAG} \| ", ""), (rf" \| {_FLAG}(?! \|)", ""), (alone, "0")):
        for flag in re.finditer(pattern, source.code):
            yield flag.start(), flag.end(), left


def _is_expression(source, statement):
    code = source.code[statement.start : statement.end]
    return bool(_EXPRESSION.match(code)) and not _NO_EXPRESSION.match(code)


def drop_statement(source):
    """A call or an assignment left out, a way out of a loop or a function, a lock not taken."""
    for statement in source.statements:
        code = source.code[statement.start : statement.end]
        if _is_expression(source, statement) or _GUARD.fullmatch(code) or code in ("continue;", "break;", "return;"):
            yield statement.start, statement.end, ""


def swap_statements(source):
    """Two neighbours in the opposite order."""
    for first, second in zip(source.statements, source.statements[1:]):
        neighbours = first.block == second.block and not source.code[first.end : second.start].strip()
        if neighbours and _is_expression(source, first) and _is_expression(source, second):
            one, other = (source.code[each.start : each.end] for each in (first, second))
            if _are_independent(one, other):
                continue
            between = source.text[first.end : second.start]
            swapped = source.text[second.start : second.end] + between + source.text[first.start : first.end]
            yield first.start, second.end, swapped


def _are_independent(one, other):
    """Whether both only set a variable, and neither looks at the other's."""
    sets = [re.match(r"(\*?[\w.:>-]+)\s*=\s", statement) for statement in (one, other)]
    return all(sets) and sets[0][1] not in other and sets[1][1] not in one


def change_branch(source):
    """A condition turned round, always true, never true."""
    for keyword in re.finditer(r"\b(if|while)\s*\(", source.code):
        opening = keyword.end() - 1
        closing = source.closing(opening)
        start = max(opening, source.code.rfind(";", opening, closing)) + 1
        start += len(source.code[start:closing]) - len(source.code[start:closing].lstrip())
        if re.match(r"(?:const\s+)?auto\b|const\b", source.code[start:closing]):
            continue  # a declaration
        yield start, closing, f"!({source.text[start:closing]})"
        if keyword[1] == "if":
            yield start, closing, "true"
        yield start, closing, "false"


def swap_choice(source):
    """The two outcomes of "condition ? one : other" in the opposite order."""
    for question in re.finditer(r"(?<=\s)\?(?=\s)", source.code):
        colon = _end_of_operand(source.code, question.end(), ":")
        end = _end_of_operand(source.code, colon + 1, ",;:")
        yes, no = source.text[question.end() : colon].strip(), source.text[colon + 1 : end].strip()
        yield question.end(), end, f" {no} : {yes}"


def _end_of_operand(code, place, ends):
    depth = 0
    while depth > 0 or not (code[place] in ends or code[place] in ")]}") or code[place : place + 2] == "::":
        depth += code[place] in "([{"
        depth -= code[place] in ")]}"
        place += 2 if code[place : place + 2] == "::" else 1
    return place


def change_return(source):
    """Nothing returned in the place of a value."""
    for statement in source.statements:
        value = re.fullmatch(r"return\s+(.+);", source.code[statement.start : statement.end], re.DOTALL)
        if value and not re.fullmatch(r"\{\}|nullptr|0|false|true", value[1]):
            yield statement.start, statement.end, "return {};"


def drop_case(source):
    """A case of a switch that nobody handles any more."""
    for label in re.finditer(r"\bcase\s+(?:[^:;{}]|::)+:(?!:)", source.code):
        yield label.start(), label.end(), ""


MUTATORS = {
    "comparison": change_comparison,
    "operator": change_operator,
    "constant": change_word,
    "sign": drop_sign,
    "number": change_number,
    "text": change_text,
    "character": change_character,
    "flag": drop_flag,
    "statement left out": drop_statement,
    "order": swap_statements,
    "branch": change_branch,
    "choice": swap_choice,
    "return value": change_return,
    "case": drop_case,
}


def find_faults(path, text):
    """Every fault that can be planted into the file, in the order of its lines."""
    source = CppSource(text)
    rooms = [statement for statement in source.statements if _ROOM.match(source.code, statement.start)]
    alike = Counter()
    faults = []
    for kind, mutator in MUTATORS.items():
        for start, end, replacement in mutator(source):
            if any(room.start <= start < room.end or room.start < end <= room.end for room in rooms):
                continue
            fault = make_fault(path, kind, text, start, end, replacement)
            faults.append(replace(fault, occurrence=alike[fault.before, fault.after]))
            alike[fault.before, fault.after] += 1
    return sorted(faults, key=lambda fault: fault.start)
