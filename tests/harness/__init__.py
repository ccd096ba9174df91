"""What starts Wine's programs, drives them and looks at what they wrote: for the desktop tests, the storms, the package
tests, the pictures and run.sh alike. scripts/wine.sh makes it importable."""
