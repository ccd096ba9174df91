#!/usr/bin/env bash
# Configures a preset and builds it, or only the targets named. Usage: scripts/build.sh PRESET [TARGET...]
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")/.."

preset="$1"
shift
mkdir -p build
# What CMake finds on the way interests nobody unless it fails.
if ! cmake --preset "$preset" >"build/configure-$preset.log" 2>&1; then
    cat "build/configure-$preset.log" >&2
    exit 1
fi
echo "Building $preset..."
cmake --build --preset "$preset" ${1:+--target "$@"}
