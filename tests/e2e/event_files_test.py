"""Event files through wavechain: what is heard, what is dropped and said to be."""

import math
import unittest

import numpy as np
from wavechain_runs import Folder

RATE = 16000
T_MS = 1000 / RATE


class Events(Folder):
    def write(self, name, *lines):
        path = self.folder / name
        path.write_text("".join(line + "\n" for line in lines))
        return path

    def synthesise(self, filter_text, seconds, *more, status=0):
        """Runs a filter over silence; returns the samples (or none) and the report."""
        out = self.folder / "out.npy"
        out.unlink(missing_ok=True)
        report = self.run_chain(out, "--silence", seconds, "--rate", RATE, *more, "-f", filter_text, status=status)
        return (np.load(out) if status == 0 else None), report


class Impulses(Events):
    def test_each_instant_gets_its_negated_amplitude(self):
        instants = {10.0: 1.0, 62.53: -0.25, 400.0: 3.5, 999.9: 0.5}
        path = self.write("e.gpm", *(f"{time} {amplitude}" for time, amplitude in instants.items()))
        samples, report = self.synthesise(f"PulseSyn events={path}", 1)
        wanted = np.zeros(RATE, np.float32)
        for time, amplitude in instants.items():
            wanted[math.trunc(time / T_MS)] = -amplitude
        np.testing.assert_array_equal(samples, wanted)
        self.assertIn("4 events", report)
        self.assertNotIn("warning", report)

    def test_events_that_will_not_be_heard_are_counted(self):
        path = self.write("e.gpm", "-5 1", "10 1", "1000 1", "2000 1")
        _, report = self.synthesise(f"PulseSyn events={path}", 1)
        self.assertIn("1 event will be dropped: before the start of the signal", report)
        self.assertIn("2 events will be dropped: behind the end of the signal", report)

    def test_the_first_unreadable_line_is_named(self):
        path = self.write("e.gpm", "1 1", "2", "3 1")
        samples, report = self.synthesise(f"PulseSyn events={path}", 0.1)
        self.assertIn("e.gpm: line 2: an instant and an amplitude wanted, there is 1; the events end there", report)
        self.assertEqual(np.flatnonzero(samples).tolist(), [16])


class Pulses(Events):
    LINE = "1 0.12 0.05 0.6 -0.4 0.2"

    def test_a_pulse_rises_to_its_instant_and_rings_on(self):
        path = self.write("e.gpl", f"100 {self.LINE}", f"110 {self.LINE}")
        samples, _ = self.synthesise(f"GlotSyn events={path}", 1)
        # 2 periods of 160 samples before the first instant; the second pulse is the last one, so
        # its period reaches to the end of a block: its rise takes all of 512 samples.
        self.assertEqual(np.flatnonzero(samples)[0], min(1600 - 320, 1760 - 512))
        self.assertTrue(np.abs(samples[1600]) > 0)
        self.assertTrue(np.all(samples[1761:1800] != 0.0))
        self.assertFalse(np.any(samples[1760 + 1024 :]))

    def test_a_pulse_in_the_last_samples_is_heard(self):
        path = self.write("e.gpl", f"900 {self.LINE}", f"990 {self.LINE}")
        samples, _ = self.synthesise(f"GlotSyn events={path}", 1)
        self.assertEqual(len(samples), RATE)
        self.assertTrue(np.any(samples[round(990 / T_MS) :]))

    def test_what_is_dropped_is_said_with_its_reason(self):
        path = self.write("e.gpl", f"100 {self.LINE}", f"100 {self.LINE}", f"200 {self.LINE}")
        _, report = self.synthesise(f"GlotSyn events={path}", 1)
        self.assertIn("1 event will be dropped: not before the next one", report)

    def test_ratios_that_are_no_numbers_are_named(self):
        path = self.write("e.gpl", "100 1 0.12 0.05 0.5 lots 0.3", f"200 {self.LINE}")
        _, report = self.synthesise(f"GlotSyn events={path}", 1)
        self.assertIn("e.gpl: line 1: 'lots' is no log-area ratio; the line's ratios end there", report)

    def test_events_beside_a_recording_are_found(self):
        self.run_chain(self.folder / "take.wav", "--silence", 0.5, "--rate", RATE, "-f", "SquareFilter 8 0.01")
        self.write("take.gpl", f"100 {self.LINE}", f"150 {self.LINE}")
        self.run_chain(self.folder / "take.wav", self.folder / "o.npy", "-f", "GlotSyn")
        added = np.load(self.folder / "o.npy")
        self.assertEqual(len(added), 8000)
        levels = -0.01 * (-1.0) ** (np.arange(8000) // 8)
        self.assertTrue(np.array_equal(added[:1000], levels[:1000].astype(np.float32)))
        self.assertTrue(np.any(added[1600:2400] != levels[1600:2400].astype(np.float32)))

    def test_the_block_size_goes_into_the_file(self):
        path = self.write("e.gpl", f"10 {self.LINE}")
        self.run_chain(self.folder / "o.wav", "--silence", 0.1, "--rate", RATE, "-f", f"GlotSyn events={path}")
        self.assertIn(b"blocks of 4096 samples", (self.folder / "o.wav").read_bytes())


class Bursts(Events):
    def bursts(self, *more):
        path = self.write("e.fla", "100 0.1 0.5", "200 0.1 0.5")
        return self.synthesise(f"FricSyn events={path}", 0.5, *more)[0]

    def test_a_seed_repeats_its_noise_and_another_does_not(self):
        first = self.bursts("--seed", 7)
        np.testing.assert_array_equal(first, self.bursts("--seed", 7))
        self.assertFalse(np.array_equal(first, self.bursts("--seed", 8)))
        np.testing.assert_array_equal(self.bursts(), self.bursts("--seed", 1))

    def test_a_burst_begins_5_ms_before_its_instant(self):
        samples = self.bursts()
        # The window's first sample is 0.
        self.assertEqual(np.flatnonzero(samples)[0], 1600 - 80 + 1)
        self.assertEqual(np.flatnonzero(samples)[-1], 3200 - 80 + 320 + 80 - 1)

    def test_a_burst_too_close_to_the_start_is_said_to_be_dropped(self):
        path = self.write("e.fla", "4.9 0.1", "5 0.1", "100 0.1")
        _, report = self.synthesise(f"FricSyn events={path}", 0.5)
        self.assertIn("1 event will be dropped: less than 5 ms behind the start of the signal", report)


class Silence(Events):
    def test_its_length_and_rate(self):
        samples, report = self.synthesise("SineFilter 0 0.5", 0.25)
        np.testing.assert_array_equal(samples, np.full(4000, 0.5, np.float32))
        self.assertIn("read   silence: 16000 Hz, 4000 samples, 0.250 s", report)

    def test_no_seconds_at_all(self):
        self.assertEqual(len(self.synthesise("SineFilter", 0)[0]), 0)

    def test_what_is_wrong_is_said(self):
        out = self.folder / "o.wav"
        for arguments, words in (
            ([out, "--silence", 1], "--silence has no rate of its own; add --rate"),
            ([out, "--rate", 16000], "OUT is required"),
            ([out, "--silence", -1, "--rate", 16000], "--silence -1: seconds are 0 to 1000000"),
            ([out, "--silence", 1000001, "--rate", 1], "--silence 1000001: seconds are 0 to 1000000"),
            ([out, "--silence", "1e300", "--rate", 8000], "--silence 1e+300: seconds are 0 to 1000000"),
            ([out, "--silence", 1, "--rate", 0], "a sampling rate is"),
            ([out, out, "--silence", 1, "--rate", 16000], "name OUT alone"),
            (["--silence", 1, "--rate", 16000], "OUT is required"),
        ):
            with self.subTest(words):
                self.assertIn(words, self.run_chain(*arguments, "-f", "SineFilter", status=1))

    def test_without_a_recording_the_events_must_be_named(self):
        _, report = self.synthesise("PulseSyn", 1, status=1)
        self.assertIn("add events=FILE", report)


if __name__ == "__main__":
    unittest.main()
