"""The status window: each of its lines in each of its states, and its list of MIB files."""

import re
import time

import pytest

from harness.data_folder import config
from harness.tool_windows import STATUS
from harness.traps import LISTENER_PORT, LOOPBACK, TRAP_PORT, hold_port, send_raw, udp_socket
from harness.waiting import wait_until
from harness.win32 import LB_ERR, LB_GETCURSEL, LB_GETTOPINDEX, LB_SETCURSEL, LB_SETTOPINDEX, WM_TIMER

SERVER, LISTENING, FORWARDING, LAST_TRAP = "Server:", "Listening:", "Forwarding:", "Last trap:"
PATHS, COUNTS = "Data dir:", "Loaded MIB files:"

RUNNING_LINE = "Server:                  RUNNING"
STOPPED_LINE = "Server:                  STOPPED"
LISTENING_LINE = "Listening:              UDP 162 (traps)"
WITH_161 = "  |  UDP 161 (snmp)"
NO_TRAP_LINE = "Last trap:             (none)"


# What the refresh must stay below by far.
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
    # A line that nobody fills would be an empty label.
    assert "" not in [facts.text for facts in window.children() if facts.__dict__["class"] == "Static"]
    assert window.only("ListBox").list_items() == []


def test_the_lines_keep_their_runs_of_blanks(program):
    window = STATUS.open(program)
    for beginning, count in {SERVER: 18, LISTENING: 14, FORWARDING: 10, PATHS: 14, LAST_TRAP: 13}.items():
        assert re.match(f"{beginning} {{{count}}}[^ ]", label(window, beginning))
    assert re.search(r"\r\nMIB dir: {15}[^ ]", label(window, PATHS))


def test_stopping_shows_stopped_and_takes_161_away(program):
    window = STATUS.open(program)
    program.stop()
    wait_for_label(window, SERVER, STOPPED_LINE)
    wait_for_label(window, LISTENING, LISTENING_LINE)
    program.start()
    wait_for_label(window, SERVER, RUNNING_LINE)
    wait_for_label(window, LISTENING, LISTENING_LINE + WITH_161)


def test_161_is_shown_while_running_even_when_its_bind_failed(data, start):
    with hold_port(LISTENER_PORT):
        program = start().wait_running()
        data.wait_for_log("Warning: bind failed on UDP 161 (SNMP). Continuing with 162 only.")
        window = STATUS.open(program)
        assert label(window, LISTENING) == LISTENING_LINE + WITH_161
        program.stop()
        wait_for_label(window, LISTENING, LISTENING_LINE)


def test_a_failed_start_is_shown_as_stopped(data, start):
    with hold_port(TRAP_PORT):
        program = start()
        data.wait_for_log("Bind failed on UDP 162 (Traps). Run as admin or free the port.")
        window = STATUS.open(program)
        assert label(window, SERVER) == STOPPED_LINE
        assert label(window, LISTENING) == LISTENING_LINE


@pytest.mark.parametrize(
    "enabled, ip, port, line",
    [
        (0, "10.1.2.3", 8162, "Forwarding:          OFF  ->  10.1.2.3:8162"),
        (1, "10.1.2.3", 65535, "Forwarding:          ON  ->  10.1.2.3:65535"),
        (1, "", 1, "Forwarding:          ON  ->  :1"),
    ],
    ids=["off", "on", "empty_address"],
)
def test_the_forwarding_line_shows_the_target_in_both_states(data, start, enabled, ip, port, line):
    data.write_config(config(enabled, ip, port))
    window = STATUS.open(start().wait_running())
    assert label(window, FORWARDING) == line


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
    # Refreshed about every second, so that no number is left out by much.
    assert len(set(seen)) >= 3


def test_a_later_trap_shows_its_own_port_and_starts_anew(program):
    window = STATUS.open(program)
    with udp_socket() as first, udp_socket() as second:
        first.sendto(b"", (LOOPBACK, TRAP_PORT))
        wait_until(lambda: (last_trap(window, first.getsockname()[1]) or 0) >= 2, "2s ago")
        sent = time.monotonic()
        second.sendto(b"", (LOOPBACK, TRAP_PORT))
        port = second.getsockname()[1]
        seconds = wait_until(
            lambda: [last_trap(window, port)] if last_trap(window, port) is not None else [], "it"
        )
        assert seconds[0] <= time.monotonic() - sent


def test_the_last_trap_of_an_earlier_run_stays_after_a_restart(program, data):
    with udp_socket() as udp:
        port = udp.getsockname()[1]
        udp.sendto(b"", (LOOPBACK, TRAP_PORT))
        data.wait_for_traps(1)
    program.stop()
    window = STATUS.open(program)
    assert last_trap(window, port) is not None
    program.start()
    wait_for_label(window, SERVER, RUNNING_LINE)
    assert last_trap(window, port) is not None


def test_a_datagram_on_161_is_no_last_trap(program, data):
    window = STATUS.open(program)
    data.wait_for_start()
    send_raw(b"", LISTENER_PORT)
    data.wait_for_log("Datagram on UDP 161 from 127.0.0.1.")
    program.attach_spy()
    wait_until(lambda: len(program.driver("spy_timers")) >= 2, "two refreshes")
    assert label(window, LAST_TRAP) == NO_TRAP_LINE


def test_the_list_holds_the_mib_files_sorted_by_code_unit_and_nothing_else(data, start):
    for name in ("b.txt", "Z.mib", "a.MIB", "c.my", ".mib", "d.xml", "e", "f.mib.bak"):
        data.add_mib(name, "")
    (data.mibs / "folder.mib").mkdir()
    window = STATUS.open(start().wait_running())
    assert window.only("ListBox").list_items() == [".mib", "Z.mib", "a.MIB", "b.txt", "c.my"]
    assert label(window, COUNTS) == counts_line(5, 0)


def test_files_are_listed_as_they_are_now_and_mappings_as_they_were_loaded(data, start):
    data.add_mib(
        "one.mib", "one OBJECT IDENTIFIER ::= { enterprises 1 }\ntwo OBJECT IDENTIFIER ::= { one 2 }\n"
    )
    window = STATUS.open(start().wait_running())
    assert label(window, COUNTS) == counts_line(1, 2)
    data.add_mib("other.mib", "three OBJECT IDENTIFIER ::= { enterprises 3 }\n")
    wait_for_label(window, COUNTS, counts_line(2, 2))
    assert window.only("ListBox").list_items() == ["one.mib", "other.mib"]
    (data.mibs / "one.mib").unlink()
    wait_for_label(window, COUNTS, counts_line(1, 2))
    assert window.only("ListBox").list_items() == ["other.mib"]


def test_a_missing_mibs_folder_gives_an_empty_list(program, data):
    data.mibs.rmdir()
    window = STATUS.open(program)
    assert label(window, COUNTS) == counts_line(0, 0)
    assert window.only("ListBox").list_items() == []


def test_a_refresh_takes_the_selection_and_goes_back_to_the_top(data, start):
    for number in range(100):
        data.add_mib(f"{number:03}.mib", "")
    window = STATUS.open(start().wait_running())
    files = window.only("ListBox")
    files.send(LB_SETCURSEL, 60)
    files.send(LB_SETTOPINDEX, 60)
    wait_until(lambda: files.send(LB_GETCURSEL) == LB_ERR, "the selection to be gone")
    assert files.send(LB_GETTOPINDEX) == 0


def test_only_its_own_timer_makes_the_window_look(program, data):
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


def test_the_list_is_refilled_unseen_and_erased_only_when_its_length_has_changed(program, data):
    program.attach_spy()
    window = STATUS.open(program)
    window.kill_timer(STATUS.timer)
    files = window.only("ListBox")

    def refill(*names):
        """What is asked of the list while it is filled with these names, which are added to the folder."""
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


def test_a_second_click_touches_nothing_in_the_window(data, start):
    for number in range(50):
        data.add_mib(f"{number:03}.mib", "")
    program = start().wait_running()
    window = STATUS.open(program)
    program.attach_spy()
    files = window.only("ListBox")

    def selection_outlives_click():
        """Between two refreshes, each of which takes the selection; True or False, None when one came between."""
        refreshes = len(program.driver("spy_timers"))
        wait_until(lambda: len(program.driver("spy_timers")) > refreshes, "a refresh")
        refreshes = len(program.driver("spy_timers"))
        files.send(LB_SETCURSEL, 20)
        program.main.control(STATUS.button).click()
        program.settle()
        selected = files.send(LB_GETCURSEL)
        return selected == 20 if len(program.driver("spy_timers")) == refreshes else None

    outcomes = wait_until(
        lambda: [x for x in [selection_outlives_click()] if x is not None], "a quiet moment"
    )
    assert outcomes == [True]
    assert program.find_windows(STATUS.class_name) == [window]


def test_with_3000_files_the_program_answers_far_within_the_period(data, start):
    data.mibs.mkdir(parents=True)
    for number in range(3000):
        (data.mibs / f"VENDOR-PRODUCT-{number:04}-MIB.txt").touch()
    program = start().wait_running()
    window = STATUS.open(program)
    assert label(window, COUNTS) == counts_line(3000, 0)
    # At least one refresh falls into each of the measurements; the quietest is the program's own.
    longest = min(program.driver("longest_answer", window.handle, 2 * PERIOD_MILLISECONDS) for _ in range(4))
    print(f"One refresh with 3,000 files held the program up for {longest / 1000:.1f} ms.")
    assert longest < PERIOD_MILLISECONDS * 1000 / 2
    assert len(window.only("ListBox").list_items()) == 3000
