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


def main(arguments: list[str]) -> int:
    """Runs one command and gives the exit code."""
    parser = argparse.ArgumentParser(
        prog="velta-banks", description="Synthesises the banks of the recorded instruments.")
    commands = parser.add_subparsers(dest="command", required=True)
    builder = commands.add_parser("build", help="write the banks into a folder")
    builder.add_argument("folder")
    checker = commands.add_parser("check", help="measure the banks of a folder")
    checker.add_argument("folder")
    options = parser.parse_args(arguments)
    try:
        if options.command == "build":
            return build(options.folder)
        return check(options.folder)
    except OSError as error:
        print(f"velta-banks: {error}", file=sys.stderr)
        return 1
