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


def sizes(receiver, name):
    """One row; each figure from a fresh receiver."""
    with receiver:
        granted = granted_buffer(TRAP_PORT)
        calm = memory_kilobytes(receiver.pid), measure_latency(receiver, LATENCIES).tenth
        held = find_capacity(receiver)
    with receiver:
        loss = find_first_loss(receiver)
    row(receiver.name, name, granted, held, loss or "none", f"{calm[0]:,} kB", f"{calm[1]:,.0f} us")


def enlarged(receiver, octets):
    """The same as far as it can be had for a buffer that this system does not grant."""
    with receiver:
        # The system counts twice what it is asked for.
        if not enlarge_buffer(receiver.pid, octets // 2):
            print(f"{receiver.name}: this machine does not allow a larger buffer from outside.")
            return
        granted = granted_buffer(TRAP_PORT)
        calm = memory_kilobytes(receiver.pid), measure_latency(receiver, LATENCIES).tenth
        held = find_capacity(receiver)
    row(receiver.name, f"{octets // MEBI} MiB forced", granted, held, "-", f"{calm[0]:,} kB", f"{calm[1]:,.0f} us")


def measure_buffers(storm):
    table(f"Receive buffer; the system grants at most {2 * largest_buffer():,}", "receiver", "asked for", "granted",
          "holds", "first loss", "calm memory", "calm latency")
    for receiver in (NativeEngine(), ShippedProgram(storm.driver)):
        sizes(receiver, "its own")
    for engine in (NativeEngine, lambda buffer: WineEngine(storm.driver, buffer=buffer)):
        sizes(engine(buffer=DEFAULT_BUFFER), "the default")
        for octets in ASKED_FOR:
            sizes(engine(buffer=octets), f"{octets // MEBI} MiB")
    for octets in ASKED_FOR[1:]:
        enlarged(NativeEngine(), octets)
        enlarged(ShippedProgram(storm.driver), octets)
