#!/usr/bin/env bash
# Builds Quillmont and runs it under Wine; a fresh Debian 12 machine needs nothing beforehand.
#
# With a display it shows the window and returns when the window is closed. Without one it shows on a virtual
# display what the program does with real traps (scripts/show_receiver.sh), asks nothing and leaves nothing running.
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")"

HasDisplay() {
    [[ -n "${DISPLAY:-}" ]] && xwd -root -silent >/dev/null 2>&1
}

scripts/packages.sh build run
scripts/build.sh windows Quillmont quillmont_desktop_driver

if ! HasDisplay; then
    unset DISPLAY
    if scripts/in_private_network.sh true 2>/dev/null; then
        exec scripts/in_private_network.sh scripts/show_receiver.sh
    fi
    exec scripts/show_receiver.sh
fi

source scripts/wine.sh
trap StopWine EXIT
UsePrefix "$wine_folder/run"
if [[ $EUID -ne 0 && "$(cat /proc/sys/net/ipv4/ip_unprivileged_port_start)" -gt 161 ]]; then
    echo "Only root may bind ports 161 and 162 here: the indicator will stay red. Try: sudo --preserve-env ./run.sh"
fi
echo "Quillmont runs until its window is closed. Its files: $WINEPREFIX/drive_c/users/*/AppData/Local/Quillmont"
wine build/windows/Quillmont.exe
