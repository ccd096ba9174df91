"""The notices of what others wrote, held against what the linker put into the program."""

import os
import subprocess
import sys
import zipfile
from pathlib import Path

import pytest
from harness.places import ROOT
from installation import package

NOTICES = ROOT / "THIRD-PARTY.txt"
MAP = Path(os.environ["QUILLMONT_LINK_MAP"])
MINGW = "/usr/x86_64-w64-mingw32/lib"


def check(link_map, notices=NOTICES):
    command = [sys.executable, "-B", ROOT / "packaging" / "make_notices.py", "check", link_map, notices]
    result = subprocess.run(command, capture_output=True, text=True, check=False)
    assert result.stderr == ""
    return result.returncode, result.stdout.splitlines()


def test_every_origin_in_the_link_map_has_its_notice_as_the_toolchain_states_it():
    assert check(MAP) == (0, [])


@pytest.mark.parametrize(
    ("line", "fault"),
    [
        (f"{MINGW}/libz.a(inflate.o)", f"from nobody known: {MINGW}/libz.a(inflate.o)"),
        ("LOAD /opt/other/thing.o", "from nobody known: /opt/other/thing.o"),
        (
            f"{MINGW}/libmingwex.a(lib64_libmingwex_a-getopt.o)",
            "under BSD-2-clause-NetBSD and ISC, which no notice covers:"
            f" {MINGW}/libmingwex.a(lib64_libmingwex_a-getopt.o)",
        ),
    ],
)
def test_an_origin_without_a_notice_is_found(tmp_path, line, fault):
    link_map = tmp_path / "Quillmont.map"
    link_map.write_text(f"{MAP.read_text()}\n{line}\n")
    code, faults = check(link_map)
    assert code == 1
    assert [found.partition("in the program, ")[2] for found in faults] == [fault]


def test_a_map_that_tells_nothing_is_found(tmp_path):
    link_map = tmp_path / "Quillmont.map"
    link_map.write_text("")
    assert check(link_map) == (1, ["the link map was not read"])


def test_a_notice_that_lacks_a_line_is_found(tmp_path):
    notices = tmp_path / "THIRD-PARTY.txt"
    notices.write_text(NOTICES.read_text().replace("Lockless Inc. nor", "nor"))
    assert check(MAP, notices) == (1, ["not as the toolchain states it: Threads (winpthreads): pthread.h"])


def test_the_zip_has_the_notices():
    with zipfile.ZipFile(package("windows-x64.zip")) as archive:
        assert archive.read("THIRD-PARTY.txt").decode() == NOTICES.read_text().replace("\n", "\r\n")
