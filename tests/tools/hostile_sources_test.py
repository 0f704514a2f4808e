"""Sources that nobody would write end with a message, soon, and never with a crash."""

import json
import random
import tempfile
from pathlib import Path
from unittest import TestCase
from xml.etree import ElementTree

from sounding import DRUMS, GUITAR, HEADER, problems_of, rhythm_of, whole_source
from velta_content.package import groove_text, package_text
from velta_content.picture import picture
from velta_content.sources import load


def told(body, layer=GUITAR):
    text = HEADER.format(meter="4/4") + layer + body
    return " ".join(message for _, message in problems_of(text))


class References(TestCase):
    def test_a_variant_that_quotes_itself(self):
        self.assertIn("las referencias dan vueltas: Normal 1 → Normal 1", told("Normal 1, 1 compás:\n= Normal 1\n"))

    def test_a_circle_of_three(self):
        body = "figura a, 1 compás:\n= b\nfigura b, 1 compás:\n= c\nfigura c, 1 compás:\n= a\n"
        self.assertIn("las referencias dan vueltas: a → b → c → a", told(body))

    def test_a_circle_through_two_layers(self):
        bass = 'capa bajo: "Bajo" gm_bajo\nfuente: las pruebas\nNormal 1, 1 compás:\n= guitarra.Normal 1\n'
        self.assertIn("dan vueltas", told("Normal 1, 1 compás:\n= bajo.Normal 1\n" + bass))

    def test_a_long_chain(self):
        links = "".join(f"figura f{i}, 1 compás:\n= f{i + 1}\n" for i in range(900))
        self.assertIn("referencias encadenadas", told(links + "figura f900, 1 compás:\n0/.4 C4\n"))

    def test_figures_that_double_what_they_quote(self):
        doubling = "".join(f"figura f{i}, 1 compás:\n= f{i + 1}\n= f{i + 1}\n" for i in range(20))
        self.assertIn("pasa de 2000 notas", told(doubling + "figura f20, 1 compás:\n0/.4 C4\n"))

    def test_more_notes_than_any_song(self):
        row = "A | " + "x" * 96 + " |\n"
        variants = "".join(f"figura f{i}, 16 compases:\n{row}" for i in range(99))
        self.assertIn("el ritmo pasa de 100000 notas", told(variants, DRUMS))


class Numbers(TestCase):
    def test_numbers_without_end(self):
        huge = "9" * 400
        for body in (f"{huge}/1 C4", f"0/{huge} C4", f"0/1 C4@{huge}", f"0/1 C{huge}", f"b{huge} 0/1 C4",
                     f"0/1 C4(+{huge})", f"0 D/1~{huge} CH", f"fuerza x{huge}", f"octava +{huge}", f"= Normal {huge}",
                     f"crece -{huge} +8", f"C4 | x | x{huge}"):
            with self.subTest(body=body[:12]):
                self.assertNotEqual(told(f"Normal 1, 1 compás:\n{body}\n"), "")

    def test_numbers_that_are_none(self):
        for word in ("nan", "inf", "1e300", "0x10", "٣", "-", ".", "1.2.3", "--1"):
            with self.subTest(word=word):
                self.assertNotEqual(told(f"Normal 1, 1 compás:\n{word}/1 C4\n"), "")
                self.assertNotEqual(told(f"Normal 1, 1 compás:\n0/{word} C4\n"), "")

    def test_headings_without_end(self):
        for line in ("compás: 99999/4", "compás: 4/99999", "tempo: 1 2 " + "9" * 99, "groove " + "9" * 99 + ": 0 0",
                     "niveles: x=" + "9" * 99):
            with self.subTest(line=line[:20]):
                self.assertNotEqual(problems_of(line), [])


class Files(TestCase):
    def problems_of_bytes(self, data):
        with tempfile.TemporaryDirectory() as folder:
            path = Path(folder) / "prueba.ritmo"
            path.write_bytes(data)
            return [problem.message for problem in load(path).problems.found]

    def test_a_file_that_is_no_text(self):
        self.assertIn("no se puede leer como texto UTF-8: guardalo así desde el editor", self.problems_of_bytes(b"\xff\xfe\x00\x80" * 99))

    def test_a_file_that_is_not_there(self):
        self.assertEqual([p.message for p in load(Path("/no/hay/nada.ritmo")).problems.found], ["el archivo no existe"])

    def test_a_folder_instead_of_a_file(self):
        self.assertEqual([p.message for p in load(Path("/")).problems.found], ["es una carpeta, y hace falta un archivo .ritmo"])

    def test_a_file_of_megabytes(self):
        self.assertIn("el archivo pasa de 256 kilobytes", self.problems_of_bytes(b"#" * 5_000_000))

    def test_a_file_of_too_many_lines(self):
        self.assertIn("el archivo pasa de 5000 líneas", self.problems_of_bytes(b"x\n" * 60_000))

    def test_a_line_without_end(self):
        self.assertIn("la línea pasa de 1000 caracteres", self.problems_of_bytes(b"capa" + b" " * 200_000 + b"x"))

    def test_an_empty_file(self):
        self.assertTrue(self.problems_of_bytes(b""))


class Damage(TestCase):
    """Sources with a few characters changed: whatever comes of them can be told, written and drawn."""

    ALPHABET = "bCDX|.-/@()~[]:=!·, \n0123456789#\"\u2212ñ\0"

    def damaged(self, text, dice):
        letters = list(text)
        for _ in range(dice.randint(1, 12)):
            place = dice.randrange(len(letters))
            letters[place] = dice.choice(("", letters[place] * 3, dice.choice(self.ALPHABET)))
        return "".join(letters)

    def test_two_hundred_damaged_sources(self):
        root = Path(__file__).resolve().parents[2] / "content" / "rhythms"
        whole = [whole_source(), *(path.read_text(encoding="utf-8")[:6000] for path in sorted(root.glob("*.ritmo"))[:4])]
        dice = random.Random(1)
        sound = 0
        for number in range(200):
            rhythm = rhythm_of(self.damaged(whole[number % len(whole)], dice))
            sound += not rhythm.problems.found
            json.loads(package_text(rhythm))
            json.loads(groove_text(rhythm))
            ElementTree.fromstring(picture(rhythm))
        self.assertLess(sound, 150)
