#!/usr/bin/env python3
"""Makes a MIB file that names instances, such as ifIndex-3 for 1.3.6.1.2.1.2.2.1.1.3, from a table of objects.

A trap carries instances, and a name is shown for exactly the identifier that a MIB file defines. The file made here
does not depend on other MIB files: each parent is built into the program or defined on an earlier line.
Names of parents end in an underscore, so that they differ from all names in other MIB files.

Usage: packaging/make_names.py TABLE FILE. packaging/standard_names.txt describes the format of a table.
"""

import re
import sys
from pathlib import Path

NAME_STORE = Path(__file__).resolve().parent.parent / "src" / "mib" / "name_store.cpp"
PARENT = "_"

HEAD = """\
-- Names for the variables of standard notifications: sysUpTime-0, ifIndex-3 and so on.
-- Names that end in an underscore are their parents. Put your own lines into a file of your own:
--     ifIndex-1000 OBJECT IDENTIFIER ::= { ifIndex_ 1000 }
"""


class TableError(Exception):
    pass


def builtin_names():
    """Returns the names that the program knows without any file, by their identifiers."""
    rows = re.findall(r'\{L"([\w-]+)", L"([\d.]+)"\}', NAME_STORE.read_text(encoding="utf-8"))
    return {identifier: name for name, identifier in rows}


def read_table(text):
    """Yields (line number, words) of each row with instances, and of each section title (##), which is one word."""
    for number, line in enumerate(text.splitlines(), 1):
        words = line.split()
        if line.startswith("##"):
            yield number, [line.lstrip("# ")]
        elif words and not line.startswith("#") and words[2:3] != [":"]:
            yield number, words


def expand_instances(instances):
    """Returns the instances 0, 1-128, 1.1-64 or - as lists of arcs."""
    found = re.fullmatch(r"((?:\d+\.)*)(\d+)(?:-(\d+))?", instances, re.ASCII)
    if instances != "-" and not found:
        raise TableError(f"no instances: {instances}")
    if not found:
        return []
    prefix = found[1].split(".")[:-1]
    return [[*prefix, str(last)] for last in range(int(found[2]), int(found[3] or found[2]) + 1)]


class Definitions:
    """The lines of the MIB file. A name's parent is defined on an earlier line or built in."""

    def __init__(self):
        self.names = builtin_names()  # the possible parents, by identifier
        self.lines = []

    def add(self, name, identifier):
        parent, _, arc = identifier.rpartition(".")
        if not re.fullmatch(r"[A-Za-z][\w-]*", name, re.ASCII):
            raise TableError(f"not a name: {name}")
        if parent not in self.names:
            raise TableError(f"{name}: the table lacks a row for {parent}")
        if identifier in self.names or name in self.names.values():
            raise TableError(f"{name}, {identifier}: the name or the identifier is taken")
        self.names[identifier] = name
        self.lines.append(f"{name:41} OBJECT IDENTIFIER ::= {{ {self.names[parent]} {arc} }}")

    def add_row(self, name, identifier, instances):
        self.add(name + PARENT, identifier)
        for arcs in expand_instances(instances):
            for depth in range(1, len(arcs)):
                step = ".".join([identifier, *arcs[:depth]])
                if step not in self.names:
                    self.add("-".join([name, *arcs[:depth]]) + PARENT, step)
            self.add("-".join([name, *arcs]), ".".join([identifier, *arcs]))


def make_names(table):
    definitions = Definitions()
    for number, row in read_table(table):
        try:
            if len(row) == 1:
                definitions.lines += ["", f"-- {row[0]}"]
            elif len(row) == 3:
                definitions.add_row(*row)
            else:
                raise TableError("not a name, an identifier and instances")
        except TableError as error:
            raise TableError(f"line {number}: {error}") from None
    return "".join(line + "\r\n" for line in [*HEAD.splitlines(), *definitions.lines])


def main():
    if len(sys.argv) != 3:
        sys.exit(__doc__)
    table, file = map(Path, sys.argv[1:])
    try:
        file.write_bytes(make_names(table.read_text(encoding="utf-8")).encode("ascii"))
    except (TableError, OSError, UnicodeError) as error:
        sys.exit(f"{table}: {error}")


if __name__ == "__main__":
    main()
