#!/usr/bin/env bash
# Configures a preset and builds it, or only the targets named. Usage: scripts/build.sh PRESET [TARGET...]
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")/.."

# RefuseForeign FOLDER...: fails if another user has built here, since that user's files cannot be overwritten.
RefuseForeign() {
    local foreign
    foreign="$(find "$@" ! -writable -print -quit 2>/dev/null || true)"
    if [[ -n "$foreign" ]]; then
        echo "$PWD/$foreign belongs to $(stat --format %U "$foreign"): remove $PWD/build, or build as that user." >&2
        exit 1
    fi
}

# CMake stores the absolute path of the sources, so a moved clone needs a new build.
RemoveMovedBuild() {
    local home
    home="$(sed -n 's/^CMAKE_HOME_DIRECTORY:INTERNAL=//p' "$1/CMakeCache.txt" 2>/dev/null || true)"
    if [[ -n "$home" && ! "$home" -ef . ]]; then
        echo "$1 was made in $home: removed it for a new build."
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
RemoveMovedBuild "build/$preset"
rm -f "build/configure-$preset.log"
# Shows CMake's output only if it fails.
if ! cmake --preset "$preset" >"build/configure-$preset.log" 2>&1; then
    cat "build/configure-$preset.log" >&2
    exit 1
fi
what="$(sed -n "/\"name\": \"$preset\"/{n;s/.*\"displayName\": \"\(.*\)\",/: \1/p}" CMakePresets.json)"
echo "Building $preset$what..."
# Ninja shows its progress on one line of a terminal, but prints a line for each file elsewhere.
quiet=()
if [[ ! -t 1 ]]; then
    quiet=(-- --quiet)
fi
cmake --build --preset "$preset" ${1:+--target "$@"} "${quiet[@]}"
