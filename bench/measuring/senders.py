"""Sends numbered traps to a port of this machine (bench/load/trap_sender.cpp)."""

import subprocess
from typing import NamedTuple

from measuring.programs import native_tool


class Sent(NamedTuple):
    count: int
    lost: int  # dropped by the system because the receiver's buffer was full
    sending: float  # seconds
    whole: float  # seconds until the buffer was empty

    @property
    def received(self):
        return self.count - self.lost


class Sender:
    """Runs trap_sender in the background until its `with` statement ends. For modes and numbers see trap_sender.cpp."""

    def __init__(self, mode, **numbers):
        words = [f"{name}={number}" for name, number in numbers.items()]
        self._process = subprocess.Popen(
            [native_tool("trap_sender"), mode, *words], stdout=subprocess.PIPE, stderr=subprocess.PIPE, text=True
        )

    def wait(self):
        """Waits for the sender to end and returns its result."""
        output, errors = self._process.communicate()
        assert self._process.returncode == 0, f"the sender failed: {errors}"
        count, lost, sending, whole = output.split()
        return Sent(int(count), int(lost), float(sending), float(whole))

    def __enter__(self):
        return self

    def __exit__(self, *_):
        if self._process.poll() is None:
            self._process.kill()
            self._process.communicate()


def send(mode, **numbers):
    with Sender(mode, **numbers) as sender:
        return sender.wait()
