#!/usr/bin/env bash
# Shows on a virtual display what the program does with real traps, and saves pictures of its windows.
# Called by run.sh, in a private network where one is to be had.
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")/.."

source scripts/wine.sh

CleanUp() {
    StopWine
    StopDisplay
    RemoveTemporaryPrefix
}
trap CleanUp EXIT

# Programs that still run in the prefix, by what they were started with; this shell is none of them.
LeftBehind() {
    grep --files-with-matches --null-data --no-messages --line-regexp --fixed-strings \
        "WINEPREFIX=$WINEPREFIX" /proc/[0-9]*/environ || true
}

StartDisplay
UseTemporaryPrefix
code=0
/usr/bin/python3 -B scripts/show_receiver.py || code=$?
CleanUp
left="$(LeftBehind)"
if [[ -n "$left" ]]; then
    echo "Still running: $left" >&2
    exit 1
fi
echo "No process was left behind."
exit "$code"
