"""What a pupil expects of a rhythm, checked on the notes that come out."""

from __future__ import annotations

from . import music
from .lines import check_lines, check_range, check_roles
from .model import Layer, Note, Rhythm, Variant
from .problems import Problems
from .speaker import Speaker
from .words import shown

LEAST_VARIANTS = {"Intro": 2, "Normal": 4, "Intermedio": 2, "Final": 2}
LEAST_LAYERS, LEAST_PITCHED, LEAST_OFFSETS = 4, 3, 2

SOFTEST, LOUDEST, LEAST_CONTRAST = 20, 120, 5
RING_BEYOND_LOOP = 0.1
_EPSILON = 1e-6


def check(rhythm: Rhythm) -> None:
    """Adds to the rhythm's problems whatever breaks the rules for good rhythms."""
    _check_header(rhythm)
    _check_groove(rhythm)
    _check_band(rhythm)
    check_roles(rhythm)
    for layer in rhythm.layers.values():
        _check_layer(rhythm, layer)
    _check_lengths(rhythm)


def check_together(rhythms: list[Rhythm]) -> None:
    """What only shows when all sources are seen side by side."""
    first_rhythm: dict[str, Rhythm] = {}
    first_style: dict[str, Rhythm] = {}
    first_instrument: dict[str, Rhythm] = {}
    for rhythm in rhythms:
        if first_rhythm.setdefault(rhythm.id, rhythm) is not rhythm:
            _error(rhythm, "ritmo", f"el ritmo «{rhythm.id}» ya está en {first_rhythm[rhythm.id].file}")
        style = first_style.setdefault(rhythm.style_id, rhythm)
        if style.style_name != rhythm.style_name:
            _error(rhythm, "estilo", f"el estilo «{rhythm.style_id}» se llama «{style.style_name}» en {style.file}")
        for instrument in rhythm.instruments.values():
            other = first_instrument.setdefault(instrument.id, rhythm)
            if other.instruments[instrument.id] != instrument:
                _error(rhythm, f"instrumento {instrument.id}",
                       f"el instrumento «{instrument.id}» está definido de otro modo en {other.file}")


def _error(rhythm: Rhythm, key: str, message: str) -> None:
    rhythm.problems.error(rhythm.lines.get(key, 1), message)


def _check_header(rhythm: Rhythm) -> None:
    for key in ("compás", "tempo"):
        if key not in rhythm.lines:
            rhythm.problems.error(1, f"falta la línea «{key}:»")
    for key in ("ritmo", "nombre", "estilo"):
        if key not in rhythm.lines:
            rhythm.problems.missing(1, f"falta la línea «{key}:»")
    if not rhythm.source:
        rhythm.problems.missing(1, "falta la línea «fuente:», que dice de dónde viene el ritmo")
    if rhythm.id and rhythm.file.stem != rhythm.id:
        _error(rhythm, "ritmo", f"el archivo se tiene que llamar {rhythm.id}.ritmo")
    if rhythm.name and rhythm.name == rhythm.id:
        _error(rhythm, "nombre", "el nombre es el que lee el alumno, no el identificador")


def _check_groove(rhythm: Rhythm) -> None:
    if len(rhythm.groove) < LEAST_OFFSETS:
        rhythm.problems.missing(1, f"el groove necesita {LEAST_OFFSETS} posiciones por lo menos")
    for offset in rhythm.groove:
        if not 0 <= offset.position < (rhythm.bar or 1e9):
            rhythm.problems.error(
                offset.line, f"la posición {shown(offset.position)} del groove queda fuera del compás")
        if abs(offset.timing) > 0.12:
            rhythm.problems.error(offset.line, f"el desvío {shown(offset.timing)} pasa de 0.12 tiempos")


def _check_band(rhythm: Rhythm) -> None:
    layers = list(rhythm.layers.values())
    pitched = [layer for layer in layers if not layer.percussion]
    if len(layers) < LEAST_LAYERS or len(pitched) < LEAST_PITCHED:
        rhythm.problems.missing(
            1, f"hacen falta {LEAST_LAYERS} capas, {LEAST_PITCHED} de ellas con altura; "
               f"hay {len(layers)} y {len(pitched)}")
    used = {layer.instrument for layer in layers}
    for instrument in rhythm.instruments:
        declared = rhythm.instruments[instrument]
        if declared.recorded and instrument not in music.STAND_INS and not declared.own_bank:
            _error(rhythm, f"instrumento {instrument}",
                   f"no hay un banco grabado de «{instrument}»; uno tuyo se nombra después: grabado mi_banco.sf2")
        if instrument not in used:
            rhythm.problems.missing(rhythm.lines[f"instrumento {instrument}"],
                                    f"ninguna capa usa el instrumento «{instrument}»")


def _check_lengths(rhythm: Rhythm) -> None:
    """Variants of one number sound together, so one of them has to last as long as some of the other."""
    longest: dict[str, Variant] = {}
    for layer in rhythm.layers.values():
        for variant in layer.loops():
            other = longest.setdefault(variant.name, variant)
            short, long = sorted((variant.bars, other.bars))
            if long % short:
                rhythm.problems.warning(
                    variant.line, f"{variant.name} dura {variant.bars} compases y en otra capa {other.bars}: "
                                  "no caen juntos")
            if variant.bars > other.bars:
                longest[variant.name] = variant


def _check_layer(rhythm: Rhythm, layer: Layer) -> None:
    problems = rhythm.problems
    if not layer.source:
        problems.missing(layer.line, "a la capa le falta «fuente:», que dice de dónde viene el patrón")
    instrument = rhythm.instruments.get(layer.instrument) or music.BUILT_IN.get(layer.instrument)
    if not instrument:
        problems.error(layer.line, f"no existe el instrumento «{layer.instrument}»")
    elif layer.percussion != (instrument.category == "Percussion"):
        problems.error(layer.line, "«percusión» va con un instrumento de la categoría Percussion, y sólo con ellos")
    _check_sections(problems, layer)
    _check_rising(problems, layer)
    _check_twins(problems, layer)
    check_lines(rhythm, layer)
    for variant in layer.loops():
        _check_variant(rhythm, layer, variant, instrument)


def _check_sections(problems: Problems, layer: Layer) -> None:
    """What a layer lacks, in one line: a beginner lacks most of it."""
    lacking = [f"{section} necesita {least} variantes y tiene {len(layer.section(section))}"
               for section, least in LEAST_VARIANTS.items() if len(layer.section(section)) < least]
    if lacking:
        problems.missing(layer.line, "; ".join(lacking))
    for section, least in LEAST_VARIANTS.items():
        variants = layer.section(section)
        gaps = [variant for expected, variant in enumerate(variants, start=1) if variant.index != expected]
        if gaps and len(variants) >= least:
            number = variants.index(gaps[0]) + 1
            problems.missing(gaps[0].line, f"las variantes se numeran de corrido: falta {section} {number}")


def _density(variant: Variant) -> float:
    return len(variant.notes) / variant.bars


def _check_rising(problems: Problems, layer: Layer) -> None:
    normal = layer.section("Normal")
    for former, variant in zip(normal, normal[1:]):
        if variant.notes and _density(variant) <= _density(former):
            problems.error(
                variant.line, f"{variant.name} tiene {shown(_density(variant))} notas por compás y tiene que "
                              f"superar las {shown(_density(former))} de {former.name}")


def _check_twins(problems: Problems, layer: Layer) -> None:
    seen: dict[tuple[tuple[float, float, int, int], ...], Variant] = {}
    for variant in layer.loops():
        key = tuple((note.start, note.length, note.pitch, note.velocity) for note in variant.notes)
        twin = seen.setdefault(key, variant)
        if twin is not variant and variant.notes:
            problems.error(variant.line, f"{variant.name} es igual a {twin.name}")


def _check_variant(rhythm: Rhythm, layer: Layer, variant: Variant,
                   instrument: music.Instrument | None) -> None:
    if not rhythm.bar or not rhythm.tempo[1]:
        return
    if not variant.notes:
        rhythm.problems.missing(variant.line, f"{variant.name} no tiene notas")
        return
    said = Speaker(rhythm, layer, variant)
    _check_times(said, variant, rhythm.bar * variant.bars)
    _check_strikes(said, variant)
    _check_velocities(said, variant)
    if not layer.percussion:
        _check_pitches(said, layer, variant, instrument)


def _check_times(said: Speaker, variant: Variant, beats: float) -> None:
    for note in variant.notes:
        if note.start < 0 or note.start >= beats:
            said.error(note, "empieza fuera de la vuelta")
        elif note.start + note.length > beats + RING_BEYOND_LOOP + _EPSILON:
            said.error(note, f"suena {shown(note.start + note.length - beats)} tiempos después del final")
        if note.length <= 0:
            said.error(note, "dura cero")


def _check_strikes(said: Speaker, variant: Variant) -> None:
    sounding: dict[int, Note] = {}
    for note in variant.notes:
        former = sounding.get(note.pitch)
        if former and note.start < former.start + former.length - _EPSILON:
            said.error(note, f"{said.sound(note)} se toca dos veces a la vez")
        sounding[note.pitch] = note


def _check_velocities(said: Speaker, variant: Variant) -> None:
    softest = min(variant.notes, key=lambda note: note.velocity)
    loudest = max(variant.notes, key=lambda note: note.velocity)
    if softest.velocity < SOFTEST:
        said.error(softest, f"la fuerza {softest.velocity} no llega a {SOFTEST}")
    if loudest.velocity > LOUDEST:
        said.error(loudest, f"la fuerza {loudest.velocity} pasa de {LOUDEST}")
    if _strokes_a_bar(variant) >= 3 and loudest.velocity - softest.velocity < LEAST_CONTRAST:
        said.error(loudest, "todo suena igual de fuerte: hacen falta acentos")


def _strokes_a_bar(variant: Variant) -> float:
    """Strokes and not notes: a chord is one, however many voices it has."""
    return len({note.home for note in variant.notes}) / variant.bars


def _check_pitches(said: Speaker, layer: Layer, variant: Variant,
                   instrument: music.Instrument | None) -> None:
    compass = music.compass(instrument) if instrument else None
    if instrument and not compass:
        said.rhythm.problems.error(
            layer.line,
            f"no conozco la extensión del programa {instrument.program}: va en tools/velta_content/music.py")
    if instrument and compass:
        check_range(said, variant, instrument, compass)
    for note in variant.notes:
        if music.noise_name(note.pitch, layer.instrument):
            continue
        name = music.note_name(note.pitch)
        if not layer.chromatic and not music.is_diatonic(note.pitch):
            said.error(note, f"{name} no es de Do mayor (si es a propósito, la capa lleva «cromática»)")
        if note.pitch % 12 in (5, 11) and note.length > 0.3:
            said.warning(note, f"{name} es nota de paso: sobre otros acordes salta de octava; mejor corta")
