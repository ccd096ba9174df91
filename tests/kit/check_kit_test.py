"""The check kit as its users run it: unpacked and started by check.cmd."""

import os
import re
import shutil
import signal
import socket
import subprocess
import zipfile

import pytest

from harness.data_folder import find_data_folder
from harness.driver import Driver
from harness.places import BUILD, ROOT, drive_c
from harness.processes import find_wine_process, start_wine
from harness.program import Program
from harness.waiting import wait_until

MARK = b"the operator's own\r\n"


@pytest.fixture(scope="module")
def kit(tmp_path_factory):
    """The unpacked kit, on drive C:."""
    packed = tmp_path_factory.mktemp("packed")
    build = os.environ.get("QUILLMONT_BUILD", BUILD)
    subprocess.run([ROOT / "packaging/make_check_kit.sh", build, "9.9.9", packed], check=True)
    with zipfile.ZipFile(packed / "Quillmont-9.9.9-windows-check.zip") as archive:
        archive.extractall(drive_c() / "kit")
    yield drive_c() / "kit" / "Quillmont-9.9.9-windows-check"
    shutil.rmtree(drive_c() / "kit")


@pytest.fixture(name="users_folder")
def make_users_folder():
    """An operator's data folder, which must be the same afterwards."""
    driver = Driver()
    folder = find_data_folder(driver).folder
    driver.close()
    shutil.rmtree(folder, ignore_errors=True)
    folder.mkdir(parents=True)
    (folder / "SNMP.txt").write_bytes(MARK)
    yield folder
    shutil.rmtree(folder, ignore_errors=True)


def start_check(kit, *programs):
    return start_wine("cmd", "/c", "check.cmd", *programs, cwd=kit, env={**os.environ, "QUILLMONT_UNATTENDED": "1"})


def run_check(kit, *programs):
    """Runs all programs, or these. Returns the exit code and the report."""
    check = start_check(kit, *programs)
    check.communicate(timeout=900)
    return check.returncode, (kit / "report.txt").read_text(encoding="ascii", errors="replace")


def expect_untouched(folder):
    assert [file.name for file in folder.iterdir()] == ["SNMP.txt"]
    assert (folder / "SNMP.txt").read_bytes() == MARK
    assert [file.name for file in folder.parent.glob(folder.name + ".*")] == []


def test_everything_passes_and_the_operators_folder_is_restored(kit, users_folder):
    code, report = run_check(kit)
    print(report)
    closing = re.fullmatch(r"(\d+) passed, (\d+) failed, (\d+) skipped", report.splitlines()[-1])
    assert closing, report
    assert (int(closing[1]) > 400, closing[2], code) == (True, "0", 0), report
    # Each skipped test has its reason on an indented line after its name.
    assert len(re.findall(r"^skipped: \S+\n    \S", report, re.M)) == int(closing[3]), report
    for program in (kit / "programs").glob("quillmont_*.exe"):
        assert program.name == "quillmont_check.exe" or program.name in report
    for fact in ["kit: Quillmont-9.9.9-windows-check", "Windows: ", "code pages: ", "fact: from the start of the program to listening: "]:
        assert fact in report
    expect_untouched(users_folder)
    assert sorted(file.name for file in kit.iterdir()) == ["READ-ME.txt", "check.cmd", "programs", "report.txt"]


def test_failures_are_counted_in_the_last_line_and_set_the_exit_code(kit, users_folder):
    unit_tests = kit / "programs" / "quillmont_unit_tests.exe"
    corpus = kit / "programs" / "corpus"
    octets = unit_tests.read_bytes()
    unit_tests.write_bytes(b"no program")
    moved = corpus.rename(corpus.with_name("moved"))
    programs = ["quillmont_unit_tests.exe", "quillmont_corpus_replay.exe", "quillmont_missing.exe"]
    try:
        code, report = run_check(kit, *programs, "quillmont_windows_facts.exe")
    finally:
        unit_tests.write_bytes(octets)
        moved.rename(corpus)
    assert code == 1
    for program in programs:
        assert f"FAILED: {program} ends with code 0\n" in report, report
    assert "  found: it could not be started" in report
    assert re.fullmatch(r"\d+ passed, 3 failed, 0 skipped", report.splitlines()[-1]), report
    expect_untouched(users_folder)


def test_a_zip_that_was_not_unpacked_is_reported(kit, tmp_path):
    """Explorer unpacks only the file that is started inside a zip."""
    shutil.copy(kit / "check.cmd", tmp_path)
    check = start_check(tmp_path)
    output, _ = check.communicate(timeout=60)
    assert b'choose "Extract All..."' in output
    assert check.returncode == 2


@pytest.mark.parametrize("port", [161, 162])
def test_a_port_in_use_is_reported_and_nothing_is_changed(kit, users_folder, port):
    with socket.socket(socket.AF_INET, socket.SOCK_DGRAM) as other:
        other.bind(("0.0.0.0", port))
        code, report = run_check(kit)
    assert code == 2
    assert f"UDP port {port} is in use" in report
    expect_untouched(users_folder)


def test_a_running_quillmont_is_reported_and_left_running(kit, users_folder):
    driver = Driver()
    program = Program(driver)
    try:
        program.wait_running()
        code, report = run_check(kit)
        assert code == 2
        assert "Quillmont is running." in report
        assert program.runs
    finally:
        program.end()
        driver.close()
    assert users_folder.exists()


def test_the_next_start_restores_the_folder_after_a_killed_check(kit, users_folder):
    aside = users_folder.with_name(users_folder.name + ".aside-for-check")
    check = start_check(kit)
    wait_until(aside.exists, "the operator's folder moved aside")
    os.kill(find_wine_process("quillmont_check.exe"), signal.SIGKILL)
    check.communicate(timeout=60)
    # The port in use makes the next check stop after that.
    with socket.socket(socket.AF_INET, socket.SOCK_DGRAM) as other:
        other.bind(("0.0.0.0", 162))
        code, report = run_check(kit)
    assert code == 2
    assert "The last check was interrupted." in report
    expect_untouched(users_folder)
