"""Runs the test cases of one file and writes them down as JUnit XML: run.py <file> <results>."""

from __future__ import annotations

import importlib.util
import sys
import unittest
from pathlib import Path
from xml.sax.saxutils import quoteattr

sys.dont_write_bytecode = True
HERE = Path(__file__).resolve().parent
sys.path[:0] = [str(HERE), str(HERE.parents[1] / "tools")]


class Results(unittest.TextTestResult):
    """Keeps the name of every case that ran, and whether it passed."""

    def __init__(self, *arguments: object, **options: object) -> None:
        super().__init__(*arguments, **options)
        self.cases: list[tuple[str, bool]] = []

    def stopTest(self, test: unittest.TestCase) -> None:
        """Called after each case, whatever became of it."""
        super().stopTest(test)
        bad = [case for case, _ in self.failures + self.errors]
        self.cases.append((self.getDescription(test), test not in bad))

    def getDescription(self, test: unittest.TestCase) -> str:
        """The name of the case as a sentence."""
        return test.id().rpartition(".")[2].removeprefix("test_").replace("_", " ")


def junit(suite: str, cases: list[tuple[str, bool]]) -> str:
    """The cases as JUnit XML, one a line."""
    lines = [f"    <testcase name={quoteattr(name)} classname={quoteattr(suite)}>"
             + ("" if passed else '<failure type="fail"/>') + "</testcase>" for name, passed in cases]
    failed = sum(not passed for _, passed in cases)
    head = f'<testsuite name={quoteattr(suite)} tests="{len(cases)}" failures="{failed}">'
    return "\n".join(['<?xml version="1.0" encoding="UTF-8"?>', head, *lines, "</testsuite>", ""])


def main(file: Path, results: Path) -> int:
    """Runs the file's cases; 0 if all passed, and there were some."""
    spec = importlib.util.spec_from_file_location(file.stem, file)
    module = importlib.util.module_from_spec(spec)
    sys.modules[file.stem] = module
    spec.loader.exec_module(module)
    suite = unittest.defaultTestLoader.loadTestsFromModule(module)
    outcome = unittest.TextTestRunner(verbosity=2, resultclass=Results).run(suite)
    results.parent.mkdir(parents=True, exist_ok=True)
    results.write_text(junit(file.stem, outcome.cases), encoding="utf-8")
    return 0 if outcome.wasSuccessful() and outcome.cases else 1


if __name__ == "__main__":
    sys.exit(main(Path(sys.argv[1]), Path(sys.argv[2])))
