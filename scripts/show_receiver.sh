#!/usr/bin/env bash
# Runs the program with real traps, on the display that DISPLAY names, until its main window is closed. Without a
# display it uses a virtual one and saves pictures of the windows. Called by run.sh, in a private network if the machine
# allows one.
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")/.."

source scripts/wine.sh

CleanUp() {
    StopWine
    StopDisplay
    RemoveTemporaryPrefix
}
trap CleanUp EXIT

# Lists the processes that were started with this prefix in their environment; this shell was started without it.
LeftBehind() {
    grep --files-with-matches --null-data --no-messages --line-regexp --fixed-strings \
        "WINEPREFIX=$WINEPREFIX" /proc/[0-9]*/environ || true
}

if [[ -n "${DISPLAY:-}" ]]; then
    show=(--until-closed)
    mkdir -p "$wine_folder"
    # Each run has its own network, and a prefix works in only one network at a time.
    exec 8>"$wine_folder/run.lock"
    if ! flock --nonblock 8; then
        echo "run.sh is already running; close its main window first." >&2
        exit 1
    fi
    UsePrefix "$wine_folder/run"
else
    show=()
    StartDisplay
    UseTemporaryPrefix
    StartDesktop
fi
code=0
/usr/bin/python3 -B scripts/show_receiver.py "${show[@]}" 8>&- || code=$?
CleanUp
left="$(LeftBehind)"
if [[ -n "$left" ]]; then
    echo "Still running: $left" >&2
    exit 1
fi
echo "No process was left behind."
exit "$code"
