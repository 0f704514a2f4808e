"""What every bank must fulfil, measured on what FluidSynth plays of it."""

import os
from collections.abc import Iterator

import numpy as np

from velta_banks.banks import BANKS, SOFT_TOP, Bank
from velta_banks.fluid import Player
from velta_banks.levels import level
from velta_banks.measure import (centroid, drop, offset, pitch_error, roughest_moment,
                                 steepest_fall, struck)
from velta_banks.units import RATE, Samples, key_hz

MAX_BYTES = 4_000_000
MAX_CENTS = 5.0
MAX_LEVEL_DIFFERENCE = 3.0
#: Decibels that crossing from one layer to the other may add to a step of one velocity.
MAX_LAYER_STEP = 1.5
#: Parts by which the centroid may differ between two layers where they meet, and from key to key.
MAX_SEAM = 0.15
MAX_KEY_STEP = 0.25
#: How much brighter a loud note is than a soft one, at least.
MIN_BRIGHTENING = 1.1
SOFT, LOUD = 45, 110
MAX_ROUGHNESS = 1.6
MAX_OFFSET = 0.02
#: The program's gain leaves a single note this much room under full scale.
MAX_PEAK = 0.6
MIN_LEVEL = -60.0
#: Decibels within 50 ms: wood on wood falls by less.
MAX_FALL = 40.0
#: Decibels by which a held note may swell.
MAX_SWELL = 12.0

GENERAL_MIDI = "/usr/share/sounds/sf2/FluidR3_GM.sf2"

Findings = Iterator[str]


def _tuning(bank: Bank, player: Player) -> Findings:
    for key in range(bank.keys[0], bank.keys[1] + 1):
        for velocity in (64, 100):
            sound = player.note(key, velocity, 2.5)[round(0.1 * RATE):]
            error = pitch_error(sound, key_hz(key))
            if abs(error) > MAX_CENTS:
                yield f"key {key} velocity {velocity}: {error:+.1f} cents"


def _every_key(player: Player) -> Findings:
    for key in range(128):
        sound = player.note(key, 100, 0.5)
        if level(sound) < MIN_LEVEL:
            yield f"key {key}: silent"
        if float(np.max(np.abs(sound))) > MAX_PEAK:
            yield f"key {key}: peak of {np.max(np.abs(sound)):.2f}"


def _loudness(bank: Bank, player: Player) -> Findings:
    for key in range(bank.keys[0], bank.keys[1] + 1):
        levels = [level(player.note(key, velocity, 0.5)) for velocity in (30, 45, SOFT_TOP)]
        levels += [level(player.note(key, velocity, 0.5)) for velocity in (SOFT_TOP + 1, 127)]
        if levels != sorted(levels):
            yield f"key {key}: not louder with velocity"
        if abs(levels[3] - levels[2]) > MAX_LAYER_STEP:
            yield f"key {key}: the layers are {levels[3] - levels[2]:+.1f} dB apart"


def _meeting_colour(bank: Bank, sound: Samples) -> float:
    return centroid(sound if bank.pitched else struck(sound))


def _colour(bank: Bank, player: Player) -> Findings:
    """Louder is brighter, and evenly so: no layer and no recording stands out from the next."""
    for key in bank.working:
        soft, loud = (centroid(player.note(key, velocity, 0.3)) for velocity in (SOFT, LOUD))
        if loud < MIN_BRIGHTENING * soft:
            yield f"key {key}: a loud note is no brighter, {soft:.0f} and {loud:.0f} Hz"
        under, over = (_meeting_colour(bank, player.note(key, velocity, 0.3))
                       for velocity in (SOFT_TOP, SOFT_TOP + 1))
        if not 1.0 - MAX_SEAM < over / under < 1.0 + MAX_SEAM:
            yield f"key {key}: the layers differ in colour, {under:.0f} and {over:.0f} Hz"


def _evenness(bank: Bank, player: Player) -> Findings:
    colours = [centroid(player.note(key, 75, 0.3)) for key in range(bank.keys[0], bank.keys[1] + 1)]
    for key, (low, high) in enumerate(zip(colours, colours[1:]), start=bank.keys[0] + 1):
        if not 1.0 - MAX_KEY_STEP < high / low < 1.0 + MAX_KEY_STEP:
            yield f"key {key}: another colour than the key below, {low:.0f} and {high:.0f} Hz"


def _sustain(bank: Bank, player: Player) -> Findings:
    """Held notes go round their loops; the others die away."""
    for key in range(bank.keys[0], bank.keys[1] + 1, 3):
        for velocity in (64, 100):
            sound = player.note(key, velocity, 8.0)
            if offset(sound) > MAX_OFFSET:
                yield f"key {key}: an offset of {offset(sound):.3f}"
            held = sound[RATE:]
            if bank.sustained and roughest_moment(held) > MAX_ROUGHNESS:
                yield f"key {key}: clicks, {roughest_moment(held):.2f}"
            if bank.sustained and drop(held) > MAX_SWELL:
                yield f"key {key}: does not hold"
            if not bank.sustained and drop(sound) < 100.0:
                yield f"key {key}: does not die away"
            if not bank.sustained and steepest_fall(sound) > MAX_FALL:
                yield f"key {key}: cut off"


def _balance(bank: Bank, player: Player) -> Findings:
    if not os.path.exists(GENERAL_MIDI):
        return
    with Player(GENERAL_MIDI, *bank.stand_in) as stand_in:
        for key in bank.working:
            for velocity in (64, 100):
                difference = (level(player.note(key, velocity, 0.5))
                              - level(stand_in.note(key, velocity, 0.5)))
                if abs(difference) > MAX_LEVEL_DIFFERENCE:
                    yield (f"key {key} velocity {velocity}: {difference:+.1f} dB"
                           " from its stand-in")


def _findings(bank: Bank, path: str) -> Findings:
    size = os.path.getsize(path)
    if size > MAX_BYTES:
        yield f"{size} bytes"
    with Player(path) as player:
        if bank.pitched:
            yield from _tuning(bank, player)
            yield from _evenness(bank, player)
        yield from _every_key(player)
        yield from _loudness(bank, player)
        yield from _colour(bank, player)
        yield from _sustain(bank, player)
        yield from _balance(bank, player)


def check(folder: str) -> list[str]:
    """What is wrong with the banks of a folder, one line each; empty when all is well."""
    wrong = []
    for bank in BANKS:
        path = os.path.join(folder, f"{bank.instrument_id}.sf2")
        try:
            wrong += [f"{bank.instrument_id}: {finding}" for finding in _findings(bank, path)]
        except OSError as error:
            wrong.append(f"{bank.instrument_id}: {error}")
    return wrong
