"""Speaks to the author of a note."""

from __future__ import annotations

from . import music
from .model import Layer, Note, Rhythm, Variant
from .words import shown

_EPSILON = 1e-6


class Speaker:
    """Speaks of a note at the line that it was written in, and names variant, bar and position."""

    def __init__(self, rhythm: Rhythm, layer: Layer, variant: Variant) -> None:
        self.rhythm = rhythm
        self.layer = layer
        self.variant = variant

    def sound(self, note: Note) -> str:
        """The name of the note or of the drum."""
        if self.layer.percussion:
            return music.drum_name(note.pitch)
        return music.noise_name(note.pitch, self.layer.instrument) or music.note_name(note.pitch)

    def where(self, note: Note) -> str:
        """The note as the author finds it."""
        bar = int((note.home + _EPSILON) // self.rhythm.bar)
        return f"{self.variant.name}, compás {bar + 1}, {shown(note.home - bar * self.rhythm.bar)}"

    def error(self, note: Note, message: str) -> None:
        """A fault of this note."""
        self.rhythm.problems.error(note.line, f"{self.where(note)}: {message}")

    def warning(self, note: Note, message: str) -> None:
        """Advice about this note."""
        self.rhythm.problems.warning(note.line, f"{self.where(note)}: {message}")
