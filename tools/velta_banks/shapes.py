"""Pieces of sound and of envelopes that several models are made of."""

import numpy as np

from velta_banks.units import RATE, Samples, seconds


def rise(count: int, length: int) -> Samples:
    """A smooth way from 0 to 1 over `length` samples, then 1: half a period of a cosine."""
    steps = np.minimum(np.arange(count) / max(length, 1), 1.0)
    return 0.5 - 0.5 * np.cos(np.pi * steps)


def fade_out(samples: Samples, span: float) -> Samples:
    """The samples, brought to silence smoothly over their last `span` seconds."""
    length = min(round(span * RATE), len(samples))
    return samples * rise(len(samples), length)[::-1]


def without_offset(samples: Samples, corner_hz: float = 20.0) -> Samples:
    """The samples without what lies under the corner: no constant, no drift, no delay.

    The filter has no phase and falls with the fourth power of the frequency. What it spreads to
    before the start is taken away by a rise of a quarter of a millisecond.
    """
    padded = np.concatenate([samples, np.zeros(RATE // 4)])
    spectrum = np.fft.rfft(padded)
    hz = np.fft.rfftfreq(len(padded), 1.0 / RATE)
    kept = np.fft.irfft(spectrum * (hz**4 / (hz**4 + corner_hz**4)), len(padded))
    return kept[:len(samples)] * rise(len(samples), RATE // 4000)


def resonances(hz: Samples, modes: list[tuple[float, float, float]]) -> Samples:
    """Gain of a body at the given frequencies: peaks of (Hz, Q, height) that add up over 1."""
    total = np.ones_like(hz)
    for centre, quality, height in modes:
        detuned = quality * (hz / centre - centre / hz)
        total += height / np.sqrt(1.0 + detuned**2)
    return total


def ringing(count: int, modes: list[tuple[float, float, float]]) -> Samples:
    """Modes struck together at the start: (Hz, seconds to fall by 60 dB, amplitude) each.

    The sum of damped sines of modal synthesis (J.-M. Adrien, "The missing link: modal synthesis",
    in "Representations of Musical Signals", 1991). Modes above half the sample rate are left out.
    """
    times = seconds(count)
    total = np.zeros(count)
    for hz, fall, amplitude in modes:
        if hz < 0.45 * RATE:
            total += amplitude * np.exp(-6.91 / fall * times) * np.sin(2.0 * np.pi * hz * times)
    return total


def coloured_noise(chance: np.random.Generator, count: int, gains: Samples) -> Samples:
    """Noise of `count` samples that repeats without a seam, of RMS 1.

    `gains` are the amplitudes of the `count` // 2 + 1 lines of its spectrum; the phases are drawn.
    """
    phases = np.exp(2j * np.pi * chance.random(count // 2 + 1))
    lines = gains * phases
    lines[0] = 0.0
    if count % 2 == 0:
        lines[-1] = 0.0
    noise = np.fft.irfft(lines, count)
    return noise / np.sqrt(np.mean(noise**2))


def band(count: int, low_hz: float, high_hz: float) -> Samples:
    """Gains for `coloured_noise`: a band with soft edges, a third-order slope at either end."""
    hz = np.maximum(np.fft.rfftfreq(count, 1.0 / RATE), 1.0)
    return 1.0 / (1.0 + (low_hz / hz)**3) / (1.0 + (hz / high_hz)**3)
