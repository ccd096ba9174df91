"""Whatever listens on UDP 162 and is measured: Quillmont in its shapes. What it is held against stands in peers.py.
Each is used in a `with` statement, which starts it and ends it."""

import os
import shutil
import signal
import subprocess
import tempfile

from harness.data_folder import DataFolder, config, find_data_folder
from harness.processes import find_wine_process, start_wine, wine_processes
from harness.program import Program
from harness.traps import LOOPBACK, TRAP_PORT
from harness.waiting import wait_until

from measuring.counters import TextCounter, cpu_seconds, listens
from measuring.places import programs_now

FORWARDING_PORT = 9162
# What asks for the system's usual buffer of 212,992 octets, since Linux doubles what is asked for.
DEFAULT_BUFFER = 106496


class Receiver:
    name = ""
    # What stands once in each record of its file.
    mark = b"FROM: "
    writes = True
    recorder = None

    def start(self):
        """Starts it; sets pid and, when it writes, recorder."""
        raise NotImplementedError

    def end(self):
        raise NotImplementedError

    def __enter__(self):
        wait_until(lambda: not listens(TRAP_PORT), "port 162 to be free")
        self.start()
        wait_until(lambda: listens(TRAP_PORT), f"{self.name} to listen")
        return self

    def __exit__(self, *_):
        self.end()
        wait_until(lambda: not listens(TRAP_PORT), f"{self.name} to end")

    def cpu(self):
        """Processor time so far of all that works for it."""
        return cpu_seconds(self.pid)

    def recorded(self):
        """Records in its file by now."""
        return self.recorder.look()

    def wait_for_records(self, count, seconds=300):
        if self.recorder:
            wait_until(
                lambda: self.recorded() >= count,
                lambda: f"{count} records of {self.name}, seen {self.recorder.count}",
                seconds,
            )

    def pause(self):
        os.kill(self.pid, signal.SIGSTOP)

    def go_on(self):
        os.kill(self.pid, signal.SIGCONT)


class Quillmont(Receiver):
    """What its shapes have in common: the data folder, fresh, and whether it forwards."""

    def __init__(self, forwards=False):
        self._forwards = forwards
        self.data = None

    def _prepare(self, data):
        self.data = data
        data.remove()
        data.write_config(config(int(self._forwards), LOOPBACK, FORWARDING_PORT))
        self.recorder = TextCounter(data.traps, self.mark)


class NativeEngine(Quillmont):
    """The engine built for this machine; with its own receive buffer unless one is asked for."""

    name = "native"

    def __init__(self, programs=None, buffer=None, forwards=False):
        super().__init__(forwards)
        self.programs = programs or programs_now()
        self._arguments = [] if buffer is None else [str(buffer)]
        self.name = f"{self.name} {self.programs.name}".strip()

    def start(self):
        self._prepare(DataFolder(tempfile.mkdtemp(prefix="quillmont-measured-")))
        self.start_again()

    def start_again(self):
        environment = dict(os.environ, QUILLMONT_DATA_HOME=str(self.data.folder.parent))
        command = [self.programs.engine, *self._arguments]
        self._process = subprocess.Popen(
            command, stdin=subprocess.PIPE, stdout=subprocess.PIPE, stderr=subprocess.DEVNULL, env=environment
        )
        assert self._process.stdout.readline(), "the receiver did not start"
        self.pid = self._process.pid

    def end(self):
        self._process.communicate(timeout=60)
        shutil.rmtree(self.data.folder.parent)

    def kill(self):
        """At once, with what it has in hand; start_again goes on with the same files."""
        self._process.kill()
        self._process.communicate()


class UnderWine(Receiver):
    """Half of the work of a Windows program is done by Wine's server."""

    def cpu(self):
        servers = [*wine_processes("wineserver"), *wine_processes("wineserver64")]
        return super().cpu() + sum(map(cpu_seconds, servers))


class WineEngine(UnderWine, NativeEngine):
    """The engine as a Windows program without windows, for what the shipped program has no switch for."""

    name = "wine"

    def __init__(self, driver, programs=None, buffer=None, forwards=False):
        super().__init__(programs, buffer, forwards)
        self._driver = driver

    def start(self):
        self._prepare(find_data_folder(self._driver))
        self._process = start_wine(self.programs.windows_engine, *self._arguments)
        assert self._process.stdout.readline(), "the receiver did not start"
        self.pid = find_wine_process(self.programs.windows_engine.name)

    def end(self):
        self._process.communicate(timeout=60)


class ShippedProgram(UnderWine, Quillmont):
    """Quillmont.exe, with its main window and those tool windows that are asked for."""

    name = "Quillmont.exe"

    def __init__(self, driver, programs=None, windows=(), forwards=False):
        super().__init__(forwards)
        self._driver = driver
        self.programs = programs or programs_now()
        self._windows = windows
        self.name = f"{self.name} {self.programs.name}".strip()

    def start(self):
        self._prepare(find_data_folder(self._driver))
        self.start_again()

    def start_again(self):
        self.program = Program(self._driver, self.programs.program).wait_running()
        self.pid = find_wine_process(self.programs.program.name)
        for tool in self._windows:
            tool.open(self.program)

    def end(self):
        assert self.program.close() == 0

    def kill(self):
        self.program.end()
