"""Hostile files, named after what is wrong with them, given to the library and to wavechain.

Of each file the program says in one line what is wrong, and writes nothing, or it works; the library delivers the same as with a plain
file that holds the part that can be read.
"""

import contextlib
import os
import pathlib
import struct
import tempfile
import threading
import unittest

import hostile_chains
import hostile_recordings
import hostile_records
import hostile_tables
import hostile_text
from hostile_text import BAD, FORMATS, GOOD_LINES, text_of
from host_commands import Commands

LENGTH = 8000  # samples of the signals
INTERVAL_MS = 0.0625  # of the recordings
READER = {"xyd": "BeamPel", "pal": "BeamData", "gpl": "GlotSyn", "fla": "FricSyn", "gpm": "PulseSyn", "iop": "SetTrack"}
HEADER = 1024  # bytes ahead of a recorded track's samples


def digest(samples):
    """Of the bits of single-precision samples, as filter_request.cpp makes it."""
    bits = 0xCBF29CE484222325
    for (word,) in struct.iter_unpack("<I", struct.pack(f"<{len(samples)}f", *samples)):
        bits = ((bits ^ word) * 0x100000001B3) & (2**64 - 1)
    return str(bits)


class Hostile(unittest.TestCase):
    """A folder for the files, one for what the program writes, and a process that runs it."""

    named = set()  # all files that were tried, for the count

    @classmethod
    def setUpClass(cls):
        cls.held = tempfile.TemporaryDirectory()
        cls.folder = pathlib.Path(cls.held.name)
        cls.out = cls.folder / "out"
        cls.out.mkdir()
        cls.temporary = cls.folder / "tmp"
        cls.temporary.mkdir()
        os.environ["TMPDIR"] = str(cls.temporary)
        cls.process = Commands()
        cls.good = {}
        for kind, form in FORMATS.items():
            cls.good[kind] = cls.folder / f"plain.{kind}"
            cls.good[kind].write_bytes(text_of(form.lines))
        cls.recording = cls.folder / "recording.wav"
        data = bytes(2 * LENGTH)
        cls.recording.write_bytes(hostile_recordings.wav(data=data))

    @classmethod
    def tearDownClass(cls):
        status = cls.process.close()
        for name in os.listdir(cls.folder):
            if name.endswith(".d"):
                (cls.folder / name).chmod(0o700)
        cls.held.cleanup()
        if status != 0:
            raise AssertionError(f"the process ended with {status}")

    def path(self, kind, name):
        Hostile.named.add(f"{kind} {name}")
        return self.folder / f"{name}.{kind}"

    def run_chain(self, *arguments, **more):
        """Runs a command that writes into the empty folder: an error leaves it empty, and is one line, the last."""
        for old in self.out.iterdir():
            old.unlink()
        done = self.process.run(*arguments, **more)
        self.assertFalse(done.threw, done)
        self.assertEqual(list(self.temporary.iterdir()), [], "temporary files are left")
        written = sorted(path.name for path in self.out.iterdir())
        if done.status != 0:
            self.assertEqual(written, [], done)
            self.assertRegex(done.lines[-1], "^wavechain: ")
            self.assertEqual(sum(line.startswith("wavechain: ") for line in done.lines), 1, done.err)
        return done

    def attach(self, files, length=LENGTH, interval_ms=INTERVAL_MS, **more):
        return self.process.attach({kind: str(path) for kind, path in files.items()}, length, interval_ms, **more)


class Texts(Hostile):
    def chain(self, kind, path):
        return FORMATS[kind].filter_text.format(path, **{name: self.good[name] for name in ("xyd", "pal")})

    def files(self, kind, path):
        """The file under every kind's name, beside the good ones that it needs."""
        beside = {name: path for name in (*FORMATS, "iop")}
        if kind == "xyd":
            beside["pal"] = self.good["pal"]
        if kind == "pal":
            beside["xyd"] = self.good["xyd"]
        return beside

    def check_program(self, kind, name, case, path):
        out = self.out / "out.npy"
        fault = None if case.fault is None else {**case.fault, "path": path.name}
        done = self.run_chain("run", self.recording, out, "--no-record", "-f", self.chain(kind, path), fault=fault)
        last = done.lines[-1]
        if case.changes:
            self.assertEqual(done.status, 2, done.err)
            self.assertIn(path.name, last)
            return
        if case.usable == 0:
            self.assertEqual(done.status, 2, done.err)
            self.assertIn(path.name, last)
            self.assertIn("--allow-missing", last)
            self.assertIn(case.says or "", last)
            return
        self.assertEqual(done.status, 0, done.err)
        self.assertRegex(done.err, rf"{path.name}: {case.usable} {FORMATS[kind].counted}")
        if case.usable == BAD:
            self.assertIn(f"{path.name}: line {BAD + 1}: ", done.err)
        if name == "as_it_should_be":
            self.assertNotIn("warning", done.err)

    def check_library(self, kind, case, path):
        """Same bits as with a plain file of the lines that can be read; any other filter survives it, too."""
        plain = self.folder / f"same.{kind}"
        plain.unlink(missing_ok=True)
        if case.usable > 0 or case.same_as is not None:
            plain.write_bytes(text_of(FORMATS[kind].lines[: case.usable]) if case.same_as is None else case.same_as)
        readers = [READER[kind]] if kind != "xyd" else ["BeamPel", "BeamData", "BeamData speed"]
        shape = (LENGTH, INTERVAL_MS)
        if case.usable == hostile_text.MILLION:
            # A line for each sample.
            shape = (hostile_text.MILLION, 6.866 if kind == "xyd" else 20.0)
        only = {"only": readers[0]} if case.big else {}
        came = self.attach(self.files(kind, path), *shape, **only)
        wanted = self.attach(self.files(kind, plain), *shape, **only)
        for reader in readers[:1] if case.big else readers:
            self.assertEqual(came[reader], wanted[reader], reader)

    def check_all(self, kind, cases):
        for name, case in cases.items():
            with self.subTest(f"{name}.{kind}"):
                path = self.path(kind, name)
                case.make(path)
                if not case.changes:
                    self.check_library(kind, case, path)
                self.check_program(kind, name, case, path)
                if case.big:
                    path.unlink()

    def test_contents(self):
        for kind in FORMATS:
            self.check_all(kind, hostile_text.contents(kind))

    def test_what_is_no_file(self):
        for kind in FORMATS:
            self.check_all(kind, hostile_text.kinds(text_of(FORMATS[kind].lines), GOOD_LINES))

    def test_names(self):
        names = {"newline_in_its_name": "a\nb", "escape_sequence_in_its_name": "\x1b[2Ja", "blank_in_its_name": "a b", "dots_in_its_name": "a.b.c", "dash_first": "-f"}
        for kind, form in FORMATS.items():
            for name, stem in names.items():
                with self.subTest(f"{name}.{kind}"):
                    self.path(kind, name)
                    path = self.folder / f"{stem}.{kind}"
                    path.write_bytes(text_of(form.lines))
                    out = self.out / "out.npy"
                    done = self.run_chain("run", self.recording, out, "--no-record", "-f", self.chain(kind, f"'{path}'"))
                    self.assertEqual(done.status, 0, done.err)
                    self.assertIn(f": {GOOD_LINES} {form.counted}", done.err)
                    self.assertNotIn("\x1b", done.err)

    def test_files_that_change(self):
        for kind in FORMATS:
            self.check_all(kind, hostile_text.changing(kind))

    def test_files_that_change_between_two_pulls(self):
        for kind, form in FORMATS.items():
            for change in ("grow", "vanish", "cut", "replace"):
                name = f"{change}s_between_two_pulls"
                with self.subTest(f"{name}.{kind}"):
                    path = self.path(kind, name)
                    # Long enough not to be in a buffer as a whole.
                    path.write_bytes(text_of(form.lines[:1]) + b" ".join(b"0" for _ in range(16)) + b"\n" * 20_000)
                    for reader in ("BeamPel", "BeamData", "GlotSyn", "FricSyn", "PulseSyn"):
                        files = self.files(kind, path)
                        self.attach(files, 20_000, INTERVAL_MS, only=reader, change=change, changing=str(path))
                        if path.is_dir():
                            path.rmdir()
                        path.write_bytes(text_of(form.lines) * 2000)


class Tracks(Hostile):
    def sizes(self, size):
        """A track of so many bytes: what can be read of it."""
        content = bytes((i * 89 + 7) % 256 for i in range(size))
        path = self.path("iop", f"of_{size}_bytes")
        path.write_bytes(content)
        values = struct.unpack(f">{max(size - HEADER, 0) // 2}h", content[HEADER : HEADER + max(size - HEADER, 0) // 2 * 2])
        return path, [value * 10.0 / 32768.0 for value in values]

    def test_each_size_up_to_a_few_samples(self):
        for size in range(1031):
            path, values = self.sizes(size)
            came = self.attach({"iop": path}, only="SetTrack")["SetTrack"]
            self.assertEqual(came, {"announced": len(values), "came": len(values), "bits": digest(values)}, size)

    def test_some_sizes_through_the_program(self):
        for size in (0, 1, 2, 512, 1023, 1024, 1025, 1026, 1027, 1028, 1029, 1030, 3000, 9001):
            with self.subTest(size):
                path, values = self.sizes(size)
                out = self.out / "out.npy"
                done = self.run_chain("run", self.recording, out, "--no-record", "-f", f"SetTrack data={path}")
                self.assertEqual(done.status, 0 if values else 2, done.err)
                if values:
                    self.assertEqual(out.read_bytes()[-4 * len(values) :], struct.pack(f"<{len(values)}f", *values))
                    self.assertRegex(done.err, f"{path.name}: {len(values)} sample")
                else:
                    self.assertIn(path.name, done.lines[-1])

    def test_beyond_two_gibibytes(self):
        largest = 2**31 - 1
        for name, size in (("two_gib_less_one", largest), ("two_gib", largest + 1), ("two_gib_and_more", largest + 1031), ("four_gib_and_six", 2**32 + 6), ("a_tebibyte", 2**40)):
            with self.subTest(name):
                path = self.path("iop", name)
                hostile_text.make_hole(path, size)
                samples = (min(size, largest) - HEADER) // 2
                came = self.attach({"iop": path}, only="SetTrack")["SetTrack"]
                self.assertEqual(came, {"announced": samples, "came": LENGTH, "bits": digest([0.0] * LENGTH)})
                done = self.run_chain("check", self.recording, "-f", f"SetTrack data={path}")
                self.assertEqual(done.status, 0, done.err)
                self.assertIn(f"{samples} sample", done.out + done.err)
                path.unlink()

    def test_what_is_no_file(self):
        good = bytes(HEADER) + b"\1\2" * 100
        for name, case in hostile_text.kinds(good, 100).items():
            with self.subTest(name):
                path = self.path("iop", name)
                case.make(path)
                came = self.attach({kind: path for kind in (*FORMATS, "iop")})["SetTrack"]
                self.assertEqual(came["came"], case.usable)
                done = self.run_chain("run", self.recording, self.out / "out.npy", "-f", f"SetTrack data={path}")
                self.assertEqual(done.status, 0 if case.usable else 2, done.err)
                self.assertIn(path.name, done.err)
                self.assertIn(case.says or "", done.err)

    def test_files_that_change_between_two_pulls(self):
        for change in ("grow", "vanish", "cut", "replace"):
            with self.subTest(change):
                path = self.path("iop", f"{change}s_between_two_pulls")
                path.write_bytes(bytes(HEADER) + b"\1\2" * 20_000)
                came = self.attach({"iop": path}, 20_000, only="SetTrack", change=change, changing=str(path))["SetTrack"]
                # The track keeps the length that it announced.
                self.assertEqual((came["announced"], came["came"]), (20_000, 20_000))


class Recordings(Hostile):
    def flac(self):
        done = self.run_chain("run", self.write("plain", hostile_recordings.wav()), self.out / "out.flac", "--no-record", "--encoding", "pcm16", "-f", "SineFilter 0 0")
        self.assertEqual(done.status, 0, done.err)
        return (self.out / "out.flac").read_bytes()

    def write(self, name, content):
        path = self.folder / name
        path.write_bytes(content)
        return path

    def test_headers(self):
        wanted = struct.pack(f"<{hostile_recordings.COUNT}f", *(sample / 32768.0 for sample in hostile_recordings.SAMPLES))
        for kind, name, content, verdict in hostile_recordings.recordings(self.flac()):
            with self.subTest(f"{name}.{kind}"):
                path = self.path(kind, name)
                path.write_bytes(content)
                out = self.out / "out.npy"
                done = self.run_chain("run", path, out, "-q", "--no-record", "-f", "SineFilter 0 0")
                if done.status == 0:
                    samples = (out.stat().st_size - 128) // 4
                    self.assertLessEqual(samples, max(len(content), len(wanted) // 4))
                else:
                    self.assertIn(path.name, done.err)
                if verdict == "read":
                    self.assertEqual(done.status, 0, done.err)
                    self.assertTrue(out.read_bytes().endswith(wanted))
                elif verdict == "several":
                    self.assertIn("--channel 1", done.err)
                    done = self.run_chain("run", path, out, "-q", "--no-record", "--channel", 1, "-f", "SineFilter 0 0")
                self.assertIn(done.status, (2,) if verdict == "refused" else (0, 2))

    def test_what_is_no_file(self):
        cases = hostile_text.kinds(hostile_recordings.wav(), 0)
        for name, case in cases.items():
            with self.subTest(name), contextlib.ExitStack() as stack:
                path = self.path("recording", name)
                case.make(path)
                if name == "fifo":
                    stack.enter_context(closing_writer(path))
                done = self.run_chain("run", path, self.out / "out.npy", "-q", "-f", "SineFilter 0 0")
                self.assertEqual(done.status, 0 if name == "links_in_a_chain" else 2, done.err)
                if done.status != 0:
                    self.assertIn(path.name, done.err)

    def test_what_is_written_never_takes_a_device_for_a_file(self):
        for device in ("/dev/full", "/dev/zero", "/dev/null"):
            with self.subTest(device):
                done = self.run_chain("run", self.recording, device, "--format", "wav", "--force", "-f", "SineFilter 0 0")
                self.assertEqual(done.status, 3)
                self.assertIn("not a regular file", done.err)


@contextlib.contextmanager
def closing_writer(path):
    """Somebody who opens the pipe to write, and writes nothing."""
    writer = threading.Thread(target=lambda: os.close(os.open(path, os.O_WRONLY)), daemon=True)
    writer.start()
    yield


class Chains(Hostile):
    def test_contents(self):
        for name, (content, verdict) in hostile_chains.chains().items():
            with self.subTest(name):
                path = self.path("toml", name)
                path.write_bytes(content)
                done = self.run_chain("run", self.recording, self.out / "out.npy", "-q", "--no-record", "--chain", path)
                self.assertEqual(done.status, 0 if verdict == "runs" else 1, done.err[:300])
                if verdict != "runs":
                    self.assertIn(path.name, done.err)
                    self.assertLess(len(done.err), 2_000_000)
                    if verdict != "refused":
                        self.assertIn(verdict, done.err)

    def test_what_is_no_file(self):
        for name, case in hostile_text.kinds(hostile_chains.GOOD, 1).items():
            with self.subTest(name), contextlib.ExitStack() as stack:
                path = self.path("toml", name)
                case.make(path)
                if name == "fifo":
                    stack.enter_context(closing_writer(path))
                done = self.run_chain("run", self.recording, self.out / "out.npy", "-q", "--chain", path)
                self.assertEqual(done.status, 0 if case.usable else 1, done.err[:300])
                if not case.usable:
                    self.assertIn(path.name, done.err)


class Tables(Hostile):
    def test_contents(self):
        good = self.folder / "good.csv"
        good.write_bytes(hostile_tables.GOOD)
        for name, (content, verdict) in hostile_tables.tables().items():
            with self.subTest(name):
                path = self.path("csv", name)
                path.write_bytes(content)
                done = self.process.run("diff", path, good)
                self.assertFalse(done.threw)
                self.assertIn(done.status, {"same": (0,), "differs": (1,), "refused": (2,), "either": (1, 2)}[verdict], done.err[:300])
                if done.status == 2:
                    self.assertEqual(sum(line.startswith("wavechain: ") for line in done.lines), 1, done.err)
                    self.assertIn(path.name, done.err)


class Records(Hostile):
    def show(self, kind, name, content, verdict):
        with self.subTest(f"{name}.{kind}"):
            path = self.path(kind, name)
            path.write_bytes(content)
            for words in ((), ("--json",)):
                done = self.run_chain("show", path, *words)
                self.assertEqual(done.status, {"shown": 0, "refused": 2}[verdict], done)
                self.assertIn(path.name if verdict == "refused" else "take.wav", done.err + done.out)
                self.assertNotRegex(done.err + done.out, "[\0-\x09\x0b-\x1f\x7f-\x9f]")

    def test_contents(self):
        for name, (content, verdict) in hostile_records.records().items():
            self.show("json", name, content, verdict)

    def test_pictures(self):
        for kind, name, content in hostile_records.pictures():
            self.show(kind, name, content, "refused")

    def test_manifests(self):
        chain = self.folder / "chain.toml"
        chain.write_bytes(hostile_chains.GOOD)
        for name, content in hostile_records.manifests().items():
            with self.subTest(name):
                path = self.path("manifest", name)
                path.write_bytes(content)
                done = self.run_chain("batch", "--manifest", path, "--chain", chain, "--out", self.out)
                self.assertEqual(done.status, 1, done)
                self.assertLess(len(done.err), 10_000)


class ZCount(unittest.TestCase):
    def test_there_are_more_than_nine_hundred(self):
        # Tracks of each size aside, which nothing is wrong with.
        odd = [name for name in Hostile.named if not name.startswith("iop of_")]
        self.assertGreaterEqual(len(odd), 900)
        print(f"{len(odd)} hostile files, and {len(Hostile.named) - len(odd)} tracks by size")


if __name__ == "__main__":
    unittest.main()
