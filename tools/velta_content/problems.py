"""What is wrong with a source, by file and line."""

from __future__ import annotations

from dataclasses import dataclass, field
from enum import IntEnum
from pathlib import Path


class SourceError(Exception):
    """A line that cannot be understood; the text is for the author."""


class Kind(IntEnum):
    """How grave a message is, in the order in which an author wants to read them."""

    #: What is written and wrong.
    FAULT = 0
    #: Advice, which stops nothing.
    ADVICE = 1
    #: What a finished rhythm has and this one lacks: a note until it is compiled.
    MISSING = 2


_SAID = {Kind.FAULT: "", Kind.ADVICE: "aviso: ", Kind.MISSING: "nota: "}


@dataclass(frozen=True, order=True)
class Problem:
    """One message. In order: by file, what is wrong before what is missing, by line."""

    file: str
    kind: Kind
    line: int
    message: str

    def __str__(self) -> str:
        return f"{self.file}:{self.line}: {_SAID[self.kind]}{self.message}"

    @property
    def warning(self) -> bool:
        """Whether it is advice, which does not stop the compilation."""
        return self.kind is Kind.ADVICE


# Of a file that is no source at all, nobody reads more.
MAX_PROBLEMS = 500


@dataclass
class Problems:
    """All messages about one file, each once, up to a bound."""

    file: Path
    #: Where the file lies, whatever it is called in messages.
    path: Path | None = None
    found: list[Problem] = field(default_factory=list)
    known: set[Problem] = field(default_factory=set)

    @property
    def read_from(self) -> Path:
        """The file as this process finds it."""
        return self.path or self.file

    def error(self, line: int, message: str) -> None:
        """Adds a fault, once for each line and text."""
        self._add(Problem(str(self.file), Kind.FAULT, line, message))

    def warning(self, line: int, message: str) -> None:
        """Adds advice."""
        self._add(Problem(str(self.file), Kind.ADVICE, line, message))

    def missing(self, line: int, message: str) -> None:
        """Adds what the rhythm still lacks."""
        self._add(Problem(str(self.file), Kind.MISSING, line, message))

    @property
    def wrong(self) -> bool:
        """Whether there is any fault; advice and what is missing aside."""
        return any(problem.kind is Kind.FAULT for problem in self.found)

    @property
    def finished(self) -> bool:
        """Whether the rhythm may be compiled."""
        return all(problem.kind is Kind.ADVICE for problem in self.found)

    def _add(self, problem: Problem) -> None:
        if problem not in self.known and len(self.found) < MAX_PROBLEMS:
            self.known.add(problem)
            self.found.append(problem)
