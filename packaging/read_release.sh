#!/usr/bin/env bash
# Prints the day of a version's release, or its section of CHANGELOG.md.
# Usage: packaging/read_release.sh day|notes VERSION
set -euo pipefail

change_log="$(dirname "${BASH_SOURCE[0]}")/../CHANGELOG.md"
# Followed by the day, in brackets.
heading="## $2 ("

case "$1" in
    day) found="$(sed -nE "s/^## ${2//./\\.} \(([0-9]{4}-[0-9]{2}-[0-9]{2})\)$/\1/p" "$change_log")" ;;
    notes)
        found="$(awk -v heading="$heading" '/^## / { inside = index($0, heading) == 1 } inside' "$change_log")"
        ;;
esac
if [[ -z "$found" ]]; then
    echo "CHANGELOG.md does not begin a section with: $heading<day>)" >&2
    exit 1
fi
echo "$found"
