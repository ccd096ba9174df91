"""Compares the records that a receiver wrote with the traps that were sent."""

import re

from harness.data_folder import LINE_END, STAMP

from measuring.counters import PIECE

BINDINGS = 6  # of each trap whose record is compared

RECORD = re.compile(
    LINE_END.join(
        [
            STAMP + rb"       FROM: 127\.0\.0\.1",
            rb"---> \[1\] 1\.3\.6\.1\.2\.1\.1\.3\.0  TimeTicks = (\d+)",
            rb"---> \[2\] 1\.3\.6\.1\.6\.3\.1\.1\.4\.1\.0  OID = 1\.3\.6\.1\.6\.3\.1\.1\.5\.3",
            rb"---> \[3\] 1\.3\.6\.1\.2\.1\.2\.2\.1\.1\.1000  INTEGER = 1000",
            rb"---> \[4\] 1\.3\.6\.1\.2\.1\.2\.2\.1\.7\.1000  INTEGER = 1",
            rb"---> \[5\] 1\.3\.6\.1\.2\.1\.2\.2\.1\.8\.1000  INTEGER = 2",
            rb'---> \[6\] 1\.3\.6\.1\.2\.1\.2\.2\.1\.2\.1000  OCTET STRING = "GigabitEthernet1/0/24"',
            b"",
            b"",
        ]
    )
)


def parse_records(octets):
    """Returns the numbers of the records and the octets after the last whole one. Fails if anything else is between the
    records."""
    records, end, rest = octets.rpartition(LINE_END * 2)
    numbers, position = [], 0
    for found in RECORD.finditer(records + end):
        assert found.start() == position, f"not a record: {octets[position : position + 300]!r}"
        numbers.append(int(found[1]))
        position = found.end()
    assert position == len(records + end), f"not a record: {octets[position : position + 300]!r}"
    return numbers, rest


def read_numbers(path, rest=b""):
    """Yields the number of each record of a file of any size. Fails if the file contains anything but whole records."""
    with open(path, "rb") as file:
        while piece := file.read(PIECE):
            numbers, rest = parse_records(rest + piece)
            yield from numbers
    assert rest == b"", f"the last record of {path} is truncated: {rest[:300]!r}"


def check_order(numbers, expected):
    """Fails unless there are `expected` records in the order of sending, none twice."""
    count, last = 0, -1
    for number in numbers:
        assert number > last, f"record {number} follows {last}"
        count, last = count + 1, number
    assert count == expected, f"{count} records instead of {expected}"
