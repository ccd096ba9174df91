"""The programs that Quillmont is compared with: floor programs, which do the least work possible, and snmptrapd, which
an operator would run instead."""

import os
import shutil
import signal
import subprocess
import tempfile
from pathlib import Path

from harness.data_folder import LINE_END, find_data_folder
from harness.processes import find_wine_process, start_wine
from harness.traps import TRAP_PORT
from harness.waiting import wait_until

from measuring.counters import TextCounter, listens
from measuring.programs import native_tool, windows_tool
from measuring.receivers import Receiver, UnderWine

BUFFER = 32 * 1024 * 1024  # as Quillmont requests
# The octets that Quillmont writes for a trap of two bindings.
RECORD_OCTETS = 159
LOG_LINE_OCTETS = len("2026-03-07 09:05:02.047  Trap received (127.0.0.1).") + len(LINE_END)


class NativeFloor(Receiver):
    """A program that only receives, or receives and appends to two files."""

    mark = b"\n"

    def __init__(self, appends):
        self.name = "floor: two appends" if appends else "floor: receiving only"
        self.writes = appends

    def _arguments(self, folder, name):
        if not self.writes:
            return []
        self.recorder = TextCounter(folder / "SNMP.txt", self.mark)
        return [name, str(RECORD_OCTETS), str(LOG_LINE_OCTETS)]

    def start(self):
        self._folder = Path(tempfile.mkdtemp(prefix="quillmont-measured-"))
        words = [native_tool("floor_receiver"), *self._arguments(self._folder, self._folder)]
        self._process = subprocess.Popen(words, stderr=subprocess.DEVNULL)
        self.pid = self._process.pid

    def end(self):
        os.kill(self.pid, signal.SIGKILL)
        self._process.communicate()
        shutil.rmtree(self._folder)


class WineFloor(UnderWine, NativeFloor):
    """The same as a Windows program, in Quillmont's data folder."""

    def __init__(self, driver, appends):
        super().__init__(appends)
        self._driver = driver

    def start(self):
        program = windows_tool("floor_receiver.exe")
        data = find_data_folder(self._driver)
        data.remove()
        data.folder.mkdir(parents=True)
        self._folder = data.folder
        self._process = start_wine(program, *self._arguments(data.folder, data.windows_path()))
        wait_until(lambda: listens(TRAP_PORT), f"{self.name} to listen")
        self.pid = find_wine_process(program.name)


class Snmptrapd(Receiver):
    """Writes to one file that it keeps open, and has the same receive buffer."""

    name = "snmptrapd"
    mark = b".1.3.6.1.6.3.1.1.4.1.0 ="

    def start(self):
        self._folder = Path(tempfile.mkdtemp(prefix="quillmont-measured-"))
        settings, traps = self._folder / "snmptrapd.conf", self._folder / "traps.txt"
        settings.write_text(f"disableAuthorization yes\n[snmp] serverRecvBuf {BUFFER}\n", encoding="ascii")
        self.recorder = TextCounter(traps, self.mark)
        command = ["snmptrapd", "-f", "-n", "-On", "-m", "", "-C", "-c", settings, "-Lf", traps, "udp:162"]
        self._process = subprocess.Popen(command, stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL)
        self.pid = self._process.pid

    def end(self):
        self._process.kill()
        self._process.communicate()
        shutil.rmtree(self._folder)
