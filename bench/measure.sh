#!/usr/bin/env bash
# Builds the measured programs and runs a script of this folder on a private desktop. compare.sh and bursts.sh call it.
# Usage: measure.sh SCRIPT.py [ARGUMENT...]
# With QUILLMONT_BENCH_BUILT in the environment, builds nothing and measures the programs that are in build/.
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")/.."

scripts/packages.sh build run bench
if [[ -z ${QUILLMONT_BENCH_BUILT:-} ]]; then
    scripts/build.sh bench bench/all
    scripts/build.sh windows Quillmont bench/all quillmont_desktop_driver
fi
script=$1
shift
exec scripts/run_on_private_desktop.sh /usr/bin/python3 -B "bench/$script" "$@"
