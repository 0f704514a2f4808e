"""Builds the folder that the content server hands out: catalogue, packages, grooves, banks."""

from __future__ import annotations

import json
import shutil
import subprocess
from dataclasses import replace
from pathlib import Path

from .model import Rhythm
from .package import files_of
from .problems import SourceError
from .stems import write_stems

_BANK_TOOL = "velta-banks"

# What a draft is called that has no name yet.
_DRAFT = "borrador"


def build_server(rhythms: list[Rhythm], folder: Path, tools: Path) -> None:
    """Writes everything below `folder`; the banks that are missing there are built by `tools`."""
    for part in ("content", "grooves", "instruments"):
        (folder / part).mkdir(parents=True, exist_ok=True)
    _write_packages(rhythms, folder)
    provide_banks(rhythms, folder / "instruments", tools)
    catalogue = {"rhythms": [catalogue_entry(rhythm, folder) for rhythm in rhythms]}
    text = json.dumps(catalogue, ensure_ascii=False, indent=2) + "\n"
    (folder / "catalog.json").write_text(text, encoding="utf-8")


def build_draft(rhythm: Rhythm, folder: Path, tools: Path) -> str:
    """Writes a library of one rhythm, whole or not, to be heard; gives the rhythm's id.

    Raises SourceError where there is nothing to hear.
    """
    if not any(variant.notes for layer in rhythm.layers.values() for variant in layer.loops()):
        raise SourceError(f"{rhythm.file}: todavía no hay ninguna variante que suene")
    heard = replace(rhythm, id=rhythm.id or _DRAFT, name=rhythm.name or rhythm.file.stem,
                    style_id=rhythm.style_id or _DRAFT)
    packages, grooves = folder / "loops" / "installed", folder / "loops" / "grooves"
    banks = folder / "soundfonts" / "instruments"
    for part in (packages, grooves, banks):
        part.mkdir(parents=True, exist_ok=True)
    for path, text in files_of(heard, packages, grooves).items():
        path.write_text(text, encoding="utf-8")
    provide_banks([heard], banks, tools)
    measured = {name: layer for name, layer in heard.layers.items() if layer.role}
    write_stems([replace(heard, layers=measured)], folder / "stems")
    return heard.id


def refuse_own_banks(rhythm: Rhythm) -> None:
    """Adds a fault for each bank of the author's own: the program comes with none."""
    for instrument in rhythm.instruments.values():
        if instrument.own_bank:
            rhythm.problems.error(rhythm.lines[f"instrumento {instrument.id}"],
                                  "un banco propio sólo se sirve: el ritmo va en content/server-rhythms")


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


def provide_banks(rhythms: list[Rhythm], folder: Path, tools: Path) -> None:
    """Fills a folder with the banks of the rhythms: the authors' own, and those that `tools` makes."""
    recorded = [i for rhythm in rhythms for i in rhythm.instruments.values() if i.recorded]
    for instrument in recorded:
        if instrument.own_bank:
            shutil.copyfile(instrument.own_bank, folder / f"{instrument.id}.sf2")
    _provide_made({i.id for i in recorded if not i.own_bank}, folder, tools)


def _provide_made(banks: set[str], folder: Path, tools: Path) -> None:
    tool = tools / _BANK_TOOL
    if tool.exists() and _unmade(banks, folder, _changed(tools)):
        # What it says is no answer of this tool.
        subprocess.run([str(tool), "build", str(folder)], check=False, stdout=subprocess.DEVNULL)
    if missing := _unmade(banks, folder):
        raise SourceError(f"en {folder} faltan los bancos: {', '.join(missing)}")


def _changed(tools: Path) -> float:
    """When the tool that makes the banks was last worked on."""
    return max((path.stat().st_mtime for path in (tools / "velta_banks").glob("*.py")), default=0.0)


def _unmade(banks: set[str], folder: Path, since: float = 0.0) -> list[str]:
    """The banks that are not there, or were made by an older tool."""
    paths = {bank: folder / f"{bank}.sf2" for bank in sorted(banks)}
    return [bank for bank, path in paths.items() if not path.is_file() or path.stat().st_mtime < since]
