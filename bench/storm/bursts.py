"""Bursts, back to back: what was sent, received, recorded, logged and forwarded; with a flood on port 161 beside them
and without."""

from contextlib import ExitStack

from harness.traps import LISTENER_PORT
from harness.waiting import wait_until

from measuring.counters import TextCounter, dropped
from measuring.forwarding_target import ForwardingTarget
from measuring.receivers import NativeEngine, ShippedProgram
from measuring.records import BINDINGS, check_order, read_numbers
from measuring.senders import Sender, send
from measuring.tables import row, table

BURSTS = (1000, 10000, 50000)
FLOOD = 50000
ENDLESS = 10**9
STEADY = (20000, 2000)  # traps, a second
TRAP_LINE = b"Trap received (127.0.0.1)."
REQUEST_LINE = b"Datagram on UDP 161 from 127.0.0.1."
DRAIN_SECONDS = 300


def check_handled(receiver, target, received):
    """Everything that was received: recorded whole and in order, logged, forwarded."""
    traps = TextCounter(receiver.data.log, TRAP_LINE)
    wait_until(lambda: traps.look() >= received, lambda: f"{received} lines, seen {traps.count}", DRAIN_SECONDS)
    wait_until(lambda: target.count >= received, lambda: f"{received} forwarded, seen {target.count}")
    recorded = check_order(read_numbers(receiver.data.traps), received)
    target.check()
    assert traps.count == received and target.count == received, f"{traps.count} lines, {target.count} forwarded"
    return recorded, traps.count, target.count


def noted_on_161(receiver, flood):
    """The lines that the datagrams of the flood left, all that were received."""
    lines = TextCounter(receiver.data.log, REQUEST_LINE)
    received = flood.count - flood.lost
    wait_until(lambda: lines.look() >= received, lambda: f"{received} lines for 161, seen {lines.count}", DRAIN_SECONDS)
    assert lines.count == received
    return received


def burst(receiver, count, with_flood):
    with receiver, ForwardingTarget() as target, ExitStack() as beside:
        flood = with_flood and beside.enter_context(Sender("burst", count=FLOOD, port=LISTENER_PORT))
        sent = send("burst", count=count, bindings=BINDINGS)
        noted = noted_on_161(receiver, flood.wait()) if flood else "-"
        cells = check_handled(receiver, target, sent.received)
        row(receiver.name, count, f"{count / sent.sending:,.0f}/s", sent.received, *cells, noted,
            f"{sent.received / sent.whole:,.0f}/s")


def receivers(storm):
    """Each state of the sources natively and as it ships, one after the other."""
    for programs in storm.states:
        yield NativeEngine(programs, forwards=True)
    for programs in storm.states:
        yield ShippedProgram(storm.driver, programs, forwards=True)


def measure_bursts(storm):
    columns = ("receiver", "sent", "sent at", "received", "recorded", "logged", "forwarded", "161 noted", "taken at")
    table("Bursts, back to back", *columns)
    for with_flood in (False, True):
        for count in BURSTS:
            for receiver in receivers(storm):
                burst(receiver, count, with_flood)


def measure_flood(storm):
    """Steady traps beside a flood on port 161 that is always there; the traps must not suffer from it."""
    count, rate = STEADY
    table(f"{count:,} traps at {rate:,}/s beside a flood on 161", "receiver", "received", "recorded", "161 sent at",
          "161 noted at")
    for receiver in receivers(storm):
        with receiver, ForwardingTarget() as target:
            with Sender("burst", count=ENDLESS, port=LISTENER_PORT):
                sent = send("paced", count=count, rate=rate, bindings=BINDINGS)
                lines = TextCounter(receiver.data.log, REQUEST_LINE).look()
                lost_161 = dropped(LISTENER_PORT)
            recorded, _, _ = check_handled(receiver, target, sent.received)
            row(receiver.name, f"{sent.received}/{count}", recorded, f"{(lost_161 + lines) / sent.whole:,.0f}/s",
                f"{lines / sent.whole:,.0f}/s")
            if receiver.programs is storm.states[-1]:
                assert sent.lost == 0, "traps were lost beside the flood"
