"""Pictures of windows, taken from the virtual display."""

import subprocess

from harness.waiting import wait_until


def _capture_display():
    """The whole display, in xwd's format."""
    return subprocess.run(["xwd", "-root", "-silent"], check=True, capture_output=True).stdout


def save_area(path, windows, rect):
    """Saves this part of the display as a PNG file, once the windows are painted: two captures in a row are equal."""
    for window in windows:
        window.repaint()
    seen = [None]

    def is_still():
        last, seen[0] = seen[0], _capture_display()
        return seen[0] == last

    wait_until(is_still, "the windows to be painted")
    left, top, right, bottom = rect
    crop = ["-crop", f"{right - left}x{bottom - top}+{left}+{top}", "+repage"]
    subprocess.run(["convert", "xwd:-", *crop, f"png24:{path}"], input=seen[0], check=True)


def save_window(path, window):
    save_area(path, [window], window.facts.rect)
