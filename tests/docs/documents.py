"""Reads the Markdown documents of the repository: their fenced blocks, their pieces of code, headings and links."""

import re
import subprocess
from dataclasses import dataclass
from pathlib import Path

ROOT = Path(__file__).resolve().parents[2]
NOT_OURS = {"build", "dist"}
VERSION = subprocess.check_output([ROOT / "packaging" / "read_version.sh"], text=True).strip()

FENCE = re.compile(r"^```(\w*)\n(.*?)^```$", re.M | re.S)
SPAN = re.compile(r"`([^`]+)`")
LINK = re.compile(r"\]\(([^)\s]+)\)")
HEADING = re.compile(r"^#+ (.+)$", re.M)


@dataclass(frozen=True)
class Piece:
    """A piece of a document with the line that it begins in."""

    document: str
    line: int
    text: str

    @property
    def place(self):
        return f"{self.document}:{self.line}"

    def __str__(self):
        return f"{self.place}: {self.text}"


class Document:
    def __init__(self, path):
        self.path = path
        self.name = path.relative_to(ROOT).as_posix()
        self.text = path.read_text(encoding="utf-8")
        # Of the same length, so that positions stay what they are.
        self.prose = FENCE.sub(lambda match: re.sub(r"[^\n]", " ", match[0]), self.text)

    def _piece(self, position, text):
        return Piece(self.name, self.text.count("\n", 0, position) + 1, text)

    def fences(self):
        """(language, piece) of each fenced block; the language is empty when it names none."""
        return [(match[1], self._piece(match.start(2), match[2])) for match in FENCE.finditer(self.text)]

    def spans(self):
        """Each piece of code in running text and tables, on one line."""
        return [
            self._piece(match.start(), re.sub(r"\s+", " ", match[1]).strip())
            for match in SPAN.finditer(self.prose)
        ]

    def links(self):
        return [self._piece(match.start(), match[1]) for match in LINK.finditer(self.prose)]

    def anchors(self):
        """How a link names each heading."""
        return {re.sub(r"[^\w\- ]", "", heading.lower()).replace(" ", "-") for heading in HEADING.findall(self.prose)}


def documents():
    paths = [*ROOT.glob("*.md"), *ROOT.glob("*/*.md"), *ROOT.glob("docs/*/*.md")]
    return [Document(path) for path in sorted(paths) if path.relative_to(ROOT).parts[0] not in NOT_OURS]
