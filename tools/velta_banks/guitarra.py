"""The guitarra criolla: six single strings of nylon, the lower three of them wound."""

from velta_banks.strings import Body, Course, Pluck, plucked
from velta_banks.units import Samples

#: Keys from which a string is taken, and its stiffness: E A D wound, G B E plain.
_STRINGS = [(40, 3.5e-5), (45, 3.0e-5), (50, 3.0e-5), (55, 9.0e-5), (59, 6.0e-5), (64, 4.5e-5)]

#: The air in the box, the top, and the plates above it.
_BODY_MODES = [(101.0, 12.0, 0.9), (202.0, 16.0, 1.1), (281.0, 18.0, 0.8), (376.0, 20.0, 0.9),
               (489.0, 22.0, 0.6), (655.0, 22.0, 0.8), (890.0, 14.0, 0.9), (1480.0, 8.0, 0.9),
               (2400.0, 6.0, 0.8)]

_SOFT_HZ = 2500.0
_HARD_HZ = 6000.0


def _stiffness(key: int) -> float:
    """A stopped string is shorter, and stiffer by the square of it."""
    opened, stiffness = [string for string in _STRINGS if string[0] <= max(key, 40)][-1]
    return stiffness * 2.0 ** ((key - opened) / 6.0)


def fall(key: int) -> float:
    """Seconds in which the last of a key's tone falls by 60 dB."""
    return 5.3 * 2.0 ** ((40 - key) / 20.0)


def note(key: int, hard: bool) -> Samples:
    """The thumb over the sound hole when soft, the nail nearer to the bridge when hard."""
    pluck = Pluck(place=0.14 if hard else 0.21, softness_hz=_HARD_HZ if hard else _SOFT_HZ,
                  stiffness=_stiffness(key), fall=fall(key), loss=(1.1, 0.35))
    body = Body(_BODY_MODES, knock_fall=0.22, knock=0.22 if hard else 0.14,
                nail=0.12 if hard else 0.03)
    return plucked(key, [Course()], pluck, body, 0.84 * fall(key), 10)
