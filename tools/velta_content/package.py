"""Writes the files that the program reads: the package of a rhythm and its groove."""

from __future__ import annotations

import json
from pathlib import Path

from .model import Layer, Note, Rhythm, Variant
from .music import Instrument


def package_text(rhythm: Rhythm) -> str:
    """`<id>.content.json`, one note a line."""
    head = [
        ("musicalStyle", {"id": rhythm.style_id, "displayName": rhythm.style_name}),
        ("rhythm", _rhythm(rhythm)),
    ]
    parts = [f"  {_text(key)}: {_block(value)}" for key, value in head]
    layers = list(rhythm.layers.values())
    loops = [_variant(layer, variant) for layer in layers for variant in layer.loops()]
    parts.append(_list("instruments", ["    " + _flat(_instrument(i)) for i in rhythm.instruments.values()]))
    parts.append(_list("loopLayers", ["    " + _block(_layer(rhythm, layer), 4) for layer in layers]))
    parts.append(_list("loopVariants", loops))
    return "{\n" + ",\n".join(parts) + "\n}\n"


def groove_text(rhythm: Rhythm) -> str:
    """`<id>.groove.json`, one offset a line."""
    offsets = [
        "    " + _flat({"position": _number(offset.position), "timingOffsetBeats": _number(offset.timing),
                        "velocityOffset": offset.velocity})
        for offset in rhythm.groove
    ]
    return "{\n" + f'  "rhythmId": {_text(rhythm.id)},\n' + _list("offsets", offsets) + "\n}\n"


def files_of(rhythm: Rhythm, packages: Path, grooves: Path) -> dict[Path, str]:
    """Both files of a rhythm, each under the folder given for its kind."""
    return {
        packages / f"{rhythm.id}.content.json": package_text(rhythm),
        grooves / f"{rhythm.id}.groove.json": groove_text(rhythm),
    }


def _rhythm(rhythm: Rhythm) -> dict[str, object]:
    lowest, usual, highest = rhythm.tempo
    meter = {"numerator": rhythm.numerator, "denominator": rhythm.denominator, "isCompound": rhythm.compound}
    return {
        "id": rhythm.id, "displayName": rhythm.name, "styleId": rhythm.style_id,
        "timeSignature": meter, "referenceBpm": usual, "bpmMin": lowest, "bpmMax": highest,
        "grooveTemplateId": rhythm.id,
    }


def _instrument(instrument: Instrument) -> dict[str, object]:
    source = "CustomRecordedBank" if instrument.recorded else "GeneralMidiBank"
    return {
        "id": instrument.id, "name": instrument.name, "category": instrument.category,
        "source": source, "generalMidiProgram": instrument.program,
        "soundfontBankPath": instrument.bank,
    }


def _layer(rhythm: Rhythm, layer: Layer) -> dict[str, object]:
    return {
        "id": layer.id, "rhythmId": rhythm.id, "label": layer.label,
        "instrumentId": layer.instrument, "pitched": not layer.percussion,
    }


def _variant(layer: Layer, variant: Variant) -> str:
    head = {"layerId": layer.id, "section": variant.section, "variantIndex": variant.index,
            "durationBars": variant.bars}
    lines = [f"      {_text(key)}: {_flat(value)}" for key, value in head.items()]
    notes = ["        " + _flat(_note(note)) for note in variant.notes]
    return "    {\n" + ",\n".join(lines) + ",\n" + _list("notes", notes, 6) + "\n    }"


def _note(note: Note) -> dict[str, object]:
    return {"pitch": note.pitch, "startBeat": _number(note.start),
            "durationBeats": _number(note.length), "velocity": note.velocity}


def _number(value: float) -> float | int:
    value = round(value, 3)
    return int(value) if value == int(value) else value


def _text(value: str) -> str:
    return json.dumps(value, ensure_ascii=False)


def _flat(value: object) -> str:
    if isinstance(value, dict):
        return "{ " + ", ".join(f"{_text(key)}: {_flat(item)}" for key, item in value.items()) + " }"
    return json.dumps(value, ensure_ascii=False)


def _block(value: dict[str, object], indent: int = 2) -> str:
    inner = " " * (indent + 2)
    lines = [f"{inner}{_text(key)}: {_flat(item)}" for key, item in value.items()]
    return "{\n" + ",\n".join(lines) + "\n" + " " * indent + "}"


def _list(key: str, items: list[str], indent: int = 2) -> str:
    if not items:
        return " " * indent + f"{_text(key)}: []"
    return " " * indent + f"{_text(key)}: [\n" + ",\n".join(items) + "\n" + " " * indent + "]"
