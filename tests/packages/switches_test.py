"""The command lines of Setup and of the uninstaller."""

import re

import pytest
from harness.places import ROOT, windows_path
from harness.processes import run_wine
from harness.waiting import wait_until
from harness.win32 import DIALOG_CLASS
from harness.window import Window
from installation import NEWER_INSTALLED, UNINSTALL_KEY, VERSION, WRONG_SWITCH, package, registry_value

NO_BUTTON = 7


def pretend_version(version):
    assert run_wine("reg", "add", UNINSTALL_KEY, "/v", "DisplayVersion", "/d", version, "/f") == 0


@pytest.mark.parametrize(
    "switches",
    [
        ["/AUTOSTART=maybe"],
        ["/AUTOSTART"],
        ["/FIREWALL="],
        ["/AUTOSTRAT=no"],
        ["/DELETEDATA=yes"],
        ["/s"],  # NSIS knows /S in capitals only, and would show its windows
        ["/AUTOSTART=no", "/FIREWALL=off"],
        ["no"],
    ],
)
def test_an_unknown_switch_or_value_is_refused(installation, netsh, switches):
    code, text = installation.run_setup("/S", *switches)
    assert code == WRONG_SWITCH, text
    assert text.startswith(f"Unknown switch or value: {switches[-1]}\n\nSetup's switches:\n")
    assert installation.traces() == []
    assert netsh.pop_calls() == []


@pytest.mark.parametrize("switch", ["/HELP", "/help", "/?"])
def test_help_lists_the_switches_and_the_exit_codes(installation, switch):
    code, text = installation.run_setup("/S", switch)
    assert code == WRONG_SWITCH, text
    assert text.startswith("Setup's switches:\n")
    guide = (ROOT / "docs" / "installing.md").read_text()
    for named in re.findall(r"(?<!\S)/[A-Z]+(?:=[a-z]+)?(?![=\w])", text):
        assert f"`{named}`" in guide, f"the guide does not name {named}"
    for code in range(5):
        assert re.search(rf"\b{code} ", text)
    assert installation.traces() == []


def test_the_uninstaller_refuses_unknown_switches(installation):
    installation.install()
    code, text = installation.run_uninstaller("/S", "/DELETEDATA=no", "/FIREWALL=no")
    assert code == WRONG_SWITCH, text
    assert "value: /FIREWALL=no\n\nThe uninstaller's switches:\n" in text
    code, text = installation.run_uninstaller("/S", "/HELP")
    assert (code, text.partition("\n")[0]) == (WRONG_SWITCH, "The uninstaller's switches:")
    assert installation.program.exists()


@pytest.mark.parametrize("switches", [[], ["/DOWNGRADE=no"]])
def test_a_silent_downgrade_is_refused(installation, netsh, switches):
    installation.install()
    installation.program.write_bytes(b"a newer version")
    pretend_version("1.0.10")
    netsh.pop_calls()
    code, text = installation.run_setup("/S", *switches)
    assert code == NEWER_INSTALLED
    assert text.startswith(f"Quillmont PRO 1.0.10 is installed, which is newer than {VERSION}. Nothing was changed.")
    assert "/DOWNGRADE=yes" in text
    assert installation.program.read_bytes() == b"a newer version"
    assert registry_value(UNINSTALL_KEY, "DisplayVersion") == "1.0.10"
    assert netsh.pop_calls() == []


def test_the_switch_allows_a_downgrade(installation):
    installation.install()
    pretend_version("10.0")
    assert installation.install("/DOWNGRADE=yes") == 0
    assert registry_value(UNINSTALL_KEY, "DisplayVersion") == VERSION


@pytest.mark.parametrize("version", ["0.9.9", VERSION])
def test_an_older_or_the_same_version_is_replaced_without_a_switch(installation, version):
    installation.install()
    pretend_version(version)
    assert installation.install() == 0


def test_an_interactive_downgrade_asks_first(driver, installation):
    installation.install()
    pretend_version("2.0.0")
    process = driver("start", windows_path(package("setup.exe")))

    def find_question():
        for facts in driver("windows", process):
            if facts["class"] == DIALOG_CLASS and facts["visible"]:
                return Window(driver, facts["handle"])
        return None

    question = wait_until(find_question, "the question")
    texts = [facts.text for facts in question.descendants()]
    assert f"Quillmont PRO 2.0.0 is installed, which is newer than {VERSION}. Install {VERSION} over it?" in texts
    question.control(NO_BUTTON).click()
    assert driver("wait_for_exit", process, 20000) == NEWER_INSTALLED
    assert registry_value(UNINSTALL_KEY, "DisplayVersion") == "2.0.0"


def test_the_guide_installs_only_to_folders_that_need_administrator_rights():
    guide = (ROOT / "docs" / "installing.md").read_text()
    folders = re.findall(r"/D=([^`]+)`", guide)
    assert folders
    assert all(folder.startswith("C:\\Program Files\\") for folder in folders), folders


def test_the_guide_uses_sc_exe():
    """In PowerShell sc is Set-Content, so `sc stop SNMPTRAP` would write a file."""
    guide = (ROOT / "docs" / "installing.md").read_text()
    assert re.findall(r"^sc\S* \w+", guide, re.M) == ["sc.exe stop", "sc.exe config"]
