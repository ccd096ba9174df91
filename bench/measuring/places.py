"""Where the measured programs are, and the ones from before a change that they may be held against."""

from pathlib import Path

from harness.places import BUILD as WINDOWS_BUILD
from harness.places import ROOT, program_file

NATIVE_BUILD = ROOT / "build" / "bench"
RECEIVER = "quillmont_storm_receiver"


def native_tool(name):
    return NATIVE_BUILD / "bench" / name


def windows_tool(name):
    return WINDOWS_BUILD / "bench" / name


class Programs:
    """Quillmont as one state of the sources built it."""

    def __init__(self, name, program, engine, windows_engine):
        self.name = name
        self.program = program  # Quillmont.exe
        self.engine = engine  # bench/storm/receiver.cpp, natively
        self.windows_engine = windows_engine  # the same as a Windows program


def programs_now():
    return Programs("", program_file(), native_tool(RECEIVER), windows_tool(RECEIVER + ".exe"))


def programs_in(folder):
    """What was kept of another state: Quillmont.exe, quillmont_storm_receiver and quillmont_storm_receiver.exe."""
    folder = Path(folder).resolve()
    return Programs("before", folder / "Quillmont.exe", folder / RECEIVER, folder / (RECEIVER + ".exe"))
