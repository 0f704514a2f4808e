"""What velta-listen leaves in its folder, of a rhythm as the template gives it."""

import json
import os
import re
import subprocess
import tempfile
from pathlib import Path
from unittest import TestCase

from velta_content.server import build_draft
from velta_content.sources import load
from velta_content.template import template

PROGRAM = Path(os.environ["VELTA_LISTEN"])
GM_BANK = PROGRAM.parent / "resources" / "soundfonts" / "velta_bank_gm.sf2"


class Program(TestCase):
    """Renders a draft of the template."""

    @classmethod
    def setUpClass(cls):
        cls.folder = Path(cls.enterClassContext(tempfile.TemporaryDirectory()))
        cls.draft(template("mi_ritmo", "2/4"), "mi_ritmo", resources="resources")
        cls.whole = cls.listen("todo")

    @classmethod
    def draft(cls, text, name, resources):
        """Makes the folder `resources` of the source `text`."""
        source = cls.folder / f"{name}.ritmo"
        source.write_text(text, encoding="utf-8")
        build_draft(load(source), cls.folder / resources, cls.folder)
        (cls.folder / resources / "soundfonts/velta_bank_gm.sf2").symlink_to(GM_BANK)

    @classmethod
    def listen(cls, out, *options, resources="resources"):
        """The finished program; what it wrote lies in `out`."""
        return subprocess.run([str(PROGRAM), "--resources", str(cls.folder / resources), *options, str(cls.folder / out)],
                              capture_output=True, encoding="utf-8", check=False)

    def written(self, out):
        folder = self.folder / out
        return sorted(str(path.relative_to(folder)) for path in folder.rglob("*") if path.is_file())

    def test_the_song_lies_there_as_sound_twice_and_as_a_work(self):
        self.assertEqual(self.whole.returncode, 0, self.whole.stderr)
        folder = self.folder / "todo/mi_ritmo"
        self.assertEqual((folder / "cancion.wav").read_bytes()[:4], b"RIFF")
        self.assertIn((folder / "cancion.mp3").read_bytes()[:2], (b"ID", b"\xff\xfb"))
        work = json.loads((folder / "cancion/project.json").read_text(encoding="utf-8"))
        self.assertEqual([track["name"] for track in work["tracks"]],
                         ["Percusión", "Bajo", "Guitarra (rasgueo)", "Violín (respuestas)"])
        ends = {track["loopBlocks"][-1]["startBeat"] + track["loopBlocks"][-1]["durationBeats"] for track in work["tracks"]}
        self.assertEqual(ends, {32})

    def test_every_loop_has_its_sound_and_its_picture(self):
        names = {path for path in self.written("todo") if "cancion" not in path}
        self.assertEqual(len(names), 1 + 2 * 10)
        self.assertLessEqual({"index.html", "mi_ritmo/Normal_2.wav", "mi_ritmo/Normal_2.png"}, names)

    def levels(self, out):
        """Of the table on the page: layer, role, decibels above the bass, target, difference."""
        page = (self.folder / out / "index.html").read_text(encoding="utf-8")
        rows = re.findall(r"<tr[^>]*>(<td>.*?)</tr>", page)
        return [re.findall(r"<td>(.*?)</td>", row) for row in rows]

    def test_the_page_shows_every_layer_beside_what_its_role_asks_for(self):
        rows = self.levels("todo")
        self.assertEqual([(layer, role, float(target)) for layer, role, _, target, _ in rows], [
            ("Percusión", "toque", -3), ("Bajo", "bajo", 0), ("Guitarra (rasgueo)", "acordes", -3),
            ("Violín (respuestas)", "respuesta", -2.5)])
        for layer, _, above, target, difference in rows:
            self.assertAlmostEqual(float(above) - float(target), float(difference), delta=0.11, msg=layer)
        self.assertEqual(rows[1][2:], ["0.0", "0.0", "0.0"])
        self.assertGreater(len({above for _, _, above, _, _ in rows}), 2)

    def test_without_a_bass_there_is_nothing_to_compare_levels_with(self):
        text = template("sin_bajo", "2/4").replace("papel: bajo", "papel: acordes")
        self.draft(text, "sin_bajo", resources="recursos")
        self.assertEqual(self.listen("sin_bajo", "--seccion", "Normal 2", resources="recursos").returncode, 0)
        self.assertNotIn("<table>", (self.folder / "sin_bajo/index.html").read_text(encoding="utf-8"))

    def test_sections_and_layers_are_chosen_and_then_there_is_no_song(self):
        done = self.listen("parte", "--seccion", "Normal 2", "--seccion", "Intro", "--capa", "bajo", "--layers")
        self.assertEqual(done.returncode, 0, done.stderr)
        self.assertEqual([name for name in self.written("parte") if name.endswith(".wav")],
                         ["mi_ritmo/Intro_1.wav", "mi_ritmo/Intro_1_1.wav", "mi_ritmo/Intro_2.wav",
                          "mi_ritmo/Intro_2_1.wav", "mi_ritmo/Normal_2.wav", "mi_ritmo/Normal_2_1.wav"])

    def test_tempo_and_chords_give_the_length(self):
        def seconds(out, *options):
            done = self.listen(out, "--seccion", "Final 1", *options)
            return float(done.stdout.split("\t")[2].split()[0])

        # A bar of two beats a chord, and two seconds behind the last note.
        self.assertAlmostEqual(seconds("lento", "--tempo", "60", "--grados", "1,4,5,1,6"), 10 + 2, delta=0.4)
        self.assertAlmostEqual(seconds("rapido", "--tempo", "120", "--grados", "1"), 1 + 2, delta=0.4)

    def test_words_that_mean_nothing_are_told(self):
        for options, said in ((("--tono", "H"), "No conozco el tono «H»"), (("--grados", "9"), "del 1 al 7"),
                              (("--tempo", "5"), "de 20 a 400")):
            done = self.listen("nada", *options)
            self.assertEqual(done.returncode, 2)
            self.assertIn(said, done.stderr)
        self.assertFalse((self.folder / "nada").exists())
