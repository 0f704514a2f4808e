"""The acordeón: two reeds of one pitch a little apart, whose beating is its voice."""

from velta_banks.loops import loop_of
from velta_banks.reeds import Onset, Reed, Voice, note as reed_note, touched
from velta_banks.units import Samples, dice, key_hz

_LOOP_SECONDS = 1.3

#: The sharp reed beside the flat one: were they equal, the tone would go out in every beat.
_SHARP = 0.55
_BOX = [(480.0, 2.0, 0.5), (1150.0, 3.0, 0.8), (2500.0, 3.0, 0.7)]


def beats(key: int) -> float:
    """Beats a second between the two reeds: tuners give high notes more."""
    return 2.4 * 2.0 ** ((key - 53) / 30.0)


def note(key: int, hard: bool) -> tuple[Samples, int]:
    """A note of both reeds; the centre of their power is the pitch."""
    times = round(beats(key) * _LOOP_SECONDS)
    above = times * _SHARP**2 / (1.0 + _SHARP**2)
    flat = round(key_hz(key) * _LOOP_SECONDS - above)
    loop = loop_of(flat + above, key_hz(key))
    voice = Voice(slope=0.3 if hard else 0.45, bright_hz=6200.0 if hard else 4200.0, box=_BOX,
                  air=0.012 if hard else 0.016)
    onset = touched(Onset(low=0.045 if hard else 0.07, high=0.06 if hard else 0.12,
                          bellows=0.72, swell=0.18, knock=0.07), dice(key, 31, int(hard)))
    reeds = [Reed(flat, 1.0), Reed(flat + times, _SHARP)]
    return reed_note(reeds, loop, voice, onset, 30 + int(hard))
