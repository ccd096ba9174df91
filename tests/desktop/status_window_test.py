"""The status window: its lines in their states, and its list of MIB files."""

import re
import time

from harness.data_folder import config
from harness.tool_windows import STATUS
from harness.traps import LOOPBACK, TRAP_PORT, occupy_port, udp_socket
from harness.waiting import wait_until
from harness.win32 import LB_ERR, LB_GETCURSEL, LB_GETTOPINDEX, LB_SETCURSEL, LB_SETTOPINDEX, WM_TIMER

SERVER, LISTENING, FORWARDING, LAST_TRAP = "Server:", "Listening:", "Forwarding:", "Last trap:"
PATHS, COUNTS = "Data dir:", "Loaded MIB files:"

RUNNING_LINE = "Server:                  RUNNING"
STOPPED_LINE = "Server:                  STOPPED"
LISTENING_LINE = "Listening:              UDP 162 (traps)"
WITH_161 = "  |  UDP 161 (snmp)"
NO_TRAP_LINE = "Last trap:             (none)"

PERIOD_MILLISECONDS = 700


def label(window, beginning):
    return window.line(beginning).text


def wait_for_label(window, beginning, text):
    window.line(beginning).wait_text(text)


def counts_line(files, mappings):
    return f"Loaded MIB files: {files}  |  OID mappings: {mappings}"


def test_the_window_opens_with_every_line_filled(program, data):
    window = STATUS.open(program)
    assert label(window, SERVER) == RUNNING_LINE
    assert label(window, LISTENING) == LISTENING_LINE + WITH_161
    assert label(window, FORWARDING) == "Forwarding:          OFF  ->  127.0.0.1:162"
    assert label(window, LAST_TRAP) == NO_TRAP_LINE
    folders = data.windows_path()
    assert label(window, PATHS) == f"Data dir:              {folders}\r\nMIB dir:               {folders}\\mibs"
    assert label(window, COUNTS) == counts_line(0, 0)
    # A line without a text would be an empty label.
    assert "" not in [facts.text for facts in window.children() if facts.__dict__["class"] == "Static"]
    assert window.child("ListBox").list_items() == []


def test_stopping_shows_stopped_and_removes_161(program):
    window = STATUS.open(program)
    program.stop()
    wait_for_label(window, SERVER, STOPPED_LINE)
    wait_for_label(window, LISTENING, LISTENING_LINE)
    program.start()
    wait_for_label(window, SERVER, RUNNING_LINE)
    wait_for_label(window, LISTENING, LISTENING_LINE + WITH_161)


def test_a_failed_start_is_shown_as_stopped(data, start):
    with occupy_port(TRAP_PORT):
        program = start()
        data.wait_for_log("Bind failed on UDP 162 (Traps). Run as admin or free the port.")
        window = STATUS.open(program)
        assert label(window, SERVER) == STOPPED_LINE
        assert label(window, LISTENING) == LISTENING_LINE


def test_the_forwarding_line_shows_the_target_while_on(data, start):
    data.write_config(config(1, "10.1.2.3", 65535))
    window = STATUS.open(start().wait_running())
    assert label(window, FORWARDING) == "Forwarding:          ON  ->  10.1.2.3:65535"


def last_trap(window, port):
    """The seconds that the last-trap line shows for a trap from this port, or None when it shows none."""
    seen = re.fullmatch(rf"Last trap: {{13}}127\.0\.0\.1:{port}  \((\d+)s ago\)", label(window, LAST_TRAP))
    return int(seen[1]) if seen else None


def test_the_last_trap_line_shows_the_sender_with_its_port_and_counts_the_seconds(program):
    window = STATUS.open(program)
    assert label(window, LAST_TRAP) == NO_TRAP_LINE
    with udp_socket() as udp:
        port = udp.getsockname()[1]
        sent = time.monotonic()
        udp.sendto(b"", (LOOPBACK, TRAP_PORT))
        seen = []

        def counts_to_3():
            if label(window, LAST_TRAP) != NO_TRAP_LINE:
                seen.append(last_trap(window, port))
                assert seen[-1] <= time.monotonic() - sent
            return seen and seen[-1] >= 3

        wait_until(counts_to_3, lambda: f"3s ago, seen {seen!r}")
    assert seen == sorted(seen)
    # The window refreshes more than once a second, so it skips hardly any number.
    assert len(set(seen)) >= 3


def test_the_list_shows_the_current_files_and_the_count_the_loaded_mappings(data, start):
    data.add_mib(
        "one.mib", "one OBJECT IDENTIFIER ::= { enterprises 1 }\ntwo OBJECT IDENTIFIER ::= { one 2 }\n"
    )
    window = STATUS.open(start().wait_running())
    assert label(window, COUNTS) == counts_line(1, 2)
    data.add_mib("other.mib", "three OBJECT IDENTIFIER ::= { enterprises 3 }\n")
    wait_for_label(window, COUNTS, counts_line(2, 2))
    assert window.child("ListBox").list_items() == ["one.mib", "other.mib"]
    (data.mibs / "one.mib").unlink()
    wait_for_label(window, COUNTS, counts_line(1, 2))
    assert window.child("ListBox").list_items() == ["other.mib"]


def test_a_refresh_clears_the_selection_and_scrolls_to_the_top(data, start):
    for number in range(100):
        data.add_mib(f"{number:03}.mib", "")
    window = STATUS.open(start().wait_running())
    files = window.child("ListBox")
    files.send(LB_SETCURSEL, 60)
    files.send(LB_SETTOPINDEX, 60)
    wait_until(lambda: files.send(LB_GETCURSEL) == LB_ERR, "the selection to be gone")
    assert files.send(LB_GETTOPINDEX) == 0


def test_only_its_own_timer_refreshes_the_window(program, data):
    program.attach_spy()
    window = STATUS.open(program)
    window.kill_timer(STATUS.timer)
    data.add_mib("one.mib", "")
    for number in (1, 1001, 1002, 1004):
        assert window.send(WM_TIMER, number) == 0
    assert label(window, COUNTS) == counts_line(0, 0)
    assert window.send(WM_TIMER, STATUS.timer) == 0
    assert label(window, COUNTS) == counts_line(1, 0)


LIST_CALLS = ("WM_SETREDRAW", "LB_RESETCONTENT", "InvalidateRect")


def test_the_list_is_refilled_without_flicker_and_erased_only_if_its_length_has_changed(program, data):
    program.attach_spy()
    window = STATUS.open(program)
    window.kill_timer(STATUS.timer)
    files = window.child("ListBox")

    def refill(*names):
        """Adds these names to the folder and refreshes. Returns the calls that changed the list."""
        for name in names:
            data.add_mib(name, "")
        before = len(program.driver("spy_calls"))
        window.send(WM_TIMER, STATUS.timer)
        calls = [call.split() for call in program.driver("spy_calls")[before:]]
        return [(name, *rest) for name, handle, *rest in calls if name in LIST_CALLS and handle == str(files.handle)]

    def expected(erase):
        return [
            ("WM_SETREDRAW", "0"),
            ("LB_RESETCONTENT",),
            ("WM_SETREDRAW", "1"),
            ("InvalidateRect", "whole", str(erase)),
        ]

    assert refill("one.mib", "three.mib") == expected(1)
    assert refill() == expected(0)
    (data.mibs / "one.mib").unlink()
    assert refill("other.mib") == expected(0)
    assert files.list_items() == ["other.mib", "three.mib"]
    assert refill("two.mib") == expected(1)


def test_a_second_click_changes_nothing_in_the_window(data, start):
    for number in range(50):
        data.add_mib(f"{number:03}.mib", "")
    program = start().wait_running()
    window = STATUS.open(program)
    program.attach_spy()
    files = window.child("ListBox")

    def selection_after_click():
        """The selection after a click, or None if a refresh, which clears it, came in between."""
        refreshes = len(program.driver("spy_timers"))
        wait_until(lambda: len(program.driver("spy_timers")) > refreshes, "a refresh")
        refreshes = len(program.driver("spy_timers"))
        files.send(LB_SETCURSEL, 20)
        program.main.control(STATUS.button).click()
        program.settle()
        selection = files.send(LB_GETCURSEL)
        return selection if len(program.driver("spy_timers")) == refreshes else None

    assert wait_until(selection_after_click, "a click between two refreshes") == 20
    assert program.find_windows(STATUS.class_name) == [window]


def test_with_3000_files_a_refresh_takes_less_than_half_the_period(data, start):
    data.mibs.mkdir(parents=True)
    for number in range(3000):
        (data.mibs / f"VENDOR-PRODUCT-{number:04}-MIB.txt").touch()
    program = start().wait_running()
    window = STATUS.open(program)
    assert label(window, COUNTS) == counts_line(3000, 0)
    # Each measurement includes at least one refresh; the shortest is the least disturbed by other programs.
    longest = min(program.driver("longest_response", window.handle, 2 * PERIOD_MILLISECONDS) for _ in range(4))
    print(f"One refresh with 3,000 files blocked the program for {longest / 1000:.1f} ms.")
    assert longest < PERIOD_MILLISECONDS * 1000 / 2
    assert len(window.child("ListBox").list_items()) == 3000
