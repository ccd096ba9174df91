#!/usr/bin/env bash
# Checks the C++ sources' shape (clang-format), or what clang-tidy says of the portable ones.
# Usage: scripts/check_style.sh format | tidy BUILD_FOLDER. Prints the command that mends the shape.
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")/.."

Sources() {
    find "$@" -type f \( -name '*.cpp' -o -name '*.h' \) | sort
}

CheckFormat() {
    local folders=(bench config core fuzz mib platform tests trap ui)
    if ! Sources "${folders[@]}" | xargs clang-format --dry-run --Werror; then
        echo "To mend it: find ${folders[*]} -name '*.cpp' -o -name '*.h' | xargs clang-format -i"
        return 1
    fi
    echo "clang-format: $(Sources "${folders[@]}" | wc -l) files have the right shape."
}

# Only what ships: the tests' own sources would double the time and find nothing that running them does not.
CheckTidy() {
    local build=$1
    local files
    files=$(Sources config core mib platform/posix platform/utf8.cpp trap | grep '\.cpp$' | grep -v '^core/win_main')
    xargs --max-procs=2 --max-args=6 clang-tidy -p "$build" --quiet --extra-arg=-Wno-unknown-warning-option <<<"$files" 2> >(grep -v 'warnings generated' >&2)
    echo "clang-tidy: nothing to say about $(wc -l <<<"$files") files."
}

case "${1:-}" in
    format) CheckFormat ;;
    tidy) CheckTidy "$2" ;;
    *)
        sed -n '2,3s/^# //p' "$0"
        exit 2
        ;;
esac
