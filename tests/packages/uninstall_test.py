"""Uninstalling."""

import shutil

from harness.waiting import wait_until
from installation import check_that_it_records


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


def test_an_uninstaller_that_is_waited_for_tells_its_code_and_leaves_only_itself(installation):
    installation.install()
    code, text = installation.ask_uninstaller("/S")
    assert (code, text) == (0, "")
    # Windows keeps the file of a running program; Wine does not.
    left = [entry.name for entry in installation.folder.iterdir()] if installation.folder.exists() else []
    assert left in ([], ["uninstall.exe"])
    shutil.rmtree(installation.folder, ignore_errors=True)
    assert installation.traces() == []


def test_uninstalling_leaves_what_others_put_into_the_folder(installation):
    installation.install()
    (installation.folder / "mine.txt").write_text("mine")
    installation.start_uninstall()
    wait_until(lambda: [e.name for e in installation.folder.iterdir()] == ["mine.txt"], "all but mine to be gone")
    shutil.rmtree(installation.folder)


def test_uninstalling_takes_the_operators_files_when_told_to(data, installation, start):
    installation.install()
    start(installation.program).wait_running().close()
    assert data.config.exists()
    installation.uninstall("/DELETEDATA=yes")
    wait_until(lambda: not data.folder.exists(), "the data folder to be gone")
    assert installation.traces() == []
