"""The bandoneón: every button opens a reed and its octave; no beating, a dry and nasal voice."""

from velta_banks.loops import loop_for
from velta_banks.reeds import Onset, Reed, Voice, note as reed_note
from velta_banks.units import Samples, key_hz

_LOOP_SECONDS = 1.3

#: From here upwards a note stands on the brighter right side.
_RIGHT_SIDE = 60

#: The left side sounds through its wooden box, the right side straight through the metal.
_LEFT_BOX = [(330.0, 2.5, 0.8), (850.0, 4.0, 1.0), (1700.0, 4.0, 0.4)]
_RIGHT_BOX = [(620.0, 2.5, 0.6), (1350.0, 4.0, 1.4), (3100.0, 3.5, 0.9)]


def _voice(key: int, hard: bool) -> Voice:
    right = key >= _RIGHT_SIDE
    bright = (3900.0 if hard else 2300.0) if right else (2700.0 if hard else 1500.0)
    return Voice(slope=0.6 if hard else 0.9, bright_hz=bright,
                 box=_RIGHT_BOX if right else _LEFT_BOX, air=0.008)


def note(key: int, hard: bool) -> tuple[Samples, int]:
    """A note with its octave, which drifts against it once in a loop."""
    loop = loop_for(key_hz(key), _LOOP_SECONDS)
    cycles = round(loop.cycles)
    reeds = [Reed(cycles, 1.0), Reed(2 * cycles + 1, 0.5)]
    # A large reed takes its time to speak.
    slow = 2.0 ** ((60 - key) / 36.0)
    onset = Onset(low=(0.025 if hard else 0.045) * slow, high=(0.03 if hard else 0.06) * slow,
                  bellows=0.92, swell=0.12, knock=0.16 if hard else 0.1)
    return reed_note(reeds, loop, _voice(key, hard), onset, 40 + int(hard))
