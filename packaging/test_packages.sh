#!/usr/bin/env bash
# Makes the packages of a built program twice, compares them octet for octet, and tries them under Wine.
# Usage: packaging/test_packages.sh QUILLMONT.EXE DRIVER.EXE STAND_INS [PYTEST ARGUMENT...]. STAND_INS is the folder with
# the programs of tests/packages.
set -euo pipefail

program="$(realpath "$1")"
QUILLMONT_DRIVER="$(realpath "$2")"
QUILLMONT_STAND_INS="$(realpath "$3")"
shift 3
cd "$(dirname "${BASH_SOURCE[0]}")/.."

folder="$(mktemp -d)"
trap 'rm -rf "$folder"' EXIT
version="$(packaging/read_version.sh)"

packaging/make_packages.sh "$program" "$version" "$folder/first"
# As another user elsewhere would: other clock, other language, other place, other rights.
cp "$program" "$folder/copy.exe"
(
    umask 077
    TZ=Asia/Tokyo LANG=de_DE.UTF-8 packaging/make_packages.sh "$folder/copy.exe" "$version" "$folder/other/second"
)
diff --recursive "$folder/first" "$folder/other/second"

QUILLMONT_EXE="$program"
# What the linker put into it.
QUILLMONT_LINK_MAP="${program%.exe}.map"
export QUILLMONT_EXE QUILLMONT_LINK_MAP QUILLMONT_DRIVER QUILLMONT_STAND_INS QUILLMONT_PACKAGES="$folder/first"
# Scratch folders here: pytest's own name for them is the user's, and who is nobody in particular is root in there.
scripts/run_on_private_desktop.sh \
    /usr/bin/python3 -B -m pytest -q --basetemp "$folder/pytest" tests/packages "$@"
