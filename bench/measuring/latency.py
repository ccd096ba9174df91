"""How long one trap alone takes from its sending to its record on disk (bench/storm/latency.cpp)."""

import subprocess
from typing import NamedTuple

from measuring.places import native_tool


class Latency(NamedTuple):
    """In microseconds."""

    median: float
    nine_tenths: float
    longest: float


def measure_latency(receiver, traps):
    """The receiver's file is the one it records to."""
    command = [native_tool("trap_latency"), receiver.recorder.path, str(traps)]
    return Latency(*map(float, subprocess.run(command, check=True, capture_output=True, text=True).stdout.split()))
