"""Checks that the guide names all log messages and all texts of the windows, and no others.

Bold text is what a window shows. The first column of the table of log messages has their texts as code.
"""

import re
import sys

from documents import ROOT

PAGES = [ROOT / "docs" / f"{name}.md" for name in ("user-guide", "installing", "operating")]
INSTALLER = [ROOT / "packaging" / "installer.nsi", *sorted((ROOT / "packaging").glob("*.nsh"))]
LITERAL = re.compile(r'(?:L|u8)?"((?:[^"\\\n]|\\.)*)"')

# Texts that need no explanation: a font, a function's name, and texts of Windows' own dialogs.
NOT_IN_THE_GUIDE = re.compile(
    r"Segoe UI|GetOpenFileNameW|Import MIB files|MIB files \(|All files|Alle MIB|Delete MIBs$|Quillmont PRO v"
)


def pieces(texts):
    """The texts without the blanks that line them up; one text can have several pieces."""
    parts = (part.strip() for text in texts for part in re.split(r"\s{2,}|\||\\r|\\n|\\0", text))
    return {part for part in parts if part}


def program_texts():
    texts = []
    for path in sorted((ROOT / "src").rglob("*.cpp")):
        if "platform" not in path.parts:
            code = re.sub(r"//[^\n]*|#include[^\n]*", "", path.read_text(encoding="utf-8"))
            texts += LITERAL.findall(code)
    return pieces(texts)


def installer_texts():
    code = "".join(path.read_text(encoding="utf-8") for path in INSTALLER)
    return {text.removeprefix("un.") for text in LITERAL.findall(code)}


def main():
    guide = "\n".join(page.read_text(encoding="utf-8") for page in PAGES)
    prose = re.sub(r"^```.*?^```$", "", guide, flags=re.M | re.S)
    code = {re.sub(r"\s+", " ", found).strip() for found in re.findall(r"`([^`]+)`", prose)}
    bold = {re.sub(r"\s+", " ", found) for found in re.findall(r"\*\*(.+?)\*\*", re.sub(r"`[^`]+`", "", prose), re.S)}
    table = prose.partition("\n## Log messages\n")[2].partition("\n# ")[0]
    rows = " ".join(re.findall(r"^\| (`.*?) \|", table, re.M))
    messages = {text.strip() for text in re.findall(r"`([^`]+)`", rows)}

    shown = program_texts()
    faults = [f"no window shows: {text}" for text in sorted(bold - shown - installer_texts())]
    faults += [f"no log message: {text}" for text in sorted(messages - shown) if text != "."]
    # Sentences, labels and type names: they begin with a capital and have a small letter in the first word.
    explained = {text for text in shown if re.match(r"[A-Z]\w*[a-z]|log\.txt c|SNMP\.txt c|MIB", text)}
    explained -= {text for text in explained if NOT_IN_THE_GUIDE.match(text)}
    faults += [f"not in the guide: {text}" for text in sorted(explained - bold - code)]

    assert len(bold) > 30 and len(messages) > 25 and len(explained) > 50, "the guide or the sources were not read"
    print("\n".join([*faults, f"{len(bold)} window texts and {len(messages)} parts of log messages found."]))
    return 1 if faults else 0


if __name__ == "__main__":
    sys.exit(main())
