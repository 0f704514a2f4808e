"""The guitarra criolla: six single strings of nylon, the lower three of them wound.

Two noises of the hand belong to it: the golpe, fingers on the top, and the chasquido, nails and
palm that strike all strings and stop them at once.
"""

import numpy as np

from velta_banks.shapes import band, coloured_noise, fade_out, ringing, rise, without_offset
from velta_banks.strings import Body, Course, Pluck, plucked
from velta_banks.units import RATE, Samples, dice, key_hz, seconds

#: Keys from which a string is taken, and its stiffness: E A D wound, G B E plain.
_STRINGS = [(40, 3.5e-5), (45, 3.0e-5), (50, 3.0e-5), (55, 9.0e-5), (59, 6.0e-5), (64, 4.5e-5)]

#: The air in the box, the top, and the plates above it.
_BODY_MODES = [(101.0, 12.0, 0.9), (202.0, 16.0, 1.1), (281.0, 18.0, 0.8), (376.0, 20.0, 0.9),
               (489.0, 22.0, 0.6), (655.0, 22.0, 0.9), (890.0, 12.0, 1.4), (1480.0, 6.0, 1.9),
               (2400.0, 4.0, 2.0), (3700.0, 4.0, 1.5)]

_SOFT_HZ = 4200.0
_HARD_HZ = 10000.0

#: Where the open string is plucked, as a part of its length: over the sound hole when soft, nearer
#: to the bridge when hard.
_SOFT_PLACE = 0.18
_HARD_PLACE = 0.125

_NOISE_FADE = 0.08


def _string(key: int) -> tuple[int, float]:
    """The open key of the string that plays a key, and its stiffness."""
    return [string for string in _STRINGS if string[0] <= max(key, 40)][-1]


def _stiffness(key: int) -> float:
    """A stopped string is shorter, and stiffer by the square of it."""
    opened, stiffness = _string(key)
    return stiffness * 2.0 ** ((key - opened) / 6.0)


def place(key: int, hard: bool) -> float:
    """The part of the sounding length at which it is plucked; the hand stays where it is."""
    opened, _ = _string(key)
    return (_HARD_PLACE if hard else _SOFT_PLACE) * 2.0 ** ((key - opened) / 12.0)


def fall(key: int) -> float:
    """Seconds in which the last of a key's tone falls by 60 dB."""
    return 5.4 * 2.0 ** ((40 - key) / 56.0)


def note(key: int, hard: bool) -> Samples:
    """The thumb over the sound hole when soft, the nail nearer to the bridge when hard."""
    pluck = Pluck(place=place(key, hard), softness_hz=_HARD_HZ if hard else _SOFT_HZ,
                  stiffness=_stiffness(key), fall=fall(key), loss=(0.7, 0.18))
    body = Body(_BODY_MODES, knock_fall=0.22, knock=0.22 if hard else 0.14,
                nail=0.12 if hard else 0.04)
    return plucked(key, [Course()], pluck, body, 0.5 * fall(key), 10)


def golpe(take: int, hard: bool) -> Samples:
    """Two fingers on the top between bridge and sound hole; each take falls a little elsewhere."""
    chance = dice(12, take, int(hard))
    count = round(0.36 * RATE)
    modes = [(hz * (0.985 + 0.03 * chance.random()), 0.26 * (101.0 / hz) ** 0.45,
              height * (0.7 + 0.6 * chance.random()) * (1.0 if hard else (200.0 / hz) ** 0.35))
             for hz, _, height in _BODY_MODES]
    top = ringing(count, modes)
    top /= float(np.max(np.abs(top)))
    skin = coloured_noise(chance, count, band(count, 250.0, 4200.0 if hard else 1800.0))
    skin *= (0.42 if hard else 0.3) * np.exp(-seconds(count) / 0.007)
    late = round((0.009 + 0.006 * chance.random()) * RATE)
    total = top * rise(count, 40) + skin * rise(count, 20)
    total[late:] += 0.55 * total[:-late]
    return fade_out(without_offset(total), _NOISE_FADE)


def chasquido(take: int, hard: bool) -> Samples:
    """The nails run over the strings, and the palm stops them before they can sound."""
    chance = dice(13, take, int(hard))
    count = round(0.22 * RATE)
    total = np.zeros(count)
    gap = (0.0035 if hard else 0.005) * RATE
    for number, (opened, _) in enumerate(_STRINGS):
        start = round(gap * number * (0.8 + 0.4 * chance.random()))
        total[start:] += _stopped(opened, hard, count - start, chance)
    total /= float(np.max(np.abs(total)))
    slap = coloured_noise(chance, count, band(count, 350.0, 2600.0 if hard else 1500.0))
    start = round(5.0 * gap)
    total[start:] += 0.3 * (slap * np.exp(-seconds(count) / 0.016) * rise(count, 60))[:-start]
    return fade_out(without_offset(total), _NOISE_FADE)


def _stopped(opened: int, hard: bool, count: int, chance: np.random.Generator) -> Samples:
    """One string under the nail and at once under the palm: a scratch, and hardly a pitch."""
    scratch = coloured_noise(chance, count, band(count, 900.0, 7000.0 if hard else 3800.0))
    scratch *= np.exp(-seconds(count) / 0.006) * rise(count, 16)
    hz = key_hz(opened + 7.0 + chance.random())
    thud = ringing(count, [(number * hz, 0.09 / number, 0.5 / number) for number in (1, 2, 3, 5)])
    return (0.8 + 0.4 * chance.random()) * (scratch + thud * rise(count, 30))
