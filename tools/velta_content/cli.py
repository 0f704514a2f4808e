"""The commands of `velta-content`."""

from __future__ import annotations

import sys
from collections.abc import Callable
from pathlib import Path

from .model import Rhythm
from .package import files_of
from .picture import picture
from .problems import SourceError
from .server import build_server
from .sources import Checkout, load, problems_of

USAGE = """\
velta-content check [archivo.ritmo...]             revisa los ritmos: los nombrados, o todos
velta-content compile                              compila los ritmos que vienen con el programa
velta-content picture carpeta [archivo.ritmo...]   los dibuja en archivos SVG
velta-content build-server carpeta                 arma la carpeta del servidor de contenidos
"""


def main(arguments: list[str]) -> int:
    """Runs a command; 0, 1 with messages on the error stream, or 2 for words that are no command."""
    for stream in (sys.stdout, sys.stderr):
        # A terminal that lacks a letter still shows the message.
        stream.reconfigure(errors="backslashreplace")
    if arguments in (["-h"], ["--help"]):
        print(USAGE, end="")
        return 0
    command, paths = (arguments[0], [Path(word) for word in arguments[1:]]) if arguments else ("", [])
    run, least, most = _COMMANDS.get(command, (None, 0, 0))
    if not run or not least <= len(paths) <= most:
        print(USAGE, end="", file=sys.stderr)
        return 2
    return run(paths)


def _chosen(checkout: Checkout, sources: list[Path]) -> list[Rhythm]:
    return [load(path) for path in sources] or checkout.installed() + checkout.served()


def _report(rhythms: list[Rhythm]) -> bool:
    """Prints what is wrong; whether nothing stops the compilation."""
    problems = problems_of(rhythms)
    for problem in problems:
        print(problem, file=sys.stderr)
    return all(problem.warning for problem in problems)


def _counted(rhythms: list[Rhythm]) -> str:
    return "1 ritmo" if len(rhythms) == 1 else f"{len(rhythms)} ritmos"


def _check(sources: list[Path]) -> int:
    rhythms = _chosen(Checkout(), sources)
    if not _report(rhythms):
        return 1
    loops = sum(len(layer.loops()) for rhythm in rhythms for layer in rhythm.layers.values())
    print(f"{_counted(rhythms)}, {loops} variantes: todo en orden")
    return 0


def _compile(_: list[Path]) -> int:
    checkout = Checkout()
    rhythms = checkout.installed()
    if not _report(rhythms):
        return 1
    for rhythm in rhythms:
        for path, text in files_of(rhythm, checkout.packages, checkout.grooves).items():
            path.parent.mkdir(parents=True, exist_ok=True)
            path.write_text(text, encoding="utf-8")
    return 0


def _picture(paths: list[Path]) -> int:
    folder, *sources = paths
    folder.mkdir(parents=True, exist_ok=True)
    for rhythm in _chosen(Checkout(), sources):
        path = folder / f"{rhythm.file.stem}.svg"
        path.write_text(picture(rhythm), encoding="utf-8")
        print(path)
    return 0


def _build_server(paths: list[Path]) -> int:
    checkout = Checkout()
    rhythms = checkout.served()
    if not _report(rhythms):
        return 1
    try:
        build_server(rhythms, paths[0], checkout.root / "tools")
    except SourceError as error:
        print(error, file=sys.stderr)
        return 1
    print(f"{_counted(rhythms)} en {paths[0]}")
    return 0


# Each command with the least and the most paths that it takes.
_COMMANDS: dict[str, tuple[Callable[[list[Path]], int], int, int]] = {
    "check": (_check, 0, 1000),
    "compile": (_compile, 0, 0),
    "picture": (_picture, 1, 1000),
    "build-server": (_build_server, 1, 1),
}
