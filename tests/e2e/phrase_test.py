"""The example phrase, spoken by wavechain: its formants, spectra and pitch, measured in the file."""

import contextlib
import io
import os
import pathlib
import unittest
from unittest import mock

import measure_phrase
from wavechain_runs import Folder

PHRASE = pathlib.Path(os.environ["PROJECT_ROOT"]) / "examples" / "phrase"


class Phrase(Folder):
    def speak(self, name, *more):
        """The phrase as a file of this name, and what was reported of it."""
        voices = ["-f", f"GlotSyn events={PHRASE / 'phrase.gpl'}", "-f", f"FricSyn events={PHRASE / 'phrase.fla'}"]
        out = self.folder / name
        return out, self.run_chain(out, "--silence", 1.82, "--rate", 16000, *voices, *more)

    def measure(self, path):
        output = io.StringIO()
        with contextlib.redirect_stdout(output), mock.patch("sys.argv", ["measure_phrase", str(path), str(PHRASE)]):
            return measure_phrase.main(), output.getvalue()

    def test_vowels_fricatives_and_pitch_are_those_of_the_events(self):
        path, report = self.speak("phrase.wav")
        status, table = self.measure(path)
        self.assertEqual(status, 0, table)
        for label, name in [("a", "F1"), ("ɨ", "F2"), ("o", "F2"), ("e", "pitch"), ("s", "centroid"), ("ʃ", "centroid")]:
            self.assertRegex(table, rf"(?m)^{label} +{name} ")
        self.assertNotIn("warning", report)
        self.assertNotIn("dropped", report)

    def test_another_seed_makes_other_noise_of_the_same_sound(self):
        first, _ = self.speak("first.wav", "--seed", 1)
        default, _ = self.speak("default.wav")
        other, _ = self.speak("other.wav", "--seed", 2)
        self.assertEqual(first.read_bytes(), default.read_bytes())
        self.assertNotEqual(first.read_bytes(), other.read_bytes())
        self.assertEqual(self.measure(other)[0], 0)

    def test_a_file_of_16_bit_integers_measures_the_same(self):
        path, _ = self.speak("phrase.wav", "--encoding", "pcm16")
        self.assertEqual(self.measure(path)[0], 0)


if __name__ == "__main__":
    unittest.main()
