"""A window of the program under test, accessed through the driver."""

from types import SimpleNamespace

from harness.waiting import wait_until
from harness.win32 import BM_CLICK, BM_GETCHECK, SYSTEM_EXSTYLES, SYSTEM_STYLES, WM_CLOSE, WM_COMMAND

BLACK = 0x000000
WHITE = 0xFFFFFF


def rgb(red, green, blue):
    """A colour as a COLORREF: 0xBBGGRR."""
    return red | green << 8 | blue << 16


class Window:
    def __init__(self, driver, handle):
        self.driver = driver
        self.handle = handle

    def __eq__(self, other):
        return isinstance(other, Window) and self.handle == other.handle

    def __hash__(self):
        return hash(self.handle)

    @property
    def facts(self):
        return SimpleNamespace(**self.driver("window", self.handle))

    @property
    def text(self):
        return self.driver("text", self.handle)

    @property
    def exists(self):
        return self.driver("exists", self.handle)

    def set_text(self, text):
        self.driver("set_text", self.handle, text)

    def type_text(self, text):
        self.driver("type_text", self.handle, text)

    def send(self, message, w_param=0, l_param=0):
        return self.driver("send", self.handle, message, w_param, l_param)

    def post(self, message, w_param=0, l_param=0):
        return self.driver("post", self.handle, message, w_param, l_param)

    def close(self):
        self.post(WM_CLOSE)

    def command(self, number):
        """Posts the command that a click on the control with this id sends."""
        self.post(WM_COMMAND, number)

    def click(self):
        """Presses this button. Posted, since a button that opens a dialog would block the sender."""
        self.post(BM_CLICK)

    @property
    def checked(self):
        return self.send(BM_GETCHECK) == 1

    def children(self):
        return [SimpleNamespace(**facts) for facts in self.driver("children", self.handle)]

    def descendants(self):
        return [SimpleNamespace(**facts) for facts in self.driver("descendants", self.handle)]

    def controls(self):
        """The direct children, in the order of their creation."""
        return [Window(self.driver, facts.handle) for facts in self.children()]

    def _child_where(self, what, condition):
        """The first direct child that meets the condition: its index, in the order of creation, and its window."""
        for index, facts in enumerate(self.children()):
            if condition(facts):
                return index, Window(self.driver, facts.handle)
        raise AssertionError(f"no {what} in {self.facts.text!r}")

    def line(self, beginning):
        """The direct child whose text begins with this."""
        return self._child_where(beginning, lambda facts: facts.text.startswith(beginning))[1]

    def field(self, caption):
        """The control after the one with this caption, in the order of creation."""
        index, _ = self._child_where(caption, lambda facts: facts.text == caption)
        return self.controls()[index + 1]

    def child(self, class_name):
        """The first direct child of this class."""
        return self._child_where(class_name, lambda facts: facts.__dict__["class"] == class_name)[1]

    def control(self, number):
        """The direct child with this control id."""
        return self._child_where(f"control {number}", lambda facts: facts.id == number)[1]

    def list_items(self):
        return self.driver("list_items", self.handle)

    @property
    def edit(self):
        return SimpleNamespace(**self.driver("edit", self.handle))

    def pixels(self, *points):
        return self.driver("pixels", self.handle, *(number for point in points for number in point))

    def move(self, x, y):
        self.driver("move", self.handle, x, y)

    def repaint(self):
        self.driver("repaint", self.handle)

    def wait_closed(self):
        wait_until(lambda: not self.exists, "the window to be closed")

    def wait_text(self, text):
        wait_until(lambda: self.text == text, lambda: f"text {text!r}, last seen {self.text!r}")

    # The rest needs the spy (Program.attach_spy).

    @property
    def font(self):
        return SimpleNamespace(**self.driver("spy_window", self.handle)["font"])

    @property
    def window_class(self):
        facts = self.driver("spy_window", self.handle)["class"]
        facts["brush"] = SimpleNamespace(**facts["brush"])
        return SimpleNamespace(**facts)

    def colouring(self, message):
        """The answer of this control's parent to a WM_CTLCOLOR message."""
        facts = self.driver("spy_colouring", self.handle, message)["colouring"]
        facts["brush"] = SimpleNamespace(**facts["brush"])
        return SimpleNamespace(**facts)

    def kill_timer(self, number):
        """Kills the timer, so that only the test sends timer messages."""
        self.driver("spy_kill_timer", self.handle, number)

    def gdi_objects(self):
        return self.driver("spy_resources", self.handle)["gdiObjects"]

    def kernel_handles(self):
        return self.driver("spy_resources", self.handle)["kernelHandles"]


def describe_control(facts):
    """The control as a row of the tables in tool_windows.py."""
    return (
        facts.__dict__["class"],
        facts.text,
        facts.style & ~SYSTEM_STYLES,
        facts.exstyle & ~SYSTEM_EXSTYLES,
        tuple(facts.place),
        facts.id,
    )
