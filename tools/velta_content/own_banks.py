"""Banks that an author brings along: SoundFont 2 files that a source names."""

from __future__ import annotations

import struct
from collections.abc import Iterator
from pathlib import Path

# The program downloads no larger bank.
MAX_BYTES = 256 << 20

_PRESET_BYTES = 38


def fault_of(path: Path) -> str:
    """What keeps the program from playing a bank, or nothing."""
    try:
        size = path.stat().st_size
        presets = list(_presets(path)) if size <= MAX_BYTES else []
    except FileNotFoundError:
        return f"no existe el banco «{path}»"
    except OSError as error:
        return f"no se puede leer el banco «{path}»: {error.strerror}"
    except (struct.error, ValueError):
        return f"«{path}» no es un banco SF2"
    if size > MAX_BYTES:
        return f"el banco «{path}» pasa de {MAX_BYTES >> 20} megabytes"
    if (0, 0) not in presets:
        return f"el banco «{path}» no tiene el programa 0 del banco 0, que es el que suena"
    return ""


def _presets(path: Path) -> Iterator[tuple[int, int]]:
    """Bank and program of every preset but the closing one. Raises ValueError for another format."""
    with path.open("rb") as file:
        riff, _, kind = struct.unpack("<4sI4s", file.read(12))
        if (riff, kind) != (b"RIFF", b"sfbk"):
            raise ValueError("no SoundFont")
        while head := file.read(8):
            name, size = struct.unpack("<4sI", head)
            if name == b"LIST" and file.read(4) == b"pdta":
                break
            file.seek(size + size % 2 - (4 if name == b"LIST" else 0), 1)
        name, size = struct.unpack("<4sI", file.read(8))
        table = file.read(min(size, 1 << 20))
    if name != b"phdr":
        raise ValueError("no presets")
    for at in range(0, len(table) - _PRESET_BYTES, _PRESET_BYTES):
        program, bank = struct.unpack_from("<HH", table, at + 20)
        yield bank, program
