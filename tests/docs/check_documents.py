"""Checks the links, paths, commands and package names in the documents, and that no file has a placeholder.

Commands are in blocks marked ```sh and in code spans. A script must exist, be executable and know its options.
Presets, targets and filtered tests must exist.
"""

import json
import os
import re
import shlex
import sys

from documents import ROOT, documents, files

PLACEHOLDER = b"PLEASE " + b"FILL IN"
FOLDERS = {path.name for path in ROOT.iterdir() if path.is_dir() and not path.name.startswith(".")} | {"build"}
PATH = re.compile(r"(?:\./)?[\w.*-]+(?:/[\w.*-]+)+/?|\./[\w.]+")


def read_all(paths):
    return "\n".join(path.read_text(encoding="utf-8") for path in paths)


BUILD_FILES = read_all([*ROOT.glob("CMakeLists.txt"), *ROOT.glob("*/CMakeLists.txt"), *ROOT.glob("*/*/CMakeLists.txt")])
TESTS = read_all((ROOT / "tests").rglob("*.cpp"))
PRESETS = json.loads((ROOT / "CMakePresets.json").read_text(encoding="utf-8"))
PRESET_NAMES = {preset["name"] for preset in PRESETS["configurePresets"]}
VERSION = re.search(r"^project\(Quillmont VERSION ([0-9.]+)", BUILD_FILES, re.M)[1]


def is_path(text):
    return PATH.fullmatch(text) and (text.startswith("./") or text.split("/")[0] in FOLDERS)


def split_commands(line):
    """Splits a line into commands at &&, ;, | and brackets, and these into words. Drops comments."""
    lexer = shlex.shlex(line, posix=True, punctuation_chars=True)
    lexer.whitespace_split = True
    commands = [[]]
    for word in lexer:
        if re.fullmatch(r"[();<>|&]+", word):
            commands.append([])
        else:
            commands[-1].append(word)
    return [command for command in commands if command]


def text_of(script):
    """The script and the scripts that it names, as one text."""
    text = script.read_text(encoding="utf-8")
    named = {script.parent / name for name in re.findall(r"[\w/]+\.(?:sh|py)\b", text)}
    return text + read_all(path for path in named if path.is_file())


def faults_of_word(word, scripts):
    if word.startswith("build/"):
        parts = word.rstrip("/").split("/")
        preset, name = parts[1], parts[-1]
        name = name.removesuffix(".exe").removeprefix("quillmont_").removesuffix("_tests")
        if preset not in PRESET_NAMES or (name != preset and name not in BUILD_FILES):
            yield f"nothing builds {word}"
    elif is_path(word):
        path = ROOT / word
        if not path.exists() or (path.suffix == ".sh" and not os.access(path, os.X_OK)):
            yield f"{word} does not exist or is not executable"
    elif word.startswith("--gtest_filter="):
        suite = word.partition("=")[2].partition(".")[0]
        if f"({suite}," not in TESTS:
            yield f"no test is called {suite}"
    elif word.startswith("--") and scripts and word.partition("=")[0] not in scripts:
        yield f"no script here knows {word}"


def faults_of_command(words):
    if "--preset" in words and words[words.index("--preset") + 1] not in PRESET_NAMES:
        yield "no such preset"
    # A script may pass its options on to another script on the same line.
    paths = [ROOT / word for word in words if re.search(r"\.(sh|py)$", word)]
    scripts = "".join(text_of(path) for path in paths if path.is_file())
    for word in words:
        yield from faults_of_word(word, "" if "pytest" in words else scripts)


def commands(document):
    for block in document.blocks("sh"):
        for line in block.splitlines():
            yield from split_commands(line)
    for span in document.spans():
        if is_path(span.split()[0]):
            yield from split_commands(span)


def faults_of_links(document, anchors):
    for link in document.links():
        target, _, anchor = link.partition("#")
        path = (document.path.parent / target).resolve() if target else document.path
        if ":" in target:
            continue
        if not path.exists():
            yield f"link to {link}: no such file"
        elif anchor and anchor not in anchors[path]:
            yield f"link to {link}: no such heading"


def faults_of(document, anchors):
    yield from faults_of_links(document, anchors)
    for words in commands(document):
        if "*" not in words[0]:
            yield from (f"{shlex.join(words)}: {fault}" for fault in faults_of_command(words))
    if document.name != "CHANGELOG.md":
        for version in re.findall(r"Quillmont-(\d+\.\d+\.\d+)", document.text):
            if version != VERSION:
                yield f"names a package of {version}, and this is {VERSION}"


def main():
    found = documents()
    anchors = {document.path: document.anchors() for document in found}
    faults = [f"{document.name}: {fault}" for document in found for fault in faults_of(document, anchors)]
    faults += [f"{path}: a placeholder" for path in files() if PLACEHOLDER in path.read_bytes()]
    checked = sum(len(list(commands(document))) for document in found)
    assert checked > 30, "the documents were not read"
    print("\n".join([*faults, f"{checked} commands and paths of {len(found)} documents checked."]))
    return 1 if faults else 0


if __name__ == "__main__":
    sys.exit(main())
