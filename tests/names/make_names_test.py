"""packaging/make_names.py: the definitions it makes from small tables, and the tables it rejects."""

import subprocess
import sys
from pathlib import Path

import pytest

MAKER = Path(__file__).resolve().parents[2] / "packaging" / "make_names.py"


@pytest.fixture
def make(tmp_path):
    """Returns a function that makes a file from a table and returns its definitions, or the error message."""

    def run(table):
        (tmp_path / "table.txt").write_text(table)
        file = tmp_path / "my-names.mib"
        command = [sys.executable, "-B", MAKER, tmp_path / "table.txt", file]
        result = subprocess.run(command, capture_output=True, text=True, timeout=60, check=False)
        if result.returncode != 0:
            assert not file.exists()
            return result.stderr
        text = file.read_bytes().decode("ascii")
        assert text.count("\n") == text.count("\r\n")
        return [line.split("OBJECT IDENTIFIER ::=") for line in text.splitlines() if line and line[0] != "-"]

    return run


def test_a_table_becomes_parents_and_instances(make):
    made = make(
        "# my devices\nvendor 1.3.6.1.4.1.9 -\n\n"
        "## Fans\nfan 1.3.6.1.4.1.9.7 2-3\nshelf 1.3.6.1.4.1.9.8 0.5-6\n"
    )
    assert [(name.strip(), value.strip()) for name, value in made] == [
        ("vendor_", "{ enterprises 9 }"),
        ("fan_", "{ vendor_ 7 }"),
        ("fan-2", "{ fan_ 2 }"),
        ("fan-3", "{ fan_ 3 }"),
        ("shelf_", "{ vendor_ 8 }"),
        ("shelf-0_", "{ shelf_ 0 }"),
        ("shelf-0-5", "{ shelf-0_ 5 }"),
        ("shelf-0-6", "{ shelf-0_ 6 }"),
    ]


def test_notifications_add_no_definitions(make):
    assert make("linkDown 1.3.6.1.6.3.1.1.5.3 : ifIndex\n") == []


@pytest.mark.parametrize(
    ("table", "message"),
    [
        ("fan 1.3.6.1.4.1.9.7 2\n", "line 1: fan_: the table lacks a row for 1.3.6.1.4.1.9"),
        ("a 1.3.6.1.4.1.9 -\nb 1.3.6.1.4.1.9 -\n", "line 2: b_, 1.3.6.1.4.1.9: the name or the identifier is taken"),
        ("a 1.3.6.1.4.1.9 -\na 1.3.6.1.4.1.8 -\n", "line 2: a_, 1.3.6.1.4.1.8: the name or the identifier is taken"),
        ("a.b 1.3.6.1.4.1.9 -\n", "line 1: not a name: a.b_"),
        ("a 1.3.6.1.4.1.9 all\n", "line 1: no instances: all"),
        ("a 1.3.6.1.4.1.9\n", "line 1: not a name, an identifier and instances"),
    ],
)
def test_an_invalid_table_is_rejected_with_the_line_number(make, table, message):
    assert message in make(table)
