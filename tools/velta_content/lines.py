"""Whether the lines of a layer survive every key, mode and chord that a song may bring."""

from __future__ import annotations

from collections.abc import Iterator

from . import music
from .mapping import extent, widest_leap
from .model import Layer, Note, Rhythm, Variant
from .roles import ROLES
from .speaker import Speaker

# Notes that a bass may end a loop on: the next chord lies up to ten semitones below.
BASS_ENDS = (36, 38)
# Of the intervals of a melody, so many per cent may leap over an octave.
MOST_LEAPS_PERCENT = 5
_MELODIES = ("respuesta", "canto")


def check_roles(rhythm: Rhythm) -> None:
    """Each layer has a role of its kind, and one of them is the bass that all are measured against."""
    for layer in rhythm.layers.values():
        if not layer.role:
            rhythm.problems.missing(layer.line, f"a la capa le falta «papel:»: {', '.join(ROLES)}")
        elif ROLES[layer.role].percussion != layer.percussion:
            kind = "de percusión" if layer.percussion else "con altura"
            rhythm.problems.error(layer.line, f"«{layer.role}» no es papel de una capa {kind}")
    basses = [layer for layer in rhythm.layers.values() if layer.role == "bajo"]
    if len(basses) != 1:
        rhythm.problems.missing(1, f"un ritmo tiene una capa de papel «bajo», y acá hay {len(basses)}")


def check_lines(rhythm: Rhythm, layer: Layer) -> None:
    """Leaps of basses and melodies, and where basses end."""
    if layer.role == "bajo":
        _check_bass(rhythm, layer)
    elif layer.role in _MELODIES:
        _check_melody(rhythm, layer)


def check_range(said: Speaker, variant: Variant, instrument: music.Instrument,
                compass: tuple[int, int]) -> None:
    """No note may leave the instrument in any key, mode and degree."""
    for note in variant.notes:
        if music.noise_name(note.pitch, instrument.id):
            continue
        low, high = extent(note.pitch)
        beyond = low if low < compass[0] else high
        if low < compass[0] or high > compass[1]:
            said.error(note, f"{music.note_name(note.pitch)} llega a {music.note_name(beyond)} en otro tono o acorde, "
                             f"y {instrument.name} va de {music.note_name(compass[0])} a {music.note_name(compass[1])}")


def _check_bass(rhythm: Rhythm, layer: Layer) -> None:
    for variant in layer.loops():
        said = Speaker(rhythm, layer, variant)
        line = _outline(variant, lowest=True)
        for first, second in zip(line, line[1:] + line[:1]):
            _check_leap(said, layer, first, second)
        if line and line[-1].pitch not in BASS_ENDS:
            said.error(line[-1], f"el bajo termina en {music.note_name(line[-1].pitch)}: "
                                 "termina en C2 o D2, que el acorde que sigue puede estar lejos")


def _check_leap(said: Speaker, layer: Layer, first: Note, second: Note) -> None:
    leap, mode, degree = widest_leap(first.pitch, second.pitch)
    if leap > layer.widest_leap:
        said.error(second, f"{_leap(first, second)} {leap} semitonos en el grado {degree} de {mode}")


def _check_melody(rhythm: Rhythm, layer: Layer) -> None:
    pairs = [(variant, *pair) for variant in layer.loops() for pair in _steps(variant)]
    wide = [pair for pair in pairs if widest_leap(pair[1].pitch, pair[2].pitch)[0] > layer.widest_leap]
    for variant, first, second in wide:
        leap, mode, degree = widest_leap(first.pitch, second.pitch)
        Speaker(rhythm, layer, variant).warning(
            second, f"{_leap(first, second)} {leap} semitonos en el grado {degree} de {mode}")
    if len(wide) * 100 > MOST_LEAPS_PERCENT * len(pairs):
        rhythm.problems.error(
            layer.line, f"{len(wide)} de los {len(pairs)} intervalos de la melodía saltan más de una octava sobre "
                        f"algún acorde; se admite un {MOST_LEAPS_PERCENT} %. "
                        "Sin saltos: E4 G4 C5 con E4 abajo, en la octava que sea")


def _leap(first: Note, second: Note) -> str:
    return f"de {music.note_name(first.pitch)} a {music.note_name(second.pitch)} salta"


def _steps(variant: Variant) -> Iterator[tuple[Note, Note]]:
    line = _outline(variant, lowest=False)
    return zip(line, line[1:])


def _outline(variant: Variant, lowest: bool) -> list[Note]:
    """The lowest or the highest of the notes that are struck together, in the order of time."""
    outer: dict[float, Note] = {}
    for note in variant.notes:
        known = outer.setdefault(note.home, note)
        if (note.pitch < known.pitch) == lowest:
            outer[note.home] = note
    return [outer[home] for home in sorted(outer)]
