"""Waiting for conditions."""

import time

POLL_SECONDS = 0.01
# Far more than needed, so that a busy machine fails no test.
DEFAULT_SECONDS = 60


def wait_until(condition, what, seconds=DEFAULT_SECONDS):
    """The first true value of condition(); fails with `what` (a text, or a function giving one) after `seconds`."""
    deadline = time.monotonic() + seconds
    while True:
        value = condition()
        if value:
            return value
        if time.monotonic() > deadline:
            raise AssertionError(f"waited {seconds} s for: {what() if callable(what) else what}")
        time.sleep(POLL_SECONDS)


def stays_true(condition, seconds):
    """Whether condition() was true at each poll for `seconds`: for events that must not happen."""
    deadline = time.monotonic() + seconds
    while time.monotonic() < deadline:
        if not condition():
            return False
        time.sleep(POLL_SECONDS)
    return True
