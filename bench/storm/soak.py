"""Hours of calm work in minutes of attention: steady traps while the files are moved away and windows come and go.
Every trap is recorded once and in order, whichever file it went to."""

import itertools
import time

from harness.processes import descriptor_count, memory_kilobytes, thread_count
from harness.tool_windows import TOOL_WINDOWS

from measuring.receivers import ShippedProgram
from measuring.records import BINDINGS, check_each, read_numbers
from measuring.senders import Sender
from measuring.tables import row, table

RATE = 100
SHORT, LONG = 60, 3600  # seconds
WINDOW_SECONDS = 5


class MovedFiles:
    """Takes SNMP.txt and log.txt away, as an operator's script does."""

    def __init__(self, data):
        self._data = data
        self._folder = data.folder / "moved"
        self._folder.mkdir()
        self.count = 0

    def move(self):
        for path in (self._data.traps, self._data.log):
            if path.exists():
                path.rename(self._folder / f"{self.count:06}-{path.name}")
        self.count += 1

    def read(self, path, parse):
        """What parse(file) yields, of all files of this name in their order."""
        for file in [*sorted(self._folder.glob(f"*-{path.name}")), path]:
            if file.exists():
                yield from parse(file)


def trap_lines(path):
    return (line for line in path.read_bytes().split(b"\n") if b"Trap received (" in line)


def show(tool, program):
    """Opens a window, lets it stand for a while and closes it."""
    window = tool.open(program)
    time.sleep(WINDOW_SECONDS)
    window.close()
    window.wait_closed()


def footprint(pid):
    return memory_kilobytes(pid), thread_count(pid), descriptor_count(pid)


def soak(receiver, seconds, move_seconds):
    columns = ("receiver", "second", "moves", "windows", "memory kB", "threads", "descriptors")
    table(f"{RATE}/s for {seconds} s, files moved away every {move_seconds} s", *columns)
    tools = itertools.cycle(TOOL_WINDOWS)
    numbers = {"count": RATE * seconds, "rate": RATE, "bindings": BINDINGS}
    opened = 0
    with receiver, Sender("paced", **numbers) as sender:
        files = MovedFiles(receiver.data)
        start = time.monotonic()
        next_move, next_report = move_seconds, seconds / 10
        while sender.runs:
            show(next(tools), receiver.program)
            opened += 1
            elapsed = time.monotonic() - start
            if elapsed >= next_move:
                files.move()
                next_move += move_seconds
            if elapsed >= next_report:
                row(receiver.name, int(elapsed), files.count, opened, *footprint(receiver.pid))
                next_report += seconds / 10
        sent = sender.wait()
        assert sent.lost == 0, f"{sent.lost} dropped"
        receiver.program.settle()
        recorded = check_each(files.read(receiver.data.traps, read_numbers), sent.count)
        logged = sum(1 for _ in files.read(receiver.data.log, trap_lines))
        assert logged == sent.count, f"{logged} lines"
        print(f"sent {sent.count}, recorded {recorded}, logged {logged}, in {files.count + 1} files")


def measure_soak(storm):
    if storm.options.long:
        soak(ShippedProgram(storm.driver), LONG, 30)
    else:
        soak(ShippedProgram(storm.driver), SHORT, 10)
