"""Installing while the program runs or its file is in use."""

import os
import shutil
import signal
import threading
import time

import pytest
from harness.places import drive_c, windows_path
from harness.processes import find_wine_process, wine_processes
from installation import IN_USE, stub, unpack

# Setup's limits, in seconds.
CLOSE_TIME = 30
RELEASE_TIME = 10


def test_an_upgrade_closes_the_program_through_its_window_and_starts_it_again(data, installation, start):
    installation.install()
    new_octets = installation.program.read_bytes()
    with installation.program.open("ab") as file:
        file.write(b"an older version")
    old = start(installation.program).wait_running()
    data.wait_for_start()
    assert installation.install() == 0
    assert old.wait_for_exit() == 0
    assert data.log_messages().count("Config saved.") == 1
    assert installation.program.read_bytes() == new_octets
    data.wait_for_start(2)
    assert len(wine_processes("Quillmont.exe")) == 1
    installation.uninstall()
    assert data.log_messages().count("Server stopped.") == 2
    assert not wine_processes("Quillmont.exe")


def test_a_program_whose_process_cannot_be_opened_is_closed_and_replaced(data, installation, start):
    """As when Setup runs as another user than the program."""
    installation.install()
    new_octets = installation.program.read_bytes()
    shutil.copy(stub("sealed_program"), installation.program)
    sealed = start(installation.program)
    assert installation.install() == 0
    assert sealed.wait_for_exit() == 0
    assert installation.program.read_bytes() == new_octets
    data.wait_for_start()


@pytest.fixture
def hang(start, data):
    """A function that starts a program and suspends it until the test ends."""
    hanging = []

    def start_hanging(path):
        program = start(path).wait_running()
        data.wait_for_start()  # waits for the threads' log lines too, so that tests can count starts
        hanging.append(find_wine_process("Quillmont.exe"))
        os.kill(hanging[-1], signal.SIGSTOP)
        return program

    yield start_hanging
    for process in hanging:
        os.kill(process, signal.SIGCONT)


def test_a_hanging_window_delays_setup_once_and_other_windows_are_closed(data, installation, start, hang):
    installation.install()
    hang(installation.program)
    other = start(unpack(drive_c() / "copy") / "Quillmont.exe").wait_running()
    begin = time.monotonic()
    assert installation.install() == IN_USE
    assert CLOSE_TIME <= time.monotonic() - begin < 2 * CLOSE_TIME
    assert other.wait_for_exit() == 0
    # The closed program is started again, although nothing was installed.
    data.wait_for_start(3)
    assert len(wine_processes("Quillmont.exe")) == 2


def test_a_program_that_cannot_be_replaced_is_left_alone(driver, installation):
    """As when it runs in another session: Setup cannot reach its window or write its file."""
    installation.install()
    before = installation.program.read_bytes()
    driver("lock_file", windows_path(installation.program))
    begin = time.monotonic()
    try:
        assert installation.install() == IN_USE
        code, _ = installation.run_uninstaller("/S")
        assert code == IN_USE
    finally:
        driver("release_files")
    assert time.monotonic() - begin >= 2 * RELEASE_TIME
    assert installation.program.read_bytes() == before


def test_setup_waits_for_a_file_that_is_briefly_in_use(driver, installation):
    """As during a virus scan."""
    installation.install()
    driver("lock_file", windows_path(installation.program))
    release = threading.Timer(RELEASE_TIME / 4, lambda: driver("release_files"))
    release.start()
    try:
        assert installation.install() == 0
    finally:
        release.join()
