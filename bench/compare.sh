#!/usr/bin/env bash
# Runs Quillmont side by side with what an operator would run instead, with the floor programs of this folder and with
# an earlier state of itself, in turn, several rounds in one run, and prints a table of ratios.
# Usage: bench/compare.sh [--rounds N] [--before FOLDER] [--mibs FOLDER] [--only NAME,...]; see bench/compare.sh --help.
# The figures of a run are left in build/bench/compare.json.
exec "$(dirname "${BASH_SOURCE[0]}")/measure.sh" compare.py "$@"
