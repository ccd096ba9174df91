"""The packages, and an installation made from them."""

import os
import re
import shutil
import tempfile
import zipfile
from pathlib import Path

from harness import traps
from harness.places import ROOT, drive_c, windows_path
from harness.processes import ask_wine, run_wine
from harness.waiting import wait_until

VERSION = re.search(r"^project\(Quillmont VERSION ([0-9.]+)", (ROOT / "CMakeLists.txt").read_text(), re.M)[1]
# The files in the zip and of an installation.
CONTENT = ["CHANGELOG.txt", "Quillmont.exe", "THIRD-PARTY.txt", "standard-names.mib", "user-guide.html"]

CURRENT_VERSION = r"HKLM\Software\Microsoft\Windows\CurrentVersion"
UNINSTALL_KEY = CURRENT_VERSION + r"\Uninstall\Quillmont"
RUN_KEY = CURRENT_VERSION + r"\Run"
INSTALLED_WORD = "0x1"

# Setup's exit codes.
IN_USE = 2
WRONG_SWITCH = 3
NEWER_INSTALLED = 4

MEM_TOTAL_REAL = "1.3.6.1.4.1.2021.4.5"


def package(suffix):
    return Path(os.environ["QUILLMONT_PACKAGES"], f"Quillmont-{VERSION}-{suffix}")


def stub(name):
    return Path(os.environ["QUILLMONT_STUBS"], f"quillmont_{name}.exe")


def unpack(folder):
    """Unpacks the zip into a new folder. Returns the folder."""
    with zipfile.ZipFile(package("windows-x64.zip")) as archive:
        archive.extractall(folder)
    return folder


def as_typed(switches):
    """Splits a folder with blanks into several words, so that Wine puts no quotation marks around it."""
    return " ".join(switches).split(" ")


def registry_value(key, name):
    """Returns the value as `reg` prints it, or None."""
    found = re.search(rf"^\s+{re.escape(name)}\s+REG_\w+\s+(.*?)\s*$", ask_wine("reg", "query", key), re.M)
    return found and found[1]


def check_that_it_records(data):
    data.wait_for_start()
    traps.send_v2c(MEM_TOTAL_REAL, "i", "8029184")
    data.wait_for_traps(1)
    assert b"] 1.3.6.1.4.1.2021.4.5  INTEGER = 8029184" in data.trap_octets()


class Netsh:
    """The stub for netsh: its command lines and its answers."""

    folder = property(lambda self: drive_c() / "netsh")

    def reset(self):
        """Deletes the recorded calls. Answers as on a fresh Windows, which has no rule to delete."""
        shutil.rmtree(self.folder, ignore_errors=True)
        self.folder.mkdir()
        self.answer("1 delete rule")

    def answer(self, *lines):
        (self.folder / "answers.txt").write_text("".join(line + "\n" for line in lines))

    def pop_calls(self):
        """Returns the recorded command lines, without netsh's path, and deletes them."""
        calls = self.folder / "calls.txt"
        if not calls.exists():
            return []
        lines = calls.read_text().splitlines()
        calls.unlink()
        program = '"C:\\windows\\system32\\netsh.exe" '
        assert all(line.startswith(program) for line in lines), lines
        return [line.removeprefix(program) for line in lines]


def put_netsh_in_place():
    """Replaces netsh for all programs started from now on. Without the override Wine would use its own."""
    netsh = drive_c() / "windows" / "system32" / "netsh.exe"
    netsh.unlink()
    shutil.copy(stub("netsh_stub"), netsh)
    os.environ["WINEDLLOVERRIDES"] += ";netsh.exe=n"
    return Netsh()


class Installation:
    def __init__(self, folder=r"C:\Program Files\Quillmont"):
        self.windows_folder = folder
        self.folder = drive_c() / folder.removeprefix("C:\\").replace("\\", "/")
        self.program = self.folder / "Quillmont.exe"
        self.notes = self.folder / "setup-notes.txt"
        self.menu = drive_c() / "ProgramData/Microsoft/Windows/Start Menu/Programs/Quillmont PRO"
        self.run_command = f'"{folder}\\Quillmont.exe"'

    def install(self, *switches):
        """Runs the installer in silent mode. Returns its exit code."""
        return run_wine(windows_path(package("setup.exe")), *as_typed(["/S", *switches]))

    def start_uninstall(self, *switches):
        """Starts the uninstaller, which continues as a copy in another folder. Does not wait for that copy."""
        return run_wine(f"{self.windows_folder}\\uninstall.exe", *as_typed(["/S", *switches]))

    def uninstall(self, *switches):
        self.start_uninstall(*switches)
        wait_until(
            lambda: not self.folder.exists(),
            lambda: f"the program's folder to be deleted, it has {sorted(self.folder.iterdir())}",
        )

    def run(self, program, *switches):
        """Returns the exit code and the output. Uses a file, since processes that go on running keep a pipe open."""
        with tempfile.TemporaryFile() as output:
            code = run_wine(program, *as_typed(switches), output=output)
            output.seek(0)
            return code, output.read().decode().replace("\r\n", "\n")

    def run_setup(self, *switches):
        return self.run(windows_path(package("setup.exe")), *switches)

    def run_uninstaller(self, *switches):
        """Runs the uninstaller without a copy, so that its exit code and output can be read."""
        return self.run(f"{self.windows_folder}\\uninstall.exe", *switches, f"_?={self.windows_folder}")

    def traces(self):
        """Returns what exists of it in the registry and in the folders for all users."""
        assert run_wine("reg", "export", CURRENT_VERSION, r"C:\current.reg", "/y") == 0
        exported = (drive_c() / "current.reg").read_bytes().decode("utf-16")
        lines = [line for line in exported.splitlines() if "quillmont" in line.lower()]
        return lines + [str(path) for path in (self.folder, self.menu) if path.exists()]
