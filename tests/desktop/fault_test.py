"""The shipped program over files that cannot be had, and killed while it writes.

QUILLMONT_LONG=1 in the environment makes it fifty kills instead of three.
"""

import os
import shutil
import subprocess
import threading
from contextlib import contextmanager

import pytest

from harness.data_folder import (
    LINE_END,
    DataFolder,
    config,
    local_application_data,
    mask_stamps,
    record,
)
from harness.places import drive_c, unix_path
from harness.traps import (
    LOOPBACK,
    TRAP_PORT,
    integer_binding,
    integer_line,
    message,
    send_raw,
    tlv,
    udp_socket,
)
from harness.waiting import wait_until

KILLS = 50 if os.environ.get("QUILLMONT_LONG") == "1" else 3


def mount(*arguments):
    result = subprocess.run(["mount", *arguments], capture_output=True, text=True, check=False)
    if result.returncode != 0:
        pytest.skip(f"This machine does not allow mounts of one's own: {result.stderr.strip()}")


@contextmanager
def read_only(folder):
    mount("--bind", folder, folder)
    try:
        mount("-o", "remount,bind,ro", folder)
        yield
    finally:
        subprocess.run(["umount", folder], check=True)


@contextmanager
def small_disk(folder, size):
    folder.mkdir(parents=True)
    mount("-t", "tmpfs", "-o", f"size={size}", "tmpfs", folder)
    try:
        yield
    finally:
        subprocess.run(["umount", folder], check=True)


class Relay:
    """Forwarding shows that a trap was handled to its end when no file can."""

    def __init__(self, target):
        self._target = target
        self.config = config(1, LOOPBACK, target.getsockname()[1])

    def expect_a_trap_is_handled(self, number):
        send_raw(message(integer_binding(number)))
        assert self._target.recv(65535) == message(integer_binding(number))


@pytest.fixture
def relay():
    with udp_socket() as target:
        yield Relay(target)


@pytest.mark.parametrize("length", [200, 240, 246])
def test_a_data_path_of_nearly_260_characters_is_used_as_it_is(data, start, length):
    del data
    name = "C:"
    while length - len(name) > 60:
        name += "\\" + "d" * 49
    name += "\\" + "e" * (length - len(name) - 1)
    assert len(name) == length
    parent = unix_path(name)
    parent.mkdir(parents=True)
    with local_application_data(name):
        elsewhere = DataFolder(parent)
        program = start().wait_running()
        elsewhere.wait_for_start()
        send_raw(message(integer_binding(1)))
        elsewhere.wait_for_traps(1)
        assert elsewhere.masked_traps() == record(integer_line(1))
        assert program.close() == 0
    assert elsewhere.config.read_bytes() == config()
    shutil.rmtree(drive_c() / ("d" * 49), ignore_errors=True)


def test_a_data_path_beyond_260_characters_stops_nothing(data, start):
    del data
    with local_application_data("C:\\" + "x" * 300):
        assert start().wait_running().close() == 0


def test_a_data_folder_removed_while_running_costs_what_comes_until_it_is_back(data, start, relay):
    data.write_config(relay.config)
    program = start().wait_running()
    data.wait_for_start()
    data.remove()
    relay.expect_a_trap_is_handled(1)
    assert not data.folder.exists()
    data.folder.mkdir()
    relay.expect_a_trap_is_handled(2)
    assert data.masked_traps() == record(integer_line(2))
    data.remove()
    assert program.close() == 0
    assert not data.folder.exists()


def test_a_folder_in_the_place_of_the_trap_file_costs_the_records_only(data, start, relay):
    data.write_config(relay.config)
    data.traps.mkdir()
    program = start().wait_running()
    relay.expect_a_trap_is_handled(1)
    data.wait_for_traps(1)
    assert program.close() == 0
    assert list(data.traps.iterdir()) == []


def test_a_folder_in_the_place_of_the_settings_gives_the_defaults_and_is_never_written(data, start):
    data.config.mkdir(parents=True)
    program = start().wait_running()
    data.wait_for_log("No config.xml found (or empty). Using defaults.")
    assert program.close() == 0
    assert list(data.config.iterdir()) == []
    assert "Config saved." not in data.log_messages()


def test_settings_that_nobody_may_open_give_the_defaults_and_stay(data, start, driver):
    data.write_config(config(1, "10.1.2.3", 8162))
    driver("hold_file", data.windows_path(data.config))
    try:
        program = start().wait_running()
        data.wait_for_log("No config.xml found (or empty). Using defaults.")
        assert program.close() == 0
    finally:
        driver("release_files")
    assert data.config.read_bytes() == config(1, "10.1.2.3", 8162)
    assert "Config saved." not in data.log_messages()


def test_a_mibs_folder_of_thousands_with_links_folders_and_a_file_that_cannot_be_read(data, start, driver):
    files = 2000
    for number in range(files):
        data.add_mib(f"m{number}.mib", f"m{number} OBJECT IDENTIFIER ::= {{ enterprises {number} }}\n")
    (data.mibs / "folder.mib").mkdir()
    data.add_mib("folder.mib/inside.mib", "inside OBJECT IDENTIFIER ::= { enterprises 9001 }\n")
    (data.folder / "target").write_text("linked OBJECT IDENTIFIER ::= { enterprises 9002 }\n")
    (data.mibs / "link.mib").symlink_to(data.folder / "target")
    (data.mibs / "dangling.mib").symlink_to(data.folder / "nothing")
    (data.mibs / "circle.mib").symlink_to("circle.mib")
    data.add_mib("held.mib", "held OBJECT IDENTIFIER ::= { enterprises 9003 }\n")
    driver("hold_file", data.windows_path(data.mibs / "held.mib"))
    try:
        program = start().wait_running()
        data.wait_for_log(f"MIBs loaded. OID mappings: {files + 1}")
        send_raw(message(integer_binding(1)))
        data.wait_for_traps(1)
        assert program.close() == 0
    finally:
        driver("release_files")


def test_a_read_only_data_folder_changes_no_file_and_stops_nothing(data, start, relay):
    data.write_config(relay.config)
    data.traps.write_bytes(b"old records")
    data.log.write_bytes(b"old lines")
    with read_only(data.folder):
        program = start().wait_running()
        relay.expect_a_trap_is_handled(1)
        assert program.close() == 0
    assert data.traps.read_bytes() == b"old records"
    assert data.log.read_bytes() == b"old lines"
    assert not data.mibs.exists()


def test_a_full_disk_costs_what_does_not_fit_and_nothing_once_there_is_room(data, start, relay):
    with small_disk(data.folder, "96k"):
        data.write_config(relay.config)
        program = start().wait_running()
        data.wait_for_start()
        relay.expect_a_trap_is_handled(0)
        filler = data.folder / "filler"
        with pytest.raises(OSError), filler.open("wb", buffering=0) as file:
            while file.write(b"x" * 4096):
                pass
        for number in range(1, 200):
            relay.expect_a_trap_is_handled(number)
        full = data.masked_traps()
        filler.unlink()
        relay.expect_a_trap_is_handled(200)
        octets = data.masked_traps()
        assert program.close() == 0
    assert octets == full + record(integer_line(200))
    whole = b"".join(record(integer_line(number)) for number in range(200))
    assert len(full) < len(whole), "the disk was never full"
    assert full.startswith(record(integer_line(0)))


def records_and_cut(octets, whole):
    """How many times `whole` is repeated at the start of the octets, and what comes behind."""
    count = 0
    while octets.startswith(whole, count * len(whole)):
        count += 1
    return count, octets[count * len(whole) :]


def test_killed_in_a_storm_it_cuts_at_most_the_record_in_flight_and_appends_behind(data, start):
    text = b"x" * 8000
    binding = tlv(0x30, tlv(0x06, bytes([0x2B, 6, 1, 4, 1, 9, 1])) + tlv(0x04, text))
    whole = record(f'---> [1] 1.3.6.1.4.1.9.1  OCTET STRING = "{text.decode()}"')
    trap = message(binding)
    before = b""
    cuts = 0
    for kill in range(KILLS):
        program = start().wait_running()
        wait_until(
            lambda: data.log_octets().count(b"Trap thread started (UDP 162)." + LINE_END) == kill + 1,
            "the trap thread",
        )
        ended = threading.Event()

        def storm():
            with udp_socket() as udp:
                while not ended.is_set():
                    udp.sendto(trap, (LOOPBACK, TRAP_PORT))

        sender = threading.Thread(target=storm)
        sender.start()
        wait_until(
            lambda: len(data.trap_octets()) > len(before) + (kill % 5 + 2) * len(whole), "some records"
        )
        program.end()
        ended.set()
        sender.join()
        octets = data.trap_octets()
        assert octets.startswith(before), "an earlier record has changed"
        _, rest = records_and_cut(mask_stamps(octets[len(before) :]), whole)
        # A stamp that was cut has not been masked.
        assert len(rest) < len(whole) and (len(rest) < 23 or whole.startswith(rest)), rest[:200]
        cuts += len(rest) > 0
        before = octets
    print(f"\n{cuts} of {KILLS} kills cut a record.")
    lines = data.log_octets().split(LINE_END)
    assert sum(line.endswith(b"Server started.") for line in lines) == KILLS
