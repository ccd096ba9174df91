"""The one sender: numbered traps to a port of this machine (bench/storm/sender.cpp)."""

import subprocess
from typing import NamedTuple

from measuring.places import native_tool


class Sent(NamedTuple):
    count: int
    lost: int  # dropped by the system, for the receiver's buffer was full
    sending: float  # seconds
    whole: float  # seconds until the buffer was empty

    @property
    def received(self):
        return self.count - self.lost


class Sender:
    """A sender that runs beside what is measured, no longer than the `with` statement that starts it. Modes and numbers
    as sender.cpp has them."""

    def __init__(self, mode, **numbers):
        words = [f"{name}={number}" for name, number in numbers.items()]
        self._process = subprocess.Popen(
            [native_tool("trap_sender"), mode, *words], stdout=subprocess.PIPE, stderr=subprocess.PIPE, text=True
        )

    @property
    def runs(self):
        return self._process.poll() is None

    def wait(self):
        """What was sent."""
        output, errors = self._process.communicate()
        assert self._process.returncode == 0, f"the sender failed: {errors}"
        count, lost, sending, whole = output.split()
        return Sent(int(count), int(lost), float(sending), float(whole))

    def end(self):
        """For one that was to go on longer than anybody needs it."""
        if self.runs:
            self._process.kill()
            self._process.communicate()

    def __enter__(self):
        return self

    def __exit__(self, *_):
        self.end()


def send(mode, **numbers):
    with Sender(mode, **numbers) as sender:
        return sender.wait()
