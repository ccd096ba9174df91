"""The forwarding window: what it shows, what Save stores, and that closing it otherwise changes nothing."""

import pytest

from harness.data_folder import LINE_END, config
from harness.tool_windows import FORWARDING
from harness.traps import LOOPBACK, integer_binding, message, send_raw, udp_socket
from harness.win32 import BM_SETCHECK, VK_ESCAPE, VK_RETURN, VK_TAB, WM_KEYDOWN

SAVE = 200
CANCEL = 201
CHECK, IP, PORT = "Forwarding enabled:", "Forward IP:", "Forward Port:"

UPDATED = "Forwarding updated."
SAVED = "Config saved."


def values(window):
    return window.field(CHECK).checked, window.field(IP).text, window.field(PORT).text


def type_into(field, text):
    """Replaces the field's text by typing."""
    field.set_text("")
    field.type_text(text)
    assert field.text == text


def save(window):
    window.control(SAVE).click()
    window.wait_closed()


def open_and_save(program, check=None, ip=None, port=None):
    """Types the given values, leaves the others unchanged, and saves."""
    window = FORWARDING.open(program)
    if check is not None:
        window.field(CHECK).send(BM_SETCHECK, check)
    if ip is not None:
        type_into(window.field(IP), ip)
    if port is not None:
        type_into(window.field(PORT), port)
    save(window)


@pytest.mark.parametrize("enabled, ip, port", [(0, "127.0.0.1", 162), (1, "10.1.2.3", 65535), (1, "", 1)])
def test_the_window_shows_the_settings(data, start, enabled, ip, port):
    data.write_config(config(enabled, ip, port))
    window = FORWARDING.open(start().wait_running())
    assert values(window) == (bool(enabled), ip, str(port))


def test_a_click_toggles_the_check_box(program):
    window = FORWARDING.open(program)
    for expected in (True, False):
        window.field(CHECK).click()
        program.settle()
        assert window.field(CHECK).checked == expected


def test_saving_writes_the_file_logs_and_closes(program, data):
    data.wait_for_start()
    before = len(data.log_messages())
    open_and_save(program, 1, "10.20.30.40", "8162")
    assert data.config.read_bytes() == config(1, "10.20.30.40", 8162)
    assert data.log_messages()[before:] == [SAVED, UPDATED]
    assert values(FORWARDING.open(program)) == (True, "10.20.30.40", "8162")


PORTS = {
    "zero": ("0", 162),
    "65536": ("65536", 162),
    "empty": ("", 162),
    "65535": ("65535", 65535),
    "blank_999_letter": (" 999x", 999),
    "only_62_characters_are_read": (" " * 60 + "1234", 12),
}


@pytest.mark.parametrize("typed, saved", PORTS.values(), ids=PORTS.keys())
def test_a_typed_port_is_saved_as(program, data, typed, saved):
    open_and_save(program, port=typed)
    assert data.config.read_bytes() == config(0, "127.0.0.1", saved)


ADDRESSES = {
    "empty_becomes_loopback": ("", "127.0.0.1"),
    "blanks_stay": (" 10.1.2.3 ", " 10.1.2.3 "),
    "one_blank_stays": (" ", " "),
    "host_name_stays": ("trap.example", "trap.example"),
    "markup_stays": ("<a>&</a>", "<a>&</a>"),
    "character_above_7f_stays": ("h\u00f6st", "h\u00f6st"),
    # The program reads with a count of 255, which includes the terminator.
    "300_characters_are_cut_to_254": ("0123456789" * 30, ("0123456789" * 30)[:254]),
}


@pytest.mark.parametrize("typed, saved", ADDRESSES.values(), ids=ADDRESSES.keys())
def test_a_typed_address_is_saved_as(program, data, typed, saved):
    open_and_save(program, ip=typed)
    assert data.config.read_bytes() == config(0, saved, 162)


def test_a_character_above_ff_cuts_the_file_and_is_logged_as_saved(program, data):
    open_and_save(program, ip="10.\u4e2d.3")
    lines = [b"<config>", b"  <forwardingEnabled>0</forwardingEnabled>", b"  <forwardingIp>10."]
    assert data.config.read_bytes() == LINE_END.join(lines)
    assert data.log_messages()[-2:] == [SAVED, UPDATED]
    assert FORWARDING.open(program).field(IP).text == "10.\u4e2d.3"


def edit_everything(window):
    window.field(CHECK).click()
    type_into(window.field(IP), "10.9.9.9")
    type_into(window.field(PORT), "9999")


@pytest.mark.parametrize("leave", ["cancel", "close_box"])
def test_closing_without_save_changes_nothing(data, start, leave):
    data.write_config(config(0, "10.1.2.3", 8162))
    program = start().wait_running()
    data.wait_for_start()
    before = data.log_octets()
    window = FORWARDING.open(program)
    edit_everything(window)
    if leave == "cancel":
        window.control(CANCEL).click()
    else:
        window.close()
    window.wait_closed()
    assert data.config.read_bytes() == config(0, "10.1.2.3", 8162)
    assert data.log_octets() == before
    assert values(FORWARDING.open(program)) == (False, "10.1.2.3", "8162")


def test_a_second_click_does_not_reset_unsaved_input(program):
    window = FORWARDING.open(program)
    edit_everything(window)
    program.settle()
    program.main.control(FORWARDING.button).click()
    program.settle()
    assert values(window) == (True, "10.9.9.9", "9999")


@pytest.mark.parametrize("command, saved", [(SAVE, True), (CANCEL, False)], ids=["save", "cancel"])
def test_only_the_low_half_of_a_command_counts(program, data, command, saved):
    window = FORWARDING.open(program)
    window.command(command | 1 << 16)
    window.wait_closed()
    program.settle()
    assert (UPDATED in data.log_messages()) == saved


def test_closing_the_main_window_with_unsaved_input_saves_the_old_settings(program, data):
    edit_everything(FORWARDING.open(program))
    assert program.close() == 0
    assert data.config.read_bytes() == config()
    assert UPDATED not in data.log_messages()


def test_tab_enter_and_escape_do_nothing(program, data):
    window = FORWARDING.open(program)
    data.wait_for_start()
    before = data.log_octets()
    for field in (IP, PORT):
        for key in (VK_TAB, VK_RETURN, VK_ESCAPE):
            window.field(field).post(WM_KEYDOWN, key)
    program.settle()
    assert window.exists
    assert values(window) == (False, "127.0.0.1", "162")
    assert data.log_octets() == before


def test_saving_changes_the_target_of_the_next_trap_without_restart(program, data):
    with udp_socket() as first, udp_socket() as second:
        for count, target in enumerate((first, second, first), 1):
            open_and_save(program, 1, LOOPBACK, str(target.getsockname()[1]))
            octets = message(integer_binding(count))
            send_raw(octets)
            assert target.recv(65535) == octets
            data.wait_for_traps(count)
        open_and_save(program, 0)
        send_raw(b"not forwarded")
        data.wait_for_traps(4)
        # When this one is logged, the one before has passed the forwarding step.
        send_raw(b"not forwarded either")
        data.wait_for_traps(5)
        for target in (first, second):
            target.setblocking(False)
            with pytest.raises(BlockingIOError):
                target.recv(65535)
    assert data.log_messages().count("Starting server...") == 1


def test_saving_while_stopped_applies_to_the_next_run(program, data):
    program.stop()
    with udp_socket() as target:
        open_and_save(program, 1, LOOPBACK, str(target.getsockname()[1]))
        program.start()
        send_raw(b"first of the new run")
        assert target.recv(65535) == b"first of the new run"
    data.wait_for_traps(1)


def test_settings_are_updated_even_if_the_file_cannot_be_written(program, data):
    data.config.mkdir()
    data.wait_for_start()
    before = len(data.log_messages())
    open_and_save(program, 1, "10.1.2.3", "99")
    assert data.log_messages()[before:] == [UPDATED]
    assert FORWARDING.open(program).field(IP).text == "10.1.2.3"
