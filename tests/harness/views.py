"""The views of the trap monitor and the log viewer, and how they show a file's octets."""

import re

import pytest

from harness.tool_windows import MONITOR, VIEWERS
from harness.waiting import wait_until

each_viewer = pytest.mark.parametrize("viewer", VIEWERS, ids=lambda viewer: viewer.name)


def as_read_at_opening(octets):
    """One character per octet; CR LF becomes LF; 0x1A ends the text."""
    return octets.split(b"\x1a")[0].replace(b"\r\n", b"\n").decode("latin-1")


def as_read_later(octets):
    """UTF-8 if valid, else code page 1252, whose undefined octets map to themselves. CR LF stays."""
    try:
        return octets.decode("utf-8")
    except UnicodeDecodeError:
        return "".join(bytes([octet]).decode("cp1252", "ignore") or chr(octet) for octet in octets)


def file_of(data, viewer):
    return data.traps if viewer is MONITOR else data.log


def view_of(window):
    return window.child("Edit")


def wait_for_view(view, text):
    wait_until(
        lambda: view.text == text,
        lambda: f"a view of {len(text)} characters ending in {text[-60:]!r}, "
        f"seen {len(view.text)} ending in {view.text[-60:]!r}",
    )


def append(path, octets):
    with path.open("ab") as file:
        file.write(octets)


def check_view_follows(view, text):
    """Checks that the view shows all numbered records of the text in order. Some may be repeated.

    Intentional: the program reads the size before the file, so records written in between are read again at the next
    poll.
    """
    records = {
        int(re.search(r"INTEGER = (\d+)", part)[1]): part
        for part in re.findall(r".*?\r\r\n\r\r\n", text, re.DOTALL)
    }
    assert "".join(records.values()) == text
    shown = [int(number) for number in re.findall(r"INTEGER = (\d+)", view)]
    assert "".join(records[number] for number in shown) == view
    order = list(records)
    positions = [order.index(number) for number in shown]
    assert positions[0] == 0
    assert all(after <= before + 1 for before, after in zip(positions, positions[1:]))
    assert sorted(set(positions)) == list(range(len(order)))
    if len(shown) > len(order):
        print(f"{len(shown) - len(order)} records were written between the size query and the read: shown twice.")
