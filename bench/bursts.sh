#!/usr/bin/env bash
# Measures bursts, floods, kills and sustained load, natively and under Wine, and compares every record with the trap
# that was sent. Takes some minutes, with --long half an hour.
# Usage: bench/bursts.sh [--long] [--before FOLDER] [PART...]; see bench/bursts.sh --help.
exec "$(dirname "${BASH_SOURCE[0]}")/measure.sh" bursts.py "$@"
