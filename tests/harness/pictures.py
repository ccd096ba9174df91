"""Pictures of windows, taken from the virtual display."""

import subprocess
import time

# A window that changes all the time, like the status window, is taken as it is after this.
STILL_SECONDS = 5


def look_at_display():
    """Everything on the display, as a file of the X window dump's kind."""
    return subprocess.run(["xwd", "-root", "-silent"], check=True, capture_output=True).stdout


def _look(window):
    """The window's pixels on the display, as a PPM file."""
    left, top, right, bottom = window.facts.rect
    crop = f"{right - left}x{bottom - top}+{left}+{top}"
    command = ["convert", "xwd:-", "-crop", crop, "+repage", "ppm:-"]
    return subprocess.run(command, input=look_at_display(), check=True, capture_output=True).stdout


def save_picture(window, path):
    """Saves the window as it stands on the display, once two looks in a row show the same: it is painted then."""
    deadline = time.monotonic() + STILL_SECONDS
    last, seen = None, _look(window)
    while seen != last and time.monotonic() < deadline:
        window.send(0)
        last, seen = seen, _look(window)
    subprocess.run(["convert", "ppm:-", str(path)], input=seen, check=True)
