"""What the banks of a folder sound like, in figures for those who work on them."""

import os
from collections.abc import Iterator

from velta_banks.banks import BANKS, SOFT_TOP, Bank
from velta_banks.fluid import Player
from velta_banks.measure import centroid, fall_time, swing
from velta_banks.units import RATE, key_hz

HEAD = ("bank             key  centroid in Hz at velocity      seam  falls by 20, 40 dB   swing\n"
        "                        45    61    62    80   110        in seconds")

_VELOCITIES = (45, SOFT_TOP, SOFT_TOP + 1, 80, 110)


def _colours(player: Player, key: int) -> str:
    found = [centroid(player.note(key, velocity, 0.5)) for velocity in _VELOCITIES]
    seam = 100.0 * (found[2] / found[1] - 1.0)
    return " ".join(f"{hz:5.0f}" for hz in found) + f"  {seam:+4.0f} %"


def _ways(bank: Bank, player: Player, key: int) -> str:
    """How a note dies away, or swings while it is held."""
    if bank.sustained:
        cents, decibels = swing(player.note(key, 80, 3.0)[RATE:], key_hz(key))
        return f"{'':19}  {cents:5.1f} cents, {decibels:.1f} dB"
    sound = player.note(key, 80, 8.0)
    falls = (fall_time(sound, decibels) for decibels in (20.0, 40.0))
    return "  ".join("     -" if fall is None else f"{fall:6.2f}" for fall in falls)


def rows(folder: str) -> Iterator[str]:
    """A line for each key that loops are written on. Raises OSError where a bank is missing."""
    yield HEAD
    for bank in BANKS:
        with Player(os.path.join(folder, f"{bank.instrument_id}.sf2")) as player:
            for key in bank.working:
                yield (f"{bank.instrument_id:16} {key:3}  {_colours(player, key)}"
                       f"  {_ways(bank, player, key)}").rstrip()
