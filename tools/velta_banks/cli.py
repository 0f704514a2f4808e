"""The command line of velta-banks."""

import argparse
import os
import sys

from velta_banks.banks import BANKS


def build(folder: str) -> int:
    """Writes all banks into a folder, which is made; a bank is there whole or not at all."""
    os.makedirs(folder, exist_ok=True)
    for bank in BANKS:
        path = os.path.join(folder, f"{bank.instrument_id}.sf2")
        body = bank.file()
        with open(path + ".part", "wb") as file:
            file.write(body)
        os.replace(path + ".part", path)
        print(f"{path}: {len(body)} bytes")
    return 0


def check(folder: str) -> int:
    """Says what is wrong with the banks of a folder; 1 if anything is."""
    # Checking needs FluidSynth, building does not.
    from velta_banks.checks import check as findings
    wrong = findings(folder)
    for line in wrong:
        print(line)
    print(f"{len(BANKS)} banks, {len(wrong)} findings")
    return 1 if wrong else 0


def table(folder: str) -> int:
    """Prints what the banks of a folder sound like, in figures."""
    from velta_banks.table import rows
    for row in rows(folder):
        print(row)
    return 0


_COMMANDS = {
    "build": (build, "write the banks into a folder"),
    "check": (check, "measure the banks of a folder, and say what is wrong"),
    "table": (table, "print colour, decay and vibrato of the banks of a folder"),
}


def main(arguments: list[str]) -> int:
    """Runs one command and gives the exit code."""
    parser = argparse.ArgumentParser(
        prog="velta-banks", description="Synthesises the banks of the recorded instruments.")
    commands = parser.add_subparsers(dest="command", required=True)
    for name, (_, words) in _COMMANDS.items():
        commands.add_parser(name, help=words).add_argument("folder")
    options = parser.parse_args(arguments)
    try:
        return _COMMANDS[options.command][0](options.folder)
    except OSError as error:
        print(f"velta-banks: {error}", file=sys.stderr)
        return 1
