"""The quena: an open flute without a mouthpiece, blown across a notch.

The jet drives the pipe with all harmonics, the fundamental foremost, and more of the upper ones
where it is blown harder (N. Fletcher and T. Rossing, "The Physics of Musical Instruments", 2nd ed.,
chapter 16). The turbulence of the jet is heard twice: as breath, and as the pipe answers it around
each of its modes (M.-P. Verge and A. Hirschberg, "Turbulence noise in flue instruments", ISMA
1995). A note begins with a chiff in which the second mode speaks before the first.

The recordings hold the tone alone. The player's vibrato is the bank's, so that it has one speed on
all keys, and the chiff is a sound of its own, so that a repeated note begins otherwise each time.
"""

import numpy as np

from velta_banks.loops import Loop, loop_for
from velta_banks.sf2 import Vibrato
from velta_banks.shapes import band, coloured_noise, fade_out, rise
from velta_banks.units import RATE, Indices, Samples, dice, key_hz, seconds

_LOOP_SECONDS = 1.15

#: The vibrato: it sets in while the note is young, swings the pitch and the loudness alike.
VIBRATO = Vibrato(hz=5.2, after=0.15, cents=25, decibels=2.0)

#: What no player holds still: slow turns of pitch and loudness within the loop.
_DRIFT_CENTS = 2.5
_DRIFT_LOUDNESS = 0.04

#: Seconds until the note loops.
_LOOP_FROM = 0.2

_CHIFF_SECONDS = 0.13
_CHIFF_FALL = 0.026
_SCOOP_FALL = 0.025

#: Width of a mode of the pipe, in Hz at 1 kHz.
_MODE_WIDTH_HZ = 45.0


def _harmonics(key: int, hard: bool) -> Samples:
    """Amplitudes of the harmonics; a high note has fewer of them."""
    low = np.array([1.0, 0.55, 0.4, 0.2, 0.15, 0.09, 0.06, 0.035, 0.02])
    numbers = np.arange(1, len(low) + 1)
    thinner = 2.0 ** (-(key - 67) / 40.0 * (numbers - 1))
    blown = 1.0 if hard else 0.62 ** (numbers - 1)
    hz = key_hz(key) * numbers
    return low * thinner * blown * (hz < 15000.0)


def _drift(loop: Loop, chance: np.random.Generator) -> Samples:
    """One loop of the breath's slow turns, -1 to 1, whole in the loop and without a mean."""
    turns = 2.0 * np.pi * np.arange(loop.count) / loop.count
    waves = [np.sin(count * turns + 2.0 * np.pi * chance.random()) for count in (1, 2, 3)]
    return np.asarray(np.sum(waves, axis=0) / 3.0)


def _phase(loop: Loop, drift: Samples, around: Indices, scoop_cents: float) -> Samples:
    """The way of the fundamental in turns of 2 pi, with the drift and the scoop of the onset."""
    steady = 2.0 * np.pi * loop.cycles * np.arange(len(around)) / loop.count
    swing = np.cumsum(drift - np.mean(drift)) * 2.0 * np.pi * loop.cycles / loop.count
    swing *= 2.0 ** (_DRIFT_CENTS / 1200.0) - 1.0
    times = seconds(len(around))
    scoop = (2.0 ** (scoop_cents / 1200.0) - 1.0) * 2.0 * np.pi * loop.cycles / loop.seconds
    scooped = scoop * _SCOOP_FALL * (1.0 - np.exp(-times / _SCOOP_FALL))
    scooped[round(_LOOP_FROM * RATE):] = scoop * _SCOOP_FALL
    return steady + swing[around] + scooped


def _breath_gains(key: float, count: int) -> Samples:
    """The jet's noise by frequency: a broad band, and the pipe's modes on top of it."""
    hz = np.fft.rfftfreq(count, 1.0 / RATE)
    gains = 0.35 * band(count, 900.0, 5500.0)
    base = key_hz(key)
    for number in range(1, 6):
        width = _MODE_WIDTH_HZ * np.sqrt(number * base / 1000.0)
        gains += band(count, 200.0, 5500.0) / (1.0 + ((hz - number * base) / width)**2)
    # Noise right at the pitch would beat with the tone.
    return gains * (1.0 - np.exp(-((hz - base) / (0.03 * base))**2))


def chiff(key: int, take: int, hard: bool) -> Samples:
    """The breath before the tone: an accent when hard, each take with its own colour and length."""
    chance = dice(key, 52, take, int(hard))
    count = round(_CHIFF_SECONDS * RATE)
    speaks = 12.0 if chance.random() < 0.6 else 19.0
    noise = coloured_noise(chance, count, _breath_gains(key + speaks, count))
    fall = _CHIFF_FALL * (0.6 + 0.8 * chance.random()) * (1.0 if hard else 1.3)
    swell = 0.003 + 0.007 * chance.random()
    return fade_out(noise * np.exp(-seconds(count) / fall) * rise(count, round(swell * RATE)), 0.04)


def note(key: int, hard: bool) -> tuple[Samples, int]:
    """A held tone and the first sample of its loop; the loop ends with the samples."""
    chance = dice(key, 50 + int(hard))
    loop = loop_for(key_hz(key), _LOOP_SECONDS)
    start = round(_LOOP_FROM * RATE)
    count = start + loop.count
    around = np.arange(count) % loop.count
    drift = _drift(loop, chance)
    scoop_cents = -(12.0 + 30.0 * chance.random())
    speaks = (0.035 if hard else 0.06) * (0.7 + 0.6 * chance.random())
    tone = _tone(key, hard, _phase(loop, drift, around, scoop_cents), speaks)
    tone *= 1.0 + _DRIFT_LOUDNESS * drift[around]
    breath = coloured_noise(chance, loop.count, _breath_gains(key, loop.count))[around]
    breath *= (0.075 if hard else 0.05) * rise(count, round(0.03 * RATE))
    return tone + breath, start


def _tone(key: int, hard: bool, phase: Samples, speaks: float) -> Samples:
    """The harmonics, each later than the one above it but for the fundamental's slow speech."""
    amplitudes = _harmonics(key, hard)
    total = np.zeros(len(phase))
    for number, amplitude in enumerate(amplitudes, start=1):
        span = speaks if number == 1 else 0.6 * speaks
        total += amplitude * rise(len(phase), round(span * RATE)) * np.sin(number * phase)
    return total / np.sqrt(np.sum(amplitudes**2) / 2.0)
