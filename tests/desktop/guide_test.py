"""The examples of the user guide, run against the program: traps, records, scripts, names."""

import re
import shlex
import subprocess
import sys

import pytest

from harness.data_folder import LINE_END, mask_stamps
from harness.guide import block_with, blocks, powershell_checks, prose
from harness.places import ROOT
from harness.standard_names import make_standard_names
from harness.tool_windows import FORWARDING, MONITOR
from harness.traps import send_raw, send_v1, send_v2c
from harness.win32 import EM_SETSEL, VK_F4, VK_SPACE, WM_CHAR, WM_KEYDOWN, WM_KEYUP, WM_PASTE, WM_SYSKEYDOWN

STAMP = "2026-03-07 09:05:02.047"
LINK_DOWN = [
    *("1.3.6.1.2.1.2.2.1.1.3", "i", "3"),
    *("1.3.6.1.2.1.2.2.1.7.3", "i", "1"),
    *("1.3.6.1.2.1.2.2.1.8.3", "i", "2"),
]
COPY_KEY = 3  # what Ctrl+C types
ALT_PRESSED = 1 << 29


def on_disk(block):
    """A record shown in the guide, as octets on disk, with its stamp masked."""
    return mask_stamps(b"".join(line.encode("latin-1") + LINE_END for line in block.splitlines()))


@pytest.fixture
def named(data, start):
    """The program with standard-names.mib in its folder."""
    data.mibs.mkdir(parents=True)
    make_standard_names(data.mibs)
    program = start().wait_running()
    data.wait_for_start()
    return program


def octets_of_the_test_trap():
    """The datagram that the guide's PowerShell lines send."""
    lines = powershell_checks()["send-a-trap"]
    assert "'127.0.0.1', 162)" in lines
    return bytes.fromhex(re.search(r"@'\n([0-9A-F\s]+)'@ \| ForEach-Object \{ \[Convert\]::ToByte", lines)[1])


def test_the_trap_sent_from_powershell_gives_the_record_shown(program, data):
    data.wait_for_start()
    send_raw(octets_of_the_test_trap())
    data.wait_for_traps(1)
    assert data.masked_traps() == on_disk(block_with("text", "  TimeTicks = 100\n"))


def test_the_snmptrap_command_sends_a_trap(program, data):
    data.wait_for_start()
    line = re.search(r"`(snmptrap [^`]+)`", prose())[1].replace("192.0.2.10", "127.0.0.1")
    subprocess.run(shlex.split(line), capture_output=True, timeout=60, check=True)
    data.wait_for_traps(1)
    assert b"] 1.3.6.1.6.3.1.1.4.1.0  OID = 1.3.6.1.6.3.1.1.5.1" + LINE_END in data.trap_octets()


def test_with_the_standard_names_the_same_trap_has_the_name_shown(named, data):
    send_raw(octets_of_the_test_trap())
    data.wait_for_traps(1)
    shown = re.search(r"the last line above has `([^`]+)`", prose())[1]
    assert f"---> [3] {shown}  OCTET STRING".encode() in data.trap_octets()


def test_a_link_down_gives_the_record_shown(named, data):
    send_v2c(*LINK_DOWN)
    data.wait_for_traps(1)
    record = data.masked_traps().replace(b"FROM: 127.0.0.1", b"FROM: 10.1.2.3")
    assert record == on_disk(block_with("text", "(ifIndex-3)"))


@pytest.fixture
def recorded(named, data):
    """A trap file with traps of both versions, one that cannot be decoded, and misleading texts. The last record but
    one is cut, as after a full disk or a kill."""
    send_v1(*LINK_DOWN)
    send_v2c(*LINK_DOWN, "1.3.6.1.4.1.9.1", "s", "2026-01-01 00:00:00.000       FROM: 192.0.2.1")
    send_raw(b"not a message")
    send_v2c("1.3.6.1.4.1.9.2", "s", "a\r\r\n\r\r\n2026 FROM: x", "1.3.6.1.4.1.9.3", "s", " = (no value)  ")
    data.wait_for_traps(4)
    record = on_disk(block_with("text", "(ifIndex-3)")).replace(mask_stamps(STAMP.encode()), STAMP.encode())
    with data.traps.open("ab") as file:
        file.write(record[: record.index(b"OID = 1.3.6.1.6") + 10])
    send_raw(octets_of_the_test_trap())
    data.wait_for_traps(5)
    return data.traps


EXPECTED = [f"{STAMP} 127.0.0.1 1.3.6.1.6.3.1.1.5.{trap}" for trap in (3, 3, 1)]


def with_example_stamp(lines):
    return [re.sub(r"^\d{4}-\d\d-\d\d \d\d:\d\d:\d\d\.\d{3} ", f"{STAMP} ", line) for line in lines]


def test_the_python_script_reads_the_file(recorded, tmp_path):
    script = tmp_path / "traps.py"
    script.write_text(block_with("python", "BINDING"))
    result = subprocess.run([sys.executable, script, recorded], capture_output=True, text=True, timeout=60, check=True)
    assert with_example_stamp(result.stdout.splitlines()) == EXPECTED


def test_the_awk_script_reads_the_file(recorded, tmp_path):
    script = tmp_path / "traps.awk"
    script.write_text(blocks("awk")[0])
    result = subprocess.run(["awk", "-f", script, recorded], capture_output=True, text=True, timeout=60, check=True)
    assert with_example_stamp(result.stdout.splitlines()) == EXPECTED


def test_the_guide_shows_what_the_scripts_print():
    assert EXPECTED[0].replace("127.0.0.1", "10.1.2.3") + "\n" == block_with("text", f"{STAMP} 10.1.2.3 1.3")


def test_in_text_mode_an_empty_line_follows_each_line(program, data):
    data.wait_for_start()
    send_raw(octets_of_the_test_trap())
    data.wait_for_traps(1)
    with open(data.traps, encoding="latin-1") as file:
        assert set(file.readlines()[1::2]) == {"\n"}


def test_the_guide_marks_these_powershell_blocks_for_the_check_kit():
    assert sorted(powershell_checks()) == ["keep-days", "read-records", "send-a-trap"]


def test_the_space_bar_presses_the_last_clicked_button(program):
    program.stop()
    program.start_button.post(WM_KEYDOWN, VK_SPACE)
    program.start_button.post(WM_KEYUP, VK_SPACE)
    program.wait_running()


def test_alt_f4_closes_the_active_window(program):
    window = MONITOR.open(program)
    window.post(WM_SYSKEYDOWN, VK_F4, ALT_PRESSED)
    window.wait_closed()
    program.main.post(WM_SYSKEYDOWN, VK_F4, ALT_PRESSED)
    assert program.wait_for_exit() == 0


def test_ctrl_c_copies_the_selected_text_of_a_view(program, data):
    data.wait_for_start()
    send_raw(octets_of_the_test_trap())
    data.wait_for_traps(1)
    view = MONITOR.open(program).child("Edit")
    view.send(EM_SETSEL, 0, len(STAMP))
    view.post(WM_CHAR, COPY_KEY)
    program.settle()
    address = FORWARDING.open(program).field("Forward IP:")
    address.set_text("")
    address.send(WM_PASTE)
    assert address.text.encode() == data.trap_octets()[: len(STAMP)]


def test_the_example_of_own_names_works(data, start):
    data.mibs.mkdir(parents=True)
    make_standard_names(data.mibs)
    data.add_mib("my-names.mib", block_with("text", "mtrapargsString-0"))
    data.add_mib("vendor.mib", "args OBJECT IDENTIFIER ::= { enterprises 99999 }\n"
                 "mtrapargsString OBJECT-TYPE\n  SYNTAX DisplayString\n  ::= { args 3 }\n")
    start().wait_running()
    data.wait_for_start()
    names = {"1.3.6.1.4.1.99999.3.0": "mtrapargsString-0", "1.3.6.1.2.1.2.2.1.2.1000": "ifDescr-1000"}
    send_v1(*(word for oid in names for word in (oid, "i", "1")))
    data.wait_for_traps(1)
    shown = re.findall(rb"\] (\S+) \((\S+)\)  INTEGER = 1", data.trap_octets())
    assert shown == [(oid.encode(), name.encode()) for oid, name in names.items()]


def test_the_guide_lists_every_document_of_the_standard_names():
    table = (ROOT / "packaging" / "standard_names.txt").read_text(encoding="utf-8")
    documents = re.findall(r"^## (?:.* and )?(\S+) \(", table, re.M)
    listed = re.search(r"names the instances of (.*?) that their traps carry", prose())[1]
    assert re.split(r", | and ", listed) == documents
