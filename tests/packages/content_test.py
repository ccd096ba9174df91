"""The content of the packages."""

import hashlib
import os
import re
import shutil
import struct
import subprocess
import zipfile
from pathlib import Path

import pytest
from harness import traps
from harness.places import ROOT, drive_c
from installation import CONTENT, MEM_TOTAL_REAL, VERSION, check_that_it_records, package, unpack

RIGHTS = "\u00a9 2026 Quillmont. All rights reserved."


def test_the_checksums_match_the_packages():
    lines = Path(os.environ["QUILLMONT_PACKAGES"], "SHA256SUMS").read_text().splitlines()
    named = dict(reversed(line.split("  ")) for line in lines)
    assert sorted(named) == [package(suffix).name for suffix in ("setup.exe", "windows-x64.zip")]
    for name, digest in named.items():
        assert hashlib.sha256((package("setup.exe").parent / name).read_bytes()).hexdigest() == digest


def test_the_guide_in_the_zip_is_one_file():
    with zipfile.ZipFile(package("windows-x64.zip")) as archive:
        assert sorted(archive.namelist()) == CONTENT
        guide = archive.read("user-guide.html").decode()
    assert f"version {VERSION}" in guide
    assert not re.search(r'href="[\w-]+\.md', guide)
    for page in ("quillmont-pro-user-guide", "installing-and-removing", "running-it-for-months"):
        assert f'id="{page}"' in guide
    headings = set(re.findall(r'id="([^"]+)"', guide))
    assert set(re.findall(r'href="#([^"]+)"', guide)) <= headings
    pictures = re.findall(r"""<(?:img|link|script)[^>]*?(?:src|href)=["']([^"']{0,30})""", guide)
    assert pictures
    assert all(picture.startswith("data:") for picture in pictures), pictures


def test_the_program_has_the_version_and_a_manifest():
    with zipfile.ZipFile(package("windows-x64.zip")) as archive:
        octets = archive.read("Quillmont.exe")
    # The fixed part of the version resource: signature, structure version, file version.
    fixed = octets.index(struct.pack("<II", 0xFEEF04BD, 0x10000))
    high, low = struct.unpack_from("<II", octets, fixed + 8)
    assert f"{high >> 16}.{high & 0xFFFF}.{low >> 16}" == VERSION
    for text in ("Quillmont PRO", RIGHTS, VERSION):
        assert text.encode("utf-16-le") in octets
    manifest = octets[octets.index(b"<assembly") : octets.index(b"</assembly>")].decode()
    for wanted in ('level="asInvoker"', "{8e0f7a12-bfb3-4fe8-b9a5-48fd50a15a9a}", 'version="6.0.0.0"'):
        assert wanted in manifest
    for setting in ("gdiScaling", "longPathAware"):
        assert re.search(rf"<{setting}\b[^>]*>true</{setting}>", manifest)
    for unwanted in ("activeCodePage", "dpiAwareness", ">true</dpiAware>"):
        assert unwanted not in manifest


def test_readme_and_packages_have_the_copyright_line_and_no_licence():
    readme = (ROOT / "README.md").read_text()
    assert readme.endswith(f"\n{RIGHTS}\n")
    assert RIGHTS.encode("utf-16-le") in package("setup.exe").read_bytes()
    with zipfile.ZipFile(package("windows-x64.zip")) as archive:
        assert archive.read("THIRD-PARTY.txt").decode().startswith(f"{RIGHTS}\r\n\r\n")
    assert not list(ROOT.glob("LICEN[CS]E*")) + list(ROOT.glob("COPYING*"))


def test_third_party_txt_names_every_library_in_the_program():
    link_map = Path(os.environ["QUILLMONT_LINK_MAP"]).read_text()
    members = re.findall(r"^\S+/(lib[^/]+)\.a\((\S+)\)$", link_map, re.M)
    # Import stubs of Windows' DLLs, which have no code.
    imports = re.compile(r"lib\w+?(?:h|t|s\d{5})\.o")
    linked = {library for library, member in members if not imports.fullmatch(member)}
    others = {library for library in linked if not library.startswith("libquillmont_")}
    assert {"libmingw32", "libstdc++"} <= others, link_map[:1000]
    with zipfile.ZipFile(package("windows-x64.zip")) as archive:
        notices = archive.read("THIRD-PARTY.txt").decode()
    assert notices == (ROOT / "THIRD-PARTY.txt").read_text().replace("\n", "\r\n")
    named = set(re.findall(r"lib[\w+]+", " ".join(re.findall(r"^Libraries: (.*)$", notices, re.M))))
    assert others <= named


def warning_of_nsis(**environment):
    command = [ROOT / "packaging" / "warn_of_old_nsis.sh"]
    return subprocess.run(
        command, check=True, capture_output=True, text=True, env={**os.environ, **environment}
    ).stdout


@pytest.mark.parametrize(
    ("version", "is_old"),
    [("v2.51", True), ("v3.08-3+deb12u1", True), ("v3.9", True), ("v3.11", False), ("v3.11-1", False), ("v4.0", False)],
)
def test_the_release_notes_warn_of_an_old_nsis(tmp_path, version, is_old):
    makensis = tmp_path / "makensis"
    makensis.write_text(f"#!/bin/sh\nprintf %s {version}\n")
    makensis.chmod(0o755)
    warning = warning_of_nsis(PATH=f"{tmp_path}:{os.environ['PATH']}")
    assert bool(warning) == is_old
    assert not is_old or (version[1:] in warning and "CVE-2025-43715" in warning)


def test_the_release_notes_are_the_change_logs_section_on_this_version():
    """It is the first section, and its date is the date of all files in the packages."""
    change_log = (ROOT / "CHANGELOG.md").read_text()
    heading, version, day = re.search(r"^## (\S+) \((\S+)\)$", change_log, re.M).group(0, 1, 2)
    assert version == VERSION
    notes = package("setup.exe").with_name(f"release-notes-{VERSION}.md").read_text()
    warning = warning_of_nsis()
    assert notes.endswith(warning)
    notes = notes.removesuffix(warning)
    assert notes.startswith(heading + "\n")
    assert notes.count("\n## ") == 0
    assert notes.strip() in change_log
    with zipfile.ZipFile(package("windows-x64.zip")) as archive:
        assert {entry.date_time[:3] for entry in archive.infolist()} == {tuple(map(int, day.split("-")))}


def test_a_version_without_a_dated_section_is_refused():
    for what in ("day", "notes"):
        for version in ("1.0", VERSION + "0", "9.9.9"):
            command = [ROOT / "packaging" / "read_release.sh", what, version]
            assert subprocess.run(command, capture_output=True, check=False).returncode != 0


def test_the_zip_runs_from_a_folder_with_a_blank_and_an_umlaut(data, start):
    folder = unpack(drive_c() / "M\u00fcller \u00fc Traps")
    program = start(folder / "Quillmont.exe").wait_running()
    check_that_it_records(data)
    assert program.close() == 0
    shutil.rmtree(folder)
    assert data.config.exists()


def test_the_mib_file_in_the_zip_names_instances(data, start):
    folder = unpack(drive_c() / "names")
    data.add_mib("standard-names.mib", (folder / "standard-names.mib").read_bytes())
    program = start(folder / "Quillmont.exe")
    data.wait_for_start()
    traps.send_v2c(MEM_TOTAL_REAL, "i", "8029184")
    data.wait_for_traps(1)
    program.close()
    assert b"] 1.3.6.1.2.1.1.3.0 (sysUpTime-0)  TimeTicks = " in data.trap_octets()
    assert b"] 1.3.6.1.6.3.1.1.4.1.0 (snmpTrapOID-0)  OID = " in data.trap_octets()
