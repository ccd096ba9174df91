"""Where the measured programs are."""

from pathlib import Path

from harness.places import BUILD as WINDOWS_BUILD
from harness.places import ROOT, program_file

ENGINE = "quillmont_engine_receiver"


def native_tool(name):
    return ROOT / "build" / "bench" / "bench" / name


def windows_tool(name):
    return WINDOWS_BUILD / "bench" / name


class Programs:
    """The programs of one build."""

    def __init__(self, name, program, engine):
        self.name = name
        self.program = program  # Quillmont.exe
        self.engine = engine  # bench/engine_receiver.cpp


def programs_now():
    return Programs("", program_file(), native_tool(ENGINE))


def programs_in(folder):
    """Copies from an earlier build: build/windows/Quillmont.exe and build/bench/bench/quillmont_engine_receiver."""
    folder = Path(folder).resolve()
    return Programs("before", folder / "Quillmont.exe", folder / ENGINE)
