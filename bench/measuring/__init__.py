"""What both commands of this folder measure with."""
