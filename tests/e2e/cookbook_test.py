"""The commands of docs/cookbook.md as they are copied, what they print, and what they do."""

import struct
import unittest

import numpy as np
from document import Document
from pictures import read_png


def samples_of(path):
    """Samples of a WAV file of 32-bit floats."""
    data = path.read_bytes()
    return np.frombuffer(data, "<f4", offset=data.index(b"data") + 8, count=struct.unpack_from("<I", data, data.index(b"data") + 4)[0] // 4)


def level(samples, frequency, rate):
    """Amplitude of the sine of that frequency."""
    turns = np.exp(-2j * np.pi * frequency / rate * np.arange(samples.size))
    return 2 * abs(np.mean(samples * turns))


class Cookbook(Document):
    def test_every_command_does_what_is_said(self):
        self.type_document("cookbook.md", least=20, path=f"{self.folder}/build:")
        take = self.folder / "take"
        # The hum of 0.05 is gone, away from the ends where the notch is not filled yet.
        middle = slice(16000, 144000)
        hum, clean = (samples_of(take / name)[middle] for name in ("hum.wav", "clean.wav"))
        self.assertAlmostEqual(level(hum, 50, 16000), 0.05, delta=0.005)
        self.assertLess(level(clean, 50, 16000), 1e-4)
        # 16 kHz, one channel, 16 bits: a third of 68545 samples.
        word = (take / "word.wav").read_bytes()
        self.assertEqual(struct.unpack_from("<HHIIHH", word, word.index(b"fmt ") + 8), (1, 1, 16000, 32000, 2, 16))
        # Each measure is that of its own recipe.
        table = np.loadtxt(take / "measures.csv", delimiter=",", skiprows=1)
        for column, name in ((1, "speed"), (3, "lips"), (5, "palate")):
            alone = np.loadtxt(take / f"{name}.csv", delimiter=",", skiprows=1)
            np.testing.assert_array_equal(table[:, column : column + 2], alone[:, 1:])
        # A pulse every 8 ms.
        vowel = samples_of(take / "vowel.wav")[4000:7200]
        spectrum = np.abs(np.fft.rfft(vowel * np.hanning(vowel.size)))
        peaks = spectrum[[round(k * 125 * vowel.size / 16000) for k in range(1, 8)]]
        between = spectrum[[round((k + 0.5) * 125 * vowel.size / 16000) for k in range(1, 8)]]
        self.assertGreater(np.min(peaks / between), 10)
        self.assertEqual(samples_of(take / "phrase.wav").size, 29120)
        read_png((take / "smoothing.png").read_bytes())
        self.assertIn("<svg ", (take / "notch.svg").read_text())


if __name__ == "__main__":
    unittest.main()
