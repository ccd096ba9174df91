"""The receivers that are measured, each with its data folder and its process."""

import os
import re
import subprocess
import sys
import tempfile
from pathlib import Path

sys.path.insert(0, str(Path(__file__).resolve().parent.parent / "desktop"))

from harness.data_folder import DataFolder  # noqa: E402
from harness.processes import find_wine_process  # noqa: E402
from harness.program import Program  # noqa: E402

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
        self.data.config.write_bytes(forwarding_config())
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

    def __init__(self, buffer=None):
        self.data = DataFolder()
        self.data.remove()
        self._start(["wine", os.environ["QUILLMONT_RECEIVER_EXE"]], buffer)
        self.pid = find_wine_process("quillmont_storm_receiver.exe")


class WindowsProgram:
    """Quillmont.exe as it ships."""

    name = "Quillmont.exe"

    def __init__(self, driver):
        self.data = DataFolder()
        self.data.remove()
        self.data.write_config(forwarding_config())
        self.program = Program(driver)
        self.data.wait_for_start()
        self.pid = find_wine_process("Quillmont.exe")

    def close(self):
        assert self.program.close() == 0


FORWARDING_PORT = 9162


def forwarding_config():
    lines = [
        "<config>",
        "  <forwardingEnabled>1</forwardingEnabled>",
        "  <forwardingIp>127.0.0.1</forwardingIp>",
        f"  <forwardingPort>{FORWARDING_PORT}</forwardingPort>",
        "</config>",
    ]
    return "\r\n".join(lines).encode("ascii")


def resident_kilobytes(pid):
    return int(re.search(r"VmRSS:\s+(\d+)", Path(f"/proc/{pid}/status").read_text()).group(1))


def thread_count(pid):
    return len(list(Path(f"/proc/{pid}/task").iterdir()))
