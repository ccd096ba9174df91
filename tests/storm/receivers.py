"""The receivers that are measured, each with its data folder and its process."""

import os
import subprocess
import tempfile

from harness.data_folder import DataFolder, config, find_data_folder
from harness.processes import find_wine_process
from harness.program import Program
from harness.traps import LOOPBACK

FORWARDING_PORT = 9162
# What asks for the system's usual buffer of 212,992 octets, since Linux doubles what is asked for.
DEFAULT_BUFFER = 106496


class NativeReceiver:
    """The engine built for this machine; its own receive buffer unless one is asked for."""

    name = "native"

    def __init__(self, buffer=None):
        self._folder = tempfile.TemporaryDirectory()
        self.data = DataFolder(self._folder.name)
        self._start([os.environ["QUILLMONT_RECEIVER"]], buffer, QUILLMONT_DATA_HOME=self._folder.name)
        self.pid = self._process.pid

    def _start(self, command, buffer, **environment):
        self.data.folder.mkdir(parents=True, exist_ok=True)
        self.data.config.write_bytes(config(1, LOOPBACK, FORWARDING_PORT))
        arguments = [] if buffer is None else [str(buffer)]
        self._process = subprocess.Popen(
            command + arguments,
            stdin=subprocess.PIPE,
            stdout=subprocess.PIPE,
            stderr=subprocess.DEVNULL,
            env=dict(os.environ, **environment),
        )
        assert self._process.stdout.readline(), "the receiver did not start"
        self.data.wait_for_start()

    def close(self):
        self._process.stdin.close()
        self._process.wait(timeout=60)


class WineReceiver(NativeReceiver):
    """The engine as a Windows program without windows, for what the shipped program has no switch for."""

    name = "wine"

    def __init__(self, driver, buffer=None):
        self.data = find_data_folder(driver)
        self.data.remove()
        self._start(["wine", os.environ["QUILLMONT_RECEIVER_EXE"]], buffer)
        self.pid = find_wine_process("quillmont_storm_receiver.exe")


class WindowsProgram:
    """Quillmont.exe as it ships."""

    name = "Quillmont.exe"

    def __init__(self, driver):
        self.data = find_data_folder(driver)
        self.data.remove()
        self.data.write_config(config(1, LOOPBACK, FORWARDING_PORT))
        self.program = Program(driver)
        self.data.wait_for_start()
        self.pid = find_wine_process("Quillmont.exe")

    def close(self):
        assert self.program.close() == 0
