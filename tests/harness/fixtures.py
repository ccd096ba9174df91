"""Pytest fixtures for all tests that drive the program through its windows."""

import shutil

import pytest

from harness.data_folder import find_data_folder
from harness.driver import Driver
from harness.mib_dialogs import Samples
from harness.places import drive_c
from harness.program import Program


@pytest.fixture(scope="session")
def driver():
    driver = Driver()
    yield driver
    driver.close()


@pytest.fixture
def data(driver):
    """The data folder, which does not exist yet."""
    data = find_data_folder(driver)
    data.remove()
    return data


@pytest.fixture
def start(driver):
    """A function that starts the program. The programs are terminated after the test."""
    started = []

    def start_program(executable=None, **options):
        started.append(Program(driver, executable, **options))
        return started[-1]

    yield start_program
    for program in started:
        program.end()


@pytest.fixture
def program(data, start):
    """The program with a new data folder and a running receiver."""
    return start().wait_running()


@pytest.fixture
def samples():
    """A folder of files to import."""
    folder = drive_c() / "samples"
    folder.mkdir()
    yield Samples(folder)
    shutil.rmtree(folder)
