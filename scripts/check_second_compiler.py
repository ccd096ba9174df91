"""Reads every source of a Windows build with clang as well, warnings as errors: what two compilers take without a word
is likelier to be C++ than what one takes. Also names what a file uses of <algorithm> and <utility> without including
it, which works until another standard library is met.

Usage: check_second_compiler.py BUILD_FOLDER [PATTERN], PATTERN a piece of the wanted sources' paths. Ends with 77 where
there is no clang.
"""

import json
import os
import re
import shlex
import shutil
import subprocess
import sys
from concurrent.futures import ThreadPoolExecutor
from pathlib import Path

ROOT = Path(__file__).resolve().parent.parent
SKIPPED = 77

# Names that have been met without their include; min and max above all.
HEADER_OF = {
    "algorithm": "all_of any_of clamp copy count count_if equal equal_range fill find find_if generate is_sorted "
    "lower_bound max max_element min min_element none_of remove_if replace reverse search sort stable_sort transform "
    "unique upper_bound",
    "utility": "as_const exchange forward make_pair move pair swap",
}


def find_clang():
    numbered = [f"clang++-{number}" for number in range(30, 13, -1)]
    return next(filter(None, map(shutil.which, ["clang++", *numbered])), None)


def include_folders(compiler):
    """Where the build's own compiler finds the system's and the library's headers, but not its own builtin ones."""
    command = [*compiler, "-v", "-E", "-x", "c++", os.devnull]
    text = subprocess.run(command, check=True, capture_output=True, text=True).stderr
    folders = text.split("#include <...> search starts here:")[1].split("End of search list.")[0].split()
    return [folder for folder in folders if not re.search(r"lib/gcc/[^/]*/[^/]*/include(-fixed)?$", folder)]


def clang_command(clang, arguments, source):
    """The build's command as clang takes it: the same definitions, folders and warnings, and no output."""
    compiler = arguments[: next(i for i, a in enumerate(arguments) if a.startswith("-"))]
    kept = []
    rest = iter(arguments[len(compiler) :])
    for argument in rest:
        if argument in ("-o", "-include", "-isystem", "-I", "-D"):
            value = next(rest)
            kept += [argument, value] if argument not in ("-o", "-include") else []
        elif argument not in ("-c", "-Winvalid-pch", str(source)):
            kept.append(argument)
    system = [part for folder in include_folders(compiler) for part in ("-isystem", folder)]
    target = ["--target=x86_64-w64-mingw32", "-nostdinc++", "-fsyntax-only"]
    return [clang, *target, *kept, *system, str(source)]


def our_commands(build, pattern):
    """Each of our sources with its folder and arguments in the build, whatever the libraries beside us are."""
    for entry in json.loads((build / "compile_commands.json").read_text()):
        source = Path(entry["directory"], entry["file"]).resolve()
        if source.suffix == ".cpp" and source.is_relative_to(ROOT) and not source.is_relative_to(build):
            if pattern in str(source.relative_to(ROOT)):
                yield source, entry["directory"], shlex.split(entry["command"])


def missing_includes(path):
    """What the file, or the header of its name, does not include although it uses it."""
    text = re.sub(r"//.*", "", path.read_text())
    header = path.with_suffix(".h")
    included = text + (header.read_text() if path.suffix == ".cpp" and header.exists() else "")
    for name, names in HEADER_OF.items():
        used = set(re.findall(r"\bstd::(\w+)", text)) & set(names.split())
        if used and f"#include <{name}>" not in included:
            yield f"{path.relative_to(ROOT)}: <{name}> is missing for {', '.join(sorted(used))}"


def main():
    build = Path(sys.argv[1]).resolve()
    clang = find_clang()
    if clang is None:
        print("Skipped: there is no clang++ here.")
        return SKIPPED
    commands = {
        source: (folder, clang_command(clang, arguments, source))
        for source, folder, arguments in our_commands(build, sys.argv[2] if len(sys.argv) > 2 else "")
    }
    if not commands:
        print(f"No source of ours in {build}/compile_commands.json")
        return 1

    def compiles(item):
        folder, command = item
        result = subprocess.run(command, cwd=folder, capture_output=True, text=True, check=False)
        print(result.stdout + result.stderr, end="")
        return result.returncode == 0

    with ThreadPoolExecutor(os.cpu_count()) as pool:
        good = list(pool.map(compiles, commands.values()))
    headers = {header for source in commands for header in source.parent.glob("*.h")}
    missing = [line for path in sorted({*commands, *headers}) for line in missing_includes(path)]
    print("\n".join(missing), end="\n" if missing else "")
    print(f"{clang}: {sum(good)} of {len(good)} Windows sources compile without a warning.")
    return 0 if all(good) and not missing else 1


if __name__ == "__main__":
    sys.exit(main())
