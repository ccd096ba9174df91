#!/usr/bin/env bash
# Prints how many test cases a CTest run had and why some were skipped.
# Usage: scripts/list_skipped.sh LAST_TEST.log
set -euo pipefail

tr -d '\r' <"$1" | awk '
    /^\[=+\] [0-9]+ tests? from .* ran\./ { cases += $2 }                 # GoogleTest
    /^[0-9]+ (passed|failed|skipped|error)s?,? .*in [0-9.]+s/ {           # pytest
        count = split($0, parts, ",")
        for (i = 1; i <= count; i++) { cases += parts[i] }
    }
    /: Skipped$/ { getline; skipped[$0]++; total++ }                      # GoogleTest
    sub(/^SKIPPED \[[0-9]+\] [^ ]+: /, "") { skipped[$0]++; total++ }     # pytest
    sub(/^Skipped: /, "") { skipped[$0]++; total++ }                      # our scripts
    END {
        printf "%d cases, %d skipped.\n", cases, total
        for (reason in skipped) { printf "  %d skipped: %s\n", skipped[reason], reason }
    }'
