"""Several chains over one recording into one table: each column as if its chain were run alone."""

import json
import os
import shutil
import unittest
import wave
import zipfile

import numpy as np
from wavechain_runs import SAMPLES, Folder, wavechain

TRACKS = {
    "speed": "BeamData mode=speed",
    "lip": "BeamPel column=2 | FIRFilter 40",
    "noise": "SquareFilter 50 0 | FricSyn events=noise.fla",
    "other_noise": "FricSyn events=noise.fla | SineFilter 50 0.1",
    "mix": "SumSources with='take3.wav | BeamPel 6' gain2=0.01",
}


def ssff(path):
    header, records = path.read_bytes().split(b"-----------------\n", 1)
    names = [line.split()[1] for line in header.decode().splitlines() if line.startswith("Column ")]
    return dict(zip(names, np.frombuffer(records, "<f4").reshape(-1, len(names)).T))


def csv(path):
    lines = path.read_text().splitlines()
    cells = [[float(cell) if cell else np.nan for cell in line.split(",")] for line in lines[1:]]
    return dict(zip(lines[0].split(","), np.array(cells).T))


class Tracks(Folder):
    def setUp(self):
        super().setUp()
        for name in ("take3.xyd", "pal.dat"):
            shutil.copy(SAMPLES / name, self.folder / name)
        # Its first two seconds and a half.
        with wave.open(str(SAMPLES / "take3.wav")) as whole, wave.open(str(self.folder / "take3.wav"), "wb") as part:
            part.setparams(whole.getparams())
            part.writeframes(whole.readframes(40000))
        events = "".join(f"{100 + 40 * i} 0.5 0.1 -0.2\n" for i in range(60))
        (self.folder / "noise.fla").write_text(events)

    def call(self, *words, status=0, env=None, **options):
        env = {**os.environ, "TMPDIR": str(self.temporary), **(env or {})}
        done = wavechain(*words, cwd=self.folder, env=env, **options)
        self.assertEqual(done.returncode, status, done.stderr.decode())
        self.assertEqual(list(self.temporary.iterdir()), [])
        return done

    def make(self, out, tracks=None, *words, recording="take3.wav", **options):
        chains = [word for name, chain in (tracks or TRACKS).items() for word in ("--track", f"{name}={chain}")]
        return self.call("run", recording, out, *words, *chains, **options).stderr.decode()

    def alone(self, chain, *words):
        """What one chain gives by itself: values and validity."""
        if not hasattr(self, "known"):
            self.known = {}
        if (chain, words) not in self.known:
            filters = [word for one in chain.split(" | ") for word in ("-f", one)]
            if "with=" in chain:
                filters = ["-f", chain]
            self.call("run", "take3.wav", "alone.csv", "-q", "--force", *words, *filters)
            table = csv(self.folder / "alone.csv")
            values = list(table.values())
            valid = table.get("valid", np.ones(len(values[0])))
            self.known[chain, words] = values[1].astype(np.float32), valid == 1
        return self.known[chain, words]


class Columns(Tracks):
    def test_each_is_what_its_chain_gives_alone(self):
        self.make("o.npz")
        arrays = np.load(self.folder / "o.npz")
        for name, chain in TRACKS.items():
            with self.subTest(name):
                values, valid = self.alone(chain)
                self.assertEqual(arrays[name].dtype, np.float32)
                self.assertEqual(arrays[name].tobytes(), values.tobytes())
                self.assertEqual(arrays[name + "_valid"].dtype, bool)
                np.testing.assert_array_equal(arrays[name + "_valid"], valid)
        # The noises would differ if the chains drew from one generator in turn.
        self.assertTrue(np.abs(arrays["noise"]).max() > 0.0)
        self.assertEqual(arrays["rate_hz"], 16000.0)

    def test_the_seed_holds_for_each(self):
        tracks = {name: TRACKS[name] for name in ("noise", "other_noise")}
        self.make("o.npz", tracks, "--seed", 5)
        arrays = np.load(self.folder / "o.npz")
        for name, chain in tracks.items():
            self.assertEqual(arrays[name].tobytes(), self.alone(chain, "--seed", "5")[0].tobytes())
            self.assertNotEqual(arrays[name].tobytes(), self.alone(chain)[0].tobytes())

    def test_all_formats_hold_the_same(self):
        for name in ("o.npz", "o.csv", "o.ssff"):
            self.make(name)
        arrays = np.load(self.folder / "o.npz")
        tables = csv(self.folder / "o.csv"), ssff(self.folder / "o.ssff")
        self.assertEqual(list(tables[0]), ["time_s", "speed_mm/ms", "speed_valid", "lip_mm", "lip_valid", "noise",
                                           "noise_valid", "other_noise", "other_noise_valid", "mix", "mix_valid"])
        np.testing.assert_allclose(tables[0]["time_s"], np.arange(len(arrays["lip"])) / 16000, rtol=1e-12)
        for table, units in zip(tables, (True, False)):
            for name in TRACKS:
                column = name + {"speed": "_mm/ms", "lip": "_mm"}.get(name, "") if units else name
                np.testing.assert_array_equal(table[column].astype(np.float32), arrays[name])
                np.testing.assert_array_equal(table[name + "_valid"] == 1, arrays[name + "_valid"])

    def test_validity_may_be_left_out(self):
        self.make("o.npz", {"lip": "BeamPel"}, "--no-validity")
        self.assertEqual(sorted(np.load(self.folder / "o.npz").files), ["lip", "rate_hz", "record.json"])

    def test_shorter_tracks_are_filled_up(self):
        with open(self.folder / "take3.wav", "rb") as file:
            self.call("run", "-", "short.wav", "-q", "-t", "s16", "--rate", 16000, "-f", "SineFilter", stdin=file)
        report = self.make("o.csv", {"one": "SineFilter 100", "mix": "SumSources with=take3.wav gain1=0"},
                           recording="short.wav")
        self.assertNotIn("warning", report)
        os.truncate(self.folder / "short.wav", 20044)
        report = self.make("p.npz", {"one": "SineFilter 100", "mix": "SumSources with=take3.wav gain1=0"},
                           "--allow-truncated", recording="short.wav")
        arrays = np.load(self.folder / "p.npz")
        count = int(np.count_nonzero(arrays["one_valid"]))
        self.assertIn(f"warning: track one: ends after {count} of {len(arrays['mix'])} samples", report)
        self.assertTrue(0 < count < 6000)
        self.assertTrue(np.isnan(arrays["one"][count:]).all())
        self.assertFalse(np.isnan(arrays["one"][:count]).any())
        self.assertTrue(arrays["mix_valid"].all())
        self.make("p.csv", {"one": "SineFilter 100", "mix": "SumSources with=take3.wav gain1=0"}, "--allow-truncated",
                  recording="short.wav")
        self.assertRegex((self.folder / "p.csv").read_text().splitlines()[-1], r"^[0-9.]+,,0,[-0-9.e]+,1$")

    def test_a_pipe_is_read_once_for_all(self):
        tracks = {"a": "FIRFilter 9", "b": "FIRNotch 5", "c": "SineFilter 0 0"}
        with open(self.folder / "take3.wav", "rb") as file:
            self.make("o.npz", tracks, recording="-", input=file.read())
        arrays = np.load(self.folder / "o.npz")
        for name, chain in tracks.items():
            self.assertEqual(arrays[name].tobytes(), self.alone(chain)[0].tobytes())

    def test_silence(self):
        self.call("run", "o.npz", "-q", "--silence", 0.5, "--rate", 8000, "--track", "a=SineFilter 0 0.25",
                  "--track", "b=SquareFilter")
        arrays = np.load(self.folder / "o.npz")
        np.testing.assert_array_equal(arrays["a"], np.full(4000, 0.25, np.float32))

    def test_a_single_run_writes_arrays_too(self):
        self.call("run", "take3.wav", "o.npz", "-q", "-f", "BeamPel")
        arrays = np.load(self.folder / "o.npz")
        values, valid = self.alone("BeamPel")
        self.assertEqual(arrays["value"].tobytes(), values.tobytes())
        np.testing.assert_array_equal(arrays["valid"], valid)


class Records(Tracks):
    def test_it_is_made_again_byte_for_byte(self):
        for name in ("o.npz", "o.csv", "o.ssff"):
            with self.subTest(name):
                self.make(name)
                self.assertEqual(self.call("rerun", name).stdout.decode(), f"{name}: made again, byte for byte\n")
                self.call("rerun", name, "again_" + name, "-q", env={"TZ": "Asia/Tokyo"})
                self.assertEqual((self.folder / name).read_bytes(), (self.folder / ("again_" + name)).read_bytes())

    def test_it_tells_of_each_track(self):
        self.make("o.npz", {"speed": "BeamData speed | FIRFilter 20", "lip": "BeamPel 2"})
        record = json.loads(self.call("show", "o.npz", "--json").stdout)
        self.assertEqual(record["tracks"][0], {"name": "speed", "filters": ["BeamData mode=5 a=0 b=0", "FIRFilter half_length=20"],
                                               "unit": "mm/ms", "full_scale": 1.0})
        self.assertEqual([file["file"] for file in record["files"]], ["take3.xyd", "pal.dat"])
        self.assertEqual(record["output"], {"format": "npz"})
        text = self.call("show", "o.npz").stdout.decode()
        self.assertIn("track    lip: BeamPel column=2, unit mm\n", text)
        with zipfile.ZipFile(self.folder / "o.npz") as archive:
            self.assertIsNone(archive.testzip())
            self.assertEqual(json.loads(archive.read("record.json")), record)


class Refusals(Tracks):
    def expect(self, message, *words, status=1, **options):
        done = self.call("run", *words, status=status, **options)
        self.assertEqual(done.stderr.decode().splitlines()[-1], f"wavechain: {message}")
        self.assertFalse((self.folder / "o.csv").exists())

    def test_names(self):
        form = ("takes a name of letters, digits, _, - and ., then = and a chain, as in speed=\"BeamData mode=speed | "
                "FIRFilter 20\"")
        for text in ("speed", "=BeamPel", "my lip=BeamPel", "a,b=BeamPel"):
            self.expect(f"--track '{text}': {form}", "take3.wav", "o.csv", "--track", text)
        for name in ("lip", "lip_valid", "time_s", "rate_hz"):
            self.expect(f"--track {name}: there is such a column already; choose another name", "take3.wav", "o.csv",
                        "--track", "lip=BeamPel", "--track", f"{name}=BeamPel")

    def test_chains(self):
        self.expect("--track a: 'FIRFiler 3': there is no filter 'FIRFiler'; did you mean FIRFilter?", "take3.wav", "o.csv",
                    "--track", "a=BeamPel | FIRFiler 3")
        self.expect("--track names chains of its own; leave out -f and --chain", "take3.wav", "o.csv",
                    "--track", "a=BeamPel", "-f", "BeamPel")

    def test_formats(self):
        for extension in ("wav", "npy"):
            self.expect(f"--track: a {extension} file holds a single signal; write .csv, .npz or .ssff", "take3.wav",
                        f"o.{extension}", "--track", "a=BeamPel")

    def test_rates(self):
        self.expect("--track b: comes at 8000 Hz, a at 16000 Hz; all tracks must have one rate, as by \"... | "
                    "ResampleBlackman rate=16000\"", "take3.wav", "o.csv", "--track", "a=BeamPel",
                    "--track", "b=ResampleBlackman 2")

    def test_data_that_is_missing(self):
        (self.folder / "take3.xyd").unlink()
        self.expect("lip: filter 1 (BeamPel): take3.xyd: there is no such file; name the file by data=FILE, or run "
                    "without it by --allow-missing", "take3.wav", "o.csv", "--track", "lip=BeamPel", status=2)

    def test_no_room_for_temporary_files(self):
        self.expect("o.npz: cannot be written: No such file or directory", "take3.wav", "o.npz", "--track",
                    "a=SineFilter", status=3, env={"TMPDIR": "/nowhere"})
        self.assertFalse((self.folder / "o.npz").exists())


if __name__ == "__main__":
    unittest.main()
