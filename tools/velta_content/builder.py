"""Builds the notes of every variant: figures, references between variants, changes."""

from __future__ import annotations

import re
from collections.abc import Callable
from dataclasses import replace

from . import music
from .figures import FigureReader
from .model import MAX_DEPTH, MAX_NOTES, MAX_NOTES_OF_A_RHYTHM, SECTIONS, Layer, Line, Note, Rhythm, Variant
from .problems import SourceError
from .roles import role_of
from .voices import bars_of, voice_of
from .words import number, plain, whole

_NAMED = re.compile(r"(?:([a-z][a-z0-9_]*)\.)?([^\W\d]\w*)(?:\s+(\d{1,2})(?=\s|$))?\s*(.*)")
_FORCE = re.compile(r"x[\d.]+|[+-]\d{1,3}")
_EPSILON = 1e-6

# A pitch struck again later than this ends the former note; sooner, it is a mistake.
NEXT_STRIKE = 0.06

# Beats of silence before a pitch is struck again, and the most of the distance that they take.
# Groove and jitter move notes: an end that comes after the new stroke would cut that stroke off.
DAMPING, DAMPING_SHARE = 0.08, 0.2


def build(rhythm: Rhythm) -> None:
    """Fills in the notes of all variants; what is wrong goes to the rhythm's problems."""
    if rhythm.bar <= 0 or not rhythm.tempo[1]:
        return
    builder = _Builder(rhythm)
    for layer in rhythm.layers.values():
        for variant in layer.variants.values():
            factor = rhythm.section_mix.get(variant.section, 1.0)
            mixed = [_mixed(layer, note, factor) for note in builder.notes(layer, variant)]
            variant.notes = finished(mixed, variant.bars * rhythm.bar)


def _mixed(layer: Layer, note: Note, section_mix: float) -> Note:
    playing = layer.playing
    factor = section_mix * playing.mix * playing.role_mix.get(role_of(layer, note), 1.0)
    return replace(note, velocity=_held(note.velocity * factor))


def finished(notes: list[Note], beats: float) -> list[Note]:
    """Sorted, rounded to a thousandth of a beat, and damped before each pitch is struck again.

    The loop is `beats` long and comes round: its last notes make room for its first ones too.
    """
    rounded = [_rounded(note) for note in notes]
    rounded.sort(key=lambda note: (note.start, note.pitch, note.velocity))
    following = {note.pitch: note.start + beats for note in reversed(rounded)}
    for i in reversed(range(len(rounded))):
        note = rounded[i]
        rounded[i] = _damped(note, following[note.pitch])
        following[note.pitch] = note.start
    return rounded


def _rounded(note: Note) -> Note:
    start, end = round(note.start, 3), round(note.start + note.length, 3)
    return replace(note, start=start, length=round(end - start, 3))


def _damped(note: Note, next_start: float) -> Note:
    distance = next_start - note.start
    room = distance - min(DAMPING, distance * DAMPING_SHARE)
    if distance <= NEXT_STRIKE or note.length <= room:
        return note
    return replace(note, length=round(room, 3))


class _Builder:
    def __init__(self, rhythm: Rhythm) -> None:
        self.rhythm = rhythm
        self.done: dict[int, list[Note]] = {}
        self.open: list[Variant] = []
        self.total = 0

    def notes(self, layer: Layer, variant: Variant) -> list[Note]:
        """The notes of a variant, from memory the second time."""
        if id(variant) not in self.done:
            self.open.append(variant)
            self.done[id(variant)] = self._bounded(self._build(layer, variant), variant)
            self.open.pop()
        return self.done[id(variant)]

    def _bounded(self, notes: list[Note], variant: Variant) -> list[Note]:
        self.total += len(notes)
        if self.total <= MAX_NOTES_OF_A_RHYTHM:
            return notes
        self.rhythm.problems.error(variant.line, f"el ritmo pasa de {MAX_NOTES_OF_A_RHYTHM} notas")
        return []

    def _build(self, layer: Layer, variant: Variant) -> list[Note]:
        notes: list[Note] = []
        for line in variant.body:
            try:
                notes = self._line(layer, variant, line, notes)
                if len(notes) > MAX_NOTES:
                    raise SourceError(f"la variante pasa de {MAX_NOTES} notas")
            except SourceError as error:
                self.rhythm.problems.error(line.number, str(error))
                notes = notes[:MAX_NOTES]
        return notes

    def _line(self, layer: Layer, variant: Variant, line: Line, notes: list[Note]) -> list[Note]:
        word, _, rest = line.text.partition(" ")
        bars = bars_of(word, variant.bars)
        text = line.text if bars is None else rest.strip()
        chosen = list(range(variant.bars)) if bars is None else bars
        command, _, arguments = text.partition(" ")
        changes: dict[str, Callable[[], list[Note]]] = {
            "fuerza": lambda: self._changed(notes, chosen, self._force(arguments)),
            "octava": lambda: self._changed(notes, chosen, self._octave(arguments, layer)),
            "crece": lambda: self._swell(notes, chosen, arguments),
            "quitar": lambda: self._without(notes, chosen, arguments, layer),
        }
        if match := re.match(r"(!?)\s*=\s*", text):
            kept = [note for note in notes if not match.group(1) or self._bar(note) not in chosen]
            return kept + self._quoted(layer, chosen, text[match.end():])
        if plain(command) in changes:
            return changes[plain(command)]()
        reader = FigureReader(self.rhythm, layer, variant.bars)
        figure = reader.read(line.text)
        for cells in reader.odd_cells:
            self.rhythm.problems.warning(
                line.number, f"{cells} casillas no caen en los tiempos del compás: ¿falta o sobra un carácter?")
        for bar, pitches in figure.cleared:
            notes = [n for n in notes if self._bar(n) != bar or (pitches is not None and n.pitch not in pitches)]
        return notes + [replace(note, line=line.number) for note in figure.notes]

    def _bar(self, note: Note) -> int:
        return int((note.home + _EPSILON) // self.rhythm.bar)

    # References ----------------------------------------------------------------------------

    def _quoted(self, layer: Layer, bars: list[int], text: str) -> list[Note]:
        match = _NAMED.fullmatch(text)
        if not match:
            raise SourceError("se escribe: = Normal 1, = capa.Normal 1 o = figura")
        of_layer, name, index, rest = match.groups()
        source_layer, source = self._find(layer, of_layer, name, index)
        notes = self._enter(source_layer, source)
        words = rest.replace(",", " , ").split()
        taken = list(range(source.bars))
        if words and (named := bars_of(words[0], source.bars)) is not None:
            taken, words = named, words[1:]
        by_bar: dict[int, list[Note]] = {}
        for note in notes:
            by_bar.setdefault(self._bar(note), []).append(note)
        result: list[Note] = []
        for i, bar in enumerate(bars):
            origin = taken[i % len(taken)]
            result += [note.moved((bar - origin) * self.rhythm.bar) for note in by_bar.get(origin, [])]
        return self._modified(result, words, layer)

    def _find(self, layer: Layer, of_layer: str | None, name: str, index: str | None) -> tuple[Layer, Variant]:
        found = layer if of_layer is None else self.rhythm.layers.get(of_layer)
        if found is None:
            raise SourceError(f"no hay una capa «{of_layer}»")
        if found.percussion != layer.percussion:
            raise SourceError("no se puede copiar entre percusión e instrumentos con altura")
        section = {plain(s): s for s in SECTIONS}.get(plain(name))
        wanted = f"{section} {int(index)}" if section and index else plain(name) + (f" {index}" if index else "")
        if wanted not in found.variants:
            raise SourceError(f"no hay «{wanted}» en la capa «{of_layer or layer.id}»")
        return found, found.variants[wanted]

    def _enter(self, layer: Layer, variant: Variant) -> list[Note]:
        if any(other is variant for other in self.open):
            names = [v.name for v in self.open] + [variant.name]
            raise SourceError(f"las referencias dan vueltas: {' → '.join(names)}")
        if len(self.open) >= MAX_DEPTH:
            raise SourceError(f"hay más de {MAX_DEPTH} referencias encadenadas")
        return self.notes(layer, variant)

    def _modified(self, notes: list[Note], words: list[str], layer: Layer) -> list[Note]:
        words = [word for word in words if word != ","]
        for command, argument in zip(words[::2], words[1::2]):
            if plain(command) == "fuerza":
                change = self._force(argument)
            elif plain(command) == "octava":
                change = self._octave(argument, layer)
            else:
                raise SourceError(f"no entiendo «{command}»: van fuerza u octava")
            notes = [change(note) for note in notes]
        if len(words) % 2:
            raise SourceError(f"no entiendo «{words[-1]}»: van fuerza u octava, con su número")
        return notes

    # Changes -------------------------------------------------------------------------------

    def _changed(self, notes: list[Note], bars: list[int], change: Callable[[Note], Note]) -> list[Note]:
        return [change(note) if self._bar(note) in bars else note for note in notes]

    @staticmethod
    def _force(text: str) -> Callable[[Note], Note]:
        text = text.strip()
        if not _FORCE.fullmatch(text):
            raise SourceError("la fuerza se cambia con +4, -6 o x0.9")
        if text.startswith("x"):
            factor = number(text[1:], "la fuerza")
            return lambda note: replace(note, velocity=_held(note.velocity * factor))
        amount = whole(text, "la fuerza", -126, 126)
        return lambda note: replace(note, velocity=_held(note.velocity + amount))

    @staticmethod
    def _octave(text: str, layer: Layer) -> Callable[[Note], Note]:
        if layer.percussion:
            raise SourceError("la percusión no tiene octavas")
        amount = 12 * whole(text.strip(), "la octava", -4, 4)

        def moved(note: Note) -> Note:
            if music.noise_name(note.pitch, layer.instrument):
                return note
            if not 0 <= note.pitch + amount <= 127:
                raise SourceError("la octava saca una nota del teclado")
            return replace(note, pitch=note.pitch + amount)

        return moved

    def _swell(self, notes: list[Note], bars: list[int], text: str) -> list[Note]:
        words = text.split()
        if len(words) != 2 or bars != list(range(bars[0], bars[-1] + 1)):
            raise SourceError("se escribe: crece -8 +8, sobre compases seguidos")
        low, high = (whole(word, "el crecimiento", -60, 60) for word in words)
        first, span = bars[0] * self.rhythm.bar, len(bars) * self.rhythm.bar

        def grown(note: Note) -> Note:
            return replace(note, velocity=_held(note.velocity + low + (high - low) * (note.home - first) / span))

        return self._changed(notes, bars, grown)

    def _without(self, notes: list[Note], bars: list[int], text: str, layer: Layer) -> list[Note]:
        words = re.findall(r"\[[^\]]*\]|\S+", text)
        if not words:
            raise SourceError("falta qué se quita: quitar todo, quitar P, quitar P 1.5")
        pitches = None if plain(words[0]) == "todo" else voice_of(words[0], self.rhythm, layer).pitches
        positions = [number(word.rstrip(","), "la posición") for word in words[1:]]

        def goes(note: Note) -> bool:
            beat = note.home - self._bar(note) * self.rhythm.bar
            return (self._bar(note) in bars and (pitches is None or note.pitch in pitches)
                    and (not positions or any(abs(beat - position) < 0.01 for position in positions)))

        kept = [note for note in notes if not goes(note)]
        if len(kept) == len(notes):
            raise SourceError("no hay nada que quitar ahí")
        return kept


def _held(value: float) -> int:
    return max(1, min(127, int(value + 0.5)))
