"""Starts programs under Wine, drives them and reads their files: for the desktop tests, the bursts of bench/, the
package tests, the pictures and run.sh. scripts/wine.sh makes it importable."""
