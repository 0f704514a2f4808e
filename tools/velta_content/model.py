"""A rhythm as it was written, and as it comes out."""

from __future__ import annotations

from dataclasses import dataclass, field, replace
from pathlib import Path

from .music import Instrument
from .problems import Problems

SECTIONS = ("Intro", "Normal", "Intermedio", "Final")

# What keeps a hostile source from asking for the moon.
MAX_BARS = 16
MAX_NOTES = 2000
MAX_NOTES_OF_A_RHYTHM = 100_000
MAX_DEPTH = 24

OCTAVE = 12


@dataclass(frozen=True)
class Line:
    """A line of a source without its comment, and its number from 1."""

    number: int
    text: str


@dataclass(frozen=True)
class Note:
    """A note of a loop; beats count from the start of the loop.

    `home` is the place on the grid that it was written for, before strings and offsets move it;
    `line` is where it was written.
    """

    start: float
    length: float
    pitch: int
    velocity: int
    home: float = 0.0
    line: int = 0

    def moved(self, beats: float) -> Note:
        """The same note, later by so many beats."""
        return replace(self, start=self.start + beats, home=self.home + beats)


@dataclass
class Playing:
    """How a layer is played where its lines do not say."""

    levels: dict[str, int]
    sounds: dict[str, int] = field(default_factory=dict)
    length: float | None = None
    strum_ms: tuple[float, float, float] = (11.0, 7.0, 6.0)
    gate: float = 0.95
    voice_step: int = 0
    # What all velocities of the finished loops are multiplied with, and those of one role in a kit.
    mix: float = 1.0
    role_mix: dict[str, float] = field(default_factory=dict)


@dataclass
class Variant:
    """One loop: the lines that it was written in, and its notes once they are built."""

    section: str
    index: int
    bars: int
    line: int
    body: list[Line] = field(default_factory=list)
    notes: list[Note] = field(default_factory=list)

    @property
    def name(self) -> str:
        """How the author calls it."""
        return f"{self.section} {self.index}" if self.index else self.section


@dataclass
class Layer:
    """One instrument's part; `variants` by name, the author's own figures among them."""

    id: str
    label: str
    instrument: str
    percussion: bool
    chromatic: bool
    line: int
    playing: Playing
    source: str = ""
    role: str = ""
    # The widest leap, in semitones, that its lines may come to over any chord.
    widest_leap: int = OCTAVE
    variants: dict[str, Variant] = field(default_factory=dict)

    def section(self, section: str) -> list[Variant]:
        """The variants of a section by their number."""
        found = [v for v in self.variants.values() if v.index and v.section == section]
        return sorted(found, key=lambda variant: variant.index)

    def loops(self) -> list[Variant]:
        """All variants that are compiled, in the order of the sections."""
        return [variant for section in SECTIONS for variant in self.section(section)]


@dataclass(frozen=True)
class GrooveOffset:
    """A lean of the groove; position and timing in beats."""

    position: float
    timing: float
    velocity: int
    line: int


@dataclass
class Rhythm:
    """A whole source. Numbers are 0 until their line has been read."""

    problems: Problems
    # The file could not be read, so nothing else is known of it.
    unread: bool = False
    id: str = ""
    name: str = ""
    style_id: str = ""
    style_name: str = ""
    numerator: int = 0
    denominator: int = 0
    tempo: tuple[int, int, int] = (0, 0, 0)
    source: str = ""
    lines: dict[str, int] = field(default_factory=dict)
    levels: dict[str, int] = field(default_factory=dict)
    chords: dict[str, tuple[int, ...]] = field(default_factory=dict)
    instruments: dict[str, Instrument] = field(default_factory=dict)
    # What the velocities of all layers are multiplied with in a section.
    section_mix: dict[str, float] = field(default_factory=dict)
    groove: list[GrooveOffset] = field(default_factory=list)
    layers: dict[str, Layer] = field(default_factory=dict)

    @property
    def file(self) -> Path:
        """The source file."""
        return self.problems.file

    @property
    def compound(self) -> bool:
        """Whether the pulse is a dotted quarter."""
        return self.denominator == 8 and self.numerator > 3 and self.numerator % 3 == 0

    @property
    def pulse(self) -> float:
        """Beats of a pulse, on which a chord may begin."""
        return 1.5 if self.compound else 1.0

    @property
    def bar(self) -> float:
        """Beats in a bar."""
        return self.numerator * 4.0 / self.denominator if self.denominator else 0.0
