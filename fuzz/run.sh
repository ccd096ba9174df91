#!/usr/bin/env bash
# Runs all fuzzers or the named ones, two at a time, and reports executions, coverage and new findings.
# Usage: fuzz/run.sh MINUTES [FUZZER...]        (MINUTES is for each fuzzer, so all four need twice as long)
# The corpora grown by the fuzzers remain in build/fuzz/run for the next run. Exit code 1: there is a new finding.
set -euo pipefail

minutes="${1:-}"
if [[ ! $minutes =~ ^[0-9]+$ || $minutes -eq 0 ]]; then
    echo "Usage: fuzz/run.sh MINUTES [FUZZER...]" >&2
    exit 2
fi
shift
cd "$(dirname "${BASH_SOURCE[0]}")/.."
targets=(snmp_message mib_text file_text config_file)
for target in "$@"; do
    if [[ ! " ${targets[*]} " == *" $target "* ]]; then
        echo "There is no fuzzer $target. The fuzzers are: ${targets[*]}" >&2
        exit 2
    fi
done
if [[ $# -gt 0 ]]; then
    targets=("$@")
fi
run=build/fuzz/run

# Temporary files are in memory if possible.
scratch="$(mktemp -d -p "$([[ -w /dev/shm ]] && echo /dev/shm || echo "${TMPDIR:-/tmp}")")"
trap 'kill $(jobs -p) 2>/dev/null || true; rm -rf "$scratch"' EXIT
export TMPDIR="$scratch"
# A small quarantine: clearing a large one would take most of the time.
export ASAN_OPTIONS="quarantine_size_mb=8:${ASAN_OPTIONS:-}"

scripts/packages.sh build test check
scripts/build.sh fuzz

CountFindings() {
    find "$run/findings/$1" -type f | wc -l
}

# FuzzOne TARGET: writes its output to a file. It ends early at a finding, which goes to the findings folder.
FuzzOne() {
    "build/fuzz/fuzz/quillmont_$1_fuzz" "$run/corpus/$1" "fuzz/corpus/$1" \
        -dict="fuzz/dictionaries/$1.dict" -artifact_prefix="$run/findings/$1/" \
        -max_total_time=$((minutes * 60)) -timeout=10 -rss_limit_mb=1024 -print_final_stats=1 \
        >"$run/$1.log" 2>&1 || true
}

declare -A before
for target in "${targets[@]}"; do
    mkdir -p "$run/corpus/$target" "$run/findings/$target"
    before[$target]="$(CountFindings "$target")"
done

for ((index = 0; index < ${#targets[@]}; index += 2)); do
    for target in "${targets[@]:index:2}"; do
        echo "Fuzzing $target for $minutes min..."
        FuzzOne "$target" &
    done
    wait
done

findings=0
printf '\n%-14s %12s %9s %9s %9s\n' target executions coverage features findings
for target in "${targets[@]}"; do
    new=$(($(CountFindings "$target") - ${before[$target]}))
    findings=$((findings + new))
    # The last line of progress reads "#123 DONE cov: 389 ft: 1590 corp: ...".
    coverage="$(sed -nE 's/.* cov: ([0-9]+) ft: ([0-9]+) .*/\1 \2/p' "$run/$target.log" | tail -n 1)"
    executions="$(sed -n 's/^stat::number_of_executed_units: *//p' "$run/$target.log")"
    printf '%-14s %12s %9s %9s %9s\n' "$target" "${executions:-?}" "${coverage%% *}" "${coverage##* }" "$new"
done

if [[ $findings -gt 0 ]]; then
    echo "New findings are in $run/findings, the fuzzers' output in $run/*.log." >&2
    exit 1
fi
