"""Notes, drums, voicings and instruments that every author may name."""

from __future__ import annotations

import re
from dataclasses import dataclass
from difflib import get_close_matches

from .words import plain

# The notes as they are sung; Do4 is middle C, as C4.
_SUNG = {"do": "C", "re": "D", "mi": "E", "fa": "F", "sol": "G", "la": "A", "si": "B"}
_SUNG_NOTE = re.compile(r"(do|re|mi|fa|sol|la|si)([#b]?)(-?\d)")
_STEPS = {"C": 0, "D": 2, "E": 4, "F": 5, "G": 7, "A": 9, "B": 11}
_NOTE = re.compile(r"([A-G])([#b]?)(-?\d)")
_NAMES = ("C", "C#", "D", "D#", "E", "F", "F#", "G", "G#", "A", "A#", "B")

# Keys of the General MIDI drum kit by their names, without accents.
_DRUMS = {
    "bombo_acustico": 35, "bombo": 36, "aro": 37, "redoblante": 38, "palmas": 39,
    "redoblante_2": 40, "parche": 41, "hihat": 42, "tom_piso": 43, "hihat_pie": 44,
    "tom_grave": 45, "hihat_abierto": 46, "tom_medio_grave": 47, "tom_medio": 48, "crash": 49,
    "tom_agudo": 50, "ride": 51, "china": 52, "campana_ride": 53, "pandereta": 54, "splash": 55,
    "cencerro": 56, "crash_2": 57, "vibraslap": 58, "ride_2": 59, "bongo_agudo": 60,
    "bongo_grave": 61, "conga_tapada": 62, "conga_abierta": 63, "conga_grave": 64,
    "timbal_agudo": 65, "timbal_grave": 66, "agogo_agudo": 67, "agogo_grave": 68, "cabasa": 69,
    "maracas": 70, "silbato_corto": 71, "silbato_largo": 72, "guiro_corto": 73,
    "guiro_largo": 74, "claves": 75, "caja_china_aguda": 76, "caja_china_grave": 77,
    "cuica_tapada": 78, "cuica_abierta": 79, "triangulo_tapado": 80, "triangulo_abierto": 81,
    "shaker": 82, "cascabeles": 83, "campanillas": 84, "castanuelas": 85, "surdo_tapado": 86,
    "surdo_abierto": 87,
    "p": 41, "a": 37,
}

LOWEST_DRUM, HIGHEST_DRUM = 35, 87

# What drums are called besides, and what the table calls them.
_ALSO_CALLED = {
    "caja": "redoblante", "tambor": "redoblante", "platillo": "crash", "platillos": "crash",
    "charleston": "hihat", "hi_hat": "hihat", "guiro": "guiro_corto", "campana": "cencerro",
    "triangulo": "triangulo_abierto", "conga": "conga_abierta", "bongo": "bongo_agudo",
    "timbal": "timbal_agudo", "agogo": "agogo_agudo", "tom": "tom_medio", "clave": "claves",
    "palma": "palmas", "maraca": "maracas", "pandero": "pandereta", "castanuela": "castanuelas",
}

# Voicings of the chord C E G.
VOICINGS = {
    "G-low": ("C3", "G3", "C4"),
    "G-high": ("G3", "C4", "E4"),
    "G-full": ("C3", "G3", "C4", "E4", "G4"),
    "CH": ("C5", "E5", "G5"),
    "PN": ("E4", "G4", "C5"),
    "AC": ("E4", "G4", "C5"),
}

CATEGORIES = ("Piano", "Strings", "Percussion", "Bass", "Winds", "Synth", "Folklorico")


@dataclass(frozen=True)
class Instrument:
    """An instrument that layers may name; `recorded` ones have a bank of their own.

    `own_bank` is the path of a bank that the author brings along; nothing for those that the tools
    make.
    """

    id: str
    name: str
    category: str
    program: int
    recorded: bool = False
    own_bank: str = ""

    @property
    def bank(self) -> str:
        """Path of the recorded bank below the sound fonts, or nothing."""
        return f"instruments/{self.id}.sf2" if self.recorded else ""


BUILT_IN = {
    instrument.id: instrument
    for instrument in (
        Instrument("gm_piano", "Piano", "Piano", 0),
        Instrument("gm_epiano", "Piano eléctrico", "Piano", 4),
        Instrument("gm_guitarra_nylon", "Guitarra criolla (GM)", "Strings", 24),
        Instrument("gm_guitarra_electrica", "Guitarra eléctrica", "Strings", 27),
        Instrument("gm_cuerdas", "Cuerdas", "Strings", 48),
        Instrument("gm_violin", "Violín", "Strings", 40),
        Instrument("gm_bajo", "Bajo", "Bass", 33),
        Instrument("gm_bajo_acustico", "Bajo acústico", "Bass", 32),
        Instrument("gm_flauta", "Flauta", "Winds", 73),
        Instrument("gm_flauta_pan", "Flauta de pan", "Winds", 75),
        Instrument("gm_trompeta", "Trompeta", "Winds", 56),
        Instrument("gm_saxo", "Saxo", "Winds", 65),
        Instrument("gm_sintetizador", "Sintetizador", "Synth", 81),
        Instrument("gm_pad", "Pad suave", "Synth", 89),
        Instrument("gm_marimba", "Marimba", "Piano", 12),
        Instrument("gm_bateria", "Batería", "Percussion", 0),
    )
}

# Programs that stand in for the recorded instruments while their bank is missing.
STAND_INS = {
    "bombo_leguero": 117, "charango": 24, "guitarra_criolla": 24, "acordeon": 21,
    "bandoneon": 23, "quena": 75,
}

# Lowest and highest note of the recorded instruments, then of General MIDI programs.
_COMPASS_BY_ID = {
    "charango": (64, 96), "guitarra_criolla": (40, 83), "acordeon": (53, 93),
    "bandoneon": (36, 95), "quena": (67, 103),
}
_COMPASS = {
    0: (21, 108), 4: (21, 108), 7: (29, 89), 11: (53, 89), 12: (45, 96), 15: (64, 96),
    16: (36, 96), 18: (36, 96), 21: (53, 93), 22: (60, 96), 23: (36, 95), 24: (40, 88),
    25: (40, 86), 27: (40, 86), 28: (40, 86), 29: (40, 86), 30: (40, 86), 32: (28, 67),
    33: (28, 67), 34: (28, 67), 36: (28, 67), 38: (28, 67), 40: (55, 100), 45: (55, 100),
    46: (36, 91), 48: (36, 96), 52: (36, 96), 56: (54, 84), 57: (40, 70), 58: (28, 65),
    59: (54, 84), 60: (41, 77), 61: (40, 84), 65: (49, 80), 68: (58, 91), 71: (50, 94),
    72: (74, 108), 73: (60, 96), 75: (62, 95), 80: (36, 96), 81: (36, 96), 89: (36, 96),
}


# Noises that a recorded instrument has beside its tones, on keys under its range. A chord and a key
# move what is written by -6 to +17 semitones; the bank holds every noise over the keys it comes to.
NOISES = {"guitarra_criolla": {"golpe": 0, "chasquido": 22}}


def noise_of(name: str, instrument_id: str) -> int | None:
    """The key of a noise of an instrument; None for any other name."""
    return NOISES.get(instrument_id, {}).get(plain(name))


def noise_name(pitch: int, instrument_id: str) -> str | None:
    """The noise that an instrument has on a key, or None where it sounds a tone."""
    return next((name for name, key in NOISES.get(instrument_id, {}).items() if key == pitch), None)


def compass(instrument: Instrument) -> tuple[int, int] | None:
    """Lowest and highest note of the instrument, or None where it is not known."""
    return _COMPASS_BY_ID.get(instrument.id, _COMPASS.get(instrument.program))


def pitch_of(name: str) -> int | None:
    """The MIDI pitch of `C4` (60), `F#3`, `Bb2` or of `Do4`, `Fa#3`, `Sib2`; None for anything else."""
    match = _NOTE.fullmatch(_lettered(name))
    if not match:
        return None
    step, accidental, octave = match.groups()
    pitch = 12 * (int(octave) + 1) + _STEPS[step] + {"#": 1, "b": -1, "": 0}[accidental]
    return pitch if 0 <= pitch <= 127 else None


def _lettered(name: str) -> str:
    """A note that is written as it is sung, by its letter; any other name as it is."""
    match = _SUNG_NOTE.fullmatch(plain(name))
    return _SUNG[match.group(1)] + match.group(2) + match.group(3) if match else name


def note_name(pitch: int) -> str:
    """The name of a MIDI pitch, C4 being 60."""
    return f"{_NAMES[pitch % 12]}{pitch // 12 - 1}"


def drum_of(name: str) -> int | None:
    """The drum key of a number or of a name of the table; None for anything else."""
    if re.fullmatch(r"\d{1,3}", name):
        key = int(name)
        return key if LOWEST_DRUM <= key <= HIGHEST_DRUM else None
    return _DRUMS.get(plain(name))


def drum_name(key: int) -> str:
    """The first name of a drum key."""
    return next((name for name, number in _DRUMS.items() if number == key), str(key))


def drum_like(name: str) -> str | None:
    """A drum of the table that somebody may mean by a name, or None."""
    word = plain(name)
    if word in _ALSO_CALLED:
        return _ALSO_CALLED[word]
    return next(iter(get_close_matches(word, [drum for drum in _DRUMS if len(drum) > 1], 1, 0.75)), None)


def is_diatonic(pitch: int) -> bool:
    """Whether the pitch belongs to C Major."""
    return pitch % 12 in _STEPS.values()
