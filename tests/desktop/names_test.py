"""standard-names.mib, imported as an operator does it. The identifiers here come from the MIB documents, not from the
table that the file is made from, so that a wrong row is found."""

from harness.data_folder import record
from harness.mib_dialogs import import_files
from harness.standard_names import FILE_NAME, make_standard_names
from harness.traps import send_v1

NAMED = [
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
    ("1.3.6.1.2.1.1.3.0", "sysUpTime-0"),
    ("1.3.6.1.6.3.1.1.4.1.0", "snmpTrapOID-0"),
    ("1.3.6.1.2.1.2.2.1.1.3", "ifIndex-3"),
    ("1.3.6.1.2.1.2.2.1.2.3", "ifDescr-3"),
    ("1.3.6.1.2.1.2.2.1.3.3", "ifType-3"),
    ("1.3.6.1.2.1.2.2.1.7.3", "ifAdminStatus-3"),
    ("1.3.6.1.2.1.2.2.1.8.3", "ifOperStatus-3"),
    ("1.3.6.1.2.1.31.1.1.1.1.3", "ifName-3"),
    ("1.3.6.1.2.1.31.1.1.1.18.3", "ifAlias-3"),
]


def test_variables_of_standard_traps_have_their_names(program, data, status, samples):
    make_standard_names(samples.folder)
    import_files(program, status, samples.path(FILE_NAME))
    assert f"MIB imported: {FILE_NAME}" in data.log_messages()
    send_v1(*(word for oid, _ in NAMED for word in (oid, "i", "1")))
    data.wait_for_traps(1)
    lines = [f"---> [{number}] {oid} ({name})  INTEGER = 1" for number, (oid, name) in enumerate(NAMED, 1)]
    assert data.masked_traps() == record(*lines)
