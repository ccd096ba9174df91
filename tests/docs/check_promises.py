"""Checks that every test that docs/promises.md names exists and is built or run, and that every promise names one."""

import re
import sys

from documents import ROOT

PAGE = ROOT / "docs" / "promises.md"
TESTS = ROOT / "tests"
ROW = re.compile(r"^\| (?!Promise \||---)(.*) \| (.*) \|$", re.M)
CXX_TEST = re.compile(r"^TEST(?:_F|_P)?\((\w+), (\w+)\)", re.M)
PYTHON_TEST = re.compile(r"^def (test_\w+)\(", re.M)


def build_text(path):
    """What CMake is told in the folder of a test file, and above it."""
    folders = [folder for folder in path.parents if folder == TESTS or TESTS in folder.parents]
    lists = [folder / "CMakeLists.txt" for folder in folders]
    return "\n".join(file.read_text(encoding="utf-8") for file in lists if file.exists())


def existing_tests():
    """The names of all tests, as the page writes them, in files that CMake knows."""
    names = set()
    for path in TESTS.rglob("*_test.cpp"):
        if path.name in build_text(path):
            names |= {f"{suite}.{name}" for suite, name in CXX_TEST.findall(path.read_text(encoding="utf-8"))}
    for path in TESTS.rglob("*_test.py"):
        if re.search(rf"\b{path.stem}\b", build_text(path)):
            names |= {f"{path.stem}::{name}" for name in PYTHON_TEST.findall(path.read_text(encoding="utf-8"))}
    return names


def main():
    existing = existing_tests()
    rows = ROW.findall(PAGE.read_text(encoding="utf-8"))
    named = [(promise, re.findall(r"`([^`]+)`", holders)) for promise, holders in rows]
    faults = [f"held by nothing: {promise}" for promise, tests in named if not tests]
    faults += [f"no such test: {test}" for _, tests in named for test in tests if test not in existing]
    assert len(rows) > 50 and len(existing) > 500, "the page or the tests were not read"
    for fault in faults:
        print(f"promises.md: {fault}")
    print(f"{len(rows)} promises, held by {len({test for _, tests in named for test in tests})} tests.")
    return 1 if faults else 0


if __name__ == "__main__":
    sys.exit(main())
