"""Packages signed with a certificate."""

import os
import subprocess

import pytest
from harness.places import ROOT, drive_c, program_file
from installation import VERSION, package, unpack
from signing import PASSWORD, Identity, TimestampAuthority, verify


def make_packages(output, **environment):
    return subprocess.run(
        [ROOT / "packaging" / "make_packages.sh", program_file(), VERSION, output],
        env={**os.environ, **{name: str(value) for name, value in environment.items()}},
        capture_output=True,
        text=True,
        check=False,
    )


class Signed:
    def __init__(self, folder):
        self.signer = Identity(folder, "signer", "codeSigning")
        self.authority = TimestampAuthority(folder)
        self.packages = folder / "packages"
        self.certificate, self.password = self.signer.pack(PASSWORD)
        result = make_packages(
            self.packages,
            QUILLMONT_CERTIFICATE=self.certificate,
            QUILLMONT_CERTIFICATE_PASSWORD_FILE=self.password,
            QUILLMONT_TIMESTAMP_URL=self.authority.url,
        )
        assert result.returncode == 0, result.stderr

    def verify(self, file):
        return verify(file, self.signer, self.authority.identity)


@pytest.fixture(scope="module")
def signed(tmp_path_factory):
    signed = Signed(tmp_path_factory.mktemp("signed"))
    yield signed
    signed.authority.close()


def test_program_uninstaller_and_installer_are_signed(signed, installation, monkeypatch):
    monkeypatch.setenv("QUILLMONT_PACKAGES", str(signed.packages))
    assert installation.install() == 0
    zipped = unpack(drive_c() / "signed") / "Quillmont.exe"
    for file in (package("setup.exe"), zipped, installation.program, installation.folder / "uninstall.exe"):
        valid, report = signed.verify(file)
        assert valid, f"{file}: {report}"
        assert "Timestamp Server Signature verification: ok" in report, report
    # The program, which is the same in zip and installer, the installer and the uninstaller.
    assert signed.authority.answered == 3


def test_the_signature_of_a_changed_file_is_invalid(signed, tmp_path):
    changed = tmp_path / "changed.exe"
    octets = bytearray((signed.packages / package("setup.exe").name).read_bytes())
    octets[len(octets) // 2] ^= 1
    changed.write_bytes(octets)
    assert not signed.verify(changed)[0]


def test_without_a_certificate_nothing_is_signed(signed, tmp_path):
    for file in (package("setup.exe"), unpack(tmp_path / "zip") / "Quillmont.exe"):
        valid, report = signed.verify(file)
        assert not valid
        assert "No signature found" in report, report


def test_a_certificate_that_cannot_be_used_makes_no_packages(signed, tmp_path):
    wrong = tmp_path / "wrong"
    wrong.write_text("wrong")
    for environment in (
        {"QUILLMONT_CERTIFICATE": tmp_path / "missing.p12"},
        {"QUILLMONT_CERTIFICATE": signed.certificate, "QUILLMONT_CERTIFICATE_PASSWORD_FILE": wrong},
    ):
        result = make_packages(tmp_path / "packages", **environment)
        assert result.returncode != 0
        assert result.stderr
        assert not list((tmp_path / "packages").glob("Quillmont-*"))
