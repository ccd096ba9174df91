#!/usr/bin/env bash
# Builds the program and makes the packages for download in dist/: the zip, the installer, SHA256SUMS and the
# release notes. Installs the Debian packages that it needs. Two runs on the same Debian release make identical files,
# unless QUILLMONT_CERTIFICATE names a certificate to sign them with (packaging/sign.sh). For a release use Debian 13 or
# newer: its NSIS makes a safer installer (packaging/warn_of_old_nsis.sh).
# With --check-kit it makes only the check kit, a zip of tests for a real Windows machine.
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")"

if [[ ${1:-} == --check-kit ]]; then
    scripts/packages.sh build package
    scripts/build.sh windows all tests/kit/all
    packaging/make_check_kit.sh build/windows "$(packaging/read_version.sh)" dist
    ls dist/Quillmont-*-windows-check.zip
    exit
fi
scripts/packages.sh build package
scripts/build.sh windows Quillmont
packaging/make_packages.sh build/windows/Quillmont.exe "$(packaging/read_version.sh)" dist
echo "In dist/:"
cat dist/SHA256SUMS
