"""Checks every command, file, link and package that the documents show. Usage: check_commands.py NATIVE_BUILD_FOLDER

Commands stand in blocks marked ```sh (for this repository) and ```bat (for Windows), and as code in running text and
tables. Each is held by tests/docs/commands.py. A block that is marked as neither holds no command.
"""

import re
import shlex
import sys
from functools import partial
from pathlib import Path

from commands import Refused, hold, hold_windows, text_behind
from documents import ROOT, VERSION, documents

SHELL = {"sh"}
WINDOWS = {"bat"}
COMMAND_WORDS = {"cmake", "ctest", "python3", "/usr/bin/python3", "snmptrap", "sudo", "nice", "pytest"}
PATH = re.compile(r"[\w.*-]+(/[\w.*-]+)*/?")


def split_commands(line):
    """The words of each command of a line: comments dropped, cut at &&, ;, |, and brackets."""
    lexer = shlex.shlex(line, posix=True, punctuation_chars=True)
    lexer.whitespace_split = True
    commands = [[]]
    for word in lexer:
        if re.fullmatch(r"[();<>|&]+", word):
            commands.append([])
        else:
            commands[-1].append(word)
    return [command for command in commands if command]


def top_folders():
    return {path.name for path in ROOT.iterdir() if path.is_dir() and not path.name.startswith(".")} | {"build"}


def is_command(text):
    """Whether a piece of code is a command: a script or program of ours, or a known word with something behind it."""
    if not re.fullmatch(r"[\x20-\x7e]+", text):
        return False
    words = text.lstrip("(").split()
    if re.fullmatch(r"[A-Z_]+=\S*", words[0]):
        return len(words) > 1
    first = words[0].removeprefix("./").removesuffix(";")
    if first in COMMAND_WORDS | {"ulimit"}:
        return len(words) > 1
    if words[0].startswith("./") or first.endswith(".sh"):
        return True
    if len(words) > 1:
        return "/" in first and first.split("/")[0] in top_folders()
    return first.startswith("build/") and first.count("/") > 1 and not first.endswith("/")


def is_path(text):
    return PATH.fullmatch(text) and "/" in text and text.split("/")[0] in top_folders()


def shell_lines(document):
    """(piece, line) of each line for a shell, in blocks and in running text."""
    blocks = [block for language, block in document.fences() if language in SHELL]
    lines = [(block, line) for block in blocks for line in block.text.splitlines()]
    return lines + [(span, span.text) for span in document.spans() if is_command(span.text)]


def windows_lines(document):
    blocks = [block for language, block in document.fences() if language in WINDOWS]
    return [(block, line) for block in blocks for line in block.text.splitlines()]


def unmarked_lines(document):
    """The same of commands in blocks that are not marked as holding any."""
    blocks = [block for language, block in document.fences() if language not in SHELL | WINDOWS]
    return [(block, line) for block in blocks for line in block.text.splitlines() if is_command(line.strip())]


def hold_lines(document, build):
    """The number of command lines in the document, and their faults."""
    held = [(piece, words, partial(hold, build=build)) for piece, line in shell_lines(document)
            for words in split_commands(line)]
    held += [(piece, line, hold_windows) for piece, line in windows_lines(document)]
    faults = [f"{piece.place}: not in a block that is marked sh: {line}" for piece, line in unmarked_lines(document)]
    for piece, command, holding in held:
        try:
            holding(command)
        except Refused as refused:
            shown = command if isinstance(command, str) else shlex.join(command)
            faults.append(f"{piece.place}: {shown}: {refused}")
    return len(held), faults


def faults_of_paths(document):
    for span in document.spans():
        text = span.text.replace("NAME", "*")
        if is_path(text) and not text.startswith("build/") and not any(ROOT.glob(text.rstrip("/"))):
            yield f"{span}: is not there"


def faults_of_links(document, anchors):
    for link in document.links():
        target, _, anchor = link.text.partition("#")
        path = (document.path.parent / target).resolve() if target else document.path
        if ":" in target:
            continue
        if not path.exists():
            yield f"{link}: is not there"
        elif anchor and anchor not in anchors[path]:
            yield f"{link}: no such heading"


def faults_of_versions(document):
    """Packages of another version than the one that is made now; the change log may speak of older ones."""
    if document.name == "CHANGELOG.md":
        return
    for number, line in enumerate(document.text.splitlines(), 1):
        for version in re.findall(r"Quillmont-(\d+\.\d+\.\d+)", line):
            if version != VERSION:
                yield f"{document.name}:{number}: names a package of {version}, and this is {VERSION}"


def faults_of_installing():
    """Each shell script of CONTRIBUTING's first table installs what it needs, as the line above the table says."""
    for command in re.findall(r"^\| `(\S+\.sh)", (ROOT / "CONTRIBUTING.md").read_text(encoding="utf-8"), re.M):
        script = ROOT / command
        if script.is_file() and "scripts/packages.sh " not in text_behind(script):
            yield f"CONTRIBUTING.md: {command} does not install what it needs"


def main():
    build = Path(sys.argv[1]).resolve()
    read = documents()
    anchors = {document.path: document.anchors() for document in read}
    faults, count = list(faults_of_installing()), 0
    for document in read:
        held, found = hold_lines(document, build)
        count += held
        faults += [*found, *faults_of_paths(document), *faults_of_links(document, anchors)]
        faults += faults_of_versions(document)
    assert count > 30, "the documents were not read"
    for fault in faults:
        print(fault)
    print(f"{count} commands of {len(read)} documents held.")
    return 1 if faults else 0


if __name__ == "__main__":
    sys.exit(main())
