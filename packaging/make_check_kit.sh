#!/usr/bin/env bash
# Packs what proves the program on a real Windows machine: its test programs, the program, and a runner for all.
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
# The test programs that the build makes now; its folder may still hold others that it made once.
readarray -t programs < <(ninja -C "$build" -t targets all |
    sed -nE 's,^((tests/quillmont_[a-z_]+_tests|tests/kit/quillmont_[a-z_]+|fuzz/quillmont_corpus_replay)\.exe): .*,\1,p')
(cd "$build" && cp Quillmont.exe "${programs[@]}" "$kit/programs")
cp -r fuzz/corpus "$kit/programs/corpus"
# The lines of the guide that PowerShell can try, each as a script of the name that the page gives it.
PYTHONPATH=tests /usr/bin/python3 -B - "$kit/programs" <<'SCRIPT'
import sys
from pathlib import Path

from harness.guide import powershell_checks

for name, lines in powershell_checks().items():
    (Path(sys.argv[1]) / f"{name}.ps1").write_text(lines, encoding="utf-8-sig", newline="\r\n")
SCRIPT
rm -f "$output/Quillmont-$version-windows-check.zip"
(cd "$content" && zip -q -9 -X -r "$output/Quillmont-$version-windows-check.zip" .)
