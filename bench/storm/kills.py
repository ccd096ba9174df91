"""Killed in a storm, again and again: what was written before stays as it was, what is new is whole records in order,
and what was taken from the socket and is in no record is no more than the program had in hand."""

from harness.traps import TRAP_PORT
from harness.waiting import wait_until

from measuring.counters import listens, taken_from_sockets
from measuring.receivers import NativeEngine, ShippedProgram
from measuring.records import BINDINGS, check_order, parse_records
from measuring.senders import Sender
from measuring.tables import row, table

SHORT, LONG = 10, 50  # kills
IN_HAND = 256  # the most that one turn holds (trap/trap_turn.h)
# More than any receiver takes, so that its buffer never runs dry; each start gets new numbers.
RATE = 200000
NUMBERS_A_START = 10**7


def kill_once(receiver, kill, before):
    """Octets of SNMP.txt, whole records in its new part, octets of a cut record, traps that were taken and lost."""
    wait_until(lambda: listens(TRAP_PORT), "the receiver to listen")
    taken_before = taken_from_sockets()
    with Sender("paced", count=NUMBERS_A_START, rate=RATE, first=kill * NUMBERS_A_START, bindings=BINDINGS):
        enough = len(before) + (kill % 5 + 1) * 100000
        wait_until(lambda: receiver.data.traps.exists() and receiver.data.traps.stat().st_size > enough, "records")
        receiver.kill()
        wait_until(lambda: not listens(TRAP_PORT), "the port to be free")
        taken = taken_from_sockets() - taken_before
    octets = receiver.data.trap_octets()
    assert octets.startswith(before), "an earlier record has changed"
    numbers, rest = parse_records(octets[len(before) :])
    check_order(numbers, len(numbers))
    return octets, len(numbers), len(rest), taken - len(numbers)


def kill_repeatedly(receiver, kills):
    octets, records, cuts, missing = b"", 0, 0, []
    with receiver:
        for kill in range(kills):
            if kill > 0:
                receiver.start_again()
            octets, whole, cut, lost = kill_once(receiver, kill, octets)
            records, cuts = records + whole, cuts + (cut > 0)
            missing.append(lost)
        receiver.start_again()
    row(receiver.name, kills, records, cuts, max(missing), f"{sum(missing) / kills:.1f}")
    return max(missing)


def measure_kills(storm):
    table("Killed in a storm", "receiver", "kills", "whole records", "records cut", "most missing", "on average")
    for programs in storm.states:
        for receiver in (NativeEngine(programs), ShippedProgram(storm.driver, programs)):
            missing = kill_repeatedly(receiver, LONG if storm.options.long else SHORT)
            assert missing <= IN_HAND, f"{missing} traps are missing after one kill"
