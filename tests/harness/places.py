"""The programs that the harness starts, and paths under Wine."""

import os
from pathlib import Path

ROOT = Path(__file__).resolve().parents[2]
BUILD = ROOT / "build" / "windows"


def program_file():
    """Quillmont.exe: the one that QUILLMONT_EXE names, or the one built last."""
    return Path(os.environ.get("QUILLMONT_EXE") or BUILD / "Quillmont.exe").resolve()


def driver_file():
    """The driver: the one that QUILLMONT_DRIVER names, or the one built last."""
    return Path(os.environ.get("QUILLMONT_DRIVER") or BUILD / "tests/desktop/quillmont_desktop_driver.exe").resolve()


def drive_c():
    """The Unix path of drive C: in the Wine prefix."""
    return Path(os.environ["WINEPREFIX"], "drive_c")


def windows_path(path):
    """The path as Windows programs see it."""
    path = Path(path)
    if "WINEPREFIX" in os.environ and path.is_relative_to(drive_c()):
        drive, path = "C:\\", path.relative_to(drive_c())
    else:
        drive, path = "Z:", path.absolute()
    return drive + str(path).replace("/", "\\")


def unix_path(path):
    """The Unix path of a Windows path on drive C:."""
    drive, _, rest = path.partition("\\")
    assert drive.upper() == "C:", f"{path} is not on drive C:"
    return drive_c() / rest.replace("\\", "/")
