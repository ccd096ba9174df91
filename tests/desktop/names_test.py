"""Names from the first trap: what the program shows of standard notifications once standard-names.mib is imported.

The identifiers here are those of the documents and not the table's, so that a wrong row is found.
"""

import pytest

from harness.data_folder import record
from harness.mib_dialogs import import_files
from harness.standard_names import FILE_NAME, make_standard_names
from harness.tool_windows import STATUS
from harness.traps import LINK_DOWN, SYS_UPTIME, UPTIME, send_v1, send_v2c

IF_ENTRY = "1.3.6.1.2.1.2.2.1"
IF_X_ENTRY = "1.3.6.1.2.1.31.1.1.1"
HEAD = [
    f"---> [1] {SYS_UPTIME} (sysUpTime-0)  TimeTicks = {UPTIME}",
    f"---> [2] 1.3.6.1.6.3.1.1.4.1.0 (snmpTrapOID-0)  OID = {LINK_DOWN}",
]


@pytest.fixture
def named(program, data, samples):
    """The program with the names imported as an operator does it."""
    data.wait_for_start()
    make_standard_names(samples.folder)
    status = STATUS.open(program)
    import_files(program, status, samples.path(FILE_NAME))
    assert f"MIB imported: {FILE_NAME}" in data.log_messages()
    return program


def named_lines(first, *bindings):
    """The lines of a record: identifier, name, type, value each."""
    lines = enumerate(bindings, first)
    return [f"---> [{i}] {oid} ({name})  {kind} = {value}" for i, (oid, name, kind, value) in lines]


def test_a_link_down_is_shown_with_every_name(named, data):
    columns = [
        (f"{IF_ENTRY}.1.3", "i", "3"),
        (f"{IF_ENTRY}.7.3", "i", "1"),
        (f"{IF_ENTRY}.8.3", "i", "2"),
        (f"{IF_ENTRY}.2.3", "s", "GigabitEthernet0/3"),
        (f"{IF_ENTRY}.3.3", "i", "6"),
        (f"{IF_X_ENTRY}.1.3", "s", "Gi0/3"),
        (f"{IF_X_ENTRY}.18.3", "s", "to the server room"),
    ]
    send_v2c(*(word for column in columns for word in column))
    data.wait_for_traps(1)
    assert data.masked_traps() == record(
        *HEAD,
        *named_lines(
            3,
            (f"{IF_ENTRY}.1.3", "ifIndex-3", "INTEGER", "3"),
            (f"{IF_ENTRY}.7.3", "ifAdminStatus-3", "INTEGER", "1"),
            (f"{IF_ENTRY}.8.3", "ifOperStatus-3", "INTEGER", "2"),
            (f"{IF_ENTRY}.2.3", "ifDescr-3", "OCTET STRING", '"GigabitEthernet0/3"'),
            (f"{IF_ENTRY}.3.3", "ifType-3", "INTEGER", "6"),
            (f"{IF_X_ENTRY}.1.3", "ifName-3", "OCTET STRING", '"Gi0/3"'),
            (f"{IF_X_ENTRY}.18.3", "ifAlias-3", "OCTET STRING", '"to the server room"'),
        ),
    )


HANDFUL = [
    ("1.3.6.1.2.1.16.3.1.1.1.1", "alarmIndex-1"),
    ("1.3.6.1.2.1.16.3.1.1.3.64", "alarmVariable-64"),
    ("1.3.6.1.2.1.16.3.1.1.7.1", "alarmRisingThreshold-1"),
    ("1.3.6.1.2.1.131.1.1.1.5.2", "entStateAlarm-2"),
    ("1.3.6.1.2.1.14.1.1.0", "ospfRouterId-0"),
    ("1.3.6.1.2.1.138.1.10.1.12.0", "isisAdjState-0"),
    ("1.3.6.1.2.1.68.1.5.0", "vrrpTrapPacketSrc-0"),
    ("1.3.6.1.2.1.33.1.2.3.0", "upsEstimatedMinutesRemaining-0"),
    ("1.3.6.1.2.1.33.1.6.2.1.2.7", "upsAlarmDescr-7"),
    ("1.3.6.1.2.1.43.18.1.1.7.1.12", "prtAlertCode-1-12"),
    ("1.3.6.1.2.1.105.1.1.1.6.1.24", "pethPsePortDetectionStatus-1-24"),
    ("1.3.6.1.2.1.88.2.1.5.0", "mteHotValue-0"),
    ("1.3.6.1.2.1.10.18.6.1.10.1", "dsx1LineStatus-1"),
    ("1.0.8802.1.1.2.1.2.2.0", "lldpStatsRemTablesInserts-0"),
    ("1.3.6.1.6.3.18.1.3.0", "snmpTrapAddress-0"),
    ("1.3.6.1.6.3.18.1.4.0", "snmpTrapCommunity-0"),
    ("1.3.6.1.6.3.1.1.4.3.0", "snmpTrapEnterprise-0"),
    ("1.3.6.1.2.1.1.5.0", "sysName-0"),
]


@pytest.mark.parametrize(("send", "head"), [(send_v1, []), (send_v2c, HEAD)])
def test_a_handful_of_what_standards_notify_has_its_names_in_either_version(named, data, send, head):
    send(*(word for oid, _ in HANDFUL for word in (oid, "i", "1")))
    data.wait_for_traps(1)
    bindings = [(oid, name, "INTEGER", "1") for oid, name in HANDFUL]
    assert data.masked_traps() == record(*head, *named_lines(len(head) + 1, *bindings))


def test_other_files_and_these_names_stand_side_by_side(named, data, samples):
    """A file that claims the entry and its columns for itself, as many a vendor's does."""
    samples.add("ZZ-MIB.txt", b"ifEntry OBJECT-TYPE\n::= { enterprises 9 }\nifIndex OBJECT-TYPE\n::= { ifEntry 1 }\n")
    import_files(named, STATUS.open(named), samples.path("ZZ-MIB.txt"))
    send_v2c(f"{IF_ENTRY}.1.3", "i", "3", "1.3.6.1.4.1.9.1", "i", "4")
    data.wait_for_traps(1)
    named_bindings = ((f"{IF_ENTRY}.1.3", "ifIndex-3", "INTEGER", "3"), ("1.3.6.1.4.1.9.1", "ifIndex", "INTEGER", "4"))
    assert data.masked_traps() == record(*HEAD, *named_lines(3, *named_bindings))
