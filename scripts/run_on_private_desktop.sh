#!/usr/bin/env bash
# Runs a command with its own private network, virtual display and Wine prefix (DISPLAY and WINEPREFIX are set), then
# removes them. Returns the command's exit code.
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
StartDesktop
"$@"
