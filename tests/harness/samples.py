"""MIB files and traps like those of real devices, for run.sh and the pictures."""

import shutil
from pathlib import Path

from harness.standard_names import FILE_NAME, make_standard_names
from harness.traps import LINK_DOWN, LOOPBACK, run_snmp_tool

# From Debian's libsnmp-base.
MIB_FOLDER = Path("/usr/share/snmp/mibs")
MIB_FILES = [
    "NET-SNMP-AGENT-MIB.txt",
    "NET-SNMP-EXAMPLES-MIB.txt",
    "NET-SNMP-MIB.txt",
    "UCD-DISKIO-MIB.txt",
    "UCD-SNMP-MIB.txt",
]

UPTIME = "8640000"  # one day, in hundredths of a second
IF_ENTRY = "1.3.6.1.2.1.2.2.1"
UPS_MIB = "1.3.6.1.2.1.33"
UCD_MIB = "1.3.6.1.4.1.2021"
DISK_ENTRY = UCD_MIB + ".9.1"
EVENT_NOTIFICATION = "1.3.6.1.2.1.88.2.0.1"  # mteTriggerFired
EVENT_OBJECTS = "1.3.6.1.2.1.88.2.1"


def add_samples(data):
    """Copies the files and the standard names into the mibs folder. Returns the file names."""
    data.mibs.mkdir(parents=True, exist_ok=True)
    for name in MIB_FILES:
        shutil.copy(MIB_FOLDER / name, data.mibs)
    make_standard_names(data.mibs)
    return [*MIB_FILES, FILE_NAME]


def _send(sender, *arguments):
    """Runs snmptrap with this source address. Returns the exit code, which is not 0 for an unanswered inform."""
    return run_snmp_tool("snmptrap", f"--clientaddr={sender}", "-cpublic", *arguments).returncode


def _send_v2c(sender, notification, *bindings):
    assert _send(sender, "-v2c", LOOPBACK, UPTIME, notification, *bindings) == 0


def send_link_down(sender):
    """A switch reports a port without a link."""
    state = [f"{IF_ENTRY}.1.3", "i", "3", f"{IF_ENTRY}.7.3", "i", "1", f"{IF_ENTRY}.8.3", "i", "2"]
    _send_v2c(sender, LINK_DOWN, *state, f"{IF_ENTRY}.2.3", "s", "GigabitEthernet0/3")


def send_on_battery(sender):
    """An uninterruptible power supply runs on its battery: upsTrapOnBattery."""
    battery = [f"{UPS_MIB}.1.2.3.0", "i", "47", f"{UPS_MIB}.1.2.2.0", "i", "12"]
    _send_v2c(sender, f"{UPS_MIB}.2.1", *battery, f"{UPS_MIB}.1.9.7.0", "i", "2")


def send_disk_full(sender):
    """A server's agent reports a full disk. The vendor's MIB file names only the columns, and the trap carries their
    instances .1, so these two stay numbers."""
    trigger = [f"{EVENT_OBJECTS}.1.0", "s", "dskTable", f"{EVENT_OBJECTS}.4.0", "o", f"{DISK_ENTRY}.100.1"]
    value = [f"{EVENT_OBJECTS}.5.0", "i", "1"]
    disk = [f"{DISK_ENTRY}.2.1", "s", "/var", f"{DISK_ENTRY}.101.1", "s", "/var: less than 10% free (= 4%)"]
    _send_v2c(sender, EVENT_NOTIFICATION, *trigger, *value, *disk)


def send_memory_report(sender):
    """A version 1 trap: enterprise-specific, number 1."""
    memory = [f"{UCD_MIB}.4.5", "i", "8029184", f"{UCD_MIB}.4.6", "i", "1204"]
    assert _send(sender, "-v1", LOOPBACK, UCD_MIB, sender, "6", "1", UPTIME, *memory) == 0


def send_inform(sender):
    """A linkDown as an inform, sent once. Returns whether it was answered within half a second."""
    inform = ["-Ci", "-r0", "-t0.5", "-v2c", LOOPBACK, UPTIME, LINK_DOWN, f"{IF_ENTRY}.1.4", "i", "4"]
    return _send(sender, *inform) == 0


def missing_names(data, *names):
    """Returns the names that no record shows."""
    return [name for name in names if f"({name})".encode() not in data.trap_octets()]
