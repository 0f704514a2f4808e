"""What is measured of rendered sound: pitch, clicks, offset, colour and decay."""

import numpy as np

from velta_banks.units import RATE, Samples, cents, decibels


def power(samples: Samples) -> tuple[Samples, Samples]:
    """The power spectrum under a Hann window, four times finer than its resolution."""
    size = 4 * len(samples)
    lines = np.fft.rfft(samples * np.hanning(len(samples)), size)
    return np.fft.rfftfreq(size, 1.0 / RATE), np.abs(lines)**2.0


def pitch_error(samples: Samples, hz: float, reach_cents: float = 60.0) -> float:
    """Cents by which the centre of power around a frequency lies above it.

    A centre, and no peak: two reeds that beat, or a vibrato, are heard at their middle. 1000.0
    where nothing sounds there.
    """
    frequencies, lines = power(samples)
    reach = max(hz * (2.0 ** (reach_cents / 1200.0) - 1.0), 2.5 * RATE / len(samples))
    near = np.abs(frequencies - hz) <= reach
    total = float(np.sum(lines[near]))
    if total < 1e-9:
        return 1000.0
    return cents(float(np.sum(lines[near] * frequencies[near])) / total, hz)


def roughest_moment(samples: Samples, span: float = 0.02) -> float:
    """How much the sharpest bend of a held tone exceeds the usual sharpest bend of its moments.

    A click is a bend, a large second difference, that the tone has nowhere else: about 1 without
    one. Moments last `span` seconds.
    """
    count = round(span * RATE)
    bends = np.abs(np.diff(samples, 2))
    moments = np.max(bends[:len(bends) // count * count].reshape(-1, count), axis=1)
    return float(np.max(moments) / max(np.quantile(moments, 0.9), 1e-9))


def offset(samples: Samples) -> float:
    """The mean, as a part of the RMS; 0 for silence."""
    size = float(np.sqrt(np.mean(samples**2)))
    return abs(float(np.mean(samples))) / size if size > 0.0 else 0.0


def centroid_of(frequencies: Samples, lines: Samples) -> float:
    """The centre of a power spectrum, in Hz: higher for a brighter sound."""
    return float(np.sum(frequencies * lines) / max(float(np.sum(lines)), 1e-30))


#: Seconds of silence before a stroke whose colour is measured: the window is widest open behind so
#: many, and a stroke is brightest where it starts.
_BEFORE_STROKE = 0.15


def struck(samples: Samples) -> Samples:
    """A stroke with so much silence before it that its start counts for its colour."""
    return np.concatenate([np.zeros(round(_BEFORE_STROKE * RATE)), samples])


def centroid(samples: Samples) -> float:
    """The centre of the spectrum of the samples, in Hz."""
    return centroid_of(*power(samples))


def _sizes(samples: Samples, span: float) -> list[float]:
    count = round(span * RATE)
    parts = samples[:len(samples) // count * count].reshape(-1, count)
    return [decibels(float(size)) for size in np.sqrt(np.mean(parts**2, axis=1))]


def drop(samples: Samples, span: float = 0.05) -> float:
    """Decibels between the loudest span and the last one."""
    sizes = _sizes(samples, span)
    return max(sizes) - sizes[-1]


def steepest_fall(samples: Samples, floor: float = 45.0, span: float = 0.05) -> float:
    """The most decibels by which a sound falls from one span to the next while it can be heard.

    Spans that lie more than `floor` decibels under the loudest one cannot. A sound that is cut off
    falls by more than 100.
    """
    sizes = _sizes(samples, span)
    return max(size - after for size, after in zip(sizes, sizes[1:])
               if size > max(sizes) - floor)


def fall_time(samples: Samples, by_decibels: float, span: float = 0.02) -> float | None:
    """Seconds from the loudest span to the first that is softer by so much; None if none is."""
    sizes = _sizes(samples, span)
    top = int(np.argmax(sizes))
    softer = [at for at in range(top, len(sizes)) if sizes[at] < sizes[top] - by_decibels]
    return (softer[0] - top) * span if softer else None


def swing(samples: Samples, hz: float) -> tuple[float, float]:
    """How far the fundamental of a held note swings to either side: in cents, and in decibels."""
    lines = np.fft.fft(samples)
    frequencies = np.fft.fftfreq(len(samples), 1.0 / RATE)
    lines[(frequencies < 0.7 * hz) | (frequencies > 1.4 * hz)] = 0.0
    fundamental = np.fft.ifft(lines)
    window = np.ones(round(0.02 * RATE)) / round(0.02 * RATE)
    pitch = np.diff(np.unwrap(np.angle(fundamental))) * RATE / (2.0 * np.pi)
    pitch = np.convolve(pitch, window, "valid")[RATE // 4:-RATE // 4]
    size = np.convolve(np.abs(fundamental), window, "valid")[RATE // 4:-RATE // 4]
    return (cents(float(np.max(pitch)), float(np.min(pitch))) / 2.0,
            decibels(float(np.max(size) / np.min(size))) / 2.0)
