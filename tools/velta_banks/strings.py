"""Plucked strings of nylon: the guitarra criolla and the charango.

A string is the sum of its modes, each a damped sine; this is what an ideal waveguide with losses
does, with every partial tuned and damped by itself:

* amplitude sin(k pi p) / k for a string plucked at the part p of its length (N. Fletcher and
  T. Rossing, "The Physics of Musical Instruments", 2nd ed., section 2.8), softened by the width of
  the finger;
* frequency k f sqrt(1 + B k^2) with the stiffness B (same, section 2.18), scaled so that the first
  partial is in tune;
* damping that grows with frequency, by the air and inside the nylon (C. Valette, "The mechanics of
  vibrating strings", in "Mechanics of Musical Instruments", 1995);
* two planes of vibration, one of which dies away sooner and stands a little higher (G. Weinreich,
  "Coupled piano strings", JASA 62, 1977).
"""

from dataclasses import dataclass

import numpy as np

from velta_banks.shapes import (band, coloured_noise, fade_out, resonances, rise, ringing,
                                without_offset)
from velta_banks.units import RATE, Samples, dice, key_hz, seconds

#: Part of a string's amplitude that vibrates along the top, and how soon the other dies away.
_SLOW_PLANE = 0.3
_FAST_LASTS = 0.6
_FAST_PLANE_CENTS = 0.4

_HIGHEST_HZ = 12000.0
_FADE = 0.45


@dataclass(frozen=True)
class Course:
    """One string of a plucked note."""

    semitones: float = 0.0
    detune_cents: float = 0.0
    #: Periods of the note by which it is plucked later: whole ones, or the pair would start out
    #: of step and sound thin.
    late_periods: int = 0
    amplitude: float = 1.0


@dataclass(frozen=True)
class Body:
    """What stands between a string and the listener."""

    #: (Hz, Q, height) of its resonances.
    modes: list[tuple[float, float, float]]
    #: Seconds in which they die away when knocked.
    knock_fall: float
    #: Amplitude of the knock and of the nail's noise, of a note of 1.
    knock: float
    nail: float


@dataclass(frozen=True)
class Pluck:
    """How a string is plucked, and how it is made."""

    place: float
    #: Above this the finger's width takes the partials away.
    softness_hz: float
    stiffness: float
    #: Seconds in which the slow plane of the first partial falls by 60 dB.
    fall: float
    #: Further damping per kHz and per kHz squared, in 1/s.
    loss: tuple[float, float]


def _partials(hz: float, stiffness: float) -> tuple[Samples, Samples]:
    """Numbers and frequencies of the partials that can be heard."""
    numbers = np.arange(1.0, _HIGHEST_HZ / hz + 1.0)
    bend = np.sqrt((1.0 + stiffness * numbers**2) / (1.0 + stiffness))
    frequencies = hz * numbers * bend
    kept = frequencies < _HIGHEST_HZ
    return numbers[kept], frequencies[kept]


def string(hz: float, pluck: Pluck, body: Body, count: int, chance: np.random.Generator) -> Samples:
    """One plucked string as it radiates from the body; its first partial has exactly `hz`."""
    numbers, frequencies = _partials(hz, pluck.stiffness)
    strengths = np.abs(np.sin(np.pi * pluck.place * numbers)) + 0.02
    strengths *= resonances(frequencies, body.modes) / numbers
    strengths /= 1.0 + (frequencies / pluck.softness_hz)**2
    strengths *= 0.85 + 0.3 * chance.random(len(numbers))
    khz = frequencies / 1000.0
    damping = 6.91 / pluck.fall + pluck.loss[0] * khz + pluck.loss[1] * khz**2
    # A body passes high partials on later than low ones; equal partials of two strings agree.
    phases = 2.0 * np.pi * (frequencies / 900.0)**1.5
    return _damped(frequencies, strengths, damping, phases, count)


def _damped(frequencies: Samples, strengths: Samples, damping: Samples, phases: Samples,
            count: int) -> Samples:
    times = seconds(count)
    fast = 2.0 ** (_FAST_PLANE_CENTS / 1200.0)
    total = np.zeros(count)
    for hz, strength, loss, phase in zip(frequencies, strengths, damping, phases):
        # Beyond the time in which a mode falls by 90 dB there is nothing to add.
        audible = min(count, int(10.4 / loss * RATE) + 1)
        angle = 2.0 * np.pi * hz * times[:audible]
        decay = np.exp(-loss * times[:audible])
        total[:audible] += strength * decay * (
            (1.0 - _SLOW_PLANE) * decay ** (1.0 / _FAST_LASTS - 1.0) * np.sin(fast * angle + phase)
            + _SLOW_PLANE * np.sin(angle + phase))
    return total


def _attack(body: Body, brightness_hz: float, count: int, chance: np.random.Generator) -> Samples:
    """The knock on the body and the noise of nail and finger, of peak about 1."""
    lowest = body.modes[0][0]
    knocked = ringing(count, [(hz, body.knock_fall * (lowest / hz) ** 0.5, height)
                              for hz, _, height in body.modes])
    knocked *= body.knock / max(float(np.max(np.abs(knocked))), 1e-9)
    burst = coloured_noise(chance, count, band(count, 700.0, brightness_hz))
    burst *= body.nail * np.exp(-seconds(count) / 0.004)
    return knocked + burst


def plucked(key: int, courses: list[Course], pluck: Pluck, body: Body, length: float,
            seed: int) -> Samples:
    """A note of one or more strings plucked by one finger, dying away within `length` seconds."""
    count = round(length * RATE)
    total = np.zeros(count)
    for course in courses:
        hz = key_hz(key + course.semitones + course.detune_cents / 100.0)
        start = round(course.late_periods / key_hz(key) * RATE)
        # One finger plucks them all alike.
        note = string(hz, pluck, body, count - start, dice(key, seed))
        total[start:] += course.amplitude * note * rise(count - start, round(0.0015 * RATE))
    total /= float(np.max(np.abs(total)))
    total += _attack(body, 2.0 * pluck.softness_hz, count, dice(key, seed + 1)) * rise(count, 20)
    return fade_out(without_offset(total, 30.0), _FADE)
