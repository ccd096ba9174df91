"""The main window: its frame, its buttons, its indicator, and what the start button does."""

from harness.data_folder import config
from harness.program import MAIN_CLASS, START_LINES, STOP_LINES, TITLE
from harness.tool_windows import MONITOR, TOOL_WINDOWS
from harness.traps import LISTENER_PORT, TRAP_PORT, occupy_port, send_raw
from harness.waiting import wait_until
from harness.win32 import (
    SC_MINIMIZE,
    SC_RESTORE,
    SYSTEM_EXSTYLES,
    SYSTEM_STYLES,
    WM_CLOSE,
    WM_COMMAND,
    WM_SYSCOMMAND,
    WS_CHILD,
    WS_MINIMIZE,
    WS_VISIBLE,
)
from harness.window import BLACK, WHITE, describe_control, rgb

GREEN = rgb(0, 180, 0)
RED = rgb(200, 0, 0)

BUTTON_STYLE = WS_CHILD | WS_VISIBLE
BUTTONS = [
    ("Button", "Stop server", BUTTON_STYLE, 0, (44, 10, 140, 32), 100),
    ("Button", "Forwarding", BUTTON_STYLE, 0, (194, 10, 140, 32), 101),
    ("Button", "Monitor", BUTTON_STYLE, 0, (342, 10, 140, 32), 102),
    ("Button", "Log", BUTTON_STYLE, 0, (494, 10, 82, 32), 103),
    ("Button", "Status", BUTTON_STYLE, 0, (584, 10, 80, 32), 104),
]

# Inside the disc, which fills the box from (16, 18) to (34, 36).
DISC_POINTS = [(25, 27), (20, 27), (30, 27), (25, 22), (25, 32)]
# The outline's four extreme points; the right and lower edges of the box are outside.
OUTLINE_POINTS = [(16, 26), (33, 26), (24, 18), (24, 35)]
# The corners of the box, and points around it.
OUTSIDE_POINTS = [(16, 18), (33, 18), (16, 35), (33, 35), (15, 27), (34, 27), (25, 17), (25, 36), (4, 4)]


def wait_for_disc(program, colour):
    wait_until(
        lambda: set(program.main.pixels(*DISC_POINTS)) == {colour},
        lambda: f"disc {colour:06x}, seen {program.main.pixels(*DISC_POINTS)!r}",
    )


def test_the_frame_has_its_title_its_size_and_no_maximize_box(program):
    facts = program.main.facts
    assert facts.text == TITLE
    left, top, right, bottom = facts.rect
    assert (right - left, bottom - top) == (694, 90)
    assert facts.__dict__["class"] == MAIN_CLASS
    assert facts.style & ~(SYSTEM_STYLES | WS_VISIBLE) == 0x00CA0000  # WS_CAPTION | WS_SYSMENU | WS_MINIMIZEBOX
    assert facts.exstyle & ~SYSTEM_EXSTYLES == 0
    assert facts.owner == 0
    assert not facts.menu


def test_the_system_chooses_its_position(data, start):
    left, top, _, _ = start(place=(123, 77)).main.facts.rect
    assert (left, top) == (123, 77)


def test_the_five_buttons_are_created_in_order_with_their_places_styles_and_ids(program):
    assert [describe_control(control) for control in program.main.children()] == BUTTONS


def test_every_button_uses_the_one_interface_font(program):
    program.attach_spy()
    font = program.main.controls()[0].font
    assert font.handle != 0
    assert (font.face, font.height, font.width, font.weight) == ("Segoe UI", -14, 0, 400)
    assert (font.italic, font.underline, font.strikeOut) == (0, 0, 0)
    assert (font.charset, font.quality) == (1, 5)
    for button in program.main.controls():
        assert button.font.handle == font.handle


def test_the_receiver_starts_once_without_a_click_and_the_disc_is_green(program, data):
    data.wait_for_start()
    assert sorted(data.log_messages()[2:]) == START_LINES
    assert program.start_button.text == "Stop server"
    wait_for_disc(program, GREEN)


def test_the_indicator_is_a_disc_with_a_black_outline_on_white(program):
    wait_for_disc(program, GREEN)
    assert program.main.pixels(*OUTLINE_POINTS) == [BLACK] * len(OUTLINE_POINTS)
    assert program.main.pixels(*OUTSIDE_POINTS) == [WHITE] * len(OUTSIDE_POINTS)
    program.stop()
    wait_for_disc(program, RED)
    assert program.main.pixels(*OUTLINE_POINTS) == [BLACK] * len(OUTLINE_POINTS)
    assert program.main.pixels(*OUTSIDE_POINTS) == [WHITE] * len(OUTSIDE_POINTS)


def test_the_start_button_stops_and_restarts_the_receiver(program, data):
    data.wait_for_start()
    before = len(data.log_messages())
    program.stop()
    data.wait_for_log("Server stopped.")
    wait_for_disc(program, RED)
    stopping = data.log_messages()[before:]
    assert sorted(stopping) == STOP_LINES
    assert (stopping[0], stopping[-1]) == ("Stopping server...", "Server stopped.")
    program.start()
    wait_for_disc(program, GREEN)
    data.wait_for_start(2)
    assert sorted(data.log_messages()[before + len(stopping) :]) == START_LINES


def test_a_real_mouse_click_on_the_start_button_stops_the_receiver(program):
    program.driver("mouse_click", program.main.handle, 44 + 70, 10 + 16)
    program.wait_stopped()
    wait_for_disc(program, RED)


def test_two_quick_clicks_while_stopped_start_and_then_stop(program, data):
    program.stop()
    data.wait_for_log("Server stopped.")
    before = len(data.log_messages())
    program.toggle()
    program.toggle()
    data.wait_for_log("Server stopped.", 2)
    messages = [message for message in data.log_messages()[before:] if "thread" not in message]
    assert messages == ["Starting server...", "Server started.", "Stopping server...", "Server stopped."]
    wait_for_disc(program, RED)


def test_a_click_depends_on_the_receivers_state_and_not_on_the_button_text(program, data):
    program.start_button.set_text("Start server")
    program.toggle()
    data.wait_for_log("Server stopped.")
    assert data.log_messages().count("Starting server...") == 1


def test_only_the_low_16_bits_of_a_command_count(program, data):
    program.main.command(0x70000 | 100)
    data.wait_for_log("Server stopped.")
    program.wait_stopped()


def test_handled_messages_return_0(program):
    assert program.main.send(WM_COMMAND, 101) == 0
    assert program.main.send(WM_CLOSE) == 0
    assert program.wait_for_exit() == 0


def test_an_unknown_command_does_nothing(program, data):
    data.wait_for_start()
    before = data.log_octets()
    windows = len([facts for facts in program.windows() if facts["visible"]])
    for number in (0, 99, 105, 200, 500):
        assert program.main.send(WM_COMMAND, number) == 0
    assert data.log_octets() == before
    assert len([facts for facts in program.windows() if facts["visible"]]) == windows


def test_a_start_with_port_162_in_use_fails_and_logs_why(data, start):
    with occupy_port(TRAP_PORT):
        program = start()
        data.wait_for_log("Bind failed on UDP 162 (Traps). Run as admin or free the port.")
        program.settle()
        assert program.start_button.text == "Start server"
        wait_for_disc(program, RED)
        assert data.log_messages()[2:] == [
            "Starting server...",
            "Bind failed on UDP 162 (Traps). Run as admin or free the port.",
        ]
        # The failed start leaves the other port free.
        occupy_port(LISTENER_PORT).close()
    program.start()
    wait_for_disc(program, GREEN)


def test_a_start_with_port_161_in_use_logs_a_warning_and_runs(data, start):
    with occupy_port(LISTENER_PORT):
        program = start().wait_running()
        data.wait_for_log("Trap thread started (UDP 162).")
        wait_for_disc(program, GREEN)
        program.stop()
        data.wait_for_log("Server stopped.")
        messages = data.log_messages()[2:]
    assert messages[:2] == [
        "Starting server...",
        "Warning: bind failed on UDP 161 (SNMP). Continuing with 162 only.",
    ]
    assert sorted(messages[2:]) == sorted(
        [
            "Trap thread started (UDP 162).",
            "Server started.",
            "Stopping server...",
            "Trap thread stopped.",
            "Server stopped.",
        ]
    )


def test_closing_while_running_stops_saves_and_exits_with_0(program, data):
    data.wait_for_start()
    before = len(data.log_messages())
    assert not data.config.exists()
    assert program.close() == 0
    messages = data.log_messages()[before:]
    assert sorted(messages) == sorted([*STOP_LINES, "Config saved."])
    assert messages[0] == "Stopping server..."
    assert messages[-2:] == ["Server stopped.", "Config saved."]
    assert data.config.read_bytes() == config()


def test_closing_while_stopped_saves_too_and_exits_with_0(program, data):
    program.stop()
    data.wait_for_log("Server stopped.")
    before = len(data.log_messages())
    assert program.close() == 0
    assert data.log_messages()[before:] == ["Config saved."]
    assert data.config.read_bytes() == config()


def test_closing_after_a_failed_start_saves_and_exits_with_0(data, start):
    with occupy_port(TRAP_PORT):
        program = start()
        data.wait_for_log("Bind failed on UDP 162 (Traps). Run as admin or free the port.")
        assert program.close() == 0
    assert data.log_messages()[-1] == "Config saved."
    assert data.log_messages().count("Server stopped.") == 0


def test_the_tool_windows_are_minimised_and_restored_with_the_main_window(program, data):
    windows = [tool.open(program) for tool in TOOL_WINDOWS]
    program.main.post(WM_SYSCOMMAND, SC_MINIMIZE)
    wait_until(lambda: program.main.facts.style & WS_MINIMIZE, "the main window to be minimised")
    wait_until(lambda: not any(window.facts.visible for window in windows), "the tool windows to be hidden")
    send_raw(b"")
    data.wait_for_traps(1)
    program.main.post(WM_SYSCOMMAND, SC_RESTORE)
    wait_until(lambda: not program.main.facts.style & WS_MINIMIZE, "the main window to be restored")
    wait_until(lambda: all(window.facts.visible for window in windows), "the tool windows to be shown")
    assert [program.find_windows(tool.class_name) for tool in TOOL_WINDOWS] == [[window] for window in windows]
    wait_for_disc(program, GREEN)
    monitor = windows[TOOL_WINDOWS.index(MONITOR)]
    wait_until(lambda: "(not decoded)" in monitor.child("Edit").text, "the trap received meanwhile")
    assert program.close() == 0
