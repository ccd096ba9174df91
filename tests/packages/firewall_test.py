"""The exact netsh commands that Setup runs. Wine has no firewall, so their effect cannot be tested."""

import re

from harness.places import ROOT, drive_c
from installation import INSTALLED_WORD, UNINSTALL_KEY, Installation, registry_value

PROGRAM = r'program="C:\Program Files\Quillmont\Quillmont.exe"'
NAME = 'name="Quillmont PRO (SNMP, UDP 161 and 162)"'
DELETE_OWN_RULE = f"advfirewall firewall delete rule {NAME}"
DELETE_RULES_OF_PROGRAM = f"advfirewall firewall delete rule name=all dir=in {PROGRAM}"
ADD_RULE = f"advfirewall firewall add rule {NAME} dir=in action=allow protocol=UDP localport=161,162 {PROGRAM}"


def test_one_rule_for_both_ports_replaces_all_others_of_the_program(installation, netsh):
    installation.install()
    assert netsh.pop_calls() == [DELETE_OWN_RULE, DELETE_RULES_OF_PROGRAM, ADD_RULE]
    assert not installation.notes.exists()
    # The same on an upgrade: Windows may have asked about the program and added rules in between.
    installation.install()
    assert netsh.pop_calls() == [DELETE_OWN_RULE, DELETE_RULES_OF_PROGRAM, ADD_RULE]


def test_the_removal_of_other_rules_is_noted(installation, netsh):
    netsh.answer("1 delete rule name=\"", "0 delete rule name=all")
    installation.install()
    notes = installation.notes.read_text()
    assert notes.startswith(r"Other firewall rules for C:\Program Files\Quillmont")
    assert notes.count("\n\n") == 1


def test_uninstalling_removes_the_rule_that_setup_made(installation, netsh):
    installation.install()
    netsh.pop_calls()
    installation.uninstall()
    assert netsh.pop_calls() == [DELETE_OWN_RULE, DELETE_RULES_OF_PROGRAM]


def test_without_the_firewall_box_setup_changes_no_rule(installation, netsh):
    installation.install("/FIREWALL=no")
    installation.install()
    installation.uninstall()
    assert netsh.pop_calls() == []


def test_a_rule_declined_later_is_the_only_one_removed(installation, netsh):
    installation.install()
    netsh.pop_calls()
    installation.install("/FIREWALL=no")
    assert netsh.pop_calls() == [DELETE_OWN_RULE]


def test_the_rule_names_the_program_in_the_chosen_folder(netsh):
    netsh.reset()
    elsewhere = Installation(r"C:\Program Files\Network\Quillmont")
    elsewhere.install(f"/D={elsewhere.windows_folder}")
    elsewhere.uninstall()
    calls = [call for call in netsh.pop_calls() if call != DELETE_OWN_RULE]
    assert len(calls) == 3
    for call in calls:
        assert call.endswith(r' program="C:\Program Files\Network\Quillmont\Quillmont.exe"')


def test_setup_goes_on_after_a_firewall_error_and_reports_it(installation, netsh):
    netsh.answer("1 rule")
    assert installation.install() == 0
    assert "The firewall rule could not be added (netsh: 1)" in installation.notes.read_text()
    assert installation.program.exists()
    assert registry_value(UNINSTALL_KEY, "FirewallRule") is None
    # The next installation tries again, even without a switch.
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


def test_the_guide_adds_the_same_rule_as_setup():
    guide = (ROOT / "docs" / "installing.md").read_text()
    commands = re.findall(r"^netsh (.*)$", guide, re.M)
    guides_name = 'name="Quillmont PRO"'
    assert [ADD_RULE.replace(NAME, guides_name), DELETE_RULES_OF_PROGRAM] == sorted(commands)
