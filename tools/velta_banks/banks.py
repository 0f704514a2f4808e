"""Which banks there are, and how the keys of each are covered by recordings."""

from collections.abc import Callable
from dataclasses import dataclass

from velta_banks import acordeon, bandoneon, bombo, charango, guitarra, quena
from velta_banks.bombo import Strike
from velta_banks.levels import Curve, at_level, loop_at_level, on_curve
from velta_banks.sf2 import Recording, Zone, write_bank
from velta_banks.units import Samples

#: The last velocity of the soft layer.
SOFT_TOP = 79

_LAYERS = {False: (1, SOFT_TOP), True: (SOFT_TOP + 1, 127)}
#: Decibels by which the loud layer stands over the soft one, besides what velocity does.
_LAYER_STEP = 0.5

_LAYER_NAMES = {False: "suave", True: "fuerte"}
_HIGHEST_KEY = 127

_COMMENT = "Synthesised by the tools of Velta; nothing in it was recorded."


@dataclass(frozen=True)
class Bank:
    """One instrument's bank: how it is called, where it is played, and how its zones are made."""

    instrument_id: str
    name: str
    #: The instrument's real range, lowest and highest key.
    keys: tuple[int, int]
    #: Where loops are written, or where the strokes of a drum lie.
    working: tuple[int, ...]
    #: Bank and program of the General MIDI sound that stands in for it.
    stand_in: tuple[int, int]
    zones: Callable[[], list[Zone]]
    sustained: bool = False
    pitched: bool = True

    def file(self) -> bytes:
        """The bytes of its SoundFont."""
        return write_bank(self.name, _COMMENT, self.zones())


def key_ranges(roots: list[int]) -> list[tuple[int, int]]:
    """The keys of each recording: up to half way to the next; the outer ones reach to the end."""
    cuts = [(low + high) // 2 for low, high in zip(roots, roots[1:])]
    return list(zip([0] + [cut + 1 for cut in cuts], cuts + [_HIGHEST_KEY]))


def _layer_level(played: float, hard: bool) -> float:
    return played + (0.5 if hard else -0.5) * _LAYER_STEP


def _recording(name: str, key: int, hard: bool, samples: Samples,
               loop_start: int | None) -> Recording:
    loop = None if loop_start is None else (loop_start, len(samples))
    return Recording(f"{name} {key} {_LAYER_NAMES[hard]}", samples, key, loop)


def _zones(name: str, roots: list[int], release: float, curve: Curve,
           make: Callable[[int, bool], tuple[Samples, int | None]]) -> list[Zone]:
    zones = []
    for root, keys in zip(roots, key_ranges(roots)):
        for hard, velocities in _LAYERS.items():
            samples, loop_start = make(root, hard)
            to_level = at_level if loop_start is None else loop_at_level
            levelled = to_level(samples, _layer_level(on_curve(curve, root), hard))
            recording = _recording(name, root, hard, levelled, loop_start)
            zones.append(Zone(recording, keys, velocities, release))
    return zones


def _guitarra() -> list[Zone]:
    return _zones("guitarra", [40, 45, 50, 55, 59, 64, 69, 74, 79], 0.35,
                  [(40, -24.0), (55, -24.6), (60, -27.5), (72, -30.3), (83, -33.5)],
                  lambda key, hard: (guitarra.note(key, hard), None))


def _charango() -> list[Zone]:
    return _zones("charango", [65, 68, 72, 76, 80, 84, 88, 91], 0.25,
                  [(64, -29.0), (72, -31.0), (79, -34.6), (84, -36.3), (91, -38.0)],
                  lambda key, hard: (charango.note(key, hard), None))


def _acordeon() -> list[Zone]:
    return _zones("acordeon", list(range(55, 93, 4)), 0.12,
                  [(53, -27.6), (66, -30.0), (72, -30.0), (80, -27.5)], acordeon.note)


def _bandoneon() -> list[Zone]:
    return _zones("bandoneon", list(range(38, 94, 5)), 0.08,
                  [(36, -27.0), (58, -27.2), (65, -30.0), (72, -29.2), (80, -27.0)],
                  bandoneon.note)


def _quena() -> list[Zone]:
    return _zones("quena", [68, 73, 78, 83, 88, 93, 97, 101], 0.18, [(67, -24.8)], quena.note)


#: How each sound of the bombo is struck, soft or hard, and how loud it is at velocity 100.
_STROKES: dict[str, tuple[Callable[[bool], Samples], float]] = {
    "parche": (lambda hard: bombo.skin(Strike(hard)), -28.2),
    "parche grande": (lambda hard: bombo.skin(
        Strike(hard, fall=1.0, lowest_hz=bombo.LARGE_SKIN_HZ)), -31.0),
    "borde": (lambda hard: bombo.skin(Strike(hard, edge=1.0, fall=1.0)), -32.0),
    "apagado": (lambda hard: bombo.skin(Strike(hard, edge=0.6, fall=0.3)), -35.0),
    "aro": (bombo.rim, -37.3),
}

#: Keys of the General MIDI drum kit that are drums: the sound of the bombo for each, and the
#: semitones that it is moved by. All wood and metal is the rim.
_DRUM_KEYS = {
    35: ("parche grande", -1), 36: ("parche grande", 0), 38: ("apagado", 3), 40: ("apagado", 5),
    41: ("parche", 0), 43: ("parche", 1), 45: ("borde", 0), 47: ("borde", 2), 48: ("borde", 3),
    50: ("borde", 5), 60: ("borde", 8), 61: ("borde", 5), 62: ("apagado", 8), 63: ("borde", 7),
    64: ("borde", 3), 65: ("borde", 9), 66: ("borde", 4), 78: ("apagado", 6), 79: ("borde", 6),
    86: ("apagado", 0), 87: ("parche", 0),
}

#: Wood that is higher or lower than the rim.
_RIM_KEYS = {75: 5, 76: 3, 77: -2}

#: Below the drum kit there is the skin alone.
_LOWEST_RIM = 27

#: A stroke is never cut short by the end of its note.
_DRUM_RELEASE = 20.0


def drum_sound(key: int) -> tuple[str, int]:
    """What the bombo plays on a key, and by how many semitones it is moved."""
    if key in _DRUM_KEYS:
        return _DRUM_KEYS[key]
    return ("parche", 0) if key < _LOWEST_RIM else ("aro", _RIM_KEYS.get(key, 0))


_DRUM_ROOT = 60


def _drum_recordings() -> dict[tuple[str, bool], Recording]:
    return {(name, hard): _recording(
        name, _DRUM_ROOT, hard, at_level(strike(hard), _layer_level(played, hard)), None)
            for name, (strike, played) in _STROKES.items() for hard in _LAYERS}


def _bombo() -> list[Zone]:
    recordings = _drum_recordings()
    zones = []
    for key in range(_HIGHEST_KEY + 1):
        name, semitones = drum_sound(key)
        for hard, velocities in _LAYERS.items():
            zones.append(Zone(recordings[name, hard], (key, key), velocities, _DRUM_RELEASE,
                              root_key=key - semitones))
    return zones


BANKS = [
    Bank("bombo_leguero", "Bombo leguero", (0, 127), (36, 37, 41, 43, 76), (128, 0), _bombo,
         pitched=False),
    Bank("charango", "Charango", (64, 91), (72, 76, 79, 84), (0, 24), _charango),
    Bank("guitarra_criolla", "Guitarra criolla", (40, 83), (48, 52, 55, 60, 64, 67, 72), (0, 24),
         _guitarra),
    Bank("acordeon", "Acordeon", (53, 93), (60, 64, 67, 72, 76, 79), (0, 21), _acordeon,
         sustained=True),
    Bank("bandoneon", "Bandoneon", (36, 95), (43, 48, 55, 60, 64, 67, 72, 76, 79), (0, 23),
         _bandoneon, sustained=True),
    Bank("quena", "Quena", (67, 103), (72, 76, 79, 84), (0, 75), _quena, sustained=True),
]
