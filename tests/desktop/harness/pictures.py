"""Pictures of windows, taken from the virtual display."""

import subprocess

from harness.waiting import wait_until


def _window_picture(window):
    left, top, right, bottom = window.facts.rect
    screen = subprocess.run(["xwd", "-root", "-silent"], check=True, capture_output=True).stdout
    crop = f"{right - left}x{bottom - top}+{left}+{top}"
    command = ["convert", "xwd:-", "-crop", crop, "+repage", "png:-"]
    return subprocess.run(command, input=screen, check=True, capture_output=True).stdout


def save_picture(window, path):
    """Saves the window as it stands on the display, once two looks in a row show the same: it is painted then."""
    seen = [None]

    def is_still():
        window.send(0)
        last, seen[0] = seen[0], _window_picture(window)
        return seen[0] == last

    wait_until(is_still, "the window to be painted")
    path.write_bytes(seen[0])
