"""Fixtures of the desktop tests. They run where run_on_private_desktop.sh put them: in a network, a display and a
Wine prefix of their own. QUILLMONT_EXE and QUILLMONT_DRIVER name the two programs."""

import os

import pytest

from harness.data_folder import DataFolder
from harness.driver import Driver
from harness.program import Program


@pytest.fixture(scope="session")
def driver():
    driver = Driver(os.environ["QUILLMONT_DRIVER"])
    yield driver
    driver.close()


@pytest.fixture
def data():
    """A data directory that does not exist yet."""
    data = DataFolder()
    data.remove()
    return data


@pytest.fixture
def start(driver):
    """A function that starts the program; whatever it started is gone after the test."""
    started = []

    def start_program():
        started.append(Program(driver))
        return started[-1]

    yield start_program
    for program in started:
        program.end()


@pytest.fixture
def program(data, start):
    """The program with a fresh data directory and a running receiver."""
    del data
    return start().wait_running()
