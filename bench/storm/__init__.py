"""The parts of storm.sh."""
