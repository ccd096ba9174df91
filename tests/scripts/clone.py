"""A copy of the sources, in which a test runs the scripts as a given user with an environment of its own."""

import os
import random
import shutil
import signal
import subprocess
from pathlib import Path

import pytest

from harness.places import ROOT, driver_file, program_file
from harness.waiting import wait_until

NOBODY = 65534
SYSTEM_PATH = ("/usr/local/bin", "/usr/bin", "/bin", "/usr/sbin", "/sbin")
# More than a complete run with a new Wine prefix needs.
RUN_SECONDS = 150


class User:
    """Root or an ordinary user. Only root can run the scripts as both."""

    def __init__(self, name):
        self.name = name
        self.switch = []
        if name == "root" and os.geteuid() != 0:
            pytest.skip("This test needs to run as root.")
        if name == "ordinary" and os.geteuid() == 0:
            self.switch = ["setpriv", f"--reuid={NOBODY}", f"--regid={NOBODY}", "--clear-groups"]
            if subprocess.run([*self.switch, "true"], capture_output=True, check=False).returncode != 0:
                pytest.skip("This root cannot switch to another user: it is root in a user namespace only.")

    @property
    def number(self):
        return NOBODY if self.switch else os.geteuid()

    def own(self, folder):
        """Makes the user the owner of the folder and everything in it."""
        if self.switch:
            for path in [folder, *folder.rglob("*")]:
                os.chown(path, NOBODY, NOBODY, follow_symlinks=False)

    def need_network(self, folder):
        """Skips the test if run.sh cannot run on this machine as this user."""
        self._need(folder, "--check")

    def need_private_network(self, folder):
        self._need(folder, "--only-private", "true")

    def _need(self, folder, *arguments):
        command = [*self.switch, folder / "scripts/in_private_network.sh", *arguments]
        result = subprocess.run(command, capture_output=True, text=True, check=False)
        if result.returncode != 0:
            pytest.skip((result.stdout + result.stderr).strip().removeprefix("Skipped: "))


class Clone:
    def __init__(self, folder, user):
        self.folder = folder
        self.user = user
        self.handed_over = False
        self.commands = folder / "commands"
        self.environment = {
            "HOME": str(folder / "home"),
            # Wine uses this name, not the one that belongs to the user id.
            "USER": "somebody",
            "PATH": ":".join([str(self.commands), *SYSTEM_PATH]),
        }
        shutil.copytree(ROOT, folder, ignore=self._ignored, symlinks=True, dirs_exist_ok=True)
        self.commands.mkdir()
        (folder / "home").mkdir()

    @staticmethod
    def _ignored(directory, names):
        return {name for name in names if Path(directory) == ROOT and name in ("build", "dist", ".git")}

    def add_programs(self):
        """Copies the built programs and replaces cmake, so that the scripts build nothing."""
        desktop = self.folder / "build/windows/tests/desktop"
        desktop.mkdir(parents=True)
        shutil.copy(program_file(), self.folder / "build/windows")
        for file in (driver_file(), driver_file().with_name("quillmont_desktop_spy.dll")):
            shutil.copy(file, desktop)
        self.add_command("cmake", "exit 0")

    def add_command(self, name, script):
        """Adds a command that overrides the system's."""
        path = self.commands / name
        path.write_text(f"#!/bin/sh\n{script}\n")
        path.chmod(0o755)

    def hide_command(self, name):
        """Hides the command: links all others into one folder, which becomes the path."""
        for folder in reversed(SYSTEM_PATH):
            for path in Path(folder).glob("*"):
                link = self.commands / path.name
                if path.name != name and not link.exists() and not link.is_symlink():
                    link.symlink_to(path)
        self.environment["PATH"] = str(self.commands)

    def hand_over(self):
        """Makes the user the owner of the clone."""
        if not self.handed_over:
            self.user.own(self.folder)
            self.handed_over = True

    def start(self, *command, **environment):
        self.hand_over()
        settings = [f"{key}={value}" for key, value in {**self.environment, **environment}.items()]
        return subprocess.Popen(
            [*self.user.switch, "env", "-i", *settings, *map(str, command)],
            cwd=self.folder,
            stdin=subprocess.DEVNULL,
            stdout=subprocess.PIPE,
            stderr=subprocess.STDOUT,
            text=True,
            start_new_session=True,
        )

    def run(self, *command, seconds=RUN_SECONDS, **environment):
        """Returns the exit code and the output."""
        process = self.start(*command, **environment)
        try:
            output, _ = process.communicate(timeout=seconds)
        except subprocess.TimeoutExpired:
            end_session(process)
            raise
        print(output)
        return process.returncode, output


def end_session(process):
    """Ends the process and its children with SIGTERM, so that they can clean up."""
    if process.poll() is None:
        os.killpg(process.pid, signal.SIGTERM)
    process.wait(timeout=60)


class VirtualDisplay:
    """In place of the user's own display. Has a window manager, since windows are not shown without one."""

    def __init__(self):
        # A number that is probably free.
        self.name = f":{random.randrange(1000, 30000)}"
        reading, writing = os.pipe()
        command = ["Xvfb", self.name, "-displayfd", str(writing), "-screen", "0", "1280x900x24", "-ac"]
        self._process = subprocess.Popen(command, pass_fds=[writing], stderr=subprocess.DEVNULL)
        os.close(writing)
        with os.fdopen(reading) as channel:
            assert channel.readline().strip() == self.name[1:], "the display did not start"
        self._manager = subprocess.Popen(["evilwm", "-fn", "fixed", "-display", self.name], stderr=subprocess.DEVNULL)

    def __enter__(self):
        return self

    def __exit__(self, *_):
        for process in (self._manager, self._process):
            process.terminate()
            process.wait(timeout=60)


def wait_for_line(process, wanted):
    """Reads the process's output until a line contains the text. Returns all lines so far."""
    lines = []

    def found():
        lines.append(process.stdout.readline())
        return wanted in lines[-1] or not lines[-1]

    wait_until(found, wanted, RUN_SECONDS)
    assert lines[-1], f"{wanted!r} was never printed: {''.join(lines)}"
    return lines
