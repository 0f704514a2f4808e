"""The tool that synthesises the banks of the recorded instruments."""

import contextlib
import functools
import io
import os
import struct
import sys
import tempfile
import unittest
from pathlib import Path

sys.dont_write_bytecode = True
sys.path.insert(0, str(Path(__file__).resolve().parents[2] / "tools"))

import numpy as np  # noqa: E402

from velta_banks import bandoneon, acordeon, bombo, charango, guitarra, quena  # noqa: E402
from velta_banks.banks import (BANKS, CHASQUIDO_KEYS, GOLPE_KEYS, drum_sound,  # noqa: E402
                               key_ranges, take_bands)
from velta_banks.bombo import Strike  # noqa: E402
from velta_banks.cli import main  # noqa: E402
from velta_banks.levels import CEILING, at_level, level, limited, on_curve  # noqa: E402
from velta_banks.loops import loop_for, loop_of  # noqa: E402
from velta_banks.measure import (centroid, fall_time, offset, pitch_error,  # noqa: E402
                                 roughest_moment, steepest_fall, swing)
from velta_banks.reeds import Onset, touched  # noqa: E402
from velta_banks.sf2 import (Recording, Shade, Vibrato, Zone, pcm, timecents,  # noqa: E402
                              write_bank)
from velta_banks.shading import passed  # noqa: E402
from velta_banks.shapes import (band, coloured_noise, fade_out, rise,  # noqa: E402
                                without_offset)
from velta_banks.units import cents, dice, key_hz, seconds  # noqa: E402

RATE = 44100

# Where another process has built the banks.
BUILT = Path(os.environ["VELTA_BANKS"])


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
    zones = [Zone(tone, (0, 69), (1, 79), 0.5),
             Zone(tone, (70, 127), (1, 79), 1.0, Shade(13000, 2400)),
             Zone(stroke, (0, 127), (80, 127), 2.0, noise_semitones=-5)]
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

    def test_a_noise_follows_no_key_but_may_be_tuned(self):
        zones = small_font().zones()
        self.assertEqual([zone.get(56) for zone in zones], [None, None, 0])
        self.assertEqual([zone.get(51) for zone in zones], [None, None, 65536 - 5])

    def test_a_vibrato_swings_pitch_and_loudness_at_one_speed_and_leaves_room_for_the_swing(self):
        swinging = Vibrato(hz=8.176, after=0.5, cents=20, decibels=1.5)
        zone = Zone(Recording("tono", sine(441.0, 0.5), 69, (100, 10100)), (0, 127), (1, 127), 0.5,
                    vibrato=swinging)
        found = Font(write_bank("Prueba", "Sin grabar", [zone])).zones()[0]
        self.assertEqual([found[number] for number in (6, 13, 37)], [20, 15, 15])
        self.assertEqual([found[number] for number in (21, 23, 36)], 3 * [65536 - 1200])
        self.assertEqual([found[number] for number in (22, 24)], [0, 0])

    def test_a_shade_closes_as_the_velocity_falls(self):
        font = small_font()
        self.assertEqual([zone.get(8) for zone in font.zones()], [None, 13000, None])
        modulators = list(struct.iter_unpack("<HHhHH", font.tables["imod"]))
        self.assertEqual(modulators, [(0x0102, 8, -2400, 0, 0), (0, 0, 0, 0, 0)])
        bags = [second for _, second in struct.iter_unpack("<HH", font.tables["ibag"])]
        self.assertEqual(bags, [0, 0, 1, 1])
        self.assertEqual(Shade(13000, 2400).at(127), 13000)
        self.assertEqual(Shade(13000, 2400).at(63), 11800)

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

    def test_a_vibrato_is_measured_to_either_side(self):
        times = seconds(3 * RATE)
        bend = (2.0 ** (20.0 / 1200.0) - 1.0) * 880.0 / 5.0
        tone = np.sin(2.0 * np.pi * 880.0 * times - bend * np.cos(2.0 * np.pi * 5.0 * times))
        tone *= 10.0 ** (2.0 / 20.0 * np.sin(2.0 * np.pi * 5.0 * times))
        cents_off, decibels_off = swing(tone, 880.0)
        self.assertAlmostEqual(cents_off, 20.0, delta=1.0)
        self.assertAlmostEqual(decibels_off, 2.0, delta=0.1)

    def test_a_fall_is_timed_from_the_loudest_moment(self):
        dying = sine(500.0, 3.0) * 10.0 ** (-seconds(3 * RATE))
        self.assertAlmostEqual(fall_time(dying, 20.0), 1.0, delta=0.03)
        self.assertIsNone(fall_time(dying, 90.0))

    def test_the_centroid_of_two_equal_tones_lies_between_them(self):
        self.assertAlmostEqual(centroid(sine(500.0, 1.0) + sine(1500.0, 1.0)), 1000.0, delta=2.0)

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
                  bombo.rim(0, False),
                  guitarra.golpe(0, True), guitarra.chasquido(0, True)]
        for sound in sounds:
            self.assertEqual(sound[0], 0.0)
            self.assertLess(abs(sound[-1]), 1e-4 * np.max(np.abs(sound)))

    def test_lower_strings_ring_longer(self):
        self.assertGreater(len(guitarra.note(40, True)), 1.5 * len(guitarra.note(74, True)))

    def test_the_hand_stays_where_the_string_is_stopped(self):
        """The string that remains is shorter, so the hand stands at a larger part of it."""
        for hard in (False, True):
            opened = guitarra.place(64, hard) * 65.0
            stopped = guitarra.place(76, hard) * 32.5
            self.assertAlmostEqual(opened, stopped)

    def test_no_chiff_of_the_quena_is_like_another(self):
        for hard in (False, True):
            takes = [quena.chiff(77, take, hard) for take in range(3)]
            for first, second in ((0, 1), (0, 2), (1, 2)):
                self.assertGreater(np.max(np.abs(takes[first] - takes[second])), 0.05)

    def test_both_sides_of_a_bandoneon_meet_without_a_step(self):
        shares = [bandoneon.right_share(key) for key in range(36, 96)]
        self.assertEqual((shares[0], shares[-1]), (0.0, 1.0))
        self.assertLess(max(np.diff(shares)), 0.08)

    def test_no_two_reeds_are_touched_alike(self):
        onset = Onset(low=0.05, high=0.1, bellows=0.7, swell=0.2, knock=0.1)
        first, second = touched(onset, dice(1)), touched(onset, dice(2))
        for field in ("low", "high", "knock"):
            self.assertNotEqual(getattr(first, field), getattr(second, field))
            self.assertLess(abs(np.log(getattr(first, field) / getattr(onset, field))), 0.7)
        self.assertEqual((first.bellows, first.swell), (onset.bellows, onset.swell))

    def test_no_take_of_a_stroke_is_like_another(self):
        for noise in (guitarra.golpe, guitarra.chasquido, bombo.rim):
            for hard in (False, True):
                takes = [noise(take, hard) for take in range(3)]
                for first, second in ((0, 1), (0, 2), (1, 2)):
                    self.assertGreater(np.max(np.abs(takes[first] - takes[second])), 0.05)

    def test_a_shade_lets_low_pass_and_high_not(self):
        hz = np.array([0.0, 100.0, 1000.0, 10000.0])
        through = passed(hz, 1200.0 * np.log2(1000.0 / key_hz(0)))
        self.assertAlmostEqual(through[0], 1.0)
        self.assertAlmostEqual(10.0 * np.log10(through[2]), -3.01, delta=0.05)
        self.assertLess(10.0 * np.log10(through[3]), -40.0)

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

    def hits(self, zones):
        """How many zones sound at each key and velocity."""
        hits = np.zeros((128, 128), dtype=int)
        for zone in zones:
            hits[zone.keys[0]:zone.keys[1] + 1, zone.velocities[0]:zone.velocities[1] + 1] += 1
        return hits[:, 1:]

    def test_every_key_and_velocity_has_a_sound_and_no_two_of_a_kind(self):
        for bank in BANKS:
            with self.subTest(bank.instrument_id):
                noises = self.hits(z for z in zones_of(bank) if z.noise_semitones is not None)
                tones = self.hits(z for z in zones_of(bank) if z.noise_semitones is None)
                self.assertTrue(np.all(tones <= 1) and np.all(noises <= 1))
                self.assertTrue(np.all(tones + noises >= 1))

    def test_only_the_quena_has_a_noise_with_every_tone(self):
        for bank in BANKS:
            with self.subTest(bank.instrument_id):
                both = np.any(self.hits(zones_of(bank)) == 2)
                self.assertEqual(bool(both), bank.instrument_id == "quena")

    def test_takes_alternate_over_the_velocities(self):
        self.assertEqual(take_bands(2, (1, 8)), [(0, (1, 3)), (1, (4, 6)), (0, (7, 8))])

    def test_golpe_and_chasquido_sound_under_every_chord_of_every_key(self):
        """Written on 0 and on 22, moved as chords and keys move what is written."""
        rows = [(0, 2, 4, 5, 7, 9, 11), (0, 2, 3, 5, 7, 8, 10), (0, 2, 3, 5, 7, 9, 10)]
        for row in rows:
            for degree in row:
                away = degree if degree <= 6 else degree - 12
                for root in range(12):
                    golpe, chasquido = root + away, 22 + root + away
                    golpe += 12 if golpe < 0 else 0
                    self.assertTrue(GOLPE_KEYS[0] <= golpe <= GOLPE_KEYS[1], (root, degree))
                    self.assertTrue(CHASQUIDO_KEYS[0] <= chasquido <= CHASQUIDO_KEYS[1])

    def test_recordings_lie_no_more_than_five_semitones_apart(self):
        for bank in BANKS:
            roots = sorted({zone.recording.root_key for zone in zones_of(bank)
                            if zone.noise_semitones is None or not bank.pitched})
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
        with tempfile.TemporaryDirectory() as folder:
            self.assertEqual(self.run_tool("build", folder)[0], 0)
            names = sorted(path.name for path in Path(folder).iterdir())
            self.assertEqual(names, ["acordeon.sf2", "bandoneon.sf2", "bombo_leguero.sf2",
                                     "charango.sf2", "guitarra_criolla.sf2", "quena.sf2"])
            for name in names:
                body = (Path(folder) / name).read_bytes()
                self.assertEqual(body, (BUILT / name).read_bytes(), name)
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

    def test_the_table_has_a_row_for_every_working_key_of_a_bank(self):
        with tempfile.TemporaryDirectory() as folder:
            for bank in BANKS:
                tone = Recording("tono", sine(440.0, 1.0), 69, (1000, 41013))
                font = write_bank("Tono", "tono", [Zone(tone, (0, 127), (1, 127), 0.1)])
                (Path(folder) / f"{bank.instrument_id}.sf2").write_bytes(font)
            code, output, _ = self.run_tool("table", folder)
            self.assertEqual(code, 0)
            lines = output.splitlines()[2:]
            self.assertEqual(len(lines), sum(len(bank.working) for bank in BANKS))
            quena_at_72 = next(line for line in lines if line.startswith("quena")).split()
            self.assertAlmostEqual(float(quena_at_72[2]), key_hz(72), delta=8.0)

    def test_a_table_of_no_banks_says_which_is_missing(self):
        with tempfile.TemporaryDirectory() as folder:
            code, _, errors = self.run_tool("table", folder)
            self.assertEqual(code, 1)
            self.assertIn("bombo_leguero.sf2", errors)

    def test_no_command_is_a_misuse(self):
        self.assertEqual(self.run_tool()[0], 2)


if __name__ == "__main__":
    unittest.main()
