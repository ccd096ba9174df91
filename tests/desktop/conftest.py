"""Fixtures of the desktop tests, which run under scripts/run_on_private_desktop.sh."""

import pytest

from harness.tool_windows import STATUS

pytest_plugins = ["harness.fixtures"]


@pytest.fixture
def status(program, data):
    """The status window of a program that has started."""
    data.wait_for_start()
    return STATUS.open(program)
