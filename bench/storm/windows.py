"""The shipped program with its tool windows open: how much of a storm is recorded, and how long a message waits."""

import time

from harness.tool_windows import LOG, MONITOR, STATUS
from harness.traps import TRAP_PORT

from measuring.counters import granted_buffer
from measuring.receivers import ShippedProgram
from measuring.records import BINDINGS, check_order, read_numbers
from measuring.senders import Sender, send
from measuring.socket_buffers import enlarge_buffer
from measuring.tables import row, table

# Traps, and how many a second; 0: back to back.
WITH_MONITOR = ((20000, 0), (50000, 0), (50000, 20000))
LARGE_BUFFER = 32 << 20
ANSWERS = (10000, 2000)


def record_with_monitor(receiver, count, rate, buffer=None):
    """One row; with the receive buffer made larger from outside when one is given."""
    with receiver:
        if buffer and not enlarge_buffer(receiver.pid, buffer // 2):
            print("This machine does not allow a larger buffer from outside.")
            return
        granted = granted_buffer(TRAP_PORT)
        sent = send("paced" if rate else "burst", count=count, rate=rate, bindings=BINDINGS)
        receiver.wait_for_records(sent.received)
        recorded = check_order(read_numbers(receiver.data.traps), sent.received)
        row(receiver.name, granted, count, f"{count / sent.sending:,.0f}/s", recorded, f"{sent.whole:.1f} s")


def measure_windows(storm):
    table("Recorded with the monitor open", "receiver", "buffer", "sent", "sent at", "recorded", "taken after")
    for count, rate in WITH_MONITOR:
        for programs in storm.states:
            record_with_monitor(ShippedProgram(storm.driver, programs, windows=(MONITOR,)), count, rate)
    for programs in storm.states:
        record_with_monitor(ShippedProgram(storm.driver, programs, windows=(MONITOR,)), 50000, 0, LARGE_BUFFER)
    measure_answers(storm)


def measure_answers(storm):
    """The same storm with the windows closed and open, and how long a message waits meanwhile."""
    count, rate = ANSWERS
    table(f"{count:,} traps at {rate:,}/s", "receiver", "windows", "received", "longest wait", "answers in")
    for windows in ((), (MONITOR, LOG, STATUS)):
        for programs in storm.states:
            with ShippedProgram(storm.driver, programs, windows) as receiver:
                main = receiver.program.main
                with Sender("paced", count=count, rate=rate, bindings=BINDINGS) as sender:
                    longest = storm.driver("longest_answer", main.handle, 1000 * count // rate)
                    received = sender.wait().received
                receiver.wait_for_records(received)
                check_order(read_numbers(receiver.data.traps), received)
                start = time.monotonic()
                receiver.program.settle()
                settled = time.monotonic() - start
                row(receiver.name, "open" if windows else "closed", received, f"{longest / 1000:.0f} ms",
                    f"{settled * 1000:.0f} ms")
