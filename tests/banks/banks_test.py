"""The tool that synthesises the banks of the recorded instruments."""

import contextlib
import functools
import io
import struct
import sys
import tempfile
import unittest
from pathlib import Path

sys.dont_write_bytecode = True
sys.path.insert(0, str(Path(__file__).resolve().parents[2] / "tools"))

import numpy as np  # noqa: E402

from velta_banks import bandoneon, acordeon, bombo, charango, guitarra, quena  # noqa: E402
from velta_banks.banks import BANKS, drum_sound, key_ranges  # noqa: E402
from velta_banks.bombo import Strike  # noqa: E402
from velta_banks.cli import main  # noqa: E402
from velta_banks.levels import CEILING, at_level, level, limited, on_curve  # noqa: E402
from velta_banks.loops import loop_for, loop_of  # noqa: E402
from velta_banks.measure import offset, pitch_error, roughest_moment, steepest_fall  # noqa: E402
from velta_banks.sf2 import Recording, Zone, pcm, timecents, write_bank  # noqa: E402
from velta_banks.shapes import (band, coloured_noise, fade_out, rise,  # noqa: E402
                                without_offset)
from velta_banks.units import cents, dice, key_hz, seconds  # noqa: E402

RATE = 44100


def sine(hz, duration, amplitude=0.5):
    return amplitude * np.sin(2.0 * np.pi * hz * np.arange(round(duration * RATE)) / RATE)


def chunks(body):
    """The chunks of a RIFF list in their order, as pairs of name and bytes."""
    found, at = [], 0
    while at < len(body):
        name, size = struct.unpack_from("<4sI", body, at)
        found.append((name.decode(), body[at + 8:at + 8 + size]))
        at += 8 + size + size % 2
    assert at == len(body)
    return found


class Font:
    """A SoundFont taken apart by the letter of its format."""

    def __init__(self, file):
        (riff, body), = chunks(file)
        assert riff == "RIFF" and body[:4] == b"sfbk"
        self.lists = {part[:4].decode(): dict(chunks(part[4:])) for _, part in chunks(body[4:])}
        self.order = [part[:4].decode() for _, part in chunks(body[4:])]
        self.info = self.lists["INFO"]
        self.tables = self.lists["pdta"]
        self.samples = np.frombuffer(self.lists["sdta"]["smpl"], "<i2")
        self.headers = list(struct.iter_unpack("<20s5IBbHH", self.tables["shdr"]))

    def zones(self):
        """Each zone of the instrument as a dictionary from generator to amount."""
        bags = [first for first, _ in struct.iter_unpack("<HH", self.tables["ibag"])]
        generators = list(struct.iter_unpack("<HH", self.tables["igen"]))
        return [dict(generators[low:high]) for low, high in zip(bags, bags[1:])]


def small_font():
    tone = Recording("tono", sine(441.0, 0.5), 69, (100, 10100))
    stroke = Recording("golpe", sine(441.0, 0.1), 60)
    zones = [Zone(tone, (0, 69), (1, 79), 0.5), Zone(tone, (70, 127), (1, 79), 1.0),
             Zone(stroke, (0, 127), (80, 127), 2.0, root_key=55)]
    return Font(write_bank("Prueba", "Sin grabar", zones))


class Files(unittest.TestCase):
    def test_a_file_has_its_three_lists_in_order(self):
        self.assertEqual(small_font().order, ["INFO", "sdta", "pdta"])

    def test_the_nine_tables_stand_in_the_order_of_the_format(self):
        self.assertEqual(list(small_font().tables), [
            "phdr", "pbag", "pmod", "pgen", "inst", "ibag", "imod", "igen", "shdr"])

    def test_the_words_say_version_name_and_origin_and_no_date(self):
        info = small_font().info
        self.assertEqual(list(info), ["ifil", "isng", "INAM", "ICMT"])
        self.assertEqual(info["ifil"], struct.pack("<HH", 2, 1))
        self.assertEqual(info["INAM"].rstrip(b"\0"), b"Prueba")
        self.assertEqual(info["ICMT"].rstrip(b"\0"), b"Sin grabar")

    def test_words_are_closed_by_a_zero_at_an_even_length(self):
        for name in ("isng", "INAM", "ICMT"):
            words = small_font().info[name]
            self.assertTrue(words.endswith(b"\0"))
            self.assertEqual(len(words) % 2, 0)

    def test_the_one_preset_is_program_0_of_bank_0_and_a_closing_record_follows(self):
        records = list(struct.iter_unpack("<20sHHHIII", small_font().tables["phdr"]))
        self.assertEqual([record[1:4] for record in records], [(0, 0, 0), (0, 0, 1)])
        self.assertEqual(records[1][0].rstrip(b"\0"), b"EOP")

    def test_tables_of_instrument_and_samples_end_with_closing_records(self):
        font = small_font()
        self.assertEqual(font.tables["inst"][22:25], b"EOI")
        self.assertEqual(font.headers[-1][0].rstrip(b"\0"), b"EOS")
        self.assertEqual(font.tables["igen"][-4:], bytes(4))

    def test_zones_begin_with_the_keys_then_the_velocities_and_end_with_the_sample(self):
        for zone in small_font().zones():
            self.assertEqual(list(zone)[:2], [43, 44])
            self.assertEqual(list(zone)[-1], 53)

    def test_ranges_carry_the_lower_bound_in_the_lower_byte(self):
        first = small_font().zones()[0]
        self.assertEqual(first[43], 0 | 69 << 8)
        self.assertEqual(first[44], 1 | 79 << 8)

    def test_zones_share_a_recording_that_stands_once(self):
        font = small_font()
        self.assertEqual([zone[53] for zone in font.zones()], [0, 0, 1])
        self.assertEqual(len(font.headers), 3)

    def test_a_loop_is_played_and_a_stroke_is_not_looped(self):
        self.assertEqual([zone.get(54, 0) for zone in small_font().zones()], [1, 1, 0])

    def test_a_zone_may_have_a_root_key_of_its_own(self):
        self.assertEqual([zone.get(58) for zone in small_font().zones()], [None, None, 55])

    def test_releases_are_written_as_time_cents(self):
        self.assertEqual(timecents(1.0), 0)
        self.assertEqual(timecents(2.0), 1200)
        self.assertEqual(timecents(0.5), -1200)
        self.assertEqual([zone[38] for zone in small_font().zones()], [65536 - 1200, 0, 1200])

    def test_every_sample_is_followed_by_46_zeros(self):
        font = small_font()
        for header in font.headers[:-1]:
            self.assertFalse(np.any(font.samples[header[2]:header[2] + 46]))

    def test_a_loop_goes_on_behind_its_end_for_eight_samples(self):
        font = small_font()
        _, _, end, loop_start, loop_end = font.headers[0][:5]
        self.assertGreaterEqual(end - loop_end, 8)
        np.testing.assert_array_equal(font.samples[loop_end:loop_end + 8],
                                      font.samples[loop_start:loop_start + 8])

    def test_samples_are_little_endian_and_full_scale_is_32767(self):
        self.assertEqual(pcm(np.array([0.0, 1.0, -1.0])), bytes([0, 0, 255, 127, 1, 128]))

    def test_samples_beyond_full_scale_are_refused(self):
        for value in (1.01, -1.01, np.nan, np.inf):
            with self.assertRaises(ValueError):
                pcm(np.array([value]))


class Units(unittest.TestCase):
    def test_the_keys_are_equally_tempered_on_a_440(self):
        self.assertEqual(key_hz(69), 440.0)
        self.assertAlmostEqual(key_hz(60), 261.6256, places=3)
        self.assertAlmostEqual(cents(key_hz(61), key_hz(60)), 100.0, places=9)

    def test_chance_is_the_same_for_the_same_seed_and_another_for_another(self):
        self.assertEqual(dice(1, 2).random(), dice(1, 2).random())
        self.assertNotEqual(dice(1, 2).random(), dice(2, 1).random())


class Shapes(unittest.TestCase):
    def test_a_rise_goes_from_0_to_1_and_stays(self):
        way = rise(100, 50)
        self.assertEqual(way[0], 0.0)
        self.assertAlmostEqual(way[25], 0.5)
        np.testing.assert_array_equal(way[50:], np.ones(50))

    def test_a_faded_sound_ends_in_silence_and_begins_as_it_was(self):
        faded = fade_out(np.ones(RATE), 0.1)
        self.assertEqual(faded[-1], 0.0)
        np.testing.assert_array_equal(faded[:RATE // 2], np.ones(RATE // 2))

    def test_an_offset_is_taken_out_and_a_tone_is_left(self):
        tone = fade_out(sine(440.0, 1.0), 0.2)
        held = rise(RATE, 4000) * rise(RATE, 4000)[::-1]
        cleaned = without_offset(tone + 0.2 * held)
        self.assertLess(np.sqrt(np.mean((cleaned - tone)[8000:-8000]**2)), 0.05)
        self.assertLess(abs(np.mean(cleaned)), 0.01)

    def test_noise_has_unit_size_no_offset_and_no_seam(self):
        noise = coloured_noise(dice(7), 20001, band(20001, 300.0, 2000.0))
        self.assertAlmostEqual(float(np.sqrt(np.mean(noise**2))), 1.0)
        self.assertAlmostEqual(float(np.mean(noise)), 0.0)
        seam = abs(noise[0] - noise[-1])
        self.assertLessEqual(seam, float(np.max(np.abs(np.diff(noise)))))


class Loops(unittest.TestCase):
    def test_a_loop_holds_whole_periods_of_every_key_within_a_tenth_of_a_cent(self):
        for key in range(30, 110):
            loop = loop_for(key_hz(key), 1.5)
            self.assertEqual(loop.cycles, round(loop.cycles))
            self.assertLess(abs(cents(loop.cycles / loop.seconds, key_hz(key))), 0.1)
            self.assertAlmostEqual(loop.seconds, 1.5, delta=1.0 / key_hz(key))

    def test_a_pitch_between_two_reeds_need_not_be_whole(self):
        self.assertEqual(loop_of(440.5, 440.0).count, round(440.5 / 440.0 * RATE))


class Levels(unittest.TestCase):
    def test_a_level_is_the_rms_of_half_a_second(self):
        self.assertAlmostEqual(level(np.ones(RATE)), 0.0)
        self.assertAlmostEqual(level(np.ones(RATE // 4)), -3.0103, places=3)

    def test_a_curve_is_even_between_its_points_and_flat_beyond(self):
        curve = [(60, -20.0), (70, -30.0)]
        self.assertEqual([on_curve(curve, key) for key in (50, 60, 65, 70, 80)],
                         [-20.0, -20.0, -25.0, -30.0, -30.0])

    def test_peaks_are_held_under_the_ceiling_and_the_rest_is_left(self):
        sound = sine(300.0, 1.0, 0.4)
        sound[20000:20200] *= 4.0
        held = limited(sound)
        self.assertLessEqual(np.max(np.abs(held)), CEILING + 1e-12)
        np.testing.assert_allclose(held[:19000], sound[:19000], atol=1e-12)
        np.testing.assert_allclose(held[21000:], sound[21000:], atol=1e-12)

    def test_a_sound_under_the_ceiling_is_left_alone(self):
        sound = sine(300.0, 0.2)
        self.assertIs(limited(sound), sound)

    def test_a_recording_reaches_its_level_though_its_peaks_are_held(self):
        sound = sine(300.0, 1.0) * np.exp(-6.0 * seconds(RATE))
        played = level(at_level(sound, -25.0))
        self.assertAlmostEqual(played - level(at_level(sound, -30.0)), 5.0, delta=0.1)


class Measures(unittest.TestCase):
    def test_a_mistuned_tone_is_measured_in_cents(self):
        for wrong in (-20.0, -3.0, 0.0, 7.5):
            tone = sine(440.0 * 2.0**(wrong / 1200.0), 2.0)
            self.assertAlmostEqual(pitch_error(tone, 440.0), wrong, delta=0.1)

    def test_two_equal_reeds_are_heard_at_their_middle(self):
        beating = sine(438.0, 2.0) + sine(442.0, 2.0)
        self.assertAlmostEqual(pitch_error(beating, 440.0), 0.0, delta=0.2)

    def test_silence_has_no_pitch(self):
        self.assertGreater(pitch_error(np.zeros(RATE), 440.0), 100.0)

    def test_a_click_of_a_hundredth_in_a_held_tone_is_found(self):
        tone = sine(200.0, 4.0)
        self.assertLess(roughest_moment(tone), 1.1)
        tone[50000:] += 0.01
        self.assertGreater(roughest_moment(tone), 1.6)

    def test_a_sound_that_is_cut_falls_steeply_and_one_that_dies_away_does_not(self):
        dying = sine(200.0, 3.0) * np.exp(-3.0 * seconds(3 * RATE))
        self.assertLess(steepest_fall(dying), 3.0)
        dying[20000:] = 0.0
        self.assertGreater(steepest_fall(dying), 40.0)

    def test_an_offset_is_a_part_of_the_size(self):
        self.assertAlmostEqual(offset(np.ones(100)), 1.0)
        self.assertLess(offset(sine(441.0, 1.0)), 1e-6)


class Models(unittest.TestCase):
    def test_what_stands_at_the_end_of_a_loop_is_what_stands_before_its_start(self):
        for make in (acordeon.note, bandoneon.note, quena.note):
            for key in (70, 83):
                for hard in (False, True):
                    sound, start = make(key, hard)
                    sharpest = np.max(np.abs(np.diff(sound, 2)[start:]))
                    seam = np.concatenate([sound[-3:], sound[start:start + 3]])
                    self.assertLessEqual(np.max(np.abs(np.diff(seam, 2))), 1.01 * sharpest)

    def test_a_loop_is_longer_than_a_second(self):
        for make in (acordeon.note, bandoneon.note, quena.note):
            sound, start = make(72, True)
            self.assertGreater(len(sound) - start, RATE)

    def test_an_acordeon_beats_faster_on_high_notes(self):
        self.assertAlmostEqual(acordeon.beats(53), 2.4)
        self.assertGreater(acordeon.beats(93), 2.0 * acordeon.beats(53))

    def test_strings_and_strokes_begin_and_end_in_silence(self):
        sounds = [guitarra.note(60, True), charango.note(76, False), bombo.skin(Strike(True)),
                  bombo.rim(False)]
        for sound in sounds:
            self.assertEqual(sound[0], 0.0)
            self.assertLess(abs(sound[-1]), 1e-4 * np.max(np.abs(sound)))

    def test_lower_strings_ring_longer(self):
        self.assertGreater(len(guitarra.note(40, True)), 2 * len(guitarra.note(74, True)))

    def test_the_lowest_notes_of_a_charango_sound_with_their_octave(self):
        octave_share = []
        for key in (65, 68):
            spectrum = np.abs(np.fft.rfft(charango.note(key, True), 8 * RATE))
            octave_share.append(spectrum[round(8 * key_hz(key + 12))]
                                / spectrum[round(8 * key_hz(key))])
        self.assertGreater(octave_share[0], 1.5 * octave_share[1])


@functools.cache
def zones_of(bank):
    return bank.zones()


class Coverage(unittest.TestCase):
    def test_recordings_share_all_keys_without_gap_or_overlap(self):
        ranges = key_ranges([40, 45, 50])
        self.assertEqual(ranges, [(0, 42), (43, 47), (48, 127)])

    def test_one_recording_takes_every_key(self):
        self.assertEqual(key_ranges([60]), [(0, 127)])

    def test_the_written_keys_of_the_bombo_are_skin_and_rim(self):
        self.assertEqual([drum_sound(key)[0] for key in (41, 43, 37, 76)],
                         ["parche", "parche", "aro", "aro"])
        self.assertEqual([drum_sound(key)[0] for key in (35, 36)], 2 * ["parche grande"])

    def test_every_key_and_velocity_of_every_bank_falls_into_one_zone(self):
        for bank in BANKS:
            with self.subTest(bank.instrument_id):
                hits = np.zeros((128, 128), dtype=int)
                for zone in zones_of(bank):
                    hits[zone.keys[0]:zone.keys[1] + 1,
                         zone.velocities[0]:zone.velocities[1] + 1] += 1
                self.assertTrue(np.all(hits[:, 1:] == 1))

    def test_recordings_lie_no_more_than_five_semitones_apart(self):
        for bank in BANKS:
            roots = sorted({zone.recording.root_key for zone in zones_of(bank)})
            self.assertLessEqual(max([0, *np.diff(roots)]), 5)
            if bank.pitched:
                self.assertLessEqual(roots[0] - bank.keys[0], 2)
                self.assertLessEqual(bank.keys[1] - roots[-1], 4)


class CommandLine(unittest.TestCase):
    def run_tool(self, *arguments):
        """The exit code, and what was said on either stream."""
        output, errors = io.StringIO(), io.StringIO()
        with contextlib.redirect_stdout(output), contextlib.redirect_stderr(errors):
            try:
                code = main(list(arguments))
            except SystemExit as stop:
                code = stop.code
        return code, output.getvalue(), errors.getvalue()

    def test_two_builds_are_equal_byte_for_byte_and_small(self):
        with tempfile.TemporaryDirectory() as first, tempfile.TemporaryDirectory() as second:
            self.assertEqual(self.run_tool("build", first)[0], 0)
            self.assertEqual(self.run_tool("build", second)[0], 0)
            names = sorted(path.name for path in Path(first).iterdir())
            self.assertEqual(names, ["acordeon.sf2", "bandoneon.sf2", "bombo_leguero.sf2",
                                     "charango.sf2", "guitarra_criolla.sf2", "quena.sf2"])
            for name in names:
                body = (Path(first) / name).read_bytes()
                self.assertEqual(body, (Path(second) / name).read_bytes(), name)
                self.assertLessEqual(len(body), 4_000_000, name)

    def test_a_folder_that_cannot_be_made_is_reported(self):
        with tempfile.NamedTemporaryFile() as file:
            code, _, errors = self.run_tool("build", file.name + "/banks")
            self.assertEqual(code, 1)
            self.assertIn("velta-banks: ", errors)

    def test_checking_an_empty_folder_names_every_missing_bank(self):
        with tempfile.TemporaryDirectory() as folder:
            code, output, _ = self.run_tool("check", folder)
            self.assertEqual(code, 1)
            self.assertIn("6 banks, 6 findings", output)

    def test_checking_banks_that_are_no_soundfonts_fails(self):
        with tempfile.TemporaryDirectory() as folder:
            for bank in BANKS:
                (Path(folder) / f"{bank.instrument_id}.sf2").write_bytes(b"RIFF")
            self.assertEqual(self.run_tool("check", folder)[0], 1)

    def test_checking_finds_a_mistuned_and_clicking_bank(self):
        with tempfile.TemporaryDirectory() as folder:
            clicking = Recording("mal", sine(450.0, 1.0), 69, (1000, 41013))
            font = write_bank("Mal", "mal", [Zone(clicking, (0, 127), (1, 127), 0.1)])
            (Path(folder) / "quena.sf2").write_bytes(font)
            _, output, _ = self.run_tool("check", folder)
            for finding in ("quena: key 69 velocity 64: +", "clicks", "no brighter"):
                self.assertIn(finding, output)

    def test_no_command_is_a_misuse(self):
        self.assertEqual(self.run_tool()[0], 2)


if __name__ == "__main__":
    unittest.main()
