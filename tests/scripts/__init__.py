"""Tests of what stands in `scripts/`."""
