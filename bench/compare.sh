#!/usr/bin/env bash
# Measures Quillmont side by side with snmptrapd, with the floor programs of this folder and, if wanted, with an earlier
# state of itself, in alternating rounds, and prints a table of ratios.
# Usage: bench/compare.sh [--rounds N] [--before FOLDER] [--only NAME,...]; see bench/compare.sh --help.
exec "$(dirname "${BASH_SOURCE[0]}")/measure.sh" compare.py "$@"
