"""tools/make_pellet_data.py and make_broken_data.py: what they write, and what --check says about damage."""

import csv
import shutil
import struct
import subprocess
import sys
import tempfile
import unittest
import wave
from pathlib import Path

import make_broken_data
import make_pellet_data
import numpy as np
import pellet_modes

MAKER = Path(make_pellet_data.__file__)
SAMPLES = MAKER.parent.parent / "examples" / "data"


def run(script, *arguments):
    return subprocess.run([sys.executable, "-B", script, *arguments], capture_output=True, text=True, timeout=300)


class InFolder(unittest.TestCase):
    def setUp(self):
        holder = tempfile.TemporaryDirectory()
        self.addCleanup(holder.cleanup)
        self.folder = Path(holder.name)


class Samples(InFolder):
    def test_positions_come_back_exactly(self):
        run(MAKER, self.folder, "--positions", self.folder / "p.npz").check_returncode()
        run(MAKER, "--check", "--positions", self.folder / "p.csv").check_returncode()
        sums = np.cumsum(np.loadtxt(SAMPLES / "take3.xyd", dtype=np.int64), axis=0)
        with np.load(self.folder / "p.npz") as take:
            np.testing.assert_array_equal(sums, take["measured_um"])
            np.testing.assert_array_equal(take["missing"], sums >= 1_000_000)
            np.testing.assert_array_equal(take["palate_um"], np.loadtxt(SAMPLES / "pal.dat", dtype=np.int64))
            noise = np.where(take["missing"], 0.0, sums / 1000.0 - take["true_mm"])
            self.assertLess(np.abs(noise).max(), 0.2)
        with open(self.folder / "p.csv", encoding="ascii") as file:
            rows = list(csv.DictReader(file))
        self.assertEqual([row["x3_um"] for row in rows], [str(x) if x < 1_000_000 else "" for x in sums[:, 4]])
        self.assertEqual(rows[2]["time_ms"], "13.732")

    def test_every_file_lasts_as_long_as_the_recording(self):
        with wave.open(str(SAMPLES / "take3.wav")) as sound:
            self.assertEqual((sound.getnchannels(), sound.getsampwidth(), sound.getframerate()), (1, 2, 16000))
            seconds = sound.getnframes() / 16000
        self.assertGreaterEqual(seconds, 10.0)
        self.assertAlmostEqual(len(np.loadtxt(SAMPLES / "take3.xyd")) * 0.006866, seconds, 3)
        track = (SAMPLES / "take3.iop").read_bytes()[1024:]
        self.assertAlmostEqual(len(track) / 2 * 1.145081873353945e-3, seconds, 2)
        self.assertEqual(struct.unpack(">h", track[:2])[0], -32768)
        self.assertEqual(max(struct.unpack(f">{len(track) // 2}h", track)), 32767)

    def test_check_names_what_was_damaged(self):
        for name in ("take3.xyd", "pal.dat", "take3.iop", "take3.wav"):
            shutil.copytree(SAMPLES, self.folder, dirs_exist_ok=True)
            damaged = bytearray((SAMPLES / name).read_bytes())
            damaged[-2] ^= 1
            (self.folder / name).write_bytes(damaged)
            told = run(MAKER, "--check", self.folder)
            self.assertEqual(told.returncode, 1)
            self.assertIn(f"{name}: differs", told.stderr)
            self.assertIn(f"at byte {len(damaged) - 2};", told.stderr)
            (self.folder / name).unlink()
            self.assertIn(f"{name}: missing", run(MAKER, "--check", self.folder).stderr)

    def test_check_finds_measures_that_are_absent_too_often(self):
        um = np.cumsum(np.loadtxt(SAMPLES / "take3.xyd", dtype=np.int64), axis=0)
        palate = np.loadtxt(SAMPLES / "pal.dat")
        self.assertFalse(any(wrong for wrong, _ in make_pellet_data.measure_problems(um, palate)))
        um[: len(um) // 4, 5] = 1_000_000
        told = [text for wrong, text in make_pellet_data.measure_problems(um, palate) if wrong]
        self.assertEqual(sum("give a value" in text for text in told), 7)  # all but the distance of the lips

    def test_comparison_program(self):
        positions, output = self.folder / "p.npz", self.folder / "speed.csv"
        run(MAKER, "--check", "--positions", positions).check_returncode()
        with np.load(positions) as take:
            speed = pellet_modes.held(pellet_modes.speed(take["measured_um"]), 0.0625, 164784)
        rows = np.column_stack([np.arange(164784) / 16000, np.nan_to_num(speed)])
        np.savetxt(output, rows, delimiter=",", header="time_s,speed_mm_per_ms", comments="")
        self.assertEqual(run(pellet_modes.__file__, positions, "speed", output, "--interval", "0.0625").returncode, 0)
        told = run(pellet_modes.__file__, positions, "bend", output, "--interval", "0.0625")
        self.assertIn("samples differ", told.stderr)
        self.assertEqual(told.returncode, 1)


def readable_lines(path, numbers):
    """How many lines from the first one on hold at least so many numbers."""
    count = 0
    for line in path.read_bytes().split(b"\n"):
        try:
            if len([float(word) for word in line.split()[:numbers]]) < numbers:
                break
        except ValueError:
            break
        count += 1
    return count


class Broken(InFolder):
    def test_each_case_holds_what_is_told_about_it(self):
        cases = make_broken_data.write_broken(self.folder)
        self.assertGreater(len(cases), 30)
        for name, case in cases.items():
            with self.subTest(name):
                path = self.folder / name / (case["file"] or "take3.xyd")
                self.assertEqual(case["fault"] == "missing", not path.exists())
                self.assertEqual(case["fault"] == "kind", path.is_dir())
                if path.is_file() and path.suffix == ".iop":
                    self.assertEqual(case["records"], max(0, (path.stat().st_size - 1024) // 2))
                elif path.is_file():
                    lines = readable_lines(path, 16 if path.suffix == ".xyd" else 2)
                    self.assertEqual(case["records"], min(lines, 4096))
                    self.assertEqual(case["line"], lines + 1 if case["fault"] == "line" else None)

    def test_only_the_named_file_is_damaged(self):
        cases = make_broken_data.write_broken(self.folder)
        good = {path.name: path.read_bytes() for path in (self.folder / "all_good").iterdir()}
        self.assertEqual(set(good), {"take3.wav", "take3.xyd", "pal.dat", "take3.iop"})
        for name, case in cases.items():
            for other in set(good) - {case["file"]}:
                self.assertEqual((self.folder / name / other).read_bytes(), good[other], name)
            if case["file"]:
                path = self.folder / name / case["file"]
                self.assertFalse(path.is_file() and path.read_bytes() == good[case["file"]], name)

    def test_unusual_ways_to_write_the_same_numbers(self):
        cases = make_broken_data.write_broken(self.folder)
        good = np.loadtxt(self.folder / "all_good" / "take3.xyd")
        same = [name for name, case in cases.items() if case["records"] == len(good) and case["fault"] == "none"]
        for name in same:
            text = (self.folder / name / "take3.xyd").read_text(encoding="ascii")
            rows = [line.split()[:16] for line in text.split("\n") if line.strip()]
            np.testing.assert_array_equal(np.array(rows, dtype=float), good, name)
        self.assertGreaterEqual(len(same), 8)


if __name__ == "__main__":
    unittest.main()
