"""The system's file dialog as the program shows it, and events while it is open."""

import pytest

from harness.mib_dialogs import IMPORT_TITLE, QUESTION_TITLE, FileDialog, import_files, listed, mib
from harness.tool_windows import DELETE_BUTTON, IMPORT_BUTTON, STATUS
from harness.traps import integer_binding, message, send_raw
from harness.waiting import wait_until
from harness.win32 import CB_GETCURSEL, DIALOG_CLASS


def test_the_dialog_has_its_title_its_filters_and_the_status_window_as_owner(program, status):
    dialog = FileDialog(program, status)
    assert dialog.window.facts.text == IMPORT_TITLE
    assert dialog.window.facts.owner == status.handle
    assert program.driver("combo_items", dialog.filter.handle) == ["MIB files (*.mib;*.txt)", "All files"]
    assert dialog.filter.send(CB_GETCURSEL) == 0
    dialog.cancel()


@pytest.mark.parametrize("leave", ["choose", "cancel"])
def test_the_dialog_does_not_change_the_current_folder(program, status, samples, leave):
    program.attach_spy()
    before = program.driver("spy_folder", program.main.handle)["currentFolder"]
    dialog = FileDialog(program, status)
    if leave == "choose":
        dialog.choose(samples.add("one.mib", mib("one", 9991)))
    else:
        dialog.go_to(samples.windows_folder)
        dialog.cancel()
    program.settle()
    assert program.driver("spy_folder", program.main.handle)["currentFolder"] == before
    assert before != samples.windows_folder


def test_the_dialog_is_opened_with_exactly_these_parameters(program, status):
    program.attach_spy()
    FileDialog(program, status).cancel()
    flags = 0x00080000 | 0x00000200 | 0x00001000  # OFN_EXPLORER | OFN_ALLOWMULTISELECT | OFN_FILEMUSTEXIST
    filters = "MIB files (*.mib;*.txt)|*.mib;*.txt;*.my|All files|*.*|"
    assert program.calls("GetOpenFileNameW") == [
        f"GetOpenFileNameW filter={filters} index=1 capacity=8192 flags={flags} flagsEx=0 sizeIsRight=1"
        " file= folder=none extension=none"
    ]


def test_the_status_window_is_refreshed_while_the_dialog_is_open(program, data, status):
    dialog = FileDialog(program, status)
    assert status.line("Last trap:").text == "Last trap:             (none)"
    send_raw(message(integer_binding(1)))
    data.wait_for_traps(1)
    wait_until(lambda: status.line("Last trap:").text.endswith("s ago)"), "a refresh while the dialog is open")
    dialog.cancel()


def test_closing_the_main_window_while_the_dialog_is_open_exits_with_0(program, data, status):
    FileDialog(program, status)
    assert program.close() == 0
    assert data.log_messages()[-1] == "Config saved."
    assert list(data.mibs.iterdir()) == []


def test_the_program_works_after_the_status_window_is_closed_during_the_dialog(program, data, status, samples):
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
    warning = wait_until(
        lambda: [w for w in program.find_windows(DIALOG_CLASS) if w != dialog.window],
        "the message that the file is missing",
    )[0]
    warning.close()
    warning.wait_closed()
    dialog.cancel()
    program.settle()
    assert data.log_octets() == before


def test_a_selection_larger_than_the_buffer_does_not_crash(program, data, status, samples):
    names = [f"{number:03}-{'x' * 90}.mib" for number in range(100)]
    for name in names:
        samples.add(name, b"")
    dialog = FileDialog(program, status)
    dialog.choose(samples.windows_folder, *names)
    program.settle()
    # Windows refuses such a selection; Wine ignores the size of the buffer and reports success.
    imported = len(list(data.mibs.iterdir()))
    print(f"{imported} of {len(names)} files were imported; Windows would import none")
    assert imported in (0, len(names))
    assert program.close() == 0


@pytest.mark.parametrize("command, title", [(IMPORT_BUTTON, IMPORT_TITLE), (DELETE_BUTTON, QUESTION_TITLE)])
def test_only_the_low_half_of_a_command_counts(program, status, command, title):
    status.command(command | 1 << 16)
    dialog = program.wait_for_window(DIALOG_CLASS, title)
    dialog.close()
