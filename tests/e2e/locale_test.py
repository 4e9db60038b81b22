"""The program speaks, reads and writes the same in every locale; a real one with a decimal comma is made for it."""

import json
import math
import os
import shutil
import subprocess
import tempfile
import unittest

from wavechain_runs import SAMPLES, Folder, wavechain

COMMA = "de_DE.UTF-8"


class Locales(Folder):
    @classmethod
    def setUpClass(cls):
        held = tempfile.TemporaryDirectory()
        cls.addClassCleanup(held.cleanup)
        subprocess.run(["localedef", "-i", "de_DE", "-f", "UTF-8", os.path.join(held.name, COMMA)], check=True, capture_output=True)
        cls.places = [{"LC_ALL": "C"}, {"LC_ALL": "C.UTF-8"}, {"LC_ALL": COMMA, "LANG": COMMA, "LOCPATH": held.name}]
        # It is there and has the comma.
        said = subprocess.run(["bash", "-c", "printf %.1f 0,5"], env={**os.environ, **cls.places[2]}, capture_output=True, check=True)
        assert said.stdout == b"0,5", said

    def setUp(self):
        super().setUp()
        for name in ("take3.wav", "take3.xyd", "pal.dat"):
            shutil.copy(SAMPLES / name, self.folder / name)
        shutil.copy(SAMPLES / "take3.wav", self.folder / "t\u00f6n.wav")
        shutil.copy(SAMPLES / "take3.xyd", self.folder / "t\u00f6n.xyd")
        (self.folder / "half.toml").write_text('[[filter]]\nkind = "SineFilter"\namplitude = 0.5\nphase = 22.5\n')
        (self.folder / "noise.fla").write_text("100.5 0.5 0.1\n300.25 0.2\n")

    def everywhere(self, *words, status=0, out=None):
        """Runs it in each locale; all must say and write the same, which is returned."""
        seen = []
        for place in self.places:
            environment = {name: value for name, value in os.environ.items() if not name.startswith(("LC_", "LANG"))}
            done = wavechain(*words, cwd=self.folder, env={**environment, "TMPDIR": str(self.temporary), **place})
            self.assertEqual(done.returncode, status, done.stderr)
            written = [(self.folder / name).read_bytes() for name in (out, f"{out}.json") if out and (self.folder / name).exists()]
            seen.append((done.stdout, done.stderr, written))
            self.assertEqual(seen[-1], seen[0], place)
        return seen[0]

    def test_numbers_in_tables_and_records(self):
        _, _, written = self.everywhere("run", "out.csv", "-q", "--force", "--silence", 0.0015, "--rate", 8000,
                                        "--chain", "half.toml", out="out.csv")  # fmt: skip
        rows = [line.split(",") for line in written[0].decode().splitlines()]
        self.assertEqual(rows[0][0], "time_s")
        self.assertEqual(len(rows), 1 + 12)
        for k, row in enumerate(rows[1:]):
            self.assertAlmostEqual(float(row[0]), k / 8000, delta=1e-12)
            self.assertAlmostEqual(float(row[1]), 0.5 * math.cos(2 * math.pi * (100 * k / 8000 + 22.5 / 360)), delta=2e-6)
        record = json.loads(written[1])
        self.assertEqual(record["input"], {"silence_s": 0.0015, "rate_hz": 8000.0})
        self.assertIn("amplitude=0.5", record["filters"][0])

    def test_sounds_and_pictures(self):
        for words, out in (
            (("run", "take3.wav", "o.wav", "-f", "BeamData speed", "-f", "FIRFilter 7"), "o.wav"),
            (("run", "take3.wav", "o.ssff", "-f", "BeamPel"), "o.ssff"),
            (("run", "take3.wav", "n.wav", "-f", "FricSyn events=noise.fla"), "n.wav"),
            (("plot", "take3.wav", "o.svg", "--from", 0.25, "--to", 0.5, "--size", "400x300", "-f", "SineFilter 0.5", "--layout"), "o.svg"),
        ):
            with self.subTest(out):
                self.everywhere(*words, "-q", "--force", out=out)

    def test_reports(self):
        self.everywhere("run", "take3.wav", "o.wav", "-q", "--force", "-f", "SineFilter 0.5 0.25")
        for words, part in (
            (("check", "take3.wav", "-f", "BeamData speed"), "10.299 s"),
            (("check", "take3.wav", "-f", "FIRNotch 200 edge_weight=0.25", "--json"), "0.0625"),
            (("info", "FIRNotch", "--json"), "0.5"),
            (("skeleton", "FIRNotch"), "0.5"),
            (("show", "o.wav"), "amplitude=0.25"),
            (("diff", "o.wav", "o.wav", "--json"), "0.0"),
            (("--generate", "man"), "0.5"),
        ):
            with self.subTest(words):
                self.assertIn(part, self.everywhere(*words)[0].decode())

    def test_errors(self):
        # The system's words, too, and what a decimal comma is told.
        for status, words, said in (
            (2, ("run", "kein t\u00f6n.wav", "o.wav", "-f", "SineFilter"), "kein t\u00f6n.wav: cannot be opened: No such file or directory"),
            (1, ("run", "t\u00f6n.wav", "o.wav", "-f", "SineFilter 0,5"),
             "-f 'SineFilter 0,5': frequency takes a number (Hz, real, 0 to half the sampling rate), not '0,5'"),
            (1, ("run", "t\u00f6n.wav", "o.wav", "-f", "SineFilter ph\u00e4se=1"),
             "-f 'SineFilter ph\u00e4se=1': SineFilter has no parameter 'ph\u00e4se'; did you mean phase?"),
        ):  # fmt: skip
            with self.subTest(words):
                self.assertEqual(self.everywhere(*words, status=status)[1].decode(), f"wavechain: {said}\n")

    def test_names_of_files_keep_their_bytes(self):
        _, said, _ = self.everywhere("run", "t\u00f6n.wav", "\u4e2d.csv", "-q", "--force", "-f", "BeamPel", out="\u4e2d.csv")
        self.assertEqual(said, b"")
        shown = self.everywhere("show", "\u4e2d.csv")[0].decode()
        self.assertIn("input    t\u00f6n.wav (SHA-256 ", shown)
        self.assertIn("t\u00f6n.xyd (SHA-256 ", shown)
        self.assertEqual(self.everywhere("rerun", "\u4e2d.csv")[0].decode(), "\u4e2d.csv: made again, byte for byte\n")
        self.assertIn("t\u00f6n.xyd: 1500 records", self.everywhere("check", "t\u00f6n.wav", "-f", "BeamPel")[0].decode())


if __name__ == "__main__":
    unittest.main()
