"""A library for measuring the balance: every drum kit falls apart into its roles."""

from __future__ import annotations

import json
from dataclasses import replace
from pathlib import Path

from .model import Layer, Rhythm, Variant
from .package import files_of
from .roles import ROLES, TOLERANCE_DB, role_of


def write_stems(rhythms: list[Rhythm], folder: Path) -> None:
    """Fills `loops` with the packages of the stems, and `stems.json` with what each has to come to."""
    packages, grooves = folder / "loops" / "installed", folder / "loops" / "grooves"
    for place in (packages, grooves):
        place.mkdir(parents=True, exist_ok=True)
    stems: list[dict[str, object]] = []
    for rhythm in rhythms:
        split = replace(rhythm, layers=_stems_of(rhythm))
        for path, text in files_of(split, packages, grooves).items():
            path.write_text(text, encoding="utf-8")
        stems += [_target(rhythm, layer) for layer in split.layers.values()]
    listed = {"toleranceDb": TOLERANCE_DB, "stems": stems}
    (folder / "stems.json").write_text(json.dumps(listed, indent=1), encoding="utf-8")


def _target(rhythm: Rhythm, layer: Layer) -> dict[str, object]:
    role = ROLES[layer.role]
    return {"rhythmId": rhythm.id, "layerId": layer.id, "role": layer.role, "targetDb": role.target_db,
            "byStrokes": role.percussion}


def _stems_of(rhythm: Rhythm) -> dict[str, Layer]:
    stems: dict[str, Layer] = {}
    for name, layer in rhythm.layers.items():
        roles = sorted({role_of(layer, note) for loop in layer.loops() for note in loop.notes})
        for role in roles if layer.percussion else [layer.role]:
            stems[f"{name}:{role}"] = _stem(layer, role)
    return stems


def _stem(layer: Layer, role: str) -> Layer:
    def kept(variant: Variant) -> Variant:
        return replace(variant, notes=[note for note in variant.notes if role_of(layer, note) == role])

    name = layer.id if role == layer.role else f"{layer.id}:{role}"
    return replace(layer, id=name, role=role, variants={key: kept(v) for key, v in layer.variants.items()})
