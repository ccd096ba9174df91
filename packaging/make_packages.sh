#!/usr/bin/env bash
# Makes the files for download from a built Quillmont.exe: the zip, the installer, SHA256SUMS and the release notes.
# Usage: packaging/make_packages.sh QUILLMONT.EXE VERSION FOLDER. Deletes older packages in FOLDER.
#
# The packages are reproducible: they do not depend on the clock, on paths or on the order of files in a folder. Only
# signing changes them (packaging/sign.sh).
set -euo pipefail

program="$(realpath "$1")"
version="$2"
mkdir -p "$3"
output="$(realpath "$3")"
for variable in QUILLMONT_CERTIFICATE QUILLMONT_CERTIFICATE_PASSWORD_FILE; do
    if [[ -n "${!variable:-}" ]]; then
        path="$(realpath --canonicalize-existing "${!variable}")"
        export "$variable=$path"
    fi
done
cd "$(dirname "${BASH_SOURCE[0]}")/.."

export TZ=UTC LC_ALL=C.UTF-8
# The date of all files in the packages. pandoc and makensis use it too.
day="$(packaging/read_release.sh day "$version")"
SOURCE_DATE_EPOCH="$(date --date="$day" +%s)"
export SOURCE_DATE_EPOCH
umask 022

scratch="$(mktemp -d)"
trap 'rm -rf "$scratch"' EXIT
content="$scratch/content"
mkdir "$content"

# Makes the files that are zipped, installed and uninstalled.
MakeContent() {
    install -m 644 "$program" "$content/Quillmont.exe"
    packaging/sign.sh "$content/Quillmont.exe"
    MakeGuide "$content/user-guide.html"
    MakeText CHANGELOG.md "$content/CHANGELOG.txt"
    MakeText THIRD-PARTY.txt "$content/THIRD-PARTY.txt"
    MakeNames "$content/standard-names.mib"
}

# One file with the three pages, their pictures and the style sheet.
MakeGuide() {
    pandoc docs/user-guide.md docs/installing.md docs/operating.md --lua-filter packaging/one-page.lua \
        --from gfm --to html5 \
        --no-highlight --standalone --self-contained --toc --toc-depth 2 \
        --resource-path docs --css packaging/user-guide.css \
        --metadata title="Quillmont PRO" --metadata subtitle="User guide, version $version" --metadata lang=en \
        --output "$1"
}

# With CR LF, as text files on Windows have.
MakeText() {
    sed 's/$/\r/' "$1" >"$2"
}

MakeNames() {
    python3 -B packaging/make_names.py packaging/standard_names.txt "$1"
}

MakeZip() {
    local zip="$output/Quillmont-$version-windows-x64.zip"
    rm -f "$zip"
    find "$content" -exec touch --no-dereference --date="@$SOURCE_DATE_EPOCH" {} +
    # -X: no owners or precise times. -D: no entries for folders.
    (cd "$content" && find . -type f -printf '%P\n' | LC_ALL=C sort | zip -q -9 -X -D -@ "$zip")
}

# Writes the macros that install and uninstall every file of the folder.
# shellcheck disable=SC2016  # makensis expands these variables
ListContent() {
    local names
    mapfile -t names < <(cd "$content" && find . -type f -printf '%P\n' | LC_ALL=C sort)
    echo '!macro InstallContent'
    printf '  File "${CONTENT}\\%s"\n' "${names[@]}"
    echo '!macroend'
    echo '!macro RemoveContent'
    printf '  Delete "$INSTDIR\\%s"\n' "${names[@]}"
    echo '!macroend'
}

MakeInstaller() {
    local installer="$output/Quillmont-$version-setup.exe"
    ListContent >"$scratch/content.nsh"
    makensis -V2 -WX -INPUTCHARSET UTF8 -DVERSION="$version" -DCONTENT="$content" \
        -DCONTENT_LIST="$scratch/content.nsh" -DSIGN="$PWD/packaging/sign.sh" -DOUTPUT="$installer" \
        packaging/installer.nsi
    packaging/sign.sh "$installer"
}

rm -f "$output"/Quillmont-*.zip "$output"/Quillmont-*-setup.exe "$output/SHA256SUMS" "$output"/release-notes-*.md
MakeContent
MakeZip
MakeInstaller
(cd "$output" && sha256sum Quillmont-* >SHA256SUMS)
packaging/read_release.sh notes "$version" >"$output/release-notes-$version.md"
warning="$(packaging/warn_of_old_nsis.sh)"
if [[ -n "$warning" ]]; then
    printf '\n%s\n' "$warning" | tee -a "$output/release-notes-$version.md" >&2
fi
