"""The spoken phrase's tools: the vowels' tubes, the event files, and the measuring."""

import contextlib
import io
import json
import struct
import tempfile
import unittest
from pathlib import Path
from unittest import mock

import numpy as np

import make_phrase
import measure_phrase
import vowel_tubes


def wave(samples, rate=16000, code=3, channels=1):
    data = np.asarray(samples, "<f4" if code == 3 else "<i2").tobytes()
    bits = 32 if code == 3 else 16
    head = struct.pack("<HHIIHH", code, channels, rate, rate * bits // 8, bits // 8, bits)
    chunks = b"fmt " + struct.pack("<I", 16) + head + b"data" + struct.pack("<I", len(data)) + data
    return b"RIFF" + struct.pack("<I", 4 + len(chunks)) + b"WAVE" + chunks


class Tubes(unittest.TestCase):
    def test_table_areas_resound_at_the_published_formants(self):
        for vowel, formants in vowel_tubes.FORMANTS.items():
            found = vowel_tubes.resonances(vowel)[:2]
            np.testing.assert_allclose(found, formants, rtol=0.07, err_msg=vowel)

    def test_a_uniform_tube_resounds_at_odd_quarter_waves(self):
        with mock.patch.dict(vowel_tubes.AREAS, {"tube": " ".join(["4"] * 34)}):
            found = vowel_tubes.resonances("tube")[:4]
        length = 17 + 0.8 * np.sqrt(4 / np.pi)
        expected = vowel_tubes.SOUND_SPEED / (4 * length) * np.array([1, 3, 5, 7])
        np.testing.assert_allclose(found, expected, atol=1.0)

    def test_ratios_at_16_kHz_keep_the_formants(self):
        for vowel, formants in vowel_tubes.FORMANTS.items():
            ratios = vowel_tubes.vowel_ratios(vowel, 16000)
            found, bandwidths = vowel_tubes.poles(vowel_tubes.predictor(ratios), 16000)
            np.testing.assert_allclose(found[:2], formants, rtol=0.08, err_msg=vowel)
            self.assertTrue(np.all(bandwidths[:4] > 30) and np.all(bandwidths[:4] < 200), vowel)

    def test_step_up_gives_the_worked_example(self):
        ratios = [0.921707, 6.629357, 0.008945, 0.023661, -0.023661]
        reflections = [0.3090, 0.9800, 0.0031, 0.0082, -0.0082]
        np.testing.assert_allclose(vowel_tubes.reflections(ratios), reflections, atol=1e-6)
        a = vowel_tubes.predictor(ratios)
        np.testing.assert_allclose(a, [1, 0.6148, 0.9899, 0.0000, 0.0032, -0.0082], atol=6e-5)
        np.testing.assert_allclose(a.sum(), np.prod(1 + np.array(reflections)), rtol=1e-5)

    def test_step_down_undoes_step_up(self):
        ratios = np.random.default_rng(2).uniform(-3, 3, 20)
        again = vowel_tubes.log_area_ratios(vowel_tubes.predictor(ratios))
        np.testing.assert_allclose(again, ratios, atol=1e-8)

    def test_log_area_ratio_of_an_autoregressive_process(self):
        np.testing.assert_allclose(
            vowel_tubes.log_area_ratios(np.array([1, -0.9])), [np.log2(0.1 / 1.9)]
        )


class Events(unittest.TestCase):
    def test_the_same_seed_gives_the_same_files_and_another_one_others(self):
        self.assertEqual(make_phrase.events(1), make_phrase.events(1))
        self.assertNotEqual(make_phrase.events(1)[".gpl"], make_phrase.events(2)[".gpl"])

    def test_lines_rise_in_time_within_the_sources_reach(self):
        texts = make_phrase.events(1)
        end = json.loads(texts[".json"])["duration_ms"] - 1024 / 16
        for ending in (".gpl", ".fla", ".gpm"):
            times = [float(line.split()[0]) for line in texts[ending].splitlines()]
            self.assertTrue(all(b > a for a, b in zip(times, times[1:])), ending)
            self.assertTrue(0 < times[0] and times[-1] < end, ending)

    def test_there_are_vowels_fricatives_and_a_falling_pitch(self):
        texts = make_phrase.events(1)
        sounds = json.loads(texts[".json"])["sounds"]
        self.assertGreaterEqual(len({s["label"] for s in sounds if "formants_Hz" in s}), 3)
        self.assertGreaterEqual(len({s["label"] for s in sounds if "formants_Hz" not in s}), 2)
        times = np.array([float(line.split()[0]) for line in texts[".gpm"].splitlines()])
        means = [
            np.diff(times[(times >= s["start_ms"]) & (times < s["end_ms"])]).mean()
            for s in sounds
            if "formants_Hz" in s
        ]
        self.assertTrue(all(b > a for a, b in zip(means, means[1:])))


class Measuring(unittest.TestCase):
    def setUp(self):
        scratch = tempfile.TemporaryDirectory()
        self.addCleanup(scratch.cleanup)
        self.folder = Path(scratch.name)
        for ending, text in make_phrase.events(1).items():
            (self.folder / f"phrase{ending}").write_text(text, encoding="utf-8")

    def measure(self, data):
        path = self.folder / "phrase.wav"
        path.write_bytes(data)
        output = io.StringIO()
        with contextlib.redirect_stdout(output), contextlib.redirect_stderr(output):
            with mock.patch("sys.argv", ["measure_phrase", str(path), str(self.folder)]):
                status = measure_phrase.main()
        return status, output.getvalue()

    def test_what_is_no_recording_of_the_phrase_is_refused(self):
        for data, reason in [
            (b"RIFF", "not a WAV file"),
            (wave(np.zeros(10), channels=2), "2 channels"),
            (wave(np.zeros(10), rate=8000), "8000 Hz"),
            (wave(np.zeros(10))[:30], ""),
        ]:
            status, output = self.measure(data)
            self.assertEqual(status, 2, reason)
            self.assertIn(reason, output)

    def test_silence_noise_and_a_buzz_are_off(self):
        noise = np.random.default_rng(1).standard_normal(29000) * 0.1
        for signal in (np.zeros(29000), noise, np.arange(29000) % 130 == 0, noise[:3000]):
            status, output = self.measure(wave(signal))
            self.assertEqual(status, 1)
            self.assertIn("<- off", output)

    def test_formants_are_those_of_a_known_resonator(self):
        rate, frequencies = 16000, (600, 1500)
        a = np.array([1.0])
        for frequency in frequencies:
            radius = np.exp(-np.pi * 60 / rate)
            a = np.convolve(a, [1, -2 * radius * np.cos(2 * np.pi * frequency / rate), radius**2])
        signal = np.zeros(4000)
        pulses = np.arange(10, 240, 10.0)
        signal[(pulses * rate / 1000).astype(int)] = 1
        for n in range(4, len(signal)):
            signal[n] -= a[1:] @ signal[n - 4 : n][::-1]
        predictor = measure_phrase.closed_phase_prediction(signal, rate, pulses[5:], 4)
        np.testing.assert_allclose(measure_phrase.formants(predictor, rate), frequencies, rtol=1e-3)
        self.assertAlmostEqual(measure_phrase.pitch(signal[1000:3000], rate), 100, delta=0.5)

    def test_the_centre_of_gravity_of_a_tone_is_its_frequency(self):
        tone = np.sin(2 * np.pi * 3000 * np.arange(2000) / 16000)
        self.assertAlmostEqual(measure_phrase.centroid(tone, 16000), 3000, delta=10)

    def test_whole_numbers_are_read_like_floats(self):
        path = self.folder / "whole.wav"
        path.write_bytes(wave([0, 16384, -32768], code=1))
        samples, rate = measure_phrase.read_wave(path)
        self.assertEqual((samples.tolist(), rate), ([0.0, 0.5, -1.0], 16000))


if __name__ == "__main__":
    unittest.main()
