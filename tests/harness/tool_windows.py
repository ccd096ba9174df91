"""The layout of the four tool windows. The desktop tests compare it with the real windows, and all tests open the
windows through it."""

from dataclasses import dataclass

from harness.program import FORWARDING_BUTTON, LOG_BUTTON, MONITOR_BUTTON, STATUS_BUTTON
from harness.win32 import (
    BS_AUTOCHECKBOX,
    ES_AUTOHSCROLL,
    ES_AUTOVSCROLL,
    ES_MULTILINE,
    ES_READONLY,
    LBS_NOTIFY,
    WS_CAPTION,
    WS_CHILD,
    WS_EX_CLIENTEDGE,
    WS_SYSMENU,
    WS_THICKFRAME,
    WS_VISIBLE,
    WS_VSCROLL,
)

# Control ids of the status window.
IMPORT_BUTTON = 500
DELETE_BUTTON = 501

CHILD = WS_CHILD | WS_VISIBLE
FIXED_FRAME = WS_CAPTION | WS_SYSMENU
RESIZABLE_FRAME = FIXED_FRAME | WS_THICKFRAME
VIEW_STYLE = CHILD | WS_VSCROLL | ES_MULTILINE | ES_AUTOVSCROLL | ES_READONLY


@dataclass(frozen=True)
class ToolWindow:
    name: str
    button: int
    class_name: str
    title: str
    style: int
    size: tuple
    # As describe_control returns them; the text is None if it depends on the program's state.
    controls: tuple
    timer: int = 0
    period: int = 0

    def open(self, program):
        return program.open(self.button, self.class_name)


def _label(text, x, y, width, height):
    return ("Static", text, CHILD, 0, (x, y, width, height), 0)


def _button(text, x, y, width, height, number):
    return ("Button", text, CHILD, 0, (x, y, width, height), number)


def _list_box(text, x, y, width, height):
    return ("ListBox", text, CHILD | WS_VSCROLL | LBS_NOTIFY, WS_EX_CLIENTEDGE, (x, y, width, height), 0)


def _viewer(name, button, class_name, title, clear_text, clear_id, clear_width, timer):
    controls = (
        ("Edit", None, VIEW_STYLE, WS_EX_CLIENTEDGE, (12, 12, 940, 460), 0),
        _button(clear_text, 12, 482, clear_width, 30, clear_id),
    )
    return ToolWindow(name, button, class_name, title, RESIZABLE_FRAME, (980, 560), controls, timer, 400)


MONITOR = _viewer(
    "monitor", MONITOR_BUTTON, "SNMP_MON_WND", "Monitor (SNMP.txt)", "Clear SNMP Traps", 300, 160, 1001
)
LOG = _viewer("log", LOG_BUTTON, "SNMP_LOG_WND", "Log (log.txt)", "Clear Log", 400, 120, 1002)

STATUS = ToolWindow(
    "status",
    STATUS_BUTTON,
    "SNMP_STATUS_WND",
    "Status",
    RESIZABLE_FRAME,
    (720, 560),
    (
        _label(None, 12, 12, 680, 20),  # Server:
        _label(None, 12, 36, 680, 20),  # Listening:
        _label(None, 12, 60, 680, 20),  # Forwarding:
        _label(None, 12, 84, 680, 20),  # Last trap:
        _label(None, 12, 112, 680, 44),  # Data dir:, MIB dir:
        _label(None, 12, 164, 680, 20),  # Loaded MIB files:
        _label("Imported MIB files:", 12, 190, 200, 20),
        _list_box("", 12, 212, 680, 240),
        _button("Import MIB Files", 12, 466, 150, 30, IMPORT_BUTTON),
        _button("Delete all MIBs", 172, 466, 150, 30, DELETE_BUTTON),
    ),
    1003,
    700,
)

FORWARDING = ToolWindow(
    "forwarding",
    FORWARDING_BUTTON,
    "SNMP_FWD_WND",
    "Forwarding",
    FIXED_FRAME,
    (420, 210),
    (
        _label("Forwarding enabled:", 20, 20, 150, 20),
        ("Button", "On/Off", CHILD | BS_AUTOCHECKBOX, 0, (180, 18, 100, 22), 0),
        _label("Forward IP:", 20, 60, 150, 20),
        ("Edit", None, CHILD | ES_AUTOHSCROLL, WS_EX_CLIENTEDGE, (180, 58, 200, 24), 0),
        _label("Forward Port:", 20, 95, 150, 20),
        ("Edit", None, CHILD | ES_AUTOHSCROLL, WS_EX_CLIENTEDGE, (180, 93, 80, 24), 0),
        _button("Save", 180, 135, 90, 28, 200),
        _button("Cancel", 290, 135, 90, 28, 201),
    ),
)

TOOL_WINDOWS = (FORWARDING, MONITOR, LOG, STATUS)
VIEWERS = (MONITOR, LOG)
