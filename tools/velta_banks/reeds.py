"""Free reeds: the acordeón and the bandoneón.

A free reed opens and shuts its slot once a period and puts out a train of smooth pulses: all
harmonics are there, they fall slowly up to a few kHz and steeply above it, and a harder pull on the
bellows lifts the upper ones (N. Fletcher and T. Rossing, "The Physics of Musical Instruments", 2nd
ed., section 13.6; L. Millot and C. Baumann, "A proposal for a minimal model of free reeds", Acta
Acustica 93, 2007). Harmonics of the steady sound are lines of a spectrum whose inverse transform is
exactly one loop; the attack is the same sound while its bands come up, the low ones first.
"""

from dataclasses import dataclass, replace

import numpy as np

from velta_banks.loops import Loop
from velta_banks.shapes import band, coloured_noise, resonances, rise
from velta_banks.units import RATE, Samples, Spectrum, dice, seconds

_HIGHEST_HZ = 14000.0

#: Bands that come up one after the other: their upper edge in Hz.
_BAND_EDGES = [0.0, 700.0, 2200.0, _HIGHEST_HZ]


#: Harmonics up to so many times the frequency above which they fall steeply count as strong.
_STRONG_REACH = 0.6


@dataclass(frozen=True)
class Reed:
    """One reed of a note: how many cycles it makes in the loop, and how strong it is."""

    cycles: int
    amplitude: float


@dataclass(frozen=True)
class Voice:
    """What a reed and its box sound like."""

    #: Power by which the harmonics fall, and the frequency above which they fall steeply.
    slope: float
    bright_hz: float
    #: Resonances of the box: (Hz, Q, height).
    box: list[tuple[float, float, float]]
    #: Amplitude of the air, of a sound of RMS 1.
    air: float


@dataclass(frozen=True)
class Onset:
    """How a note begins, in seconds."""

    #: Of the lowest and of the highest band.
    low: float
    high: float
    #: Part of its strength that the bellows have when the reed speaks, and until they have it all.
    bellows: float
    swell: float
    #: Amplitude of the key's knock, of a sound of RMS 1.
    knock: float


def touched(onset: Onset, chance: np.random.Generator) -> Onset:
    """The onset as one finger and one pull make it: no two notes begin alike."""
    sooner, harder = chance.random(2)
    return replace(onset, low=onset.low * (0.7 + 0.6 * sooner),
                   high=onset.high * (0.7 + 0.6 * sooner), knock=onset.knock * (0.6 + 0.8 * harder))


def _lines(reed: Reed, loop: Loop, voice: Voice, chance: np.random.Generator) -> Spectrum:
    """The spectrum of one reed over the loop."""
    base = reed.cycles / loop.seconds
    numbers = np.arange(1, max(int(_HIGHEST_HZ / base), 1) + 1)
    hz = base * numbers
    strengths = resonances(hz, voice.box) * numbers ** -voice.slope
    strengths /= 1.0 + (hz / voice.bright_hz)**3
    strengths[1:] *= 0.9 + 0.2 * chance.random(len(numbers) - 1)
    # Phases that rise with the square of the number spread the pulse over its period, so that
    # its crest stays low (M. Schroeder, IEEE Trans. Information Theory 16, 1970).
    strong = max(_STRONG_REACH * voice.bright_hz / base, 4.0)
    phases = np.pi * numbers**2 / strong + 0.5 * np.pi * chance.random(len(numbers))
    lines = np.zeros(loop.count // 2 + 1, dtype=np.complex128)
    lines[reed.cycles * numbers] = reed.amplitude * strengths * np.exp(1j * phases)
    return lines


def _bands(lines: Spectrum, loop: Loop) -> list[Samples]:
    hz = np.fft.rfftfreq(loop.count, 1.0 / RATE)
    edges = zip(_BAND_EDGES[:-1], _BAND_EDGES[1:])
    return [np.fft.irfft(np.where((hz >= low) & (hz < high), lines, 0.0), loop.count)
            for low, high in edges]


def _wavering(loop: Loop, chance: np.random.Generator) -> Samples:
    """The bellows are never still: a few slow waves, each whole in the loop."""
    turns = 2.0 * np.pi * np.arange(loop.count) / loop.count
    waves = [0.012 / count * np.sin(count * turns + 2.0 * np.pi * chance.random())
             for count in (1, 2, 3, 5)]
    return 1.0 + np.sum(waves, axis=0)


def steady(reeds: list[Reed], loop: Loop, voice: Voice,
           chance: np.random.Generator) -> list[Samples]:
    """One loop of the sounding reeds in bands, the lowest first; their sum has an RMS of 1."""
    lines = np.sum([_lines(reed, loop, voice, chance) for reed in reeds], axis=0)
    bands = _bands(lines, loop)
    size = float(np.sqrt(np.mean(np.sum(bands, axis=0)**2)))
    air = coloured_noise(chance, loop.count, band(loop.count, 1200.0, 5000.0))
    wavering = _wavering(loop, chance) / size
    parts = [part * wavering for part in bands]
    parts[-1] = parts[-1] + voice.air * air
    return parts


def note(reeds: list[Reed], loop: Loop, voice: Voice, onset: Onset,
         seed: int) -> tuple[Samples, int]:
    """A held note and the first sample of its loop; the loop ends with the samples."""
    chance = dice(reeds[0].cycles, seed)
    parts = steady(reeds, loop, voice, chance)
    start = round((max(onset.low, onset.high, onset.swell) + 0.01) * RATE)
    count = start + loop.count
    around = np.arange(count) % loop.count
    spans = np.linspace(onset.low, onset.high, len(parts))
    total = sum((part[around] * rise(count, round(span * RATE))
                 for part, span in zip(parts, spans)), np.zeros(count))
    total *= onset.bellows + (1.0 - onset.bellows) * rise(count, round(onset.swell * RATE))
    total[:start] += _knock(onset.knock, start, chance)
    return total, start


def _knock(amplitude: float, count: int, chance: np.random.Generator) -> Samples:
    """The key and its pallet: a dull knock that is over before the loop begins."""
    knock = coloured_noise(chance, count, band(count, 250.0, 2500.0))
    knock *= amplitude * np.exp(-seconds(count) / 0.012) * rise(count, 40)
    return knock * rise(count, round(0.03 * RATE))[::-1]
