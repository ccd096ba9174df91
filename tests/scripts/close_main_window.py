"""Checks that run.sh has opened the windows in the prefix that WINEPREFIX names, and closes the main window."""

from harness.driver import Driver
from harness.program import MAIN_CLASS
from harness.tool_windows import LOG, MONITOR, STATUS
from harness.window import Window


def main():
    driver = Driver()
    shown = {facts["class"]: facts["handle"] for facts in driver("windows", 0) if facts["visible"]}
    missing = {MAIN_CLASS, MONITOR.class_name, LOG.class_name, STATUS.class_name} - set(shown)
    assert not missing, f"{missing} missing among {shown}"
    Window(driver, shown[MAIN_CLASS]).close()
    driver.close()


if __name__ == "__main__":
    main()
