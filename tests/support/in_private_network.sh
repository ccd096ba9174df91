#!/usr/bin/env bash
# Runs a native test program where ports 161 and 162 are its own.
exec "$(dirname "${BASH_SOURCE[0]}")/../../scripts/in_private_network.sh" "$@"
