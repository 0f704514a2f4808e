"""The notation by example: what each form of a line plays."""

import re
from pathlib import Path
from unittest import TestCase

from sounding import DRUMS, GUITAR, HEADER, notes, rhythm_of, rows, whole_source
from velta_content import music


def starts(found):
    return [note[0] for note in found]


def lengths(found):
    return [note[1] for note in found]


def pitches(found):
    return [note[2] for note in found]


def velocities(found):
    return [note[3] for note in found]


class Grids(TestCase):
    def test_a_grid_divides_its_bar_evenly(self):
        self.assertEqual(starts(notes("A | x . . x . . |", layer=DRUMS, meter="6/8")), [0, 1.5])
        self.assertEqual(starts(notes("A | xxxx xxxx |", layer=DRUMS, meter="2/4"))[:3], [0, .25, .5])
        self.assertEqual(starts(notes("A | x..x..x..x.. |", layer=DRUMS)), [0, 1, 2, 3])
        self.assertEqual(starts(notes("A | xxx...xxx... |", layer=DRUMS))[:3], [0, .333, .667])

    def test_every_bar_of_a_grid_has_its_own_step(self):
        self.assertEqual(starts(notes("A | x x | x x x x |", 2, DRUMS)), [0, 2, 4, 5, 6, 7])

    def test_a_letter_is_a_level(self):
        self.assertEqual(velocities(notes("A | X x o g |", layer=DRUMS)), [104, 86, 66, 40])
        self.assertEqual(velocities(notes("C4 | X x o g |")), [86, 74, 60, 44])

    def test_a_layer_names_levels_of_its_own(self):
        layer = DRUMS + "niveles: X=111 z=33\n"
        self.assertEqual(velocities(notes("A | X x z . |", layer=layer)), [111, 86, 33])

    def test_levels_of_the_header_are_those_of_all_layers(self):
        text = HEADER.format(meter="4/4") + "niveles: x=50\n" + GUITAR + "Normal 1, 1 compás:\nC4 | x . . . |\n"
        self.assertEqual(rhythm_of(text).layers["guitarra"].variants["Normal 1"].notes[0].velocity, 50)

    def test_a_hyphen_holds_a_note(self):
        self.assertEqual(lengths(notes("C4 | x - - . |", layer=GUITAR + "articulación: 100\n")), [3])

    def test_a_held_note_may_cross_the_bar_line(self):
        self.assertEqual(lengths(notes("C4 | . . . x | - . . . |", 2, GUITAR + "articulación: 100\n")), [2])

    def test_the_articulation_is_the_part_of_the_cells_that_sounds(self):
        self.assertEqual(lengths(notes("C4 | x - . . |", layer=GUITAR + "articulación: 50\n")), [1])

    def test_a_drum_that_is_not_held_has_the_length_of_its_layer(self):
        layer = DRUMS + "duración: .12\n"
        self.assertEqual(lengths(notes("A | x x - . |", layer=layer)), [.12, 2])

    def test_a_short_grid_fills_the_variant(self):
        self.assertEqual(starts(notes("A | x . . . |", 3, DRUMS)), [0, 4, 8])
        self.assertEqual(starts(notes("A | x . . . | . x . . |", 4, DRUMS)), [0, 5, 8, 13])

    def test_x2_writes_a_grid_twice(self):
        self.assertEqual(notes("A | x . . . | x2\nP | . . x . | . x . . |", 2, DRUMS),
                         notes("A | x . . . | x . . . |\nP | . . x . | . x . . |", 2, DRUMS))

    def test_a_grid_may_be_for_some_bars(self):
        self.assertEqual(starts(notes("b2,4 A | x . . . |", 4, DRUMS)), [4, 12])
        self.assertEqual(starts(notes("b2-3 A | x . . . | . x . . |", 4, DRUMS)), [4, 9])

    def test_a_melody_has_a_word_for_each_cell(self):
        found = notes("notas | C5 - D5@80 . [E4 G4]@X . . . |", layer=GUITAR + "articulación: 100\n")
        self.assertEqual(found, [(0, 1, 72, 74), (1, .5, 74, 80), (2, .5, 64, 86), (2, .5, 67, 86)])

    def test_a_strummed_grid_names_its_strokes(self):
        found = notes("rasgueo G-high | D . U . |")
        self.assertEqual(pitches(found), [55, 60, 64, 64, 60, 55])

    def test_a_chasquido_is_damped_however_long_its_cell(self):
        found = notes("rasgueo G-high | X . . . |")
        self.assertLessEqual(max(start + length for start, length, _, _ in found), .1 + 1e-9)


class Events(TestCase):
    def test_a_note_has_position_length_and_velocity(self):
        self.assertEqual(notes("0/.9 C2@84 · 1/.9 G2@78"), [(0, .9, 36, 84), (1, .9, 43, 78)])

    def test_commas_spaces_and_points_set_events_apart(self):
        expected = notes("0/.4 C4@80 · 1/.4 E4@70")
        self.assertEqual(notes("0/.4 C4@80, 1/.4 E4@70"), expected)
        self.assertEqual(notes("0/.4 C4@80 1/.4 E4@70"), expected)
        self.assertEqual(notes("0/.4@80 C4 · 1 E4/.4@70"), expected)

    def test_a_chord_stands_in_brackets_or_goes_by_name(self):
        expected = [(1, .9, 64, 66), (1, .9, 67, 66), (1, .9, 72, 66)]
        self.assertEqual(notes("1/.9 [E4 G4 C5]@66"), expected)
        self.assertEqual(notes("1/.9 PN@66"), expected)

    def test_a_rhythm_names_voicings_of_its_own(self):
        self.assertEqual(pitches(notes("0/1 K@66", layer="acorde K: [D4 F#4]\n" + GUITAR)), [62, 66])

    def test_sharps_and_flats_are_written_so(self):
        self.assertEqual(pitches(notes("0/1 F#3 · 1/1 Bb3")), [54, 58])

    def test_lower_voices_may_be_softer(self):
        self.assertEqual(velocities(notes("0/1 PN@70", layer=GUITAR + "voces: -3\n")), [64, 67, 70])

    def test_a_down_stroke_goes_from_low_to_high(self):
        found = notes("1 D/.4@84 G-low", layer=GUITAR + "rasgueo: 30 20 10\n")
        self.assertEqual(found, [(1, .4, 48, 84), (1.05, .35, 55, 81), (1.1, .3, 60, 82)])

    def test_an_up_stroke_goes_from_high_to_low_over_three_strings(self):
        found = notes("1 U/.4@60 G-full", layer=GUITAR + "rasgueo: 30 24 10\n")
        self.assertEqual(found, [(1, .4, 67, 60), (1.04, .36, 64, 57), (1.08, .32, 60, 58)])

    def test_an_up_stroke_without_pitches_strikes_the_high_strings(self):
        self.assertEqual(sorted(pitches(notes("1 U/.4"))), [55, 60, 64])

    def test_a_roll_is_as_long_as_it_says(self):
        self.assertEqual(starts(notes("0 D/2@66~.2 G-full")), [0, .05, .1, .15, .2])

    def test_a_strum_never_takes_longer_than_its_notes(self):
        self.assertTrue(all(length > 0 for length in lengths(notes("0 D/.1@66~.5 G-full"))))

    def test_a_voice_gives_its_pitches_to_all_events_that_name_none(self):
        self.assertEqual(pitches(notes("CH: 0/.4 · 1/.4 C4 · 2/.4")), [72, 76, 79, 60, 72, 76, 79])

    def test_drums_follow_their_name(self):
        self.assertEqual(notes("36: 0@104 2@98 · aro: 1@70", layer=DRUMS),
                         [(0, .25, 36, 104), (1, .25, 37, 70), (2, .25, 36, 98)])

    def test_names_of_drums_need_no_accents(self):
        self.assertEqual(pitches(notes("Güiro_corto: 0 · guiro_largo: 1 · P: 2 · A: 3", layer=DRUMS)), [73, 74, 41, 37])

    def test_a_layer_names_sounds_of_its_own(self):
        self.assertEqual(pitches(notes("A: 0 · caja: 1", layer=DRUMS + "sonidos: A=76 caja=43\n")), [76, 43])

    def test_brackets_move_an_event_off_the_grid(self):
        self.assertEqual(starts(notes("36: 1@98(-.02) 2(+.01)", layer=DRUMS)), [.98, 2.01])

    def test_notes_may_be_written_as_they_are_sung(self):
        self.assertEqual(pitches(notes("0/.4 Do4 · 1/.4 [Mi4 Sol4 Sib4] · 2/.4 FA#3")), [60, 64, 67, 70, 54])
        self.assertEqual(pitches(notes("notas | Do5 - Re5 si4 |")), [72, 74, 71])
        self.assertEqual(pitches(notes("Sol2: 0/.4@70")), [43])

    def test_hand_percussion_reaches_up_to_the_surdo(self):
        self.assertEqual(pitches(notes("castañuelas: 0@70 · surdo_abierto: 1@70 · 82: 2@60", layer=DRUMS)), [85, 87, 82])

    def test_a_recorded_guitar_has_golpe_and_chasquido(self):
        guitar = GUITAR.replace("gm_guitarra_nylon", "guitarra_criolla")
        self.assertEqual(notes("golpe: 0@80 · chasquido: 1@70 2/.3@60", layer=guitar),
                         [(0, .1, 0, 80), (1, .1, 22, 70), (2, .3, 22, 60)])
        self.assertEqual(pitches(notes("golpe | x . |", layer=guitar)), [0])

    def test_an_octave_leaves_noises_where_they_are(self):
        guitar = GUITAR.replace("gm_guitarra_nylon", "guitarra_criolla")
        self.assertEqual(pitches(notes("golpe: 0@80\n1/.4 C3@70\noctava +1", layer=guitar)), [0, 60])

    def test_an_event_without_bars_comes_in_every_bar(self):
        self.assertEqual(starts(notes("36: 1", 3, DRUMS)), [1, 5, 9])

    def test_bars_may_change_within_a_line(self):
        self.assertEqual(starts(notes("b1 37: 0 3 b2 1", 2, DRUMS)), [0, 3, 5])

    def test_patterns_pasted_from_text_are_understood(self):
        self.assertEqual(notes("`A: 0@84 1.5@82` · `P: 1@72(\u2212.02) 2@100`", layer=DRUMS, meter="6/8"),
                         [(0, .25, 37, 84), (.98, .25, 41, 72), (1.5, .25, 37, 82), (2, .25, 41, 100)])

    def test_a_pitch_that_is_struck_again_is_damped_shortly_before(self):
        self.assertEqual(lengths(notes("0/3 C4 · 1/.5 C4")), [.92, .5])
        self.assertEqual(lengths(notes("0/.5 C4 · .25/.5 C4"))[0], .2)

    def test_the_last_note_makes_room_for_the_first_of_the_next_round(self):
        self.assertEqual(lengths(notes("0/.5 C4 · 3/1 C4")), [.5, .92])


class Quotations(TestCase):
    def test_a_variant_quotes_another_and_adds(self):
        found = notes("Normal 1, 1 compás:\n0/.4 C4@70\nNormal 2, 1 compás:\n= Normal 1\n1/.4 E4@70")
        self.assertEqual(pitches(found), [60, 64])

    def test_a_quotation_fills_the_variant(self):
        found = notes("Normal 1, 2 compases:\nb2 0/.4 C4@70\nNormal 2, 4 compases:\n= Normal 1")
        self.assertEqual(starts(found), [4, 12])

    def test_one_bar_of_another_may_be_quoted(self):
        found = notes("Normal 1, 2 compases:\nb1 0/.4 C4 b2 1/.4 E4\nNormal 2, 4 compases:\nb3 = Normal 1 b2 fuerza +4 octava +1")
        self.assertEqual(found, [(9, .4, 76, 78)])

    def test_figures_are_quoted_and_not_compiled(self):
        text = HEADER.format(meter="4/4") + DRUMS + "figura repique, 1 compás:\nP: 0\nNormal 1, 1 compás:\n= repique\n"
        layer = rhythm_of(text).layers["percusion"]
        self.assertEqual([loop.name for loop in layer.loops()], ["Normal 1"])
        self.assertEqual(len(layer.loops()[0].notes), 1)

    def test_other_layers_may_be_quoted(self):
        text = GUITAR + "Normal 1, 1 compás:\n0/.4 C4\n" + 'capa bajo: "Bajo" gm_bajo\nfuente: las pruebas\n'
        self.assertEqual(pitches(notes("= guitarra.Normal 1 octava -2", layer=text)), [36])

    def test_a_figure_may_come_later_than_its_quotation(self):
        self.assertEqual(pitches(notes("figura b, 1 compás:\n0/.4 C4\nNormal 1, 1 compás:\n= b")), [60])
        self.assertEqual(pitches(notes("figura a, 1 compás:\n= b\nfigura b, 1 compás:\n0/.4 D4\nNormal 1, 1 compás:\n= a")), [62])

    def test_an_exclamation_mark_replaces_the_voice(self):
        self.assertEqual(notes("P: 0@90 1@80 · A: 2\nb2 ! P: 3@70", 2, DRUMS),
                         [(0, .25, 41, 90), (1, .25, 41, 80), (2, .25, 37, 86), (6, .25, 37, 86), (7, .25, 41, 70)])

    def test_an_exclamation_mark_without_a_voice_replaces_the_bar(self):
        self.assertEqual(pitches(notes("0/.4 C4 · 1/.4 E4\nb2 ! 0/.4 G4", 2)), [60, 64, 67])
        self.assertEqual(pitches(notes("Normal 1, 1 compás:\n0/.4 C4\nNormal 2, 2 compases:\n0/.4 E4\nb2 ! = Normal 1")), [64, 60])


class Changes(TestCase):
    def test_force_changes_what_is_written_so_far(self):
        self.assertEqual(velocities(notes("0/.4 C4@70\nfuerza +4\n1/.4 C4@70")), [74, 70])
        self.assertEqual(velocities(notes("0/.4 C4@70\nfuerza x0.5", 1)), [35])

    def test_force_may_be_for_one_bar(self):
        self.assertEqual(velocities(notes("0/.4 C4@70\nb2 fuerza -6", 2)), [70, 64])

    def test_velocities_stay_within_their_range(self):
        self.assertEqual(velocities(notes("0/.4 C4@120 · 1/.4 C4@3\nfuerza +20\nfuerza -30")), [97, 1])

    def test_a_crescendo_grows_over_its_bars(self):
        self.assertEqual(velocities(notes("P: 0@80 2@80\ncrece -8 +8", 1, DRUMS)), [72, 80])

    def test_octaves_move_all_notes(self):
        self.assertEqual(pitches(notes("0/.4 C4\noctava -1")), [48])

    def test_voices_and_single_strokes_are_taken_away(self):
        self.assertEqual(pitches(notes("P: 0 1 · A: 2\nquitar P", 1, DRUMS)), [37])
        self.assertEqual(starts(notes("P: 0 1 2\nb2 quitar P 1", 2, DRUMS)), [0, 1, 2, 4, 6])
        self.assertEqual(starts(notes("P: 0 1\nb1 quitar todo", 2, DRUMS)), [4, 5])

    def test_a_moved_stroke_is_found_at_its_place_on_the_grid(self):
        self.assertEqual(starts(notes("P: 1(-.02) 2\nquitar P 1", 1, DRUMS)), [2])
        self.assertEqual(starts(notes("b2 P: 0(-.02)\nb2 fuerza +1", 2, DRUMS)), [3.98])


@rows({
    "4/4 is four beats": ("4/4", False, 4.0),
    "2/4 is two beats": ("2/4", False, 2.0),
    "3/4 is three beats and simple": ("3/4", False, 3.0),
    "6/8 is three beats and compound": ("6/8", True, 3.0),
    "12/8 is six beats and compound": ("12/8", True, 6.0),
    "3/8 is simple": ("3/8", False, 1.5),
})
class Meters(TestCase):
    def row(self, meter, compound, beats):
        rhythm = rhythm_of(HEADER.format(meter=meter))
        self.assertEqual((rhythm.compound, rhythm.bar), (compound, beats))


class Headers(TestCase):
    def test_a_source_without_faults_has_no_problems(self):
        self.assertEqual(rhythm_of(whole_source()).problems.found, [])

    def test_keywords_need_no_accents(self):
        text = whole_source().replace("compás", "compas").replace("percusión\n", "percusion\n").replace("fuente", "FUENTE")
        self.assertEqual(rhythm_of(text).problems.found, [])

    def test_comments_and_blank_lines_mean_nothing(self):
        text = "# para probar\n\n" + whole_source().replace("\n", "   # nota\n\n")
        self.assertEqual(rhythm_of(text).problems.found, [])

    def test_the_lines_of_windows_are_read_too(self):
        self.assertEqual(rhythm_of("\ufeff" + whole_source().replace("\n", "\r\n")).problems.found, [])

    def test_sources_may_take_several_lines(self):
        self.assertEqual(rhythm_of("fuente: un libro\nfuente: y un disco").source, "un libro y un disco")

    def test_recorded_instruments_have_a_bank_of_their_own(self):
        bombo = rhythm_of('instrumento bombo_leguero: "Bombo" Percussion 117 grabado').instruments["bombo_leguero"]
        self.assertEqual((bombo.recorded, bombo.bank), (True, "instruments/bombo_leguero.sf2"))

    def test_layers_have_the_rhythm_in_their_id(self):
        self.assertEqual(rhythm_of(whole_source()).layers["bajo"].id, "prueba_bajo")


class Guide(TestCase):
    """The guide for authors: its examples are understood, its tables true."""

    TEXT = (Path(__file__).resolve().parents[2] / "docs" / "content-format.md").read_text(encoding="utf-8")
    BEFORE = ("figura repique, 1 compás:\n0/.4 C4\nNormal 1, 4 compases:\n0/.4 E4\n"
              "Normal 2, 4 compases:\n0/.4 G4\nNormal 9, 4 compases:\n1/.4 C4\n")

    def examples(self, title):
        block = re.search(re.escape(f"**{title}") + r".*?```\n(.*?)```", self.TEXT, re.DOTALL)
        return [line for line in block.group(1).split("\n") if line.strip() and not line.lstrip().startswith("#")]

    def understood(self, line):
        for layer in (GUITAR, DRUMS):
            try:
                return notes(line, 4, layer + "sonidos: aro=76\n")
            except AssertionError:
                continue
        return []

    def test_every_grid_and_event_is_understood(self):
        examples = self.examples("Grids") + self.examples("Events")
        self.assertGreater(len(examples), 10)
        for line in examples:
            with self.subTest(line=line):
                self.assertNotEqual(self.understood(line), [])

    def test_every_quotation_and_change_is_understood(self):
        for line in self.examples("Quoting"):
            with self.subTest(line=line):
                if "quitar" in line:
                    self.assertEqual(len(notes("A: 1.5 2 3\n" + line, 4, DRUMS)), 10)
                else:
                    self.assertNotEqual(notes(self.BEFORE + line), [])

    def test_the_header_of_the_guide_is_understood(self):
        block = re.search(r"### Header\n\n```\n(.*?)```", self.TEXT, re.DOTALL).group(1)
        self.assertFalse([p for p in rhythm_of(block).problems.found if p.line > 1 and "ninguna capa" not in p.message
                          and "se tiene que llamar" not in p.message])

    def test_every_drum_of_the_table_has_its_key(self):
        drums = re.findall(r"`([a-z_0-9]+)` (\d\d)[, |]", self.TEXT)
        self.assertGreater(len(drums), 40)
        for name, key in drums:
            if name != "pitch":
                self.assertEqual(music.drum_of(name), int(key), name)

    def test_every_voicing_has_its_notes(self):
        for name, written in music.VOICINGS.items():
            self.assertRegex(self.TEXT, f"`{name}`[^\\[]*" + re.escape(f"[{' '.join(written)}]"))
