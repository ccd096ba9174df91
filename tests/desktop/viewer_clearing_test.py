"""The trap monitor and the log viewer when their file is cleared, replaced or deleted."""

import threading

from harness.data_folder import LINE_END, record
from harness.tool_windows import LOG, MONITOR
from harness.traps import LOOPBACK, TRAP_PORT, integer_binding, integer_line, message, send_raw, udp_socket
from harness.views import (
    append,
    as_read_later,
    check_view_follows,
    each_viewer,
    file_of,
    view_of,
    wait_for_view,
)
from harness.waiting import DEFAULT_SECONDS, stays_true, wait_until


def test_clearing_creates_a_missing_file(program, data):
    window = MONITOR.open(program)
    data.traps.unlink()
    window.control(300).click()
    data.wait_for_log("SNMP.txt cleared.")
    assert data.traps.read_bytes() == b""


@each_viewer
def test_only_the_low_half_of_the_clear_command_counts(program, data, viewer):
    window = viewer.open(program)
    command = viewer.controls[1][-1]
    window.command(command | 1 << 16)
    data.wait_for_log(f"{file_of(data, viewer).name} cleared.")


def test_clearing_traps_empties_view_and_file_and_logs_it(program, data):
    send_raw(message(integer_binding(1)))
    data.wait_for_traps(1)
    window = MONITOR.open(program)
    assert view_of(window).text != ""
    window.control(300).click()
    data.wait_for_log("SNMP.txt cleared.")
    program.settle()
    assert view_of(window).text == ""
    assert data.trap_octets() == b""
    assert data.log_messages()[-1] == "SNMP.txt cleared."
    send_raw(message(integer_binding(2)))
    data.wait_for_traps(2)
    wait_for_view(view_of(window), as_read_later(data.trap_octets()))
    assert data.masked_traps() == record(integer_line(2))


def test_clearing_the_log_leaves_exactly_the_one_line(program, data):
    data.wait_for_start()
    window = LOG.open(program)
    window.control(400).click()
    wait_until(lambda: data.log_messages() == ["log.txt cleared."], "the one line in the log")
    wait_for_view(view_of(window), as_read_later(data.log_octets()))
    assert view_of(window).text.endswith("  log.txt cleared.\r\r\n")
    assert stays_true(lambda: view_of(window).text.count("cleared") == 1, 1)


def test_clearing_a_file_that_cannot_be_opened_still_empties_the_view_and_is_logged(program, data):
    send_raw(message(integer_binding(1)))
    data.wait_for_traps(1)
    window = MONITOR.open(program)
    program.driver("lock_file", data.windows_path(data.traps))
    try:
        window.control(300).click()
        data.wait_for_log("SNMP.txt cleared.")
        program.settle()
        # The next polls cannot read the file either.
        assert stays_true(lambda: view_of(window).text == "", 1)
        assert data.trap_octets() != b""
    finally:
        program.driver("release_files")


def test_clearing_in_a_flood_loses_no_record_written_after_the_last_clear(program, data):
    window = MONITOR.open(program)
    clears = 30
    last = 99999
    sent_traps = []
    sent = threading.Event()
    enough = threading.Event()

    def flood():
        with udp_socket() as udp:
            while not enough.is_set() and len(sent_traps) < 20000:
                udp.sendto(message(integer_binding(len(sent_traps))), (LOOPBACK, TRAP_PORT))
                sent_traps.append(True)
                sent.set()
                enough.wait(0.002)

    sender = threading.Thread(target=flood)
    sender.start()
    try:
        assert sent.wait(DEFAULT_SECONDS)
        for count in range(1, clears + 1):
            window.control(300).click()
            data.wait_for_log("SNMP.txt cleared.", count)
    finally:
        enough.set()
        sender.join()
    # One more trap after all others.
    send_raw(message(integer_binding(last)))
    wait_until(lambda: integer_line(last).encode() in data.trap_octets(), "the last record in the file")
    wait_until(lambda: integer_line(last) in view_of(window).text, "the last record in the view")
    octets = data.trap_octets()
    check_view_follows(view_of(window).text, as_read_later(octets))
    # No record is missing after the first one that follows the last clear.
    numbers = [int(line.rsplit(b" ", 1)[1]) for line in octets.split(LINE_END) if b"INTEGER" in line]
    assert numbers == [*range(numbers[0], len(sent_traps)), last]
    assert program.runs


def test_deleting_the_file_empties_the_view_and_a_new_file_is_shown_from_its_start(program, data):
    data.traps.write_bytes(b"old\r\n")
    view = view_of(MONITOR.open(program))
    assert view.text == "old\n"
    data.traps.unlink()
    wait_for_view(view, "")
    data.traps.write_bytes(b"a new and longer file\r\n")
    wait_for_view(view, "a new and longer file\r\n")


def replace(path, octets):
    part = path.with_suffix(".part")
    part.write_bytes(octets)
    part.replace(path)


def test_a_shorter_file_empties_the_view_and_only_additions_are_shown(program, data):
    data.traps.write_bytes(b"a long first file\r\n")
    view = view_of(MONITOR.open(program))
    replace(data.traps, b"short\r\n")
    wait_for_view(view, "")
    assert stays_true(lambda: view.text == "", 1)
    append(data.traps, b"added\r\n")
    wait_for_view(view, "added\r\n")


def test_a_longer_file_is_shown_from_where_the_old_one_ended(program, data):
    data.traps.write_bytes(b"12345")
    view = view_of(MONITOR.open(program))
    replace(data.traps, b"abcdefgh")
    wait_for_view(view, "12345fgh")


def test_a_file_of_the_same_size_is_not_read_again(program, data):
    data.traps.write_bytes(b"12345")
    view = view_of(MONITOR.open(program))
    replace(data.traps, b"abcde")
    assert stays_true(lambda: view.text == "12345", 1)
