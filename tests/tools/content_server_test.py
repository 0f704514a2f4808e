"""The folder of the content server: what stands in it, and what its catalogue says."""

import json
import stat
import tempfile
from pathlib import Path
from unittest import TestCase

from sounding import whole_source
from velta_content.problems import SourceError
from velta_content.server import build_server
from velta_content.sources import load

BANK_TOOL = """\
#!/bin/sh
[ "$1" = build ] && printf 'RIFF of %s' quena > "$2/quena.sf2"
"""


class Server(TestCase):
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
