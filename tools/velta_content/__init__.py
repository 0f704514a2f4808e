"""The authors' notation for rhythms, and the tools around it."""
