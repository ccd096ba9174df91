#!/usr/bin/env bash
# Measures what storms do to the receiver: natively and as the Windows program under Wine, in a private network.
# Usage: tests/storm/run.sh [--long]. Some minutes; with --long the sustained load lasts ten minutes for each of
# the two instead of 20 seconds.
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")/../.."

scripts/packages.sh build run
scripts/build.sh windows Quillmont quillmont_desktop_driver quillmont_desktop_spy quillmont_storm_receiver
# Without sanitizers: they would be what is measured.
cmake -G Ninja -S . -B build/storm -DCMAKE_BUILD_TYPE=Release >build/configure-storm.log
cmake --build build/storm --target quillmont_storm_receiver quillmont_storm_sender

export QUILLMONT_EXE="$PWD/build/windows/Quillmont.exe"
export QUILLMONT_DRIVER="$PWD/build/windows/tests/desktop/quillmont_desktop_driver.exe"
export QUILLMONT_RECEIVER="$PWD/build/storm/tests/storm/quillmont_storm_receiver"
export QUILLMONT_RECEIVER_EXE="$PWD/build/windows/tests/storm/quillmont_storm_receiver.exe"
export QUILLMONT_SENDER="$PWD/build/storm/tests/storm/quillmont_storm_sender"
exec scripts/run_on_private_desktop.sh /usr/bin/python3 -B tests/storm/measure.py "$@"
