"""Waiting for conditions."""

import time

POLL_SECONDS = 0.01
# Far more than needed, so that no test fails on a busy machine.
DEFAULT_SECONDS = 60


def wait_until(condition, what, seconds=DEFAULT_SECONDS):
    """Returns the first true value of condition(). Fails with `what` (a text, or a function that returns one) after
    `seconds`."""
    deadline = time.monotonic() + seconds
    while True:
        value = condition()
        if value:
            return value
        if time.monotonic() > deadline:
            raise AssertionError(f"waited {seconds} s for: {what() if callable(what) else what}")
        time.sleep(POLL_SECONDS)


def stays_true(condition, seconds):
    """Whether condition() was true at every poll for `seconds`. For events that must not happen."""
    deadline = time.monotonic() + seconds
    while time.monotonic() < deadline:
        if not condition():
            return False
        time.sleep(POLL_SECONDS)
    return True
