#!/usr/bin/env bash
# Configures a preset and builds it, or only the targets named. Usage: scripts/build.sh PRESET [TARGET...]
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")/.."

# RefuseForeign PLACE: what another user has built here cannot be gone on with.
RefuseForeign() {
    local foreign
    foreign="$(find "$@" ! -writable -print -quit 2>/dev/null || true)"
    if [[ -n "$foreign" ]]; then
        echo "$PWD/$foreign belongs to $(stat --format %U "$foreign"): remove $PWD/build, or go on as that user." >&2
        exit 1
    fi
}

# CMake holds on to the place where it was called first.
ForgetOtherPlace() {
    local home
    home="$(sed -n 's/^CMAKE_HOME_DIRECTORY:INTERNAL=//p' "$1/CMakeCache.txt" 2>/dev/null || true)"
    if [[ -n "$home" && ! "$home" -ef . ]]; then
        echo "$1 was made in $home: building it anew."
        rm -rf "$1"
    fi
}

preset="$1"
shift
mkdir -p build
RefuseForeign build -maxdepth 0
if [[ -e "build/$preset" ]]; then
    RefuseForeign "build/$preset"
fi
ForgetOtherPlace "build/$preset"
rm -f "build/configure-$preset.log"
# What CMake finds on the way interests nobody unless it fails.
if ! cmake --preset "$preset" >"build/configure-$preset.log" 2>&1; then
    cat "build/configure-$preset.log" >&2
    exit 1
fi
what="$(sed -n "/\"name\": \"$preset\"/{n;s/.*\"displayName\": \"\(.*\)\",/: \1/p}" CMakePresets.json)"
echo "Building $preset$what..."
# Ninja overwrites its line of progress where that is possible; elsewhere it would be a line for each file.
quiet=()
if [[ ! -t 1 ]]; then
    quiet=(-- --quiet)
fi
cmake --build --preset "$preset" ${1:+--target "$@"} "${quiet[@]}"
