"""The Unix side of a Windows process under Wine."""

import os
from pathlib import Path


def find_wine_process(executable):
    """The Unix process number of the program of that file name in our prefix."""
    prefix = f"WINEPREFIX={os.environ['WINEPREFIX']}".encode()
    for folder in Path("/proc").glob("[0-9]*"):
        try:
            command = (folder / "cmdline").read_bytes().split(b"\0")[0]
            environment = (folder / "environ").read_bytes().split(b"\0")
        except OSError:
            continue
        if command.endswith(executable.encode()) and prefix in environment:
            return int(folder.name)
    raise AssertionError(f"no process {executable}")
