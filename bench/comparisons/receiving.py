"""Side by side on the ports: rates, processor time, latency, bursts, memory, start."""

import os
import signal
import time

from harness.places import program_file
from harness.processes import find_wine_process, memory_kilobytes, start_wine
from harness.tool_windows import LOG, MONITOR, STATUS
from harness.traps import TRAP_PORT
from harness.waiting import wait_until

from measuring.burst_search import find_capacity
from measuring.counters import granted_buffer, listens
from measuring.latency import measure_latency
from measuring.peers import NativeFloor, Snmptrapd, WineFloor
from measuring.places import programs_in, windows_tool
from measuring.receivers import NativeEngine, ShippedProgram
from measuring.senders import send

BINDINGS = 2  # of each trap: the fewest that a v2c trap has, and the hardest for who opens two files
LATENCIES = 500


def native_sides(options):
    """Ours, and what it is held against."""
    others = [NativeFloor(appends=True), NativeFloor(appends=False), Snmptrapd()]
    if options.before:
        others.append(NativeEngine(programs_in(options.before)))
    return NativeEngine(), others


def wine_sides(options):
    others = [WineFloor(options.driver, appends=True), WineFloor(options.driver, appends=False)]
    if options.before:
        others.append(ShippedProgram(options.driver, programs_in(options.before)))
    return ShippedProgram(options.driver), others


def keep_busy(receiver, count):
    """Traps a second without loss, and processor seconds for 100,000, of a storm whose next traps always wait."""
    with receiver:
        before = receiver.cpu()
        sent = send("keep-busy", count=count, keep=granted_buffer(TRAP_PORT) // 2, bindings=BINDINGS)
        receiver.wait_for_records(sent.received)
        used = receiver.cpu() - before
    recorded = receiver.recorder.count if receiver.writes else count
    assert sent.lost == 0 and recorded == count, f"{receiver.name}: {sent}, {recorded} recorded"
    return sent.count / sent.whole, used * 100000 / sent.count


def compare_rates(table, sides, where, count):
    ours, others = sides
    for theirs in others:
        (our_rate, our_cpu), (their_rate, their_cpu) = keep_busy(ours, count), keep_busy(theirs, count)
        table.add(f"{where}, sustained traps/s without loss: {theirs.name}", "/s", our_rate, their_rate)
        table.add(f"{where}, CPU seconds for 100,000: {theirs.name}", "s", our_cpu, their_cpu)


def compare_native_rates(table, options):
    compare_rates(table, native_sides(options), "native", options.traps)


def compare_wine_rates(table, options):
    compare_rates(table, wine_sides(options), "Wine", options.wine_traps)


def work_at_rate(receiver, count, rate):
    """Processor seconds for 100,000 traps that come at this rate, and the share of them that was recorded."""
    with receiver:
        before = receiver.cpu()
        sent = send("paced", count=count, rate=rate, bindings=BINDINGS)
        receiver.wait_for_records(sent.received)
        used = receiver.cpu() - before
    return used * 100000 / sent.received, 100 * sent.received / sent.count


def compare_work(table, sides, where, count, rate):
    ours, others = sides
    for theirs in others:
        (our_cpu, our_share), (their_cpu, their_share) = (work_at_rate(side, count, rate) for side in (ours, theirs))
        title = f"{where}, {count:,} traps at {rate:,}/s"
        table.add(f"{title}, CPU seconds for 100,000 received: {theirs.name}", "s", our_cpu, their_cpu)
        table.add(f"{title}, received: {theirs.name}", "%", our_share, their_share)


def compare_native_work(table, options):
    compare_work(table, native_sides(options), "native", options.traps, options.rate)


def compare_wine_work(table, options):
    compare_work(table, wine_sides(options), "Wine", options.traps, options.wine_rate)


def latency(receiver):
    with receiver:
        return measure_latency(receiver, LATENCIES)


def compare_latencies(table, sides, where):
    ours, others = sides
    for theirs in others:
        if theirs.writes:
            our, their = latency(ours), latency(theirs)
            title = f"{where}, one trap alone to its record"
            table.add(f"{title}, fastest tenth: {theirs.name}", "us", our.tenth, their.tenth)
            table.add(f"{title}, median: {theirs.name}", "us", our.median, their.median)


def compare_native_latency(table, options):
    compare_latencies(table, native_sides(options), "native")


def compare_wine_latency(table, options):
    compare_latencies(table, wine_sides(options), "Wine")


def measure_burst(receiver):
    """What the buffer holds while the receiver is stopped; then a burst of that size while it runs, without loss."""
    with receiver:
        held = find_capacity(receiver, BINDINGS)
        sent = send("burst", count=held, bindings=BINDINGS)
        receiver.wait_for_records(held + sent.received)
        assert sent.lost == 0, f"{receiver.name}: lost {sent.lost} of {held}"
    return held


def compare_bursts(table, options):
    windows = (MONITOR, LOG, STATUS)
    table.add("burst without loss: snmptrapd, the same buffer", "traps", measure_burst(NativeEngine()),
              measure_burst(Snmptrapd()))
    table.add("burst without loss: snmptrapd as installed", "traps", measure_burst(NativeEngine()),
              measure_burst(Snmptrapd(buffer=0)))
    table.add("burst without loss, three windows open: floor program under Wine", "traps",
              measure_burst(ShippedProgram(options.driver, windows=windows)),
              measure_burst(WineFloor(options.driver, appends=True)))


def settled_memory(receiver):
    """MiB, once a hundred looks, more than a second, saw the same: a program listens before its window is painted."""
    readings = []

    def is_settled():
        readings.append(memory_kilobytes(receiver.pid))
        return len(readings) >= 100 and len(set(readings[-100:])) == 1

    with receiver:
        wait_until(is_settled, "memory to stay the same")
    return readings[-1] / 1024


def start_seconds(executable, *arguments):
    """From the start of a Windows program, the way from a shell included, until it listens."""
    wait_until(lambda: not listens(TRAP_PORT), "port 162 to be free")
    start = time.monotonic()
    process = start_wine(executable, *arguments)
    deadline = start + 60
    while not listens(TRAP_PORT):
        assert time.monotonic() < deadline, f"{executable} does not listen"
        time.sleep(0.001)
    taken = time.monotonic() - start
    os.kill(find_wine_process(executable.name), signal.SIGKILL)
    process.communicate()
    return taken


def compare_footprints(table, options):
    driver = options.driver
    window = WineFloor(driver, appends=True, program="floor_receiver_window.exe")
    table.add("Wine, resident: floor program without a window", "MiB", settled_memory(ShippedProgram(driver)),
              settled_memory(WineFloor(driver, appends=True)))
    table.add("Wine, resident: floor program with one empty window", "MiB", settled_memory(ShippedProgram(driver)),
              settled_memory(window))
    table.add("native, resident: snmptrapd", "MiB", settled_memory(NativeEngine()), settled_memory(Snmptrapd()))
    table.add("Wine, start to listening: floor program", "ms", 1000 * start_seconds(program_file()),
              1000 * start_seconds(windows_tool("floor_receiver.exe")))
