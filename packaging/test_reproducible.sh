#!/usr/bin/env bash
# Builds and packages the sources twice from scratch, in differently named folders, and compares the packages.
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

# Both before the first build, so that an edit during it affects neither.
first="$folder/first"
second="$folder/a/longer path/to the second"
CopySources "$first"
CopySources "$second"

(cd "$first" && ./package.sh >/dev/null)
(cd "$second" && umask 077 && TZ=Asia/Tokyo ./package.sh >/dev/null)
diff --recursive "$first/dist" "$second/dist"
cat "$first/dist/SHA256SUMS"
echo "Both builds made identical packages."
