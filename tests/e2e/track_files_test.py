"""Pellet files, palates and recorded tracks through wavechain, against what the numbers in them say."""

import json
import os
import pathlib
import signal
import struct
import subprocess
import time
import unittest

import make_broken_data
import numpy as np
import pellet_modes
from wavechain_runs import SAMPLES, WAVECHAIN, Folder

INTERVAL_MS = 0.0625  # of take3.wav
RECORD_MS = 6.866
SAMPLE_COUNT = 164784

# Mode name, arguments and unit, in the library's order.
MODES = [
    ("distance_3_4", 0, 0, "mm"),
    ("bend", 0, 0, "mm"),
    ("velocity", 0, 0, "mm/s"),
    ("acceleration", 0, 0, "mm/s^2 x 6.866"),
    ("speed", 0, 0, "mm/ms"),
    ("tangential_acceleration", 0, 0, "mm/s per ms"),
    ("distance", 1, 2, "mm"),
    ("palate", 0, 0, "mm"),
]


def sums_of(path):
    """The file's records as positions: it holds differences."""
    return np.cumsum(np.loadtxt(path, ndmin=2), axis=0)


def contour():
    return np.loadtxt(SAMPLES / "pal.dat")


def write_wav(path, count, rate=16000):
    """A silent recording of so many samples."""
    data = bytes(2 * count)
    header = b"RIFF" + struct.pack("<I", 36 + len(data)) + b"WAVEfmt " + struct.pack("<IHHIIHH", 16, 1, 1, rate, 2 * rate, 2, 16)
    path.write_bytes(header + b"data" + struct.pack("<I", len(data)) + data)


def audio_of(path):
    """The bytes of a WAV file's samples: its chunks are passed one by one, since their contents may look alike."""
    wav, at = path.read_bytes(), 12
    while wav[at : at + 4] != b"data":
        size = struct.unpack_from("<I", wav, at + 4)[0]
        at += 8 + size + size % 2
    return wav[at + 8 : at + 8 + struct.unpack_from("<I", wav, at + 4)[0]]


class Measures(Folder):
    def check(self, mode, a, b, unit):
        out = self.folder / "out.csv"
        arguments = f" a={a} b={b}" if a else ""
        report = self.run_chain(SAMPLES / "take3.wav", out, "-f", f"BeamData mode={mode}{arguments}")
        self.assertIn(f"{unit}, full scale", report)
        self.assertEqual(out.read_text().splitlines()[0], f"time_s,value_{unit},valid")
        values = pellet_modes.rendered(mode, sums_of(SAMPLES / "take3.xyd"), contour(), a, b)
        wanted = pellet_modes.held(values, INTERVAL_MS, SAMPLE_COUNT)
        self.assertIsNone(pellet_modes.compare(wanted, pellet_modes.read_output(out)))

    def test_each_mode_by_its_name(self):
        for mode, a, b, unit in MODES:
            with self.subTest(mode):
                self.check(mode, a, b, unit)
                (self.folder / "out.csv").unlink()

    def test_each_mode_by_its_number(self):
        for number, (mode, a, b, _) in enumerate(MODES, 1):
            with self.subTest(mode):
                outs = [self.folder / f"{name}.npy" for name in (mode, number)]
                for out, name in zip(outs, (mode, number)):
                    self.run_chain(SAMPLES / "take3.wav", out, "-f", f"BeamData {name} {a} {b}")
                self.assertEqual(outs[0].read_bytes(), outs[1].read_bytes())

    def test_the_nearest_point_by_its_number(self):
        self.check("palate", 1, 0, "point number")

    def test_a_misspelt_mode_is_named(self):
        message = self.run_chain(SAMPLES / "take3.wav", self.folder / "o.wav", "-f", "BeamData mode=sped", status=1)
        self.assertIn("did you mean speed?", message)


class Columns(Folder):
    def test_each_column_is_its_running_sum(self):
        sums = sums_of(SAMPLES / "take3.xyd")
        for column in (1, 6, 16):
            with self.subTest(column):
                out = self.folder / f"{column}.npy"
                self.run_chain(SAMPLES / "take3.wav", out, "-f", f"BeamPel column={column}")
                values = np.where(sums[:, column - 1] >= 1e6, 0.0, sums[:, column - 1] / 1000.0)
                wanted = pellet_modes.held(values, INTERVAL_MS, SAMPLE_COUNT)
                np.testing.assert_array_equal(np.load(out), wanted.astype(np.float32))

    def test_csv_and_npy_and_wav_hold_the_same_numbers(self):
        for name in ("o.csv", "o.npy", "o.wav"):
            self.run_chain(SAMPLES / "take3.wav", self.folder / name, "-f", "BeamPel")
        array = np.load(self.folder / "o.npy")
        self.assertEqual(array.dtype, np.float32)
        table = np.loadtxt(self.folder / "o.csv", delimiter=",", skiprows=1)
        np.testing.assert_array_equal(table[:, 1].astype(np.float32), array)
        np.testing.assert_allclose(table[:, 0], np.arange(SAMPLE_COUNT) / 16000, rtol=1e-12)
        np.testing.assert_array_equal(np.frombuffer(audio_of(self.folder / "o.wav"), "<f4"), array)
        self.assertIn(b"unit mm, full scale 100", (self.folder / "o.wav").read_bytes())

    def test_integers_are_scaled_by_the_full_scale(self):
        self.run_chain(SAMPLES / "take3.wav", self.folder / "o.npy", "-f", "BeamPel")
        self.run_chain(SAMPLES / "take3.wav", self.folder / "o.wav", "--encoding", "pcm16", "-f", "BeamPel")
        wanted = np.rint(np.load(self.folder / "o.npy").astype(np.float64) * 32768 / 100)
        np.testing.assert_array_equal(np.frombuffer(audio_of(self.folder / "o.wav"), "<i2"), wanted)

    def test_two_runs_give_the_same_bytes(self):
        for name in ("a.wav", "b.wav"):
            self.run_chain(SAMPLES / "take3.wav", self.folder / name, "-f", "BeamData speed")
        self.assertEqual((self.folder / "a.wav").read_bytes(), (self.folder / "b.wav").read_bytes())


class RecordedTracks(Folder):
    def test_the_track_is_the_file_s_samples(self):
        out = self.folder / "o.npy"
        report = self.run_chain(SAMPLES / "take3.wav", out, "-f", "SetTrack")
        values = np.frombuffer((SAMPLES / "take3.iop").read_bytes()[1024:], ">i2")
        np.testing.assert_array_equal(np.load(out), (values * 10.0 * 3.0517578125e-5).astype(np.float32))
        self.assertIn(f"{len(values)} samples", report)

    def test_integers_are_the_file_s_own(self):
        self.run_chain(SAMPLES / "take3.wav", self.folder / "o.wav", "--encoding", "pcm16", "-f", "SetTrack")
        values = np.frombuffer((SAMPLES / "take3.iop").read_bytes()[1024:], ">i2")
        np.testing.assert_array_equal(np.frombuffer(audio_of(self.folder / "o.wav"), "<i2"), values)


class Places(Folder):
    def speed_of(self, recording, *more, **options):
        out = self.folder / "speed.npy"
        out.unlink(missing_ok=True)
        self.run_chain(recording, out, "-f", " ".join(["BeamData speed", *more]), **options)
        return out.read_bytes()

    def setUp(self):
        super().setUp()
        self.wanted = self.speed_of(SAMPLES / "take3.wav")

    def test_names_with_blanks_dots_and_backslashes(self):
        for name in ("my take.v2", "a\\b", "ä ö", "-x"):
            with self.subTest(name):
                place = self.folder / f"dir.{name}"
                place.mkdir()
                for source, target in (("take3.wav", f"{name}.wav"), ("take3.xyd", f"{name}.xyd"), ("pal.dat", "pal.dat")):
                    (place / target).symlink_to(SAMPLES / source)
                self.assertEqual(self.speed_of(place / f"{name}.wav"), self.wanted)

    def test_a_recording_without_extension(self):
        for source, target in (("take3.wav", "take"), ("take3.xyd", "take.xyd"), ("pal.dat", "pal.dat")):
            (self.folder / target).symlink_to(SAMPLES / source)
        self.assertEqual(self.speed_of(self.folder / "take"), self.wanted)

    def test_a_path_longer_than_filters_can_take(self):
        place = self.folder
        while len(str(place)) < 700:
            place = place / ("d" * 100)
        place.mkdir(parents=True)
        for name in ("take3.wav", "take3.xyd", "pal.dat"):
            (place / name).symlink_to(SAMPLES / name)
        self.assertEqual(self.speed_of(place / "take3.wav"), self.wanted)

    def test_relative_paths(self):
        self.link_samples()
        self.assertEqual(self.speed_of("take3.wav", cwd=self.folder), self.wanted)

    def test_files_named_on_the_command_line(self):
        self.link_samples("take3.wav")
        self.link_samples("take3.xyd", to="pellets here.txt")
        self.link_samples("pal.dat", to="roof")
        more = [f"data='{self.folder}/pellets here.txt'", f"palate={self.folder}/roof"]
        self.assertEqual(self.speed_of(self.folder / "take3.wav", *more), self.wanted)

    def test_standard_input_with_named_files(self):
        more = [f"data={SAMPLES}/take3.xyd", f"palate={SAMPLES}/pal.dat"]
        self.assertEqual(self.speed_of("-", *more, input=(SAMPLES / "take3.wav").read_bytes()), self.wanted)

    def test_standard_input_without_named_files(self):
        message = self.run_chain("-", self.folder / "o.wav", "-f", "BeamPel", status=1, input=(SAMPLES / "take3.wav").read_bytes())
        self.assertIn("add data=FILE", message)

    def test_an_odd_folder_for_temporary_files(self):
        odd = self.folder / "t\\mp"
        odd.mkdir()
        self.assertEqual(self.speed_of(SAMPLES / "take3.wav", env={**os.environ, "TMPDIR": str(odd)}), self.wanted)

    def test_several_filters_each_find_their_own_files(self):
        # The second one overwrites what the first rendered, and reads another file.
        (self.folder / "other.xyd").write_text("7000\n" + "0\n" * 3000)
        out = self.folder / "o.npy"
        self.run_chain(SAMPLES / "take3.wav", out, "-f", "BeamPel", "-f", f"BeamPel column=1 data={self.folder}/other.xyd")
        np.testing.assert_array_equal(np.load(out), np.full(SAMPLE_COUNT, 7.0, np.float32))


class Broken(Folder):
    FILTERS = {"take3.xyd": "BeamData speed", "pal.dat": "BeamData palate", "take3.iop": "SetTrack"}

    def test_each_broken_set(self):
        sets = self.folder / "sets"
        sets.mkdir()
        make_broken_data.write_broken(sets)
        cases = json.loads((sets / "cases.json").read_text())
        for name, case in cases.items():
            with self.subTest(name):
                self.check(sets / name, case)

    def check(self, place, case):
        out = self.folder / "o.npy"
        filter_text = self.FILTERS[case["file"] or "take3.xyd"]
        whole_file = case["fault"] in ("missing", "empty", "kind", "short") or case["records"] == 0
        report = self.run_chain(place / "take3.wav", out, "-f", filter_text, "--force", status=2 if whole_file else 0)
        if whole_file:
            last = report.splitlines()[-1]
            self.assertIn(case["file"], last)
            self.assertIn("--allow-missing", last)
            self.assertFalse(out.exists() and out.stat().st_size == 0)
            return
        if case["fault"] == "line":
            self.assertIn(f"{case['file']}: line {case['line']}: ", report)
        if case["fault"] == "positions":
            self.assertIn("look like positions", report)
        self.assertEqual("warning" in report, case["fault"] != "none" or "one_line" in str(place), report)
        if case["file"]:
            self.assertRegex(report, rf"{case['file']}: {case['records']} ")

    def test_missing_data_may_be_allowed(self):
        write_wav(self.folder / "alone.wav", 5000)
        for text in ("BeamPel", "BeamData palate", "GlotSyn"):
            with self.subTest(text):
                report = self.run_chain(self.folder / "alone.wav", self.folder / "o.npy", "--force", "--allow-missing", "-f", text)
                self.assertIn("warning: filter 1", report)
                np.testing.assert_array_equal(np.load(self.folder / "o.npy"), np.zeros(5000))

    def test_a_measure_does_without_the_palate_where_that_is_allowed(self):
        self.link_samples("take3.wav", "take3.xyd")
        self.run_chain(SAMPLES / "take3.wav", self.folder / "with.npy", "-f", "BeamData speed")
        self.run_chain(self.folder / "take3.wav", self.folder / "without.npy", "--allow-missing", "-f", "BeamData speed")
        self.assertEqual((self.folder / "with.npy").read_bytes(), (self.folder / "without.npy").read_bytes())

    def test_an_unreadable_link_is_missing(self):
        write_wav(self.folder / "t.wav", 10)
        (self.folder / "t.xyd").symlink_to(self.folder / "t.xyd")
        self.run_chain(self.folder / "t.wav", self.folder / "o.wav", "-f", "BeamPel", status=2)

    def test_a_pipe_is_no_data_file(self):
        write_wav(self.folder / "t.wav", 10)
        os.mkfifo(self.folder / "t.xyd")
        message = self.run_chain(self.folder / "t.wav", self.folder / "o.wav", "-f", "BeamPel", status=2)
        self.assertIn("no regular file", message)


class Ends(Folder):
    def record_all_ones(self, samples):
        write_wav(self.folder / "t.wav", samples)
        (self.folder / "t.xyd").write_text("1000\n" + "0\n" * 3000)

    def test_nothing_is_lost_at_the_end(self):
        for samples in (0, 1, 500, 1024, 5000, 70000):
            with self.subTest(samples):
                self.record_all_ones(samples)
                out = self.folder / "o.npy"
                self.run_chain(self.folder / "t.wav", out, "--force", "-f", "BeamPel 1")
                np.testing.assert_array_equal(np.load(out), np.ones(samples))

    def test_the_library_s_own_tail_on_request(self):
        self.record_all_ones(20000)
        out = self.folder / "o.npy"
        self.run_chain(self.folder / "t.wav", out, "--library-tail", "-f", "BeamPel 1")
        values = np.load(out)
        self.assertEqual(len(values), 20000)
        # Spans end every 109.856 samples; the last one begins ahead of the last 1024 samples.
        ends = np.trunc((np.arange(1, 400) - 0.5) * RECORD_MS / INTERVAL_MS)
        last = ends[np.flatnonzero(ends >= 20000 - 1024)[0]]
        np.testing.assert_array_equal(values, np.arange(20000) < last)

    def test_data_that_end_early_leave_zeros(self):
        write_wav(self.folder / "t.wav", 10000)
        (self.folder / "t.xyd").write_text("1000\n" + "0\n" * 19)
        out = self.folder / "o.npy"
        self.run_chain(self.folder / "t.wav", out, "-f", "BeamPel 1")
        np.testing.assert_array_equal(np.load(out), np.arange(10000) < int(19.5 * RECORD_MS / INTERVAL_MS))


class Interrupted(Folder):
    def test_temporary_files_go_on_an_interrupt(self):
        command = [WAVECHAIN, "run", "-", str(self.folder / "o.wav"), "-f", f"BeamPel data={SAMPLES}/take3.xyd"]
        env = {**os.environ, "TMPDIR": str(self.temporary)}
        # Hours of silence: enough for an interrupt to find it at work.
        write_wav(self.folder / "long.wav", 200_000_000)
        command[2] = str(self.folder / "long.wav")
        with subprocess.Popen(command, env=env, stderr=subprocess.PIPE) as running:
            deadline = time.monotonic() + 60
            while not list(self.temporary.iterdir()) and time.monotonic() < deadline:
                time.sleep(0.01)
            running.send_signal(signal.SIGINT)
            running.communicate(timeout=60)
            self.assertEqual(running.returncode, 130)
        self.assertEqual(list(self.temporary.iterdir()), [])
        self.assertEqual(sorted(p.name for p in self.folder.iterdir()), ["long.wav", "tmp"])


if __name__ == "__main__":
    unittest.main()
