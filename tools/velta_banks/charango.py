"""The charango: five double courses of nylon over a small body, plucked and strummed with nails.

Four courses are pairs in unison. The third is E5 with an E4 beside it, the lowest string of all, so
that the lowest notes of the instrument sound together with their octave.
"""

from velta_banks.strings import Body, Course, Pluck, plucked
from velta_banks.units import Samples, key_hz

#: Up to here notes are to be had only on the octave course: the next open string is G4.
_OCTAVE_COURSE_TOP = 66

_BODY_MODES = [(238.0, 10.0, 0.5), (425.0, 14.0, 1.0), (610.0, 16.0, 1.0), (880.0, 16.0, 0.9),
               (1250.0, 10.0, 1.4), (1900.0, 6.0, 2.6), (2900.0, 4.0, 3.6), (4300.0, 3.5, 3.4)]

_SOFT_HZ = 7500.0
_HARD_HZ = 14000.0

#: Two strings of a pair never agree; their mean is in tune.
_APART_CENTS = 1.6


def fall(key: int) -> float:
    """Seconds in which the last of a key's tone falls by 60 dB."""
    return 4.4 * 2.0 ** ((64 - key) / 40.0)


#: Seconds by which the nail reaches the second string later.
_LATE = 0.004


def _courses(key: int) -> list[Course]:
    late = round(_LATE * key_hz(key))
    if key <= _OCTAVE_COURSE_TOP:
        return [Course(), Course(semitones=12.0, detune_cents=1.2, late_periods=late,
                                 amplitude=0.3)]
    return [Course(detune_cents=-_APART_CENTS),
            Course(detune_cents=_APART_CENTS, late_periods=late, amplitude=0.95)]


def note(key: int, hard: bool) -> Samples:
    """Both strings of the key's course, the second a moment after the first."""
    pluck = Pluck(place=0.085 if hard else 0.12, softness_hz=_HARD_HZ if hard else _SOFT_HZ,
                  stiffness=5e-5 * 2.0 ** ((key - 64) / 12.0), fall=fall(key), loss=(0.5, 0.1))
    body = Body(_BODY_MODES, knock_fall=0.09, knock=0.2 if hard else 0.12,
                nail=0.2 if hard else 0.07)
    return plucked(key, _courses(key), pluck, body, 0.58 * fall(key), 20)
