"""Starts the program, sends it real traps, saves pictures of its windows, closes it and prints what it wrote; or, with
--until-closed, opens its windows instead and leaves them to whoever sits in front of them.

WINEPREFIX, DISPLAY and where the harness is are set by show_receiver.sh.
"""

import shutil
import sys
from pathlib import Path

from harness import traps
from harness.data_folder import find_data_folder
from harness.driver import Driver
from harness.pictures import save_picture
from harness.places import ROOT
from harness.program import Program
from harness.standard_names import make_standard_names
from harness.tool_windows import LOG, MONITOR, STATUS, TOOL_WINDOWS

PICTURES = ROOT / "build" / "pictures"
MIB_SAMPLES = Path("/usr/share/snmp/mibs")
SAMPLES = ["NET-SNMP-AGENT-MIB.txt", "NET-SNMP-MIB.txt", "UCD-DISKIO-MIB.txt", "UCD-SNMP-MIB.txt"]

# memTotalReal and memTotalFree of UCD-SNMP-MIB, without an instance: a name needs exactly its identifier.
MEM_TOTAL_REAL = "1.3.6.1.4.1.2021.4.5"
MEM_TOTAL_FREE = "1.3.6.1.4.1.2021.4.11"
# What a link that goes down carries: instances, which standard-names.mib names.
IF_ENTRY = "1.3.6.1.2.1.2.2.1"
LINK = [f"{IF_ENTRY}.1.3", "i", "3", f"{IF_ENTRY}.7.3", "i", "1", f"{IF_ENTRY}.8.3", "i", "2"]


def say(text):
    print(text, flush=True)


def text_of(octets):
    return octets.decode("latin-1").replace("\r\r\n", "\n")


def import_samples(data):
    data.mibs.mkdir(parents=True, exist_ok=True)
    for name in SAMPLES:
        shutil.copy(MIB_SAMPLES / name, data.mibs)
    names = make_standard_names(data.mibs)
    say(f"MIB files: {', '.join([*SAMPLES, names.name])}")


def send_traps(data):
    say("Sending a version 1 trap, a version 2c trap and an inform with snmptrap.")
    before = data.traps_received()
    traps.send_v1(MEM_TOTAL_REAL, "i", "8029184")
    traps.send_v2c(*LINK, f"{IF_ENTRY}.2.3", "s", "GigabitEthernet0/3")
    if traps.send_inform(MEM_TOTAL_FREE, "i", "1204"):
        sys.exit("The inform was answered, and nothing may ever be.")
    data.wait_for_traps(before + 3)
    for name in ("memTotalReal", "sysUpTime-0", "ifOperStatus-3"):
        if f"({name})".encode() not in data.trap_octets():
            sys.exit(f"No name was found for {name}.")


def take_pictures(program):
    PICTURES.mkdir(parents=True, exist_ok=True)
    program.main.move(40, 20)

    def save(window, name):
        save_picture(window, PICTURES / f"{name}_window.png")
        say(f"Picture: build/pictures/{name}_window.png")

    for tool in TOOL_WINDOWS:
        window = tool.open(program)
        window.move(40, 130)
        save(window, tool.name)
        window.close()
        window.wait_closed()
    save(program.main, "main")


def leave_to_operator(program, data):
    """The exit code, once the main window has been closed."""
    for tool in (MONITOR, LOG, STATUS):
        tool.open(program)
    say(f"Quillmont runs until its main window is closed. Its files: {data.folder}")
    while (code := program.exit_code(1)) is None:
        pass
    return code


def main():
    driver = Driver()
    data = find_data_folder(driver)
    import_samples(data)
    started = data.log_messages().count("Server started.")
    program = Program(driver)
    data.wait_for_log("Server started.", started + 1)
    send_traps(data)
    if "--until-closed" in sys.argv:
        code = leave_to_operator(program, data)
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
