"""Holds the includes between folders against the table and the drawing in docs/architecture.md.

A folder includes itself and what its row's "Knows" names, and every row points the way the drawing does. Portable code
sees the system only through the headers directly in platform/, and asks nowhere which system it is on.
"""

import re
import sys
from pathlib import Path

ROOT = Path(__file__).resolve().parent.parent
PAGE = ROOT / "docs" / "architecture.md"

# Where sources are that do not ship; they may include everything.
NOT_SHIPPED = {"bench", "build", "dist", "fuzz", "tests"}
# The one file that knows everybody, as the page says below its table.
KNOWS_EVERYBODY = "core/win_main.cpp"
# Who may see the system, besides KNOWS_EVERYBODY; of ui/ the pure texts may not.
SEES_WINDOWS = re.compile(r"platform/windows/|ui/(?!(status_text|open_file_names)\.)")
SEES_POSIX = re.compile(r"platform/posix/")


def levels(page):
    """The drawing, from the top: each level a list of folders."""
    drawing = re.search(r"^```\n(.*──►.*)\n```$", page, re.M)[1]
    return [[folder.strip() for folder in level.split(",")] for level in drawing.split("──►")]


def known_folders(page):
    """Each folder of the table: the folders that its row says it knows."""
    known = {}
    for folder, knows in re.findall(r"^\| `(\w+)/` \|[^|]*\| ([^|]*) \|$", page, re.M):
        named = set(re.findall(r"`(\w+)`", knows))
        known[folder] = set(known) if "everything above" in knows else named
    return known


def faults_of_page(page, known):
    drawn = levels(page)
    height = {folder: level for level, folders in enumerate(drawn) for folder in folders}
    present = {path.parts[len(ROOT.parts)] for path in ROOT.glob("*/*.cpp")} | {"platform"}
    for folder in sorted(present - NOT_SHIPPED ^ set(known)):
        yield f"docs/architecture.md: {folder}/ is in the table or in the tree, not in both"
    for folder in sorted(set(height) ^ set(known)):
        yield f"docs/architecture.md: {folder} is in the drawing or in the table, not in both"
    for folder, others in known.items():
        for other in sorted(others):
            if height.get(other, -1) <= height.get(folder, -1):
                yield f"docs/architecture.md: {folder} knows {other}, against the drawing"
    if f"`{KNOWS_EVERYBODY}` is the one file that knows everybody" not in page:
        yield f"docs/architecture.md: does not name {KNOWS_EVERYBODY} as the one file that knows everybody"


def fault_of_include(name, target, known):
    """What is wrong with `name` including "target", or None."""
    folder, other = name.split("/")[0], target.split("/")[0]
    if name == KNOWS_EVERYBODY:
        return None
    if "/" not in target:
        return "an include names its folder"
    if other != folder and other not in known[folder]:
        return f"{folder} knows only {', '.join(sorted(known[folder])) or 'itself'}"
    if target.startswith("platform/windows/") and not SEES_WINDOWS.match(name):
        return "portable code sees only the headers directly in platform/"
    if target.startswith("platform/posix/") and not SEES_POSIX.match(name):
        return "portable code sees only the headers directly in platform/"
    return None


def faults_of_file(name, text, known):
    sees_system = name == KNOWS_EVERYBODY or SEES_WINDOWS.match(name) or SEES_POSIX.match(name)
    for number, line in enumerate(text.splitlines(), 1):
        ours = re.match(r'\s*#\s*include\s*"([^"]+)"', line)
        fault = fault_of_include(name, ours[1], known) if ours else None
        if not sees_system and re.match(r"\s*#\s*include\s*<[^>]*\.h>", line):
            fault = "portable code includes no header of the system or of C"
        if not sees_system and re.match(r"\s*#\s*(if|ifdef|ifndef|elif)\b", line):
            fault = "portable code does not ask which system it is on"
        if fault:
            yield f"{name}:{number}: {line.strip()}: {fault}"


def main():
    page = PAGE.read_text(encoding="utf-8")
    known = known_folders(page)
    faults = list(faults_of_page(page, known))
    files = [path for folder in known for path in sorted((ROOT / folder).rglob("*.*")) if path.suffix in (".cpp", ".h")]
    for path in files:
        name = path.relative_to(ROOT).as_posix()
        faults += faults_of_file(name, path.read_text(encoding="utf-8"), known)
    assert len(files) > 50, "the page or the sources were not read"
    for fault in faults:
        print(fault)
    if not faults:
        print(f"Arrows: {len(files)} files include only what their folder knows.")
    return 1 if faults else 0


if __name__ == "__main__":
    sys.exit(main())
