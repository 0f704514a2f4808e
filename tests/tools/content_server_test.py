"""The folder of the content server: what stands in it, and what its catalogue says."""

import json
import os
import stat
import struct
import tempfile
from pathlib import Path
from unittest import TestCase

from sounding import whole_source
from velta_content.problems import SourceError
from velta_content.server import build_server, refuse_own_banks
from velta_content.sources import load

BANK_TOOL = """\
#!/bin/sh
[ "$1" = build ] && printf 'RIFF of %s' quena > "$2/quena.sf2"
"""


class Served(TestCase):
    """A folder to serve, and sources beside it."""

    def setUp(self):
        root = Path(self.enterContext(tempfile.TemporaryDirectory()))
        self.folder, self.tools, self.sources = root / "servidor", root / "tools", root / "sources"
        for folder in (self.tools, self.sources):
            folder.mkdir()

    def rhythm(self, name, *changes):
        text = whole_source().replace("ritmo: prueba", f"ritmo: {name}")
        for former, present in changes:
            text = text.replace(former, present)
        path = self.sources / f"{name}.ritmo"
        path.write_text(text, encoding="utf-8")
        return load(path)

    def with_quena(self):
        return self.rhythm("puna", ("capa perc", 'instrumento quena: "Quena" Winds 75 grabado\ncapa perc'),
                           ("gm_violin", "quena"), ("C5:", "E5:"))

    def bank_tool(self):
        path = self.tools / "velta-banks"
        path.write_text(BANK_TOOL, encoding="utf-8")
        path.chmod(path.stat().st_mode | stat.S_IXUSR)

    def catalogue(self):
        return json.loads((self.folder / "catalog.json").read_text(encoding="utf-8"))

    def files(self):
        return sorted(str(path.relative_to(self.folder)) for path in self.folder.rglob("*") if path.is_file())


class Server(Served):
    """What is built of good rhythms."""

    def test_a_rhythm_has_its_package_and_its_groove(self):
        build_server([self.rhythm("prueba")], self.folder, self.tools)
        self.assertEqual(self.files(), ["catalog.json", "content/prueba.content.json", "grooves/prueba.groove.json"])

    def test_the_catalogue_names_rhythm_and_style(self):
        build_server([self.rhythm("prueba")], self.folder, self.tools)
        entry = self.catalogue()["rhythms"][0]
        self.assertEqual([entry[key] for key in ("rhythmId", "displayName", "styleId", "styleDisplayName", "instrumentIds")],
                         ["prueba", "Ritmo de prueba", "folklore", "Folklore", []])

    def test_the_size_is_that_of_all_files_of_the_rhythm(self):
        self.bank_tool()
        build_server([self.with_quena()], self.folder, self.tools)
        sizes = [(self.folder / name).stat().st_size for name in self.files() if name != "catalog.json"]
        self.assertEqual(len(sizes), 3)
        self.assertEqual(self.catalogue()["rhythms"][0]["estimatedDownloadBytes"], sum(sizes))

    def test_banks_are_built_where_they_are_missing(self):
        self.bank_tool()
        build_server([self.with_quena()], self.folder, self.tools)
        self.assertEqual((self.folder / "instruments" / "quena.sf2").read_text(), "RIFF of quena")
        self.assertEqual(self.catalogue()["rhythms"][0]["instrumentIds"], ["quena"])

    def test_banks_that_are_there_stay(self):
        self.bank_tool()
        (self.folder / "instruments").mkdir(parents=True)
        (self.folder / "instruments" / "quena.sf2").write_text("RIFF of before")
        build_server([self.with_quena()], self.folder, self.tools)
        self.assertEqual((self.folder / "instruments" / "quena.sf2").read_text(), "RIFF of before")

    def test_banks_of_an_older_tool_are_built_anew(self):
        self.bank_tool()
        (self.folder / "instruments").mkdir(parents=True)
        bank = self.folder / "instruments" / "quena.sf2"
        bank.write_text("RIFF of before")
        os.utime(bank, (1, 1))
        (self.tools / "velta_banks").mkdir()
        (self.tools / "velta_banks" / "quena.py").write_text("")
        build_server([self.with_quena()], self.folder, self.tools)
        self.assertEqual(bank.read_text(), "RIFF of quena")

    def test_a_bank_that_nobody_builds_is_a_fault(self):
        with self.assertRaisesRegex(SourceError, "faltan los bancos: quena"):
            build_server([self.with_quena()], self.folder, self.tools)

    def test_rhythms_that_are_gone_leave_the_folder(self):
        build_server([self.rhythm("prueba"), self.rhythm("otra")], self.folder, self.tools)
        build_server([self.rhythm("otra")], self.folder, self.tools)
        self.assertEqual(self.files(), ["catalog.json", "content/otra.content.json", "grooves/otra.groove.json"])

    def test_without_rhythms_the_catalogue_is_empty(self):
        build_server([], self.folder, self.tools)
        self.assertEqual(self.catalogue(), {"rhythms": []})


def sound_font(program=0, bank=0):
    """The least that a SoundFont's head and list of presets come to."""
    def chunk(name, body):
        return name + struct.pack("<I", len(body)) + body

    preset = struct.pack("<20sHHHIII", b"Arpa", program, bank, 0, 0, 0, 0)
    closing = struct.pack("<20sHHHIII", b"EOP", 0, 0, 1, 0, 0, 0)
    lists = [chunk(b"LIST", b"INFO" + chunk(b"isng", b"EMU8000\0")), chunk(b"LIST", b"sdta" + chunk(b"smpl", bytes(90))),
             chunk(b"LIST", b"pdta" + chunk(b"phdr", preset + closing))]
    return chunk(b"RIFF", b"sfbk" + b"".join(lists))


class OwnBanks(Served):
    """A bank that lies beside its source."""

    def with_bank(self, body, name="arpa", written="arpa.sf2"):
        if body is not None:
            (self.sources / "arpa.sf2").write_bytes(body)
        return self.rhythm("puna", ("capa perc", f'instrumento {name}: "Arpa" Strings 46 grabado {written}\ncapa perc'),
                           ("gm_violin", name))

    def faults(self, *arguments):
        return " ".join(problem.message for problem in self.with_bank(*arguments).problems.found)

    def test_it_is_served_with_its_rhythm(self):
        rhythm = self.with_bank(sound_font())
        self.assertEqual(rhythm.problems.found, [])
        build_server([rhythm], self.folder, self.tools)
        self.assertEqual((self.folder / "instruments/arpa.sf2").read_bytes(), sound_font())
        entry = self.catalogue()["rhythms"][0]
        self.assertEqual(entry["instrumentIds"], ["arpa"])
        self.assertEqual(entry["estimatedDownloadBytes"], sum(
            (self.folder / name).stat().st_size for name in self.files() if name != "catalog.json"))
        package = json.loads((self.folder / "content/puna.content.json").read_text(encoding="utf-8"))
        self.assertEqual((package["instruments"][0]["source"], package["instruments"][0]["soundfontBankPath"]),
                         ("CustomRecordedBank", "instruments/arpa.sf2"))

    def test_one_that_is_not_there_is_a_fault(self):
        self.assertIn("no existe el banco", self.faults(None))

    def test_one_that_is_no_bank_is_a_fault(self):
        for body in (b"", b"RIFF", b"RIFF\0\0\0\0WAVEfmt ", sound_font()[:60], bytes(1000)):
            self.assertIn("no es un banco SF2", self.faults(body))

    def test_one_without_the_preset_that_sounds_is_a_fault(self):
        self.assertIn("no tiene el programa 0", self.faults(sound_font(program=5)))
        self.assertIn("no tiene el programa 0", self.faults(sound_font(bank=1)))

    def test_it_needs_the_word_before_it_and_a_name_of_its_own(self):
        self.assertIn("hace Velta: ponele otro nombre", self.faults(sound_font(), "quena"))
        source = self.sources / "puna.ritmo"
        source.write_text(source.read_text(encoding="utf-8").replace("grabado arpa.sf2", "arpa.sf2"), encoding="utf-8")
        self.assertIn("va la palabra «grabado»", " ".join(p.message for p in load(source).problems.found))

    def test_a_rhythm_of_the_program_has_none(self):
        rhythm = self.with_bank(sound_font())
        refuse_own_banks(rhythm)
        self.assertIn("sólo se sirve", " ".join(p.message for p in rhythm.problems.found))
