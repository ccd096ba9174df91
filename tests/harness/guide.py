"""The pages of the user guide and their code blocks."""

import re

from harness.places import ROOT

PAGES = [ROOT / "docs" / f"{name}.md" for name in ("user-guide", "installing", "operating")]
BLOCK = re.compile(r"^```(\w+)\n(.*?)^```$", re.M | re.S)
MARKED = re.compile(r"^<!-- check: ([\w-]+) -->\n```powershell\n(.*?)^```$", re.M | re.S)


def guide():
    return "\n".join(page.read_text(encoding="utf-8") for page in PAGES)


def prose():
    """The pages as one line, so that their line breaks do not matter."""
    return " ".join(guide().split())


def blocks(language):
    """The code blocks in this language, in order."""
    return [text for found, text in BLOCK.findall(guide()) if found == language]


def block_with(language, mark):
    """The first code block in this language that contains the mark."""
    return next(text for text in blocks(language) if mark in text)


def powershell_checks():
    """The PowerShell blocks to be run on Windows, by the names that the pages give them."""
    return dict(MARKED.findall(guide()))
