"""Checks that what the pages of the user guide quote stands so in the program, and that they explain every line of the
log and name all that the windows show.

In the guide bold text is what a window shows, and code is a file, a line of one, or something to type. Each of them
must be found among the texts of the sources, or in the lists below.
"""

import re
import sys
from pathlib import Path

ROOT = Path(__file__).resolve().parent.parent.parent
PAGES = [ROOT / "docs" / "user-guide.md", ROOT / "docs" / "operating.md"]
INSTALLER = [ROOT / "packaging" / "installer.nsi", *sorted((ROOT / "packaging").glob("*.nsh"))]
PACKAGES = ROOT / "packaging" / "make_packages.sh"
FOLDERS = ["core", "config", "mib", "trap", "ui"]

# Example in the guide: the text of the sources that it is an example of.
EXAMPLES = {
    "FROM: 10.1.2.3": "       FROM: ",
    "[3]": "---> [",
    "TAG 0x80": "TAG 0x",
    "TAG 0x81": "TAG 0x",
    "mibs": "\\mibs",
}

# Not texts of the program: what a record shows of others' data, the language of MIB files, and what Windows is told.
FOREIGN = {
    "2026-03-07 09:05:02.047",
    "1.3.6.1.2.1.2.2.1.1.3",
    "1.3.6.1.2.1.1.3.0",
    "1.3.6.1.6.3.1.1.4.1.0",
    "1.3.6.1.6.3.1.1.5.3",
    "(ifIndex-3)",
    "-3",
    ".3",
    "3",
    # Made of single characters in the sources.
    "0x",
    "...",
    ".",
    "-",
    "_",
    "sysDescr",
    "IfEntry ::= SEQUENCE {",
    "SYNTAX",
    "SYNTAX OBJECT IDENTIFIER",
    "NOTIFICATION-TYPE",
    "OBJECT-GROUP",
    "MODULE-COMPLIANCE",
    "OBJECT-IDENTITY",
    "{ enterprises 2021 }",
    "{ iso org(3) dod(6) internet(1) }",
    "{ mib-2 1 3 }",
    "my-names.mib",
    "standard-names.mib",
    "%LOCALAPPDATA%\\Quillmont",
    "remoteip=192.0.2.0/24",
    "/S",
    "/D=C:\\Program Files\\Network\\Quillmont",
    "C:\\Program Files",
    "wf.msc",
    # The scheduled task, the place for what starts at sign-in, and the scripts.
    "keep-days.ps1",
    "Traps",
    "%USERPROFILE%\\Traps",
    "/IT",
    'schtasks /Run /TN "Quillmont days"',
    'schtasks /Delete /TN "Quillmont days"',
    "shell:startup",
    "NAME",
    "ReadLine",
    "traps.awk",
    "awk -f traps.awk SNMP.txt",
}

CXX_LITERAL = re.compile(r'(?:L|u8)?"((?:[^"\\]|\\.)*)"')
ESCAPES = {"r": "\r", "n": "\n", "t": "\t", "0": "\0", "\\": "\\", '"': '"'}


def unescape(text):
    text = re.sub(r"\\[ux]([0-9A-Fa-f]{2,4})", lambda match: chr(int(match[1], 16)), text)
    return re.sub(r"\\(.)", lambda match: ESCAPES.get(match[1], match[1]), text)


def sources():
    for folder in FOLDERS:
        for path in sorted((ROOT / "src" / folder).glob("*.cpp")):
            yield path, path.read_text(encoding="utf-8")


def literals(code):
    code = re.sub(r"//[^\n]*|#include[^\n]*", "", code)
    return [unescape(text) for text in CXX_LITERAL.findall(code)]


def installer_code():
    return "".join(path.read_text(encoding="utf-8") for path in INSTALLER)


def installer_texts():
    text = installer_code().replace("${PROGRAM}", "Quillmont.exe")
    return [found.removeprefix("un.").removeprefix("!") for found in re.findall(r'"([^"\n]*)"', text)]


def names_of_the_table():
    """The objects that standard-names.mib names, which the guide tells."""
    table = (ROOT / "packaging" / "standard_names.txt").read_text(encoding="utf-8")
    return set(re.findall(r"^(\w+) ", table, re.M))


def installer_switches():
    """Those that take yes or no."""
    code = installer_code()
    return {*re.findall(r"!insertmacro TickingSwitch (\w+)", code), *re.findall(r'\$Word == "/(\w+)=yes"', code)}


def log_texts():
    """The texts from which log lines are made: what the log is called with, and in files that call it with
    something composed, every text that begins like a sentence."""
    texts = set()
    for path, code in sources():
        calls = re.findall(r"\b(?:LogMessage|AppendLogLine)\((.*?)\);", code, re.S)
        for call in calls:
            texts.update(text for text in literals(call) if len(text) > 1)
        composed = any(not CXX_LITERAL.fullmatch(call) for call in calls)
        if composed and path.parent.name != "ui":
            texts.update(text for text in literals(code) if re.match(r"[A-Z]\w+.* ", text))
        if composed and path.parent.name == "ui":
            texts.update(text for text in literals(code) if text.endswith("."))
    return texts


def segments(texts):
    """What a window shows of a text: the status lines are filled up with blanks."""
    parts = set()
    for text in texts:
        parts.update(part.strip() for part in re.split(r"\s{2,}|\||\r\n|\0", text))
    return parts


def window_texts():
    """The texts of all controls and the titles of the tool windows, and the parts of the status lines that are words."""
    rows = "".join(path.read_text(encoding="utf-8") for path in sorted((ROOT / "src" / "ui").glob("*.cpp")))
    texts = {unescape(text) for text in re.findall(r'\.(?:text|title) = L"((?:[^"\\]|\\.)*)"', rows)}
    assert not re.search(r'\.(?:text|title) = (?!L")', rows), "a text of a window that is no literal was not read"
    status = segments(literals((ROOT / "src" / "ui" / "status_text.cpp").read_text(encoding="utf-8")))
    return texts | {text for text in status if re.match(r"\(?\w{2}", text)}


def prose_and_code(guide):
    """The guide without its fenced blocks, and without and with its pieces of code."""
    prose = re.sub(r"^```.*?^```$", "", guide, flags=re.M | re.S)
    code = [re.sub(r"\s+", " ", found) for found in re.findall(r"`([^`]+)`", prose)]
    return re.sub(r"`[^`]+`", "", prose), code


def is_known_code(piece, texts, switches):
    if piece in FOREIGN:
        return True
    if piece in EXAMPLES:
        return EXAMPLES[piece] in texts and piece.startswith(EXAMPLES[piece].strip().strip("\\->").strip())
    switch = re.fullmatch(r"/(\w+)=(yes|no)", piece)
    if switch:
        return switch[1] in switches
    # A file is quoted without the folder that the program puts in front of it.
    return any(piece in (text, text.strip(), text.lstrip("\\"), text.rpartition("\\")[2]) for text in texts)


def main():
    guide = "\n".join(page.read_text(encoding="utf-8") for page in PAGES)
    prose, code = prose_and_code(guide)
    bold = [re.sub(r"\s+", " ", found) for found in re.findall(r"\*\*(.+?)\*\*", prose, re.S)]
    program_texts = [text for _, source in sources() for text in literals(source)]
    files = re.findall(r'/([\w.-]+\.\w+)"', PACKAGES.read_text()) + ["SHA256SUMS"]
    texts = set(program_texts) | set(installer_texts()) | set(files) | names_of_the_table()
    faults = []

    shown = segments(texts)
    faults += [f"no window shows: {text}" for text in bold if text not in shown]
    switches = installer_switches()
    faults += [f"not in the sources: {piece}" for piece in code if not is_known_code(piece, texts, switches)]
    explained = {piece.strip() for piece in code}
    faults += [f"log line not explained: {text}" for text in sorted(log_texts()) if text.strip() not in explained]
    faults += [f"listed but not in the guide: {text}" for text in [*FOREIGN, *EXAMPLES] if text not in code]

    windows = window_texts()
    faults += [f"shown by a window and not in the guide: {text}" for text in sorted(windows - set(bold))]

    pictures = set(re.findall(r"\]\((pictures/[^)]+)\)", guide))
    present = {f"pictures/{path.name}" for path in (ROOT / "docs" / "pictures").glob("*")}
    # The other documents have pictures of their own in the same folder.
    others = "".join(path.read_text(encoding="utf-8") for path in (ROOT / "docs").rglob("*.md") if path not in PAGES)
    unused = [picture for picture in sorted(present - pictures) if picture not in others]
    faults += [f"picture not used: {picture}" for picture in unused]

    assert len(windows) > 20 and len(code) > 80 and len(log_texts()) > 20, "the guide or the sources were not read"
    for fault in faults:
        print(f"the user guide: {fault}")
    print(f"{len(bold)} window texts, {len(code)} other quotations, {len(log_texts())} log texts looked up.")
    return 1 if faults else 0


if __name__ == "__main__":
    sys.exit(main())
