#!/usr/bin/env bash
# Checks the C++ sources: their shape (clang-format), the wrapping of documents, the length of files, what
# clang-tidy says of all that ships, or the direction of the includes between folders.
# Usage: scripts/check_style.sh format | tidy BUILD_FOLDER | arrows. Prints how to mend the shape. Ends with 77 where the
# formatter is not of the version that decides.
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")/.."

Sources() {
    find "$@" -type f \( -name '*.cpp' -o -name '*.h' \) | sort
}

# Columns are characters, whatever the locale: the octets that go on with one are not counted. Tables and blocks are as
# wide as what they hold.
CheckDocuments() {
    find . \( -name build -o -name dist -o -name '.?*' \) -prune -o -name '*.md' -print | sort |
        LC_ALL=C xargs awk -v limit=120 '
            FNR == 1 { inBlock = 0 }
            /^ *```/ { inBlock = !inBlock }
            inBlock || /^ *[|]/ { next }
            { line = $0; gsub(/[\200-\277]/, "", line) }
            length(line) > limit { print FILENAME ":" FNR ": longer than " limit " columns: " $0; faults++ }
            END { exit faults > 0 }'
}

# CheckLengths LIMIT FILE...
CheckLengths() {
    local limit=$1
    shift
    wc -l "$@" | awk -v limit="$limit" '
        $1 > limit && $2 != "total" { print $2 ": " $1 " lines, " limit " at most"; faults++ }
        END { exit faults > 0 }'
}

# Each version breaks some lines otherwise than the one before: one decides, and no other is asked.
deciding_formatter=14

CheckFormat() {
    local folders=(bench fuzz src tests)
    if ! CheckDocuments; then
        echo "To mend it: wrap the whole paragraph anew."
        return 1
    fi
    local sources tools
    readarray -t sources < <(Sources bench fuzz src)
    readarray -t tools < <(find bench fuzz packaging scripts -name '*.py' -o -name '*.sh')
    if ! CheckLengths 300 "${sources[@]}" || ! CheckLengths 250 "${tools[@]}"; then
        echo "To mend it: give what is a matter of its own a file of its own."
        return 1
    fi
    local found
    found="$(clang-format --version | sed -n 's/.*version \([0-9]*\).*/\1/p')"
    if [[ $found != "$deciding_formatter" ]]; then
        echo "Skipped: clang-format $found is here, and $deciding_formatter decides (Debian 12 has it). Documents and lengths are in shape."
        return 77
    fi
    if ! Sources "${folders[@]}" | xargs clang-format --dry-run --Werror; then
        echo "To mend it: find ${folders[*]} -name '*.cpp' -o -name '*.h' | xargs clang-format -i"
        return 1
    fi
    echo "clang-format: $(Sources "${folders[@]}" | wc -l) files have the right shape."
}

# How clang reads the sources that are Windows' own as the cross compiler does, an argument a line: with its headers,
# but behind clang's own for the processor.
WindowsArguments() {
    printf '%s\n' --target=x86_64-w64-mingw32 -std=c++20 -I"$PWD/src" -Wall -Wextra -Wshadow -Werror
    local folder
    x86_64-w64-mingw32-g++-posix -E -x c++ -v /dev/null 2>&1 | sed -n '/^#include </,/^End/s/^ //p' |
        while read -r folder; do
            case $folder in
                */include/c++*) printf '%s\n' -isystem "$folder" ;;
                */lib/gcc/*/x86_64-w64-mingw32/include) printf '%s\n' -idirafter "$folder" ;;
            esac
        done
}

# RunTidy COMPILATION_DATABASE FILES
RunTidy() {
    xargs --max-procs=2 --max-args=4 clang-tidy -p "$1" --quiet --extra-arg=-Wno-unknown-warning-option <<<"$2" \
        2> >(grep -vE 'warnings? generated|Processing file' >&2)
}

# Only what ships: the tests' own sources would double the time and find nothing that running them does not. What the
# native build compiles is read as it is compiled there, all the rest as Windows' own.
CheckTidy() {
    local build=$1 shipped portable windows status=0
    shipped=$(Sources src | grep '\.cpp$')
    if ! portable=$(sed -n "s|^ *\"file\": \"$PWD/\(.*\)\".*|\1|p" "$build/compile_commands.json" | grep -xF "$shipped"); then
        echo "$build/compile_commands.json names none of the shipped sources." >&2
        return 1
    fi
    windows=$(grep -vxF "$portable" <<<"$shipped")
    mkdir -p "$build/windows_sources"
    WindowsArguments >"$build/windows_sources/compile_flags.txt"
    RunTidy "$build" "$portable" || status=1
    RunTidy "$build/windows_sources" "$windows" || status=1
    if [[ $status -eq 0 ]]; then
        echo "clang-tidy: nothing to say about $(wc -l <<<"$portable") portable files and $(wc -l <<<"$windows") of Windows."
    fi
    return $status
}

# Each module includes its own headers and those of the modules named here; docs/development/architecture.md draws
# the same.
declare -A may_include=(
    [platform]=""
    [core]="platform"
    [config]="core platform"
    [mib]="core platform"
    [trap]="config core mib platform"
    [ui]="config core mib platform trap"
    [app]="config core mib platform trap ui"
)
# Where the system may be seen. All else is portable: no header of a system or of C, no conditional compilation.
sees_windows='^src/(app/|platform/windows/|ui/(?!status_text|open_file_names))'
sees_posix='^src/platform/posix/'

CheckArrows() {
    local module found faults=""
    for module in "${!may_include[@]}"; do
        found="$(grep -rnE '^ *# *include "' "src/$module" |
            grep -vE "include \"(${module}${may_include[$module]:+|${may_include[$module]// /|}})/" || true)"
        faults+="${found:+$found: $module/ may not include this$'\n'}"
    done
    found="$(grep -rnE '^ *# *(include "platform/windows/|include <[^>]*\.h>|if|elif)' src |
        grep -vP "$sees_windows|$sees_posix" || true)"
    faults+="${found:+$found: portable code$'\n'}"
    if [[ -n $faults ]]; then
        printf '%s' "$faults"
        return 1
    fi
    echo "Includes: $(Sources src | wc -l) files include only what their module may know."
}

case "${1:-}" in
    format) CheckFormat ;;
    tidy) CheckTidy "$2" ;;
    arrows) CheckArrows ;;
    *)
        sed -n '2,5s/^# //p' "$0"
        exit 2
        ;;
esac
