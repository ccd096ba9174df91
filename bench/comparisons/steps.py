"""Side by side without a network: decoding, loading MIB files, sizes."""

import os
import shutil
import subprocess
import tempfile
from pathlib import Path

from harness.places import program_file

from measuring.places import native_tool


def run(*command, **options):
    return subprocess.run([*map(str, command)], check=True, capture_output=True, text=True, **options).stdout


def numbers(text):
    return [*map(float, text.split())]


def compare_datagrams(table, _):
    for bindings, rounds in ((2, 300000), (8, 100000), (50, 20000)):
        ours = float(run(native_tool("quillmont_datagrams"), bindings, rounds))
        theirs = float(run(native_tool("netsnmp_datagrams"), bindings, rounds // 10))
        table.add(f"decode and print, {bindings} bindings: net-snmp's library", "ns", ours, theirs)


def load_mibs(folder):
    with tempfile.TemporaryDirectory() as home:
        (Path(home) / "Quillmont").mkdir()
        (Path(home) / "Quillmont/mibs").symlink_to(folder)
        return numbers(run(native_tool("quillmont_mibs"), env=dict(os.environ, QUILLMONT_DATA_HOME=home)))


def compare_mibs(table, options):
    # In turn, the best of three on each side: a load is over in a fifth of a second, and what else the machine does
    # only ever adds.
    turns = ((load_mibs(options.mibs), numbers(run(native_tool("floor_folder_scan"), options.mibs))) for _ in range(3))
    loads, scans = zip(*turns)
    lines, values, files, octets, *_ = (min(column) for column in zip(*scans))
    seconds, names, text, before, _, after = min(loads)
    folder = f"MIB folder, {files:,.0f} files, {octets / 1e6:,.0f} MB"
    table.add(f"{folder}: reading and finding lines", "s", seconds, lines)
    table.add(f"{folder}: the same and looking for values", "s", seconds, values)
    memory, names_text = (after - before) / 1024, text / 1024 / 1024
    table.add(f"memory after it: the text of its {names:,.0f} names", "MiB", memory, names_text)


def compare_mibs_peer(table, options):
    ours = load_mibs(options.mibs)
    theirs = numbers(run(native_tool("netsnmp_mibs"), options.mibs))
    table.add("MIB folder: net-snmp's library", "s", ours[0], theirs[0])
    table.add("memory while loading: net-snmp's library", "MiB", ours[4] / 1024, theirs[2] / 1024)


def compare_sizes(table, _):
    """What has to be on the disk to receive traps, the system's C library left out on both sides."""
    program = shutil.which("snmptrapd") or "/usr/sbin/snmptrapd"
    libraries = [line.split("=>")[1].split()[0] for line in run("ldd", program).splitlines() if "netsnmp" in line]
    theirs = sum(os.path.getsize(os.path.realpath(path)) for path in [program, *libraries])
    ours = program_file().stat().st_size
    table.add("size on disk: snmptrapd and its own libraries", "KB", ours / 1000, theirs / 1000)
