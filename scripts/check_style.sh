#!/usr/bin/env bash
# Checks the format of the C++ sources, the line length of documents and the length of files (format), runs clang-tidy
# on the shipped sources (tidy), or checks which folders include which others (includes).
# Usage: scripts/check_style.sh format | tidy BUILD_FOLDER | includes. Prints how to fix the format. Exit code 77: the
# installed clang-format is not of the version that the sources use.
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")/.."

Sources() {
    find "$@" -type f \( -name '*.cpp' -o -name '*.h' \) | sort
}

# Counts characters in any locale, by skipping UTF-8 continuation bytes. Tables and code blocks may be wider.
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

# Other versions of clang-format break some lines differently.
formatter_version=14

CheckFormat() {
    local folders=(bench fuzz src tests)
    if ! CheckDocuments; then
        echo "To fix it: rewrap the paragraph."
        return 1
    fi
    local sources tools
    readarray -t sources < <(Sources bench fuzz src)
    readarray -t tools < <(find bench fuzz packaging scripts -name '*.py' -o -name '*.sh')
    if ! CheckLengths 300 "${sources[@]}" || ! CheckLengths 250 "${tools[@]}"; then
        echo "To fix it: split the file."
        return 1
    fi
    local found
    found="$(clang-format --version | sed -n 's/.*version \([0-9]*\).*/\1/p')"
    if [[ $found != "$formatter_version" ]]; then
        echo "Skipped: clang-format $found is installed, but the format is that of $formatter_version (in Debian 12). The other checks passed."
        return 77
    fi
    if ! Sources "${folders[@]}" | xargs clang-format --dry-run --Werror; then
        echo "To fix it: find ${folders[*]} -name '*.cpp' -o -name '*.h' | xargs clang-format -i"
        return 1
    fi
    echo "clang-format: $(Sources "${folders[@]}" | wc -l) files are formatted."
}

# Prints the arguments, one per line, that make clang parse the Windows sources as the cross compiler does: with that
# compiler's headers. Those for the processor come last, so that clang uses its own.
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

# Only the shipped sources: the tests would double the time, and running them finds their faults. Files in the native
# build are checked with its options, all others as Windows sources.
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
        echo "clang-tidy: no warnings in $(wc -l <<<"$portable") portable files and $(wc -l <<<"$windows") of Windows."
    fi
    return $status
}

# Each module may include its own headers and those of the modules named here, as in docs/development/architecture.md.
declare -A may_include=(
    [platform]=""
    [core]="platform"
    [config]="core platform"
    [mib]="core platform"
    [trap]="config core mib platform"
    [ui]="config core mib platform trap"
    [app]="config core mib platform trap ui"
)
# The files that may use the system. All others are portable: no system or C headers, no conditional compilation.
may_use_windows='^src/(app/|platform/windows/|ui/(?!status_text|open_file_names))'
may_use_posix='^src/platform/posix/'

CheckIncludes() {
    local module found faults=""
    for module in "${!may_include[@]}"; do
        found="$(grep -rnE '^ *# *include "' "src/$module" |
            grep -vE "include \"(${module}${may_include[$module]:+|${may_include[$module]// /|}})/" || true)"
        faults+="${found:+$found: $module/ may not include this$'\n'}"
    done
    found="$(grep -rnE '^ *# *(include "platform/windows/|include <[^>]*\.h>|if|elif)' src |
        grep -vP "$may_use_windows|$may_use_posix" || true)"
    faults+="${found:+$found: portable code may not use this$'\n'}"
    if [[ -n $faults ]]; then
        printf '%s' "$faults"
        return 1
    fi
    echo "Includes: $(Sources src | wc -l) files include only what they may include."
}

case "${1:-}" in
    format) CheckFormat ;;
    tidy) CheckTidy "$2" ;;
    includes) CheckIncludes ;;
    *)
        sed -n '2,5s/^# //p' "$0"
        exit 2
        ;;
esac
