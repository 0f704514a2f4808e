"""Which banks there are, and how the keys of each are covered by recordings."""

from collections.abc import Callable
from dataclasses import dataclass, replace
from itertools import groupby

from velta_banks import acordeon, bandoneon, bombo, charango, guitarra, quena
from velta_banks.bombo import Strike
from velta_banks.levels import Curve, at_level, loop_at_level, on_curve
from velta_banks.measure import struck
from velta_banks.sf2 import Recording, Shade, Zone, write_bank
from velta_banks.shading import lost, shades
from velta_banks.units import Samples

#: The last velocity of the soft layer.
SOFT_TOP = 61

_LAYERS = {False: (1, SOFT_TOP), True: (SOFT_TOP + 1, 127)}
#: Decibels by which the loud layer stands over the soft one, besides what velocity does.
_LAYER_STEP = 0.7

_LAYER_NAMES = {False: "suave", True: "fuerte"}
_HIGHEST_KEY = 127

#: Takes of one stroke alternate over bands of so many velocities: a player never strikes twice
#: with the same force, so no two strokes in a row need be the same take.
_TAKE_BAND = 3

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


#: Velocity at which a note has the level of its curve.
_LEVEL_VELOCITY = 100


def _played(soft: Samples, hard: Samples, shaded: tuple[Shade, Shade],
            level: float) -> dict[bool, float]:
    """Levels of both recordings before their shades, so that they meet where the layers do."""
    under, over = shaded
    loud = level - lost(hard, over.at(_LEVEL_VELOCITY))
    meeting = loud + lost(hard, over.at(SOFT_TOP + 1)) - lost(soft, under.at(SOFT_TOP))
    return {False: meeting - _LAYER_STEP, True: loud}


#: A note and the first sample of its loop, which a note that dies away does not have.
Made = tuple[Samples, int | None]


def _note_zones(name: str, root: int, made: dict[bool, Made], played: float) -> list[Zone]:
    """Both layers of a recording on its root key alone, without a release."""
    shaded = shades(made[False][0], made[True][0], root, SOFT_TOP + 1)
    levels = _played(made[False][0], made[True][0], shaded, played)
    zones = []
    for (hard, velocities), shade in zip(_LAYERS.items(), shaded):
        samples, loop_start = made[hard]
        to_level = at_level if loop_start is None else loop_at_level
        recording = _recording(name, root, hard, to_level(samples, levels[hard]), loop_start)
        zones.append(Zone(recording, (root, root), velocities, 0.0, shade))
    return zones


def _zones(name: str, roots: list[int], release: float, curve: Curve,
           make: Callable[[int, bool], Made]) -> list[Zone]:
    zones = []
    for root, keys in zip(roots, key_ranges(roots)):
        made = {hard: make(root, hard) for hard in _LAYERS}
        zones += [replace(zone, keys=keys, release=release)
                  for zone in _note_zones(name, root, made, on_curve(curve, root))]
    return zones


def take_bands(takes: int, velocities: tuple[int, int]) -> list[tuple[int, tuple[int, int]]]:
    """Which take sounds at which velocities: bands of a few, one take after the other."""
    low, high = velocities
    starts = range(low, high + 1, _TAKE_BAND)
    return [(number % takes, (start, min(start + _TAKE_BAND - 1, high)))
            for number, start in enumerate(starts)]


#: A noise's sound: made of a take's number and of whether it is played hard.
Noise = Callable[[int, bool], Samples]

#: How many takes there are of every noise.
_TAKES = 3

#: A noise is never cut short by the end of its note.
_NOISE_RELEASE = 20.0

_NOISE_ROOT = 60


#: A recording of a noise, and its shade.
Take = tuple[Recording, Shade | None]

#: The key of the bombo's skin, about.
_SKIN_KEY = 39.0

def _noise_takes(name: str, noise: Noise, played: float) -> dict[bool, list[Take]]:
    return {hard: [(_recording(f"{name} {take + 1}", _NOISE_ROOT, hard,
                               at_level(noise(take, hard), _layer_level(played, hard)), None), None)
                   for take in range(_TAKES)] for hard in _LAYERS}


def _skin_takes(name: str, skin: Noise, played: float) -> dict[bool, list[Take]]:
    """As of a noise, but shaded: a hide brightens with the stroke, and evenly so."""
    takes: dict[bool, list[Take]] = {hard: [] for hard in _LAYERS}
    for take in range(_TAKES):
        made = {hard: skin(take, hard) for hard in _LAYERS}
        shaded = shades(struck(made[False]), struck(made[True]), _SKIN_KEY, SOFT_TOP + 1)
        levels = _played(made[False], made[True], shaded, played)
        for hard, shade in zip(_LAYERS, shaded):
            takes[hard].append((_recording(f"{name} {take + 1}", _NOISE_ROOT, hard,
                                           at_level(made[hard], levels[hard]), None), shade))
    return takes


def _noise_zones(takes: dict[bool, list[Take]], keys: tuple[int, int],
                 semitones: int) -> list[Zone]:
    zones = []
    for hard, velocities in _LAYERS.items():
        for take, band in take_bands(_TAKES, velocities):
            recording, shade = takes[hard][take]
            zones.append(Zone(recording, keys, band, _NOISE_RELEASE, shade,
                              noise_semitones=semitones))
    return zones


#: Keys under the guitar's lowest string, which no note of a string needs. A chord and a key move
#: what is written by -6 to +17 semitones, so each noise has a span of keys and not one.
GOLPE_KEYS = (0, 16)
CHASQUIDO_KEYS = (17, 39)


def _strings_from(zones: list[Zone], lowest: int) -> list[Zone]:
    """The zones without the keys under a lowest one."""
    return [replace(zone, keys=(max(zone.keys[0], lowest), zone.keys[1])) for zone in zones]


def _guitarra() -> list[Zone]:
    strings = _zones("guitarra", [40, 45, 50, 55, 60, 65, 70, 75, 80], 0.35,
                     [(40, -24.0), (55, -24.6), (60, -27.5), (72, -30.3), (83, -33.5)],
                     lambda key, hard: (guitarra.note(key, hard), None))
    return (_strings_from(strings, CHASQUIDO_KEYS[1] + 1)
            + _noise_zones(_noise_takes("golpe", guitarra.golpe, -31.0), GOLPE_KEYS, 0)
            + _noise_zones(_noise_takes("chasquido", guitarra.chasquido, -33.0),
                           CHASQUIDO_KEYS, 0))


def _charango() -> list[Zone]:
    return _zones("charango", [65, 67, 70, 73, 76, 79, 82, 85, 88, 91], 0.25,
                  [(64, -29.0), (72, -31.0), (79, -34.6), (84, -36.3), (91, -38.0)],
                  lambda key, hard: (charango.note(key, hard), None))


def _acordeon() -> list[Zone]:
    return _zones("acordeon", list(range(54, 94, 3)), 0.12,
                  [(53, -27.6), (66, -30.0), (72, -30.0), (80, -27.5)], acordeon.note)


def _bandoneon() -> list[Zone]:
    return _zones("bandoneon", list(range(38, 96, 3)), 0.08,
                  [(36, -27.0), (58, -27.2), (65, -30.0), (72, -29.2), (80, -27.0)],
                  bandoneon.note)


#: Keys around which a chiff of the quena is made, and its level when soft and when hard.
_CHIFF_ROOTS = [70, 77, 84, 91, 98]
_CHIFF_LEVELS = {False: -53.0, True: -45.0}


def _chiffs() -> list[Zone]:
    zones: list[Zone] = []
    for root, keys in zip(_CHIFF_ROOTS, key_ranges(_CHIFF_ROOTS)):
        takes: dict[bool, list[Take]] = {
            hard: [(_recording(f"soplo {take + 1}", root, hard,
                               at_level(quena.chiff(root, take, hard), level), None), None)
                   for take in range(_TAKES)] for hard, level in _CHIFF_LEVELS.items()}
        zones += _noise_zones(takes, keys, 0)
    return zones


def _quena() -> list[Zone]:
    tones = _zones("quena", list(range(68, 104, 3)), 0.18, [(67, -23.2)], quena.note)
    return [replace(zone, vibrato=quena.VIBRATO) for zone in tones] + _chiffs()


_RIM = "aro"

#: How each sound of the bombo is struck, by take and hard or not, and its level at velocity 100.
_STROKES: dict[str, tuple[Noise, float]] = {
    "parche": (lambda take, hard: bombo.skin(Strike(hard, take=take)), -28.2),
    "parche grande": (lambda take, hard: bombo.skin(
        Strike(hard, fall=1.0, lowest_hz=bombo.LARGE_SKIN_HZ, take=take)), -31.6),
    "borde": (lambda take, hard: bombo.skin(Strike(hard, edge=1.0, fall=1.0, take=take)), -32.0),
    "apagado": (lambda take, hard: bombo.skin(Strike(hard, edge=0.6, fall=0.3, take=take)), -35.0),
    _RIM: (bombo.rim, -37.3),
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

def drum_sound(key: int) -> tuple[str, int]:
    """What the bombo plays on a key, and by how many semitones it is moved."""
    if key in _DRUM_KEYS:
        return _DRUM_KEYS[key]
    return ("parche", 0) if key < _LOWEST_RIM else (_RIM, _RIM_KEYS.get(key, 0))


def _bombo() -> list[Zone]:
    takes = {name: (_noise_takes if name == _RIM else _skin_takes)(name, stroke, played)
             for name, (stroke, played) in _STROKES.items()}
    zones: list[Zone] = []
    for (name, semitones), alike in groupby(range(_HIGHEST_KEY + 1), drum_sound):
        keys = list(alike)
        zones += _noise_zones(takes[name], (keys[0], keys[-1]), semitones)
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
