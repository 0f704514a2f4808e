"""Sources for the tests of the rhythm tools, and what comes of them."""

from __future__ import annotations

from collections.abc import Callable
from pathlib import Path
from unittest import TestCase

from velta_content.builder import build
from velta_content.check import check
from velta_content.model import Rhythm
from velta_content.problems import Problems
from velta_content.reader import read_text

HEADER = """\
ritmo: prueba
nombre: Ritmo de prueba
estilo: folklore "Folklore"
compás: {meter}
tempo: 80 100 120
fuente: las pruebas
groove 0: 0 +6
groove 1: -.02 -4
"""
DRUMS = 'capa percusion: "Percusión" gm_bateria percusión\nfuente: las pruebas\npapel: tambor\n'
GUITAR = 'capa guitarra: "Guitarra" gm_guitarra_nylon\nfuente: las pruebas\npapel: acordes\n'

_SECTIONS = {"Intro": 2, "Normal": 4, "Intermedio": 2, "Final": 2}
_LAYERS = {
    DRUMS: "bombo: {}",
    'capa bajo: "Bajo" gm_bajo\nfuente: las pruebas\npapel: bajo\n': "C2: {}",
    GUITAR: "C4: {}",
    'capa violin: "Violín" gm_violin\nfuente: las pruebas\npapel: respuesta\n': "C5: {}",
}


def whole_source() -> str:
    """A rhythm in 4/4 that breaks no rule."""
    return HEADER.format(meter="4/4") + "".join(_layer(head, voice) for head, voice in _LAYERS.items())


def _layer(head: str, voice: str) -> str:
    lines = [head]
    for order, (section, count) in enumerate(_SECTIONS.items()):
        for index in range(1, count + 1):
            loud = 70 + 5 * order + index
            events = " ".join(f"{beat}/.4@{loud - 6 * beat}" for beat in range(index if section == "Normal" else 2))
            lines.append(f"{section} {index}, 1 compás:\n    " + voice.format(events) + "\n")
    return "".join(lines)


def rhythm_of(text: str, name: str = "prueba") -> Rhythm:
    """The rhythm of a text: read, built and checked."""
    rhythm = read_text(text, Problems(Path(f"{name}.ritmo")))
    build(rhythm)
    check(rhythm)
    return rhythm


def problems_of(text: str) -> list[tuple[int, str]]:
    """Line and text of all faults, advice aside."""
    return [(p.line, p.message) for p in sorted(rhythm_of(text).problems.found) if not p.warning]


def notes(body: str, bars: int = 1, layer: str = GUITAR, meter: str = "4/4") -> list[tuple[float, float, int, int]]:
    """Start, length, pitch and velocity of the notes of the last variant of a layer.

    `body` holds the lines of `Normal 9`, of so many bars; it may open others before it.
    """
    lines = body if "compás:" in body or "compases:" in body else f"Normal 9, {bars} compases:\n{body}"
    rhythm = read_text(HEADER.format(meter=meter) + layer + lines + "\n", Problems(Path("prueba.ritmo")))
    build(rhythm)
    if not rhythm.problems.finished:
        raise AssertionError([str(problem) for problem in rhythm.problems.found])
    last = list(list(rhythm.layers.values())[-1].variants.values())[-1]
    return [(n.start, n.length, n.pitch, n.velocity) for n in last.notes]


def rows(table: dict[str, tuple[object, ...]]) -> Callable[[type[TestCase]], type[TestCase]]:
    """Adds to a class a case for each row, which calls its `row` with the row's values."""

    def add(case: type[TestCase]) -> type[TestCase]:
        for name, values in table.items():
            def run(self: TestCase, values: tuple[object, ...] = values) -> None:
                self.row(*values)
            setattr(case, "test_" + name.replace(" ", "_"), run)
        return case

    return add
