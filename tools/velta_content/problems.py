"""What is wrong with a source, by file and line."""

from __future__ import annotations

from dataclasses import dataclass, field
from pathlib import Path


class SourceError(Exception):
    """A line that cannot be understood; the text is for the author."""


@dataclass(frozen=True, order=True)
class Problem:
    """One message; `warning` marks advice that does not stop the compilation."""

    file: str
    line: int
    message: str
    warning: bool = False

    def __str__(self) -> str:
        kind = "aviso: " if self.warning else ""
        return f"{self.file}:{self.line}: {kind}{self.message}"


# Of a file that is no source at all, nobody reads more.
MAX_PROBLEMS = 500


@dataclass
class Problems:
    """All messages about one file, each once, up to a bound."""

    file: Path
    found: list[Problem] = field(default_factory=list)
    known: set[Problem] = field(default_factory=set)

    def error(self, line: int, message: str) -> None:
        """Adds a fault, once for each line and text."""
        self._add(Problem(str(self.file), line, message))

    def warning(self, line: int, message: str) -> None:
        """Adds advice."""
        self._add(Problem(str(self.file), line, message, True))

    @property
    def failed(self) -> bool:
        """Whether there is any fault, advice aside."""
        return any(not problem.warning for problem in self.found)

    def _add(self, problem: Problem) -> None:
        if problem not in self.known and len(self.found) < MAX_PROBLEMS:
            self.known.add(problem)
            self.found.append(problem)
