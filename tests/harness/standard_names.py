"""standard-names.mib, as in the packages."""

import subprocess
import sys

from harness.places import ROOT

FILE_NAME = "standard-names.mib"


def make_standard_names(folder):
    """Writes the file into the folder. Returns its path."""
    packaging = ROOT / "packaging"
    file = folder / FILE_NAME
    command = [sys.executable, "-B", packaging / "make_names.py", packaging / "standard_names.txt", file]
    subprocess.run(command, check=True, timeout=60)
    return file
