"""Takes the pictures of docs/pictures/ on the virtual display that make_pictures.sh has prepared.

The pictures show the real program with traps from snmptrap. Only the positions of the windows are set here.
"""

import socket
import subprocess
import sys

from harness import samples
from harness.data_folder import config, find_data_folder
from harness.driver import Driver
from harness.pictures import save_area, save_window
from harness.places import ROOT
from harness.program import Program
from harness.tool_windows import FORWARDING, MONITOR, STATUS
from harness.win32 import WM_SETICON

PICTURES = ROOT / "docs" / "pictures"
COLOURS = "64"  # enough for text with smoothed edges

# make_pictures.sh adds these to the loopback interface.
SWITCH, UPS, SERVER, FORWARDING_TARGET = "10.20.0.11", "10.20.0.40", "10.20.0.7", ("10.20.0.5", 1162)

NO_ICON = 1  # an invalid handle: the title bar then lacks Wine's default icon


def picture(name):
    return PICTURES / f"{name}.png"


def open_at(program, tool, x, y):
    window = tool.open(program)
    window.move(x, y)
    return window


def close(window):
    window.close()
    window.wait_closed()


def take_windows(program):
    program.main.move(40, 20)
    save_window(picture("main_window"), program.main)
    for tool in (MONITOR, STATUS, FORWARDING):
        window = open_at(program, tool, 40, 130)
        save_window(picture(f"{tool.name}_window"), window)
        close(window)


def take_overview(program):
    """The main window at the top, the status window over the lower right corner of the monitor."""
    program.main.move(16, 16)
    monitor = open_at(program, MONITOR, 16, 122)
    status = open_at(program, STATUS, 540, 320)
    save_area(picture("overview"), [program.main, monitor, status], (0, 0, 1276, 896))
    close(status)
    close(monitor)


def reduce_colours(path):
    """Makes the file small and reproducible."""
    subprocess.run(["pngquant", "--nofs", "--strip", "--speed=1", "--force", f"--output={path}", COLOURS, path], check=True)
    print(f"{path.relative_to(ROOT)}: {path.stat().st_size} octets", flush=True)


def main():
    driver = Driver()
    data = find_data_folder(driver)
    samples.add_samples(data)
    data.write_config(config(1, *FORWARDING_TARGET))
    with socket.socket(socket.AF_INET, socket.SOCK_DGRAM) as target:
        target.bind(FORWARDING_TARGET)
        program = Program(driver).wait_running()
        program.main.post(WM_SETICON, 0, NO_ICON)
        data.wait_for_start()
        samples.send_link_down(SWITCH)
        samples.send_on_battery(UPS)
        samples.send_disk_full(SERVER)
        data.wait_for_traps(3)
        take_overview(program)
        take_windows(program)
        code = program.close()
    driver.close()
    if missing := samples.missing_names(data, "ifDescr-3", "upsSecondsOnBattery-0", "mteHotTrigger-0"):
        sys.exit(f"The pictures lack names: {', '.join(missing)}.")
    for name in ("overview", "main_window", "monitor_window", "status_window", "forwarding_window"):
        reduce_colours(picture(name))
    return code


if __name__ == "__main__":
    sys.exit(main())
