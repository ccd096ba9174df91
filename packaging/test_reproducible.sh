#!/usr/bin/env bash
# Builds and packages the sources twice from scratch, in folders of different names, and compares the octets.
# Usage: packaging/test_reproducible.sh
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")/.."

folder="$(mktemp -d)"
trap 'rm -rf "$folder"' EXIT

# CopySources FOLDER: copies the sources as they are now, without the build folders.
CopySources() {
    mkdir -p "$1"
    tar --create --exclude=./build --exclude=./dist --exclude=./.git . | tar --extract --directory "$1" --touch
}

# Both before the first build, so that an edit meanwhile changes neither.
first="$folder/first"
second="$folder/a/longer way/to the second"
CopySources "$first"
CopySources "$second"

(cd "$first" && ./package.sh >/dev/null)
(cd "$second" && umask 077 && TZ=Asia/Tokyo ./package.sh >/dev/null)
diff --recursive "$first/dist" "$second/dist"
cat "$first/dist/SHA256SUMS"
echo "Both builds gave the same octets."
