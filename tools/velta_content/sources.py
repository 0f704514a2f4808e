"""Where the sources and the compiled files stand in a checkout."""

from __future__ import annotations

from pathlib import Path

from .builder import build
from .check import check, check_together
from .model import Rhythm
from .problems import Problem
from .reader import read

ROOT = Path(__file__).resolve().parents[2]
SUFFIX = ".ritmo"


class Checkout:
    """The folders of a checkout: sources of both kinds, and the installed library."""

    def __init__(self, root: Path = ROOT) -> None:
        self.root = root
        self.installed_sources = root / "content" / "rhythms"
        self.server_sources = root / "content" / "server-rhythms"
        self.packages = root / "resources" / "loops" / "installed"
        self.grooves = root / "resources" / "loops" / "grooves"

    def installed(self) -> list[Rhythm]:
        """The rhythms that come with the program."""
        return self._load(self.installed_sources)

    def served(self) -> list[Rhythm]:
        """The rhythms that the content server offers."""
        return self._load(self.server_sources)

    def _load(self, folder: Path) -> list[Rhythm]:
        files = sorted(folder.glob(f"*{SUFFIX}"))
        return [load(path, path.relative_to(self.root)) for path in files]


def load(path: Path, shown_as: Path | None = None) -> Rhythm:
    """A rhythm read, built and checked by itself."""
    rhythm = read(path, shown_as)
    if rhythm.unread:
        return rhythm
    build(rhythm)
    check(rhythm)
    return rhythm


def problems_of(rhythms: list[Rhythm]) -> list[Problem]:
    """Everything that is wrong with these rhythms, also side by side, in order of file and line."""
    check_together(rhythms)
    return sorted(problem for rhythm in rhythms for problem in rhythm.problems.found)
