"""A chain over many recordings: as each alone, redone only where something changed, failures told."""

import contextlib
import json
import math
import os
import shutil
import signal
import struct
import subprocess
import time
import unittest

from batch_runs import BatchFolder, children, write_wav
from wavechain_runs import SAMPLES, WAVECHAIN, wavechain

LIBRARY = os.path.realpath(os.path.join(os.path.dirname(WAVECHAIN), "libwavefilters.so.1"))
CHAIN = '[[filter]]\nkind = "FIRFilter"\nhalf_length = 20\n'


class Batch(BatchFolder):
    def setUp(self):
        super().setUp()
        (self.folder / "c.toml").write_text(CHAIN)


class Results(Batch):
    def test_are_those_of_single_runs_whatever_the_number_of_processes(self):
        names = self.tones("a.wav", "b.wav", "c.wav", "d.wav", "e.wav")
        for name in names:
            (self.folder / name.replace("wav", "fla")).write_text("10 0.5 0.1\n30 0.2\n")
        words = ["-f", "FricSyn", "--chain", "c.toml", "--seed", 7]
        for form in ("wav", "csv", "npz"):
            (self.folder / form).mkdir()
            for name in names:
                self.run_alone(name, f"{form}/{name[0]}.{form}", *words)
            expected = self.files(self.folder / form)
            for jobs in (1, 2, 5, 0):
                with self.subTest(form=form, jobs=jobs):
                    self.batch(*names, *words, "--format", form, "--jobs", jobs)
                    self.assertEqual(self.files(), expected)
                    shutil.rmtree(self.out)

    def test_tracks_side_by_side(self):
        for name in ("one.wav", "two.wav"):
            shutil.copy(SAMPLES / "take3.wav", self.folder / name)
            shutil.copy(SAMPLES / "take3.xyd", self.folder / name.replace("wav", "xyd"))
        shutil.copy(SAMPLES / "pal.dat", self.folder)
        words = ["--track", "speed=BeamData speed", "--track", "lip=BeamPel 2"]
        self.run_alone("two.wav", "alone.csv", *words)
        lines, _ = self.batch("one.wav", "two.wav", *words, "--format", "csv", "-j", 2)
        self.assertEqual((self.out / "two.csv").read_bytes(), (self.folder / "alone.csv").read_bytes())
        rows = (self.out / "two.csv").read_text().splitlines()[1:]
        self.assertEqual(lines["two.wav"]["samples"], len(rows))
        peak = max(abs(float(row.split(",")[i])) for row in rows for i in (1, 3))
        self.assertAlmostEqual(lines["two.wav"]["peak"], peak)

    def test_a_line_of_json_tells_what_came_out(self):
        samples = [0.25, -0.75, math.nan, 0.5, math.inf, -math.inf, math.nan, -math.inf] * 700
        (self.folder / "odd.f32").write_bytes(struct.pack(f"<{len(samples)}f", *samples))
        lines, said = self.batch("odd.f32", "-t", "f32", "--rate", 8000, "--format", "f32", "-f", "SineFilter 100 0.5")
        out = struct.unpack(f"<{len(samples)}f", (self.out / "odd.f32").read_bytes())
        line = lines["odd.f32"]
        self.assertGreater(line.pop("seconds"), 0.0)
        warnings = line.pop("warnings")
        self.assertEqual(line, {
            "input": "odd.f32", "output": "out/odd.f32", "status": "done", "exit_status": 0,
            "samples": len(out), "nan": sum(map(math.isnan, out)), "infinite": sum(map(math.isinf, out)),
            "peak": line["peak"], "error": None})
        self.assertEqual((line["nan"], line["infinite"]), (1400, 2100))
        peak = max(abs(x) for x in out if math.isfinite(x))
        self.assertEqual(struct.pack("<f", line["peak"]), struct.pack("<f", peak))
        # Warnings stand there and nowhere else: of a thousand files they would fill the screen.
        self.assertEqual(len(warnings), 2)
        self.assertRegex(warnings[0], r"^warning: odd\.f32: .*3500")
        self.assertNotIn("warning", said)
        self.assertRegex(said, r"^done   1 file made, 0 up to date, in [0-9.]+ s\n$")

    def test_a_log_takes_the_lines_and_keeps_what_it_had(self):
        self.tones("a.wav", "b.wav")
        (self.folder / "log.jsonl").write_text("earlier\n")
        self.assertEqual(self.batch("a.wav", "b.wav", "--chain", "c.toml", "--log", "log.jsonl", "-q"), ({}, ""))
        earlier, *lines = (self.folder / "log.jsonl").read_text().splitlines()
        self.assertEqual(earlier, "earlier")
        self.assertEqual({json.loads(line)["input"] for line in lines}, {"a.wav", "b.wav"})

    def test_names_of_any_bytes(self):
        name = os.fsdecode(b"t\xe4ke\n1.wav")
        write_wav(self.folder / name, 100)
        done = wavechain("batch", "--out", "out", name, "--chain", "c.toml", cwd=self.folder)
        self.assertEqual(done.returncode, 0, done.stderr)
        self.assertEqual(len(done.stdout.splitlines()), 1)
        self.assertTrue((self.out / name).exists())


class UpToDate(Batch):
    def setUp(self):
        super().setUp()
        for name in ("a", "b"):
            shutil.copy(SAMPLES / "take3.wav", self.folder / f"{name}.wav")
            shutil.copy(SAMPLES / "take3.xyd", self.folder / f"{name}.xyd")
        shutil.copy(LIBRARY, self.folder / "own.so")
        (self.folder / "c.toml").write_text('[[filter]]\nkind = "BeamPel"\ncolumn = 4\n')
        self.words = ["a.wav", "b.wav", "--chain", "c.toml", "--library", "own.so"]

    def expect(self, a, b, *words):
        self.assertEqual(self.statuses(*self.words, *words), {"a.wav": a, "b.wav": b})

    def append(self, name, text="\n"):
        with open(self.folder / name, "a", encoding="ascii") as file:
            file.write(text)

    def test_stays_until_something_changes(self):
        for form in ("wav", "csv"):
            with self.subTest(form):
                words = ["--format", form]
                (self.folder / "c.toml").write_text('[[filter]]\nkind = "BeamPel"\ncolumn = 4\n')
                self.expect("done", "done", *words)
                times = {path: path.stat().st_mtime_ns for path in self.out.iterdir()}
                self.expect("up-to-date", "up-to-date", *words)
                self.assertEqual({path: path.stat().st_mtime_ns for path in self.out.iterdir()}, times)
                write_wav(self.folder / "a.wav", 4000 + len(form), 100.0 * ord(form[0]), rate=16000)
                self.expect("done", "up-to-date", *words)
                self.append("b.xyd")
                self.expect("up-to-date", "done", *words)
                self.append("c.toml", "# a remark\n")
                self.expect("up-to-date", "up-to-date", *words)
                (self.folder / "c.toml").write_text('[[filter]]\nkind = "BeamPel"\ncolumn = 5\n')
                self.expect("done", "done", *words)
                self.append("own.so", "\0")
                self.expect("done", "done", *words)
                self.expect("done", "done", *words, "--seed", 3)
                self.expect("up-to-date", "up-to-date", *words, "--seed", 3)
                self.expect("done", "done", *words, "--seed", 3, "--force")
                # And is then what a run makes.
                self.run_alone("b.wav", f"alone.{form}", "--chain", "c.toml", "--library", "own.so", "--seed", 3)
                self.assertEqual((self.folder / f"alone.{form}").read_bytes(), (self.out / f"b.{form}").read_bytes())

    def test_what_stayed_has_no_totals(self):
        self.batch(*self.words)
        line = self.batch(*self.words)[0]["a.wav"]
        self.assertEqual([line[key] for key in ("samples", "peak", "nan", "infinite", "warnings", "error")],
                         [None, None, None, None, [], None])

    def test_an_output_that_is_gone_is_made_again(self):
        for form in ("wav", "csv"):
            self.batch(*self.words, "--format", form)
            (self.out / f"a.{form}").unlink()
            self.expect("done", "up-to-date", "--format", form)

    def test_a_record_that_no_longer_stands_beside_goes(self):
        # So many filters that their record finds no room within the output.
        (self.folder / "c.toml").write_text('[[filter]]\nkind = "SineFilter"\nfrequency = 9\n' * 60)
        self.batch(*self.words)
        self.assertEqual(len(self.files()), 4)
        (self.folder / "c.toml").write_text('[[filter]]\nkind = "SineFilter"\nfrequency = 9\n')
        self.expect("done", "done")
        self.assertEqual(len(self.files()), 2)

    def test_what_others_made_is_not_replaced(self):
        self.out.mkdir()
        (self.out / "a.wav").write_bytes(b"mine")
        lines, said = self.batch(*self.words, "--keep-going", status=3)
        message = "out/a.wav: exists already, and carries no record of how it was made; --force replaces it"
        self.assertEqual(lines["a.wav"]["error"], message)
        self.assertEqual(said, f"wavechain: a.wav: {message}\nwavechain: 1 of 2 files failed\n")
        self.assertEqual((self.out / "a.wav").read_bytes(), b"mine")
        self.assertEqual(lines["b.wav"]["status"], "done")
        self.expect("done", "done", "--force")


class Failures(Batch):
    def test_end_the_batch_or_not(self):
        self.tones("a.wav", "c.wav", "d.wav")
        (self.folder / "b.wav").write_bytes(b"no recording")
        words = ["a.wav", "b.wav", "c.wav", "none.wav", "d.wav", "--chain", "c.toml"]
        lines, said = self.batch(*words, "--jobs", 1, status=2)
        self.assertEqual({name: line["status"] for name, line in lines.items()}, {"a.wav": "done", "b.wav": "failed"})
        self.assertEqual(lines["b.wav"]["exit_status"], 2)
        self.assertTrue(lines["b.wav"]["error"].startswith("b.wav: "))
        self.assertEqual(said, f"wavechain: {lines['b.wav']['error']}\n"
                               "wavechain: 1 of 5 files failed, 3 not begun; --keep-going goes on behind a failure\n")
        lines, said = self.batch(*words, "--keep-going", "--jobs", 3, status=2)
        self.assertEqual([lines[name]["status"] for name in words[:5]],
                         ["up-to-date", "failed", "done", "failed", "done"])
        self.assertEqual(lines["none.wav"]["error"], "none.wav: cannot be opened: No such file or directory")
        self.assertTrue(said.endswith("wavechain: 2 of 5 files failed\n"))
        self.assertEqual(sorted(self.files()), ["a.wav", "c.wav", "d.wav"])

    def test_the_status_is_that_of_the_first_in_the_list(self):
        self.tones("a.wav", "b.wav")
        self.out.mkdir()
        (self.out / "a.wav").mkdir()
        for words, status in ((["a.wav", "none.wav"], 3), (["none.wav", "a.wav"], 2)):
            for jobs in (1, 2):
                lines, _ = self.batch(*words, "b.wav", "--chain", "c.toml", "--keep-going", "-j", jobs, status=status)
                self.assertEqual(lines[words[0]]["exit_status"], status)

    def test_a_message_without_the_recording_is_led_by_it(self):
        self.tones("a.wav")
        _, said = self.batch("a.wav", "-f", "BeamPel", status=2)
        self.assertRegex(said, r"^wavechain: a\.wav: filter 1 \(BeamPel\): a\.xyd: ")

    def test_a_full_disk_and_a_closed_pipe_stop_it(self):
        self.tones("a.wav", "b.wav")
        with open("/dev/full", "wb") as full:
            done = subprocess.run([WAVECHAIN, "batch", "--out", "out", "a.wav", "b.wav", "--chain", "c.toml"],
                                  cwd=self.folder, env=self.environment(), stdout=full, stderr=subprocess.PIPE,
                                  check=False)
        self.assertEqual((done.returncode, done.stderr.decode()),
                         (3, "wavechain: standard output: cannot be written: No space left on device\n"))
        self.expect_clean()
        _, said = self.batch("a.wav", "--chain", "c.toml", "--log", "/dev/full", "--force", status=3)
        self.assertEqual(said, "wavechain: --log /dev/full: cannot be written: No space left on device\n")


class Ends(Batch):
    """A recording that comes through a named pipe keeps its process waiting."""

    def setUp(self):
        super().setUp()
        self.tones("a.wav", "z.wav")
        os.mkfifo(self.folder / "slow.wav")
        self.words = ["a.wav", "slow.wav", "z.wav", "--chain", "c.toml", "--jobs", "1"]

    def begin_waiting(self, *words):
        """A batch whose process for slow.wav waits, and that process."""
        process = self.begin(*self.words, *words)
        self.addCleanup(process.stdout.close)
        self.addCleanup(process.stderr.close)
        first = json.loads(process.stdout.readline())
        self.assertEqual(first["input"], "a.wav")
        while not (found := children(process)):
            time.sleep(0.01)
        return process, found[0]

    def end(self, process):
        out, said = process.communicate(timeout=60)
        return {line["input"]: line["status"] for line in map(json.loads, out.splitlines())}, said.decode()

    def test_by_a_signal(self):
        for number in (signal.SIGINT, signal.SIGTERM):
            with self.subTest(number):
                process, child = self.begin_waiting()
                process.send_signal(number)
                lines, said = self.end(process)
                self.assertEqual((process.returncode, lines), (130, {}))
                self.assertEqual(said, "wavechain: interrupted; 2 of 3 files to do, which the same command goes on "
                                       "with\n")
                self.assertFalse(os.path.exists(f"/proc/{child}"))
                self.expect_clean()
                self.assertEqual(list(self.files()), ["a.wav"])

    def test_of_one_process_is_a_failure_of_its_file(self):
        process, child = self.begin_waiting("--keep-going")
        os.kill(child, signal.SIGKILL)
        lines, said = self.end(process)
        self.assertEqual((process.returncode, lines), (2, {"slow.wav": "failed", "z.wav": "done"}))
        self.assertEqual(said, "wavechain: slow.wav: its process was ended by signal 9 (Killed)\n"
                               "wavechain: 1 of 3 files failed\n")
        process, child = self.begin_waiting()
        while process.poll() is None:
            # Until it waits: a signal that comes before that is only noted.
            with contextlib.suppress(ProcessLookupError):
                os.kill(child, signal.SIGTERM)
            time.sleep(0.05)
        lines, said = self.end(process)
        self.assertEqual((process.returncode, lines), (130, {"slow.wav": "failed"}))
        self.assertIn("wavechain: slow.wav: interrupted; no output was left unfinished\n", said)

    def test_with_the_one_that_began_it(self):
        process, child = self.begin_waiting()
        process.kill()
        self.end(process)
        for _ in range(1000):
            if not os.path.exists(f"/proc/{child}"):
                break
            time.sleep(0.01)
        self.assertFalse(os.path.exists(f"/proc/{child}"))


class Usage(Batch):
    def test_before_anything_is_run(self):
        self.tones("a.wav", "b.wav")
        (self.folder / "d").mkdir()
        shutil.copy(self.folder / "a.wav", self.folder / "d" / "a.wav")
        chain = ["--chain", "c.toml"]
        self.refused("there is no file to run over; name some, or a list by --manifest", *chain)
        self.refused("no filter is given; add -f \"FIRNotch half_length=200\" or its like, or --chain FILE", "a.wav")
        self.refused("a.wav and d/a.wav would both be written to out/a.wav; name their outputs in a manifest",
                     "a.wav", "b.wav", "d/a.wav", *chain)
        self.refused("-: standard input is no file of a batch; use wavechain run", "a.wav", "-", *chain)
        self.refused("--jobs -1: takes 1 to 1024, or 0 for one for each processor", "a.wav", "--jobs", -1, *chain)
        self.refused("--jobs 2000: takes 1 to 1024, or 0 for one for each processor", "a.wav", "-j", 2000, *chain)
        self.refused('--rate goes with -t; a recording\'s rate is changed by -f "ResampleBlackman rate=16000"',
                     "a.wav", "--rate", 16000, *chain)
        self.refused("there is no option --frob; there are --help, --out, --manifest, --filter, --chain, --track, "
                     "--channel, --rate, --type, --allow-missing, --allow-truncated, --library-tail, --library, "
                     "--encoding, --format, --seed, --no-validity, --jobs, --keep-going, --shard, --log, --force, "
                     "--quiet", "a.wav", "--frob", 1, *chain)
        self.refused("--track: a wav file holds a single signal; write .csv, .npz or .ssff", "a.wav",
                     "--track", "x=SineFilter")
        for text in ("0/3", "4/3", "1", "a/b", "1/2/3", "-1/3"):
            self.refused(f"--shard {text}: takes I/N with I from 1 to N, as in --shard 3/8", "a.wav", *chain,
                         f"--shard={text}")
        self.refused("--log nowhere/log: cannot be opened: No such file or directory", "a.wav", *chain,
                     "--log", "nowhere/log", status=3)
        done = wavechain("batch", "a.wav", *chain, cwd=self.folder)
        self.assertEqual((done.returncode, done.stderr.decode()),
                         (1, "wavechain: --out is required; see wavechain batch --help\n"))
        done = wavechain("batch", "a.wav", *chain, "--out", "", cwd=self.folder)
        self.assertEqual((done.returncode, done.stderr.decode()), (1, "wavechain: --out '': names no folder\n"))

    def test_nothing_that_is_read_is_written(self):
        self.tones("a.wav", "b.wav")
        before = self.files(self.folder)
        for words, message in (
                (["a.wav", "b.wav", "--out", "."], "a.wav: the output ./a.wav is a.wav, which the batch needs"),
                (["a.wav", "--out", ".", "--format", "csv", "--log", "a.csv"],
                 "a.wav: the output ./a.csv is a.csv, which the batch needs")):
            (self.folder / "a.csv").write_bytes(b"")
            done = wavechain("batch", *words, "--chain", "c.toml", "--force", cwd=self.folder)
            self.assertEqual((done.returncode, done.stderr.decode()), (1, f"wavechain: {message}; name another --out\n"))
        (self.folder / "a.csv").unlink()
        (self.folder / "here").symlink_to(".")
        for log in ("a.csv", "./a.csv", "here/a.csv", self.folder / "a.csv", "a.csv.json"):
            done = wavechain("batch", "a.wav", "--out", ".", "--format", "csv", "--log", log, "--chain", "c.toml", "--force",
                             cwd=self.folder)
            self.assertEqual((done.returncode, done.stderr.decode()),
                             (1, f"wavechain: --log {log}: is where ./a.csv or its record goes; name another log\n"))
        self.assertEqual(self.files(self.folder), before)

    def test_folders_that_cannot_be_made(self):
        self.tones("a.wav")
        self.out.write_bytes(b"")
        _, said = self.batch("a.wav", "--chain", "c.toml", status=3)
        self.assertRegex(said, r"^wavechain: --out out: cannot be made: (Not a directory|File exists)\n$")
        self.out.unlink()
        done = wavechain("batch", "--out", "out", "a.wav", "--chain", "c.toml", cwd=self.folder,
                         env={**os.environ, "TMPDIR": "/nowhere"})
        self.assertEqual(done.returncode, 3)
        self.assertEqual(done.stderr.decode(), "wavechain: cannot make a temporary folder in /nowhere: No such file or "
                                               "directory; set TMPDIR\n")


if __name__ == "__main__":
    unittest.main()
