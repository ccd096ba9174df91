"""Real MIB files and real traps that are good to look at: what run.sh and the pictures of the guide show."""

import shutil
from pathlib import Path

from harness import traps
from harness.standard_names import FILE_NAME, make_standard_names

# Of Debian's libsnmp-base.
MIB_FOLDER = Path("/usr/share/snmp/mibs")
MIB_FILES = [
    "NET-SNMP-AGENT-MIB.txt",
    "NET-SNMP-EXAMPLES-MIB.txt",
    "NET-SNMP-MIB.txt",
    "UCD-DISKIO-MIB.txt",
    "UCD-SNMP-MIB.txt",
]

# Named by these files, without an instance: a name needs exactly its identifier.
MEM_TOTAL_REAL = "1.3.6.1.4.1.2021.4.5"
MEM_AVAIL_REAL = "1.3.6.1.4.1.2021.4.6"
MEM_TOTAL_FREE = "1.3.6.1.4.1.2021.4.11"
MEM_SWAP_ERROR = "1.3.6.1.4.1.2021.4.101"
HEARTBEAT_RATE = "1.3.6.1.4.1.8072.2.3.2.1"
HEARTBEAT_NAME = "1.3.6.1.4.1.8072.2.3.2.2"
# The columns whose instances the standard names name.
IF_ENTRY = "1.3.6.1.2.1.2.2.1"
IF_ALIAS = "1.3.6.1.2.1.31.1.1.1.18"


def add_samples(data):
    """Puts the files and the standard names where the program reads them at its start; their names."""
    data.mibs.mkdir(parents=True, exist_ok=True)
    for name in MIB_FILES:
        shutil.copy(MIB_FOLDER / name, data.mibs)
    make_standard_names(data.mibs)
    return [*MIB_FILES, FILE_NAME]


def send_link_down():
    state = [f"{IF_ENTRY}.1.3", "i", "3", f"{IF_ENTRY}.7.3", "i", "1", f"{IF_ENTRY}.8.3", "i", "2"]
    names = [f"{IF_ENTRY}.2.3", "s", "GigabitEthernet0/3", f"{IF_ALIAS}.3", "s", "to the server room"]
    traps.send_v2c(*state, *names)


def send_memory_report():
    traps.send_v1(MEM_TOTAL_REAL, "i", "8029184", MEM_AVAIL_REAL, "i", "1204")


def missing_names(data, *names):
    """Which of these names no record shows."""
    return [name for name in names if f"({name})".encode() not in data.trap_octets()]
