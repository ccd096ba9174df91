"""Measures bursts, floods, kills and sustained load and prints tables; called by bursts.sh. The system counts the
datagrams that it drops for each socket, so the number received is exact. Fails if a received trap is not recorded,
logged and forwarded."""

import argparse
import sys
import time

from harness.driver import Driver
from harness.processes import memory_kilobytes, thread_count
from harness.traps import LISTENER_PORT, TRAP_PORT
from harness.waiting import wait_until

from measuring.counters import TextCounter, dropped, listens, read_from_sockets
from measuring.programs import programs_in, programs_now
from measuring.receivers import ForwardingTarget, NativeEngine, ShippedProgram
from measuring.records import BINDINGS, check_order, parse_records, read_numbers
from measuring.senders import Sender, send
from measuring.tables import row, table

BURSTS = (1000, 10000, 50000)
FLOOD_TRAPS, FLOOD_RATE = 20000, 2000
ENDLESS = 10**9
TRAP_LINE = b"Trap received (127.0.0.1)."
REQUEST_LINE = b"Datagram on UDP 161 from 127.0.0.1."
DRAIN_SECONDS = 300

MAX_BATCH = 256  # traps that the receiver reads before it writes their records
KILL_RATE = 200000  # more than any receiver can read, so that its buffer is never empty
NUMBERS_PER_START = 10**7


def check_handled(receiver, target, received):
    """Waits until all received traps are recorded, logged and forwarded, and checks every record."""
    traps = TextCounter(receiver.data.log, TRAP_LINE)
    wait_until(lambda: traps.read() >= received, lambda: f"{received} lines, seen {traps.count}", DRAIN_SECONDS)
    target.wait_for(received)
    check_order(read_numbers(receiver.data.traps), received)
    assert traps.count == received and target.count == received, f"{traps.count} lines, {target.count} forwarded"


def receivers(options, forwards):
    """Each build, natively and as it ships."""
    earlier = [programs_in(options.before)] if options.before else []
    for programs in [*earlier, programs_now()]:
        yield NativeEngine(programs, forwards)
        yield ShippedProgram(options.driver, programs, forwards)


def measure_bursts(options):
    table("Bursts, back to back", "receiver", "sent", "sent at", "all handled", "drained at")
    for count in BURSTS:
        for receiver in receivers(options, forwards=True):
            with receiver, ForwardingTarget() as target:
                sent = send("burst", count=count, bindings=BINDINGS)
                check_handled(receiver, target, sent.received)
                row(receiver.name, count, f"{count / sent.sending:,.0f}/s", sent.received,
                    f"{sent.received / sent.whole:,.0f}/s")


def measure_flood(options):
    """Steady traps during an endless flood on port 161, which must not lose a trap."""
    table(f"{FLOOD_TRAPS:,} traps at {FLOOD_RATE:,}/s during a flood on 161", "receiver", "handled", "161 sent at",
          "161 logged at")
    for receiver in receivers(options, forwards=True):
        with receiver, ForwardingTarget() as target:
            wait_until(lambda: listens(LISTENER_PORT), "the receiver to listen on 161")
            with Sender("burst", count=ENDLESS, port=LISTENER_PORT):
                sent = send("paced", count=FLOOD_TRAPS, rate=FLOOD_RATE, bindings=BINDINGS)
                lines = TextCounter(receiver.data.log, REQUEST_LINE).read()
                lost_161 = dropped(LISTENER_PORT)
            check_handled(receiver, target, sent.received)
            row(receiver.name, f"{sent.received}/{FLOOD_TRAPS}", f"{(lost_161 + lines) / sent.whole:,.0f}/s",
                f"{lines / sent.whole:,.0f}/s")
            assert sent.lost == 0 or receiver.programs.name, "traps were lost during the flood"


def kill_once(receiver, kill, before):
    """Returns the octets of SNMP.txt, the number of new whole records, whether a record was truncated, and the number
    of traps that were read from the socket but not recorded."""
    wait_until(lambda: listens(TRAP_PORT), "the receiver to listen")
    read_before = read_from_sockets()
    with Sender("paced", count=NUMBERS_PER_START, rate=KILL_RATE, first=kill * NUMBERS_PER_START, bindings=BINDINGS):
        enough = len(before) + (kill % 5 + 1) * 100000
        wait_until(lambda: receiver.data.traps.exists() and receiver.data.traps.stat().st_size > enough, "records")
        receiver.kill()
        wait_until(lambda: not listens(TRAP_PORT), "the port to be free")
        read = read_from_sockets() - read_before
    octets = receiver.data.trap_octets()
    assert octets.startswith(before), "an earlier record has changed"
    numbers, rest = parse_records(octets[len(before) :])
    check_order(numbers, len(numbers))
    return octets, len(numbers), bool(rest), read - len(numbers)


def measure_kills(options):
    """Kills the receiver in bursts: earlier records do not change, new ones are whole and in order, and at most one
    batch is missing."""
    table("Killed in a burst", "receiver", "kills", "whole records", "truncated", "most missing")
    kills = 50 if options.long else 10
    for receiver in receivers(options, forwards=False):
        octets, records, truncated, most = b"", 0, 0, 0
        with receiver:
            for kill in range(kills):
                if kill > 0:
                    receiver.start_again()
                octets, whole, cut, missing = kill_once(receiver, kill, octets)
                records, truncated, most = records + whole, truncated + cut, max(most, missing)
            receiver.start_again()
        row(receiver.name, kills, records, truncated, most)
        assert most <= MAX_BATCH, f"{most} traps are missing after one kill"


def sustain(options, receiver, rate):
    seconds = 600 if options.long else 20
    table(f"{rate:,}/s for {seconds} s", "receiver", "second", "recorded", "dropped", "memory kB", "threads")
    memory = []

    def report(second):
        memory.append(memory_kilobytes(receiver.pid))
        row(receiver.name, second, receiver.recorder.read(), dropped(TRAP_PORT), memory[-1], thread_count(receiver.pid))

    numbers = {"count": rate * seconds, "rate": rate, "bindings": BINDINGS}
    with receiver, ForwardingTarget() as target, Sender("paced", **numbers) as sender:
        start = time.monotonic()
        step = seconds // 4
        for second in range(step, seconds + 1, step):
            time.sleep(max(0, start + second - time.monotonic()))
            report(second)
        sent = sender.wait()
        check_handled(receiver, target, sent.received)
        report("end")
    assert sent.lost == 0, f"{sent.lost} dropped"
    assert memory[-1] <= memory[0] * 1.05 + 512, "memory grows"


def sustain_native(options):
    sustain(options, NativeEngine(forwards=True), options.native_rate)


def sustain_wine(options):
    sustain(options, ShippedProgram(options.driver, forwards=True), options.wine_rate)


PARTS = {
    "bursts": measure_bursts,
    "flood": measure_flood,
    "kills": measure_kills,
    "sustained-native": sustain_native,
    "sustained-wine": sustain_wine,
}


def read_options():
    parser = argparse.ArgumentParser(description=__doc__)
    parser.add_argument("--long", action="store_true", help="50 kills instead of 10, 10 min of load instead of 20 s")
    parser.add_argument("--before", metavar="FOLDER", help="also measure these programs (measuring/programs.py)")
    parser.add_argument("--native-rate", type=int, default=20000, help="traps a second of sustained-native")
    parser.add_argument("--wine-rate", type=int, default=5000, help="traps a second of sustained-wine")
    parser.add_argument("parts", nargs="*", metavar="PART", help=f"any of {', '.join(PARTS)}; default: all")
    return parser.parse_args()


def main():
    options = read_options()
    options.driver = Driver()
    failures = []
    for name in options.parts or PARTS:
        try:
            PARTS[name](options)
        except AssertionError as error:
            failures.append(f"{name}: {error}")
    options.driver.close()
    print("\n" + "\n".join(f"Failed: {failure}" for failure in failures) if failures else "\nNothing was lost.")
    return 1 if failures else 0


if __name__ == "__main__":
    sys.exit(main())
