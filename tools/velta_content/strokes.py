"""From one written event to its notes: single notes, chords and strums."""

from __future__ import annotations

from dataclasses import dataclass

from .model import Note, Playing
from .problems import SourceError

# How much softer each string of a strum sounds than the first one touched.
_STRING_VELOCITY = (0, -3, -2, -4, -3, -4, -4, -4)
_UP_STROKE_STRINGS = 3
STROKES = {"D": 0, "U": 1, "X": 2}
# A strum that begins on its place is heard late by half of its width.
_LEAD_MS = 12.0
_ON_PULSE = 0.06


@dataclass
class Event:
    """An event of a line. Lengths and offsets in beats; None where the line does not say."""

    position: float
    length: float | None = None
    velocity: int | None = None
    offset: float = 0.0
    spread: float | None = None
    stroke: str = ""
    pitches: tuple[int, ...] = ()


def notes_of(event: Event, playing: Playing, usual_tempo: int, pulse: float) -> list[Note]:
    """The notes of an event whose length and velocity are known; chords change on pulses."""
    if event.length is None or event.velocity is None:
        raise SourceError("falta la duración: posición/duración, o «duración:» en la capa")
    if not event.pitches:
        raise SourceError("falta la nota, el acorde o el sonido")
    if event.stroke or event.spread is not None:
        return _strum(event, playing, usual_tempo, pulse)
    return _chord(event, playing)


def _chord(event: Event, playing: Playing) -> list[Note]:
    top = len(event.pitches) - 1
    return [
        Note(event.position + event.offset, event.length, pitch,
             _velocity(event.velocity + playing.voice_step * (top - i)), event.position)
        for i, pitch in enumerate(event.pitches)
    ]


def _strum(event: Event, playing: Playing, usual_tempo: int, pulse: float) -> list[Note]:
    strings = list(event.pitches)
    if event.stroke == "U":
        strings = strings[::-1][:_UP_STROKE_STRINGS]
    gap = playing.strum_ms[STROKES.get(event.stroke, 0)] * max(usual_tempo, 1) / 60000.0
    if event.spread is not None:
        gap = event.spread / max(len(strings) - 1, 1)
    if gap * (len(strings) - 1) > event.length * 0.8:
        gap = event.length * 0.8 / (len(strings) - 1)
    start = event.position + event.offset - _lead(event, usual_tempo, pulse)
    return [
        Note(start + i * gap, event.length - i * gap, pitch,
             _velocity(event.velocity + _STRING_VELOCITY[i]), event.position)
        for i, pitch in enumerate(strings)
    ]


def _lead(event: Event, usual_tempo: int, pulse: float) -> float:
    """Beats by which a strum begins early.

    Never on a pulse: a string that sounds before it would take its pitch from the chord before.
    A rolled chord begins where it is written.
    """
    beyond = event.position % pulse
    if event.spread is not None or min(beyond, pulse - beyond) < _ON_PULSE:
        return 0.0
    return _LEAD_MS * max(usual_tempo, 1) / 60000.0


def _velocity(value: int) -> int:
    return max(1, min(127, value))
