"""Checks the guide's table of value types against the decoder's: the same types, and what the guide shows in one row is
rendered in one way. The guide is the one place that describes them. And every type has its tests."""

import re
import sys

from documents import ROOT

GUIDE = ROOT / "docs" / "user-guide.md"
FORMATS = ROOT / "docs" / "file-formats.md"
DECODER = ROOT / "src" / "trap" / "snmp_message.cpp"

# What says of each type what it must be.
HOLDING = [ROOT / "tests" / "unit" / "snmp_message_test.cpp", ROOT / "fuzz" / "snmp_message_fuzz.cpp"]

ROW = re.compile(r'\{\.tag = (\w+), \.label = L"([^"]+)"sv, \.render = (\w+)\}')
# What the decoder says in place of a label of that table.
PLACEHOLDER = re.compile(r'record\.type = L"([^"]+)"sv')


def decoder_rows():
    """Each label of the decoder: its renderer. Nothing else in the file may look like a row that was not read."""
    code = DECODER.read_text(encoding="utf-8")
    rows = {label: render for _, label, render in ROW.findall(code)}
    assert len(rows) == code.count(".label = ") > 5, "the decoder's table was not read"
    return rows, PLACEHOLDER.findall(code), code


def guide_rows():
    """The rows of the guide's table: the types of each, and what it says of them."""
    guide = GUIDE.read_text(encoding="utf-8")
    table = re.search(r"^\| Type \| Value \|\n\|---\|---\|\n((?:\|.*\n)+)", guide, re.M)
    assert table, "the guide has no table of the value types"
    rows = [row.strip("|\n").split(" | ", 1) for row in table[1].splitlines()]
    return [(re.findall(r"`([^`]+)`", types), says) for types, says in rows]


def faults_of_types(rows, others, described):
    known = set(rows)
    for label in sorted(known - set(described)):
        yield f"the guide does not describe {label}"
    for label in described:
        if label not in known and not any(label.startswith(other) for other in others):
            yield f"the guide describes {label}, which the decoder does not know"
    for other in others:
        if not any(label.startswith(other) for label in described):
            yield f"the guide does not describe {other}"
    for label in described:
        if described.count(label) > 1:
            yield f"the guide describes {label} twice"


def faults_of_renderers(rows, table):
    for types, _ in table:
        renderers = {rows[label] for label in types if label in rows}
        if len(renderers) > 1:
            yield f"the guide has in one row what is rendered differently: {', '.join(types)}"


def faults_of_holding(rows):
    for path in HOLDING:
        text = path.read_text(encoding="utf-8")
        for label in sorted(rows):
            if not re.search(rf'["|]{re.escape(label)}[|"]', text):
                yield f"{path.relative_to(ROOT)} does not hold {label}"


def main():
    rows, others, code = decoder_rows()
    table = guide_rows()
    described = [label for types, _ in table for label in types]
    faults = [*faults_of_types(rows, others, described), *faults_of_renderers(rows, table), *faults_of_holding(rows)]

    says = {label: text for types, text in table for label in types}
    octets = re.search(r"kMaxHexOctets = (\d+);", code)[1]
    least, most = re.search(r"octet >= (\d+) && octet <= (\d+)", code).groups()
    for words in (f"up to {octets} octets", f"({least} to {most})"):
        if words not in says.get("OCTET STRING", ""):
            faults.append(f"the guide does not say of OCTET STRING: {words}")

    formats = FORMATS.read_text(encoding="utf-8")
    if "(user-guide.md#reading-a-record)" not in formats:
        faults.append("file-formats.md does not lead to the guide's table")
    faults += [f"file-formats.md describes {label} a second time" for label in rows if f"| `{label}`" in formats]

    for fault in faults:
        print(fault)
    print(f"{len(rows)} value types of the decoder, {len(described)} in the guide's table.")
    return 1 if faults else 0


if __name__ == "__main__":
    sys.exit(main())
