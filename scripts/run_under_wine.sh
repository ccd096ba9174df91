#!/usr/bin/env bash
# Runs a Windows console program in a private network with a Wine prefix of its own. Returns the program's exit code.
# Usage: run_under_wine.sh PROGRAM.exe [ARGUMENT...]
set -euo pipefail

here="$(cd "$(dirname "${BASH_SOURCE[0]}")" && pwd)"
if [[ ${1:-} != --inside ]]; then
    exec "$here/in_private_network.sh" "$here/$(basename "$0")" --inside "$@"
fi
shift

source "$here/wine.sh"
trap 'StopWine; RemoveTemporaryPrefix' EXIT
unset DISPLAY
UseTemporaryPrefix
wine "$@" </dev/null
