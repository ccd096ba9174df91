#!/usr/bin/env python3
"""Holds packaging/standard_names.txt against MIB files: that somebody defines each name with the identifier that the
table gives it, and each notification with the objects that it lists.

Usage: packaging/check_names.py FOLDER, with the documents' MIB files in it. Debian has none of them, since their
licence is not free, so this is run by hand when the table changes. Prints the rows that no file bears out.
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
    """What each file says of each name: the values it is given, and the objects of a notification."""

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

    def of_value(self, value, file, on_the_way):
        """The identifiers that a value such as "ifEntry 1" stands for in a file."""
        first, *arcs = value.split() or [""]
        arcs = [re.search(r"(\d+)\)?$", arc) for arc in arcs]
        if not all(arcs):
            return set()
        number = re.search(r"(\d+)\)?$", first)
        bases = self.identifiers(first, file, on_the_way) or ({number[1]} if number else set())
        return {".".join([base, *(arc[1] for arc in arcs)]) for base in bases}

    def identifiers(self, name, file=None, on_the_way=()):
        """What the file calls so; every identifier that some file calls so when it does not define the name."""
        if name in self.known:
            return self.known[name]
        if name in on_the_way:
            return set()
        files = [file] if file and name in file else [other for other in self.files if name in other]
        on_the_way = (*on_the_way, name)
        return {found for each in files for value in each[name] for found in self.of_value(value, each, on_the_way)}


def main():
    files = Files(Path(sys.argv[1]))
    rows = [line.split() for line in (ROOT / "packaging" / "standard_names.txt").read_text().splitlines()]
    rows = [row for row in rows if row and not row[0].startswith("#")]
    faults = 0
    for name, identifier, kind, *carries in rows:
        said = files.identifiers(name)
        if identifier not in said:
            faults += 1
            print(f"{name} {identifier}: {', '.join(sorted(said, key=len)[:5]) or 'no file defines it'}")
        if kind == ":" and tuple(carries) not in files.objects.get(name, ()):
            faults += 1
            print(f"{name} carries: {sorted(files.objects.get(name, ()))}")
    print(f"{len(rows)} rows looked up, {faults} not borne out.")
    return 1 if faults else 0


if __name__ == "__main__":
    sys.exit(main())
