"""Reads the lines of a variant that hold music: grids and events."""

from __future__ import annotations

import re
from dataclasses import dataclass, field, replace

from . import music
from .model import Layer, Note, Rhythm
from .problems import SourceError
from .strokes import STROKES, Event, notes_of
from .voices import Voice, bars_of, pitches_of, voice_of
from .words import number, shown, whole

MAX_CELLS = 96

# What an up-stroke or a chasquido strikes where the line does not say.
USUAL_UP_VOICING = "G-high"
# A chasquido is damped at once, however long its cell; so is a noise where its line says nothing.
CHASQUIDO_LENGTH = 0.1

_TOKEN = re.compile(r"\[[^\]]*\][^\s·;]*|[^\s·;]+")
_SUFFIX = re.compile(r"/(?P<length>[\d.]+)|@(?P<velocity>\w+)|\((?P<offset>[-+\d.]+)\)|~(?P<spread>[\d.]+)")
_HEAD = re.compile(r"\[[^\]]*\]|[^/@(~\[]+")


@dataclass
class Figure:
    """What a line plays: notes for the bars that it names, and whose former notes it replaces."""

    notes: list[Note] = field(default_factory=list)
    cleared: list[tuple[int, frozenset[int] | None]] = field(default_factory=list)


class FigureReader:
    """Reads the musical lines of one variant of `bars` bars."""

    def __init__(self, rhythm: Rhythm, layer: Layer, bars: int) -> None:
        self.rhythm = rhythm
        self.layer = layer
        self.bars = bars
        #: Cells of bars that no one counts in: most often a character is missing.
        self.odd_cells: list[int] = []

    def read(self, text: str) -> Figure:
        """The figure of a line, grid or events."""
        bars, text = self._leading_bars(text)
        replaces = text.startswith("!")
        text = text[1:].strip() if replaces or text.startswith("+") else text
        if "|" in text:
            return self._grid(text, bars, replaces)
        return self._events(text, bars, replaces)

    def _leading_bars(self, text: str) -> tuple[list[int], str]:
        word, _, rest = text.partition(" ")
        bars = bars_of(word, self.bars)
        return (list(range(self.bars)), text) if bars is None else (bars, rest.strip())

    # Grids ---------------------------------------------------------------------------------

    def _grid(self, text: str, bars: list[int], replaces: bool) -> Figure:
        name, *drawn = text.split("|")
        voice = voice_of(name.strip(), self.rhythm, self.layer)
        cells = self._cells(self._repeated(drawn), voice)
        if len(bars) % (count := cells[-1][0] + 1):
            raise SourceError(f"{count} compases escritos no entran justo en {len(bars)}")
        figure = Figure()
        if replaces:
            figure.cleared = [(bar, frozenset(voice.pitches) or None) for bar in bars]
        for first in range(0, len(bars), count):
            for event, bar in self._grid_events(cells, voice):
                figure.notes.extend(self._placed(event, bars[first + bar]))
        return figure

    @staticmethod
    def _repeated(drawn: list[str]) -> list[str]:
        *bars, last = drawn
        match = re.fullmatch(r"x(\d{1,2})", last.strip())
        if last.strip() and not match:
            raise SourceError("la grilla termina con «|», o con «| x2» si se repite")
        if not bars:
            raise SourceError("la grilla se escribe: voz | x . x . |")
        return bars * max(1, int(match.group(1)) if match else 1)

    def _cells(self, bars: list[str], voice: Voice) -> list[tuple[int, float, float, str]]:
        """(bar, position, length, text) of every cell."""
        if len(bars) > self.bars:
            raise SourceError(f"hay {len(bars)} compases escritos y la variante tiene {self.bars}")
        found = []
        for bar, text in enumerate(bars):
            cells = _TOKEN.findall(text) if voice.tokens else list("".join(text.split()))
            if not 1 <= len(cells) <= MAX_CELLS:
                raise SourceError(f"un compás tiene de 1 a {MAX_CELLS} casillas, no {len(cells)}")
            if not _is_even(self.rhythm, len(cells)):
                self.odd_cells.append(len(cells))
            step = self.rhythm.bar / len(cells)
            found.extend((bar, i * step, step, cell) for i, cell in enumerate(cells))
        return found

    def _grid_events(self, cells: list[tuple[int, float, float, str]], voice: Voice) -> list[tuple[Event, int]]:
        events: list[tuple[Event, int, int]] = []
        held: tuple[Event, int, int] | None = None
        for bar, position, step, text in cells:
            if text == "-":
                if held is None:
                    raise SourceError("«-» prolonga lo anterior, y antes no suena nada")
                held[0].length += step
                held = (held[0], held[1], held[2] + 1)
                events[-1] = held
            elif text == ".":
                held = None
            else:
                event = self._token_cell(text, voice) if voice.tokens else self._level_cell(text, voice)
                held = (replace(event, position=position, length=step), bar, 0)
                events.append(held)
        return [(self._articulated(event, ties), bar) for event, bar, ties in events]

    def _articulated(self, event: Event, ties: int) -> Event:
        playing = self.layer.playing
        if self.layer.percussion:
            return event if ties else replace(event, length=playing.length)
        if event.stroke == "X" and not ties:
            return replace(event, length=min(event.length, CHASQUIDO_LENGTH))
        return replace(event, length=event.length * playing.gate)

    def _level_cell(self, text: str, voice: Voice) -> Event:
        if text not in self.layer.playing.levels:
            known = " ".join(self.layer.playing.levels)
            raise SourceError(f"«{text}» no es un nivel ({known}), ni «.» ni «-»")
        return Event(0.0, velocity=self.layer.playing.levels[text], pitches=voice.pitches)

    def _token_cell(self, text: str, voice: Voice) -> Event:
        event = Event(0.0, pitches=voice.pitches)
        self._body(event, text)
        if event.length is not None:
            raise SourceError("en una grilla la duración la dan las casillas")
        if voice.strummed and not event.stroke:
            raise SourceError(f"«{text}»: en un rasgueo van D, U o X")
        return event

    # Events --------------------------------------------------------------------------------

    def _events(self, text: str, bars: list[int], replaces: bool) -> Figure:
        figure = Figure()
        voice: Voice = Voice()
        event: Event | None = None
        current = bars

        def finish() -> None:
            if event:
                self._add(figure, event, current, voice if replaces else None)

        for token in (token.rstrip(",") for token in _TOKEN.findall(text)):
            named = bars_of(token, self.bars)
            if named is not None:
                finish()
                event, current = None, named
            elif token.endswith(":"):
                finish()
                event, voice = None, voice_of(token[:-1], self.rhythm, self.layer)
            elif token[:1].isdigit() or token.startswith("."):
                finish()
                event = self._timed(token, voice)
            elif event:
                self._body(event, token)
            elif token:
                raise SourceError(f"«{token}»: antes va la posición, como 1.5/.4 C3")
        finish()
        if not figure.notes:
            raise SourceError(
                "no entiendo esta línea: ni grilla «voz | x . |» ni eventos «posición/duración nota»")
        return figure

    def _timed(self, token: str, voice: Voice) -> Event:
        head, suffixes = self._split(token)
        position = number(head, "la posición")
        if position >= self.rhythm.bar:
            raise SourceError(
                f"la posición {shown(position)} queda fuera del compás, que dura {shown(self.rhythm.bar)}")
        event = Event(position, pitches=voice.pitches)
        self._apply(event, suffixes)
        return event

    def _body(self, event: Event, token: str) -> None:
        head, suffixes = self._split(token)
        if head in STROKES and not self.layer.percussion:
            event.stroke = head
            if head != "D" and not event.pitches:
                event.pitches = pitches_of(USUAL_UP_VOICING, self.rhythm, self.layer)
        else:
            event.pitches = pitches_of(head, self.rhythm, self.layer)
        self._apply(event, suffixes)

    @staticmethod
    def _split(token: str) -> tuple[str, str]:
        match = _HEAD.match(token)
        if not match:
            raise SourceError(f"no entiendo «{token}»")
        return match.group(), token[match.end():]

    def _apply(self, event: Event, suffixes: str) -> None:
        end = 0
        seen: set[str | None] = set()
        for match in _SUFFIX.finditer(suffixes):
            if match.start() != end or match.lastgroup in seen:
                break
            seen.add(match.lastgroup)
            end = match.end()
            self._set(event, match.lastgroup, match[match.lastgroup or 0])
        if end != len(suffixes):
            raise SourceError(f"no entiendo «{suffixes[end:]}»")
        if event.length is not None and not 0.01 <= event.length <= 64:
            raise SourceError(f"la duración {shown(event.length)} no sirve: de 0.01 a 64 tiempos")
        if abs(event.offset) > 0.2:
            raise SourceError(f"el desvío {shown(event.offset)} pasa de 0.2 tiempos")

    def _set(self, event: Event, kind: str | None, value: str) -> None:
        if kind == "length":
            event.length = number(value, "la duración")
        elif kind == "velocity":
            event.velocity = self._velocity(value)
        elif kind == "offset":
            event.offset = number(value, "el desvío")
        else:
            event.spread = number(value, "la extensión del rasgueo")

    def _velocity(self, word: str) -> int:
        if word in self.layer.playing.levels:
            return self.layer.playing.levels[word]
        return whole(word, "la fuerza", 1, 127)

    def _add(self, figure: Figure, event: Event, bars: list[int], replaced: Voice | None) -> None:
        for bar in bars:
            figure.notes.extend(self._placed(event, bar))
            if replaced:
                figure.cleared.append((bar, frozenset(replaced.pitches) or None))

    def _usual_length(self, event: Event) -> float | None:
        noises = event.pitches and all(
            music.noise_name(pitch, self.layer.instrument) for pitch in event.pitches)
        return CHASQUIDO_LENGTH if noises else self.layer.playing.length

    def _placed(self, event: Event, bar: int) -> list[Note]:
        playing = self.layer.playing
        usual = "o" if event.stroke == "U" else "x"
        complete = replace(
            event,
            length=self._usual_length(event) if event.length is None else event.length,
            velocity=playing.levels[usual] if event.velocity is None else event.velocity)
        return [note.moved(bar * self.rhythm.bar)
                for note in notes_of(complete, playing, self.rhythm.tempo[1], self.rhythm.pulse)]


def _is_even(rhythm: Rhythm, cells: int) -> bool:
    """Whether the cells of a bar are pulses, or divide or gather them as music does."""
    step = rhythm.bar / cells
    if rhythm.compound:
        # Quarters and their halves are the 3/4 under a 6/8.
        return _fits(step, 1.5) or round(1.0 / step, 6) in (1, 2, 4)
    return _fits(step, 1.0) or (rhythm.bar == 3.0 and _fits(step, 1.5))


def _fits(step: float, pulse: float) -> bool:
    pulses = step / pulse
    return abs(pulses - round(pulses)) < 1e-6 or round(1.0 / pulses, 6) in (1, 2, 3, 4, 6, 8)
