#!/usr/bin/env bash
# Builds the program and makes the packages that people download, in dist/: the zip, the installer, SHA256SUMS and the
# release notes. A fresh Debian 12 or 13 machine needs nothing beforehand. Two runs on one Debian give the same octets,
# unless QUILLMONT_CERTIFICATE names what to sign them with (packaging/sign.sh).
# With --check-kit it makes instead the zip that proves the program on a real Windows machine.
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
