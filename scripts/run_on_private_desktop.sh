#!/usr/bin/env bash
# Runs a command with a network, a virtual display and a Wine prefix of its own (DISPLAY and WINEPREFIX are set
# for it), clears everything away and returns the command's exit code.
# Usage: run_on_private_desktop.sh COMMAND [ARGUMENT...]
set -euo pipefail

here="$(cd "$(dirname "${BASH_SOURCE[0]}")" && pwd)"
if [[ ${1:-} != --inside ]]; then
    exec "$here/in_private_network.sh" "$here/$(basename "$0")" --inside "$@"
fi
shift

source "$here/wine.sh"
trap 'StopWine; StopDisplay; RemoveTemporaryPrefix' EXIT
StartDisplay
UseTemporaryPrefix
"$@"
