"""Calls to the system that fail: every file that wavechain reads, every output that it writes."""

import errno
import os
import pathlib
import re
import subprocess
import tempfile
import unittest

import hostile_chains
import hostile_recordings
import hostile_text
from host_commands import Commands

ROOM_STEPS = 12  # places of an output at which the disk is full


class Faults(unittest.TestCase):
    def setUp(self):
        held = tempfile.TemporaryDirectory()
        self.addCleanup(held.cleanup)
        self.folder = pathlib.Path(held.name)
        self.out = self.folder / "out"
        self.temporary = self.folder / "tmp"
        self.out.mkdir()
        self.temporary.mkdir()
        os.environ["TMPDIR"] = str(self.temporary)
        self.recording = self.write("take.wav", hostile_recordings.wav())
        for kind, form in hostile_text.FORMATS.items():
            self.write("pal.dat" if kind == "pal" else f"take.{kind}", hostile_text.text_of(form.lines))
        self.write("take.iop", bytes(1024) + bytes(range(200)))
        self.process = Commands()

    def tearDown(self):
        self.assertEqual(self.process.close(), 0)

    def write(self, name, content):
        (self.folder / name).write_bytes(content)
        return self.folder / name

    def written(self):
        return {path.name: path.read_bytes() for path in self.out.iterdir()}

    def run_command(self, *arguments, **more):
        for old in self.out.iterdir():
            old.unlink()
        done = self.process.run(*arguments, **more)
        self.assertFalse(done.threw, done)
        self.assertEqual(list(self.temporary.iterdir()), [], "temporary files are left")
        return done

    def expect_failure(self, status, words, *arguments, **more):
        done = self.run_command(*arguments, **more)
        self.assertEqual(done.status, status, done)
        self.assertEqual(self.written(), {})
        self.assertEqual(done.out, "")
        for word in words:
            self.assertIn(word, done.lines[-1])
        self.assertEqual(sum(line.startswith("wavechain: ") for line in done.lines), 1, done.err)

    def expect_same(self, wanted, *arguments, **more):
        done = self.run_command(*arguments, **more)
        self.assertEqual(done.status, 0, done.err)
        self.assertEqual(self.alike(self.written()), self.alike(wanted))

    def alike(self, written):
        """Outputs without the numbers that cairo counts on from one SVG picture of a process to the next."""
        return {name: content if not name.endswith(".svg") else re.sub(rb"\d", b"", content) for name, content in written.items()}


class Reading(Faults):
    def cases(self):
        """File that is read, its command, the status of a failure."""
        out = self.out / "out.wav"
        run = ("run", self.recording, out)
        for kind, form in hostile_text.FORMATS.items():
            name = "pal.dat" if kind == "pal" else f"take.{kind}"
            text = form.filter_text.format(self.folder / name, xyd=self.folder / "take.xyd", pal=self.folder / "pal.dat")
            yield name, (*run, "-f", text), 2
        yield "take.wav", (*run, "-f", "FIRFilter 5"), 2
        self.write("second.wav", hostile_recordings.wav())
        yield "second.wav", (*run, "-f", f"SumSources with={self.folder}/second.wav"), 2
        self.write("chain.toml", hostile_chains.GOOD)
        yield "chain.toml", (*run, "--chain", self.folder / "chain.toml"), 1

    def test_an_error_while_a_file_is_read_is_said(self):
        for name, command, status in self.cases():
            for after in (0, 1, 30):
                with self.subTest(file=name, after=after):
                    fault = {"call": "read", "path": name, "error": errno.EIO, "after": after}
                    self.expect_failure(status, [name, os.strerror(errno.EIO)], *command, fault=fault)

    def data_cases(self):
        """Of files that filters read themselves."""
        return [case for case in self.cases() if not case[0].endswith((".wav", ".toml"))]

    def test_an_error_once_the_filter_reads_is_said(self):
        # Too long for one reading: checked twice as a whole, it is then read on by the filter.
        pellets = self.write("take.xyd", hostile_text.text_of(hostile_text.FORMATS["xyd"].lines).replace(b"\n", b" " * 3000 + b"\n"))
        fault = {"call": "read", "path": "take.xyd", "error": errno.EIO, "after": 2 * pellets.stat().st_size + 8200}
        for chain in ("BeamPel", "BeamData mode=speed"):
            with self.subTest(chain):
                words = f"wavechain: {pellets}: could not be read on, because of its disk or for want of memory; run again"
                self.expect_failure(2, [words], "run", self.recording, self.out / "out.wav", "--no-record", "-f", chain, fault=fault)

    def test_a_file_that_finds_no_temporary_name_is_said(self):
        for name, command, status in self.data_cases():
            for error in (errno.ENOSPC, errno.EROFS):
                with self.subTest(file=name, error=errno.errorcode[error]):
                    words = f"wavechain: cannot give {self.folder / name} a temporary name: {os.strerror(error)}"
                    self.expect_failure(status, [words], *command, fault={"call": "symlink", "path": name, "error": error})

    def test_an_error_at_the_opening_is_said(self):
        for name, command, status in self.cases():
            for error in (errno.EACCES, errno.EMFILE, errno.ENFILE, errno.EIO, errno.ELOOP, errno.ENXIO):
                with self.subTest(file=name, error=errno.errorcode[error]):
                    self.expect_failure(status, [name, os.strerror(error)], *command, fault={"call": "open", "path": name, "error": error})

    def test_files_that_others_may_not_read_are_said_to_be_such(self):
        for name, command, status in self.cases():
            with self.subTest(name):
                (self.folder / name).chmod(0)
                self.expect_failure(status, [name, os.strerror(errno.EACCES)], *command)
                (self.folder / name).chmod(0o600)

    def test_short_and_interrupted_reads_change_nothing(self):
        for name, command, _ in self.cases():
            self.run_command(*command)
            wanted = self.written()
            self.assertEqual(len(wanted), 1)
            for fault in ({"call": "short", "after": 1}, {"call": "short", "after": 7}, {"call": "interrupted"}):
                with self.subTest(file=name, **fault):
                    self.expect_same(wanted, *command, fault={**fault, "path": name})

    def test_too_few_files_may_be_open(self):
        command = ("run", self.recording, self.out / "out.wav", "-f", "BeamData mode=speed", "-f", f"SumSources with={self.recording}", "--no-record")
        self.run_command(*command)
        wanted = self.written()
        most = len(list(pathlib.Path(f"/proc/{self.process.process.pid}/fd").iterdir())) + 12
        statuses = set()
        said = set()
        for files in range(4, most):
            with self.subTest(files=files):
                done = self.run_command(*command, files=files)
                statuses.add(done.status)
                if done.status == 0:
                    self.assertEqual(self.written(), wanted)
                else:
                    self.assertEqual(self.written(), {})
                    self.assertRegex(done.lines[-1], f"(?i)^wavechain: .*{os.strerror(errno.EMFILE)}")
                    said.add(done.lines[-1])
        self.assertIn(0, statuses)
        self.assertIn(2, statuses)
        self.assertIn(f"wavechain: filter 1 (BeamData): its data files cannot be opened: {os.strerror(errno.EMFILE)}", said)


class Writing(Faults):
    def outputs(self):
        run = ("run", self.recording)
        for name in ("out.wav", "out.flac", "out.aiff", "out.w64", "out.rf64", "out.au", "out.caf", "out.csv", "out.npy", "out.npz", "out.ssff"):
            more = () if name != "out.npz" else ("--track",)
            chain = ("--track", "speed=BeamData mode=speed") if more else ("-f", "BeamData mode=speed")
            yield name, (*run, self.out / name, "-q", *chain)
        for name in ("out.png", "out.svg", "out.pdf"):
            yield name, ("plot", self.recording, self.out / name, "-q", "--size", "300x200")

    def test_a_disk_that_is_full_leaves_nothing_behind(self):
        for name, command in self.outputs():
            done = self.run_command(*command)
            self.assertEqual(done.status, 0, done.err)
            whole = max(len(content) for content in self.written().values())
            for room in sorted({0, 1, whole - 1, *range(0, whole, max(whole // ROOM_STEPS, 1))}):
                with self.subTest(output=name, room=room):
                    fault = {"call": "write", "path": ".part", "error": errno.ENOSPC, "after": room}
                    self.expect_failure(3, [name.partition(".")[0], os.strerror(errno.ENOSPC)], *command, fault=fault)

    def test_every_step_to_the_finished_file_is_checked(self):
        for name, command in self.outputs():
            for call, path in (("fsync", ".part"), ("close", ".part"), ("rename", "/out/"), ("open", ".part")):
                for error in (errno.EIO, errno.ENOSPC, errno.EDQUOT):
                    with self.subTest(output=name, call=call, error=errno.errorcode[error]):
                        fault = {"call": call, "path": path, "error": error}
                        self.expect_failure(3, [name.partition(".")[0], os.strerror(error)], *command, fault=fault)

    def test_a_record_beside_an_output_comes_with_it_or_not_at_all(self):
        out, record = self.out / "out.csv", self.out / "out.csv.json"
        # The output is the first that is made and the last that gets its name.
        faults = (("fsync", "-0.part", 0), ("close", "-0.part", 0), ("fsync", "-1.part", 0), ("close", "-1.part", 0), ("rename", "/out/", 0), ("rename", "/out/", 1))
        for chain in (("-f", "BeamData mode=speed"), ("--track", "speed=BeamData mode=speed")):
            command = ("run", self.recording, out, "-q", *chain)
            for call, path, after in faults:
                with self.subTest(chain=chain[0], call=call, path=path, after=after):
                    fault = {"call": call, "path": path, "error": errno.EIO, "after": after}
                    self.expect_failure(3, ["out.csv", os.strerror(errno.EIO)], *command, fault=fault)
                    out.write_bytes(b"old")
                    record.write_bytes(b"its record")
                    done = self.process.run(*command, "--force", fault=fault)
                    self.assertEqual(done.status, 3, done)
                    # The new record has taken the old one's place by then, and tells nothing of the old output.
                    wanted = {"out.csv": b"old"} if after else {"out.csv": b"old", "out.csv.json": b"its record"}
                    self.assertEqual(self.written(), wanted)

    def test_short_and_interrupted_writes_change_nothing(self):
        for name, command in self.outputs():
            self.run_command(*command)
            wanted = self.written()
            for fault in ({"call": "short", "after": 11}, {"call": "interrupted"}):
                with self.subTest(output=name, **fault):
                    self.expect_same(wanted, *command, fault={**fault, "path": ".part"})

    def test_a_folder_that_is_read_only_is_said_to_be_such(self):
        for name, command in self.outputs():
            with self.subTest(name):
                self.run_command(*command)
                for old in self.out.iterdir():
                    old.unlink()
                self.out.chmod(0o555)
                try:
                    self.expect_failure(3, [name.partition(".")[0], os.strerror(errno.EACCES)], *command)
                finally:
                    self.out.chmod(0o755)

    def test_standard_output_that_fails_is_an_error(self):
        for error in (errno.EPIPE, errno.ENOSPC, errno.EIO):
            for command in (("run", self.recording, "-", "-f", "FIRFilter 5"), ("check", self.recording, "-f", "FIRFilter 5"), ("list",), ("diff", self.recording, self.recording), ("info", "FIRNotch")):
                with self.subTest(command=command[0], error=errno.errorcode[error]):
                    fault = {"call": "write", "path": "captured-1", "error": error}
                    status = 2 if command[0] == "diff" else 3
                    self.expect_failure(status, ["standard output", os.strerror(error)], *command, fault=fault)

    def test_no_folder_for_temporary_files(self):
        os.environ["TMPDIR"] = str(self.folder / "missing")
        process = Commands()
        for command, status in ((("run", self.recording, "-", "-f", "FIRFilter 5"), 3), (("run", self.recording, self.out / "out.wav", "-f", "BeamData mode=speed"), 2)):
            done = process.run(*command)
            self.assertEqual(done.status, status)
            self.assertIn("missing", done.lines[-1])
        self.assertEqual(process.close(), 0)

    def test_a_pipe_that_nobody_reads_ends_the_program_by_itself(self):
        reader, writer = os.pipe()
        os.close(reader)
        program = [os.environ["WAVECHAIN"], "run", self.recording, "-", "-q", "-f", "FIRFilter 5"]
        done = subprocess.run(program, stdout=writer, stderr=subprocess.PIPE, check=False)
        os.close(writer)
        self.assertEqual(done.returncode, 3)
        self.assertEqual(done.stderr.decode(), "wavechain: standard output: cannot be written: Broken pipe\n")


if __name__ == "__main__":
    unittest.main()
