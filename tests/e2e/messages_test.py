"""Error messages and warnings word for word: a command line each, its exit status, and what it says."""

import os
import shutil
import signal
import struct
import subprocess
import unittest

from wavechain_runs import SAMPLES, WAVECHAIN, Folder, wavechain

RUN = ("run", "take3.wav", "o.wav", "-q")
PLOT = ("plot", "take3.wav", "o.png", "-q")
RESPONSE = ("plot", "--response", "o.png", "-q")
SILENCE = ("--silence", "1", "--rate", "8000")

# Exit status, command line, message.
ERRORS = [
    (1, ("run", "take3.wav", "o.wax", "-f", "SineFilter"),
     "o.wax: the extension .wax names no format; did you mean wav? (or give --format, as in --format wav)"),
    (1, ("run", "take3.wav", "o.csv", "--encoding", "pcm16", "-f", "SineFilter"),
     "--encoding pcm16: a csv file has no choice of encodings; leave it out"),
    (1, ("run", "take3.wav", "o.s16", "--encoding", "pcm24", "-f", "SineFilter"),
     "--encoding pcm24: s16 samples are pcm16; leave it out"),
    (1, ("run", "two.wav", "o.wav", "-f", "SineFilter"), "two.wav: has 2 channels; choose one by --channel 1 to --channel 2"),
    (1, ("run", "two.wav", "o.wav", "--channel", "3", "-f", "SineFilter"), "--channel 3: two.wav has channels 1 to 2"),
    (1, (*RUN, "--channel", "2", "-f", "SineFilter"), "--channel 2: take3.wav has 1 channel"),
    (1, (*RUN, "-f", "ResampleBlackman rate=0.0001234567"),
     "filter 1 (ResampleBlackman): 16000 Hz and rate=0.0001234567 have no ratio of whole numbers that a resampler takes"),
    (1, (*RUN, "-f", "ResampleBlackman rate=16001"),
     "filter 1 (ResampleBlackman): 16000 Hz times 16001 / 16000 takes a kernel that is too long: at quality=good no prime "
     "factor may exceed 52; choose a rate nearby"),
    (1, (*RUN, "-f", "SumSources with=slow.wav"),
     'filter 1 (SumSources): take3.wav comes at 16000 Hz, slow.wav at 8000 Hz; both must have one rate, as by with="slow.wav | '
     'ResampleBlackman rate=16000"'),
    (1, (*RUN, "-f", "SumSources"),
     "-f 'SumSources': with is missing (the second signal: a recording, and filters that it goes through by choice); add "
     'with="FILE | FILTER | ..."'),
    (1, (*RUN, "-f", "SetTrack speed=3"), "-f 'SetTrack speed=3': SetTrack has no parameter 'speed'; there are data"),
    (1, (*RUN, "-f", "ResampleBlackman 3 2 1 quality=good"),
     "-f 'ResampleBlackman 3 2 1 quality=good': quality settles all parameters but down and up; leave out down_start or quality"),
    (1, (*RUN, "-f", "ResampleBlackman 3 rate=8000"),
     "-f 'ResampleBlackman 3 rate=8000': rate settles all parameters; leave out down or rate"),
    (1, ("run", "-q", "o.wav", *SILENCE, "-f", "GlotSyn"),
     "filter 1 (GlotSyn): its data file would lie beside the recording, but there is no recording's name; add events=FILE"),
    (1, ("run", "take3.wav", "o.wav", *SILENCE, "-f", "SineFilter"),
     "with --silence there is no recording: name OUT alone, not take3.wav too"),
    (1, ("run", "o.wav", "--silence", "1", "--rate", "0.5", "-f", "SineFilter"),
     "--rate 0.5: a sampling rate is 1 to 1000000 Hz"),
    (1, (*RUN, "--track", "two words=SineFilter"),
     "--track 'two words=SineFilter': takes a name of letters, digits, _, - and ., then = and a chain, as in speed=\"BeamData "
     'mode=speed | FIRFilter 20"'),
    (2, ("run", "data", "o.wav", "-f", "SineFilter"), "data: is a folder, not a recording"),
    (2, ("run", "none.wav", "o.wav", "-f", "SineFilter"), "none.wav: cannot be opened: No such file or directory"),
    (2, (*RUN, "-f", "BeamPel data=none.xyd"),
     "filter 1 (BeamPel): none.xyd: there is no such file; name the file by data=FILE, or run without it by --allow-missing"),
    (3, ("run", "take3.wav", "data/", "--format", "wav", "-f", "SineFilter"), "'data/': names no file to write"),
    (3, ("run", "take3.wav", "data", "--format", "wav", "-f", "SineFilter"),
     "data: is a folder; name a file, or - for standard output"),
    (3, ("run", "take3.wav", "pipe", "--format", "wav", "-f", "SineFilter"),
     "pipe: is not a regular file; name a file, or - for standard output"),
    (3, ("run", "take3.wav", "piped.csv", "-f", "SineFilter"),
     "piped.csv.json: is not a regular file; name a file, or - for standard output"),
    (2, ("show", "pipe"), "pipe: cannot be opened: it is no regular file"),
    (3, ("run", "take3.wav", "nowhere/o.wav", "-f", "SineFilter"), "nowhere/o.wav: cannot be written: No such file or directory"),
    (3, ("run", "take3.wav", "take3.wav", "--force", "-f", "SineFilter"), "take3.wav: is the input itself; name another output"),
    (3, ("run", "o.wav", "-q", "--silence", "8", "--rate", "1", "-f", "ResampleBlackman down=8 up=1"),
     "o.wav: no audio file has the sampling rate of 0.125 Hz"),
    (1, (*PLOT, "--max-frequency", "0"), "--max-frequency 0: takes 0.001 to 1000000 Hz"),
    (1, (*PLOT, "--window", "0"), "--window 0: takes 0.1 to 1000 ms"),
    (1, (*PLOT, "--dynamics", "0"), "--dynamics 0: takes 1 to 300 dB"),
    (1, (*PLOT, "--from", "-1"), "--from -1: takes seconds from 0"),
    (1, ("plot", "o.png", "--silence", "0", "--rate", "8000", "-f", "SineFilter"), "--silence 0: takes seconds above 0, up to 1000000"),
    (1, ("plot", "o.png", "--silence", "1", "--rate", "0", "-f", "SineFilter"), "--rate 0: a sampling rate is 1 to 1000000 Hz"),
    (1, ("plot", "o.png", *SILENCE), "with --silence there is nothing to draw without a filter; add -f or --track"),
    (2, ("plot", "empty.wav", "o.png", "-q"), "empty.wav: holds no sample; there is nothing to draw"),
    (1, ("plot", "take3.wav", "o.gif"), "o.gif: pictures are written as .png, .svg or .pdf; name it so, or choose by --format"),
    (1, (*PLOT, "--format", "gif"), "--format gif: pictures are written as png, svg or pdf"),
    (1, (*PLOT, "-f", "SineFilter", "--track", "after=SineFilter"),
     "--track after: there are two signals of that name; choose another"),
    (1, ("plot", "take3.wav", "-", "--format", "png", "--layout"), "--layout writes to standard output; name a file for the picture"),
    (1, ("plot", "take3.wav", "o.png", *SILENCE), "with --silence there is no recording: name OUT alone, not take3.wav too"),
    (1, ("plot",), "IN is required; see wavechain plot --help"),
    (1, ("plot", "take3.wav"), "OUT is required; see wavechain plot --help"),
    (1, (*PLOT, "--size", "100x100"), "--size 100x100: takes width and height from 200 to 10000, as in --size 1200x800"),
    (1, (*PLOT, "--size", "200x200", "-f", "SineFilter", "--track", "a=SineFilter"),
     "--size 200x200: too small for 6 panels; 1000x1250 is what they take by themselves"),
    (1, (*PLOT, "--phase"), "--phase goes with --response"),
    (1, (*RESPONSE, "--from", "1", "-f", "FIRFilter 3"), "--from goes with a recording, not with --response"),
    (1, RESPONSE, 'a response is that of filters; add -f "FIRNotch half_length=200" or its like'),
    (1, (*RESPONSE, "-f", "FIRFilter 3", "-f", "SineFilter"),
     "filter 2 (SineFilter): has no frequency response: it makes a signal of its own, whatever comes in; --response takes FIRFilter "
     "and FIRNotch"),
    (2, (*RESPONSE, "-f", "FIRNotch 20 edge_weight=1e300"), "the response to an impulse is not finite"),
]  # fmt: skip

# Command line, a line of what it reports or warns of.
REPORTS = [
    (("-f", "BeamPel data=data/positions.xyd"),
     "warning: data/positions.xyd: its numbers look like positions, but the filter adds them up: it wants differences, each record "
     "minus the one before"),
    (("-f", "BeamPel data=data/torn.xyd"), "warning: data/torn.xyd: line 3: 6 numbers wanted, there is 1; the data end there"),
    (("-f", "BeamData palate palate=data/point.dat"),
     "warning: data/point.dat: with a single point none is searched: the distance is 1000 everywhere"),
    (("-f", "BeamData palate palate=data/torn.dat"), "warning: data/torn.dat: line 3: an x and a y wanted, there is 1; the contour ends there"),
    (("-f", "BeamData speed palate=none.dat", "--allow-missing"),
     "warning: filter 1 (BeamData): none.dat: there is no such file; the measure does without it"),
]  # fmt: skip


def write_wav(path, rate, channels, samples):
    data = struct.pack(f"<{len(samples)}h", *samples)
    form = struct.pack("<HHIIHH", 1, channels, rate, 2 * channels * rate, 2 * channels, 16)
    body = b"WAVEfmt " + struct.pack("<I", len(form)) + form + b"data" + struct.pack("<I", len(data)) + data
    path.write_bytes(b"RIFF" + struct.pack("<I", len(body)) + body)


class Messages(Folder):
    def setUp(self):
        super().setUp()
        for name in ("take3.wav", "take3.xyd", "pal.dat"):
            shutil.copy(SAMPLES / name, self.folder / name)
        write_wav(self.folder / "two.wav", 8000, 2, range(20))
        write_wav(self.folder / "slow.wav", 8000, 1, range(20))
        write_wav(self.folder / "empty.wav", 8000, 1, [])
        os.mkfifo(self.folder / "pipe")
        os.mkfifo(self.folder / "piped.csv.json")
        data = self.folder / "data"
        data.mkdir()
        (data / "positions.xyd").write_text("1000 -20000 3000 4000 5000 6000\n" * 2000)
        (data / "torn.xyd").write_text("1 2 3 4 5 6\n1 2 3 4 5 6\n1\n")
        (data / "point.dat").write_text("1 2\n")
        (data / "torn.dat").write_text("1 2\n3 4\n5\n")

    def call(self, *words, **options):
        options.setdefault("env", {**os.environ, "TMPDIR": str(self.temporary)})
        return wavechain(*words, cwd=self.folder, **options)

    def test_errors(self):
        before = sorted(self.folder.rglob("*"))
        for status, words, message in ERRORS:
            with self.subTest(words):
                done = self.call(*words)
                self.assertEqual(done.stderr.decode().splitlines()[-1:], [f"wavechain: {message}"])
                self.assertEqual((done.returncode, done.stdout), (status, b""))
                self.assertEqual(sorted(self.folder.rglob("*")), before)

    def test_reports_and_warnings(self):
        for words, line in REPORTS:
            with self.subTest(words):
                done = self.call("run", "take3.wav", "o.csv", "--force", *words)
                self.assertIn(line, done.stderr.decode().splitlines())
                self.assertEqual(done.returncode, 0)

    def test_an_interrupt(self):
        with subprocess.Popen([WAVECHAIN, "run", "-", "o.wav", "-f", "SineFilter"], cwd=self.folder, stdin=subprocess.PIPE,
                              stderr=subprocess.PIPE) as running:  # fmt: skip
            # More than a pipe holds: once it is gone the program is at work.
            running.stdin.write((self.folder / "take3.wav").read_bytes())
            running.stdin.flush()
            running.send_signal(signal.SIGINT)
            self.assertEqual(running.stderr.read().decode(), "wavechain: interrupted; no output was left unfinished\n")
        self.assertEqual(running.returncode, 130)
        self.assertFalse((self.folder / "o.wav").exists())

    def test_a_damaged_recording(self):
        self.call("run", "take3.wav", "bad.flac", "-q", "-f", "SineFilter")
        data = (self.folder / "bad.flac").read_bytes()
        middle = len(data) // 2
        (self.folder / "bad.flac").write_bytes(data[:middle] + bytes(20000) + data[middle + 20000 :])
        done = self.call("run", "bad.flac", "o.wav", "-q", "-f", "SineFilter")
        self.assertRegex(done.stderr.decode(), r"^wavechain: bad\.flac: is damaged: it gives out after \d+ of 164784 samples")
        self.assertEqual(done.returncode, 2)

    def test_no_temporary_folder(self):
        env = {**os.environ, "TMPDIR": "/nowhere"}
        done = self.call("run", "take3.wav", "-", "-q", "-f", "SineFilter", env=env)
        self.assertEqual(done.stderr.decode(), "wavechain: standard output: no temporary file in /nowhere: No such file or directory; "
                                               "set TMPDIR\n")
        self.assertEqual(done.returncode, 3)
        done = self.call("run", "-", "o.wav", "-q", "-f", "SineFilter", env=env, input=b"RIFF")
        self.assertEqual(done.stderr.decode(), "wavechain: standard input: no room for its temporary copy in /nowhere: No such file or "
                                               "directory; set TMPDIR\n")
        self.assertEqual(done.returncode, 2)

    def test_no_library(self):
        alone = self.folder / "data" / "wavechain"
        shutil.copy(WAVECHAIN, alone)
        for words in (("list",), ("run", "take3.wav", "o.wav", "-f", "SineFilter")):
            done = subprocess.run([alone, *words], cwd=self.folder, capture_output=True, check=False)
            self.assertEqual(done.stderr.decode(), "wavechain: libwavefilters.so.1 is neither beside the program nor installed; name it by "
                                                   "--library\n")
            self.assertEqual(done.returncode, 1)
        done = subprocess.run([alone, "--version"], capture_output=True, check=True)
        self.assertIn(b"\nlibrary   none: libwavefilters.so.1 is neither beside the program nor installed; name it by --library\n",
                      done.stdout)


if __name__ == "__main__":
    unittest.main()
