#!/usr/bin/env bash
# Measures what storms do to the receiver, natively and as the Windows program under Wine, and holds every record
# against what was sent. Some minutes; with --long an hour and a half.
# Usage: bench/storm.sh [--long] [--before FOLDER] [PART...]; see bench/storm.sh --help.
exec "$(dirname "${BASH_SOURCE[0]}")/measure.sh" measure_storms.py "$@"
