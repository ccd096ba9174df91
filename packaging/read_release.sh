#!/usr/bin/env bash
# Prints a version's release date, or its section of CHANGELOG.md.
# Usage: packaging/read_release.sh day|notes VERSION
set -euo pipefail

change_log="$(dirname "${BASH_SOURCE[0]}")/../CHANGELOG.md"
# Followed by the date and a closing bracket.
heading="## $2 ("

case "$1" in
    day) found="$(sed -nE "s/^## ${2//./\\.} \(([0-9]{4}-[0-9]{2}-[0-9]{2})\)$/\1/p" "$change_log")" ;;
    notes)
        found="$(awk -v heading="$heading" '/^## / { inside = index($0, heading) == 1 } inside' "$change_log")"
        ;;
esac
if [[ -z "$found" ]]; then
    echo "CHANGELOG.md has no section with the heading: $heading<date>)" >&2
    exit 1
fi
echo "$found"
