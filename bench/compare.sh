#!/usr/bin/env bash
# Compares Quillmont with snmptrapd, with the floor programs in this folder and optionally with an earlier build of
# itself, in alternating rounds, and prints a table of ratios.
# Usage: bench/compare.sh [--rounds N] [--before FOLDER] [--only NAME,...]; see bench/compare.sh --help.
exec "$(dirname "${BASH_SOURCE[0]}")/measure.sh" compare.py "$@"
