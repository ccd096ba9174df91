"""Counts datagrams at sockets, processor time, and texts in a growing file."""

import os
import re
import subprocess
from pathlib import Path

PIECE = 1 << 24  # octets of a file read at once
TICKS_PER_SECOND = os.sysconf("SC_CLK_TCK")


def sockets(port):
    """The fields of each socket of the port in the system's table."""
    for line in Path("/proc/net/udp").read_text(encoding="ascii").splitlines()[1:]:
        fields = line.split()
        if int(fields[1].split(":")[1], 16) == port:
            yield fields


def listens(port):
    return any(sockets(port))


def dropped(port):
    """Datagrams that the system dropped because the buffer of the port's socket was full."""
    return sum(int(fields[-1]) for fields in sockets(port))


def read_from_sockets():
    """Datagrams read from all sockets in this network namespace."""
    names, values = (
        line.split()[1:]
        for line in Path("/proc/net/snmp").read_text(encoding="ascii").splitlines()
        if line.startswith("Udp:")
    )
    return int(values[names.index("InDatagrams")])


def granted_buffer(port):
    """The receive buffer of the port's socket in octets, as the system counts it."""
    command = ["/usr/bin/ss", "-uamnH", f"sport = :{port}"]
    text = subprocess.run(command, check=True, capture_output=True, text=True).stdout
    return int(re.search(r"\brb(\d+)", text)[1])


def cpu_seconds(pid):
    """Processor time of the process so far, user and system."""
    fields = Path("/proc", str(pid), "stat").read_text(encoding="ascii", errors="replace").rpartition(")")[2].split()
    return (int(fields[11]) + int(fields[12])) / TICKS_PER_SECOND


class TextCounter:
    """Counts a text in the complete lines of a growing file. Reads each octet once."""

    def __init__(self, path, text):
        self.path, self._text = path, text
        self._offset = 0
        self.count = 0

    def read(self):
        """Reads what is new and returns the number so far; 0 if there is no file."""
        if not self.path.exists():
            return self.count
        with open(self.path, "rb") as file:
            file.seek(self._offset)
            while end := self._count_lines(file.read(PIECE)):
                self._offset += end
                file.seek(self._offset)
        return self.count

    def _count_lines(self, octets):
        """Counts in the complete lines and returns their size."""
        end = octets.rfind(b"\n") + 1
        self.count += octets.count(self._text, 0, end)
        return end
