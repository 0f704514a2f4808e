"""Shades the layers of a recording, so that the colour of a note follows its velocity evenly.

Two recordings alone change colour at one velocity. A low pass that opens with the velocity leads
there from below, and takes the loud recording back to the colour of the soft one where they meet.
"""

import numpy as np

from velta_banks.levels import SPAN
from velta_banks.measure import centroid_of, power
from velta_banks.sf2 import Shade
from velta_banks.units import RATE, Samples, decibels, key_hz

#: A cutoff in cents at which nothing is taken away.
OPEN = 13500

#: How far the soft recording is shaded at velocity 0.
_SOFT_FALL = 3000

#: Seconds of a note whose colour counts.
_COLOUR_SPAN = 0.3

#: The low pass of the format without resonance.
_QUALITY = 10.0 ** (-3.01 / 20.0)

#: No note is shaded below its own pitch: so many cents above it are left.
_LEAST_ABOVE = 1200.0


def passed(hz: Samples, cutoff_cents: float) -> Samples:
    """The part of the power at frequencies that a shade lets through.

    R. Bristow-Johnson, "Cookbook formulae for audio equalizer biquad filter coefficients": the low
    pass, as FluidSynth has it.
    """
    cutoff = min(key_hz(cutoff_cents / 100.0), 0.45 * RATE)
    turn, way = 2.0 * np.pi * cutoff / RATE, 2.0 * np.pi * hz / RATE
    alpha = np.sin(turn) / (2.0 * _QUALITY)
    delay = np.exp(-1j * way)
    above = (1.0 - np.cos(turn)) / 2.0 * (1.0 + delay)**2
    below = 1.0 + alpha - 2.0 * np.cos(turn) * delay + (1.0 - alpha) * delay**2
    return np.asarray(np.abs(above / below)**2, dtype=np.float64)


def _spectrum(samples: Samples) -> tuple[Samples, Samples]:
    return power(samples[:round(_COLOUR_SPAN * RATE)])


def _shaded(samples: Samples, cutoff_cents: float) -> float:
    hz, lines = _spectrum(samples)
    return centroid_of(hz, lines * passed(hz, cutoff_cents))


def _cutoff_for(samples: Samples, colour: float, least: float) -> float:
    """The cutoff that gives the samples a colour, in cents."""
    low, high = least, float(OPEN)
    for _ in range(16):
        middle = (low + high) / 2.0
        low, high = (middle, high) if _shaded(samples, middle) < colour else (low, middle)
    return high


def shades(soft: Samples, loud: Samples, pitch: float, seam: int) -> tuple[Shade, Shade]:
    """The shades of both layers of a recording; the loud one begins at velocity `seam`."""
    under = Shade(OPEN, _SOFT_FALL)
    colour = _shaded(soft, under.at(seam - 1))
    cutoff = _cutoff_for(loud, colour, 100.0 * pitch + _LEAST_ABOVE)
    return under, Shade(OPEN, round((OPEN - cutoff) * 128.0 / (127 - seam)))


def lost(samples: Samples, cutoff_cents: float) -> float:
    """Decibels of its level that a cutoff takes from a note; never above 0."""
    start = samples[:round(SPAN * RATE)]
    lines = np.abs(np.fft.rfft(start))**2.0
    hz = np.fft.rfftfreq(len(start), 1.0 / RATE)
    return 0.5 * decibels(float(np.sum(lines * passed(hz, cutoff_cents)) / np.sum(lines)))
