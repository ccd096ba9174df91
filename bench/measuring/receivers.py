"""Quillmont as a measured receiver on UDP 162, natively and under Wine; peers.py has the programs that it is compared
with. A `with` statement starts and ends each."""

import os
import shutil
import subprocess
import tempfile

from harness.data_folder import DataFolder, config, find_data_folder
from harness.processes import find_wine_process, wine_processes
from harness.program import Program
from harness.traps import LOOPBACK, TRAP_PORT, udp_socket
from harness.waiting import wait_until

from measuring.counters import TextCounter, cpu_seconds, dropped, listens
from measuring.programs import programs_now

FORWARDING_PORT = 9162


class Receiver:
    name = ""
    mark = b"FROM: "  # once in each record
    writes = True
    forwards = False
    recorder = None  # counts the records of its file

    def start(self):
        """Starts it. Sets pid and, if it writes, recorder."""
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
        """Processor time so far, including processes that work for it."""
        return cpu_seconds(self.pid)

    def wait_for_records(self, count, seconds=300):
        if self.recorder:
            wait_until(
                lambda: self.recorder.read() >= count,
                lambda: f"{count} records of {self.name}, seen {self.recorder.count}",
                seconds,
            )


class UnderWine(Receiver):
    """Includes Wine's server, which does half of the work of a Windows program."""

    def cpu(self):
        servers = [*wine_processes("wineserver"), *wine_processes("wineserver64")]
        return super().cpu() + sum(map(cpu_seconds, servers))


class Quillmont(Receiver):
    """Uses a fresh data folder for each start; kill and start_again use the same one again."""

    def __init__(self, programs, forwards):
        self.programs = programs or programs_now()
        self.forwards = forwards
        self.data = None
        self.name = f"{self.name} {self.programs.name}".strip()

    def start(self):
        self.data = self.find_data()
        self.data.remove()
        self.data.write_config(config(int(self.forwards), LOOPBACK, FORWARDING_PORT))
        self.recorder = TextCounter(self.data.traps, self.mark)
        self.start_again()


class NativeEngine(Quillmont):
    """The engine built for this machine."""

    name = "native"

    def __init__(self, programs=None, forwards=False):
        super().__init__(programs, forwards)

    def find_data(self):
        return DataFolder(tempfile.mkdtemp(prefix="quillmont-measured-"))

    def start_again(self):
        environment = dict(os.environ, QUILLMONT_DATA_HOME=str(self.data.folder.parent))
        self._process = subprocess.Popen([self.programs.engine], stdin=subprocess.PIPE, env=environment)
        self.pid = self._process.pid

    def end(self):
        self._process.communicate(timeout=60)
        shutil.rmtree(self.data.folder.parent)

    def kill(self):
        self._process.kill()
        self._process.communicate()


class ShippedProgram(UnderWine, Quillmont):
    """Quillmont.exe with its main window."""

    name = "Quillmont.exe"

    def __init__(self, driver, programs=None, forwards=False):
        super().__init__(programs, forwards)
        self._driver = driver

    def find_data(self):
        return find_data_folder(self._driver)

    def start_again(self):
        self.program = Program(self._driver, self.programs.program).wait_running()
        self.pid = find_wine_process(self.programs.program.name)

    def end(self):
        assert self.program.close() == 0

    def kill(self):
        self.program.end()


class ForwardingTarget:
    """The socket that receivers forward to. Only `count` reads it, leaving the processor to the receiver. The first few
    hundred datagrams fill its buffer; the system counts those that it drops."""

    def __init__(self):
        self._socket = udp_socket(FORWARDING_PORT)
        self._socket.setblocking(False)
        self._read = []

    @property
    def count(self):
        """Datagrams that have arrived so far."""
        try:
            while True:
                self._read.append(self._socket.recv(65535))
        except BlockingIOError:
            return len(self._read) + dropped(FORWARDING_PORT)

    def wait_for(self, count):
        """Waits until `count` datagrams have arrived. Checks that those read are whole and in order: only their number
        differs, and it increases."""
        wait_until(lambda: self.count >= count, lambda: f"{count} forwarded, seen {self.count}")
        assert self._read == sorted(set(self._read)), "forwarded twice or out of order"
        assert len(set(map(len, self._read))) <= 1, "forwarded truncated"

    def __enter__(self):
        return self

    def __exit__(self, *_):
        self._socket.close()
