#!/usr/bin/env bash
# Packs the program, its test programs and their runner into a zip for a real Windows machine.
# Usage: packaging/make_check_kit.sh BUILD_FOLDER VERSION FOLDER, where BUILD_FOLDER is one of the windows preset.
set -euo pipefail

build="$(realpath "$1")"
version="$2"
mkdir -p "$3"
output="$(realpath "$3")"
cd "$(dirname "${BASH_SOURCE[0]}")/.."

export TZ=UTC LC_ALL=C.UTF-8
umask 022
content="$(mktemp -d)"
trap 'rm -rf "$content"' EXIT
kit="$content/Quillmont-$version-windows-check"
mkdir -p "$kit/programs"

sed 's/$/\r/' packaging/check.cmd >"$kit/check.cmd"
sed 's/$/\r/' packaging/check_kit.txt >"$kit/READ-ME.txt"
# Asks ninja for the test programs: the folder may still contain programs that the build no longer makes.
readarray -t programs < <(ninja -C "$build" -t targets all |
    sed -nE 's,^((tests/quillmont_[a-z_]+_tests|tests/kit/quillmont_[a-z_]+|fuzz/quillmont_corpus_replay)\.exe): .*,\1,p')
(cd "$build" && cp Quillmont.exe "${programs[@]}" "$kit/programs")
cp -r fuzz/corpus "$kit/programs/corpus"
# The guide's PowerShell examples that can be run, each as a script with the name that the page gives it.
PYTHONPATH=tests /usr/bin/python3 -B - "$kit/programs" <<'SCRIPT'
import sys
from pathlib import Path

from harness.guide import powershell_checks

for name, lines in powershell_checks().items():
    (Path(sys.argv[1]) / f"{name}.ps1").write_text(lines, encoding="utf-8-sig", newline="\r\n")
SCRIPT
rm -f "$output/Quillmont-$version-windows-check.zip"
(cd "$content" && zip -q -9 -X -r "$output/Quillmont-$version-windows-check.zip" .)
