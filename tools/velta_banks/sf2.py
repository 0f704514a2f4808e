"""Writes SoundFont 2 files.

After "SoundFont Technical Specification", version 2.04 (E-mu Systems, 2006): a RIFF file of three
lists, INFO with the words, sdta with the samples and pdta with nine tables. A file holds one
preset, bank 0 program 0, made of one instrument. No date is written, so equal zones give equal
bytes.
"""

import math
import struct
from dataclasses import dataclass, field

import numpy as np

from velta_banks.units import RATE, Samples

#: Zeros that the format asks for behind every sample.
GAP = 46

#: Samples that are repeated behind a loop, for players that interpolate across its end.
OVERLAP = 8

_FULL_SCALE = 32767

#: The frequency of 0 absolute cents.
_ZERO_CENTS_HZ = 8.176
_MONO = 1

# Generators, by their numbers in the format.
_VIBRATO_PITCH = 6
_CUTOFF = 8
_TREMOLO_VOLUME = 13
_TREMOLO_DELAY, _TREMOLO_RATE = 21, 22
_VIBRATO_DELAY, _VIBRATO_RATE = 23, 24
_DECAY, _SUSTAIN, _RELEASE = 36, 37, 38
_INSTRUMENT = 41
_KEY_RANGE = 43
_VELOCITY_RANGE = 44
_COARSE_TUNE = 51
_SAMPLE = 53
_SAMPLE_MODES = 54
_SCALE_TUNING = 56

#: A modulator's source: the velocity, evenly and turned round, so that 127 is nothing.
_SOFTNESS = 0x0102

_LOOP_WHILE_SOUNDING = 1


@dataclass(frozen=True)
class Recording:
    """One sample, mono at RATE, within -1 to 1. Its first sample is silent or nearly so."""

    name: str
    samples: Samples
    root_key: int
    #: First sample of the loop and the first behind it; None for a sound that dies away.
    loop: tuple[int, int] | None = None


@dataclass(frozen=True)
class Shade:
    """A low pass that opens with the velocity: its cutoff in cents over 8.176 Hz."""

    #: At velocity 127; 13500 is open.
    hardest: int
    #: Cents by which it lies lower at velocity 0, evenly in between.
    fall: int

    def at(self, velocity: int) -> float:
        """The cutoff at a velocity, in cents."""
        return self.hardest - self.fall * (127 - velocity) / 128.0


@dataclass(frozen=True)
class Vibrato:
    """A swing of pitch and loudness in step, to either side of the note."""

    hz: float
    #: Seconds from the start of the note.
    after: float
    cents: int
    decibels: float


@dataclass(frozen=True)
class Zone:
    """Where a recording sounds: ranges of keys and velocities, both ends included."""

    recording: Recording
    keys: tuple[int, int]
    velocities: tuple[int, int]
    #: Seconds in which a released note falls by 100 dB.
    release: float
    shade: Shade | None = None
    #: For a noise, which sounds alike on all its keys: semitones that it is moved by. None for a
    #: tone, which follows its key.
    noise_semitones: int | None = None
    vibrato: Vibrato | None = None


@dataclass
class _Tables:
    """The samples and their headers while they grow; a recording shared by zones stands once."""

    data: list[bytes] = field(default_factory=list)
    headers: list[bytes] = field(default_factory=list)
    places: dict[int, int] = field(default_factory=dict)
    length: int = 0

    def place(self, recording: Recording) -> int:
        """The number of a recording, which is added unless it is there."""
        if id(recording) not in self.places:
            self.places[id(recording)] = len(self.headers)
            self._append(recording)
        return self.places[id(recording)]

    def _append(self, recording: Recording) -> None:
        samples = _with_overlap(recording)
        start, end = self.length, self.length + len(samples)
        loop = recording.loop or (0, 0)
        self.headers.append(struct.pack(
            "<20s5IBbHH", recording.name.encode(), start, end, start + loop[0], start + loop[1],
            RATE, recording.root_key, 0, 0, _MONO))
        self.data.append(pcm(samples) + bytes(2 * GAP))
        self.length = end + GAP


def _with_overlap(recording: Recording) -> Samples:
    if recording.loop is None:
        return recording.samples
    start, end = recording.loop
    return np.concatenate([recording.samples[:end], recording.samples[start:start + OVERLAP]])


def pcm(samples: Samples) -> bytes:
    """16-bit little-endian samples. Raises ValueError beyond full scale."""
    if not np.all(np.abs(samples) <= 1.0):
        raise ValueError("samples beyond full scale")
    return np.rint(samples * _FULL_SCALE).astype("<i2").tobytes()


def timecents(seconds: float) -> int:
    """A length of time as the format counts it: 1200 a doubling, 0 for a second."""
    return round(1200.0 * math.log2(seconds))


def _chunk(name: bytes, body: bytes) -> bytes:
    return name + struct.pack("<I", len(body)) + body + bytes(len(body) % 2)


def _list(kind: bytes, *chunks: bytes) -> bytes:
    return _chunk(b"LIST", kind + b"".join(chunks))


def _text(words: str) -> bytes:
    """Closed by a zero, and by a second one where the length would be odd."""
    body = words.encode("ascii") + b"\0"
    return body + bytes(len(body) % 2)


def _generator(number: int, amount: int) -> bytes:
    return struct.pack("<Hh", number, amount)


def _range(number: int, bounds: tuple[int, int]) -> bytes:
    return struct.pack("<HBB", number, *bounds)


def _vibrato_generators(vibrato: Vibrato) -> list[bytes]:
    delay = timecents(vibrato.after)
    swing = round(10.0 * vibrato.decibels)
    rate = round(1200.0 * math.log2(vibrato.hz / _ZERO_CENTS_HZ))
    return [_generator(_VIBRATO_PITCH, vibrato.cents),
            _generator(_TREMOLO_VOLUME, swing),
            _generator(_TREMOLO_DELAY, delay), _generator(_TREMOLO_RATE, rate),
            _generator(_VIBRATO_DELAY, delay), _generator(_VIBRATO_RATE, rate),
            # No player lifts a note over its own level: it sinks by the swing until that begins.
            _generator(_DECAY, delay), _generator(_SUSTAIN, swing)]


def _zone_generators(zone: Zone, sample: int) -> bytes:
    """Ranges stand first and the sample last, as the format orders."""
    parts = [_range(_KEY_RANGE, zone.keys), _range(_VELOCITY_RANGE, zone.velocities),
             _generator(_RELEASE, timecents(zone.release))]
    if zone.shade is not None:
        parts.append(_generator(_CUTOFF, zone.shade.hardest))
    if zone.vibrato is not None:
        parts += _vibrato_generators(zone.vibrato)
    if zone.noise_semitones is not None:
        parts.append(_generator(_COARSE_TUNE, zone.noise_semitones))
        parts.append(_generator(_SCALE_TUNING, 0))
    if zone.recording.loop is not None:
        parts.append(_generator(_SAMPLE_MODES, _LOOP_WHILE_SOUNDING))
    return b"".join(parts) + _generator(_SAMPLE, sample)


def _zone_modulators(zone: Zone) -> bytes:
    if zone.shade is None:
        return b""
    return struct.pack("<HHhHH", _SOFTNESS, _CUTOFF, -zone.shade.fall, 0, 0)


def _preset_tables(name: str) -> list[bytes]:
    header = struct.pack("<20sHHHIII", name.encode(), 0, 0, 0, 0, 0, 0)
    closing = struct.pack("<20sHHHIII", b"EOP", 0, 0, 1, 0, 0, 0)
    return [_chunk(b"phdr", header + closing),
            _chunk(b"pbag", struct.pack("<4H", 0, 0, 1, 0)),
            _chunk(b"pmod", bytes(10)),
            _chunk(b"pgen", _generator(_INSTRUMENT, 0) + bytes(4))]


def _ends(entries: list[bytes], size: int) -> list[int]:
    """Where each entry of records of a size begins, and where the last one ends."""
    return [int(end) for end in np.cumsum([0] + [len(entry) // size for entry in entries])]


def _instrument_tables(name: str, generators: list[bytes], modulators: list[bytes]) -> list[bytes]:
    starts = zip(_ends(generators, 4), _ends(modulators, 10))
    bags = b"".join(struct.pack("<HH", *start) for start in starts)
    headers = struct.pack("<20sH20sH", name.encode(), 0, b"EOI", len(generators))
    return [_chunk(b"inst", headers),
            _chunk(b"ibag", bags),
            _chunk(b"imod", b"".join(modulators) + bytes(10)),
            _chunk(b"igen", b"".join(generators) + bytes(4))]


def write_bank(name: str, comment: str, zones: list[Zone]) -> bytes:
    """The file of one instrument, as FluidSynth and other players load it."""
    tables = _Tables()
    generators = [_zone_generators(zone, tables.place(zone.recording)) for zone in zones]
    modulators = [_zone_modulators(zone) for zone in zones]
    closing = struct.pack("<20s5IBbHH", b"EOS", 0, 0, 0, 0, 0, 0, 0, 0, 0)
    info = _list(b"INFO", _chunk(b"ifil", struct.pack("<HH", 2, 1)),
                 _chunk(b"isng", _text("EMU8000")), _chunk(b"INAM", _text(name)),
                 _chunk(b"ICMT", _text(comment)))
    data = _list(b"sdta", _chunk(b"smpl", b"".join(tables.data)))
    lists = _list(b"pdta", *_preset_tables(name), *_instrument_tables(name, generators, modulators),
                  _chunk(b"shdr", b"".join(tables.headers) + closing))
    return _chunk(b"RIFF", b"sfbk" + info + data + lists)
