#!/usr/bin/env bash
# Builds everything and runs every layer of the tests; a fresh Debian 12 or 13 machine needs nothing beforehand.
# Ends with CTest's summary, and with a code other than 0 when anything failed.
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")"

scripts/packages.sh build run test package icon
builds=(native tsan windows)
for build in "${builds[@]}"; do
    scripts/build.sh "$build"
done

# One CTest run over all builds.
for build in "${builds[@]}"; do
    echo "subdirs($build)"
done >build/CTestTestfile.cmake
ctest --test-dir build --output-on-failure --no-tests=error -j "$(nproc)" </dev/null
