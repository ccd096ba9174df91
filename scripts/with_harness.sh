#!/usr/bin/env bash
# Runs a command as every script here runs, in the same locale and with tests/harness where Python finds it, but on no
# desktop and in no network of its own. Usage: with_harness.sh COMMAND [ARGUMENT...]
set -euo pipefail

source "$(dirname "${BASH_SOURCE[0]}")/wine.sh"
exec "$@"
