"""The sizes of the icon, and the files that have it. The desktop tests check that the windows have none."""

import struct
import subprocess

from harness.places import ROOT
from installation import package, unpack

ICON = ROOT / "resources" / "quillmont.ico"
SIZES = [16, 24, 32, 48, 256]
PNG_MARK = b"\x89PNG"


def read_images(octets):
    """Yields the size and the octets of each image of an icon file."""
    reserved, kind, count = struct.unpack_from("<HHH", octets)
    assert (reserved, kind) == (0, 1)
    for index in range(count):
        width, height, _, _, _, depth, length, start = struct.unpack_from("<BBBBHHII", octets, 6 + 16 * index)
        assert (width, depth) == (height, 32)
        yield width or 256, octets[start : start + length]


IMAGES = dict(read_images(ICON.read_bytes()))


def test_it_has_the_sizes_that_explorer_and_the_shortcuts_use():
    assert sorted(IMAGES) == SIZES
    # Only the largest may be a PNG: older parts of Windows cannot read small ones.
    assert [size for size, image in IMAGES.items() if image.startswith(PNG_MARK)] == [256]


def test_program_installer_and_uninstaller_have_it(installation, tmp_path):
    installation.install()
    program = unpack(tmp_path / "zip") / "Quillmont.exe"
    for file in (program, package("setup.exe"), installation.folder / "uninstall.exe"):
        octets = file.read_bytes()
        assert [size for size, image in IMAGES.items() if image not in octets] == [], file.name


def pixels(icon, folder):
    """Returns the pixels of each size, as red, green, blue and opacity."""
    folder.mkdir()
    subprocess.run(["icotool", "--extract", "--output", folder, icon], check=True)
    found = {}
    for image in folder.glob("*.png"):
        command = ["convert", image, "-depth", "8", "rgba:-"]
        octets = subprocess.run(command, check=True, capture_output=True).stdout
        found[round((len(octets) / 4) ** 0.5)] = octets
    return found


def test_it_matches_the_drawing(tmp_path):
    drawn = tmp_path / "drawn.ico"
    subprocess.run([ROOT / "packaging" / "make_icon.sh", drawn], check=True)
    committed, drawn = pixels(ICON, tmp_path / "committed"), pixels(drawn, tmp_path / "drawn")
    assert sorted(committed) == sorted(drawn) == SIZES
    for size in SIZES:
        # Versions of the drawing library smooth edges differently.
        differences = [abs(left - right) for left, right in zip(committed[size], drawn[size], strict=True)]
        assert sum(differences) / len(differences) < 1, f"{size} pixels: redraw it with packaging/make_icon.sh"
