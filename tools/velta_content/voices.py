"""What the names of bars, voices, notes and drums in a line stand for."""

from __future__ import annotations

import re
from dataclasses import dataclass

from . import music
from .model import Layer, Rhythm
from .problems import SourceError
from .words import plain

_BARS = re.compile(r"b(\*|\d{1,3}(?:[-,]\d{1,3})*)")


@dataclass(frozen=True)
class Voice:
    """What a voice name stands for. `pitches` of a melody are empty: each event names its own."""

    pitches: tuple[int, ...] = ()
    strummed: bool = False
    tokens: bool = False


def bars_of(word: str, count: int) -> list[int] | None:
    """The bars, from 0, that `b1`, `b2-4`, `b1,3` or `b*` names; None for any other word."""
    match = _BARS.fullmatch(word)
    if not match:
        return None
    if match.group(1) == "*":
        return list(range(count))
    bars: list[int] = []
    for part in match.group(1).split(","):
        ends = [int(end) for end in part.split("-")]
        if len(ends) > 2 or not 1 <= ends[0] <= ends[-1] <= count:
            raise SourceError(f"«{word}»: la variante tiene compases del 1 al {count}")
        bars.extend(range(ends[0] - 1, ends[-1]))
    if len(set(bars)) != len(bars):
        raise SourceError(f"«{word}» nombra un compás dos veces")
    return bars


def voice_of(name: str, rhythm: Rhythm, layer: Layer) -> Voice:
    """What a voice name means in this layer."""
    words = name.split()
    if plain(name) == "notas" and not layer.percussion:
        return Voice(tokens=True)
    if words and plain(words[0]) == "rasgueo" and len(words) == 2 and not layer.percussion:
        return Voice(pitches_of(words[1], rhythm, layer), strummed=True, tokens=True)
    return Voice(pitches_of(name, rhythm, layer))


def pitches_of(name: str, rhythm: Rhythm, layer: Layer) -> tuple[int, ...]:
    """The pitches of a note, a chord, a named voicing, or the key of a drum or of a noise."""
    if layer.percussion:
        key = layer.playing.sounds.get(name, music.drum_of(name))
        if key is None:
            raise unknown_drum(name)
        return (key,)
    noise = music.noise_of(name, layer.instrument)
    if noise is not None:
        return (noise,)
    if name.startswith("["):
        pitches = [_pitch(word) for word in name.strip("[]").split()]
        if not 1 <= len(pitches) <= 8 or len(set(pitches)) != len(pitches):
            raise SourceError(f"«{name}»: un acorde son de una a ocho notas distintas")
        return tuple(sorted(pitches))
    if name in rhythm.chords:
        return rhythm.chords[name]
    if name in music.VOICINGS:
        return tuple(_pitch(note) for note in music.VOICINGS[name])
    return (_pitch(name),)


def unknown_drum(name: str) -> SourceError:
    """The message about a drum that nobody knows, with the one that may be meant."""
    like = music.drum_like(name)
    return SourceError(f"no conozco el sonido «{name}»" + (f"; ¿será «{like}»?" if like else ""))


def _pitch(name: str) -> int:
    pitch = music.pitch_of(name)
    if pitch is None:
        raise SourceError(f"no conozco la nota «{name}» (se escribe C4, G3, F#3, o Do4, Sol3, Fa#3)")
    return pitch
