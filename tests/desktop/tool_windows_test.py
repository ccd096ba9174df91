"""What the four tool windows have in common: frame, controls, font, colours, timers, one instance, closing."""

import statistics

import pytest

from harness.data_folder import config
from harness.tool_windows import FORWARDING, LOG, MONITOR, STATUS, TOOL_WINDOWS
from harness.waiting import stays_true, wait_until
from harness.win32 import (
    SYSTEM_EXSTYLES,
    SYSTEM_STYLES,
    WM_CLOSE,
    WM_COMMAND,
    WM_CTLCOLORBTN,
    WM_CTLCOLOREDIT,
    WM_CTLCOLORLISTBOX,
    WM_CTLCOLORSTATIC,
    WM_TIMER,
    WS_EX_DLGMODALFRAME,
    WS_VISIBLE,
    WS_VSCROLL,
)
from harness.window import BLACK, WHITE, describe_control

each_window = pytest.mark.parametrize("tool", TOOL_WINDOWS, ids=lambda tool: tool.name)


@each_window
def test_the_frame_is_as_designed_and_owned_by_the_main_window(program, tool):
    facts = tool.open(program).facts
    assert facts.text == tool.title
    assert facts.style & ~(SYSTEM_STYLES | WS_VISIBLE) == tool.style
    assert facts.exstyle & ~SYSTEM_EXSTYLES == WS_EX_DLGMODALFRAME
    left, top, right, bottom = facts.rect
    assert (right - left, bottom - top) == tool.size
    assert facts.owner == program.main.handle
    assert not facts.menu


def test_each_class_has_the_white_brush_and_the_arrow_and_neither_icon_nor_menu(program):
    program.attach_spy()
    brush = program.main.window_class.brush
    assert (brush.solid, brush.colour) == (True, WHITE)
    for window in (program.main, *(tool.open(program) for tool in TOOL_WINDOWS)):
        seen = window.window_class
        assert seen.brush.handle == brush.handle
        assert (seen.arrow, seen.icon, seen.menu) == (True, False, False)


def _without_state(control, designed):
    """The control without the parts that depend on the program's state or on Wine."""
    class_name, text, style, exstyle, place, number = control
    if designed[1] is None:
        text = None
    if class_name == "ListBox":
        # Wine removes the scroll bar's style while all items fit, and rounds the height down to whole items.
        if not style & WS_VSCROLL or place[3] != designed[4][3]:
            print(f"Wine shows the list box with style {style:#010x} and height {place[3]}.")
        style |= WS_VSCROLL
        assert 0 <= designed[4][3] - place[3] < 24
        place = (*place[:3], designed[4][3])
    return (class_name, text, style, exstyle, place, number)


@each_window
def test_the_controls_are_created_in_order_with_their_places_styles_and_ids(program, tool):
    controls = [describe_control(facts) for facts in tool.open(program).children()]
    assert len(controls) == len(tool.controls)
    assert [_without_state(*pair) for pair in zip(controls, tool.controls)] == list(tool.controls)


def test_every_control_uses_the_one_interface_font(program):
    program.attach_spy()
    font = program.main.controls()[0].font.handle
    assert font != 0
    for tool in TOOL_WINDOWS:
        for control in tool.open(program).controls():
            assert control.font.handle == font


def test_edits_and_statics_are_black_on_opaque_white_and_others_have_the_systems_colours(program):
    program.attach_spy()
    brush = program.main.window_class.brush.handle
    opaque = 2
    for window in (program.main, *(tool.open(program) for tool in TOOL_WINDOWS)):
        control = window.controls()[0]
        for message in (WM_CTLCOLOREDIT, WM_CTLCOLORSTATIC):
            answer = control.colouring(message)
            assert (answer.backgroundMode, answer.background, answer.text) == (opaque, WHITE, BLACK)
            assert answer.brush.handle == brush
        for message in (WM_CTLCOLORLISTBOX, WM_CTLCOLORBTN):
            assert control.colouring(message).brush.handle != brush


@each_window
def test_a_second_click_brings_the_window_to_the_foreground_and_opens_no_other(program, tool):
    window = tool.open(program)
    wait_until(lambda: program.driver("foreground") == window.handle, "the new window in the foreground")
    other = next(other for other in TOOL_WINDOWS if other is not tool).open(program)
    wait_until(lambda: program.driver("foreground") == other.handle, "the other window in the foreground")
    program.main.control(tool.button).click()
    wait_until(lambda: program.driver("foreground") == window.handle, "the first window in the foreground again")
    assert program.find_windows(tool.class_name) == [window]


@each_window
def test_after_closing_the_next_click_opens_a_new_window(program, tool):
    first = tool.open(program)
    first.close()
    first.wait_closed()
    second = tool.open(program)
    assert second.facts.text == tool.title
    assert program.find_windows(tool.class_name) == [second]


@each_window
def test_an_unknown_command_and_an_unknown_timer_do_nothing(program, data, tool):
    data.wait_for_start()
    window = tool.open(program)
    before = data.log_octets()
    for number in (1, 2, 99, 199, 299, 399, 499, 599):
        assert window.send(WM_COMMAND, number) == 0
        assert window.send(WM_TIMER, number) == 0
    assert window.exists
    assert data.log_octets() == before


@each_window
def test_resizing_the_frame_moves_no_control(program, tool):
    window = tool.open(program)
    before = [facts.place for facts in window.children()]
    program.driver("resize", window.handle, 500, 300)
    wait_until(lambda: window.facts.rect[2] - window.facts.rect[0] == 500, "the new size")
    assert [facts.place for facts in window.children()] == before


def _intervals(program, window, timer):
    ticks = [
        tick
        for handle, number, tick in program.driver("spy_timers")
        if (handle, number) == (window.handle, timer)
    ]
    return [after - before for before, after in zip(ticks, ticks[1:])]


@pytest.mark.parametrize("tool", (MONITOR, LOG, STATUS), ids=lambda tool: tool.name)
def test_the_timer_has_its_id_and_its_period_and_stops_with_the_window(program, tool):
    program.attach_spy()
    window = tool.open(program)
    wait_until(lambda: len(_intervals(program, window, tool.timer)) >= 5, "six timer messages")
    intervals = _intervals(program, window, tool.timer)
    # A busy machine delivers late, and then early to make up for it.
    assert 0.8 * tool.period < statistics.median(intervals) < 1.5 * tool.period
    assert {number for _, number, _ in program.driver("spy_timers")} == {tool.timer}
    window.close()
    window.wait_closed()
    count = len(program.driver("spy_timers"))
    assert stays_true(lambda: len(program.driver("spy_timers")) == count, 2.5 * tool.period / 1000)


# Commands that show no dialog.
COMMANDS = {FORWARDING: 201, MONITOR: 300, LOG: 400}


@each_window
def test_handled_messages_return_0(program, data, tool):
    data.wait_for_start()
    window = tool.open(program)
    assert window.send(WM_TIMER, tool.timer) == 0
    if tool in COMMANDS:
        assert window.send(WM_COMMAND, COMMANDS[tool]) == 0
    assert tool.open(program).send(WM_CLOSE) == 0


def test_the_forwarding_window_has_no_timer(program):
    program.attach_spy()
    FORWARDING.open(program)
    assert stays_true(lambda: program.driver("spy_timers") == [], 1.5)


def test_closing_the_main_window_closes_all_four_and_exits_with_0(program, data):
    windows = [tool.open(program) for tool in TOOL_WINDOWS]
    assert program.close() == 0
    for window in windows:
        assert not window.exists
    assert data.config.read_bytes() == config()
    assert data.log_messages()[-2:] == ["Server stopped.", "Config saved."]
