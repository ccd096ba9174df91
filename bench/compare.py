"""Compares Quillmont with floor programs, with snmptrapd and with an earlier build of itself; called by compare.sh.

Each round measures one side directly after the other and gives one ratio. The table shows the median and the range of
the ratios: absolute figures of a shared machine mean little.
"""

import argparse
import subprocess

from harness.driver import Driver
from harness.traps import TRAP_PORT

from measuring.counters import granted_buffer
from measuring.peers import NativeFloor, Snmptrapd, WineFloor
from measuring.programs import native_tool, programs_in
from measuring.receivers import ForwardingTarget, NativeEngine, ShippedProgram
from measuring.senders import send
from measuring.tables import RatioTable

BINDINGS = 2  # the fewest that a v2c trap has, so that the cost of opening two files weighs most
LATENCIES = 500  # traps sent alone


def native_sides(options, forwards=False):
    """Returns our program and those it is compared with."""
    others = [NativeFloor(appends=True), NativeFloor(appends=False), Snmptrapd()]
    if options.before:
        others.append(NativeEngine(programs_in(options.before), forwards))
    return NativeEngine(forwards=forwards), others


def wine_sides(options, forwards=False):
    others = [WineFloor(options.driver, appends=True), WineFloor(options.driver, appends=False)]
    if options.before:
        others.append(ShippedProgram(options.driver, programs_in(options.before), forwards))
    return ShippedProgram(options.driver, forwards=forwards), others


def keep_busy(receiver, count):
    """Sends so that the receiver's buffer is never empty and never full. Returns the traps handled per second and the
    CPU seconds for 100,000."""
    with receiver, ForwardingTarget() as target:
        before = receiver.cpu()
        sent = send("keep-busy", count=count, keep=granted_buffer(TRAP_PORT) // 2, bindings=BINDINGS)
        receiver.wait_for_records(sent.received)
        used = receiver.cpu() - before
        if receiver.forwards:
            target.wait_for(count)
    recorded = receiver.recorder.count if receiver.recorder else count
    assert sent.lost == 0 and recorded == count, f"{receiver.name}: {sent}, {recorded} recorded"
    return sent.count / sent.whole, used * 100000 / sent.count


def compare_rates(table, sides, where, count):
    ours, others = sides
    for theirs in others:
        (our_rate, our_cpu), (their_rate, their_cpu) = keep_busy(ours, count), keep_busy(theirs, count)
        table.add(f"{where}, sustained traps/s without loss: {theirs.name}", "/s", our_rate, their_rate)
        table.add(f"{where}, CPU seconds for 100,000: {theirs.name}", "s", our_cpu, their_cpu)


def compare_native(table, options):
    compare_rates(table, native_sides(options), "native", options.traps)


def compare_native_forwarding(table, options):
    compare_rates(table, native_sides(options, forwards=True), "native, forwarding", options.traps)


def compare_wine(table, options):
    compare_rates(table, wine_sides(options), "Wine", options.wine_traps)


def compare_wine_forwarding(table, options):
    compare_rates(table, wine_sides(options, forwards=True), "Wine, forwarding", options.wine_traps)


def measure_latency(receiver):
    """Returns the 10th percentile and the median of the microseconds from sending a trap to an idle receiver until its
    record is on disk. Other load only adds time, so the percentile varies less."""
    with receiver:
        command = [native_tool("trap_latency"), receiver.recorder.path, str(LATENCIES)]
        return [*map(float, subprocess.run(command, check=True, capture_output=True, text=True).stdout.split())]


def compare_latencies(table, sides, where):
    ours, others = sides
    for theirs in others:
        if theirs.writes:
            our, their = measure_latency(ours), measure_latency(theirs)
            title = f"{where}, one trap alone to its record"
            table.add(f"{title}, 10th percentile: {theirs.name}", "us", our[0], their[0])
            table.add(f"{title}, median: {theirs.name}", "us", our[1], their[1])


def compare_native_latency(table, options):
    compare_latencies(table, native_sides(options), "native")


def compare_wine_latency(table, options):
    compare_latencies(table, wine_sides(options), "Wine")


COMPARISONS = {
    "native": compare_native,
    "wine": compare_wine,
    "native-forwarding": compare_native_forwarding,
    "wine-forwarding": compare_wine_forwarding,
    "native-latency": compare_native_latency,
    "wine-latency": compare_wine_latency,
}


def read_options():
    parser = argparse.ArgumentParser(description=__doc__)
    parser.add_argument("--rounds", type=int, default=5)
    parser.add_argument("--before", metavar="FOLDER", help="also compare with these programs (measuring/programs.py)")
    parser.add_argument("--traps", type=int, default=100000, help="sent to each native program")
    parser.add_argument("--wine-traps", type=int, default=50000, help="sent to each program under Wine")
    parser.add_argument("--only", default=",".join(COMPARISONS), help="comma-separated: " + ", ".join(COMPARISONS))
    return parser.parse_args()


def main():
    options = read_options()
    table = RatioTable()
    options.driver = Driver()
    for number in range(options.rounds):
        for name in options.only.split(","):
            print(f"round {number + 1}: {name}", flush=True)
            COMPARISONS[name](table, options)
    options.driver.close()
    print("\n".join(table.lines()))


if __name__ == "__main__":
    main()
