"""Builds the folder that the content server hands out: catalogue, packages, grooves, banks."""

from __future__ import annotations

import json
import subprocess
from pathlib import Path

from .model import Rhythm
from .package import files_of
from .problems import SourceError

_BANK_TOOL = "velta-banks"


def build_server(rhythms: list[Rhythm], folder: Path, tools: Path) -> None:
    """Writes everything below `folder`; the banks that are missing there are built by `tools`."""
    banks = sorted({bank for rhythm in rhythms for bank in banks_of(rhythm)})
    for part in ("content", "grooves", "instruments"):
        (folder / part).mkdir(parents=True, exist_ok=True)
    _write_packages(rhythms, folder)
    _provide_banks(banks, folder / "instruments", tools)
    catalogue = {"rhythms": [catalogue_entry(rhythm, folder) for rhythm in rhythms]}
    text = json.dumps(catalogue, ensure_ascii=False, indent=2) + "\n"
    (folder / "catalog.json").write_text(text, encoding="utf-8")


def banks_of(rhythm: Rhythm) -> list[str]:
    """Ids of the recorded instruments of a rhythm, in their order."""
    return [instrument.id for instrument in rhythm.instruments.values() if instrument.recorded]


def catalogue_entry(rhythm: Rhythm, folder: Path) -> dict[str, object]:
    """The line of the catalogue; its size is that of all files that an install fetches."""
    files = [*files_of(rhythm, folder / "content", folder / "grooves"),
             *(folder / "instruments" / f"{bank}.sf2" for bank in banks_of(rhythm))]
    return {
        "rhythmId": rhythm.id, "displayName": rhythm.name, "styleId": rhythm.style_id,
        "styleDisplayName": rhythm.style_name,
        "estimatedDownloadBytes": sum(path.stat().st_size for path in files),
        "instrumentIds": banks_of(rhythm),
    }


def _write_packages(rhythms: list[Rhythm], folder: Path) -> None:
    files: dict[Path, str] = {}
    for rhythm in rhythms:
        files |= files_of(rhythm, folder / "content", folder / "grooves")
    for path in [*(folder / "content").glob("*.content.json"), *(folder / "grooves").glob("*.groove.json")]:
        if path not in files:
            path.unlink()
    for path, text in files.items():
        path.write_text(text, encoding="utf-8")


def _provide_banks(banks: list[str], folder: Path, tools: Path) -> None:
    missing = _missing(banks, folder)
    tool = tools / _BANK_TOOL
    if missing and tool.exists():
        subprocess.run([str(tool), "build", str(folder)], check=False)
        missing = _missing(banks, folder)
    if missing:
        raise SourceError(f"en {folder} faltan los bancos: {', '.join(missing)}")


def _missing(banks: list[str], folder: Path) -> list[str]:
    return [bank for bank in banks if not (folder / f"{bank}.sf2").is_file()]
