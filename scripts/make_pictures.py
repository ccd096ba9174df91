"""Takes the pictures of docs/pictures/ on the virtual display that make_pictures.sh has prepared.

Every picture shows what the program really did with traps that snmptrap really sent; only the places of the windows
are arranged.
"""

import subprocess
import sys

from harness import samples, traps
from harness.data_folder import find_data_folder
from harness.driver import Driver
from harness.mib_dialogs import ID_NO, ask_to_delete
from harness.pictures import look_at_display
from harness.places import ROOT
from harness.program import Program
from harness.tool_windows import MONITOR, STATUS, TOOL_WINDOWS
from harness.waiting import wait_until

PICTURES = ROOT / "docs" / "pictures"
COLOURS = "64"  # enough for text with smoothed edges


def send_traps(data):
    samples.send_link_down()
    samples.send_memory_report()
    traps.send_v2c(samples.HEARTBEAT_RATE, "i", "30", samples.HEARTBEAT_NAME, "s", "backup-server")
    swap = [samples.MEM_SWAP_ERROR, "s", "Running out of swap space (1204)"]
    traps.send_v2c(samples.MEM_TOTAL_FREE, "i", "1204", *swap)
    traps.send_raw(b"not an SNMP message")
    data.wait_for_traps(5)


def still_screen():
    """The display, once two looks in a row show the same."""
    seen = [None]

    def is_still():
        last, seen[0] = seen[0], look_at_display()
        return seen[0] == last

    wait_until(is_still, "the windows to be painted")
    return seen[0]


def pipe(octets, *command):
    return subprocess.run(command, input=octets, check=True, capture_output=True).stdout


def save(name, windows, left, top, right, bottom):
    """Saves a part of the display in which the windows stand. Few colours and no text chunks: the file is small, and
    the same windows give the same file."""
    for window in windows:
        window.repaint()
    crop = f"{right - left}x{bottom - top}+{left}+{top}"
    picture = pipe(still_screen(), "convert", "xwd:-", "-crop", crop, "+repage", "png24:-")
    picture = pipe(picture, "pngquant", "--nofs", "--strip", "--speed", "1", COLOURS, "-")
    (PICTURES / f"{name}.png").write_bytes(picture)
    print(f"docs/pictures/{name}.png: {len(picture)} octets", flush=True)


def save_window(window, name):
    save(name, [window], *window.facts.rect)


def open_at(program, tool, x, y):
    window = tool.open(program)
    window.move(x, y)
    return window


def close(window):
    window.close()
    window.wait_closed()


def take_tool_windows(program):
    for tool in TOOL_WINDOWS:
        window = open_at(program, tool, 40, 130)
        save_window(window, f"{tool.name}_window")
        close(window)


def take_delete_question(program):
    status = open_at(program, STATUS, 40, 130)
    question = ask_to_delete(program, status)
    save_window(question, "delete_question")
    question.control(ID_NO).click()
    question.wait_closed()
    close(status)


def take_main_window(program):
    program.stop()
    save_window(program.main, "main_window_stopped")
    program.start()
    save_window(program.main, "main_window")


def take_overview(program):
    """The strip above, the status window over the right lower corner of the monitor."""
    program.main.move(12, 12)
    monitor = open_at(program, MONITOR, 12, 112)
    status = open_at(program, STATUS, 460, 312)
    save("overview", [program.main, monitor, status], 0, 0, 1192, 884)
    close(status)
    close(monitor)


def main():
    PICTURES.mkdir(parents=True, exist_ok=True)
    driver = Driver()
    data = find_data_folder(driver)
    samples.add_samples(data)
    program = Program(driver).wait_running()
    data.wait_for_start()
    program.main.move(40, 20)
    send_traps(data)
    take_overview(program)
    program.main.move(40, 20)
    take_tool_windows(program)
    take_delete_question(program)
    take_main_window(program)
    code = program.close()
    driver.close()
    if missing := samples.missing_names(data, "ifAlias-3", "memTotalReal", "netSnmpExampleHeartbeatRate"):
        sys.exit(f"The pictures lack names: {', '.join(missing)}.")
    return code


if __name__ == "__main__":
    sys.exit(main())
