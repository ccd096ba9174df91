"""Quillmont.exe: starting it, finding its windows, closing it."""

from harness.places import program_file, windows_path
from harness.waiting import DEFAULT_SECONDS, wait_until
from harness.window import Window

TITLE = "Quillmont PRO v1.0 (SNMP v1 and v2c) -  \u00a9 2026 Quillmont"
MAIN_CLASS = "SNMP_MAIN_WND"

START_BUTTON = 100
FORWARDING_BUTTON = 101
MONITOR_BUTTON = 102
LOG_BUTTON = 103
STATUS_BUTTON = 104

# The log lines of one start with both ports free, sorted, since the order of the threads' lines varies.
START_LINES = sorted(
    [
        "Starting server...",
        "Trap thread started (UDP 162).",
        "Listener thread started (UDP 161).",
        "Server started.",
    ]
)
STOP_LINES = sorted(
    ["Stopping server...", "Trap thread stopped.", "Listener thread stopped (UDP 161).", "Server stopped."]
)


class Program:
    def __init__(self, driver, executable=None, place=(0, 0)):
        """`place`: the default position that the system gives to the first window."""
        self.driver = driver
        self.process = driver("start", windows_path(executable or program_file()), *place)
        self.main = self.wait_for_window(MAIN_CLASS)

    def windows(self):
        return self.driver("windows", self.process)

    def find_windows(self, class_name, title=None):
        return [
            Window(self.driver, facts["handle"])
            for facts in self.windows()
            if facts["class"] == class_name and facts["visible"] and title in (None, facts["text"])
        ]

    def find_window(self, class_name, title=None):
        found = self.find_windows(class_name, title)
        return found[0] if found else None

    def wait_for_window(self, class_name, title=None):
        return wait_until(
            lambda: self.find_window(class_name, title),
            lambda: f"a window {class_name} {title or ''}, there are {self.windows()!r}",
        )

    @property
    def start_button(self):
        return self.main.control(START_BUTTON)

    def wait_running(self):
        """Waits until the receiver runs: the program has handled its posted start command."""
        self.start_button.wait_text("Stop server")
        return self

    def wait_stopped(self):
        self.start_button.wait_text("Start server")
        return self

    def toggle(self):
        self.start_button.click()

    def stop(self):
        self.toggle()
        self.wait_stopped()

    def start(self):
        self.toggle()
        self.wait_running()

    def open(self, button, class_name):
        """Clicks the main window's button and waits for the window that it opens."""
        self.main.control(button).click()
        return self.wait_for_window(class_name)

    def attach_spy(self):
        self.driver("spy_attach", self.main.handle)

    def calls(self, function):
        """The program's calls of that system function since the spy was attached, as texts."""
        return [call for call in self.driver("spy_calls") if call.split(" ", 1)[0] == function]

    def choose_in_next_dialog(self, *texts):
        """The next file dialog is not shown; its buffer contains these texts."""
        self.driver("spy_choose", *texts)

    def append_before_next_read(self, path, text):
        """Appends the text just before the program next opens the file for reading."""
        self.driver("spy_append", path, text)

    def settle(self):
        """Waits until the program has handled all messages posted before this call."""
        self.main.send(0)

    def exit_code(self, seconds=0):
        """The exit code; None if the program still runs after this time."""
        return self.driver("wait_for_exit", self.process, int(seconds * 1000))

    @property
    def runs(self):
        return self.exit_code() is None

    def wait_for_exit(self, seconds=DEFAULT_SECONDS):
        """The exit code."""
        code = self.exit_code(seconds)
        assert code is not None, "the program still runs"
        return code

    def close(self):
        """Closes the main window. Returns the exit code."""
        self.main.close()
        return self.wait_for_exit()

    def end(self):
        """Terminates the program if it still runs."""
        if self.runs:
            self.driver("end_process", self.process)
