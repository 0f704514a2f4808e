"""Where a written note goes when its loop is played over a chord of a song, as the program does it."""

from __future__ import annotations

from functools import cache

# Semitones of the scale of each mode that a song may have.
MODES = {
    "mayor": (0, 2, 4, 5, 7, 9, 11),
    "menor": (0, 2, 3, 5, 7, 8, 10),
    "dórico": (0, 2, 3, 5, 7, 9, 10),
    "lidio": (0, 2, 4, 6, 7, 9, 11),
}
DEGREES = range(1, 8)
# The keys of a song lie upward of C.
HIGHEST_KEY = 11

_STEP_OF = {distance: step for step, distance in enumerate(MODES["mayor"])}
_TRITONE = 6


@cache
def moved(pitch: int, mode: str, degree: int) -> int:
    """The pitch over a degree of a song in C of this mode; the key itself comes on top."""
    row = MODES[mode]
    octave, within = divmod(pitch, 12)
    if within in _STEP_OF:
        octaves, step = divmod(_STEP_OF[within] + degree - 1, 7)
        distance = row[step] + 12 * octaves
    else:
        distance = row[degree - 1] + within
    result = 12 * octave + distance
    while result - pitch > _TRITONE:
        result -= 12
    while pitch - result > _TRITONE:
        result += 12
    return result


@cache
def extent(pitch: int) -> tuple[int, int]:
    """The lowest and the highest pitch that a written one becomes in all keys, modes and degrees."""
    reached = [moved(pitch, mode, degree) for mode in MODES for degree in DEGREES]
    return min(reached), max(reached) + HIGHEST_KEY


@cache
def widest_leap(first: int, second: int) -> tuple[int, str, int]:
    """The widest interval that two successive notes become, and one mode and degree where they do."""
    return max(
        (abs(moved(first, mode, degree) - moved(second, mode, degree)), mode, degree)
        for mode in MODES for degree in DEGREES)
