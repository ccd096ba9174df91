#!/usr/bin/env bash
# Prints a warning for the release notes if makensis is older than 3.11: its installers have a security weakness.
# Prints nothing otherwise.
set -euo pipefail

version="$(makensis -VERSION)"
version="${version#v}"
# -V compares numbers: 3.9 comes before 3.11.
if [[ "$(printf '%s\n' 3.11 "$version" | sort -V | head -n 1)" != 3.11 ]]; then
    cat <<WARNING
Warning: this installer was made with NSIS $version.
While an installer made before NSIS 3.11 runs as SYSTEM, a local user can replace its files and gain SYSTEM's rights
(CVE-2025-43715). Do not deploy this one as SYSTEM: use the zip, or make the packages on Debian 13, which has NSIS 3.11.
WARNING
fi
