"""The bandoneón: every button opens a reed and its octave; no beating, a dry and nasal voice."""

from velta_banks.loops import loop_for
from velta_banks.reeds import Onset, Reed, Voice, note as reed_note, touched
from velta_banks.units import Samples, dice, key_hz

_LOOP_SECONDS = 1.02

#: Up to the first key a note stands on the left side, from the second one upwards on the right;
#: in between both sides are heard, so that a scale does not change its voice at one key.
_SIDES = (53, 67)

#: The left side sounds through its wooden box, the right side straight through the metal.
_LEFT_BOX = [(330.0, 2.5, 0.6), (850.0, 3.0, 1.0), (1700.0, 3.0, 0.8)]
_RIGHT_BOX = [(620.0, 2.5, 0.4), (1350.0, 3.0, 1.3), (3100.0, 3.0, 1.2)]


def right_share(key: int) -> float:
    """How much of a note comes from the right side, from 0 to 1."""
    left, right = _SIDES
    return min(max((key - left) / (right - left), 0.0), 1.0)


def _box(right: float) -> list[tuple[float, float, float]]:
    return ([(hz, quality, height * (1.0 - right)) for hz, quality, height in _LEFT_BOX]
            + [(hz, quality, height * right) for hz, quality, height in _RIGHT_BOX])


def _voice(key: int, hard: bool) -> Voice:
    right = right_share(key)
    dull, bright = (4600.0, 6800.0) if hard else (2800.0, 3900.0)
    return Voice(slope=0.2 if hard else 0.4, bright_hz=dull + right * (bright - dull),
                 box=_box(right), air=0.008)


def note(key: int, hard: bool) -> tuple[Samples, int]:
    """A note with its octave, which drifts against it once in a loop."""
    loop = loop_for(key_hz(key), _LOOP_SECONDS)
    cycles = round(loop.cycles)
    reeds = [Reed(cycles, 1.0), Reed(2 * cycles + 1, 0.5)]
    # A large reed takes its time to speak.
    slow = 2.0 ** ((60 - key) / 36.0)
    onset = Onset(low=(0.025 if hard else 0.045) * slow, high=(0.03 if hard else 0.06) * slow,
                  bellows=0.92, swell=0.09, knock=0.2 if hard else 0.12)
    return reed_note(reeds, loop, _voice(key, hard), touched(onset, dice(key, 41, int(hard))),
                     40 + int(hard))
