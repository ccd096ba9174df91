#!/usr/bin/env bash
# Turns a built Quillmont.exe into what people download: the zip, the installer and SHA256SUMS.
# Usage: packaging/make_packages.sh QUILLMONT.EXE VERSION FOLDER. FOLDER is emptied of older packages.
#
# The same sources give the same octets whenever and wherever this runs: no clock, no path and no order of a folder
# gets into any of them.
set -euo pipefail

program="$(realpath "$1")"
version="$2"
mkdir -p "$3"
output="$(realpath "$3")"
cd "$(dirname "${BASH_SOURCE[0]}")/.."

export TZ=UTC LC_ALL=C.UTF-8
# The date that everything in the packages bears; also pandoc and makensis ask for it.
export SOURCE_DATE_EPOCH=1767225600
umask 022

content="$(mktemp -d)"
trap 'rm -rf "$content"' EXIT

# Both pages in one file, pictures and style inside.
MakeGuide() {
    pandoc docs/user-guide.md docs/operating.md --lua-filter packaging/one-page.lua --from gfm --to html5 --no-highlight --standalone --self-contained --toc --toc-depth 2 \
        --resource-path docs --css packaging/user-guide.css \
        --metadata title="Quillmont PRO" --metadata subtitle="User guide, version $version" --metadata lang=en \
        --output "$content/user-guide.html"
}

# With CR LF, since it is read with whatever Windows opens a text file with.
MakeChangeLog() {
    sed 's/$/\r/' CHANGELOG.md >"$content/CHANGELOG.txt"
}

MakeNames() {
    python3 -B packaging/make_names.py packaging/standard_names.txt "$content/standard-names.mib"
}

MakeZip() {
    local zip="$output/Quillmont-$version-windows-x64.zip"
    rm -f "$zip"
    find "$content" -exec touch --no-dereference --date="@$SOURCE_DATE_EPOCH" {} +
    # -X: neither owners nor finer times. -D: no entries for folders.
    (cd "$content" && find . -type f -printf '%P\n' | LC_ALL=C sort | zip -q -9 -X -D -@ "$zip")
}

MakeInstaller() {
    makensis -V2 -WX -INPUTCHARSET UTF8 -DVERSION="$version" -DCONTENT="$content" \
        -DOUTPUT="$output/Quillmont-$version-setup.exe" packaging/installer.nsi
}

rm -f "$output"/Quillmont-*.zip "$output"/Quillmont-*-setup.exe "$output/SHA256SUMS"
install -m 644 "$program" "$content/Quillmont.exe"
MakeGuide
MakeChangeLog
MakeNames
MakeZip
MakeInstaller
(cd "$output" && sha256sum Quillmont-* >SHA256SUMS)
