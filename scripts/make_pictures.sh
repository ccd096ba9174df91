#!/usr/bin/env bash
# Makes the pictures of the user guide and README.md (docs/pictures/) with the real program and real traps.
# Usage: scripts/make_pictures.sh. Builds the program if needed. Asks nothing and leaves nothing running.
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")/.."

if [[ ${1:-} != --inside ]]; then
    scripts/packages.sh build run picture
    scripts/build.sh windows Quillmont quillmont_desktop_driver
    exec scripts/in_private_network.sh scripts/make_pictures.sh --inside
fi

source scripts/wine.sh
trap 'StopWine; StopDisplay; RemoveTemporaryPrefix' EXIT
StartDisplay
UseTemporaryPrefix

# The devices that make_pictures.py sends as, and the forwarding target.
for address in 10.20.0.5 10.20.0.7 10.20.0.11 10.20.0.40; do
    PATH="$PATH:/usr/sbin:/sbin" ip address add "$address/32" dev lo
done

# Set before the first program runs: flat frames and title bars like those of Windows 10, and the data folder of a user
# called Operator. 360 twips are 24 pixels; CaptionFont is a LOGFONTW: Segoe UI, 12 pixels high, weight 400.
cat >>"$WINEPREFIX/user.reg" <<'REGISTRY'

[Software\\Microsoft\\Windows\\CurrentVersion\\Explorer\\User Shell Folders] 1
"Local AppData"="C:\\Users\\Operator\\AppData\\Local"

[Control Panel\\Desktop] 1
"FontSmoothing"="2"
"FontSmoothingType"=dword:00000001

[Control Panel\\Desktop\\WindowMetrics] 1
"CaptionHeight"="-360"
"CaptionWidth"="-360"
"CaptionFont"=hex:f4,ff,ff,ff,00,00,00,00,00,00,00,00,00,00,00,00,90,01,00,00,00,00,00,00,00,00,00,00,\
  53,00,65,00,67,00,6f,00,65,00,20,00,55,00,49,00,00,00,00,00,00,00,00,00,00,00,00,00,00,00,00,00,00,00,00,00,\
  00,00,00,00,00,00,00,00,00,00,00,00,00,00,00,00,00,00,00,00,00,00,00,00,00,00,00,00,00,00,00,00

[Control Panel\\Colors] 1
"Background"="226 230 236"
"ActiveTitle"="255 255 255"
"GradientActiveTitle"="255 255 255"
"TitleText"="0 0 0"
"InactiveTitle"="255 255 255"
"GradientInactiveTitle"="255 255 255"
"InactiveTitleText"="70 70 70"
"ButtonFace"="255 255 255"
"ButtonHilight"="255 255 255"
"ButtonLight"="160 160 160"
"ButtonShadow"="225 225 225"
"ButtonDkShadow"="160 160 160"
"ActiveBorder"="255 255 255"
"InactiveBorder"="255 255 255"
REGISTRY
mkdir -p "$WINEPREFIX/drive_c/users/Operator/AppData/Local"
# Windows spells it Users, Wine users. The harness uses the spelling in the registry.
ln -s users "$WINEPREFIX/drive_c/Users"

StartDesktop
/usr/bin/python3 -B scripts/make_pictures.py
