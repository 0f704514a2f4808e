"""Where written notes go over other chords, what a role is, and what the mix does to velocities."""

import json
import tempfile
from pathlib import Path
from unittest import TestCase

from sounding import DRUMS, GUITAR, notes, rhythm_of, whole_source
from velta_content.mapping import extent, moved, widest_leap
from velta_content.roles import ROLES, role_of
from velta_content.stems import write_stems


class Mapping(TestCase):
    """Against the program's own worked examples."""

    def over(self, mode, degree, pitches):
        return [moved(pitch, mode, degree) for pitch in pitches]

    def test_a_triad_in_major(self):
        expected = {1: [60, 64, 67], 2: [62, 65, 69], 3: [64, 67, 71], 4: [65, 69, 72], 5: [55, 59, 62],
                    6: [57, 60, 64], 7: [59, 62, 65]}
        for degree, triad in expected.items():
            self.assertEqual(self.over("mayor", degree, (60, 64, 67)), triad)

    def test_the_third_of_the_fifth_degree_in_minor_goes_up(self):
        # A minor gives 64, 79 and 71; C is nine semitones below.
        self.assertEqual(self.over("menor", 5, (60, 64, 67)), [55, 70, 62])

    def test_a_seventh_in_dorian(self):
        # D Dorian gives 67, 71, 74 and 77.
        self.assertEqual(self.over("dórico", 4, (60, 64, 67, 71)), [65, 69, 72, 75])

    def test_black_keys_go_with_the_root(self):
        self.assertEqual((moved(61, "mayor", 5), moved(61, "mayor", 2)), (56, 63))

    def test_a_note_a_tritone_away_stays(self):
        self.assertEqual((moved(71, "mayor", 4), moved(65, "mayor", 4)), (76, 71))

    def test_notes_below_middle_c_move_alike(self):
        self.assertEqual((moved(48, "mayor", 5), moved(47, "mayor", 2)), (43, 48))

    def test_how_far_a_note_comes_in_all_keys(self):
        # E goes five down over V in C, and in B six up over v besides the eleven of the key.
        self.assertEqual(extent(64), (59, 81))

    def test_the_leaps_of_the_guide(self):
        for pair, leap in {(36, 43): 7, (43, 48): 6, (36, 48): 12, (64, 67): 8, (67, 72): 6, (64, 72): 9, (60, 64): 15,
                           (67, 76): 20, (45, 43): 13, (72, 79): 7}.items():
            self.assertEqual(widest_leap(*pair)[0], leap, pair)


class Mix(TestCase):
    def velocities(self, head, body):
        return [velocity for *_, velocity in notes(body, layer=head)]

    def test_a_layer_is_mixed_as_a_whole(self):
        self.assertEqual(self.velocities(GUITAR + "mezcla: x0.5\n", "0/.4 C4@80 · 1/.4 C4@61"), [40, 31])

    def test_cymbals_and_shakers_of_a_kit_are_mixed_apart(self):
        self.assertEqual(self.velocities(DRUMS + "mezcla: x0.5 platillo=x2 semilla=x1.5\n",
                                         "bombo: 0@100 · hihat: 1@60 · maracas: 2@80"), [50, 60, 60])

    def test_quotations_are_mixed_once(self):
        body = "Normal 1, 1 compás:\n0/.4 C4@80\nNormal 2, 1 compás:\n= Normal 1"
        self.assertEqual(self.velocities(GUITAR + "mezcla: x0.5\n", body), [40])

    def test_a_section_is_mixed_in_all_layers(self):
        text = whole_source().replace("groove 0:", "mezcla Final: x0.5\ngroove 0:", 1)
        rhythm, plain = rhythm_of(text), rhythm_of(whole_source())
        for name, layer in rhythm.layers.items():
            for variant in layer.loops():
                former = plain.layers[name].variants[variant.name].notes
                factor = 0.5 if variant.section == "Final" else 1
                self.assertEqual([n.velocity for n in variant.notes], [int(n.velocity * factor + .5) for n in former])

    def test_a_section_that_is_none_is_told(self):
        text = whole_source().replace("groove 0:", "mezcla Coda: x0.5\ngroove 0:", 1)
        self.assertIn("mezcla Intro: x0.9", " ".join(p.message for p in rhythm_of(text).problems.found))


class Strums(TestCase):
    """At 100 quarter notes a minute, 12 milliseconds are .02 beats."""

    def starts(self, body, meter="4/4"):
        return [start for start, *_ in notes(body, layer=GUITAR + "rasgueo: 6 6 6\n", meter=meter)]

    def test_a_strum_between_pulses_begins_early(self):
        self.assertEqual(self.starts("1.5 D/.4@80 G-high"), [1.48, 1.49, 1.5])

    def test_a_strum_on_a_pulse_keeps_to_its_chord(self):
        for beat in ("0", "1", "3"):
            self.assertEqual(self.starts(f"{beat} D/.4@80 G-high")[0], float(beat))

    def test_in_compound_meters_the_pulse_is_dotted(self):
        self.assertEqual(self.starts("1 D/.4@80 G-high", "6/8")[0], 0.98)
        self.assertEqual(self.starts("1.5 D/.4@80 G-high", "6/8")[0], 1.5)

    def test_a_rolled_chord_begins_where_it_is_written(self):
        self.assertEqual(self.starts("1.5 D/1.4@80~.2 G-high"), [1.5, 1.6, 1.7])


class Stems(TestCase):
    def setUp(self):
        self.folder = Path(self.enterContext(tempfile.TemporaryDirectory()))
        text = whole_source().replace("    bombo: 0/.4@71 1/.4@65\n", "    bombo: 0/.4@71 1/.4@65 · hihat: 2/.4@50\n")
        write_stems([rhythm_of(text)], self.folder)

    def test_every_layer_has_its_target(self):
        listed = json.loads((self.folder / "stems.json").read_text(encoding="utf-8"))
        self.assertEqual(listed["toleranceDb"], 2)
        self.assertEqual([(stem["layerId"], stem["role"], stem["targetDb"]) for stem in listed["stems"]], [
            ("prueba_percusion:platillo", "platillo", -8), ("prueba_percusion", "tambor", 1), ("prueba_bajo", "bajo", 0),
            ("prueba_guitarra", "acordes", -3), ("prueba_violin", "respuesta", -2.5)])
        self.assertEqual([stem["byStrokes"] for stem in listed["stems"]], [True, True, False, False, False])

    def test_the_cymbals_stand_in_a_layer_of_their_own(self):
        package = json.loads((self.folder / "loops/installed/prueba.content.json").read_text(encoding="utf-8"))
        pitches = {loop["layerId"]: {note["pitch"] for note in loop["notes"]} for loop in package["loopVariants"]
                   if loop["section"] == "Intro" and loop["variantIndex"] == 1}
        self.assertEqual((pitches["prueba_percusion"], pitches["prueba_percusion:platillo"]), ({36}, {42}))

    def test_shakers_that_are_the_layer_stay_whole(self):
        text = whole_source().replace("papel: tambor", "papel: semilla").replace("bombo:", "hihat:")
        layer = rhythm_of(text).layers["percusion"]
        self.assertEqual({role_of(layer, note) for loop in layer.loops() for note in loop.notes}, {"semilla"})

    def test_the_bass_is_what_all_are_measured_against(self):
        self.assertEqual(ROLES["bajo"].target_db, 0)
