#!/usr/bin/env bash
# Makes the packages of a built program twice, compares them byte by byte, and tests them under Wine.
# Usage: packaging/test_packages.sh QUILLMONT.EXE DRIVER.EXE STUBS [PYTEST ARGUMENT...]. STUBS is the folder with the
# programs of tests/packages.
set -euo pipefail

program="$(realpath "$1")"
QUILLMONT_DRIVER="$(realpath "$2")"
QUILLMONT_STUBS="$(realpath "$3")"
shift 3
cd "$(dirname "${BASH_SOURCE[0]}")/.."

folder="$(mktemp -d)"
trap 'rm -rf "$folder"' EXIT
version="$(packaging/read_version.sh)"

packaging/make_packages.sh "$program" "$version" "$folder/first"
# With another time zone, language, folder and umask.
cp "$program" "$folder/copy.exe"
(
    umask 077
    TZ=Asia/Tokyo LANG=de_DE.UTF-8 packaging/make_packages.sh "$folder/copy.exe" "$version" "$folder/other/second"
)
diff --recursive "$folder/first" "$folder/other/second"

QUILLMONT_EXE="$program"
# Lists the linked libraries.
QUILLMONT_LINK_MAP="${program%.exe}.map"
export QUILLMONT_EXE QUILLMONT_LINK_MAP QUILLMONT_DRIVER QUILLMONT_STUBS QUILLMONT_PACKAGES="$folder/first"
# pytest's default folder is named after the user, who is root in the private network.
scripts/run_on_private_desktop.sh \
    /usr/bin/python3 -B -m pytest -q --basetemp "$folder/pytest" tests/packages "$@"
