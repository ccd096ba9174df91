#!/usr/bin/env bash
# Runs a command with the locale and PYTHONPATH of wine.sh, without a private desktop or network.
# Usage: with_harness.sh COMMAND [ARGUMENT...]
set -euo pipefail

source "$(dirname "${BASH_SOURCE[0]}")/wine.sh"
exec "$@"
