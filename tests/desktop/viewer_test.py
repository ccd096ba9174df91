"""The trap monitor and the log viewer: opening and following their file, and files that are hard to show."""

import time

from harness.data_folder import LINE_END, mask_stamps, record
from harness.tool_windows import LOG, MONITOR
from harness.traps import LOOPBACK, TRAP_PORT, integer_binding, integer_line, message, send_raw, udp_socket
from harness.views import (
    append,
    as_read_at_opening,
    as_read_later,
    check_view_follows,
    each_viewer,
    file_of,
    view_of,
    wait_for_view,
)
from harness.waiting import DEFAULT_SECONDS, wait_until
from harness.win32 import EM_CANUNDO, WM_TIMER

# The default limit of an edit control's text.
DEFAULT_LIMIT = 30000


@each_viewer
def test_the_view_opens_with_the_whole_file_at_its_top(data, start, viewer):
    data.folder.mkdir(parents=True)
    old = b"".join(b"line %d" % number + LINE_END for number in range(200))
    file_of(data, viewer).write_bytes(old)
    program = start().wait_running()
    data.wait_for_start()
    view = view_of(viewer.open(program))
    assert view.text == as_read_at_opening(file_of(data, viewer).read_bytes())
    assert view.text.startswith("line 0\r\nline 1\r\n")
    assert view.edit.firstVisibleLine == 0
    assert view.edit.selection == [0, 0]


def test_a_missing_trap_file_opens_an_empty_view(program, data):
    data.traps.unlink()
    view = view_of(MONITOR.open(program))
    assert view.text == ""
    send_raw(message(integer_binding(1)))
    data.wait_for_traps(1)
    wait_for_view(view, as_read_later(data.trap_octets()))


def test_the_view_cannot_be_typed_into(program):
    view = view_of(MONITOR.open(program))
    view.type_text("abc")
    assert view.text == ""


def test_a_new_trap_appears_at_the_end_of_the_view(program, data):
    send_raw(message(integer_binding(1)))
    data.wait_for_traps(1)
    first = data.trap_octets()
    view = view_of(MONITOR.open(program))
    assert view.text == as_read_at_opening(first)
    send_raw(message(integer_binding(2)))
    data.wait_for_traps(2)
    wait_for_view(view, as_read_at_opening(first) + as_read_later(data.trap_octets()[len(first) :]))
    length = view.edit.length
    assert view.edit.selection == [length, length]


def test_a_new_line_appears_at_the_end_of_the_log_view(program, data):
    data.wait_for_start()
    first = data.log_octets()
    view = view_of(LOG.open(program))
    send_raw(b"")
    data.wait_for_traps(1)
    wait_for_view(view, as_read_at_opening(first) + as_read_later(data.log_octets()[len(first) :]))


def is_at_end(view):
    """Whether the last line is visible: no more lines follow the first visible one than fit into the view."""
    edit = view.edit
    return edit.firstVisibleLine > 0 and edit.lines - edit.firstVisibleLine <= 460 // 12


def test_a_burst_of_400_traps_is_followed_to_the_end(program, data):
    view = view_of(MONITOR.open(program))
    with udp_socket() as udp:
        for number in range(400):
            udp.sendto(message(integer_binding(number)), (LOOPBACK, TRAP_PORT))
            if number % 100 == 99:  # 100 traps fit into the smallest receive buffer
                data.wait_for_traps(number + 1)
    text = as_read_later(data.trap_octets())
    wait_until(lambda: view.text.endswith(text[-300:]), "the last record in the view")
    check_view_follows(view.text, text)
    assert is_at_end(view)
    assert view.edit.selection == [view.edit.length] * 2
    assert mask_stamps(data.trap_octets()) == b"".join(record(integer_line(number)) for number in range(400))


@each_viewer
def test_a_file_far_beyond_the_default_limit_is_shown_whole_and_followed(data, start, viewer):
    data.folder.mkdir(parents=True)
    path = file_of(data, viewer)
    path.write_bytes(b"".join(b"old line %06d" % number + LINE_END for number in range(10000)))
    program = start().wait_running()
    data.wait_for_start()
    view = view_of(viewer.open(program))
    shown = as_read_at_opening(path.read_bytes())
    assert len(shown) > 4 * DEFAULT_LIMIT
    assert view.text == shown
    more = b"".join(b"new line %06d" % number + LINE_END for number in range(5000))
    append(path, more)
    wait_for_view(view, shown + as_read_later(more))
    assert is_at_end(view)


@each_viewer
def test_octets_above_7f_are_decoded_differently_at_opening_and_later(data, start, viewer):
    data.folder.mkdir(parents=True)
    path = file_of(data, viewer)
    utf8 = "Gr\u00fc\u00dfe \u4e2d\n".encode()
    ansi = b"\xe9 \x80 \x81 \xff\n"
    path.write_bytes(utf8 + ansi)
    program = start().wait_running()
    assert program.driver("ansi_code_page") == 1252
    data.wait_for_start()
    view = view_of(viewer.open(program))
    text = as_read_at_opening(path.read_bytes())
    assert text.startswith("Gr\u00c3\u00bc\u00c3\u009fe \u00e4\u00b8\u00ad\n\u00e9 \u0080 \u0081 \u00ff\n")
    assert view.text == text
    append(path, utf8)
    wait_for_view(view, text + "Gr\u00fc\u00dfe \u4e2d\n")
    append(path, ansi)
    wait_for_view(view, text + "Gr\u00fc\u00dfe \u4e2d\n\u00e9 \u20ac \u0081 \u00ff\n")


# As long as the longest line that one datagram can make.
LONG_LINE = ("1.3.6.1.4.1." + "".join(f"{number % 300}." for number in range(80000)))[:260000].encode() + LINE_END


def in_parts(line):
    """How the view shows a line of more than 1,000 characters: in lines of 100."""
    parts = [line[start : start + 100] for start in range(0, len(line.rstrip()), 100)]
    return "\r\n".join(parts) + line[len(line.rstrip()) :]


def test_a_line_of_260000_digits_is_shown_in_parts_within_seconds(program, data):
    """In one piece, the line would block the edit control for minutes."""
    data.traps.write_bytes(b"before\r\r\n" + LONG_LINE + b"after\r\r\n")
    started = time.monotonic()
    view = view_of(MONITOR.open(program))
    program.settle()
    opened = time.monotonic()
    text = "before\r\n" + in_parts(as_read_at_opening(LONG_LINE)) + "after\r\n"
    assert view.text == text
    append(data.traps, LONG_LINE)
    wait_for_view(view, text + in_parts(as_read_later(LONG_LINE)))
    shown = time.monotonic()
    print(f"\nOpened in {opened - started:.2f} s, a second line shown in {shown - opened:.2f} s.")
    assert max(opened - started, shown - opened) < DEFAULT_SECONDS


def too_large(octets):
    return f"This file is too large to be shown ({octets} bytes); only what is added to it will appear below.\r\n"


GIBIBYTE = 1 << 30


def test_a_file_too_large_for_the_view_is_replaced_by_its_size_and_followed(program, data):
    with data.traps.open("ab") as file:
        file.truncate(GIBIBYTE)
    window = MONITOR.open(program)
    view = view_of(window)
    assert view.text == too_large(GIBIBYTE)
    append(data.traps, b"added\n")
    wait_for_view(view, too_large(GIBIBYTE) + "added\n")
    # The file grows by another gibibyte between two polls.
    with data.traps.open("ab") as file:
        file.truncate(2 * GIBIBYTE + 6)
    wait_for_view(view, too_large(2 * GIBIBYTE + 6))
    window.control(MONITOR.controls[1][-1]).click()
    data.wait_for_log("SNMP.txt cleared.")
    program.settle()
    assert view.text == ""


def open_then_append(program, data, viewer):
    """Opens a viewer, stops its timer, and appends a line to its file. Returns the window and its text."""
    data.wait_for_start()
    program.attach_spy()
    window = viewer.open(program)
    window.kill_timer(viewer.timer)
    before = view_of(window).text
    append(file_of(data, viewer), b"new\n")
    return window, before


@each_viewer
def test_only_its_own_timer_refreshes_a_viewer(program, data, viewer):
    window, before = open_then_append(program, data, viewer)
    for number in (1, 1000, 1001, 1002, 1003):
        if number != viewer.timer:
            assert window.send(WM_TIMER, number) == 0
    assert view_of(window).text == before
    assert window.send(WM_TIMER, viewer.timer) == 0
    assert view_of(window).text == before + "new\n"


@each_viewer
def test_a_second_click_does_not_reload_the_file(program, data, viewer):
    window, before = open_then_append(program, data, viewer)
    program.main.control(viewer.button).click()
    program.settle()
    assert view_of(window).text == before
    assert window.send(WM_TIMER, viewer.timer) == 0
    assert view_of(window).text == before + "new\n"


def test_text_written_between_the_size_query_and_the_read_is_shown_twice(program, data):
    data.traps.write_bytes(b"old\n")
    program.attach_spy()
    program.append_before_next_read(data.windows_path(data.traps), "first ")
    window = MONITOR.open(program)
    window.kill_timer(MONITOR.timer)
    shown = "old\nfirst "
    assert view_of(window).text in (shown, shown + "first ")
    window.send(WM_TIMER, MONITOR.timer)
    shown += "first "
    assert view_of(window).text == shown
    append(data.traps, b"second ")
    program.append_before_next_read(data.windows_path(data.traps), "third ")
    window.send(WM_TIMER, MONITOR.timer)
    shown += "second third "
    assert view_of(window).text == shown
    window.send(WM_TIMER, MONITOR.timer)
    assert view_of(window).text == shown + "third "


def test_appended_text_cannot_be_undone(program, data):
    view = view_of(MONITOR.open(program))
    append(data.traps, b"new\n")
    wait_for_view(view, "new\n")
    assert view.send(EM_CANUNDO) == 0


def test_reopening_shows_the_traps_received_meanwhile(program, data):
    window = MONITOR.open(program)
    window.close()
    window.wait_closed()
    send_raw(message(integer_binding(1)))
    data.wait_for_traps(1)
    assert view_of(MONITOR.open(program)).text == as_read_at_opening(data.trap_octets())
