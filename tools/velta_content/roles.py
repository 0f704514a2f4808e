"""What a layer does in the mix, and how loud that is against the bass."""

from __future__ import annotations

from dataclasses import dataclass

from .model import Layer, Note

# Of a layer whose level lies within this many decibels of its target, nobody complains.
TOLERANCE_DB = 2.0


@dataclass(frozen=True)
class Role:
    """Decibels above the bass; drums are measured by their strokes, all else by its loudness."""

    target_db: float
    percussion: bool


ROLES = {
    "bajo": Role(0.0, False),
    "acordes": Role(-3.0, False),
    "fondo": Role(-6.0, False),
    "respuesta": Role(-2.5, False),
    "canto": Role(0.5, False),
    "tambor": Role(1.0, True),
    "toque": Role(-3.0, True),
    "platillo": Role(-8.0, True),
    "semilla": Role(-7.5, True),
}

_CYMBALS = frozenset((42, 44, 46, 51, 53, 59))
_SHAKERS = frozenset((69, 70))


def role_of(layer: Layer, note: Note) -> str:
    """The role of a note of the layer: in a drum kit, cymbals and shakers have their own."""
    if not layer.percussion or layer.role not in ("tambor", "toque"):
        return layer.role
    if note.pitch in _CYMBALS:
        return "platillo"
    return "semilla" if note.pitch in _SHAKERS else layer.role
