"""The commands of `velta-content`."""

from __future__ import annotations

import json
import sys
from collections.abc import Callable
from pathlib import Path

from . import music
from .model import Rhythm
from .package import files_of
from .picture import picture
from .problems import Kind, SourceError
from .reader import identifier_of
from .server import build_draft, build_server, refuse_own_banks
from .serving import PORT, port_of, serve
from .sources import SUFFIX, Checkout, load, problems_of
from .template import METERS, template

USAGE = """\
velta-content nuevo id [compás]                    escribe id.ritmo, un ritmo para empezar
velta-content check [archivo.ritmo...]             revisa los ritmos: los nombrados, o todos
velta-content compile                              compila los ritmos que vienen con el programa
velta-content picture carpeta [archivo.ritmo...]   los dibuja en archivos SVG
velta-content sonidos                              nombra los golpes de percusión, en JSON
velta-content build-server carpeta                 arma la carpeta del servidor de contenidos
velta-content serve carpeta [--port puerto]        la sirve a las computadoras del aula
velta-content borrador carpeta archivo.ritmo       arma una biblioteca de un solo ritmo, aunque le falte
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
    try:
        return run(paths)
    except (SourceError, OSError) as error:
        print(error, file=sys.stderr)
        return 1


def _chosen(checkout: Checkout, sources: list[Path]) -> list[Rhythm]:
    return [load(path) for path in sources] or checkout.installed() + checkout.served()


def _report(rhythms: list[Rhythm]) -> None:
    """Prints what is wrong or missing."""
    for problem in problems_of(rhythms):
        print(problem, file=sys.stderr)


def _finished(rhythms: list[Rhythm]) -> list[Rhythm]:
    """Those that may be compiled, after what is wrong with all was printed; no file stops another."""
    _report(rhythms)
    finished = [rhythm for rhythm in rhythms if rhythm.problems.finished]
    for rhythm in rhythms:
        if not rhythm.problems.finished:
            print(f"{rhythm.file}: queda afuera hasta que esté completo y sin errores", file=sys.stderr)
    return finished


def _counted(rhythms: list[Rhythm]) -> str:
    return "1 ritmo" if len(rhythms) == 1 else f"{len(rhythms)} ritmos"


def _new(paths: list[Path]) -> int:
    identifier, meter = str(paths[0]), str(paths[1]) if len(paths) > 1 else "4/4"
    if meter not in METERS:
        raise SourceError(f"para empezar hay compases de {', '.join(METERS)}, no de «{meter}»")
    path = Path(f"{identifier_of(identifier)}{SUFFIX}")
    if path.exists():
        raise SourceError(f"{path} ya existe, y no lo piso")
    with path.open("x", encoding="utf-8") as file:
        file.write(template(identifier, meter))
    print(f"{path}: listo para escuchar con tools/velta-listen --borrador {path} <carpeta>")
    return 0


def _check(sources: list[Path]) -> int:
    rhythms = _chosen(Checkout(), sources)
    _report(rhythms)
    if any(rhythm.problems.wrong for rhythm in rhythms):
        return 1
    loops = sum(len(layer.loops()) for rhythm in rhythms for layer in rhythm.layers.values())
    whole = all(rhythm.problems.finished for rhythm in rhythms)
    print(f"{_counted(rhythms)}, {loops} variante{'s' * (loops != 1)}: "
          + ("todo en orden" if whole else "sin errores; para compilar falta lo que dicen las notas"))
    return 0


def _compile(_: list[Path]) -> int:
    checkout = Checkout()
    rhythms = checkout.installed()
    for rhythm in rhythms:
        refuse_own_banks(rhythm)
    finished = _finished(rhythms)
    for rhythm in finished:
        for path, text in files_of(rhythm, checkout.packages, checkout.grooves).items():
            path.parent.mkdir(parents=True, exist_ok=True)
            path.write_text(text, encoding="utf-8")
    return 0 if len(finished) == len(rhythms) else 1


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
    finished = _finished(rhythms)
    build_server(finished, paths[0], checkout.root / "tools")
    print(f"{_counted(finished)} en {paths[0]}")
    return 0 if len(finished) == len(rhythms) else 1


def _serve(words: list[Path]) -> int:
    folder, *option = (str(word) for word in words)
    port = PORT
    if option:
        name, _, value = "=".join(option).partition("=")
        if name != "--port":
            raise SourceError(f"no conozco la opción «{name}»; hay --port")
        port = port_of(value)
    serve(Path(folder), port)
    return 0


def _sounds(_: list[Path]) -> int:
    keys = range(music.LOWEST_DRUM, music.HIGHEST_DRUM + 1)
    print(json.dumps({str(key): music.drum_name(key) for key in keys}, indent=1))
    return 0


def _draft(paths: list[Path]) -> int:
    folder, source = paths
    rhythm = load(source)
    for problem in problems_of([rhythm]):
        # That a draft lacks something is no news.
        if problem.kind is not Kind.MISSING:
            print(problem, file=sys.stderr)
    print(build_draft(rhythm, folder, Checkout().root / "tools"))
    return 0


# Each command with the least and the most paths that it takes.
_COMMANDS: dict[str, tuple[Callable[[list[Path]], int], int, int]] = {
    "nuevo": (_new, 1, 2),
    "check": (_check, 0, 1000),
    "compile": (_compile, 0, 0),
    "picture": (_picture, 1, 1000),
    "build-server": (_build_server, 1, 1),
    "serve": (_serve, 1, 3),
    "sonidos": (_sounds, 0, 0),
    "borrador": (_draft, 2, 2),
}
