"""Memory that runs out in the middle of a command of wavechain: once, and for good.

A run asks for some 4000 blocks, a picture for 16000. In turn each of them is refused, alone or with all that
are asked for later. MEMORY_STEP=1 in the environment tries them all, which takes a quarter of an hour for a
picture and minutes for the rest; otherwise every Nth one is tried, from another one on for each of the two, and
from where a command begins to do what others do not.
"""

import collections
import os
import pathlib
import re
import resource
import shutil
import signal
import subprocess
import tempfile
import unittest

import hostile_recordings
import hostile_text
from host_commands import Commands
from memory_ways import PLUMBING, Functions, is_within

# What libraries do where memory runs out right there, whatever the caller does. Nothing else may do so.
#
# They end the process. libsndfile 1.2 writes to the buffer for a file's header, and libarchive 3.6 to that for
# a member's, without asking whether it got one. fontconfig 2.14 and cairo 1.16 do such things everywhere as
# they look for a font, and cairo jumps to where no function waits for it, and asserts that it has lost nothing.
CRASHES = re.compile(r"lib(sndfile|archive|fontconfig|cairo)\.so")
# They wait for ever: fontconfig 2.14 keeps the lock of its caches where it is refused a block for another one,
# and asks for that lock again.
HANGS = re.compile(r"libfontconfig\.so")
# They lose blocks.
LOSES = re.compile(r"lib(archive|fontconfig|cairo)\.so")
# They keep it to themselves: libsndfile reads no comment, cairo leaves something out of a picture, and
# fontconfig a part of its configuration.
SILENT = re.compile(r"lib(sndfile|fontconfig|cairo)\.so")

# A thousand times what a command takes.
PATIENCE_S = 30

OUT_OF_MEMORY = "wavechain: out of memory; no output was left unfinished. End other programs, or give it a shorter recording or a simpler chain\n"


class Memory(unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        cls.functions = Functions(os.environ["COMMANDS"])

    def setUp(self):
        held = tempfile.TemporaryDirectory()
        self.addCleanup(held.cleanup)
        self.folder = pathlib.Path(held.name)
        self.out = self.folder / "out"
        self.temporary = self.folder / "tmp"
        self.ended_at = self.folder / "ended"
        self.err_at = self.folder / "err"
        self.out.mkdir()
        self.temporary.mkdir()
        os.environ["TMPDIR"] = str(self.temporary)
        os.environ["ENDED_AT"] = str(self.ended_at)
        os.environ["ERR_AT"] = str(self.err_at)
        self.recording = self.folder / "take.wav"
        self.recording.write_bytes(hostile_recordings.wav())
        for kind, form in hostile_text.FORMATS.items():
            (self.folder / ("pal.dat" if kind == "pal" else f"take.{kind}")).write_bytes(hostile_text.text_of(form.lines))
        self.process = Commands()
        self.counts = collections.Counter()
        # What every command asks for before it is understood.
        self.common = self.process.run("no-such-command").asked - 100

    def tearDown(self):
        self.assertEqual(self.process.close(), 0)

    def run_command(self, arguments, **more):
        self.clear()
        return self.process.run(*arguments, patience_s=PATIENCE_S, **more)

    def clear(self):
        for old in [*self.out.iterdir(), *self.temporary.iterdir()]:
            if old.is_dir():
                shutil.rmtree(old)
            else:
                old.unlink()

    def written(self):
        return {path.name: path.read_bytes() for path in self.out.iterdir()}

    def made(self):
        """An output that tells how it was made."""
        self.process.run("run", self.recording, self.folder / "made.wav", "-f", "FIRFilter 5", "--force")
        return self.folder / "made.wav"

    def settle(self, arguments):
        """Runs until nothing is kept for the first time any more."""
        usual = [self.run_command(arguments) for _ in range(4)][-1]
        self.assertFalse(usual.threw)
        return usual

    def check(self, arguments, step, *, status=0, common=True, says=True, lives=0, least=1):
        """`says`: standard output always has the same text; `lives`: blocks that are kept in the end;
        `least`: of so many places at least memory is needed, for one at which it is not."""
        step = int(os.environ.get("MEMORY_STEP", step))
        first = 1 if step == 1 or not common else self.common
        self.counts.clear()
        self.usual = self.settle(arguments)
        self.assertEqual((self.usual.status, self.usual.live), (status, lives), self.usual.err)
        self.wanted = self.written()
        self.says = says
        self.process.stand_by()
        for from_there_on in (False, True):
            for refused in range(first + (step // 2 if from_there_on else 0), self.usual.asked + 1, step):
                with self.subTest(allocation=refused, and_later=from_there_on):
                    self.refuse(arguments, refused, from_there_on)
        if step == 1:
            print(arguments[0], *arguments[-2:], dict(self.counts), self.counts.total(), flush=True)
        needed = self.counts["failed"] + self.counts["ended at once"] + self.counts["ended by a library"]
        self.assertGreater(needed, least * self.counts["not needed"])
        again = self.settle(arguments)
        self.assertEqual((again.status, self.written()), (status, self.wanted))

    def refuse(self, arguments, refused, from_there_on):
        try:
            done = self.run_command(arguments, refuse=refused, from_there_on=from_there_on)
        except EOFError as ended:
            self.require_known_end(int(re.match("ended by (-?[0-9]+):", str(ended))[1]), arguments, refused, from_there_on)
            return
        self.assertFalse(done.threw)
        self.assertEqual(list(self.temporary.iterdir()), [], done.err)
        if not self.is_known_silence(done):
            self.require_clean_end(done)
        if done.live > self.usual.live:
            self.require_nothing_lost(arguments, refused, from_there_on)

    def is_known_silence(self, done):
        """Whether a library has made less of it without a word."""
        as_usual = done.status == self.usual.status and self.written() == self.wanted and (done.out == self.usual.out or not self.says)
        less = done.status == 0 or "carries no record" in done.err
        if as_usual or not less or not is_within(SILENT, self.functions.along(done.refused)):
            return False
        self.counts["less without a word"] += 1
        return True

    def require_clean_end(self, done):
        if done.status == self.usual.status and (done.status == 0 or done.out):
            # What was refused was not needed.
            self.counts["not needed"] += 1
            self.assertEqual(self.written(), self.wanted)
            if self.says:
                self.assertEqual(done.out, self.usual.out)
            return
        self.counts["failed"] += 1
        self.require_nothing_half_done()
        self.assertIn(done.status, (1, 2, 3))
        if done.err == self.usual.err:
            return
        # The loader does not always tell why it could not.
        self.assertRegex(done.err, "(?im)^wavechain: .*(memory|cannot be loaded: )")
        if self.says:
            self.assertEqual(done.out, "")
            self.assertEqual(sum(line.startswith("wavechain: ") for line in done.lines), 1, done.err)

    def require_nothing_half_done(self):
        """Of the files of a batch, some may be there."""
        written = self.written()
        if self.says:
            self.assertEqual(written, {})
        self.assertEqual({name: self.wanted.get(name) for name in written}, written)

    def require_nothing_lost(self, arguments, refused, from_there_on):
        """A library's cache is filled once; what is kept again by the same run is lost."""
        try:
            again = self.run_command(arguments, refuse=refused, from_there_on=from_there_on, trace=True)
        except EOFError:
            # A library ends over what it has lost.
            self.counts["lost by a library"] += 1
            return
        paths = [self.functions.along(path) for path in again.kept]
        if again.live <= self.usual.live:
            self.counts["caches filled"] += 1
        elif any(is_within(LOSES, names) for names in paths):
            self.counts["lost by a library"] += 1
        else:
            self.fail("\n".join([f"{again.live} blocks lost", *map(str, paths)]))

    def require_known_end(self, status, arguments, refused, from_there_on):
        """In order, where nobody could be told; by a library otherwise, which must have been refused a block."""
        if status == 2:
            self.assertEqual(self.err_at.read_text().splitlines(True)[-1], OUT_OF_MEMORY)
            self.assertEqual(list(self.temporary.iterdir()), [])
            self.require_nothing_half_done()
            self.counts["ended at once"] += 1
            return
        self.assertIn(status, (-signal.SIGABRT, -signal.SIGSEGV, -signal.SIGALRM))
        known = HANGS if status == -signal.SIGALRM else CRASHES
        ways = self.ways_to_end()
        if not ways["refused"]:
            # Its stack is spoilt: what was refused is noted before it ends.
            with self.assertRaises(EOFError):
                self.run_command(arguments, refuse=refused, from_there_on=from_there_on, tell=True)
            ways = self.ways_to_end()
        self.assertTrue(is_within(known, ways["refused"]), ways)
        # Behind the handler and what the system puts below it.
        here = [name for name in ways["ended"][2:] if not PLUMBING.match(name)]
        self.assertTrue(not here or is_within(known, here) or "Drawing::End" in here[0], ways)
        self.assertFalse(set(self.written()) & set(self.wanted))
        self.counts["ended by a library"] += 1

    def ways_to_end(self):
        """To the last refusal, and to where the process has ended: names of functions."""
        paths = {"refused": [], "ended": []}
        if self.ended_at.exists():
            for line in self.ended_at.read_text().splitlines():
                way, file, offset = line.split(" ")
                paths[way].append((file, int(offset, 16)))
            self.ended_at.unlink()
        return {way: self.functions.along(path) for way, path in paths.items()}

    def test_of_a_run(self):
        self.check(["run", self.recording, self.out / "out.wav", "-f", "BeamData mode=speed", "-f", "FIRFilter 5"], 7, common=False)

    def test_of_events(self):
        self.check(["run", self.recording, self.out / "out.wav", "-f", "GlotSyn"], 7)

    def test_of_tracks(self):
        self.check(["run", self.recording, self.out / "out.csv", "--track", "speed=BeamData mode=speed", "--track", "low=FIRFilter 5"], 17)

    def test_of_arrays(self):
        self.check(["run", self.recording, self.out / "out.npz", "-f", "FIRFilter 5"], 7)

    def test_of_a_batch(self):
        other = self.folder / "other.wav"
        shutil.copy(self.recording, other)
        arguments = ["batch", self.recording, other, "--out", self.out, "--jobs", "1", "-f", "FIRFilter 5"]
        # Each one gives TMPDIR another value, and the C library keeps all of them.
        self.check(arguments, 7, says=False, lives=2)

    def test_of_lists(self):
        self.check(["list"], 7)
        self.check(["list", "--json"], 97)

    def test_of_checks(self):
        self.check(["check", self.recording, "-f", "FIRFilter 5"], 7)
        self.check(["check", self.recording, "-f", "FIRFilter 5", "--json"], 7)

    def test_of_comparisons(self):
        self.check(["diff", self.recording, self.made(), "--json"], 7, status=1)
        self.check(["diff", self.recording, self.recording], 7)

    def test_of_records(self):
        made = self.made()
        self.check(["show", made], 7)
        self.check(["show", made, "--json"], 7)
        self.check(["rerun", made], 23)
        self.check(["rerun", made, self.out / "again.wav"], 23)

    def test_of_help(self):
        self.check(["help"], 7)
        self.check(["help", "run"], 7)
        self.check(["--generate", "man"], 97)

    def test_of_an_option_that_there_is_not(self):
        self.check(["run", self.recording, self.out / "out.wav", "--no-such-option-at-all"], 7, status=1)

    def test_of_a_picture(self):
        self.check(["plot", self.recording, self.out / "out.png", "-f", "FIRFilter 5", "--size", "300x300"], 701, least=0.2)

    def test_of_a_response(self):
        self.check(["plot", self.out / "out.png", "--response", "-f", "FIRFilter 5", "--size", "300x300", "--layout"], 1499, least=0.2)

    def test_of_a_picture_that_finds_no_room(self):
        # Its pixels alone take 400 MB.
        command = [os.environ["WAVECHAIN"], "plot", self.out / "out.png", "--response", "--size", "10000x10000", "-f", "FIRNotch 20 2500", "--library", os.environ["LIBRARY"]]
        done = subprocess.run(command, capture_output=True, text=True, check=False, preexec_fn=lambda: resource.setrlimit(resource.RLIMIT_AS, (350 << 20,) * 2))
        self.assertEqual((done.returncode, done.stderr.splitlines()[-1:]), (3, ["wavechain: the picture cannot be drawn: out of memory"]))
        self.assertEqual(self.written(), {})

    def test_of_a_word_too_many(self):
        arguments = ["run", self.recording, self.out / "out.wav", "too", "many"]
        usual = self.settle(arguments)
        self.assertEqual((usual.status, usual.live), (1, 0), usual.err)
        # What is said of the word is put together in the end.
        for from_there_on in (False, True):
            for refused in range(usual.asked - 200, usual.asked + 1):
                with self.subTest(allocation=refused, and_later=from_there_on):
                    done = self.run_command(arguments, refuse=refused, from_there_on=from_there_on)
                    self.assertIn(done.err, (usual.err, OUT_OF_MEMORY))
                    self.usual = usual
                    if done.live != 0:
                        self.require_nothing_lost(arguments, refused, from_there_on)


if __name__ == "__main__":
    unittest.main()
