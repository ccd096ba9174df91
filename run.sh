#!/usr/bin/env bash
# Builds Quillmont, runs it under Wine, in a private network where the machine allows one, and sends it real traps; a
# fresh Debian 12 or 13 machine needs nothing beforehand.
#
# With a display its windows stand there until the main window is closed. Without one a virtual display shows them,
# and pictures of them are saved. Asks nothing, but for what sudo asks of an ordinary user when packages are missing,
# and leaves nothing running.
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")"

private=scripts/in_private_network.sh
"$private" --check
scripts/packages.sh build run
scripts/build.sh windows Quillmont quillmont_desktop_driver

# Asked from where the program will run: a display that is reached through the network is out of reach there.
if [[ -n "${DISPLAY:-}" ]] && ! "$private" xwd -root -silent >/dev/null 2>&1; then
    echo "The display $DISPLAY cannot be reached from a private network: a virtual one takes its place."
    unset DISPLAY
fi
exec "$private" scripts/show_receiver.sh
