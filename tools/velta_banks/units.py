"""What all models share: the sample rate, pitches, decibels and the noise they may use."""

import numpy as np
import numpy.typing as npt

#: Samples a second, of every sample of every bank.
RATE = 44100

Samples = npt.NDArray[np.float64]
Spectrum = npt.NDArray[np.complex128]
Indices = npt.NDArray[np.int64]


def key_hz(key: float) -> float:
    """Frequency of a MIDI key, equally tempered on A4 = 440 Hz."""
    return float(440.0 * 2.0 ** ((key - 69.0) / 12.0))


def cents(hz: float, reference_hz: float) -> float:
    """How far one frequency lies above another, in cents."""
    return float(1200.0 * np.log2(hz / reference_hz))


def gain(decibels: float) -> float:
    """The factor on amplitudes that a number of decibels stands for."""
    return float(10.0 ** (decibels / 20.0))


def decibels(amplitude: float) -> float:
    """An amplitude in decibels; -200 for silence."""
    return float(20.0 * np.log10(max(amplitude, 1e-10)))


def seconds(count: int) -> Samples:
    """The times of `count` samples from the first, in seconds."""
    return np.arange(count, dtype=np.float64) / RATE


def dice(*seed: int) -> np.random.Generator:
    """A source of chance that gives the same numbers for the same seed on every machine.

    Only its uniform numbers are promised to stay the same from one numpy to the next.
    """
    return np.random.Generator(np.random.PCG64(list(seed)))
