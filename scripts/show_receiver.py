"""Starts the program, sends it real traps, saves pictures of its windows, closes it and prints what it wrote. With
--until-closed it opens the windows instead and waits until the main window is closed.

show_receiver.sh sets WINEPREFIX, DISPLAY and PYTHONPATH.
"""

import sys

from harness import samples
from harness.data_folder import find_data_folder
from harness.driver import Driver
from harness.pictures import save_window
from harness.places import ROOT
from harness.program import Program
from harness.tool_windows import LOG, MONITOR, STATUS, TOOL_WINDOWS

PICTURES = ROOT / "build" / "pictures"
NAMES = ["memTotalReal", "sysUpTime-0", "ifOperStatus-3", "upsSecondsOnBattery-0", "mteHotTrigger-0"]


def say(text):
    print(text, flush=True)


def text_of(octets):
    return octets.decode("latin-1").replace("\r\r\n", "\n")


def send_traps(data):
    say("Sending a version 1 trap, three version 2c traps and an inform with snmptrap.")
    before = data.traps_received()
    samples.send_memory_report("127.0.0.14")
    samples.send_link_down("127.0.0.11")
    samples.send_on_battery("127.0.0.12")
    samples.send_disk_full("127.0.0.13")
    if samples.send_inform("127.0.0.11"):
        sys.exit("The inform was answered, but the receiver must never send an answer.")
    data.wait_for_traps(before + 5)
    if missing := samples.missing_names(data, *NAMES):
        sys.exit(f"The records lack names: {', '.join(missing)}.")


def take_pictures(program):
    PICTURES.mkdir(parents=True, exist_ok=True)
    program.main.move(40, 20)

    def save(window, name):
        save_window(PICTURES / f"{name}_window.png", window)
        say(f"Picture: build/pictures/{name}_window.png")

    for tool in TOOL_WINDOWS:
        window = tool.open(program)
        window.move(40, 130)
        save(window, tool.name)
        window.close()
        window.wait_closed()
    save(program.main, "main")


def run_until_closed(program, data):
    """Opens the tool windows, waits until the main window is closed and returns the exit code."""
    for tool in (MONITOR, LOG, STATUS):
        tool.open(program)
    say(f"Quillmont runs until its main window is closed. Its files: {data.folder}")
    while (code := program.exit_code(1)) is None:
        pass
    return code


def main():
    driver = Driver()
    data = find_data_folder(driver)
    say(f"MIB files: {', '.join(samples.add_samples(data))}")
    started = data.log_messages().count("Server started.")
    program = Program(driver)
    data.wait_for_log("Server started.", started + 1)
    send_traps(data)
    if "--until-closed" in sys.argv:
        code = run_until_closed(program, data)
    else:
        take_pictures(program)
        code = program.close()
        say("\nSNMP.txt:\n" + text_of(data.trap_octets()))
        say("log.txt:\n" + text_of(data.log_octets()))
    driver.close()
    say(f"Quillmont.exe ended with exit code {code}.")
    return code


if __name__ == "__main__":
    try:
        sys.exit(main())
    except KeyboardInterrupt:
        sys.exit("Interrupted.")
