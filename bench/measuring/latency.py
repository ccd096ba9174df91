"""How long one trap alone takes from its sending to its record on disk (bench/storm/latency.cpp)."""

import subprocess
from typing import NamedTuple

from measuring.places import native_tool


class Latency(NamedTuple):
    """In microseconds: what a tenth, half and nine tenths of the traps took at most. What else the machine does only
    ever adds, so the first is the calmest figure."""

    tenth: float
    median: float
    nine_tenths: float


def measure_latency(receiver, traps):
    """The receiver's file is the one it records to."""
    command = [native_tool("trap_latency"), receiver.recorder.path, str(traps)]
    return Latency(*map(float, subprocess.run(command, check=True, capture_output=True, text=True).stdout.split()))
