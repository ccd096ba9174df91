#!/usr/bin/env bash
# Checks the C++ sources: their shape (clang-format, and the wrapping of comments), what clang-tidy says of what ships,
# or the direction of the includes between folders.
# Usage: scripts/check_style.sh format | tidy BUILD_FOLDER | arrows. Prints how to mend the shape.
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")/.."

Sources() {
    find "$@" -type f \( -name '*.cpp' -o -name '*.h' \) | sort
}

# clang-format leaves comments as they are: this sees to what it would otherwise see to.
CheckComments() {
    xargs awk -v limit=110 '
        function Report(fault) { print FILENAME ":" FNR ": " fault ":" $0; faults++ }
        FNR == 1 { inComment = 0 }
        length > limit && /\/\// { Report("comment longer than " limit " columns") }
        /^ *\/\/ *[^ ]+$/ && inComment { Report("comment line of one word") }
        { inComment = /^ *\/\/ *[^ ]/ }
        END { exit faults > 0 }'
}

CheckFormat() {
    local folders=(bench config core fuzz mib platform tests trap ui)
    if ! Sources "${folders[@]}" | CheckComments; then
        echo "To mend it: wrap the whole comment anew, so that its last line holds two words or more."
        return 1
    fi
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
    arrows) python3 -B scripts/check_arrows.py ;;
    *)
        sed -n '2,4s/^# //p' "$0"
        exit 2
        ;;
esac
