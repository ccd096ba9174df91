"""The shipped program with its tool windows open: how much of a storm is recorded, and how long a message waits."""

import time

from harness.tool_windows import LOG, MONITOR, STATUS

from measuring.receivers import ShippedProgram
from measuring.records import BINDINGS, check_order, read_numbers
from measuring.senders import Sender, send
from measuring.tables import row, table

# Traps, and how many a second; 0: back to back.
WITH_MONITOR = ((20000, 0), (50000, 0), (50000, 20000))
ANSWERS = (10000, 2000)


def measure_windows(storm):
    table("Recorded with the monitor open", "receiver", "sent", "sent at", "recorded")
    for count, rate in WITH_MONITOR:
        for programs in storm.states:
            with ShippedProgram(storm.driver, programs, windows=(MONITOR,)) as receiver:
                mode = "paced" if rate else "burst"
                sent = send(mode, count=count, rate=rate, bindings=BINDINGS)
                receiver.wait_for_records(sent.received)
                recorded = check_order(read_numbers(receiver.data.traps), sent.received)
                row(receiver.name, count, f"{count / sent.sending:,.0f}/s", recorded)
    measure_answers(storm)


def measure_answers(storm):
    """The same storm with the windows closed and open, and how long a message waits meanwhile."""
    count, rate = ANSWERS
    table(f"{count:,} traps at {rate:,}/s", "receiver", "windows", "received", "longest wait", "answers in")
    for windows in ((), (MONITOR, LOG, STATUS)):
        for programs in storm.states:
            with ShippedProgram(storm.driver, programs, windows) as receiver:
                main = receiver.program.main
                sender = Sender("paced", count=count, rate=rate, bindings=BINDINGS)
                longest = storm.driver("longest_answer", main.handle, 1000 * count // rate)
                received = sender.wait().received
                receiver.wait_for_records(received)
                check_order(read_numbers(receiver.data.traps), received)
                start = time.monotonic()
                receiver.program.settle()
                settled = time.monotonic() - start
                row(receiver.name, "open" if windows else "closed", received, f"{longest / 1000:.0f} ms",
                    f"{settled * 1000:.0f} ms")
