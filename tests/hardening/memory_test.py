"""Memory that runs out in the middle of a run of wavechain: once, and for good.

A run asks for some 4000 blocks. In turn each of them is refused, alone or with all that are asked for
later. MEMORY_STEP=1 in the environment tries them all, which takes a minute; otherwise every Nth one
is tried, from another one on for each of the two.
"""

import bisect
import collections
import os
import pathlib
import re
import resource
import shutil
import subprocess
import tempfile
import unittest

import hostile_recordings
import hostile_text
from host_commands import Commands

# What ends the process, whatever the caller does, and only where memory runs out right there. The output
# is not there then, but its part and the temporary folder are. Nothing else may end it.
#
# nlohmann-json 3.11 takes memory to give memory back: its destructors, which must not throw, move the
# members of an array or object into a vector of their own.
ABORTS = re.compile(r"nlohmann::\w+::basic_json::(json_value::destroy|~basic_json)$")
# libsndfile 1.2 writes to the buffer for a file's header without asking whether it got one.
CRASHES = "libsndfile.so"
# What others ask for memory through. Who called them decides.
PLUMBING = re.compile(
    r"((malloc|calloc|realloc|memalign|aligned_alloc|posix_memalign)$"
    r"|operator_new|\{anonymous\}::(New|NewAligned|Aligned|Counted|Refuse|TraceInto|TracedBlocks::Add)$"
    r"|std::|__gnu_cxx::|libc\.so|libstdc\+\+\.so)"
)

OUT_OF_MEMORY = "wavechain: out of memory; no output was left unfinished. End other programs, or give it a shorter recording or a simpler chain\n"


def bare(signature):
    """The name of a function alone: of "int a::b<c>::d<e>(f<g>) const", a::b::d."""
    shorter, name = signature.replace("(anonymous namespace)", "{anonymous}").replace("operator ", "operator_"), ""
    while shorter != name:
        name, shorter = shorter, re.sub("<[^<>]*>", "", shorter)
    return name.split("(")[0].split(" ")[-1]


class Functions:
    """The names of the functions of a program, which may lie anywhere in memory."""

    def __init__(self, program):
        lines = subprocess.run(["nm", "-C", "--defined-only", program], capture_output=True, text=True, check=True).stdout.splitlines()
        table = sorted((int(at, 16), name) for at, kind, name in (line.split(" ", 2) for line in lines) if kind in "tTwWuV")
        self.program = program
        self.places, self.names = zip(*table)

    def at(self, file, offset):
        """The function's name; in another file, the file's."""
        if file != self.program:
            return os.path.basename(file)
        # An address of return lies behind its call.
        return bare(self.names[bisect.bisect_right(self.places, offset - 1) - 1])

    def along(self, path):
        return [self.at(file, offset) for file, offset in path]


def asker(names):
    """Who asked for memory, at the end of this way."""
    return next(name for name in names if not PLUMBING.match(name))


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
        self.out.mkdir()
        self.temporary.mkdir()
        os.environ["TMPDIR"] = str(self.temporary)
        os.environ["ENDED_AT"] = str(self.ended_at)
        self.recording = self.folder / "take.wav"
        self.recording.write_bytes(hostile_recordings.wav())
        for kind, form in hostile_text.FORMATS.items():
            (self.folder / ("pal.dat" if kind == "pal" else f"take.{kind}")).write_bytes(hostile_text.text_of(form.lines))
        self.process = Commands()
        self.counts = collections.Counter()

    def tearDown(self):
        self.assertEqual(self.process.close(), 0)

    def run_chain(self, arguments, **more):
        self.clear()
        return self.process.run("run", self.recording, *arguments, **more)

    def clear(self):
        for old in self.out.iterdir():
            old.unlink()
        for old in self.temporary.iterdir():
            shutil.rmtree(old)

    def written(self):
        return {path.name: path.read_bytes() for path in self.out.iterdir()}

    def settle(self, arguments):
        """Runs until nothing is kept for the first time any more; returns the allocations of one run."""
        for _ in range(4):
            done = self.run_chain(arguments)
            self.assertEqual(done.status, 0, done.err)
        self.assertEqual(done.live, 0)
        return done.asked

    def check(self, arguments, step):
        step = int(os.environ.get("MEMORY_STEP", step))
        asked = self.settle(arguments)
        wanted = self.written()
        self.assertTrue(wanted)
        for from_there_on in (False, True):
            for refused in range(1 + (step // 2 if from_there_on else 0), asked + 1, step):
                with self.subTest(allocation=refused, and_later=from_there_on):
                    self.refuse(arguments, refused, from_there_on, wanted)
        self.assertGreater(self.counts["failed"], self.counts["not needed"])
        self.assertLess(self.counts["aborted"] + self.counts["crashed"], 0.1 * self.counts.total())
        self.run_chain(arguments)
        self.assertEqual(self.written(), wanted)

    def refuse(self, arguments, refused, from_there_on, wanted):
        try:
            done = self.run_chain(arguments, refuse=refused, from_there_on=from_there_on)
        except EOFError as ended:
            self.require_known_end(ended)
            self.settle(arguments)
            return
        self.counts["not needed" if done.status == 0 else "failed"] += 1
        self.require_clean_end(done, wanted)
        if done.live != 0:
            self.require_nothing_lost(arguments, refused, from_there_on)

    def require_clean_end(self, done, wanted):
        self.assertFalse(done.threw)
        self.assertEqual(list(self.temporary.iterdir()), [], done.err)
        if done.status == 0:
            # What was refused was not needed.
            self.assertEqual(self.written(), wanted)
            return
        self.assertEqual(self.written(), {})
        self.assertIn(done.status, (1, 2, 3))
        # The loader does not always tell why it could not.
        self.assertRegex(done.lines[-1], "(?i)^wavechain: .*(memory|cannot be loaded: )")
        self.assertEqual(sum(line.startswith("wavechain: ") for line in done.lines), 1, done.err)

    def require_nothing_lost(self, arguments, refused, from_there_on):
        """A library's cache is filled once; what is kept again by the same run is lost."""
        again = self.run_chain(arguments, refuse=refused, from_there_on=from_there_on, trace=True)
        if again.live != 0:
            self.fail("\n".join([f"{again.live} blocks lost", *(str(self.functions.along(path)) for path in again.kept)]))
        self.counts["caches filled"] += 1

    def require_known_end(self, ended):
        """What asked for the last block that was refused must be what ends the process itself."""
        paths = collections.defaultdict(list)
        for line in self.ended_at.read_text().splitlines():
            way, file, offset = line.split(" ")
            paths[way].append((file, int(offset, 16)))
        self.ended_at.unlink()
        refused = self.functions.along(paths["refused"])
        if "ended by -11" in str(ended):
            # Behind the handler and what the system puts below it.
            here = self.functions.along(paths["ended"])[2:]
            self.assertIn(CRASHES, next(name for name in here if "libc.so" not in name), here)
            self.assertIn(CRASHES, asker(refused), refused)
            self.counts["crashed"] += 1
        else:
            self.assertIn("ended by -6", str(ended))
            self.assertRegex(asker(refused), ABORTS, refused)
            self.counts["aborted"] += 1
        self.assertFalse(set(self.written()) & {"out.wav", "out.csv"})

    def test_of_a_run(self):
        self.check([self.out / "out.wav", "-f", "BeamData mode=speed", "-f", "FIRFilter 5"], 7)

    def test_of_events(self):
        self.check([self.out / "out.wav", "-f", "GlotSyn"], 23)

    def test_of_tracks(self):
        self.check([self.out / "out.csv", "--track", "speed=BeamData mode=speed", "--track", "low=FIRFilter 5"], 23)

    def test_of_a_picture_that_finds_no_room(self):
        # Its pixels alone take 400 MB.
        command = [os.environ["WAVECHAIN"], "plot", self.out / "out.png", "--response", "--size", "10000x10000", "-f", "FIRNotch 20 2500", "--library", os.environ["LIBRARY"]]
        done = subprocess.run(command, capture_output=True, text=True, check=False, preexec_fn=lambda: resource.setrlimit(resource.RLIMIT_AS, (350 << 20,) * 2))
        self.assertEqual((done.returncode, done.stderr.splitlines()[-1:]), (3, ["wavechain: the picture cannot be drawn: out of memory"]))
        self.assertEqual(self.written(), {})

    def test_of_a_word_too_many(self):
        arguments = [self.out / "out.wav", "too", "many"]
        # The first times fill caches.
        usual = [self.run_chain(arguments) for _ in range(4)][-1]
        self.assertEqual((usual.status, usual.live), (1, 0), usual.err)
        # What is said of the word is put together in the end.
        for from_there_on in (False, True):
            for refused in range(usual.asked - 200, usual.asked + 1):
                with self.subTest(allocation=refused, and_later=from_there_on):
                    done = self.run_chain(arguments, refuse=refused, from_there_on=from_there_on)
                    self.assertIn(done.err, (usual.err, OUT_OF_MEMORY))
                    if done.live != 0:
                        self.require_nothing_lost(arguments, refused, from_there_on)


if __name__ == "__main__":
    unittest.main()
