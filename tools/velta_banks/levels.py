"""How loud the recordings are, so that a song keeps its balance whichever bank plays it.

A bank's level is the RMS of the first half second of a note at velocity 100, in decibels of what
the program puts out on one side. The measured levels of General MIDI stand-ins are in the tables of
the banks.
"""

import numpy as np

from velta_banks.units import RATE, Samples, decibels, gain

#: Seconds of a note that count for its level.
SPAN = 0.5

#: Decibels between a recording and what comes out at velocity 100 and the usual channel volume.
PLAYED = -14.66

#: Highest peak of a recording, and the seconds in which a louder one is turned down and up again.
CEILING = 0.95
_TURN = 0.006

#: Points of (key, decibels); in between the level moves evenly.
Curve = list[tuple[float, float]]


def level(samples: Samples) -> float:
    """RMS of the first half second in decibels; a shorter sound is followed by silence."""
    count = round(SPAN * RATE)
    return decibels(float(np.sqrt(np.sum(samples[:count]**2) / count)))


def on_curve(curve: Curve, key: float) -> float:
    """The level that a curve gives a key; beyond its ends that of the end."""
    keys, values = zip(*curve)
    return float(np.interp(key, keys, values))


def limited(samples: Samples, ceiling: float = CEILING) -> Samples:
    """The samples, turned down smoothly around every peak above the ceiling.

    The gain is the least that a short span around each sample asks for, averaged over such a span;
    it never lies above what a sample needs, and nothing is bent as clipping would.
    """
    needed = np.minimum(1.0, ceiling / np.maximum(np.abs(samples), 1e-9))
    if float(np.min(needed)) == 1.0:
        return samples
    half = round(_TURN * RATE / 2.0)
    padded = np.pad(needed, 2 * half, constant_values=1.0)
    least = np.min(np.lib.stride_tricks.sliding_window_view(padded, 2 * half + 1), axis=1)
    window = np.hanning(2 * half + 3)[1:-1]
    return samples * np.convolve(least, window / np.sum(window), mode="valid")


def at_level(samples: Samples, played: float) -> Samples:
    """A decaying sound, scaled so that the program puts it out at a level, its peaks held down."""
    wanted = played - PLAYED
    for _ in range(3):
        samples = limited(samples * gain(wanted - level(samples)))
    return samples


def loop_at_level(samples: Samples, played: float) -> Samples:
    """A sustained sound at a level; only scaled, so that its loop keeps its seam."""
    return samples * gain(played - PLAYED - level(samples))
