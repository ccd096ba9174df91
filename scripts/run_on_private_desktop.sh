#!/usr/bin/env bash
# Runs a command in a private network with a virtual display and a Wine prefix of its own (sets DISPLAY and WINEPREFIX),
# and removes them afterwards. Returns the command's exit code.
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
