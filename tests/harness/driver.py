"""The Python side of driver.cpp: writes requests as lines, reads replies as JSON."""

import json
import select

from harness.places import driver_file
from harness.processes import start_wine

REPLY_SECONDS = 120


class DriverError(Exception):
    """The driver replied with an error, or not at all."""


def _escape(argument):
    units = str(argument).encode("utf-16-le", "surrogatepass")
    codes = [units[i] | units[i + 1] << 8 for i in range(0, len(units), 2)]
    return "".join(chr(code) if 32 <= code < 127 and code != 92 else f"\\u{code:04x}" for code in codes)


class Driver:
    """One driver process in the prefix that WINEPREFIX names."""

    def __init__(self):
        self._process = start_wine(driver_file())

    def __call__(self, verb, *arguments):
        line = "\t".join([verb, *(_escape(argument) for argument in arguments)]) + "\n"
        self._process.stdin.write(line.encode("ascii"))
        self._process.stdin.flush()
        reply = json.loads(self._read_line())
        if "error" in reply:
            raise DriverError(reply["error"])
        return reply["value"]

    def _read_line(self):
        # There is only one request at a time, so this line is its reply.
        readable, _, _ = select.select([self._process.stdout], [], [], REPLY_SECONDS)
        if not readable:
            raise DriverError(f"no reply within {REPLY_SECONDS} s")
        line = self._process.stdout.readline()
        if not line:
            raise DriverError("the driver has ended")
        return line

    def close(self):
        self._process.stdin.close()
        self._process.wait(timeout=60)
