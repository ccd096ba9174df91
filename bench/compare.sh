#!/usr/bin/env bash
# Runs Quillmont side by side with what an operator would run instead and with the floor programs of this folder, in
# turn, several rounds in one run, and prints a table of ratios. Installs the peers (Debian) and builds what it runs.
# Usage: bench/compare.sh [--rounds N] [--mibs FOLDER] [--traps N] [--only NAME,...]; see bench/compare.py --help.
# The figures of a run are left in build/bench/compare.json, from which bench/draw_performance.py draws.
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")/.."

if [[ ${1:-} == --inside ]]; then
    shift
    source scripts/wine.sh
    trap 'StopWine; StopDisplay; RemoveTemporaryPrefix' EXIT
    StartDisplay
    UseTemporaryPrefix
    # Stays between two programs: one that starts while the server of the last is ending can hang.
    wineserver -p
    python3 -B bench/compare.py "$@"
    exit
fi

scripts/packages.sh build run bench
if [[ -z ${QUILLMONT_BENCH_BUILT:-} ]]; then
    scripts/build.sh bench bench/all quillmont_storm_receiver
    scripts/build.sh bench-windows Quillmont bench/all
fi
exec scripts/in_private_network.sh bench/compare.sh --inside "$@"
