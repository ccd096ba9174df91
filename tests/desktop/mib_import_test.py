"""Importing MIB files through the real dialog: the copies, the log, the names and the list."""

from harness.data_folder import record
from harness.mib_dialogs import (
    MAPPINGS,
    FileDialog,
    counts,
    delete_all,
    import_files,
    listed,
    mib,
    new_messages,
)
from harness.tool_windows import IMPORT_BUTTON, STATUS
from harness.traps import V2C_HEAD, send_v2c
from harness.win32 import (
    CBN_SELCHANGE,
    CBN_SELENDOK,
    CB_GETCURSEL,
    CB_SETCURSEL,
    ID_FILTER,
    PROTECTING,
    WM_COMMAND,
)
from harness.window import Window


def test_one_file_is_copied_logged_and_loaded(program, data, status, samples):
    before = len(data.log_messages())
    import_files(program, status, samples.add("one.mib", mib("one", 9991)))
    assert new_messages(data, before) == ["MIB imported: one.mib", MAPPINGS + "1"]
    assert (data.mibs / "one.mib").read_bytes() == mib("one", 9991)
    assert listed(status) == ["one.mib"]
    assert counts(status) == "Loaded MIB files: 1  |  OID mappings: 1"


def test_the_status_window_shows_an_import_and_a_deletion_at_once(program, status, samples):
    program.attach_spy()
    status.kill_timer(STATUS.timer)
    import_files(program, status, samples.add("one.mib", mib("one", 9991)))
    assert (listed(status), counts(status)) == (["one.mib"], "Loaded MIB files: 1  |  OID mappings: 1")
    delete_all(program, status)
    assert (listed(status), counts(status)) == ([], "Loaded MIB files: 0  |  OID mappings: 0")


def test_several_files_are_imported_at_once(program, data, status, samples):
    before = len(data.log_messages())
    for number, name in enumerate(("a.mib", "b.txt", "c.my")):
        samples.add(name, mib(name[0], 9990 + number))
    import_files(program, status, samples.windows_folder, "a.mib", "b.txt", "c.my")
    messages = new_messages(data, before)
    assert sorted(messages[:3]) == ["MIB imported: a.mib", "MIB imported: b.txt", "MIB imported: c.my"]
    assert messages[3:] == [MAPPINGS + "3"]
    assert listed(status) == ["a.mib", "b.txt", "c.my"]


def test_importing_over_an_existing_file_replaces_it(program, data, status, samples):
    data.add_mib("one.mib", b"an older and much longer file than the one that replaces it, " * 10)
    before = len(data.log_messages())
    import_files(program, status, samples.add("one.mib", mib("one", 9991)))
    assert new_messages(data, before) == ["MIB imported: one.mib", MAPPINGS + "1"]
    assert (data.mibs / "one.mib").read_bytes() == mib("one", 9991)


def test_a_my_file_is_imported_through_the_first_filter(program, data, status, samples):
    before = len(data.log_messages())
    dialog = FileDialog(program, status)
    assert dialog.filter.send(CB_GETCURSEL) == 0
    dialog.choose(samples.add("vendor.my", mib("vendor", 9991)))
    program.settle()
    assert new_messages(data, before) == ["MIB imported: vendor.my", MAPPINGS + "1"]


def test_a_file_of_another_type_is_copied_through_the_all_files_filter_but_not_loaded(program, data, status, samples):
    before = len(data.log_messages())
    dialog = FileDialog(program, status)
    dialog.filter.send(CB_SETCURSEL, 1)
    parent = Window(program.driver, dialog.filter.facts.parent)
    parent.send(WM_COMMAND, ID_FILTER | CBN_SELCHANGE << 16, dialog.filter.handle)
    parent.send(WM_COMMAND, ID_FILTER | CBN_SELENDOK << 16, dialog.filter.handle)
    dialog.choose(samples.add("notes.xml", mib("notes", 9991)))
    program.settle()
    assert new_messages(data, before) == ["MIB imported: notes.xml", MAPPINGS + "0"]
    assert (data.mibs / "notes.xml").read_bytes() == mib("notes", 9991)
    assert listed(status) == []


def test_a_protected_file_replaces_a_protected_one_and_the_copy_is_not_protected(
    program, data, status, samples, driver
):
    path = samples.add("one.mib", mib("one", 9991))
    data.add_mib("one.mib", mib("old", 9990))
    copy = data.windows_path(data.mibs / "one.mib")
    for protected in (path, copy):
        assert driver("set_attributes", protected, PROTECTING)
        assert driver("attributes", protected) & PROTECTING == PROTECTING
    before = len(data.log_messages())
    import_files(program, status, path)
    assert new_messages(data, before) == ["MIB imported: one.mib", MAPPINGS + "1"]
    assert driver("attributes", copy) & PROTECTING == 0
    assert driver("attributes", path) & PROTECTING == PROTECTING


def test_several_files_are_imported_in_the_order_of_the_dialog(program, data, status, samples):
    names = ("c.mib", "a.mib", "d.mib", "b.mib")
    for number, name in enumerate(names):
        samples.add(name, mib(name[0], 9990 + number))
    program.attach_spy()
    program.choose_in_next_dialog(samples.windows_folder, *names)
    before = len(data.log_messages())
    status.control(IMPORT_BUTTON).click()
    data.wait_for_log(MAPPINGS + "4")
    assert new_messages(data, before) == [*(f"MIB imported: {name}" for name in names), MAPPINGS + "4"]


def test_one_file_that_cannot_be_read_is_logged_as_failed(program, data, status, samples, driver):
    path = samples.add("locked.mib", mib("locked", 9991))
    driver("lock_file", path)
    before = len(data.log_messages())
    try:
        import_files(program, status, path)
    finally:
        driver("release_files")
    assert new_messages(data, before) == ["MIB import failed.", MAPPINGS + "0"]
    assert list(data.mibs.iterdir()) == []


def test_importing_a_file_of_the_mibs_folder_fails_and_leaves_it_unchanged(program, data, status):
    data.add_mib("one.mib", mib("one", 9991))
    before = len(data.log_messages())
    import_files(program, status, data.windows_path(data.mibs / "one.mib"))
    assert new_messages(data, before) == ["MIB import failed.", MAPPINGS + "1"]
    assert (data.mibs / "one.mib").read_bytes() == mib("one", 9991)


def test_a_folder_with_the_name_of_the_file_makes_the_import_fail(program, data, status, samples):
    (data.mibs / "one.mib").mkdir()
    before = len(data.log_messages())
    import_files(program, status, samples.add("one.mib", mib("one", 9991)))
    assert new_messages(data, before) == ["MIB import failed.", MAPPINGS + "0"]


def test_without_the_mibs_folder_imports_fail_until_the_next_start(program, data, status, start, samples):
    data.mibs.rmdir()
    before = len(data.log_messages())
    path = samples.add("one.mib", mib("one", 9991))
    import_files(program, status, path)
    assert new_messages(data, before) == ["MIB import failed.", MAPPINGS + "0"]
    program.close()
    program = start().wait_running()
    data.wait_for_start(2)
    before = len(data.log_messages())
    import_files(program, STATUS.open(program), path)
    assert new_messages(data, before) == ["MIB imported: one.mib", MAPPINGS + "1"]


def test_an_unreadable_file_among_three_is_skipped_without_a_log_line(program, data, status, samples, driver):
    samples.add("a.mib", mib("a", 9991))
    locked = samples.add("b.mib", mib("b", 9992))
    samples.add("c.mib", mib("c", 9993))
    driver("lock_file", locked)
    before = len(data.log_messages())
    try:
        import_files(program, status, samples.windows_folder, "a.mib", "b.mib", "c.mib")
    finally:
        driver("release_files")
    messages = new_messages(data, before)
    assert sorted(messages[:2]) == ["MIB imported: a.mib", "MIB imported: c.mib"]
    assert messages[2:] == [MAPPINGS + "2"]
    assert listed(status) == ["a.mib", "c.mib"]


def test_a_name_outside_ascii_is_imported_and_cuts_its_log_line(program, data, status, samples):
    before = len(data.log_octets())
    import_files(program, status, samples.add("gr\u00fcn-\u4e2d.mib", mib("one", 9991)))
    assert (data.mibs / "gr\u00fcn-\u4e2d.mib").read_bytes() == mib("one", 9991)
    # A character above 0xFF cuts the line in the file, its line end included.
    assert b"  MIB imported: gr\xfcn-2" in data.log_octets()[before:]
    assert listed(status) == ["gr\u00fcn-\u4e2d.mib"]


def test_names_appear_with_an_import_and_disappear_with_the_deletion(program, data, status, samples):
    binding = ("1.3.6.1.4.1.9991", "i", "1")
    send_v2c(*binding)
    data.wait_for_traps(1)
    import_files(program, status, samples.add("one.mib", mib("one", 9991)))
    send_v2c(*binding)
    data.wait_for_traps(2)
    delete_all(program, status)
    send_v2c(*binding)
    data.wait_for_traps(3)
    plain = record(*V2C_HEAD, "---> [3] 1.3.6.1.4.1.9991  INTEGER = 1")
    named = record(*V2C_HEAD, "---> [3] 1.3.6.1.4.1.9991 (one)  INTEGER = 1")
    assert data.masked_traps() == plain + named + plain
