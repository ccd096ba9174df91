"""Uninstalling."""

import shutil

import pytest
from harness.waiting import wait_until
from installation import check_that_it_records


def test_uninstalling_removes_everything_but_the_operators_files(data, installation, start):
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


def test_an_uninstaller_without_a_copy_returns_its_exit_code_and_leaves_only_itself(installation):
    installation.install()
    code, text = installation.run_uninstaller("/S")
    assert (code, text) == (0, "")
    # Windows cannot delete the file of a running program; Wine can.
    left = [entry.name for entry in installation.folder.iterdir()] if installation.folder.exists() else []
    assert left in ([], ["uninstall.exe"])
    shutil.rmtree(installation.folder, ignore_errors=True)
    assert installation.traces() == []


def test_uninstalling_leaves_other_files_in_the_folder(installation):
    installation.install()
    (installation.folder / "mine.txt").write_text("mine")
    installation.start_uninstall()
    wait_until(lambda: [e.name for e in installation.folder.iterdir()] == ["mine.txt"], "all other files to be deleted")
    shutil.rmtree(installation.folder)


@pytest.fixture
def others(tmp_path):
    """A folder outside the data folder, with files named like the program's."""
    folder = tmp_path / "others"
    (folder / "mibs").mkdir(parents=True)
    for name in ("a.mib", "SNMP.txt", "mibs/b.mib"):
        (folder / name).write_text("not the program's")
    return folder


def names_below(folder):
    return sorted(str(path.relative_to(folder)) for path in folder.rglob("*"))


def uninstall_with_data(installation):
    """Runs the uninstaller without a copy, so that it has finished when this returns."""
    assert installation.run_uninstaller("/S", "/DELETEDATA=yes")[0] == 0
    shutil.rmtree(installation.folder, ignore_errors=True)


@pytest.mark.parametrize("link", ["mibs/link", "mibs/link.mib", "mibs", "."])
def test_deleting_the_data_never_follows_a_link_out_of_the_data_folder(data, installation, others, link):
    """A standard user can make such a link, and the uninstaller runs as an administrator."""
    installation.install()
    data.remove()
    path = data.folder / link
    path.parent.mkdir(parents=True, exist_ok=True)
    path.symlink_to(others)
    before = names_below(others)
    uninstall_with_data(installation)
    survived = path.is_symlink()
    path.unlink(missing_ok=True)
    assert survived
    assert names_below(others) == before


def test_deleting_the_data_leaves_other_files(data, installation):
    installation.install()
    data.add_mib("MY-MIB.MIB", b"")
    data.add_mib("my.my", b"")
    data.add_mib("notes.doc", b"")
    (data.mibs / "folder.mib").mkdir()
    (data.mibs / "folder.mib" / "inner.mib").write_text("mine")
    data.traps.write_text("")
    (data.folder / "mine.txt").write_text("mine")
    uninstall_with_data(installation)
    assert names_below(data.folder) == [
        "mibs",
        "mibs/folder.mib",
        "mibs/folder.mib/inner.mib",
        "mibs/notes.doc",
        "mine.txt",
    ]


def test_uninstalling_deletes_the_operators_files_with_the_switch(data, installation, start):
    installation.install()
    start(installation.program).wait_running().close()
    assert data.config.exists()
    data.add_mib("MY-MIB.txt", b"")
    installation.uninstall("/DELETEDATA=yes")
    wait_until(lambda: not data.folder.exists(), "the data folder to be deleted")
    assert installation.traces() == []
