#!/usr/bin/env bash
# Builds Quillmont, runs it under Wine, in a private network if the machine allows one, and sends it real traps.
# Needs no preparation on a fresh Debian 12 or 13 machine.
#
# With a display its windows stay open until the main window is closed. Without one it uses a virtual display and saves
# pictures of the windows. Asks nothing, except that sudo may ask an ordinary user for a password if packages are
# missing. Leaves nothing running.
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")"

private=scripts/in_private_network.sh
"$private" --check
scripts/packages.sh build run
scripts/build.sh windows Quillmont quillmont_desktop_driver

# Checked from where the program will run: a private network cannot reach a display on another machine.
if [[ -n "${DISPLAY:-}" ]] && ! "$private" xwd -root -silent >/dev/null 2>&1; then
    echo "The display $DISPLAY cannot be reached from a private network: using a virtual one."
    unset DISPLAY
fi
exec "$private" scripts/show_receiver.sh
