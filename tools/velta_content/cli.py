"""The commands of `velta-content`."""

from __future__ import annotations

import argparse
import sys
from pathlib import Path

from .model import Rhythm
from .package import files_of
from .picture import picture
from .problems import SourceError
from .server import build_server
from .sources import Checkout, load, problems_of


def main(arguments: list[str]) -> int:
    """Runs a command; 0, or 1 with messages on the error stream."""
    for stream in (sys.stdout, sys.stderr):
        # A terminal that lacks a letter still shows the message.
        stream.reconfigure(errors="backslashreplace")
    options = _parser().parse_args(arguments)
    return options.run(options)


def _parser() -> argparse.ArgumentParser:
    parser = argparse.ArgumentParser(prog="velta-content", description="Herramientas para escribir ritmos.")
    commands = parser.add_subparsers(required=True, metavar="orden")
    command = commands.add_parser("check", help="revisa los ritmos")
    command.add_argument("sources", nargs="*", type=Path, metavar="archivo.ritmo")
    command.set_defaults(run=_check)
    command = commands.add_parser("compile", help="compila los ritmos que vienen con el programa")
    command.set_defaults(run=_compile)
    command = commands.add_parser("build-server", help="arma la carpeta del servidor de contenidos")
    command.add_argument("folder", type=Path, metavar="carpeta")
    command.set_defaults(run=_build_server)
    command = commands.add_parser("picture", help="dibuja los ritmos en archivos SVG")
    command.add_argument("folder", type=Path, metavar="carpeta")
    command.add_argument("sources", nargs="*", type=Path, metavar="archivo.ritmo")
    command.set_defaults(run=_picture)
    return parser


def _chosen(checkout: Checkout, sources: list[Path]) -> list[Rhythm]:
    return [load(path) for path in sources] or checkout.installed() + checkout.served()


def _report(rhythms: list[Rhythm]) -> bool:
    """Prints what is wrong; whether nothing stops the compilation."""
    problems = problems_of(rhythms)
    for problem in problems:
        print(problem, file=sys.stderr)
    return all(problem.warning for problem in problems)


def _check(options: argparse.Namespace) -> int:
    rhythms = _chosen(Checkout(), options.sources)
    good = _report(rhythms)
    if good:
        loops = sum(len(layer.loops()) for rhythm in rhythms for layer in rhythm.layers.values())
        print(f"{len(rhythms)} ritmos, {loops} variantes: todo en orden")
    return 0 if good else 1


def _build_server(options: argparse.Namespace) -> int:
    checkout = Checkout()
    rhythms = checkout.served()
    if not _report(rhythms):
        return 1
    try:
        build_server(rhythms, options.folder, checkout.root / "tools")
    except SourceError as error:
        print(error, file=sys.stderr)
        return 1
    print(f"{len(rhythms)} ritmos en {options.folder}")
    return 0


def _picture(options: argparse.Namespace) -> int:
    options.folder.mkdir(parents=True, exist_ok=True)
    for rhythm in _chosen(Checkout(), options.sources):
        path = options.folder / f"{rhythm.file.stem}.svg"
        path.write_text(picture(rhythm), encoding="utf-8")
        print(path)
    return 0


def _compile(_: argparse.Namespace) -> int:
    checkout = Checkout()
    rhythms = checkout.installed()
    if not _report(rhythms):
        return 1
    for rhythm in rhythms:
        for path, text in files_of(rhythm, checkout.packages, checkout.grooves).items():
            path.parent.mkdir(parents=True, exist_ok=True)
            path.write_text(text, encoding="utf-8")
    return 0
