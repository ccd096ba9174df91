"""The receive buffer: what is granted of what is asked for, what it holds, where loss begins, and what it costs while
nothing happens."""

from harness.processes import memory_kilobytes
from harness.traps import TRAP_PORT

from measuring.burst_search import find_capacity, find_first_loss
from measuring.counters import granted_buffer, largest_buffer
from measuring.latency import measure_latency
from measuring.receivers import DEFAULT_BUFFER, NativeEngine, ShippedProgram, WineEngine
from measuring.socket_buffers import enlarge_buffer
from measuring.tables import row, table

MEBI = 1 << 20
ASKED_FOR = (8 * MEBI, 32 * MEBI, 64 * MEBI)
LATENCIES = 100


def measure(receiver, name, granted_anyway=None):
    """One row. granted_anyway: a buffer that this system does not grant, in octets as the system counts them, which is
    twice what is asked for; given from outside."""
    with receiver:
        if granted_anyway and not enlarge_buffer(receiver.pid, granted_anyway // 2):
            print(f"{receiver.name}: this machine does not allow a larger buffer from outside.")
            return
        granted = granted_buffer(TRAP_PORT)
        memory = memory_kilobytes(receiver.pid)
        latency = measure_latency(receiver, LATENCIES).tenth
        held = find_capacity(receiver)
    loss = "-"
    if not granted_anyway:
        with receiver:
            loss = find_first_loss(receiver) or "none"
    row(receiver.name, name, granted, held, loss, f"{memory:,} kB", f"{latency:,.0f} us")


def measure_buffers(storm):
    table(f"Receive buffer; the system grants at most {2 * largest_buffer():,}", "receiver", "asked for", "granted",
          "holds", "first loss", "calm memory", "calm latency")
    for receiver in (NativeEngine(), ShippedProgram(storm.driver)):
        measure(receiver, "its own")
    for engine in (NativeEngine, lambda buffer: WineEngine(storm.driver, buffer=buffer)):
        measure(engine(buffer=DEFAULT_BUFFER), "the default")
        for octets in ASKED_FOR:
            measure(engine(buffer=octets), f"{octets // MEBI} MiB")
    for octets in ASKED_FOR[1:]:
        measure(NativeEngine(), "its own", granted_anyway=octets)
        measure(ShippedProgram(storm.driver), "its own", granted_anyway=octets)
