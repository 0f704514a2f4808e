"""The quena: an open flute without a mouthpiece, blown across a notch.

The jet drives the pipe with all harmonics, the fundamental foremost, and more of the upper ones
where it is blown harder (N. Fletcher and T. Rossing, "The Physics of Musical Instruments", 2nd ed.,
chapter 16). The turbulence of the jet is heard twice: as breath, and as the pipe answers it around
each of its modes (M.-P. Verge and A. Hirschberg, "Turbulence noise in flue instruments", ISMA
1995). A note begins with a chiff in which the second mode speaks before the first.
"""

import numpy as np

from velta_banks.loops import Loop, loop_for
from velta_banks.shapes import band, coloured_noise, rise
from velta_banks.units import RATE, Indices, Samples, dice, key_hz, seconds

_LOOP_SECONDS = 1.7
_VIBRATO_HZ = 5.0
_VIBRATO_CENTS = 7.0
_VIBRATO_LOUDNESS = 0.07

#: Seconds until the vibrato sets in, until it is whole, and until the note loops.
_VIBRATO_FROM = 0.22
_VIBRATO_WHOLE = 0.62
_LOOP_FROM = 0.65

_CHIFF_FALL = 0.03
_SCOOP_CENTS = -25.0
_SCOOP_FALL = 0.025

#: Width of a mode of the pipe, in Hz at 1 kHz.
_MODE_WIDTH_HZ = 45.0


def _harmonics(key: int, hard: bool) -> Samples:
    """Amplitudes of the harmonics; a high note is nearly a pure tone."""
    low = np.array([1.0, 0.5, 0.34, 0.15, 0.11, 0.06, 0.04, 0.022, 0.012])
    numbers = np.arange(1, len(low) + 1)
    thinner = 2.0 ** (-(key - 67) / 22.0 * (numbers - 1))
    blown = 1.0 if hard else 0.45 ** (numbers - 1)
    hz = key_hz(key) * numbers
    return low * thinner * blown * (hz < 15000.0)


def _vibrato(loop: Loop, chance: np.random.Generator) -> Samples:
    """One loop of the player's vibrato, -1 to 1 and never twice alike, whole turns in the loop."""
    turns = 2.0 * np.pi * np.arange(loop.count) / loop.count
    waves = round(_VIBRATO_HZ * loop.seconds)
    uneven = 0.25 * np.sin(turns + 2.0 * np.pi * chance.random())
    return (1.0 + uneven) * np.sin(waves * turns + 0.5 * np.sin(turns)) / 1.25


def _phase(loop: Loop, vibrato: Samples, around: Indices, entered: Samples) -> Samples:
    """The way of the fundamental in turns of 2 pi, with vibrato and the scoop of the onset."""
    steady = 2.0 * np.pi * loop.cycles * np.arange(len(around)) / loop.count
    bend = vibrato - np.mean(vibrato)
    swing = np.cumsum(bend) * 2.0 * np.pi * loop.cycles / loop.count
    swing *= 2.0 ** (_VIBRATO_CENTS / 1200.0) - 1.0
    times = seconds(len(around))
    scoop = (2.0 ** (_SCOOP_CENTS / 1200.0) - 1.0) * 2.0 * np.pi * loop.cycles / loop.seconds
    scooped = scoop * _SCOOP_FALL * (1.0 - np.exp(-times / _SCOOP_FALL))
    scooped[round(_LOOP_FROM * RATE):] = scoop * _SCOOP_FALL
    return steady + entered * swing[around] + scooped


def _breath_gains(key: int, count: int) -> Samples:
    """The jet's noise by frequency: a broad band, and the pipe's modes on top of it."""
    hz = np.fft.rfftfreq(count, 1.0 / RATE)
    gains = 0.35 * band(count, 900.0, 5500.0)
    base = key_hz(key)
    for number in range(1, 6):
        width = _MODE_WIDTH_HZ * np.sqrt(number * base / 1000.0)
        gains += band(count, 200.0, 5500.0) / (1.0 + ((hz - number * base) / width)**2)
    # Noise right at the pitch would beat with the tone.
    return gains * (1.0 - np.exp(-((hz - base) / (0.03 * base))**2))


def _chiff(key: int, count: int, chance: np.random.Generator) -> Samples:
    noise = coloured_noise(chance, count, _breath_gains(key + 12, count))
    return noise * np.exp(-seconds(count) / _CHIFF_FALL) * rise(count, round(0.006 * RATE))


def note(key: int, hard: bool) -> tuple[Samples, int]:
    """A held note and the first sample of its loop; the loop ends with the samples."""
    chance = dice(key, 50 + int(hard))
    loop = loop_for(key_hz(key), _LOOP_SECONDS)
    start = round(_LOOP_FROM * RATE)
    count = start + loop.count
    around = np.arange(count) % loop.count
    entered = np.concatenate([np.zeros(round(_VIBRATO_FROM * RATE)), rise(
        count, round((_VIBRATO_WHOLE - _VIBRATO_FROM) * RATE))])[:count]
    vibrato = _vibrato(loop, chance)
    tone = _tone(key, hard, _phase(loop, vibrato, around, entered))
    tone *= 1.0 + _VIBRATO_LOUDNESS * entered * vibrato[around]
    breath = coloured_noise(chance, loop.count, _breath_gains(key, loop.count))[around]
    breath *= (0.06 if hard else 0.045) * rise(count, round(0.03 * RATE))
    total = tone + breath
    total[:start] += (0.3 if hard else 0.2) * _chiff(key, start, chance) * rise(
        start, round(0.1 * RATE))[::-1]
    return total, start


def _tone(key: int, hard: bool, phase: Samples) -> Samples:
    """The harmonics, each later than the one above it but for the fundamental's slow speech."""
    amplitudes = _harmonics(key, hard)
    speaks = 0.05 if hard else 0.08
    total = np.zeros(len(phase))
    for number, amplitude in enumerate(amplitudes, start=1):
        span = speaks if number == 1 else 0.6 * speaks
        total += amplitude * rise(len(phase), round(span * RATE)) * np.sin(number * phase)
    return total / np.sqrt(np.sum(amplitudes**2) / 2.0)
