"""Importing and deleting MIB files through the real dialogs."""

import pytest

from harness.data_folder import record
from harness.mib_dialogs import (
    ID_FILTER,
    ID_NO,
    ID_YES,
    IMPORT_TITLE,
    QUESTION_TITLE,
    FileDialog,
    ask_to_delete,
    delete_all,
    import_files,
    mib,
)
from harness.processes import run_wine
from harness.program import DIALOG_CLASS, STATUS_BUTTON
from harness.tool_windows import DELETE_BUTTON, IMPORT_BUTTON, STATUS
from harness.traps import V2C_HEAD, integer_binding, message, send_raw, send_v2c
from harness.waiting import wait_until
from harness.window import Window

QUESTION = "Alle MIB Dateien im MIB-Ordner l\u00c3\u00b6schen?"

CB_GETCURSEL = 0x0147
CB_SETCURSEL = 0x014E
WM_COMMAND = 0x0111
CBN_SELENDOK = 9
CBN_SELCHANGE = 1

MAPPINGS = "MIBs loaded. OID mappings: "


@pytest.fixture
def status(program, data):
    data.wait_for_start()
    return STATUS.open(program)


def new_messages(data, before):
    return data.log_messages()[before:]


def listed(status):
    return status.only("ListBox").list_items()


def counts(status):
    return status.line("Loaded MIB files:").text


def test_one_file_is_copied_logged_and_loaded(program, data, status, samples):
    before = len(data.log_messages())
    import_files(program, status, samples.add("one.mib", mib("one", 9991)))
    assert new_messages(data, before) == ["MIB imported: one.mib", MAPPINGS + "1"]
    assert (data.mibs / "one.mib").read_bytes() == mib("one", 9991)
    assert listed(status) == ["one.mib"]
    assert counts(status) == "Loaded MIB files: 1  |  OID mappings: 1"


def test_several_files_are_copied_in_one_go(program, data, status, samples):
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


def test_a_file_of_another_type_is_copied_through_all_files_and_not_loaded(program, data, status, samples):
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


def test_the_dialog_has_its_title_its_filters_and_the_status_window_as_owner(program, status):
    dialog = FileDialog(program, status)
    assert dialog.window.facts.text == IMPORT_TITLE
    assert dialog.window.facts.owner == status.handle
    assert dialog.filter.combo_items() == ["MIB files (*.mib;*.txt)", "All files"]
    assert dialog.filter.send(CB_GETCURSEL) == 0
    dialog.cancel()


@pytest.mark.parametrize("leave", ["choose", "cancel"])
def test_the_dialog_leaves_the_program_in_the_folder_where_it_was(program, status, samples, leave):
    program.attach_spy()
    before = program.main.current_folder()
    dialog = FileDialog(program, status)
    if leave == "choose":
        dialog.choose(samples.add("one.mib", mib("one", 9991)))
    else:
        dialog.go_to(samples.windows_folder)
        dialog.cancel()
    program.settle()
    assert program.main.current_folder() == before
    assert before != samples.windows_folder


PROTECTING = 0x1 | 0x2 | 0x4  # read-only, hidden, system


def test_a_protected_file_is_imported_as_an_ordinary_one_over_a_protected_one(
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


def test_a_protected_mib_file_is_deleted_like_any_other(program, data, status, driver):
    for name in ("a.mib", "b.mib"):
        data.add_mib(name, mib(name[0], 9991))
    assert driver("set_attributes", data.windows_path(data.mibs / "a.mib"), PROTECTING)
    before = len(data.log_messages())
    delete_all(program, status)
    assert new_messages(data, before) == ["All MIB files deleted.", MAPPINGS + "0"]
    assert list(data.mibs.iterdir()) == []


DLL_OVERRIDES = r"HKCU\Software\Wine\AppDefaults\Quillmont.exe\DllOverrides"


def test_a_dialog_that_cannot_be_loaded_is_a_failed_import(data, start):
    assert run_wine("reg", "add", DLL_OVERRIDES, "/v", "comdlg32", "/d", "", "/f") == 0
    try:
        program = start().wait_running()
        data.wait_for_start()
        before = len(data.log_messages())
        STATUS.open(program).control(IMPORT_BUTTON).click()
        data.wait_for_log("MIB import failed.")
        program.settle()
        assert new_messages(data, before) == ["MIB import failed."]
        assert program.find_windows(DIALOG_CLASS) == []
    finally:
        assert run_wine("reg", "delete", DLL_OVERRIDES, "/f") == 0


def test_the_dialog_is_asked_for_with_exactly_this_record(program, status):
    program.attach_spy()
    FileDialog(program, status).cancel()
    flags = 0x00080000 | 0x00000200 | 0x00001000  # explorer, several files, the file must exist
    filters = "MIB files (*.mib;*.txt)|*.mib;*.txt;*.my|All files|*.*|"
    assert program.calls("GetOpenFileNameW") == [
        f"GetOpenFileNameW filter={filters} index=1 capacity=8192 flags={flags} more=0 size=1"
        " file= folder=none extension=none"
    ]


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


def test_the_status_window_goes_on_refreshing_behind_the_dialog(program, data, status):
    dialog = FileDialog(program, status)
    assert status.line("Last trap:").text == "Last trap:             (none)"
    send_raw(message(integer_binding(1)))
    data.wait_for_traps(1)
    wait_until(lambda: status.line("Last trap:").text.endswith("s ago)"), "a refresh behind the dialog")
    dialog.cancel()


def test_closing_the_main_window_over_an_open_dialog_ends_the_program_with_0(program, data, status):
    FileDialog(program, status)
    assert program.close() == 0
    assert data.log_messages()[-1] == "Config saved."
    assert list(data.mibs.iterdir()) == []


def test_the_status_window_closed_behind_the_dialog_leaves_a_working_program(program, data, status, samples):
    dialog = FileDialog(program, status)
    before = data.log_octets()
    status.close()
    status.wait_closed()
    dialog.window.wait_closed()
    program.settle()
    assert data.log_octets() == before
    again = STATUS.open(program)
    import_files(program, again, samples.add("one.mib", mib("one", 9991)))
    assert listed(again) == ["one.mib"]
    assert program.close() == 0


def test_cancelling_the_dialog_does_nothing(program, data, status, samples):
    before = data.log_octets()
    dialog = FileDialog(program, status)
    dialog.type_name(samples.add("one.mib", mib("one", 9991)))
    dialog.cancel()
    program.settle()
    assert data.log_octets() == before
    assert list(data.mibs.iterdir()) == []


def test_a_missing_file_cannot_be_chosen(program, data, status, samples):
    before = data.log_octets()
    dialog = FileDialog(program, status)
    dialog.type_name(samples.path("missing.mib"))
    dialog.press_open()
    complaint = wait_until(
        lambda: [w for w in program.find_windows(DIALOG_CLASS) if w != dialog.window],
        "the dialog to complain",
    )[0]
    complaint.close()
    complaint.wait_closed()
    dialog.cancel()
    program.settle()
    assert data.log_octets() == before


def test_a_selection_beyond_the_buffer_crashes_nothing(program, data, status, samples):
    names = [f"{number:03}-{'x' * 90}.mib" for number in range(100)]
    for name in names:
        samples.add(name, b"")
    dialog = FileDialog(program, status)
    dialog.choose(samples.windows_folder, *names)
    program.settle()
    # Windows refuses such a selection; Wine writes it past the size it was given and reports success.
    imported = len(list(data.mibs.iterdir()))
    print(f"{imported} of {len(names)} files were imported: Windows would import none")
    assert imported in (0, len(names))
    assert program.close() == 0


def test_one_file_that_cannot_be_read_is_logged_as_failed(program, data, status, samples, driver):
    path = samples.add("held.mib", mib("held", 9991))
    driver("hold_file", path)
    before = len(data.log_messages())
    try:
        import_files(program, status, path)
    finally:
        driver("release_files")
    assert new_messages(data, before) == ["MIB import failed.", MAPPINGS + "0"]
    assert list(data.mibs.iterdir()) == []


def test_a_file_of_the_folder_itself_cannot_be_imported_and_stays(program, data, status):
    data.add_mib("one.mib", mib("one", 9991))
    before = len(data.log_messages())
    import_files(program, status, data.windows_path(data.mibs / "one.mib"))
    assert new_messages(data, before) == ["MIB import failed.", MAPPINGS + "1"]
    assert (data.mibs / "one.mib").read_bytes() == mib("one", 9991)


def test_a_folder_of_its_name_is_in_a_files_way(program, data, status, samples):
    (data.mibs / "one.mib").mkdir()
    before = len(data.log_messages())
    import_files(program, status, samples.add("one.mib", mib("one", 9991)))
    assert new_messages(data, before) == ["MIB import failed.", MAPPINGS + "0"]


def test_without_the_folder_imports_fail_until_the_next_start(program, data, status, start, samples):
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


def test_the_unreadable_one_of_three_is_passed_over_in_silence(program, data, status, samples, driver):
    samples.add("a.mib", mib("a", 9991))
    held = samples.add("b.mib", mib("b", 9992))
    samples.add("c.mib", mib("c", 9993))
    driver("hold_file", held)
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
    # A character above 0xFF ends what is written of that line, its line end included.
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


def test_the_question_has_its_exact_text_two_buttons_and_the_status_window_as_owner(program, status):
    question = ask_to_delete(program, status)
    assert question.facts.text == QUESTION_TITLE
    assert question.facts.owner == status.handle
    children = [facts for facts in question.children() if facts.visible]
    assert [facts.id for facts in children if facts.__dict__["class"] == "Button"] == [ID_YES, ID_NO]
    texts = [facts.text for facts in children if facts.__dict__["class"] == "Static"]
    assert QUESTION in texts
    # The icon is a static control of its own.
    assert len(texts) == 2
    question.control(ID_NO).click()
    question.wait_closed()


def test_the_question_warns_and_asks_yes_or_no_with_yes_as_its_default(program, status):
    program.attach_spy()
    question = ask_to_delete(program, status)
    assert program.calls("MessageBoxW") == [f"MessageBoxW {0x04 | 0x30}"]
    question.control(ID_NO).click()
    question.wait_closed()


@pytest.mark.parametrize("command, title", [(IMPORT_BUTTON, IMPORT_TITLE), (DELETE_BUTTON, QUESTION_TITLE)])
def test_a_command_is_known_by_its_low_half(program, status, command, title):
    status.command(command | 1 << 16)
    dialog = program.wait_for_window(DIALOG_CLASS, title)
    dialog.close()


def test_answering_no_changes_nothing(program, data, status):
    data.add_mib("one.mib", mib("one", 9991))
    before = data.log_octets()
    question = ask_to_delete(program, status)
    question.control(ID_NO).click()
    question.wait_closed()
    program.settle()
    assert data.log_octets() == before
    assert (data.mibs / "one.mib").exists()


def test_deletion_takes_mib_files_and_leaves_other_files_and_folders(program, data, status):
    for name in ("a.MIB", "b.txt", "c.my", "d.xml"):
        data.add_mib(name, mib("x", 9991))
    (data.mibs / "folder").mkdir()
    (data.mibs / "folder" / "inside.mib").write_bytes(b"")
    (data.mibs / "folder.mib").mkdir()
    before = len(data.log_messages())
    delete_all(program, status)
    assert new_messages(data, before) == ["All MIB files deleted.", MAPPINGS + "0"]
    assert sorted(path.name for path in data.mibs.iterdir()) == ["d.xml", "folder", "folder.mib"]
    assert (data.mibs / "folder" / "inside.mib").exists()
    assert listed(status) == []
    assert counts(status) == "Loaded MIB files: 0  |  OID mappings: 0"


def test_deleting_from_an_empty_folder_still_logs(program, data, status):
    before = len(data.log_messages())
    delete_all(program, status)
    assert new_messages(data, before) == ["All MIB files deleted.", MAPPINGS + "0"]


def test_a_missing_folder_is_a_failed_deletion(program, data, status):
    data.mibs.rmdir()
    before = len(data.log_messages())
    delete_all(program, status)
    assert new_messages(data, before) == ["Delete MIBs failed.", MAPPINGS + "0"]


def test_a_file_that_cannot_be_removed_stops_the_deletion_there(program, data, status, driver):
    for number, name in enumerate(("a.mib", "b.mib", "c.mib")):
        data.add_mib(name, mib(name[0], 9990 + number))
    driver("hold_file", data.windows_path(data.mibs / "b.mib"))
    before = len(data.log_messages())
    try:
        delete_all(program, status)
        left = sorted(path.name for path in data.mibs.iterdir())
    finally:
        driver("release_files")
    messages = new_messages(data, before)
    assert messages[0] == "Delete MIBs failed."
    assert messages[1].startswith(MAPPINGS)
    # Wine lists a folder by name: what came before the held file is gone, the rest stays.
    assert left == ["b.mib", "c.mib"]


def test_the_status_window_goes_on_refreshing_behind_the_question(program, data, status):
    question = ask_to_delete(program, status)
    assert status.line("Last trap:").text == "Last trap:             (none)"
    send_raw(message(integer_binding(1)))
    data.wait_for_traps(1)
    wait_until(lambda: status.line("Last trap:").text.endswith("s ago)"), "a refresh behind the question")
    question.control(ID_NO).click()
    question.wait_closed()


def test_closing_the_main_window_over_an_open_question_ends_the_program_with_0(program, status):
    ask_to_delete(program, status)
    assert program.close() == 0


def test_the_status_window_closed_behind_the_question_leaves_a_working_program(program, data, status):
    data.add_mib("one.mib", mib("one", 9991))
    ask_to_delete(program, status)
    status.close()
    status.wait_closed()
    program.main.control(STATUS_BUTTON).click()
    again = program.wait_for_window(STATUS.class_name)
    assert listed(again) == ["one.mib"]
    assert program.close() == 0
