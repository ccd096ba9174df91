"""Installing."""

from harness.places import windows_path
from harness.processes import run_wine, wine_processes
from harness.waiting import wait_until
from harness.window import Window
from installation import (
    CONTENT,
    INSTALLED_WORD,
    RUN_KEY,
    UNINSTALL_KEY,
    VERSION,
    Installation,
    check_that_it_records,
    package,
    registry_value,
)

NEXT_BUTTON = 1  # of the wizard, whatever its text


def test_installing_puts_everything_in_place(installation):
    assert installation.install() == 0
    assert sorted(entry.name for entry in installation.folder.iterdir()) == sorted([*CONTENT, "uninstall.exe"])
    assert sorted(entry.name for entry in installation.menu.iterdir()) == ["Quillmont PRO.lnk", "User guide.lnk"]
    assert registry_value(UNINSTALL_KEY, "DisplayName") == "Quillmont PRO"
    assert registry_value(UNINSTALL_KEY, "DisplayVersion") == VERSION
    assert registry_value(UNINSTALL_KEY, "FirewallRule") == INSTALLED_WORD
    assert registry_value(RUN_KEY, "Quillmont") == installation.run_command


def test_the_wizard_installs_the_chosen_components_and_starts_the_program(data, driver, installation):
    process = driver("start", windows_path(package("setup.exe")))

    def find_wizard():
        found = [facts for facts in driver("windows", process) if facts["text"] == "Quillmont PRO Setup"]
        return found and Window(driver, found[0]["handle"])

    wizard = wait_until(find_wizard, "the wizard")

    def shows(class_name):
        return any(facts.__dict__["class"] == class_name and facts.visible for facts in wizard.descendants())

    forward = wizard.control(NEXT_BUTTON)
    forward.click()
    wait_until(lambda: shows("SysTreeView32"), "the page with the boxes")
    forward.click()
    forward.wait_text("&Install")
    forward.click()
    forward.wait_text("&Finish")
    forward.click()
    assert driver("wait_for_exit", process, 20000) == 0
    assert registry_value(RUN_KEY, "Quillmont") == installation.run_command
    data.wait_for_start()
    assert len(wine_processes("Quillmont.exe")) == 1


def test_the_installed_program_records(data, installation, start):
    installation.install()
    program = start(installation.program).wait_running()
    check_that_it_records(data)
    assert program.close() == 0


def test_a_silent_installation_starts_nothing_that_did_not_run(data, installation):
    installation.install()
    assert not wine_processes("Quillmont.exe")
    assert not data.folder.exists()


def test_an_upgrade_uses_the_folder_chosen_before(netsh):
    netsh.reset()
    elsewhere = Installation(r"C:\Program Files\Network\Quillmont")
    elsewhere.install(f"/D={elsewhere.windows_folder}")
    (elsewhere.folder / "CHANGELOG.txt").unlink()
    elsewhere.install()
    assert (elsewhere.folder / "CHANGELOG.txt").exists()
    assert registry_value(RUN_KEY, "Quillmont") == elsewhere.run_command
    elsewhere.uninstall()
    assert elsewhere.traces() == []


def test_a_declined_component_is_not_installed_and_stays_declined(installation):
    installation.install("/AUTOSTART=no", "/FIREWALL=no")
    for _ in range(2):
        assert registry_value(RUN_KEY, "Quillmont") is None
        assert registry_value(UNINSTALL_KEY, "FirewallRule") == "0x0"
        installation.install()


def test_a_component_declined_later_is_removed(installation):
    installation.install()
    installation.install("/AUTOSTART=no", "/FIREWALL=no")
    assert registry_value(RUN_KEY, "Quillmont") is None
    assert registry_value(UNINSTALL_KEY, "FirewallRule") == "0x0"
    installation.install("/AUTOSTART=yes", "/FIREWALL=yes")
    assert registry_value(RUN_KEY, "Quillmont") == installation.run_command
    assert registry_value(UNINSTALL_KEY, "FirewallRule") == INSTALLED_WORD


def test_the_installer_reports_a_running_trap_service(installation):
    # Any running service of this name will do, even a driver.
    image = r"C:\windows\system32\drivers\ksecdd.sys"
    assert run_wine("sc", "create", "SNMPTRAP", "type=", "kernel", "binPath=", image) == 0
    assert run_wine("net", "start", "SNMPTRAP") == 0
    assert installation.install() == 0
    notes = installation.notes.read_text()
    # In PowerShell sc is another command.
    assert "run: sc.exe stop SNMPTRAP" in notes
    assert "restart: sc.exe config SNMPTRAP start= disabled" in notes
    run_wine("net", "stop", "SNMPTRAP")
    run_wine("sc", "delete", "SNMPTRAP")
