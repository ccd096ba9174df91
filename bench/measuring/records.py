"""Compares what a receiver wrote with what the sender sent, record by record."""

import re

from harness.data_folder import LINE_END, STAMP

from measuring.counters import PIECE

# Of each trap whose record is compared.
BINDINGS = 6

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
    """Returns the numbers of the records at the start of the octets, and the octets after the last whole one. Fails if
    anything else is between them."""
    records, end, rest = octets.rpartition(LINE_END * 2)
    numbers, place = [], 0
    for found in RECORD.finditer(records + end):
        assert found.start() == place, f"this is no record: {octets[place : place + 300]!r}"
        numbers.append(int(found[1]))
        place = found.end()
    assert place == len(records + end), f"this is no record: {octets[place : place + 300]!r}"
    return numbers, rest


def read_numbers(path, rest=b""):
    """Yields the number of each record of a file of any size. Fails if there is anything else than whole records."""
    with open(path, "rb") as file:
        while piece := file.read(PIECE):
            numbers, rest = parse_records(rest + piece)
            yield from numbers
    assert rest == b"", f"the last record of {path} is cut: {rest[:300]!r}"


def check_order(numbers, expected):
    """Fails unless there are as many records as expected, in the order of sending and none twice."""
    count, last = 0, -1
    for number in numbers:
        assert number > last, f"record {number} follows {last}"
        count, last = count + 1, number
    assert count == expected, f"{count} records instead of {expected}"
