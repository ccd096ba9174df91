"""Starts Windows programs under Wine and inspects their Unix processes."""

import os
import re
import subprocess
from pathlib import Path


def start_wine(*command, **options):
    """Starts a Windows program with pipes for its input and output. Its error output, Wine's messages, is discarded."""
    return subprocess.Popen(
        ["wine", *map(str, command)],
        stdin=subprocess.PIPE,
        stdout=subprocess.PIPE,
        stderr=subprocess.DEVNULL,
        **options,
    )


def run_wine(*command, seconds=120, output=subprocess.DEVNULL):
    """Returns the exit code. The output goes to the file `output`, not to a pipe: programs that the command leaves
    running, such as Wine's services, would keep a pipe open."""
    return subprocess.run(
        ["wine", *map(str, command)],
        stdin=subprocess.DEVNULL,
        stdout=output,
        stderr=subprocess.DEVNULL,
        timeout=seconds,
        check=False,
    ).returncode


def ask_wine(*command, seconds=120):
    """Returns the output of a command that leaves nothing running."""
    return subprocess.run(
        ["wine", *map(str, command)], capture_output=True, text=True, timeout=seconds, check=False
    ).stdout


def wine_processes(executable):
    """The Unix process ids and command lines of the programs with that file name in our prefix."""
    prefix = f"WINEPREFIX={os.environ['WINEPREFIX']}".encode()
    found = {}
    for folder in Path("/proc").glob("[0-9]*"):
        try:
            command = (folder / "cmdline").read_bytes().rstrip(b"\0").split(b"\0")
            environment = (folder / "environ").read_bytes().split(b"\0")
        except OSError:
            continue  # it has just ended, or belongs to another user
        name = command[0].replace(b"\\", b"/").rpartition(b"/")[2]
        if name == executable.encode() and prefix in environment:
            found[int(folder.name)] = b" ".join(command).decode(errors="replace")
    return found


def find_wine_process(executable):
    """The Unix process id of the program with that file name in our prefix."""
    for pid in wine_processes(executable):
        return pid
    raise AssertionError(f"no process {executable}")


def memory_kilobytes(pid, field="VmRSS"):
    """The memory of the process: VmRSS is resident memory, VmHWM its peak."""
    status = Path("/proc", str(pid), "status").read_text(encoding="ascii", errors="replace")
    return int(re.search(rf"^{field}:\s+(\d+)", status, re.M)[1])


def thread_count(pid):
    return len(list(Path("/proc", str(pid), "task").iterdir()))


def descriptor_count(pid):
    return len(list(Path("/proc", str(pid), "fd").iterdir()))
