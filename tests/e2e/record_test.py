"""How an output was made: what it carries, and that it can be made again from that, byte for byte."""

import hashlib
import json
import os
import re
import shutil
import struct
import subprocess
import unittest
import zlib
from xml.etree import ElementTree

from wavechain_runs import SAMPLES, WAVECHAIN, Folder, wavechain

LIBRARY = os.path.realpath(os.path.join(os.path.dirname(WAVECHAIN), "libwavefilters.so.1"))
INSIDE = ("wav", "flac", "aiff", "rf64", "caf", "ssff")
BESIDE = ("csv", "npy", "w64", "au", "f32", "s16")


def sha256(path):
    with open(path, "rb") as file:
        return hashlib.sha256(file.read()).hexdigest()


class Records(Folder):
    """Runs in a folder of its own, where inputs have names without folders."""

    def setUp(self):
        super().setUp()
        for name in ("take3.wav", "take3.xyd", "pal.dat"):
            shutil.copy(SAMPLES / name, self.folder / name)
        (self.folder / "noise.fla").write_text("100 0.5 0.1\n300 0.2\n")

    def call(self, *words, status=0, cwd=None, **options):
        env = {**os.environ, "TMPDIR": str(self.temporary)}
        done = wavechain(*words, cwd=cwd or self.folder, env=env, **options)
        self.assertEqual(done.returncode, status, done.stderr.decode())
        self.assertEqual(list(self.temporary.iterdir()), [])
        return done.stdout, done.stderr.decode()

    def make(self, out, *words, input_name="take3.wav"):
        self.call("run", input_name, out, "-q", *words)

    def record(self, name):
        return json.loads(self.call("show", name, "--json")[0])

    def expect_refusal(self, message, *words, **options):
        _, said = self.call("rerun", *words, status=options.pop("status", 2), **options)
        self.assertEqual(said.splitlines()[-1], f"wavechain: {message}")


class Shown(Records):
    def test_everything_that_the_output_depends_on(self):
        self.make("o.wav", "--seed", 7, "-f", "BeamData speed", "-f", "FricSyn events=noise.fla", "--channel", 1)
        record = self.record("o.wav")
        self.assertEqual(record["input"], {"file": "take3.wav", "sha256": sha256(SAMPLES / "take3.wav"), "channel": 1})
        self.assertEqual(record["filters"], ["BeamData mode=5 a=0 b=0", "FricSyn events='noise.fla'"])
        self.assertEqual(
            record["files"],
            [{"file": name, "sha256": sha256(self.folder / name)} for name in ("take3.xyd", "pal.dat", "noise.fla")],
        )
        self.assertEqual(record["library"], {"file": os.path.basename(LIBRARY), "sha256": sha256(LIBRARY)})
        self.assertEqual(record["options"], {"seed": 7, "block": 4096})
        self.assertEqual(record["output"], {"format": "wav", "encoding": "float32", "unit": "mm/ms", "full_scale": 1.0})
        version = self.call("--version")[0].decode().split()[1]
        self.assertEqual(record["wavechain"], version.rstrip(","))

    def test_no_folder_of_this_machine(self):
        self.make("o.csv", "-f", "BeamData speed")
        self.assertNotIn(str(self.folder), (self.folder / "o.csv.json").read_text())
        self.assertNotIn(os.path.dirname(WAVECHAIN), (self.folder / "o.csv.json").read_text())

    def test_for_people(self):
        self.make("o.csv", "--no-validity", "-f", "BeamPel 4")
        text = self.call("show", "o.csv")[0].decode()
        self.assertIn(f"input    take3.wav (SHA-256 {sha256(SAMPLES / 'take3.wav')})\n", text)
        self.assertIn("chain    BeamPel column=4\n", text)
        self.assertIn("options  seed 1, blocks of 4096 samples, --no-validity\n", text)
        self.assertTrue(text.endswith("output   csv, unit mm\n"))
        self.call("run", "s.wav", "-q", "--silence", 0.5, "--rate", 8000, "-f", "SineFilter")
        self.assertIn("input    silence, 0.5 s at 8000 Hz\n", self.call("show", "s.wav")[0].decode())

    def test_each_format_inside_or_beside(self):
        for extension in INSIDE + BESIDE:
            with self.subTest(extension):
                self.make(f"o.{extension}", "-f", "BeamPel")
                self.assertEqual((self.folder / f"o.{extension}.json").exists(), extension in BESIDE)
                self.assertEqual(self.record(f"o.{extension}")["filters"], ["BeamPel column=6"])
        # The file beside it says it for itself, too.
        self.assertEqual(self.record("o.csv.json"), self.record("o.csv"))

    def test_what_does_not_fit_into_a_comment_stands_beside(self):
        chain = [word for i in range(60) for word in ("-f", f"SineFilter {i} 0.0001")]
        for extension in ("wav", "aiff"):
            self.make(f"o.{extension}", *chain)
            self.assertEqual(len(self.record(f"o.{extension}")["filters"]), 60)
            self.assertTrue((self.folder / f"o.{extension}.json").exists())
            self.call("rerun", f"o.{extension}")

    def test_none_when_not_wanted(self):
        for name in ("o.wav", "o.csv"):
            self.make(name, "--no-record", "-f", "BeamPel")
            self.assertFalse((self.folder / (name + ".json")).exists())
            _, said = self.call("show", name, status=2)
            self.assertEqual(said, f"wavechain: {name}: carries no record of how it was made, nor is there one in "
                                   f"{name}.json; wavechain run and plot write it\n")

    def test_standard_output_has_it_where_the_format_has_room(self):
        for extension, found in (("wav", True), ("csv", False)):
            out, said = self.call("run", "take3.wav", "-", "--format", extension, "-f", "BeamPel")
            self.assertEqual("record standard output: csv has no room to tell how it was made" in said, not found)
            (self.folder / f"piped.{extension}").write_bytes(out)
            self.call("show", f"piped.{extension}", status=0 if found else 2)

    def test_a_record_of_another_s_is_not_replaced(self):
        (self.folder / "o.csv.json").write_text('{"mine": 1}')
        _, said = self.call("run", "take3.wav", "o.csv", "-q", "-f", "BeamPel", status=3)
        self.assertEqual(said, "wavechain: o.csv.json: exists already; --force replaces it\n")
        self.assertFalse((self.folder / "o.csv").exists())
        self.make("o.csv", "--force", "-f", "BeamPel")
        # One whose output is gone makes way.
        (self.folder / "o.csv").unlink()
        self.make("o.csv", "-f", "BeamPel 3")
        self.assertEqual(self.record("o.csv")["filters"], ["BeamPel column=3"])

    def test_what_cannot_be_read(self):
        self.assertEqual(self.call("show", "none.wav", status=2)[1],
                         "wavechain: none.wav: cannot be opened: No such file or directory\n")
        self.assertEqual(self.call("show", ".", status=2)[1], "wavechain: .: cannot be opened: it is a folder\n")
        (self.folder / "x.json").write_text('{"wavechain": "1.0.0"}')
        self.assertRegex(self.call("show", "x.json", status=2)[1],
                         r"^wavechain: x.json: its record of how it was made cannot be understood: .*library")

    def test_numbers_that_no_run_has(self):
        self.make("o.csv", "-f", "BeamPel")
        record = self.record("o.csv")
        for key, value, least, most in (("seed", 1e300, 0, 2**32 - 1), ("seed", -1, 0, 2**32 - 1), ("seed", 2**32, 0, 2**32 - 1),
                                        ("block", 1e300, 1, 2**31 - 1), ("block", 0, 1, 2**31 - 1), ("block", 2**31, 1, 2**31 - 1)):
            (self.folder / "x.json").write_text(json.dumps({**record, "options": {**record["options"], key: value}}))
            for command in ("show", "rerun"):
                self.assertEqual(self.call(command, "x.json", status=2)[1], "wavechain: x.json: its record of how it was made cannot be "
                                                                            f"understood: {key} is no whole number from {least} to {most}\n")


class Again(Records):
    def expect_same(self, name, *words):
        """Both ways: compared with itself, and written elsewhere."""
        self.assertEqual(self.call("rerun", name)[0].decode(), f"{name}: made again, byte for byte\n")
        again = "again_" + name
        self.call("rerun", name, again, "-q", *words)
        self.assertEqual((self.folder / again).read_bytes(), (self.folder / name).read_bytes())
        beside = self.folder / (name + ".json")
        if beside.exists():
            self.assertEqual((self.folder / (again + ".json")).read_bytes(), beside.read_bytes())

    def test_each_format(self):
        for extension in INSIDE + BESIDE:
            with self.subTest(extension):
                self.make(f"o.{extension}", "-f", "BeamData speed", "-f", "FIRFilter 20")
                self.expect_same(f"o.{extension}")

    def test_options(self):
        shutil.copy(self.folder / "take3.wav", self.folder / "it's.wav")
        cases = {
            "seed.wav": ["--seed", 99, "-f", "FricSyn events=noise.fla"],
            "pcm.wav": ["--encoding", "pcm16", "--channel", 1, "-f", "BeamPel"],
            "tail.csv": ["--library-tail", "--no-validity", "-f", "BeamPel"],
            "names.wav": ["-f", "BeamData mode=distance a=1 b=4"],
            "mix.wav": ["-f", "SumSources gain2=0.5 with=\"it's.wav | BeamPel data=take3.xyd | FIRFilter 3\""],
            "rate.wav": ["-f", "ResampleBlackman rate=11025 quality=fast"],
            "down.wav": ["-f", "ResampleBlackman 3 2"],
        }
        for name, words in cases.items():
            with self.subTest(name):
                self.make(name, *words)
                self.expect_same(name)
        self.assertEqual([file["file"] for file in self.record("mix.wav")["files"]], ["it's.wav", "take3.xyd"])

    def test_missing_data_that_was_allowed(self):
        (self.folder / "pal.dat").unlink()
        self.make("o.wav", "--allow-missing", "-f", "BeamData speed")
        self.expect_same("o.wav")
        (self.folder / "pal.dat").write_text("1 2\n3 4\n")
        self.expect_refusal("pal.dat: was not there when the output was made", "o.wav")

    def test_silence_and_raw_samples(self):
        self.call("run", "silent.wav", "-q", "--silence", 0.25, "--rate", 8000, "-f", "FricSyn events=noise.fla")
        self.expect_same("silent.wav")
        (self.folder / "raw.s16").write_bytes(bytes(range(256)) * 10)
        self.make("raw.wav", "-t", "s16", "--rate", 8000, "-f", "FIRFilter 2", input_name="raw.s16")
        self.expect_same("raw.wav")

    def test_a_chain_file(self):
        (self.folder / "c.toml").write_text('[[filter]]\nkind = "BeamPel"\ncolumn = 5\n')
        self.make("o.wav", "--chain", "c.toml")
        (self.folder / "c.toml").unlink()
        self.expect_same("o.wav")

    def test_standard_input_is_named(self):
        with open(self.folder / "take3.wav", "rb") as file:
            self.call("run", "-", "o.wav", "-q", "-f", "BeamPel data=take3.xyd", stdin=file)
        self.expect_refusal("o.wav: was made from standard input; save that in a file and name it by --input FILE",
                            "o.wav")
        self.call("rerun", "o.wav", "b.wav", "--input", "take3.wav", "-q")
        self.assertEqual((self.folder / "b.wav").read_bytes(), (self.folder / "o.wav").read_bytes())
        self.expect_refusal("pal.dat: is not the file that the output was made from: SHA-256 "
                            f"{sha256(self.folder / 'pal.dat')[:16]}, not {sha256(self.folder / 'take3.wav')[:16]}",
                            "o.wav", "--input", "pal.dat")

    def test_another_folder(self):
        self.make("o.csv", "-f", "BeamPel")
        elsewhere = self.folder / "elsewhere"
        elsewhere.mkdir()
        hint = "name the folder that it is relative to by --folder DIR"
        self.expect_refusal(f"take3.wav: cannot be opened: No such file or directory; {hint}, or the recording by "
                            "--input FILE", "../o.csv", cwd=elsewhere)
        self.expect_refusal("--folder nowhere: No such file or directory", "../o.csv", "--folder", "nowhere",
                            cwd=elsewhere)
        self.call("rerun", "../o.csv", "b.csv", "--folder", "..", "-q", cwd=elsewhere)
        self.assertEqual((elsewhere / "b.csv").read_bytes(), (self.folder / "o.csv").read_bytes())

    def test_an_input_that_is_another_by_now(self):
        self.make("o.wav", "-f", "BeamPel")
        was = sha256(self.folder / "take3.xyd")
        with open(self.folder / "take3.xyd", "a", encoding="ascii") as file:
            file.write("\n")
        self.expect_refusal("take3.xyd: is not the file that the output was made from: SHA-256 "
                            f"{sha256(self.folder / 'take3.xyd')[:16]}, not {was[:16]}", "o.wav", "b.wav")
        self.assertFalse((self.folder / "b.wav").exists())
        (self.folder / "take3.xyd").unlink()
        self.expect_refusal("take3.xyd: cannot be opened: No such file or directory; name the folder that it is "
                            "relative to by --folder DIR", "o.wav")

    def test_another_library(self):
        self.make("o.csv", "-f", "BeamPel")
        other = self.folder / "other.so"
        with open(LIBRARY, "rb") as file:
            other.write_bytes(file.read() + b"\0")
        self.expect_refusal("o.csv: was made with another library than ./other.so; --other-library takes what is there",
                            "o.csv", "--library", "other.so")
        self.call("rerun", "o.csv", "b.csv", "--library", "other.so", "--other-library", "-q")
        self.assertEqual((self.folder / "b.csv").read_bytes(), (self.folder / "o.csv").read_bytes())
        self.assertEqual(self.record("b.csv")["library"]["sha256"], sha256(other))

    def test_no_library_that_the_record_alone_names(self):
        shutil.copy(LIBRARY, self.folder / "own.so")
        self.make("o.csv", "-f", "BeamPel", "--library", "own.so")
        refusal = ("o.csv: was made with the library own.so, which a record alone does not have loaded; if you trust "
                   "it, name it by --library FILE")
        self.expect_refusal(refusal, "o.csv")
        self.expect_refusal(refusal, "o.csv", "b.csv", "--other-library")
        # Nor is it touched: what is no library would have been found out by loading it.
        (self.folder / "own.so").write_bytes(b"no library")
        self.expect_refusal(refusal, "o.csv")
        shutil.copy(LIBRARY, self.folder / "own.so")
        self.call("rerun", "o.csv", "b.csv", "--library", "own.so", "-q")
        for name in ("{}.csv", "{}.csv.json"):
            self.assertEqual((self.folder / name.format("b")).read_bytes(),
                             (self.folder / name.format("o")).read_bytes())

    def test_another_program(self):
        self.make("o.csv", "-f", "BeamPel")
        beside = self.folder / "o.csv.json"
        record = json.loads(beside.read_text())
        beside.write_text(json.dumps({**record, "wavechain": "0.9.0"}))
        self.expect_refusal(f"o.csv: was made by wavechain 0.9.0, this is {record['wavechain']}; --other-library takes "
                            "what is there", "o.csv")

    def test_a_file_that_was_changed_since(self):
        self.make("o.csv", "-f", "BeamPel")
        with open(self.folder / "o.csv", "r+b") as file:
            file.seek(30)
            file.write(b"#")
        self.expect_refusal("o.csv: is not what its record makes: they differ from byte 30 on", "o.csv")
        self.assertEqual(self.call("rerun", "o.csv", "b.csv", "-q")[0], b"")

    def test_nothing_is_replaced_unasked(self):
        self.make("o.wav", "-f", "BeamPel")
        self.expect_refusal("o.wav: exists already; --force replaces it", "o.wav", "o.wav", status=3)
        self.call("rerun", "o.wav", "o.wav", "--force", "-q")

    def test_no_temporary_folder(self):
        self.make("o.wav", "-f", "SineFilter")
        env = {**os.environ, "TMPDIR": "/nowhere"}
        done = subprocess.run([WAVECHAIN, "rerun", "o.wav"], cwd=self.folder, env=env, capture_output=True, check=False)
        self.assertEqual(done.returncode, 3)
        self.assertEqual(done.stderr.decode(), "wavechain: cannot make a temporary folder in /nowhere: No such file or "
                                               "directory; set TMPDIR\n")


class Pictures(Records):
    """Pictures carry it inside, where other programs find it, too."""

    FORMATS = ("png", "svg", "pdf")

    def draw(self, out, *words, input_name="take3.wav", **options):
        names = [input_name] if input_name else []
        self.call("plot", *names, out, "-q", *words, **options)

    def inside(self, name):
        """The comment's text, as the format's own rules have it."""
        data = (self.folder / name).read_bytes()
        if name.endswith("png"):
            texts, at = [], 8
            while at < len(data):
                length, kind = struct.unpack_from(">I4s", data, at)
                content = data[at + 8 : at + 8 + length]
                self.assertEqual(struct.unpack_from(">I", data, at + 8 + length)[0], zlib.crc32(kind + content))
                texts += [content] if kind == b"tEXt" else []
                at += 12 + length
            self.assertEqual(len(texts), 1)
            return texts[0].removeprefix(b"Comment\0").decode("latin-1")
        if name.endswith("svg"):
            return ElementTree.fromstring(data).find("{http://www.w3.org/2000/svg}metadata").text
        subject = re.search(rb"\n +/Subject (.*)\n", data).group(1)
        if subject.startswith(b"<"):
            return bytes.fromhex(subject[1:-1].decode()).decode("utf-16")
        return subject[1:-1].decode("ascii")

    def expect_same(self, name, *words):
        self.assertEqual(self.call("rerun", name, *words)[0].decode(), f"{name}: made again, byte for byte\n")
        self.call("rerun", name, "again", "-q", "--force", *words)
        self.assertEqual((self.folder / "again").read_bytes(), (self.folder / name).read_bytes())
        self.assertFalse((self.folder / (name + ".json")).exists())

    def test_each_format_has_it_inside(self):
        for form in self.FORMATS:
            with self.subTest(form):
                out = f"o.{form}"
                self.draw(out, "--seed", 7, "--from", 0.25, "--to", 0.75, "--window", 5, "--size", "400x500", "-f", "FIRFilter 9",
                          "--track", "lip=BeamPel 4", "--track", "speed=BeamData mode=speed | FIRFilter 20")
                record = self.record(out)
                self.assertEqual(json.loads(self.inside(out)), record)
                self.assertEqual(record["input"], {"file": "take3.wav", "sha256": sha256(SAMPLES / "take3.wav")})
                self.assertEqual(record["library"], {"file": os.path.basename(LIBRARY), "sha256": sha256(LIBRARY)})
                self.assertEqual(record["filters"], ["FIRFilter half_length=9"])
                self.assertEqual([(t["name"], t["filters"], t["unit"]) for t in record["tracks"]], [
                    ("lip", ["BeamPel column=4"], "mm"), ("speed", ["BeamData mode=5", "FIRFilter half_length=20"], "mm/ms")])
                self.assertEqual(record["files"], [{"file": name, "sha256": sha256(self.folder / name)} for name in ("take3.xyd", "pal.dat")])
                self.assertEqual(record["options"], {"seed": 7, "block": 4096})
                self.assertEqual(record["output"], {"format": form})
                self.assertEqual(record["picture"], {"from_s": 0.25, "to_s": 0.75, "window_ms": 5.0, "dynamics_db": 70.0, "size": "400x500"})
                self.expect_same(out)

    def test_for_people(self):
        self.draw("o.png", "--from", 0.25, "--max-frequency", 5000, "--track", "lip=BeamPel 4")
        text = self.call("show", "o.png")[0].decode()
        self.assertIn(f"input    take3.wav (SHA-256 {sha256(SAMPLES / 'take3.wav')})\n", text)
        self.assertIn("track    lip: BeamPel column=4, unit mm\n", text)
        self.assertTrue(text.endswith("output   png\npicture  --from 0.25 --max-frequency 5000 --window 15 --dynamics 70\n"), text)
        self.draw("r.svg", "--response", "--phase", "--rate", 16000, "-f", "FIRFilter 9", input_name=None)
        text = self.call("show", "r.svg")[0].decode()
        self.assertIn("input    an impulse at 16000 Hz\nchain    FIRFilter half_length=9\n", text)
        self.assertIn("picture  --response --phase --window 15 --dynamics 70\n", text)

    def test_signs_that_a_format_writes_otherwise(self):
        shutil.copy(self.folder / "take3.wav", self.folder / "a(b)\\<&>'t\u00f6n.wav")
        for form in self.FORMATS:
            with self.subTest(form):
                self.draw(f"o.{form}", "--to", 0.1, "-f", "SumSources with=\"a(b)\\\\<&>'t\u00f6n.wav\"",
                          input_name="a(b)\\<&>'t\u00f6n.wav")
                self.assertEqual(self.record(f"o.{form}")["input"]["file"], "a(b)\\<&>'t\u00f6n.wav")
                self.assertEqual(json.loads(self.inside(f"o.{form}")), self.record(f"o.{form}"))
                self.expect_same(f"o.{form}")

    def test_options(self):
        (self.folder / "raw.s16").write_bytes(bytes(range(256)) * 40)
        (self.folder / "c.toml").write_text('[[filter]]\nkind = "FIRNotch"\nhalf_length = 50\n')
        silence = ("--silence", 0.5, "--rate", 8000)
        # What the words in the picture show must come back as well: what was given of the parameters.
        cases = {
            "alone.png": [],
            "given.png": ["--to", 0.2, "-f", "FIRNotch 100", "-f", "SineFilter"],
            "rate.png": ["--to", 0.2, "-f", "ResampleBlackman rate=8000 quality=fast"],
            "chain.pdf": ["--to", 0.2, "--chain", "c.toml", "--dynamics", 50, "--library-tail"],
            "raw.png": ["raw.s16", "-t", "s16", "--rate", 8000, "--channel", 1],
            "noise.svg": [None, *silence, "--seed", 9, "-f", "FricSyn events=noise.fla"],
            "response.pdf": [None, "--response", "-f", "FIRNotch 100"],
            "several.png": [None, "--response", "--phase", "--rate", 16000, "--track", "a=FIRFilter 5", "--track", "b=FIRFilter 9"],
        }
        for name, words in cases.items():
            with self.subTest(name):
                given = words[0] if words and not str(words[0]).startswith("-") else "take3.wav"
                self.draw(name, *words[1 if given != "take3.wav" else 0 :], input_name=given)
                self.expect_same(name)

    def test_a_recording_that_lies_elsewhere_by_now_or_came_through_a_pipe(self):
        self.draw("o.png", "--to", 0.2, "--track", "tip=BeamPel data=take3.xyd")
        with open(self.folder / "take3.wav", "rb") as file:
            self.draw("piped.png", "--to", 0.2, input_name="-", stdin=file)
        (self.folder / "take3.wav").rename(self.folder / "other.wav")
        self.expect_refusal("take3.wav: cannot be opened: No such file or directory; name the folder that it is relative to by "
                            "--folder DIR, or the recording by --input FILE", "o.png")
        self.expect_refusal("piped.png: was made from standard input; save that in a file and name it by --input FILE", "piped.png")
        self.expect_same("o.png", "--input", "other.wav")
        self.expect_same("piped.png", "--input", "other.wav")

    def test_an_input_or_a_picture_that_was_changed_since(self):
        self.draw("o.svg", "--to", 0.2, "--track", "tip=BeamPel")
        text = (self.folder / "o.svg").read_text()
        at = text.rindex("M ")
        (self.folder / "o.svg").write_text(text[:at] + "m " + text[at + 2 :])
        self.expect_refusal(f"o.svg: is not what its record makes: they differ from byte {len(text[:at].encode())} on", "o.svg")
        with open(self.folder / "take3.xyd", "a", encoding="ascii") as file:
            file.write("\n")
        self.call("rerun", "o.svg", status=2)

    def test_none_when_not_wanted(self):
        for form in self.FORMATS:
            self.draw(f"o.{form}", "--to", 0.1, "--no-record")
            self.draw(f"with.{form}", "--to", 0.1)
            self.assertLess(os.path.getsize(self.folder / f"o.{form}"), os.path.getsize(self.folder / f"with.{form}"))
            self.call("show", f"o.{form}", status=2)

    def test_standard_output_has_it(self):
        out, _ = self.call("plot", "take3.wav", "-", "--format", "png", "--to", 0.1, "-q")
        (self.folder / "piped.png").write_bytes(out)
        self.expect_same("piped.png")

    def test_a_damaged_picture_carries_none_or_says_so(self):
        for form in self.FORMATS:
            self.draw(f"o.{form}", "--to", 0.1)
            data = (self.folder / f"o.{form}").read_bytes()
            start = data.index(b"wavechain")
            for length in (4, 12, start - 20, start + 40):
                (self.folder / f"cut.{form}").write_bytes(data[:length])
                _, said = self.call("show", f"cut.{form}", status=2)
                self.assertIn("carries no record", said)


class Kept(Records):
    """--force replaces an output, never what the run reads."""

    def expect_kept(self, name, *words):
        before = (self.folder / name).read_bytes()
        _, said = self.call(*words, "-q", "--force", status=3)
        self.assertEqual(said.splitlines()[-1], f"wavechain: {words[-1]}: is read by a filter; name another output")
        self.assertEqual((self.folder / name).read_bytes(), before)

    def test_data_files(self):
        # By another name, too.
        (self.folder / "link").symlink_to("take3.xyd")
        os.link(self.folder / "pal.dat", self.folder / "twin")
        for name, out, chain in (
            ("take3.xyd", "take3.xyd", "BeamPel"),
            ("take3.xyd", "link", "BeamPel data=take3.xyd"),
            ("pal.dat", "./pal.dat", "BeamData palate"),
            ("pal.dat", "twin", "BeamData mode=8 palate=pal.dat"),
            ("noise.fla", "noise.fla", "FricSyn events=noise.fla"),
            ("take3.xyd", "take3.xyd", "SumSources with='take3.wav | BeamPel'"),
        ):
            with self.subTest(chain):
                self.expect_kept(name, "run", "take3.wav", "--format", "wav", "-f", chain, out)
                self.expect_kept(name, "run", "take3.wav", "--format", "csv", "--track", f"a={chain}", out)
                self.expect_kept(name, "plot", "take3.wav", "--format", "png", "-f", chain, out)
                self.expect_kept(name, "plot", "take3.wav", "--format", "png", "--track", f"a={chain}", out)

    def test_what_stands_beside_the_output(self):
        shutil.move(self.folder / "noise.fla", self.folder / "noise.csv.json")
        self.call("run", "take3.wav", "noise.csv", "-q", "--force", "-f", "FricSyn events=noise.csv.json", status=3)
        self.assertEqual((self.folder / "noise.csv.json").read_text(), "100 0.5 0.1\n300 0.2\n")
        self.assertFalse((self.folder / "noise.csv").exists())


if __name__ == "__main__":
    unittest.main()
