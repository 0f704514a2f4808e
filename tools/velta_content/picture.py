"""Draws a rhythm: a row for each layer, its variants side by side as piano rolls."""

from __future__ import annotations

from xml.sax.saxutils import escape

from . import music
from .model import Layer, Note, Rhythm, Variant

_BEAT, _ROW, _DRUM_ROW = 22, 5, 9
_LEFT, _GAP, _TITLE, _NAME = 210, 14, 18, 8
_STYLE = (
    "text{font:11px sans-serif;fill:#333}.title{font-size:20px;font-weight:bold}"
    ".layer{font-weight:bold}.drum{font-size:8px}.frame{fill:#f6f6f8;stroke:#bbb}"
    ".bar{stroke:#999}.beat{stroke:#e2e2e6}.note{fill:#2367a8}"
)


def picture(rhythm: Rhythm) -> str:
    """The rhythm as an SVG document."""
    lowest, usual, highest = rhythm.tempo
    heading = f"{rhythm.name} · {rhythm.numerator}/{rhythm.denominator} · {lowest}–{usual}–{highest}"
    parts = [f'<text class="title" x="10" y="26">{escape(heading)}</text>']
    top, right = 44, 0
    for layer in rhythm.layers.values():
        drawn, height, width = _layer(rhythm, layer, top)
        parts += drawn
        top += height
        right = max(right, width)
    size = f'width="{right}" height="{top}" viewBox="0 0 {right} {top}"'
    return (f'<svg xmlns="http://www.w3.org/2000/svg" {size}><style>{_STYLE}</style>\n'
            f'<rect width="{right}" height="{top}" fill="white"/>\n' + "\n".join(parts) + "\n</svg>\n")


def _rows(layer: Layer) -> list[int]:
    """The pitches that have a row, from top to bottom."""
    used = {note.pitch for variant in layer.loops() for note in variant.notes}
    noises = {pitch for pitch in used if music.noise_name(pitch, layer.instrument)}
    tones = used - noises
    if layer.percussion or not tones:
        return sorted(used, reverse=True)
    return list(range(max(tones) + 1, min(tones) - 2, -1)) + sorted(noises, reverse=True)


def _row_name(layer: Layer, pitch: int) -> str:
    if layer.percussion:
        return music.drum_name(pitch)
    return music.noise_name(pitch, layer.instrument) or music.note_name(pitch)


def _named(layer: Layer, rows: list[int], row_height: int) -> list[int]:
    """The rows that sound and whose names have room, each clear of the one above it."""
    used = {note.pitch for variant in layer.loops() for note in variant.notes}
    named: list[int] = []
    for i, pitch in enumerate(rows):
        if pitch in used and (not named or (i - named[-1]) * row_height >= _NAME):
            named.append(i)
    return named


def _layer(rhythm: Rhythm, layer: Layer, top: int) -> tuple[list[str], int, int]:
    rows = _rows(layer)
    row_height = _DRUM_ROW if layer.percussion else _ROW
    height = max(len(rows), 6) * row_height
    parts = [f'<text class="layer" x="10" y="{top + _TITLE + 10}">{escape(layer.label)}</text>',
             f'<text x="10" y="{top + _TITLE + 25}">{escape(layer.instrument)}</text>']
    parts += [f'<text class="drum" text-anchor="end" x="{_LEFT - 5}" y="{top + _TITLE + (i + 1) * row_height - 1}">'
              f"{escape(_row_name(layer, rows[i]))}</text>" for i in _named(layer, rows, row_height)]
    left = _LEFT
    for variant in layer.loops():
        parts += _variant(rhythm, variant, rows, row_height, left, top + _TITLE, height)
        left += int(variant.bars * rhythm.bar * _BEAT) + _GAP
    return parts, height + _TITLE + 16, left


def _variant(rhythm: Rhythm, variant: Variant, rows: list[int], row_height: int,
             left: int, top: int, height: int) -> list[str]:
    beats = variant.bars * rhythm.bar
    parts = [f'<text x="{left}" y="{top - 4}">{escape(variant.name)}</text>',
             f'<rect class="frame" x="{left}" y="{top}" width="{beats * _BEAT:g}" height="{height}"/>']
    for i in range(1, int(beats)):
        parts.append(_line("beat", left + i * _BEAT, top, height))
    for i in range(1, variant.bars):
        x = left + i * rhythm.bar * _BEAT
        parts.append(_line("bar", x, top, height))
        parts.append(f'<text class="drum" x="{x + 2:g}" y="{top + height + 8}">{i + 1}</text>')
    return parts + [_note(note, rows, row_height, left, top) for note in variant.notes]


def _line(kind: str, x: float, top: int, height: int) -> str:
    return f'<line class="{kind}" x1="{x:g}" x2="{x:g}" y1="{top}" y2="{top + height}"/>'


def _note(note: Note, rows: list[int], row_height: int, left: int, top: int) -> str:
    x = left + note.start * _BEAT
    y = top + rows.index(note.pitch) * row_height
    return (f'<rect class="note" x="{x:.1f}" y="{y}" width="{max(note.length * _BEAT, 2):.1f}" '
            f'height="{row_height - 1}" fill-opacity="{0.15 + 0.85 * note.velocity / 127:.2f}">'
            f"<title>{music.note_name(note.pitch)} @{note.velocity}</title></rect>")
