"""Reads the Markdown documents of the repository: their fenced blocks, code spans, headings and links."""

import re
from pathlib import Path

ROOT = Path(__file__).resolve().parents[2]
NOT_OURS = {"build", "dist", ".git"}

FENCE = re.compile(r"^```(\w*)\n(.*?)^```$", re.M | re.S)
SPAN = re.compile(r"`([^`]+)`")
LINK = re.compile(r"\]\(([^)\s]+)\)")
HEADING = re.compile(r"^#+ (.+)$", re.M)


class Document:
    def __init__(self, path):
        self.path = path
        self.name = path.relative_to(ROOT).as_posix()
        self.text = path.read_text(encoding="utf-8")
        self.prose = FENCE.sub("", self.text)

    def blocks(self, language):
        return [text for found, text in FENCE.findall(self.text) if found == language]

    def spans(self):
        """Each code span in running text and tables, on one line."""
        return [re.sub(r"\s+", " ", found).strip() for found in SPAN.findall(self.prose)]

    def links(self):
        return LINK.findall(self.prose)

    def anchors(self):
        """The anchor of each heading, as links name it."""
        return {re.sub(r"[^\w\- ]", "", heading.lower()).replace(" ", "-") for heading in HEADING.findall(self.prose)}


def files():
    """Yields every file of the repository except those that are built."""
    for path in sorted(ROOT.iterdir()):
        if path.name not in NOT_OURS:
            yield from [path] if path.is_file() else sorted(inner for inner in path.rglob("*") if inner.is_file())


def documents():
    return [Document(path) for path in files() if path.suffix == ".md"]
