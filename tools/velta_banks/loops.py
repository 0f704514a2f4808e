"""Lengths of loops in which every tone and every beat goes round a whole number of times.

A sound whose partials are all whole numbers of cycles in the loop is periodic in it, so the loop
has no seam: what stands behind its end is, to the last bit, what stands at its start.
"""

from dataclasses import dataclass

from velta_banks.units import RATE


@dataclass(frozen=True)
class Loop:
    """`cycles` periods of a pitch in `count` samples; the pitch itself need not be a partial."""

    count: int
    cycles: float

    @property
    def seconds(self) -> float:
        return self.count / RATE


def loop_of(cycles: float, hz: float) -> Loop:
    """The loop that holds so many cycles of a frequency."""
    return Loop(round(cycles / hz * RATE), cycles)


def loop_for(hz: float, about: float) -> Loop:
    """The loop nearest to `about` seconds that holds a frequency a whole number of times."""
    return loop_of(round(hz * about), hz)
