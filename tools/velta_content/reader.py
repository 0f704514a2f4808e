"""Reads a source into its header, layers and variants; the music itself stays text."""

from __future__ import annotations

import re
from pathlib import Path

from . import music, own_banks
from .model import MAX_BARS, OCTAVE, SECTIONS, GrooveOffset, Layer, Line, Playing, Rhythm, Variant
from .problems import Problems, SourceError
from .roles import ROLES
from .voices import unknown_drum
from .words import number, plain, whole

MAX_FILE_BYTES = 1 << 18
MAX_LINES = 5000
MAX_LINE_CHARACTERS = 1000

# What comes along when patterns are pasted from text: a minus of its own, code marks, tabs and other
# controls, which no picture may hold.
_CONTROLS = {code: " " for code in (*range(0x20), *range(0x7F, 0xA0), 0xFFFE, 0xFFFF)}
_PASTED = str.maketrans(_CONTROLS | {"\u2212": "-", "`": " ", "\ufeff": None})

_ID = re.compile(r"[a-z][a-z0-9_]{0,60}")
_KEY = re.compile(r"([^\W\d_]+)(?:\s+([^:|\"]+?))?\s*:\s*(.*)")
_VARIANT = re.compile(r"(\w+)\s+([\w-]+)\s*,\s*(\d{1,4})\s+(\w+)\s*:")
_LEVELS = {True: {"X": 104, "x": 86, "o": 66, "g": 40}, False: {"X": 86, "x": 74, "o": 60, "g": 44}}


def read(path: Path, shown_as: Path | None = None) -> Rhythm:
    """The rhythm of a source file; whatever is wrong stands in its `problems`."""
    problems = Problems(shown_as or path, path)
    try:
        data = path.read_bytes()
        if len(data) > MAX_FILE_BYTES:
            raise SourceError(f"el archivo pasa de {MAX_FILE_BYTES // 1024} kilobytes")
        text = data.decode("utf-8")
    except FileNotFoundError:
        return _unread(problems, "el archivo no existe")
    except IsADirectoryError:
        return _unread(problems, "es una carpeta, y hace falta un archivo .ritmo")
    except UnicodeDecodeError:
        return _unread(problems, "no se puede leer como texto UTF-8: guardalo así desde el editor")
    except OSError as error:
        return _unread(problems, f"no se puede leer: {error.strerror}")
    except SourceError as error:
        return _unread(problems, str(error))
    return read_text(text, problems)


def _unread(problems: Problems, why: str) -> Rhythm:
    """A rhythm of a file that nothing else can be said about."""
    problems.error(1, why)
    return Rhythm(problems, unread=True)


def read_text(text: str, problems: Problems) -> Rhythm:
    """The rhythm written in `text`."""
    reader = _Reader(Rhythm(problems))
    lines = text.split("\n")
    if len(lines) > MAX_LINES:
        problems.error(MAX_LINES, f"el archivo pasa de {MAX_LINES} líneas")
    for index, raw in enumerate(lines[:MAX_LINES], start=1):
        if len(raw) > MAX_LINE_CHARACTERS:
            problems.error(index, f"la línea pasa de {MAX_LINE_CHARACTERS} caracteres")
            continue
        line = Line(index, _without_comment(raw.translate(_PASTED)).strip())
        if not line.text:
            continue
        try:
            reader.take(line)
        except SourceError as error:
            problems.error(line.number, str(error))
    return reader.rhythm


def _without_comment(text: str) -> str:
    """A `#` opens a comment where a word could begin; in `F#3` it is a sharp."""
    match = re.search(r"(^|\s)#", text)
    return text[: match.start()] if match else text


def _quoted(text: str) -> tuple[str, str]:
    """The text within the leading quotes, and what follows them."""
    match = re.match(r'"([^"]*)"\s*(.*)', text)
    if not match or not match.group(1).strip():
        raise SourceError("falta el nombre entre comillas")
    return match.group(1).strip(), match.group(2).strip()


def identifier_of(text: str) -> str:
    """The text as an id. Raises SourceError where it does not serve as one."""
    if not _ID.fullmatch(text):
        raise SourceError(f"«{text}» no sirve de identificador: minúsculas sin acento, cifras y _")
    return text


class _Reader:
    """Goes through the lines; remembers the layer and the variant it is in."""

    def __init__(self, rhythm: Rhythm) -> None:
        self.rhythm = rhythm
        self.layer: Layer | None = None
        self.variant: Variant | None = None

    def take(self, line: Line) -> None:
        """Reads one line that is neither empty nor a comment."""
        if self._opens_variant(line):
            return
        match = _KEY.fullmatch(line.text)
        key = plain(match.group(1)) if match else ""
        handler = getattr(self, f"_read_{key}", None) if match else None
        if handler and not (self.variant and key not in ("capa", "fuente", "instrumento")):
            handler(line, (match.group(2) or "").strip(), match.group(3).strip())
        elif self.variant:
            self.variant.body.append(line)
        elif self.layer:
            said = f"no conozco «{match.group(1)}:»; " if match else ""
            raise SourceError(said + "acá va un dato de la capa o el comienzo de una variante")
        else:
            said = f": no conozco «{match.group(1)}:»" if match else ""
            raise SourceError("no entiendo esta línea del encabezado" + said)

    def _opens_variant(self, line: Line) -> bool:
        match = _VARIANT.fullmatch(line.text)
        if not match:
            return False
        section = self._section(match.group(1))
        if not section:
            raise SourceError(f"no hay una sección «{match.group(1)}»: son {', '.join(SECTIONS)} y figura")
        if plain(match.group(4)) not in ("compas", "compases"):
            raise SourceError("después del número van «compases»: Normal 1, 2 compases:")
        if not self.layer:
            raise SourceError("una variante va dentro de una capa")
        self.variant = Variant(section, 0, 1, line.number)
        if section == "figura":
            self.variant.section = identifier_of(plain(match.group(2)))
        else:
            self.variant.index = whole(match.group(2), "el número de la variante", 1, 99)
        self.variant.bars = whole(match.group(3), "los compases", 1, MAX_BARS)
        if self.variant.name in self.layer.variants:
            raise SourceError(f"«{self.variant.name}» ya está escrita en esta capa")
        self.layer.variants[self.variant.name] = self.variant
        return True

    @staticmethod
    def _section(word: str) -> str:
        names = {plain(section): section for section in SECTIONS} | {"figura": "figura"}
        return names.get(plain(word), "")

    def _once(self, key: str, line: Line) -> None:
        if key in self.rhythm.lines:
            raise SourceError(f"«{key}» ya está en la línea {self.rhythm.lines[key]}")
        self.rhythm.lines[key] = line.number

    def _read_ritmo(self, line: Line, _: str, value: str) -> None:
        self._once("ritmo", line)
        self.rhythm.id = identifier_of(value)

    def _read_nombre(self, line: Line, _: str, value: str) -> None:
        self._once("nombre", line)
        self.rhythm.name = value

    def _read_estilo(self, line: Line, _: str, value: str) -> None:
        self._once("estilo", line)
        identifier, _, name = value.partition(" ")
        self.rhythm.style_id = identifier_of(identifier)
        self.rhythm.style_name, rest = _quoted(name.strip())
        if rest:
            raise SourceError(f"sobra «{rest}»")

    def _read_compas(self, line: Line, _: str, value: str) -> None:
        self._once("compás", line)
        match = re.fullmatch(r"(\d{1,2})\s*/\s*(2|4|8|16)", value)
        if not match or not 1 <= int(match.group(1)) <= 16:
            raise SourceError("el compás se escribe como 4/4, 3/4, 2/4 o 6/8")
        self.rhythm.numerator, self.rhythm.denominator = map(int, match.groups())

    def _read_tempo(self, line: Line, _: str, value: str) -> None:
        self._once("tempo", line)
        words = value.split()
        if len(words) != 3:
            raise SourceError("el tempo son tres números: el más lento, el habitual y el más rápido")
        lowest, usual, highest = (whole(word, "el tempo", 20, 400) for word in words)
        if not lowest < usual < highest:
            raise SourceError("los tres tempos van en orden creciente")
        self.rhythm.tempo = (lowest, usual, highest)

    def _read_fuente(self, line: Line, _: str, value: str) -> None:
        if not value:
            raise SourceError("la fuente dice de dónde viene el patrón")
        if self.layer:
            self.layer.source = f"{self.layer.source} {value}".strip()
        else:
            self.rhythm.source = f"{self.rhythm.source} {value}".strip()

    def _read_instrumento(self, line: Line, identifier: str, value: str) -> None:
        if self.layer:
            raise SourceError("los instrumentos van antes de la primera capa")
        name, rest = _quoted(value)
        words = rest.split()
        own_bank = words.pop() if words and words[-1].lower().endswith(".sf2") else ""
        recorded = bool(words) and plain(words[-1]) == "grabado"
        words = words[:-1] if recorded else words
        if own_bank and not recorded:
            raise SourceError(f"antes del banco «{own_bank}» va la palabra «grabado»")
        if len(words) != 2 or words[0] not in music.CATEGORIES:
            known = ", ".join(music.CATEGORIES)
            raise SourceError(f'se escribe: instrumento id: "Nombre" Categoría programa; categorías: {known}')
        program = whole(words[1], "el programa General MIDI", 0, 127)
        identifier = identifier_of(identifier)
        if identifier in self.rhythm.instruments:
            raise SourceError(f"el instrumento «{identifier}» ya está definido")
        self.rhythm.instruments[identifier] = music.Instrument(
            identifier, name, words[0], program, recorded, self._own_bank(own_bank, identifier))
        self.rhythm.lines[f"instrumento {identifier}"] = line.number

    def _own_bank(self, written: str, identifier: str) -> str:
        """Where a bank lies that the source names: beside it, or where its path leads from there."""
        if not written:
            return ""
        if identifier in music.STAND_INS:
            raise SourceError(f"el banco de «{identifier}» lo hace Velta: ponele otro nombre al tuyo")
        path = self.rhythm.problems.read_from.parent / written
        if fault := own_banks.fault_of(path):
            raise SourceError(fault)
        return str(path.resolve())

    def _read_acorde(self, line: Line, name: str, value: str) -> None:
        if not re.fullmatch(r"[^\W\d_][\w-]*", name) or name in ("D", "U", "X"):
            raise SourceError(f"«{name}» no sirve de nombre de acorde")
        if not (value.startswith("[") and value.endswith("]")):
            raise SourceError("las notas del acorde van entre corchetes: [C3 G3 C4]")
        pitches = [music.pitch_of(word) for word in value[1:-1].split()]
        if not pitches or None in pitches or len(pitches) > 8:
            raise SourceError("las notas del acorde se escriben como C4, G3, F#3 (ocho a lo sumo)")
        self.rhythm.chords[name] = tuple(sorted(set(pitches)))

    def _read_groove(self, line: Line, position: str, value: str) -> None:
        words = value.split()
        if self.layer or len(words) != 2:
            raise SourceError("el groove va en el encabezado: groove posición: desvío acento")
        beat = number(position, "la posición")
        offset = GrooveOffset(beat, number(words[0], "el desvío"),
                              whole(words[1], "el acento", -30, 30), line.number)
        if any(other.position == beat for other in self.rhythm.groove):
            raise SourceError(f"el groove ya tiene la posición {position}")
        self.rhythm.groove.append(offset)

    def _read_capa(self, line: Line, identifier: str, value: str) -> None:
        self.variant = None
        label, rest = _quoted(value)
        words = rest.split()
        flags = {plain(word) for word in words[1:]}
        if not words or flags - {"percusion", "cromatica"}:
            raise SourceError('se escribe: capa id: "Etiqueta" instrumento, y si toca: percusión o cromática')
        percussion = "percusion" in flags
        levels = _LEVELS[percussion] | self.rhythm.levels
        self.layer = Layer(
            f"{self.rhythm.id}_{identifier_of(identifier)}", label, words[0], percussion,
            "cromatica" in flags, line.number, Playing(levels, length=0.25 if percussion else None))
        if identifier in self.rhythm.layers:
            raise SourceError(f"la capa «{identifier}» ya está escrita")
        self.rhythm.layers[identifier] = self.layer

    def _read_niveles(self, line: Line, _: str, value: str) -> None:
        levels = self.layer.playing.levels if self.layer else self.rhythm.levels
        for letter, velocity in self._pairs(value):
            if not re.fullmatch(r"[A-Za-z]", letter):
                raise SourceError(f"un nivel es una sola letra, no «{letter}»")
            levels[letter] = whole(velocity, f"el nivel {letter}", 1, 127)

    def _read_sonidos(self, line: Line, _: str, value: str) -> None:
        for name, key in self._pairs(value):
            drum = music.drum_of(key)
            if drum is None:
                raise unknown_drum(key)
            self._playing().sounds[name] = drum

    def _read_duracion(self, line: Line, _: str, value: str) -> None:
        length = number(value, "la duración")
        if not 0.02 <= length <= 16:
            raise SourceError("la duración va de 0.02 a 16 tiempos")
        self._playing().length = length

    def _read_rasgueo(self, line: Line, _: str, value: str) -> None:
        words = value.split()
        if len(words) != 3:
            raise SourceError("el rasgueo son tres números, milisegundos entre cuerdas: abajo, arriba, chasquido")
        times = [number(word, "el rasgueo") for word in words]
        if not all(0 <= time <= 60 for time in times):
            raise SourceError("entre cuerda y cuerda pasan de 0 a 60 milisegundos")
        self._playing().strum_ms = (times[0], times[1], times[2])

    def _read_articulacion(self, line: Line, _: str, value: str) -> None:
        self._playing().gate = whole(value.rstrip("%"), "la articulación", 5, 100) / 100.0

    def _read_voces(self, line: Line, _: str, value: str) -> None:
        self._playing().voice_step = whole(value, "las voces", -12, 12)

    def _read_papel(self, _: Line, __: str, value: str) -> None:
        if value not in ROLES:
            raise SourceError(f"no conozco el papel «{value}»: {', '.join(ROLES)}")
        if self._layer().role:
            raise SourceError("la capa ya tiene su papel")
        self._layer().role = value

    def _read_salto(self, _: Line, __: str, value: str) -> None:
        self._layer().widest_leap = whole(value, "el salto", OCTAVE, 2 * OCTAVE)

    def _read_mezcla(self, _: Line, section: str, value: str) -> None:
        if not self.layer:
            self._read_section_mix(section, value)
            return
        playing = self._playing()
        first, *roles = value.split() or [""]
        playing.mix = self._factor(first)
        for role, factor in self._pairs(" ".join(roles)) if roles else []:
            if role not in ROLES:
                raise SourceError(f"no conozco el papel «{role}»: {', '.join(ROLES)}")
            playing.role_mix[role] = self._factor(factor)

    def _read_section_mix(self, word: str, value: str) -> None:
        section = self._section(word)
        if section not in SECTIONS:
            raise SourceError(f"en el encabezado se escribe mezcla Intro: x0.9; secciones: {', '.join(SECTIONS)}")
        self.rhythm.section_mix[section] = self._factor(value)

    @staticmethod
    def _factor(text: str) -> float:
        if not text.startswith("x"):
            raise SourceError("la mezcla se escribe x0.9, y si hace falta: x0.9 platillo=x1.3")
        factor = number(text[1:], "la mezcla")
        if not 0.2 <= factor <= 3:
            raise SourceError("la mezcla va de x0.2 a x3")
        return factor

    def _layer(self) -> Layer:
        if not self.layer:
            raise SourceError("esto va dentro de una capa")
        return self.layer

    def _playing(self) -> Playing:
        return self._layer().playing

    @staticmethod
    def _pairs(value: str) -> list[tuple[str, str]]:
        words = [word.partition("=") for word in value.split()]
        if not words or any(not (name and equals and right) for name, equals, right in words):
            raise SourceError("se escribe nombre=valor, con espacios entre uno y otro")
        return [(name, right) for name, _, right in words]
