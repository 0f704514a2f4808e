"""The bombo legüero: a hollowed trunk with two hides, struck on the skin and on its wooden rim.

The skin is a membrane of modes in the ratios of Bessel's zeros (N. Fletcher and T. Rossing, "The
Physics of Musical Instruments", 2nd ed., section 3.2), the lowest ones pulled together by the air
and split by the second hide (section 18.2). A strike stretches the hide, so the pitch starts higher
and sinks; woolly hide takes the upper modes away soon. The rim is a short bar of wood on a hoop.
"""

from dataclasses import dataclass

import numpy as np

from velta_banks.shapes import (band, coloured_noise, fade_out, rise, ringing, without_offset)
from velta_banks.units import RATE, Samples, dice, seconds

#: Lowest mode of the skin in Hz, and of the skin of the large bombo of an ensemble.
SKIN_HZ = 80.0
LARGE_SKIN_HZ = 64.0

#: Ratio to the lowest mode, amplitude when struck in the middle, and near the edge.
_SKIN_MODES = [(1.0, 1.0, 0.75), (1.34, 0.4, 0.3), (1.62, 0.2, 0.6), (2.16, 0.16, 0.45),
               (2.33, 0.26, 0.3), (2.68, 0.1, 0.3), (2.95, 0.1, 0.25), (3.2, 0.06, 0.2),
               (3.55, 0.08, 0.2), (4.1, 0.03, 0.15), (4.65, 0.04, 0.12)]

#: The trunk, which the second hide closes, answers the first one: (Hz, seconds to fall by 60 dB,
#: amplitude of a stroke of 1). Small loudspeakers, too, let it be heard.
_TRUNK_MODES = [(172.0, 0.42, 0.16), (268.0, 0.3, 0.1), (415.0, 0.2, 0.05)]

#: The hoop's own modes: (Hz, seconds to fall by 60 dB, amplitude).
_RIM_MODES = [(735.0, 0.12, 0.5), (1180.0, 0.11, 0.9), (1870.0, 0.09, 1.0), (2740.0, 0.07, 0.8),
              (3900.0, 0.05, 0.5), (5300.0, 0.035, 0.3)]

_FADE = 0.1


@dataclass(frozen=True)
class Strike:
    """A stroke with the padded stick on the skin."""

    hard: bool
    #: 0 for the middle, 1 for near the edge.
    edge: float = 0.0
    #: Seconds in which the lowest mode falls by 60 dB.
    fall: float = 1.3
    lowest_hz: float = SKIN_HZ
    #: Which of several strokes alike: no two fall on the same spot.
    take: int = 0


def _sinking(count: int, hard: bool) -> Samples:
    """The way of the stretched hide's pitch, as a ratio that ends at 1."""
    return 1.0 + (0.065 if hard else 0.025) * np.exp(-seconds(count) / 0.055)


def skin(strike: Strike) -> Samples:
    """A stroke on the skin, dying away by itself."""
    count = round(1.2 * strike.fall * RATE)
    turns = 2.0 * np.pi * np.cumsum(_sinking(count, strike.hard)) / RATE
    contact_hz = 1500.0 if strike.hard else 420.0
    times = seconds(count)
    total = np.zeros(count)
    spot = dice(62, strike.take, int(strike.hard))
    for number, (ratio, middle, edge) in enumerate(_SKIN_MODES):
        hz = strike.lowest_hz * ratio
        strength = middle + strike.edge * (edge - middle)
        strength *= 1.0 if number == 0 else _elsewhere(spot)
        strength /= 1.0 + (hz / contact_hz)**2
        fall = strike.fall * ratio**-1.1
        total += strength * np.exp(-6.91 / fall * times) * np.sin(hz * turns)
    total /= float(np.max(np.abs(total)))
    total += ringing(count, _TRUNK_MODES) * rise(count, round(0.006 * RATE))
    total += _thud(strike, count)
    return fade_out(without_offset(total * rise(count, round(0.002 * RATE))), _FADE)


def _elsewhere(spot: np.random.Generator) -> float:
    """How much more or less of a mode a stroke finds where it falls."""
    return float(0.6 + 0.8 * spot.random())


def _thud(strike: Strike, count: int) -> Samples:
    """The stick's padding on the hide: dull noise, shorter and brighter from a hard stroke."""
    chance = dice(60, int(strike.hard), round(10 * strike.edge), strike.take)
    high = (2600.0 if strike.hard else 1000.0) * (1.0 + strike.edge)
    noise = coloured_noise(chance, count, band(count, 120.0, high))
    return (0.5 if strike.hard else 0.24) * noise * np.exp(-seconds(count) / 0.028)


def rim(take: int, hard: bool) -> Samples:
    """A stroke with the stick's wood on the rim; the skin answers from far."""
    count = round(0.45 * RATE)
    chance = dice(61, int(hard), take)
    darker = 1.0 if hard else 0.92
    modes = [(hz, fall, amplitude * darker**number * _elsewhere(chance))
             for number, (hz, fall, amplitude) in enumerate(_RIM_MODES)]
    wood = ringing(count, modes)
    wood /= float(np.max(np.abs(wood)))
    tick = coloured_noise(chance, count, band(count, 1500.0, 9000.0 if hard else 7000.0))
    tick *= (0.5 if hard else 0.38) * np.exp(-seconds(count) / 0.004)
    answer = ringing(count, [(SKIN_HZ * 1.34, 0.35, 0.02), (SKIN_HZ * 2.33, 0.25, 0.03)])
    # Hard strokes sound more of their wood.
    answer *= 0.5 if hard else 1.0
    total = (wood + tick) * rise(count, 12) + answer
    return fade_out(without_offset(total), _FADE)
