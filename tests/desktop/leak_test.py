"""The program's resources before and after many repetitions of one action: kernel handles, GDI objects, windows,
descriptors, threads and memory. With QUILLMONT_LONG=1 in the environment there are more repetitions.
"""

import os
import shutil
from dataclasses import astuple, dataclass, fields
from pathlib import Path

import pytest

from harness.mib_dialogs import delete_all, import_files, mib
from harness.processes import descriptor_count, find_wine_process, memory_kilobytes, thread_count
from harness.tool_windows import FORWARDING, LOG, MONITOR, STATUS
from harness.traps import LISTENER_PORT, LOOPBACK, TRAP_PORT, integer_binding, message, udp_socket

LONG = os.environ.get("QUILLMONT_LONG") == "1"
MIB_SAMPLES = Path("/usr/share/snmp/mibs")

# A cache stops growing, a leak does not. Wine caches device contexts: up to 50 GDI objects in the first hundred
# openings of a window, none in the next seven hundred. So at least one of this many batches must show no growth.
BATCHES = 6
# Wine's worker threads own a handle or two. One leaked object per repetition would exceed this.
FEW = 4
# The allocator caches memory; its size varies by this much without a leak.
MEMORY_SLACK_KILOBYTES = 8192


def rounds(short, long):
    return long if LONG else short


@dataclass(frozen=True)
class Resources:
    handles: int
    gdi_objects: int
    windows: int
    descriptors: int
    threads: int
    memory_kilobytes: int


class Observer:
    def __init__(self, program):
        program.attach_spy()
        self._program = program
        self._process = find_wine_process("Quillmont.exe")

    def resources(self):
        self._program.settle()
        main = self._program.main
        windows = sum(
            1 + len(self._program.driver("descendants", top["handle"])) for top in self._program.windows()
        )
        return Resources(
            main.kernel_handles(),
            main.gdi_objects(),
            windows,
            descriptor_count(self._process),
            thread_count(self._process),
            memory_kilobytes(self._process),
        )


@pytest.fixture
def observer(program, data):
    data.wait_for_start()
    return Observer(program)


def measure(observer, what, count, once):
    """Runs once() `count` times. Returns the resources before and after."""
    before = observer.resources()
    for _ in range(count):
        once()
    after = observer.resources()
    print(f"\n{count} x {what}")
    for field, old, new in zip(fields(Resources), astuple(before), astuple(after)):
        print(f"  {field.name:<17}{old:>8} before {new:>8} after")
    return before, after


def shows_no_growth(before, after):
    return (
        after.handles <= before.handles + FEW
        and after.gdi_objects <= before.gdi_objects + FEW
        and after.windows == before.windows
        and after.descriptors <= before.descriptors + FEW
        and after.threads <= before.threads + 1
        and after.memory_kilobytes <= before.memory_kilobytes + MEMORY_SLACK_KILOBYTES
    )


def expect_no_leak(observer, what, count, once):
    once()
    for _ in range(BATCHES):
        before, after = measure(observer, what, count, once)
        assert before.handles > 0 and before.gdi_objects > 0 and before.threads >= 3
        if shows_no_growth(before, after):
            return
    pytest.fail(f"{count} x {what}: growth in every batch")


def test_stopping_and_starting_leaks_nothing(observer, program):
    def cycle():
        program.stop()
        program.start()

    expect_no_leak(observer, "stop and start", rounds(20, 500), cycle)


@pytest.mark.parametrize("tool", [FORWARDING, MONITOR, LOG, STATUS], ids=lambda tool: tool.name)
def test_opening_and_closing_a_window_leaks_nothing(observer, program, tool):
    def cycle():
        window = tool.open(program)
        window.close()
        window.wait_closed()

    expect_no_leak(observer, f"{tool.name} window opened and closed", rounds(15, 200), cycle)


def test_traffic_on_both_ports_leaks_nothing(observer, program, data):
    for tool in (MONITOR, LOG, STATUS):
        tool.open(program)
    burst = 50
    sent = 0

    def cycle():
        nonlocal sent
        with udp_socket() as udp:
            for _ in range(burst):
                udp.sendto(message(integer_binding(sent)), (LOOPBACK, TRAP_PORT))
                udp.sendto(b"", (LOOPBACK, LISTENER_PORT))
        sent += burst
        data.wait_for_traps(sent)
        data.wait_for_log("Datagram on UDP 161 from 127.0.0.1.", sent)

    expect_no_leak(observer, f"{burst} datagrams on each port, windows open", rounds(10, 100), cycle)


def test_repainting_leaks_nothing(observer, program):
    expect_no_leak(observer, "main window painted", rounds(500, 5000), program.main.repaint)


def test_reloading_the_mib_files_leaks_nothing(observer, program, data):
    # The first file is locked, so each deletion fails at once; the reload then reads all other files.
    data.add_mib("A.mib", mib("first", 9999))
    for name in ("NET-SNMP-MIB.txt", "UCD-SNMP-MIB.txt"):
        shutil.copy(MIB_SAMPLES / name, data.mibs)
    status = STATUS.open(program)
    program.driver("lock_file", data.windows_path(data.mibs / "A.mib"))
    try:
        expect_no_leak(observer, "reload of the MIB files", rounds(10, 50), lambda: delete_all(program, status))
    finally:
        program.driver("release_files")
    assert len(list(data.mibs.iterdir())) == 3
    assert data.log_messages().count("Delete MIBs failed.") > rounds(10, 50)


def test_an_import_leaks_no_more_than_the_systems_dialog(observer, program, samples):
    status = STATUS.open(program)
    path = samples.add("one.mib", mib("one", 9999))
    import_files(program, status, path)
    count = rounds(10, 50)
    before, after = measure(observer, "file imported", count, lambda: import_files(program, status, path))
    # Wine's file dialog leaks one handle for each chosen file, in any program. Copying and reloading add none.
    assert after.handles <= before.handles + count + FEW
    assert after.gdi_objects <= before.gdi_objects + FEW
    assert after.windows == before.windows
    assert after.threads <= before.threads + 1
