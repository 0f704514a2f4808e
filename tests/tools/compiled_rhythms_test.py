"""The committed packages are what the sources say, and the commands do what they promise."""

import json
import os
import shutil
import subprocess
import sys
import tempfile
from pathlib import Path
from unittest import TestCase
from xml.etree import ElementTree

from sounding import HEADER, rhythm_of, whole_source
from velta_content.package import files_of, groove_text, package_text
from velta_content.sources import Checkout, load, problems_of
from velta_content.template import template

ROOT = Path(__file__).resolve().parents[2]
TOOL = ROOT / "tools" / "velta-content"
CHECKOUT = Checkout(ROOT)


def run(*arguments, encoding="utf-8", cwd=None):
    """The finished command, with its texts."""
    return subprocess.run([sys.executable, str(TOOL), *map(str, arguments)], capture_output=True, encoding=encoding,
                          env=os.environ | {"PYTHONIOENCODING": encoding}, check=False, cwd=cwd)


class CommittedPackages(TestCase):
    maxDiff = 2000

    def test_all_sources_are_without_faults(self):
        faults = [str(problem) for problem in problems_of(CHECKOUT.installed() + CHECKOUT.served()) if not problem.warning]
        self.assertEqual(faults, [])

    def test_compiling_gives_the_committed_files_byte_for_byte(self):
        for rhythm in CHECKOUT.installed():
            for path, text in files_of(rhythm, CHECKOUT.packages, CHECKOUT.grooves).items():
                with self.subTest(path=path.name):
                    self.assertTrue(text.encode() == path.read_bytes(), f"{path} is not what tools/velta-content compile writes")

    def test_every_committed_file_has_a_source(self):
        written = {path for rhythm in CHECKOUT.installed()
                   for path in files_of(rhythm, CHECKOUT.packages, CHECKOUT.grooves)}
        present = {path for folder in (CHECKOUT.packages, CHECKOUT.grooves) for path in folder.iterdir()}
        self.assertEqual(present, written)

    def test_there_are_rhythms(self):
        self.assertGreaterEqual(len(CHECKOUT.installed()), 4)


class Packages(TestCase):
    def setUp(self):
        self.package = json.loads(package_text(rhythm_of(whole_source())))

    def test_the_head_says_what_the_source_says(self):
        self.assertEqual(self.package["musicalStyle"], {"id": "folklore", "displayName": "Folklore"})
        self.assertEqual(self.package["rhythm"], {
            "id": "prueba", "displayName": "Ritmo de prueba", "styleId": "folklore",
            "timeSignature": {"numerator": 4, "denominator": 4, "isCompound": False},
            "referenceBpm": 100, "bpmMin": 80, "bpmMax": 120, "grooveTemplateId": "prueba"})

    def test_layers_say_whether_they_are_pitched(self):
        self.assertEqual([layer["pitched"] for layer in self.package["loopLayers"]], [False, True, True, True])
        self.assertEqual(self.package["loopLayers"][1], {
            "id": "prueba_bajo", "rhythmId": "prueba", "label": "Bajo", "instrumentId": "gm_bajo", "pitched": True})

    def test_variants_stand_in_the_order_of_layers_and_sections(self):
        seen = [(loop["section"], loop["variantIndex"]) for loop in self.package["loopVariants"][:10]]
        self.assertEqual(seen, [("Intro", 1), ("Intro", 2), ("Normal", 1), ("Normal", 2), ("Normal", 3), ("Normal", 4),
                                ("Intermedio", 1), ("Intermedio", 2), ("Final", 1), ("Final", 2)])
        self.assertEqual(len(self.package["loopVariants"]), 40)

    def test_notes_have_the_four_fields_of_a_note(self):
        self.assertEqual(self.package["loopVariants"][0]["notes"][1],
                         {"pitch": 36, "startBeat": 1, "durationBeats": 0.4, "velocity": 65})

    def test_recorded_instruments_carry_their_bank(self):
        text = HEADER.format(meter="4/4") + 'instrumento quena: "Quena" Winds 75 grabado\n'
        self.assertEqual(json.loads(package_text(rhythm_of(text)))["instruments"], [{
            "id": "quena", "name": "Quena", "category": "Winds", "source": "CustomRecordedBank",
            "generalMidiProgram": 75, "soundfontBankPath": "instruments/quena.sf2"}])

    def test_the_groove_keeps_the_order_of_the_source(self):
        groove = json.loads(groove_text(rhythm_of("groove 1: -.02 -4\ngroove 0: 0 +6\n" + whole_source())))
        self.assertEqual([offset["position"] for offset in groove["offsets"]], [1, 0])
        self.assertEqual(groove["offsets"][0], {"position": 1, "timingOffsetBeats": -0.02, "velocityOffset": -4})

    def test_names_keep_their_accents(self):
        self.assertIn('"label": "Percusión"', package_text(rhythm_of(whole_source())))

    def test_equal_sources_give_equal_bytes(self):
        self.assertEqual(package_text(rhythm_of(whole_source())), package_text(rhythm_of(whole_source())))


class SideBySide(TestCase):
    """Sources that are good by themselves, and not together."""

    def told(self, former, present):
        with tempfile.TemporaryDirectory() as folder:
            for name, text in (("prueba", whole_source()), ("otra", whole_source().replace("ritmo: prueba", "ritmo: otra"))):
                text = text.replace("gm_violin", "arpa_gm").replace("capa perc", 'instrumento arpa_gm: "Arpa" Strings 46\ncapa perc')
                if name == "otra":
                    text = text.replace(former, present)
                (Path(folder) / f"{name}.ritmo").write_text(text, encoding="utf-8")
            rhythms = [load(Path(folder) / "prueba.ritmo"), load(Path(folder) / "otra.ritmo")]
            return " ".join(problem.message for problem in problems_of(rhythms))

    def test_two_rhythms_may_share_style_and_instruments(self):
        self.assertEqual(self.told("", ""), "")

    def test_an_id_names_one_rhythm(self):
        self.assertIn("el ritmo «prueba» ya está en", self.told("ritmo: otra", "ritmo: prueba"))

    def test_a_style_has_one_name(self):
        self.assertIn("se llama «Folklore» en", self.told('"Folklore"', '"Folclore"'))

    def test_an_instrument_has_one_definition(self):
        self.assertIn("está definido de otro modo en", self.told("Strings 46", "Strings 48"))


class Commands(TestCase):
    def setUp(self):
        self.folder = Path(self.enterContext(tempfile.TemporaryDirectory()))
        self.source = self.folder / "prueba.ritmo"
        self.source.write_text(whole_source(), encoding="utf-8")

    def test_check_says_that_all_is_well(self):
        done = run("check", self.source)
        self.assertEqual((done.returncode, done.stdout, done.stderr), (0, "1 ritmo, 40 variantes: todo en orden\n", ""))

    def test_check_fails_with_file_and_line(self):
        self.source.write_text(whole_source().replace("gm_violin", "gm_viola"), encoding="utf-8")
        done = run("check", self.source)
        line = whole_source().split("\n").index('capa violin: "Violín" gm_violin') + 1
        self.assertEqual(done.returncode, 1)
        self.assertIn(f"{self.source}:{line}: no existe el instrumento «gm_viola»", done.stderr)

    def test_a_terminal_without_accents_still_shows_the_message(self):
        self.source.write_text(whole_source().replace("gm_violin", "gm_viola"), encoding="utf-8")
        done = run("check", self.source, encoding="ascii")
        self.assertEqual(done.returncode, 1)
        self.assertIn("no existe el instrumento \\xabgm_viola\\xbb", done.stderr)

    def test_advice_does_not_fail(self):
        self.source.write_text(whole_source().replace("C5: 0/.4@71", "C5: 0/.4@71 · 2/.9 F5", 1), encoding="utf-8")
        done = run("check", self.source)
        self.assertEqual(done.returncode, 0)
        self.assertIn("aviso: Intro 1, compás 1, 2: F5", done.stderr)

    def test_check_of_a_file_that_is_not_there_fails(self):
        done = run("check", self.folder / "nada.ritmo")
        self.assertEqual(done.returncode, 1)
        self.assertEqual(done.stderr, f"{self.folder / 'nada.ritmo'}:1: el archivo no existe\n")

    def test_what_is_missing_is_noted_and_does_not_fail(self):
        self.source.write_text(whole_source().replace("Final 2, 1 compás:\n    C5: 0/.4@87 1/.4@81\n", ""), encoding="utf-8")
        done = run("check", self.source)
        self.assertEqual(done.returncode, 0)
        self.assertIn("nota: Final necesita 2 variantes y tiene 1", done.stderr)
        self.assertEqual(done.stdout, "1 ritmo, 39 variantes: sin errores; para compilar falta lo que dicen las notas\n")

    def test_picture_draws_every_variant_and_note(self):
        done = run("picture", self.folder / "dibujos", self.source)
        self.assertEqual(done.returncode, 0, done.stderr)
        drawn = ElementTree.parse(self.folder / "dibujos" / "prueba.svg").getroot()
        kinds = [element.get("class") for element in drawn.iter()]
        notes = sum(len(loop.notes) for layer in load(self.source).layers.values() for loop in layer.loops())
        self.assertEqual((kinds.count("frame"), kinds.count("note")), (40, notes))
        texts = {element.text for element in drawn.iter() if element.get("class") == "drum"}
        self.assertLessEqual({"bombo", "C2", "C4", "C5"}, texts)

    def test_a_new_rhythm_is_whole_in_every_meter_and_replaces_no_file(self):
        for meter in ("4/4", "3/4", "2/4", "6/8"):
            with self.subTest(meter=meter):
                name = "nuevo_" + meter.replace("/", "_")
                done = run("nuevo", name, meter, cwd=self.folder)
                self.assertEqual((done.returncode, done.stderr), (0, ""))
                written = self.folder / f"{name}.ritmo"
                self.assertEqual(load(written).problems.found, [])
                self.assertTrue(written.read_text(encoding="utf-8").startswith("# Un ritmo para empezar"))
                before = written.read_bytes()
                self.assertIn("ya existe", run("nuevo", name, meter, cwd=self.folder).stderr)
                self.assertEqual(written.read_bytes(), before)

    def test_a_new_rhythm_takes_name_and_style_from_its_id(self):
        for name, shown in (("popular_vallenato", ("Vallenato", "popular", "Popular")),
                            ("folklore_la_huella", ("La huella", "folklore", "Folklore")),
                            ("marinera", ("Marinera", "folklore", "Folklore")),
                            ("popular_", ("Popular", "popular", "Popular"))):
            with self.subTest(name=name):
                self.assertEqual(run("nuevo", name, cwd=self.folder).returncode, 0)
                rhythm = load(self.folder / f"{name}.ritmo")
                self.assertEqual((rhythm.name, rhythm.style_id, rhythm.style_name), shown)

    def test_no_note_of_a_new_rhythm_lasts_into_the_next_of_its_line(self):
        for meter in ("4/4", "3/4", "2/4", "6/8"):
            rhythm = rhythm_of(template("nuevo", meter))
            for variant in rhythm.layers["bajo"].loops():
                ends = [note.start + note.length for note in variant.notes]
                starts = [note.start for note in variant.notes[1:]] + [variant.bars * rhythm.bar]
                with self.subTest(meter=meter, variant=variant.name):
                    self.assertTrue(all(end <= start for end, start in zip(ends, starts)), (ends, starts))

    def test_a_new_rhythm_needs_an_id_and_a_meter_that_there_is(self):
        self.assertIn("no sirve de identificador", run("nuevo", "Mi Ritmo", cwd=self.folder).stderr)
        self.assertIn("no de «7/8»", run("nuevo", "siete", "7/8", cwd=self.folder).stderr)
        self.assertEqual(sorted(self.folder.iterdir()), [self.source])

    def test_a_draft_is_a_library_of_what_there_is(self):
        self.source.write_text("compás: 4/4\ntempo: 80 100 120\ncapa p: \"P\" gm_bateria percusión\n"
                               "Normal 2, 1 compás:\nbombo | X . x . |\nbambo | x |\n", encoding="utf-8")
        done = run("borrador", self.folder / "b", self.source)
        self.assertEqual((done.returncode, done.stdout), (0, "borrador\n"))
        self.assertEqual(done.stderr, f"{self.source}:6: no conozco el sonido «bambo»; ¿será «bombo»?\n")
        package = json.loads((self.folder / "b/loops/installed/borrador.content.json").read_text(encoding="utf-8"))
        self.assertEqual(package["rhythm"]["displayName"], "prueba")
        self.assertEqual([note["pitch"] for note in package["loopVariants"][0]["notes"]], [36, 36])

    def test_a_draft_is_taken_apart_for_the_balance_as_far_as_it_has_roles(self):
        self.source.write_text(whole_source().replace("papel: acordes\n", "", 1), encoding="utf-8")
        self.assertEqual(run("borrador", self.folder / "b", self.source).returncode, 0)
        listed = json.loads((self.folder / "b/stems/stems.json").read_text(encoding="utf-8"))
        self.assertEqual([stem["role"] for stem in listed["stems"]], ["tambor", "bajo", "respuesta"])

    def test_a_draft_without_a_note_is_told(self):
        self.source.write_text("compás: 4/4\ntempo: 80 100 120\n", encoding="utf-8")
        done = run("borrador", self.folder / "b", self.source)
        self.assertEqual(done.returncode, 1)
        self.assertIn("todavía no hay ninguna variante que suene", done.stderr)

    def test_sounds_are_named_by_their_key(self):
        names = json.loads(run("sonidos").stdout)
        self.assertEqual((names["36"], names["41"], names["87"], len(names)), ("bombo", "parche", "surdo_abierto", 53))

    def test_words_that_are_no_command_get_the_list_of_commands(self):
        for words in ((), ("compilar",), ("nuevo",), ("borrador", "algo"), ("build-server",), ("compile", "algo"), ("picture",)):
            with self.subTest(words=words):
                done = run(*words)
                self.assertEqual((done.returncode, done.stdout), (2, ""))
                self.assertIn("velta-content check [archivo.ritmo...]", done.stderr)

    def test_help_lists_the_commands(self):
        done = run("--help")
        self.assertEqual((done.returncode, done.stderr, len(done.stdout.splitlines())), (0, "", 8))


class OneBroken(TestCase):
    """A checkout in which one source is broken and another unfinished."""

    def setUp(self):
        self.root = Path(self.enterContext(tempfile.TemporaryDirectory()))
        shutil.copytree(ROOT / "tools", self.root / "tools", ignore=shutil.ignore_patterns("velta-banks"))
        for folder in ("rhythms", "server-rhythms"):
            self.write(folder, "buena", lambda text: text)
            self.write(folder, "rota", lambda text: text.replace("gm_violin", "gm_viola"))
            self.write(folder, "trunca", lambda text: text.replace("Final 2, 1", "figura f, 1"))

    def write(self, folder, name, change):
        path = self.root / "content" / folder / f"{name}.ritmo"
        path.parent.mkdir(parents=True, exist_ok=True)
        path.write_text(change(whole_source().replace("ritmo: prueba", f"ritmo: {name}")), encoding="utf-8")

    def run_tool(self, *words, tool="velta-content"):
        return subprocess.run([sys.executable, str(self.root / "tools" / tool), *map(str, words)],
                              capture_output=True, encoding="utf-8", check=False)

    def test_only_what_is_finished_is_taken_apart_for_the_balance(self):
        done = self.run_tool(self.root / "apart", tool="velta-stems")
        self.assertEqual((done.returncode, done.stderr), (0, ""))
        listed = json.loads((self.root / "apart/stems.json").read_text(encoding="utf-8"))
        self.assertEqual({stem["rhythmId"] for stem in listed["stems"]}, {"buena"})

    def test_the_others_are_compiled(self):
        done = self.run_tool("compile")
        self.assertEqual(done.returncode, 1)
        self.assertEqual([path.name for path in (self.root / "resources/loops/installed").iterdir()], ["buena.content.json"])
        self.assertIn("content/rhythms/rota.ritmo: queda afuera", done.stderr)
        self.assertIn("content/rhythms/trunca.ritmo: queda afuera", done.stderr)
        self.assertIn("nota: Final necesita 2 variantes", done.stderr)

    def test_the_others_are_served(self):
        done = self.run_tool("build-server", self.root / "servidor")
        self.assertEqual((done.returncode, done.stdout), (1, f"1 ritmo en {self.root / 'servidor'}\n"))
        catalogue = json.loads((self.root / "servidor/catalog.json").read_text(encoding="utf-8"))
        self.assertEqual([entry["rhythmId"] for entry in catalogue["rhythms"]], ["buena"])
