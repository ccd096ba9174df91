"""What Setup asks of Windows Firewall, to the character: nothing here can tell whether it worked."""

import re

from harness.places import ROOT, drive_c
from installation import INSTALLED_WORD, UNINSTALL_KEY, Installation, registry_value

PROGRAM = r'program="C:\Program Files\Quillmont\Quillmont.exe"'
NAME = 'name="Quillmont PRO (SNMP, UDP 161 and 162)"'
DELETE_OWN_RULE = f"advfirewall firewall delete rule {NAME}"
DELETE_RULES_OF_PROGRAM = f"advfirewall firewall delete rule name=all dir=in {PROGRAM}"
ADD_RULE = f"advfirewall firewall add rule {NAME} dir=in action=allow protocol=UDP localport=161,162 {PROGRAM}"


def test_a_rule_for_both_ports_replaces_all_others_of_the_program(installation, netsh):
    installation.install()
    assert netsh.take_calls() == [DELETE_OWN_RULE, DELETE_RULES_OF_PROGRAM, ADD_RULE]
    assert not installation.notes.exists()
    # An upgrade the same: the program may have been started, and Windows asked, in between.
    installation.install()
    assert netsh.take_calls() == [DELETE_OWN_RULE, DELETE_RULES_OF_PROGRAM, ADD_RULE]


def test_rules_that_were_removed_are_noted(installation, netsh):
    netsh.answer("1 delete rule name=\"", "0 delete rule name=all")
    installation.install()
    notes = installation.notes.read_text()
    assert notes.startswith(r"Firewall rules that Windows or somebody had made for C:\Program Files\Quillmont")
    assert notes.count("\n\n") == 1


def test_uninstalling_removes_what_setup_looked_after(installation, netsh):
    installation.install()
    netsh.take_calls()
    installation.uninstall()
    assert netsh.take_calls() == [DELETE_OWN_RULE, DELETE_RULES_OF_PROGRAM]


def test_a_firewall_that_setup_was_told_to_leave_alone_is_left_alone(installation, netsh):
    installation.install("/FIREWALL=no")
    installation.install()
    installation.uninstall()
    assert netsh.take_calls() == []


def test_a_rule_declined_later_goes_and_no_other_does(installation, netsh):
    installation.install()
    netsh.take_calls()
    installation.install("/FIREWALL=no")
    assert netsh.take_calls() == [DELETE_OWN_RULE]


def test_another_folders_program_is_the_one_named(netsh):
    netsh.begin()
    elsewhere = Installation(r"C:\Program Files\Network\Quillmont")
    elsewhere.install(f"/D={elsewhere.windows_folder}")
    elsewhere.uninstall()
    calls = [call for call in netsh.take_calls() if call != DELETE_OWN_RULE]
    assert len(calls) == 3
    for call in calls:
        assert call.endswith(r' program="C:\Program Files\Network\Quillmont\Quillmont.exe"')


def test_a_firewall_that_cannot_be_changed_is_reported_and_breaks_nothing(installation, netsh):
    netsh.answer("1 rule")
    assert installation.install() == 0
    assert "The firewall rule could not be added (netsh: 1)" in installation.notes.read_text()
    assert installation.program.exists()
    assert registry_value(UNINSTALL_KEY, "FirewallRule") is None
    # The next attempt tries it again without being told to.
    netsh.answer("1 delete rule")
    installation.install()
    assert registry_value(UNINSTALL_KEY, "FirewallRule") == INSTALLED_WORD
    assert not installation.notes.exists()


def test_a_missing_netsh_is_reported_too(installation):
    netsh = drive_c() / "windows" / "system32" / "netsh.exe"
    octets = netsh.read_bytes()
    netsh.unlink()
    try:
        assert installation.install() == 0
    finally:
        netsh.write_bytes(octets)
    assert "The firewall rule could not be added (netsh: error)" in installation.notes.read_text()


def test_the_guides_rule_is_setups_rule():
    guide = (ROOT / "docs" / "installing.md").read_text()
    commands = re.findall(r"^netsh (.*)$", guide, re.M)
    by_hand = 'name="Quillmont PRO"'
    assert [ADD_RULE.replace(NAME, by_hand), DELETE_RULES_OF_PROGRAM] == sorted(commands)
