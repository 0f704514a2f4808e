"""Synthesises the banks of the recorded instruments as SoundFont 2 files."""
