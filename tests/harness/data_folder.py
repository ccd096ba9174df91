"""The program's data folder: its files as octets, its log as messages."""

import re
import shutil
from contextlib import contextmanager
from pathlib import Path

from harness.places import unix_path, windows_path
from harness.processes import run_wine
from harness.waiting import wait_until

LINE_END = b"\r\r\n"
STAMP = rb"\d{4}-\d{2}-\d{2} \d{2}:\d{2}:\d{2}\.\d{3}"
LOG_LINE = re.compile(rb"(" + STAMP + rb")  ([^\r\n]*)\r\r\n")


def mask_stamps(octets):
    """The octets with every time stamp replaced by 23 '#'."""
    return re.sub(STAMP, b"#" * 23, octets)


def record(*lines, sender="127.0.0.1"):
    """A trap record with its stamp masked, as octets on disk."""
    text = ["#" * 23 + "       FROM: " + sender, *lines, ""]
    return b"".join(line.encode("latin-1") + LINE_END for line in text)


def config(enabled=0, ip="127.0.0.1", port=162, line_end=LINE_END):
    """config.xml with these values, as octets on disk."""
    lines = [
        "<config>",
        f"  <forwardingEnabled>{enabled}</forwardingEnabled>",
        f"  <forwardingIp>{ip}</forwardingIp>",
        f"  <forwardingPort>{port}</forwardingPort>",
        "</config>",
    ]
    return b"".join(line.encode("latin-1") + line_end for line in lines)


SHELL_FOLDERS = r"HKCU\Software\Microsoft\Windows\CurrentVersion\Explorer\User Shell Folders"


@contextmanager
def local_application_data(value):
    """Makes this the local application data folder of programs started within the context."""

    def set_folder(text):
        arguments = ["/v", "Local AppData", "/t", "REG_EXPAND_SZ", "/d", text, "/f"]
        assert run_wine("reg", "add", SHELL_FOLDERS, *arguments) == 0

    set_folder(value)
    try:
        yield
    finally:
        set_folder("%USERPROFILE%\\AppData\\Local")


def find_data_folder(driver):
    """The data folder of a program started now. The driver asks Wine for its path, which contains the user's name."""
    return DataFolder(unix_path(driver("local_application_data")))


class DataFolder:
    def __init__(self, parent):
        """parent: the folder that contains the data folders of all programs."""
        self.folder = Path(parent) / "Quillmont"
        self.mibs = self.folder / "mibs"
        self.config = self.folder / "config.xml"
        self.traps = self.folder / "SNMP.txt"
        self.log = self.folder / "log.txt"

    def remove(self):
        if self.folder.is_dir():
            shutil.rmtree(self.folder)
        else:
            self.folder.unlink(missing_ok=True)

    def windows_path(self, path=None):
        """The path as the program writes it."""
        return windows_path(path or self.folder)

    def add_mib(self, name, text):
        self.mibs.mkdir(parents=True, exist_ok=True)
        (self.mibs / name).write_bytes(text if isinstance(text, bytes) else text.encode("latin-1"))

    def write_config(self, octets):
        self.folder.mkdir(parents=True, exist_ok=True)
        self.config.write_bytes(octets)

    def log_octets(self):
        return self.log.read_bytes() if self.log.exists() else b""

    def trap_octets(self):
        return self.traps.read_bytes() if self.traps.exists() else b""

    def masked_traps(self):
        return mask_stamps(self.trap_octets())

    def log_messages(self):
        """The messages in order. Fails if the log contains anything but log lines; the last one may be unfinished."""
        octets = self.log_octets()
        whole = octets[: octets.rfind(b"\n") + 1]
        other = LOG_LINE.sub(b"", whole)
        assert other == b"", f"not log lines: {other[:300]!r}"
        return [message.decode("latin-1") for _, message in LOG_LINE.findall(whole)]

    def wait_for_log(self, message, count=1):
        """Waits until the log has the message `count` times."""
        wait_until(
            lambda: self.log_messages().count(message) >= count,
            lambda: f"{count} x {message!r} in the log, which ends with {self.log_messages()[-20:]!r}",
        )

    def wait_for_start(self, count=1):
        """Waits until the log has the last lines of `count` starts with both ports free."""
        last_lines = [
            b"Trap thread started (UDP 162).",
            b"Listener thread started (UDP 161).",
            b"Server started.",
        ]
        wait_until(
            lambda: all(self.log_octets().count(line + LINE_END) >= count for line in last_lines),
            lambda: f"start {count}, the log ends with {self.log_octets()[-500:]!r}",
        )

    def traps_received(self):
        """The number of datagrams in the log. A record is written before its log line."""
        return sum(message.startswith("Trap received (") for message in self.log_messages())

    def wait_for_traps(self, count):
        """Waits until `count` datagrams are in the log."""
        wait_until(
            lambda: self.traps_received() >= count,
            lambda: f"{count} traps in the log, which ends with {self.log_messages()[-5:]!r}",
        )
