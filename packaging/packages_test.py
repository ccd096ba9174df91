"""What people download, tried as they would: unpacked, installed, upgraded while it runs, uninstalled.

Runs where run_on_private_desktop.sh put it. QUILLMONT_PACKAGES names the folder with the packages.
"""

import hashlib
import os
import re
import shutil
import struct
import zipfile
from pathlib import Path

import pytest

from harness import traps
from harness.places import ROOT, drive_c, windows_path
from harness.processes import ask_wine, run_wine, wine_processes
from harness.waiting import wait_until
from harness.window import Window

pytest_plugins = ["harness.fixtures"]

VERSION = re.search(r"^project\(Quillmont VERSION ([0-9.]+)", (ROOT / "CMakeLists.txt").read_text(), re.M)[1]
CONTENT = ["CHANGELOG.txt", "Quillmont.exe", "standard-names.mib", "user-guide.html"]

CURRENT_VERSION = r"HKLM\Software\Microsoft\Windows\CurrentVersion"
UNINSTALL_KEY = CURRENT_VERSION + r"\Uninstall\Quillmont"
RUN_KEY = CURRENT_VERSION + r"\Run"
RUN_COMMAND = r'"C:\Program Files\Quillmont\Quillmont.exe"'
INSTALLED_WORD = "0x1"
NEXT_BUTTON = 1  # of the wizard, whatever it says

MEM_TOTAL_REAL = "1.3.6.1.4.1.2021.4.5"


def package(suffix):
    return Path(os.environ["QUILLMONT_PACKAGES"], f"Quillmont-{VERSION}-{suffix}")


def registry_value(key, name):
    """The value as `reg` prints it; None when there is none."""
    found = re.search(rf"^\s+{re.escape(name)}\s+REG_\w+\s+(.*?)\s*$", ask_wine("reg", "query", key), re.M)
    return found and found[1]


class Installation:
    folder = property(lambda self: drive_c() / "Program Files" / "Quillmont")
    program = property(lambda self: self.folder / "Quillmont.exe")
    notes = property(lambda self: self.folder / "setup-notes.txt")
    menu = property(
        lambda self: drive_c() / "ProgramData/Microsoft/Windows/Start Menu/Programs" / "Quillmont PRO"
    )

    def install(self, *switches):
        """The exit code of the installer in silent mode."""
        return run_wine(windows_path(package("setup.exe")), "/S", *switches)

    def uninstall(self, *switches):
        """The uninstaller goes on as a copy of itself, which removes what was started: wait for that."""
        run_wine(r"C:\Program Files\Quillmont\uninstall.exe", "/S", *switches)
        wait_until(lambda: not self.folder.exists(), "the program's folder to be gone")

    def traces(self):
        """What speaks of it in the folders of all users and where programs announce themselves to Windows."""
        assert run_wine("reg", "export", CURRENT_VERSION, r"C:\current.reg", "/y") == 0
        announced = (drive_c() / "current.reg").read_bytes().decode("utf-16")
        lines = [line for line in announced.splitlines() if "quillmont" in line.lower()]
        return lines + [str(path) for path in (self.folder, self.menu) if path.exists()]


@pytest.fixture
def installation():
    installation = Installation()
    yield installation
    if installation.folder.exists():
        installation.uninstall()


def check_that_it_records(data):
    data.wait_for_start()
    traps.send_v2c(MEM_TOTAL_REAL, "i", "8029184")
    data.wait_for_traps(1)
    assert b"] 1.3.6.1.4.1.2021.4.5  INTEGER = 8029184" in data.trap_octets()


def test_the_checksums_are_those_of_the_packages():
    lines = Path(os.environ["QUILLMONT_PACKAGES"], "SHA256SUMS").read_text().splitlines()
    named = dict(reversed(line.split("  ")) for line in lines)
    assert sorted(named) == [package(suffix).name for suffix in ("setup.exe", "windows-x64.zip")]
    for name, digest in named.items():
        assert hashlib.sha256((package("setup.exe").parent / name).read_bytes()).hexdigest() == digest


def test_the_guide_in_the_zip_is_one_file():
    with zipfile.ZipFile(package("windows-x64.zip")) as archive:
        assert sorted(archive.namelist()) == CONTENT
        guide = archive.read("user-guide.html").decode()
    assert f"version {VERSION}" in guide
    assert not re.search(r'href="[\w-]+\.md', guide)
    assert 'id="running-it-for-months"' in guide
    pictures = re.findall(r"""<(?:img|link|script)[^>]*?(?:src|href)=["']([^"']{0,30})""", guide)
    assert pictures
    assert all(picture.startswith("data:") for picture in pictures), pictures


def test_the_program_says_who_it_is_and_what_it_asks_of_windows():
    with zipfile.ZipFile(package("windows-x64.zip")) as archive:
        octets = archive.read("Quillmont.exe")
    # The fixed part of the version resource: its mark, its own version, the file's version.
    fixed = octets.index(struct.pack("<II", 0xFEEF04BD, 0x10000))
    high, low = struct.unpack_from("<II", octets, fixed + 8)
    assert f"{high >> 16}.{high & 0xFFFF}.{low >> 16}" == VERSION
    for text in ("Quillmont PRO", "\u00a9 2026 Quillmont", VERSION):
        assert text.encode("utf-16-le") in octets
    manifest = octets[octets.index(b"<assembly") : octets.index(b"</assembly>")].decode()
    for wanted in ('level="asInvoker"', "{8e0f7a12-bfb3-4fe8-b9a5-48fd50a15a9a}", 'version="6.0.0.0"'):
        assert wanted in manifest
    for setting in ("gdiScaling", "longPathAware"):
        assert re.search(rf"<{setting}\b[^>]*>true</{setting}>", manifest)
    for unwanted in ("activeCodePage", "dpiAwareness", ">true</dpiAware>"):
        assert unwanted not in manifest


def test_the_change_log_begins_with_this_version():
    assert re.search(r"^## ([0-9.]+)", (ROOT / "CHANGELOG.md").read_text(), re.M)[1] == VERSION


def test_the_zip_runs_from_a_folder_with_a_blank_and_an_umlaut(data, start):
    folder = drive_c() / "M\u00fcller \u00fc Traps"
    with zipfile.ZipFile(package("windows-x64.zip")) as archive:
        archive.extractall(folder)
    program = start(folder / "Quillmont.exe").wait_running()
    check_that_it_records(data)
    assert program.close() == 0
    shutil.rmtree(folder)
    assert data.config.exists()


def test_the_names_in_the_zip_are_those_of_the_table(data, start):
    folder = drive_c() / "names"
    with zipfile.ZipFile(package("windows-x64.zip")) as archive:
        archive.extractall(folder)
    data.add_mib("standard-names.mib", (folder / "standard-names.mib").read_bytes())
    program = start(folder / "Quillmont.exe")
    data.wait_for_start()
    traps.send_v2c(MEM_TOTAL_REAL, "i", "8029184")
    data.wait_for_traps(1)
    program.close()
    assert b"] 1.3.6.1.2.1.1.3.0 (sysUpTime-0)  TimeTicks = " in data.trap_octets()
    assert b"] 1.3.6.1.6.3.1.1.4.1.0 (snmpTrapOID-0)  OID = " in data.trap_octets()


def test_installing_puts_everything_in_place(installation):
    assert installation.install() == 0
    assert sorted(entry.name for entry in installation.folder.iterdir()) == sorted([*CONTENT, "uninstall.exe"])
    assert sorted(entry.name for entry in installation.menu.iterdir()) == ["Quillmont PRO.lnk", "User guide.lnk"]
    assert registry_value(UNINSTALL_KEY, "DisplayName") == "Quillmont PRO"
    assert registry_value(UNINSTALL_KEY, "DisplayVersion") == VERSION
    assert registry_value(UNINSTALL_KEY, "FirewallRule") == INSTALLED_WORD
    assert registry_value(RUN_KEY, "Quillmont") == RUN_COMMAND


def test_the_wizard_installs_what_is_ticked_and_starts_the_program(data, driver, installation):
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
    assert registry_value(RUN_KEY, "Quillmont") == RUN_COMMAND
    data.wait_for_start()
    assert len(wine_processes("Quillmont.exe")) == 1


def test_the_installed_program_records(data, installation, start):
    installation.install()
    program = start(installation.program).wait_running()
    check_that_it_records(data)
    assert program.close() == 0


def test_an_upgrade_closes_the_program_through_its_window_and_starts_it_again(data, installation, start):
    installation.install()
    new_octets = installation.program.read_bytes()
    with installation.program.open("ab") as file:
        file.write(b"an older version")
    old = start(installation.program).wait_running()
    data.wait_for_start()
    assert installation.install() == 0
    assert old.wait_for_exit() == 0
    assert data.log_messages().count("Config saved.") == 1
    assert installation.program.read_bytes() == new_octets
    data.wait_for_start(2)
    assert len(wine_processes("Quillmont.exe")) == 1
    installation.uninstall()
    assert data.log_messages().count("Server stopped.") == 2
    assert not wine_processes("Quillmont.exe")


def test_a_silent_installation_starts_nothing_that_did_not_run(data, installation):
    installation.install()
    assert not wine_processes("Quillmont.exe")
    assert not data.folder.exists()


def test_another_folder_is_kept_by_an_upgrade(installation):
    folder = drive_c() / "Tools" / "Quillmont"
    installation.install(r"/D=C:\Tools\Quillmont")
    (folder / "CHANGELOG.txt").unlink()
    installation.install()
    assert (folder / "CHANGELOG.txt").exists()
    assert registry_value(RUN_KEY, "Quillmont") == r'"C:\Tools\Quillmont\Quillmont.exe"'
    run_wine(r"C:\Tools\Quillmont\uninstall.exe", "/S")
    wait_until(lambda: not folder.exists(), "the program's folder to be gone")
    assert installation.traces() == []


def test_what_is_declined_is_not_installed_and_stays_declined(installation):
    installation.install("/AUTOSTART=no", "/FIREWALL=no")
    for _ in range(2):
        assert registry_value(RUN_KEY, "Quillmont") is None
        assert registry_value(UNINSTALL_KEY, "FirewallRule") == "0x0"
        installation.install()


def test_what_is_declined_later_goes_away(installation):
    installation.install()
    installation.install("/AUTOSTART=no", "/FIREWALL=no")
    assert registry_value(RUN_KEY, "Quillmont") is None
    assert registry_value(UNINSTALL_KEY, "FirewallRule") == "0x0"
    installation.install("/AUTOSTART=yes", "/FIREWALL=yes")
    assert registry_value(RUN_KEY, "Quillmont") == RUN_COMMAND
    assert registry_value(UNINSTALL_KEY, "FirewallRule") == INSTALLED_WORD


def test_a_firewall_that_cannot_be_changed_is_reported_and_breaks_nothing(installation):
    netsh = drive_c() / "windows" / "system32" / "netsh.exe"
    octets = netsh.read_bytes()
    netsh.unlink()
    try:
        assert installation.install() == 0
    finally:
        netsh.write_bytes(octets)
    assert "The firewall rule could not be added" in installation.notes.read_text()
    assert installation.program.exists()
    assert registry_value(UNINSTALL_KEY, "FirewallRule") is None
    # The next attempt tries it again without being told to.
    installation.install()
    assert registry_value(UNINSTALL_KEY, "FirewallRule") == INSTALLED_WORD
    assert not installation.notes.exists()


def test_the_installer_tells_when_windows_own_trap_service_runs(installation):
    # Any driver will do as the service: what counts is that one of this name runs.
    image = r"C:\windows\system32\drivers\ksecdd.sys"
    assert run_wine("sc", "create", "SNMPTRAP", "type=", "kernel", "binPath=", image) == 0
    assert run_wine("net", "start", "SNMPTRAP") == 0
    assert installation.install() == 0
    assert "sc stop SNMPTRAP" in installation.notes.read_text()
    run_wine("net", "stop", "SNMPTRAP")
    run_wine("sc", "delete", "SNMPTRAP")


def test_a_program_that_cannot_be_replaced_is_left_alone(driver, installation):
    """Somebody else's session runs it: its window cannot be reached, its file cannot be written."""
    installation.install()
    before = installation.program.read_bytes()
    driver("hold_file", r"C:\Program Files\Quillmont\Quillmont.exe")
    try:
        assert installation.install() == 2
    finally:
        driver("release_files")
    assert installation.program.read_bytes() == before


def test_uninstalling_leaves_no_trace_but_the_operators_files(data, installation, start):
    installation.install()
    assert len(installation.traces()) > 5
    program = start(installation.program).wait_running()
    check_that_it_records(data)
    data.add_mib("MY-MIB.txt", b"")
    installation.uninstall()
    assert program.wait_for_exit() == 0
    assert installation.traces() == []
    assert sorted(entry.name for entry in data.folder.iterdir()) == ["SNMP.txt", "config.xml", "log.txt", "mibs"]
    assert (data.mibs / "MY-MIB.txt").exists()


def test_uninstalling_leaves_what_others_put_into_the_folder(installation):
    installation.install()
    (installation.folder / "mine.txt").write_text("mine")
    run_wine(r"C:\Program Files\Quillmont\uninstall.exe", "/S")
    wait_until(lambda: not installation.program.exists(), "the program to be gone")
    wait_until(lambda: [e.name for e in installation.folder.iterdir()] == ["mine.txt"], "all but mine to be gone")
    shutil.rmtree(installation.folder)


def test_uninstalling_takes_the_operators_files_when_told_to(data, installation, start):
    installation.install()
    start(installation.program).wait_running().close()
    assert data.config.exists()
    installation.uninstall("/DELETEDATA=yes")
    wait_until(lambda: not data.folder.exists(), "the data folder to be gone")
    assert installation.traces() == []
