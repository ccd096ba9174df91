"""A steady load for minutes: every trap recorded, logged and forwarded, and memory that does not grow."""

import time

from harness.processes import memory_kilobytes, thread_count
from harness.traps import TRAP_PORT
from harness.waiting import wait_until

from measuring.counters import TextCounter, dropped
from measuring.forwarding_target import ForwardingTarget
from measuring.receivers import NativeEngine, ShippedProgram
from measuring.records import BINDINGS, check_each, check_order, read_numbers
from measuring.senders import Sender
from measuring.tables import row, table

TRAP_LINE = b"Trap received (127.0.0.1)."
SHORT, LONG = 20, 600  # seconds
DRAIN_SECONDS = 300


def sustain(receiver, rate, seconds):
    table(f"{rate:,}/s for {seconds} s", "receiver", "second", "recorded", "dropped", "memory kB", "threads")
    memory = []

    def report(second):
        memory.append(memory_kilobytes(receiver.pid))
        row(receiver.name, second, receiver.recorded(), dropped(TRAP_PORT), memory[-1], thread_count(receiver.pid))

    numbers = {"count": rate * seconds, "rate": rate, "bindings": BINDINGS}
    with receiver, ForwardingTarget() as target, Sender("paced", **numbers) as sender:
        start = time.monotonic()
        step = min(60, seconds // 4)
        for second in range(step, seconds + 1, step):
            time.sleep(max(0, start + second - time.monotonic()))
            report(second)
        sent = sender.wait()
        lines = TextCounter(receiver.data.log, TRAP_LINE)
        wait_until(lambda: lines.look() >= sent.received, lambda: f"{sent} lines, seen {lines.count}", DRAIN_SECONDS)
        wait_until(lambda: target.count >= sent.received, lambda: f"{sent} forwarded, seen {target.count}")
        report("end")
        check = check_order if sent.lost else check_each
        recorded = check(read_numbers(receiver.data.traps), sent.received)
        target.check()
        assert lines.count == target.count == sent.received, f"{lines.count} lines, {target.count} forwarded"
        print(f"sent {sent.count}, recorded {recorded}, logged {lines.count}, forwarded {target.count}")
    assert sent.lost == 0, f"{sent.lost} dropped"
    assert memory[-1] <= memory[0] * 1.05 + 512, "memory grows"


def measure_sustained_engine(storm):
    sustain(NativeEngine(forwards=True), storm.options.engine_rate, LONG if storm.options.long else SHORT)


def measure_sustained_program(storm):
    sustain(ShippedProgram(storm.driver, forwards=True), storm.options.program_rate,
            LONG if storm.options.long else SHORT)
