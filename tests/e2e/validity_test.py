"""The column that tells which samples of a track rest on data, against the positions; tables in CSV and SSFF."""

import unittest

import numpy as np
from wavechain_runs import SAMPLES, Folder, wavechain

RECORD_MS = 6.866
RATE = 8000
INTERVAL_MS = 1000.0 / RATE
MISSING = 1_000_000


def positions(count, seed):
    """Eight pellets at random, thousandths of a millimetre, with single values and whole stretches missing."""
    random = np.random.default_rng(seed)
    um = random.integers(-60_000, 60_000, (count, 16)).astype(float)
    um[random.random((count, 16)) < 0.03] = MISSING
    for start in random.integers(0, count, 6):
        um[start : start + random.integers(2, 9), random.integers(0, 16)] = MISSING + 7
    return um


def held(flags, samples, interval_ms=INTERVAL_MS):
    """A flag of each record over the record's samples, 0 behind the last one."""
    ends = np.cumsum(np.r_[-1.5 * RECORD_MS, np.full(len(flags) + 1, RECORD_MS)])[2:]
    record = np.searchsorted(np.trunc(ends / interval_ms), np.arange(samples), side="right")
    return np.r_[flags, False][record]


def before(flags, records):
    """The flags of so many records earlier; there is nothing before the first."""
    return np.r_[np.zeros(records, bool), flags[: len(flags) - records]]


def complete(um, *columns):
    return (um[:, [column - 1 for column in columns]] < MISSING).all(axis=1)


def distance_flags(um, a, b):
    """Both pellets measured, and the filter's own look at the pellets of the record before (first at column 1)."""
    wanted = [2 * a - 2, 2 * a - 1, 2 * b - 2, 2 * b - 1]
    looked_at, flags = [0] * 4, []
    for record in um:
        rendered = all(record[i] < MISSING for i in looked_at)
        if rendered:
            looked_at = wanted
        flags.append(rendered and all(record[i] < MISSING for i in wanted))
    return np.array(flags)


def measured(mode, um, a=0, b=0):
    tip, height = complete(um, 5, 6), complete(um, 6)
    return {
        "none": np.zeros(len(um), bool),
        "distance_3_4": complete(um, 5, 6, 7, 8),
        "bend": complete(um, 5, 6, 7, 8, 9, 10),
        "velocity": height & before(height, 1),
        "acceleration": height & before(height, 1) & before(height, 2),
        "speed": tip & before(tip, 1),
        "tangential_acceleration": tip & before(tip, 1) & before(tip, 2),
        "distance": distance_flags(um, a, b) if a and b else np.zeros(len(um), bool),
        "palate": tip,
    }[mode]


def read_table(path):
    """Names and columns of a .csv file."""
    lines = path.read_text().splitlines()
    return lines[0].split(","), np.array([[float(cell) for cell in line.split(",")] for line in lines[1:]]).T


def read_ssff(path):
    """Header lines and records of an .ssff file."""
    header, records = path.read_bytes().split(b"-----------------\n", 1)
    lines = header.decode().splitlines()
    names = [line.split()[1] for line in lines if line.startswith("Column ")]
    return lines, dict(zip(names, np.frombuffer(records, "<f4").reshape(-1, len(names)).T))


class Takes(Folder):
    SAMPLES_WRITTEN = 12000

    def setUp(self):
        super().setUp()
        # Shorter than the recording, so that there is an end of the data.
        self.um = positions(190, 5)
        self.write(self.um)
        (self.folder / "pal.dat").write_text("0 20000\n1000 21000\n2000 22000\n")
        self.silence(self.SAMPLES_WRITTEN)

    def write(self, um, name="take.xyd"):
        np.savetxt(self.folder / name, np.diff(um, axis=0, prepend=0.0), fmt="%.0f")

    def silence(self, count, rate=RATE):
        raw = b"\0" * (2 * count)
        done = wavechain("run", "-", self.folder / "take.wav", "--force", "-t", "s16", "--rate", rate, "--format", "wav",
                         "-f", "SineFilter 0 0", input=raw)
        self.assertEqual(done.returncode, 0, done.stderr)

    def valid(self, *filters, options=(), name="o.csv"):
        """The validity of a chain's output, and its values."""
        out = self.folder / name
        out.unlink(missing_ok=True)
        chain = [word for one in filters for word in ("-f", one)]
        self.report = self.run_chain(self.folder / "take.wav", out, *options, *chain)
        names, columns = read_table(out)
        self.assertEqual(names[2], "valid")
        return columns[2].astype(bool), columns[1]


class Measures(Takes):
    def test_each_mode(self):
        cases = [(mode, 0, 0) for mode in ("none", "distance_3_4", "bend", "velocity", "acceleration", "speed",
                                           "tangential_acceleration", "palate")]
        cases += [("distance", 1, 8), ("distance", 2, 0), ("distance", 4, 4)]
        for mode, a, b in cases:
            with self.subTest(mode=mode, a=a, b=b):
                valid, values = self.valid(f"BeamData mode={mode} a={a} b={b}")
                wanted = held(measured(mode, self.um, a, b), self.SAMPLES_WRITTEN)
                np.testing.assert_array_equal(valid, wanted)
                self.assertIn(f"gaps   {np.count_nonzero(~wanted)} of 12000 samples have no data", self.report)
                if mode in ("distance_3_4", "bend", "velocity", "acceleration"):
                    self.assertFalse(values[~valid].any())
                    self.assertTrue(values[valid].any())

    def test_each_column(self):
        for column in (1, 6, 16):
            valid, values = self.valid(f"BeamPel {column}")
            np.testing.assert_array_equal(valid, held(self.um[:, column - 1] < MISSING, self.SAMPLES_WRITTEN))
            self.assertFalse(values[~valid].any())

    def test_a_distance_that_the_filter_cannot_decide_at_first(self):
        self.um[:2, 0] = MISSING  # column 1, which it looks at in the first records
        self.um[:3, 4:8] = 1000.0
        self.write(self.um)
        valid, values = self.valid("BeamData distance 3 4")
        np.testing.assert_array_equal(valid, held(distance_flags(self.um, 3, 4), self.SAMPLES_WRITTEN))
        self.assertFalse(valid[: int(1.5 * RECORD_MS / INTERVAL_MS) - 1].any())

    def test_a_rate_below_that_of_the_records(self):
        self.silence(100, rate=100)
        valid, _ = self.valid("BeamPel")
        np.testing.assert_array_equal(valid, held(self.um[:, 5] < MISSING, 100, 10.0))

    def test_a_line_that_ends_the_data(self):
        lines = (self.folder / "take.xyd").read_text().splitlines()
        lines[50] = "1 2 three"
        (self.folder / "take.xyd").write_text("\n".join(lines))
        valid, _ = self.valid("BeamPel 3")
        np.testing.assert_array_equal(valid, held(self.um[:50, 2] < MISSING, self.SAMPLES_WRITTEN))

    def test_the_library_s_own_tail(self):
        self.um = np.zeros((400, 16))
        self.write(self.um)
        valid, _ = self.valid("BeamPel", options=["--library-tail"])
        # The first record that begins in the last 1024 samples, and all behind it, is not rendered.
        starts = np.trunc((np.arange(400) - 0.5) * RECORD_MS / INTERVAL_MS)
        first = int(starts[starts >= self.SAMPLES_WRITTEN - 1024][0])
        np.testing.assert_array_equal(valid, np.arange(self.SAMPLES_WRITTEN) < first)
        self.assertTrue(self.valid("BeamPel")[0].all())

    def test_data_that_may_be_missing(self):
        (self.folder / "take.xyd").unlink()
        for chain in ("BeamPel", "BeamData speed"):
            self.assertFalse(self.valid(chain, options=["--allow-missing"])[0].any())

    def test_a_palate_that_may_be_missing(self):
        (self.folder / "pal.dat").unlink()
        valid, _ = self.valid("BeamData speed", options=["--allow-missing"])
        np.testing.assert_array_equal(valid, held(measured("speed", self.um), self.SAMPLES_WRITTEN))
        self.assertFalse(self.valid("BeamData palate", options=["--allow-missing"])[0].any())

    def test_a_palate_of_one_point_which_is_never_searched(self):
        (self.folder / "pal.dat").write_text("0 20000\n")
        valid, values = self.valid("BeamData palate")
        self.assertFalse(valid.any())
        self.assertEqual(values.max(), 1000.0)

    def test_a_recorded_track_is_as_long_as_its_data(self):
        out = self.folder / "o.csv"
        self.run_chain(SAMPLES / "take3.wav", out, "-f", "SetTrack")
        names, columns = read_table(out)
        self.assertEqual(names[2], "valid")
        self.assertTrue(columns[2].all())


class Behind(Takes):
    def setUp(self):
        super().setUp()
        self.track = held(self.um[:, 5] < MISSING, self.SAMPLES_WRITTEN)

    def test_a_smoothed_sample_rests_on_all_that_it_is_made_of(self):
        for chain, reach in (("FIRFilter 40", 40), ("FIRNotch 7", 7)):
            valid, _ = self.valid("BeamPel", chain)
            missing = np.convolve(~self.track, np.ones(2 * reach + 1), "same") > 0
            np.testing.assert_array_equal(valid, ~missing)

    def test_a_resampled_one_too(self):
        for up, down, half_length in ((1, 2, 20), (3, 2, 31), (2, 5, 60), (4, 1, 2)):
            with self.subTest(up=up, down=down):
                valid, values = self.valid("BeamPel", f"ResampleBlackman {down} {up} half_length={half_length}")
                reach = half_length // up * up
                steps = np.arange(self.SAMPLES_WRITTEN) * up
                gaps = np.flatnonzero(np.diff(np.r_[False, ~self.track, False])).reshape(-1, 2)
                wanted = np.ones(len(valid), bool)
                places = np.arange(len(valid)) * down
                for first, last in gaps:
                    wanted &= (places < steps[first] - reach) | (places > steps[last - 1] + reach)
                np.testing.assert_array_equal(valid, wanted)
                # No sample that a missing one could have reached is called valid.
                for place in np.random.default_rng(1).choice(np.flatnonzero(valid), 200):
                    near = np.abs(steps - place * down) <= reach
                    self.assertTrue(self.track[near].all())

    def test_with_stages_the_far_ends_are_marked(self):
        valid, _ = self.valid("BeamPel", "ResampleBlackman rate=1000")
        self.assertEqual(len(valid), self.SAMPLES_WRITTEN // 8)
        self.assertFalse(valid[~self.track[::8]].any())
        self.assertTrue(valid.any())

    def test_sines_leave_the_gaps_and_squares_have_none(self):
        np.testing.assert_array_equal(self.valid("BeamPel", "SineFilter 100")[0], self.track)
        out = self.folder / "square.csv"
        self.run_chain(self.folder / "take.wav", out, "-f", "BeamPel", "-f", "SquareFilter")
        self.assertEqual(out.read_text().splitlines()[0], "time_s,value_mm")

    def test_a_mix_rests_on_both(self):
        other = positions(400, 9)
        self.write(other, "other.xyd")
        take = self.folder / "take.wav"
        wanted = held(other[:, 1] < MISSING, self.SAMPLES_WRITTEN)
        second = f"with=\"'{take}' | BeamPel 2 data='{self.folder}/other.xyd'\""
        np.testing.assert_array_equal(self.valid("BeamPel", f"SumSources {second}")[0], self.track & wanted)
        np.testing.assert_array_equal(self.valid(f"EchoCancel {second}")[0], wanted)

    def test_a_later_track_replaces_an_earlier_one(self):
        np.testing.assert_array_equal(self.valid("BeamPel 1", "BeamPel 6")[0], self.track)


class Tables(Takes):
    def test_ssff_holds_what_csv_holds(self):
        valid, values = self.valid("BeamData speed")
        out = self.folder / "o.ssff"
        self.run_chain(self.folder / "take.wav", out, "-f", "BeamData speed")
        lines, tracks = read_ssff(out)
        self.assertEqual(lines[:6], ["SSFF -- (c) SHLRC", "Machine IBM-PC", "Record_Freq 8000", "Start_Time 0.0",
                                     "Column value FLOAT 1", "Column valid FLOAT 1"])
        self.assertTrue(lines[6].startswith('Comment CHAR unit mm/ms, full scale 1; {"wavechain":'))
        np.testing.assert_array_equal(tracks["value"], values.astype(np.float32))
        np.testing.assert_array_equal(tracks["valid"], valid.astype(np.float32))

    def test_the_two_compare_as_the_same(self):
        for name in ("o.csv", "o.ssff"):
            self.run_chain(self.folder / "take.wav", self.folder / name, "-f", "BeamPel", "-f", "FIRFilter 9")
        done = wavechain("diff", self.folder / "o.csv", self.folder / "o.ssff")
        self.assertEqual(done.returncode, 0, done.stdout + done.stderr)
        self.assertIn(b"o.ssff: 12000 samples, 8000 Hz, 2 channels", done.stdout)

    def test_validity_may_be_left_out(self):
        for name in ("o.csv", "o.ssff"):
            self.run_chain(self.folder / "take.wav", self.folder / name, "--no-validity", "-f", "BeamPel")
        self.assertEqual((self.folder / "o.csv").read_text().splitlines()[0], "time_s,value_mm")
        self.assertEqual(list(read_ssff(self.folder / "o.ssff")[1]), ["value"])

    def test_a_recording_has_no_such_column(self):
        for name in ("o.csv", "o.ssff"):
            self.run_chain(self.folder / "take.wav", self.folder / name, "-f", "SineFilter 100")
        self.assertEqual((self.folder / "o.csv").read_text().splitlines()[0], "time_s,value")
        self.assertEqual(list(read_ssff(self.folder / "o.ssff")[1]), ["value"])

    def test_other_programs_ssff_is_read(self):
        header = "SSFF -- (c) SHLRC\nMachine IBM-PC\nRecord_Freq 200.0\nStart_Time 0.0025\nColumn fm SHORT 2\nColumn x DOUBLE 1\n"
        record = np.array([(500, 1500, 0.5), (510, 1400, -1.0)], "<i2,<i2,<f8").tobytes()
        (self.folder / "fm.ssff").write_bytes(header.encode() + b"-----------------\n" + record)
        (self.folder / "fm.csv").write_text("time_s,a,b,c\n0,500,1500,0.5\n0.005,510,1400,-1\n")
        done = wavechain("diff", self.folder / "fm.csv", self.folder / "fm.ssff")
        self.assertEqual(done.returncode, 0, done.stdout + done.stderr)

    def test_damaged_ssff_is_refused(self):
        path = self.folder / "x.ssff"
        for text, line in (
            ("Machine IBM-PC\n", "its header has no end, or no column"),
            ("Machine SPARC\nColumn a FLOAT 1\n-----------------\n", "its numbers are not in the order of IBM-PC"),
            ("Machine IBM-PC\nColumn a BYTE 1\n-----------------\n", "column a holds BYTE, not FLOAT, DOUBLE, SHORT or LONG"),
            ("Machine IBM-PC\nColumn a FLOAT 65536\nColumn b SHORT 1\n", "its records hold more than 65536 numbers"),
            ("Machine IBM-PC\nColumn a FLOAT 1\n-----------------\nxyz", "is cut short: its last record is not complete"),
        ):
            path.write_text("SSFF -- (c) SHLRC\n" + text)
            done = wavechain("diff", path, path)
            self.assertEqual(done.returncode, 2)
            self.assertEqual(done.stderr.decode(), f"wavechain: {path}: {line}\n")


if __name__ == "__main__":
    unittest.main()
