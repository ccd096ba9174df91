"""Deleting the MIB files: the question, its answers, and the files that remain."""

from harness.mib_dialogs import (
    MAPPINGS,
    QUESTION_TITLE,
    ask_to_delete,
    counts,
    delete_all,
    listed,
    mib,
    new_messages,
)
from harness.tool_windows import STATUS
from harness.traps import integer_binding, message, send_raw
from harness.waiting import wait_until
from harness.win32 import ID_NO, ID_YES, PROTECTING

QUESTION = "Alle MIB Dateien im MIB-Ordner l\u00c3\u00b6schen?"


def test_a_protected_mib_file_is_deleted_like_any_other(program, data, status, driver):
    for name in ("a.mib", "b.mib"):
        data.add_mib(name, mib(name[0], 9991))
    assert driver("set_attributes", data.windows_path(data.mibs / "a.mib"), PROTECTING)
    before = len(data.log_messages())
    delete_all(program, status)
    assert new_messages(data, before) == ["All MIB files deleted.", MAPPINGS + "0"]
    assert list(data.mibs.iterdir()) == []


def test_the_question_has_its_exact_text_two_buttons_and_the_status_window_as_owner(program, status):
    question = ask_to_delete(program, status)
    assert question.facts.text == QUESTION_TITLE
    assert question.facts.owner == status.handle
    children = [facts for facts in question.children() if facts.visible]
    assert [facts.id for facts in children if facts.__dict__["class"] == "Button"] == [ID_YES, ID_NO]
    texts = [facts.text for facts in children if facts.__dict__["class"] == "Static"]
    assert QUESTION in texts
    # The other one is the icon.
    assert len(texts) == 2
    question.control(ID_NO).click()
    question.wait_closed()


def test_the_question_warns_and_asks_yes_or_no_with_yes_as_its_default(program, status):
    program.attach_spy()
    question = ask_to_delete(program, status)
    assert program.calls("MessageBoxW") == [f"MessageBoxW {0x04 | 0x30}"]  # MB_YESNO | MB_ICONWARNING
    question.control(ID_NO).click()
    question.wait_closed()


def test_answering_no_changes_nothing(program, data, status):
    data.add_mib("one.mib", mib("one", 9991))
    before = data.log_octets()
    question = ask_to_delete(program, status)
    question.control(ID_NO).click()
    question.wait_closed()
    program.settle()
    assert data.log_octets() == before
    assert (data.mibs / "one.mib").exists()


def test_only_mib_files_are_deleted_and_no_folders(program, data, status):
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


def test_deleting_from_an_empty_folder_is_logged_too(program, data, status):
    before = len(data.log_messages())
    delete_all(program, status)
    assert new_messages(data, before) == ["All MIB files deleted.", MAPPINGS + "0"]


def test_without_the_mibs_folder_the_deletion_fails(program, data, status):
    data.mibs.rmdir()
    before = len(data.log_messages())
    delete_all(program, status)
    assert new_messages(data, before) == ["Delete MIBs failed.", MAPPINGS + "0"]


def test_the_deletion_stops_at_a_file_that_cannot_be_removed(program, data, status, driver):
    for number, name in enumerate(("a.mib", "b.mib", "c.mib")):
        data.add_mib(name, mib(name[0], 9990 + number))
    driver("lock_file", data.windows_path(data.mibs / "b.mib"))
    before = len(data.log_messages())
    try:
        delete_all(program, status)
        left = sorted(path.name for path in data.mibs.iterdir())
    finally:
        driver("release_files")
    messages = new_messages(data, before)
    assert messages[0] == "Delete MIBs failed."
    assert messages[1].startswith(MAPPINGS)
    # Wine lists a folder by name: the files before the locked one are deleted, the others are not.
    assert left == ["b.mib", "c.mib"]


def test_the_status_window_is_refreshed_while_the_question_is_open(program, data, status):
    question = ask_to_delete(program, status)
    assert status.line("Last trap:").text == "Last trap:             (none)"
    send_raw(message(integer_binding(1)))
    data.wait_for_traps(1)
    wait_until(lambda: status.line("Last trap:").text.endswith("s ago)"), "a refresh while the question is open")
    question.control(ID_NO).click()
    question.wait_closed()


def test_closing_the_main_window_while_the_question_is_open_exits_with_0(program, status):
    ask_to_delete(program, status)
    assert program.close() == 0


def test_the_program_works_after_the_status_window_is_closed_during_the_question(program, data, status):
    data.add_mib("one.mib", mib("one", 9991))
    ask_to_delete(program, status)
    status.close()
    status.wait_closed()
    assert listed(STATUS.open(program)) == ["one.mib"]
    assert program.close() == 0
