"""run.sh as root and as an ordinary user, with and without a display."""

import subprocess

import pytest

from clone import VirtualDisplay, end_session, wait_for_line
from harness.tool_windows import STATUS
from harness.waiting import wait_until

# Too short for a run.
AT_ONCE_SECONDS = 15


def test_without_a_display_it_prints_the_records_and_leaves_no_process(ready):
    code, output = ready.run("./run.sh")
    assert code == 0
    assert "1.3.6.1.4.1.2021.4.5 (memTotalReal)  INTEGER = 8029184" in output
    assert "1.3.6.1.2.1.2.2.1.8.3 (ifOperStatus-3)  INTEGER = 2" in output
    assert output.endswith("Quillmont.exe ended with exit code 0.\nNo process was left behind.\n")
    assert (ready.folder / "build/pictures/main_window.png").exists()


@pytest.mark.parametrize("user", ["ordinary"], indirect=True)
def test_a_display_that_cannot_be_reached_is_replaced(ready):
    code, output = ready.run("./run.sh", DISPLAY="127.0.0.1:99")
    assert code == 0
    assert "The display 127.0.0.1:99 cannot be reached from a private network" in output
    assert "Picture: build/pictures/main_window.png" in output


def colours_of(window, display):
    """Returns the number of colours in the window of that name on the display, or 0 if there is no such window."""
    command = ["xwd", "-silent", "-display", display.name, "-name", window]
    picture = subprocess.run(command, capture_output=True, check=False)
    if picture.returncode != 0:
        return 0
    count = ["convert", "xwd:-", "-format", "%k", "info:"]
    return int(subprocess.run(count, input=picture.stdout, check=True, capture_output=True).stdout)


def test_with_a_display_the_windows_stay_until_the_main_window_is_closed(ready):
    with VirtualDisplay() as display:
        process = ready.start("./run.sh", DISPLAY=display.name)
        try:
            lines = wait_for_line(process, "Quillmont runs until its main window is closed.")
            wait_until(lambda: colours_of(STATUS.title, display) > 10, "a painted window on the display")
            folder = lines[-1].split("Its files: ")[1].strip()
            records = subprocess.run(["cat", f"{folder}/SNMP.txt"], check=True, capture_output=True).stdout
            assert b"1.3.6.1.4.1.2021.4.5 (memTotalReal)  INTEGER = 8029184" in records
            prefix = folder.partition("/drive_c/")[0]
            script = ["scripts/with_harness.sh", "/usr/bin/python3", "-B", "tests/scripts/close_main_window.py"]
            code, _ = ready.run(*script, DISPLAY=display.name, WINEPREFIX=prefix)
            assert code == 0
            rest, _ = process.communicate(timeout=60)
        finally:
            end_session(process)
    assert process.returncode == 0
    assert rest == "Quillmont.exe ended with exit code 0.\nNo process was left behind.\n"


def test_a_second_start_while_a_window_is_open_is_refused(ready):
    with VirtualDisplay() as display:
        process = ready.start("./run.sh", DISPLAY=display.name)
        try:
            wait_for_line(process, "Quillmont runs until its main window is closed.")
            ready.add_command("wineserver", f'echo "$WINEPREFIX" >>{ready.folder}/ended; exec /usr/bin/wineserver "$@"')
            code, output = ready.run("./run.sh", DISPLAY=display.name, WINEPREFIX="/other", seconds=AT_ONCE_SECONDS)
            assert not (ready.folder / "ended").exists(), "run.sh ended the programs of another prefix"
        finally:
            end_session(process)
    assert code == 1
    assert output.endswith("run.sh is already running; close its main window first.\n")
