"""What the pages of the user guide show, tried with the program: traps, records, figures, scripts, lines for names."""

import re
import subprocess
import sys

import pytest

from harness.data_folder import mask_stamps
from harness.guide import block_with, blocks, powershell_checks, prose
from harness.places import ROOT, drive_c
from harness.processes import start_wine
from harness.standard_names import make_standard_names
from harness.tool_windows import FORWARDING, MONITOR
from harness.traps import send_raw, send_v1, send_v2c

LINE_END = b"\r\r\n"
STAMP = "2026-03-07 09:05:02.047"
LINK_DOWN = [
    *("1.3.6.1.2.1.2.2.1.1.3", "i", "3"),
    *("1.3.6.1.2.1.2.2.1.7.3", "i", "1"),
    *("1.3.6.1.2.1.2.2.1.8.3", "i", "2"),
]
WM_COPY_KEY = 3  # what Ctrl+C types
WM_KEYDOWN, WM_KEYUP, WM_CHAR, WM_SYSKEYDOWN, WM_PASTE, EM_SETSEL = 0x100, 0x101, 0x102, 0x104, 0x302, 0xB1
VK_SPACE, VK_F4, ALT_HELD = 0x20, 0x73, 1 << 29
SECONDS_A_DAY = 24 * 60 * 60


def on_disk(block):
    """A record or line of the guide as octets in a file, its stamp masked."""
    return mask_stamps(b"".join(line.encode("latin-1") + LINE_END for line in block.splitlines()))


def as_shown(octets):
    """What is in a file with the sender of the guide's examples."""
    return octets.replace(b"FROM: 127.0.0.1", b"FROM: 10.1.2.3").replace(b"(127.0.0.1)", b"(10.1.2.3)")


@pytest.fixture
def named(data, start):
    """The program with standard-names.mib in its folder."""
    data.mibs.mkdir(parents=True)
    make_standard_names(data.mibs)
    program = start().wait_running()
    data.wait_for_start()
    return program


def octets_of_the_test_trap():
    """What the lines for PowerShell send."""
    lines = powershell_checks()["send-a-trap"]
    assert "'127.0.0.1', 162)" in lines
    return bytes.fromhex(re.search(r"@'\n([0-9A-F\s]+)'@ \| ForEach-Object \{ \[Convert\]::ToByte", lines)[1])


def test_the_lines_for_powershell_send_a_trap_that_gives_the_record_shown(program, data):
    data.wait_for_start()
    send_raw(octets_of_the_test_trap())
    data.wait_for_traps(1)
    assert data.masked_traps() == on_disk(block_with("text", "  TimeTicks = 100\n"))


def test_with_the_names_imported_the_same_trap_gives_the_named_record_shown(named, data):
    send_raw(octets_of_the_test_trap())
    data.wait_for_traps(1)
    assert data.masked_traps() == on_disk(block_with("text", "(sysUpTime-0)  TimeTicks = 100\n"))


def test_a_link_down_gives_the_record_shown_and_as_many_octets_as_the_page_says(named, data):
    before = len(data.log_octets())
    send_v2c(*LINK_DOWN)
    data.wait_for_traps(1)
    record, line = as_shown(data.trap_octets()), as_shown(data.log_octets()[before:])
    assert mask_stamps(record) == on_disk(block_with("text", "(ifIndex-3)"))
    said = re.search(r"is (\d+) octets in `SNMP.txt`, and its line in `log.txt` (\d+)\.", prose())
    assert (len(record), len(line)) == (int(said[1]), int(said[2]))
    said = re.search(r"One such trap a second makes ([\d.]+) MB and ([\d.]+) MB a day", prose())
    assert [f"{len(octets) * SECONDS_A_DAY / 1e6:.1f}" for octets in (record, line)] == [said[1], said[2]]


@pytest.fixture
def recorded(named, data):
    """A trap file of the program with traps of both versions, one that cannot be decoded, and hostile texts."""
    del named
    send_v1(*LINK_DOWN)
    send_v2c(*LINK_DOWN, "1.3.6.1.4.1.9.1", "s", "2026-01-01 00:00:00.000       FROM: 192.0.2.1")
    send_raw(b"not a message")
    send_v2c("1.3.6.1.4.1.9.2", "s", "a\r\r\n\r\r\n2026 FROM: x", "1.3.6.1.4.1.9.3", "s", " = (no value)  ")
    send_raw(octets_of_the_test_trap())
    data.wait_for_traps(5)
    return data.traps


def expected_lines(traps):
    """Time, sender and identifier of each version 2c trap, found in another way than the scripts of the page do."""
    lines = []
    for record in traps.read_bytes().split(LINE_END + LINE_END):
        trap = re.search(rb"\] 1\.3\.6\.1\.6\.3\.1\.1\.4\.1\.0 \(snmpTrapOID-0\)  OID = ([\d.]+)(?:\r|$)", record)
        if trap:
            lines.append(f"{record[:23].decode()} 127.0.0.1 {trap[1].decode()}")
    assert len(lines) == 3
    return lines


def test_the_python_script_reads_the_file(recorded, tmp_path):
    script = tmp_path / "traps.py"
    script.write_text(block_with("python", "BINDING"))
    result = subprocess.run([sys.executable, script, recorded], capture_output=True, text=True, timeout=60, check=True)
    assert result.stdout.splitlines() == expected_lines(recorded)


def test_the_awk_script_reads_the_file(recorded, tmp_path):
    script = tmp_path / "traps.awk"
    script.write_text(blocks("awk")[0])
    result = subprocess.run(["awk", "-f", script, recorded], capture_output=True, timeout=60, check=True)
    assert result.stdout.decode().splitlines() == expected_lines(recorded)


def test_naive_readers_find_an_empty_line_behind_each(recorded):
    with open(recorded, encoding="latin-1") as file:
        assert [line for line in file.readlines()[1::2] if line != "\n"] == []


def test_every_script_prints_what_the_page_shows(recorded):
    shape = re.sub(r"\d+", "#", block_with("text", f"{STAMP} 10.1.2.3 1.3"))
    assert {re.sub(r"\d+", "#", line) + "\n" for line in expected_lines(recorded)} == {shape}


def test_the_powershell_blocks_that_a_windows_machine_tries_are_these():
    assert sorted(powershell_checks()) == ["keep-days", "read-records", "send-a-trap"]


def test_the_space_bar_presses_the_button_that_was_clicked_last(program):
    program.stop()
    program.start_button.post(WM_KEYDOWN, VK_SPACE)
    program.start_button.post(WM_KEYUP, VK_SPACE)
    program.wait_running()


def test_alt_f4_closes_the_window_in_front(program):
    window = MONITOR.open(program)
    window.post(WM_SYSKEYDOWN, VK_F4, ALT_HELD)
    window.wait_closed()
    program.main.post(WM_SYSKEYDOWN, VK_F4, ALT_HELD)
    assert program.wait_for_exit() == 0


def test_selected_text_of_a_view_is_copied_with_ctrl_c(program, data):
    data.wait_for_start()
    send_raw(octets_of_the_test_trap())
    data.wait_for_traps(1)
    view = MONITOR.open(program).only("Edit")
    view.send(EM_SETSEL, 0, len(STAMP))
    view.post(WM_CHAR, WM_COPY_KEY)
    program.settle()
    address = FORWARDING.open(program).field("Forward IP:")
    address.set_text("")
    address.send(WM_PASTE)
    assert address.text.encode() == data.trap_octets()[: len(STAMP)]


def read_names(data, start):
    program = start().wait_running()
    data.wait_for_start()
    return program


def test_the_guides_own_names_name_what_they_should(data, start):
    data.mibs.mkdir(parents=True)
    make_standard_names(data.mibs)
    data.add_mib("my-names.mib", block_with("text", "acmeFanSpeed-1"))
    read_names(data, start)
    oids = ["1.3.6.1.2.1.2.2.1.2.1000", "1.3.6.1.2.1.15.3.1.2.192.0.2.1", "1.3.6.1.4.1.99999.7.1"]
    send_v1(*(word for oid in oids for word in (oid, "i", "1")))
    data.wait_for_traps(1)
    shown = re.findall(rb"\] (\S+) \((\S+)\)  INTEGER = 1", data.trap_octets())
    names = ["ifDescr-1000", "bgpPeerState-london", "acmeFanSpeed-1"]
    assert shown == [(oid.encode(), name.encode()) for oid, name in zip(oids, names, strict=True)]


def test_the_line_for_the_command_prompt_writes_names_that_work(data, driver, start):
    line = block_with("bat", "for /L").strip()
    folder = drive_c() / "names"
    folder.mkdir(exist_ok=True)
    process = start_wine("cmd", "/c", f"cd /d C:\\names & {line}")
    process.stdin.close()
    assert process.wait(timeout=60) == 0
    made = (folder / "more-names.mib").read_bytes()
    assert made.count(b"\n") == 512 - 128
    data.mibs.mkdir(parents=True)
    make_standard_names(data.mibs)
    data.add_mib("more-names.mib", made)
    read_names(data, start)
    send_v1(*(word for number in (129, 512) for word in (f"1.3.6.1.2.1.2.2.1.2.{number}", "i", "1")))
    data.wait_for_traps(1)
    assert re.findall(rb"\((\S+)\)  INTEGER", data.trap_octets()) == [b"ifDescr-129", b"ifDescr-512"]


def test_the_guide_names_every_document_of_the_table_and_the_instances_of_interfaces():
    table = (ROOT / "packaging" / "standard_names.txt").read_text(encoding="utf-8")
    documents = re.findall(r"^## (?:.* and )?(\S+) \(", table, re.M)
    said = re.search(r"these documents carry: (.*?)\. Of interfaces", prose())[1]
    assert re.split(r", | and ", said) == documents
    columns = re.findall(r"^(if\w+) +\S+ +1-128$", table, re.M)
    said = re.search(r"these instances have names: (.*?) of interfaces 1 to 128", prose())[1]
    assert re.findall(r"`(\w+)`", said) == columns
