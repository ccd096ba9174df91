#!/usr/bin/env bash
# Makes the pictures of the user guide and of README.md anew (docs/pictures/), from the real program with real traps.
# Usage: scripts/make_pictures.sh. Builds the program when needed; asks nothing and leaves nothing running.
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")/.."

if [[ ${1:-} != --inside ]]; then
    scripts/packages.sh build run picture
    scripts/build.sh windows Quillmont quillmont_desktop_driver quillmont_desktop_spy
    exec scripts/run_on_private_desktop.sh scripts/make_pictures.sh --inside
fi

# The pictures must not show who made them: the data folder of a user called Operator, whose registry says so
# before the first program runs.
cat >>"$WINEPREFIX/user.reg" <<'REGISTRY'

[Software\\Microsoft\\Windows\\CurrentVersion\\Explorer\\User Shell Folders] 1
"Local AppData"="C:\\users\\Operator\\AppData\\Local"

[Control Panel\\Desktop] 1
"FontSmoothing"="2"
"FontSmoothingType"=dword:00000001

[Control Panel\\Colors] 1
"Background"="226 230 236"
"ActiveTitle"="0 95 184"
"GradientActiveTitle"="0 95 184"
"TitleText"="255 255 255"
"InactiveTitle"="205 211 220"
"GradientInactiveTitle"="205 211 220"
"InactiveTitleText"="70 70 70"
REGISTRY
mkdir -p "$WINEPREFIX/drive_c/users/Operator/AppData/Local"

/usr/bin/python3 -B scripts/make_pictures.py
