#!/usr/bin/env bash
# Draws the icon in all sizes from resources/quillmont.svg. Usage: packaging/make_icon.sh [FILE.ICO]; without a file it
# replaces resources/quillmont.ico. Look at each size of the result: icotool --extract.
set -euo pipefail
output="$(realpath "${1:-$(dirname "${BASH_SOURCE[0]}")/../resources/quillmont.ico}")"
cd "$(dirname "${BASH_SOURCE[0]}")/.."

scripts/packages.sh icon
folder="$(mktemp -d)"
trap 'rm -rf "$folder"' EXIT

# The sizes that Explorer, the taskbar and the shortcuts use. Only the largest is stored as PNG.
small=()
for size in 16 24 32 48; do
    rsvg-convert --width "$size" --height "$size" resources/quillmont.svg --output "$folder/$size.png"
    small+=("$folder/$size.png")
done
rsvg-convert --width 256 --height 256 resources/quillmont.svg --output "$folder/256.png"
icotool --create --output "$output" "${small[@]}" --raw="$folder/256.png"
