#!/usr/bin/env bash
# Prints the version number, which is defined in CMakeLists.txt.
set -euo pipefail
sed -n 's/^project(Quillmont VERSION \([0-9.]*\).*/\1/p' "$(dirname "${BASH_SOURCE[0]}")/../CMakeLists.txt"
