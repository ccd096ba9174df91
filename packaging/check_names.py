#!/usr/bin/env python3
"""Compares packaging/standard_names.txt with MIB files: each name must be defined with the identifier in the table, and
each notification with the objects listed there.

Usage: packaging/check_names.py FOLDER, with the documents' MIB files in it. Debian has none of them, since their
licence is not free, so run this manually after changing the table. Prints the rows that no file confirms.
"""

import re
import sys
from pathlib import Path

from make_names import builtin_names

ROOT = Path(__file__).resolve().parent.parent

DEFINITION = re.compile(
    r"(?<![\w-])([a-z][\w-]*)\s+"
    r"(?:OBJECT\s+IDENTIFIER|(?:OBJECT-TYPE|MODULE-IDENTITY|OBJECT-IDENTITY|NOTIFICATION-TYPE)(?![\w-])"
    r"((?:(?!::=|OBJECT-TYPE|NOTIFICATION-TYPE).)*?))"
    r"\s*::=\s*\{([^{}]*)\}",
    re.S,
)
OBJECTS = re.compile(r"\bOBJECTS\s*\{([^}]*)\}")


def without_texts(text):
    return re.sub(r'"[^"]*"', '""', re.sub(r"--[^\n]*", "", text))


class Files:
    """The values that each file gives to each name, and the objects of each notification."""

    def __init__(self, folder):
        self.objects = {}
        self.known = {name: {identifier} for identifier, name in builtin_names().items()}
        self.files = [self.read(path) for path in sorted(folder.iterdir()) if path.is_file()]

    def read(self, path):
        values = {}
        for name, body, value in DEFINITION.findall(without_texts(path.read_text(encoding="latin-1"))):
            values.setdefault(name, set()).add(re.sub(r"\s*\(\s*(\d+)\s*\)", r"(\1)", value))
            found = OBJECTS.search(body)
            listed = tuple(re.split(r"[\s,]+", found[1].strip())) if found else ()
            self.objects.setdefault(name, set()).add(listed)
        return values

    def resolve(self, value, file, parents):
        """Returns the identifiers that a value such as "ifEntry 1" can have in a file."""
        first, *arcs = value.split() or [""]
        arcs = [re.search(r"(\d+)\)?$", arc) for arc in arcs]
        if not all(arcs):
            return set()
        number = re.search(r"(\d+)\)?$", first)
        bases = self.identifiers(first, file, parents) or ({number[1]} if number else set())
        return {".".join([base, *(arc[1] for arc in arcs)]) for base in bases}

    def identifiers(self, name, file=None, parents=()):
        """Returns the identifiers of a name in the file, or in all files if this one does not define it."""
        if name in self.known:
            return self.known[name]
        if name in parents:
            return set()
        files = [file] if file and name in file else [other for other in self.files if name in other]
        parents = (*parents, name)
        return {found for each in files for value in each[name] for found in self.resolve(value, each, parents)}


def main():
    files = Files(Path(sys.argv[1]))
    rows = [line.split() for line in (ROOT / "packaging" / "standard_names.txt").read_text().splitlines()]
    rows = [row for row in rows if row and not row[0].startswith("#")]
    faults = 0
    for name, identifier, kind, *objects in rows:
        found = files.identifiers(name)
        if identifier not in found:
            faults += 1
            print(f"{name} {identifier}: {', '.join(sorted(found, key=len)[:5]) or 'no file defines it'}")
        if kind == ":" and tuple(objects) not in files.objects.get(name, ()):
            faults += 1
            print(f"{name} objects: {sorted(files.objects.get(name, ()))}")
    print(f"{len(rows)} rows looked up, {faults} not confirmed.")
    return 1 if faults else 0


if __name__ == "__main__":
    sys.exit(main())
