"""What compare.sh holds side by side."""
