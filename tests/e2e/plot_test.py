"""wavechain plot: tones, gaps and levels found at their pixels, and the formats of pictures."""

import json
import os
import re
import resource
import struct
import unittest
import xml.etree.ElementTree

import numpy as np
from pictures import BLUE, GAP, VERMILLION, Panel, brightness, read_png
from wavechain_runs import SAMPLES, Folder, wavechain

RATE = 16000


class Plots(Folder):
    def write_wav(self, samples, name="in.wav", rate=RATE):
        """A recording of 32-bit floats."""
        data = np.asarray(samples, "<f4").tobytes()
        form = struct.pack("<HHIIHH", 3, 1, rate, 4 * rate, 4, 32)
        body = b"WAVEfmt " + struct.pack("<I", len(form)) + form + b"data" + struct.pack("<I", len(data)) + data
        path = self.folder / name
        path.write_bytes(b"RIFF" + struct.pack("<I", len(body)) + body)
        return path

    def plot(self, *arguments, status=0):
        """Runs `wavechain plot`; returns what it printed and what it said."""
        done = wavechain("plot", *arguments, env={**os.environ, "TMPDIR": str(self.temporary)})
        message = done.stderr.decode()
        self.assertEqual(done.returncode, status, message)
        self.assertEqual(list(self.temporary.iterdir()), [], "temporary files are left")
        if status != 0:
            self.assertEqual(len(message.splitlines()), 1, message)
            self.assertRegex(message, r"^wavechain: ")
        return done.stdout.decode(), message

    def panels(self, *arguments):
        """Draws a PNG and returns its panels by name and kind."""
        out = self.folder / "out.png"
        described, _ = self.plot(*arguments, out, "--layout", "--force")
        described = json.loads(described)
        pixels = read_png(out.read_bytes())
        self.assertEqual(pixels.shape, (described["height"], described["width"]))
        return {(entry["name"], entry["kind"]): Panel(pixels, entry) for entry in described["panels"]}


def tone(frequency, seconds, amplitude=0.5, rate=RATE):
    return amplitude * np.sin(2 * np.pi * frequency * np.arange(round(seconds * rate)) / rate)


class Sounds(Plots):
    def test_a_tone_lies_at_the_row_of_its_frequency(self):
        for frequency in (500, 3000, 7000):
            with self.subTest(frequency):
                panel = self.panels(self.write_wav(tone(frequency, 1)))["recording", "spectrogram"]
                self.assertEqual(panel.entry["y_axis"]["unit"], "kHz")
                middle = brightness(panel.pixels)[:, panel.box["width"] // 2]
                brightest = np.flatnonzero(middle == middle.max()).mean()
                self.assertAlmostEqual(brightest, panel.row(frequency / 1000), delta=2)

    def test_a_tone_begins_and_ends_at_its_columns(self):
        samples = np.concatenate([np.zeros(6400), tone(2000, 0.3), np.zeros(4800)])
        panel = self.panels(self.write_wav(samples), "--window", "4")["recording", "spectrogram"]
        row = brightness(panel.pixels)[round(panel.row(2.0))]
        lit = np.flatnonzero(row > 0.9 * row.max())
        self.assertAlmostEqual(lit[0], panel.column(0.4), delta=3)
        self.assertAlmostEqual(lit[-1], panel.column(0.7), delta=3)

    def test_levels_are_those_of_the_colour_scale(self):
        # -6 dB is the brightest level's 5 dB above, 46 dB of 70 below it.
        panel = self.panels(self.write_wav(np.concatenate([tone(2000, 0.5), tone(2000, 0.5, 0.005)])))[
            "recording", "spectrogram"
        ]
        self.assertEqual((panel.entry["colours"]["low"], panel.entry["colours"]["high"]), (-75, -5))
        strip = panel.pixels[round(panel.row(2.0)) - 2 : round(panel.row(2.0)) + 3]
        # Entries of viridis, as its authors publish it: (-6.02 + 75) / 70 and (-46.02 + 75) / 70.
        loud, soft = (strip[:, round(panel.column(t))] for t in (0.25, 0.75))
        self.assertIn(0xF4E61E, loud)
        self.assertIn(0x287C8E, soft)

    def test_the_waveform_reaches_its_amplitude(self):
        panel = self.panels(self.write_wav(tone(100, 1, 0.25)))["recording", "waveform"]
        rows = panel.rows_of(BLUE)
        self.assertAlmostEqual(rows[0], panel.row(0.25), delta=1.5)
        self.assertAlmostEqual(rows[-1], panel.row(-0.25), delta=1.5)

    def test_samples_that_are_no_numbers_are_a_gap(self):
        samples = tone(100, 1)
        samples[8000:9600] = np.nan
        panels = self.panels(self.write_wav(samples))
        panel = panels["recording", "waveform"]
        self.assertEqual(panel.entry["gaps"], [[0.5, 0.6]])
        grey = panel.columns_of(GAP)
        self.assertAlmostEqual(grey[0], panel.column(0.5), delta=1.5)
        self.assertAlmostEqual(grey[-1], panel.column(0.6), delta=1.5)
        inside = slice(grey[0] + 2, grey[-1] - 1)
        self.assertFalse((panel.pixels[:, inside] == BLUE).any())
        picture = panels["recording", "spectrogram"]
        self.assertTrue((picture.pixels[:, inside] == GAP).all())

    def test_the_chain_takes_a_tone_out(self):
        panels = self.panels(
            self.write_wav(tone(2500, 1) + tone(5000, 1, 0.1)), "-f", "FIRNotch half_length=200 frequency=2500"
        )
        before, after = panels["before", "spectrogram"], panels["after", "spectrogram"]
        row, other = round(before.row(2.5)), round(before.row(5.0))
        column = before.box["width"] // 2
        self.assertGreater(brightness(before.pixels)[row, column], 180)
        self.assertLess(brightness(after.pixels)[row, column], 60)
        self.assertAlmostEqual(
            brightness(before.pixels)[other, column], brightness(after.pixels)[other, column], delta=4
        )
        title = panels["after", "waveform"].entry["title"]
        self.assertEqual(title, "After: FIRNotch half_length=200 frequency=2500, 16000 Hz")

    def test_a_lower_rate_leaves_the_upper_half_blank(self):
        panels = self.panels(self.write_wav(tone(1000, 1)), "-f", "ResampleBlackman rate=8000")
        after = panels["after", "spectrogram"]
        self.assertEqual(after.entry["y_axis"]["high"], 8.0)
        grey = (after.pixels == GAP).all(axis=1)
        border = round(after.row(4.0) + 0.5)
        self.assertTrue(grey[:border].all())
        self.assertFalse(grey[border:].any())

    def test_from_and_to_choose_a_stretch(self):
        samples = np.concatenate([tone(1000, 0.5), tone(4000, 0.5)])
        panel = self.panels(self.write_wav(samples), "--from", 0.25, "--to", 0.75)["recording", "spectrogram"]
        self.assertEqual((panel.entry["x_axis"]["low"], panel.entry["x_axis"]["high"]), (0.25, 0.75))
        bright = brightness(panel.pixels)
        width = panel.box["width"]
        for column, kilohertz in ((2, 1.0), (width // 4, 1.0), (3 * width // 4, 4.0), (width - 3, 4.0)):
            self.assertAlmostEqual(int(bright[:, column].argmax()), panel.row(kilohertz), delta=2)

    def test_max_frequency_ends_the_spectrogram(self):
        panel = self.panels(self.write_wav(tone(900, 1)), "--max-frequency", 1000)["recording", "spectrogram"]
        self.assertEqual(panel.entry["y_axis"]["unit"], "Hz")
        middle = brightness(panel.pixels)[:, panel.box["width"] // 2]
        self.assertAlmostEqual(np.flatnonzero(middle == middle.max()).mean(), panel.row(900), delta=2)

    def test_silence_with_events_needs_no_recording(self):
        panels = self.panels(
            "--silence", 0.4, "--rate", RATE, "-f", f"GlotSyn events={SAMPLES.parent / 'phrase' / 'phrase.gpl'}"
        )
        self.assertEqual(panels["after", "waveform"].entry["title"], "GlotSyn events=phrase.gpl, 16000 Hz")

    def test_tracks_lie_below_with_their_units(self):
        panels = self.panels(SAMPLES / "take3.wav", "--track", "tip=BeamPel column=6", "--track", "speed=BeamData mode=speed")
        self.assertEqual(list(panels)[2:], [("tip", "track"), ("speed", "track")])
        self.assertEqual(panels["tip", "track"].entry["y_axis"]["label"], "mm")
        self.assertEqual(panels["speed", "track"].entry["y_axis"]["label"], "mm/ms")
        self.assertEqual(panels["speed", "track"].entry["title"], "speed: BeamData mode=speed")


class Measures(Plots):
    """take3's third pellet is lost in records 201 to 224: 1-based, each held for 6.866 ms around its time."""

    PERIOD_S = 0.006866

    def lost(self, first, last):
        """From the start of the first lost record to the start of the next one that is there."""
        return (first - 1.5) * self.PERIOD_S, (last - 0.5) * self.PERIOD_S

    def test_a_lost_pellet_is_a_gap(self):
        panel = self.panels(SAMPLES / "take3.wav", "--track", "tip=BeamPel column=6", "--from", 1, "--to", 2)["tip", "track"]
        begin, end = self.lost(201, 224)
        grey = panel.columns_of(GAP)
        self.assertAlmostEqual(grey[0], panel.column(begin), delta=1.5)
        self.assertAlmostEqual(grey[-1], panel.column(end), delta=1.5)
        inside = panel.ink()[:, grey[0] + 2 : grey[-1] - 1]
        self.assertFalse(inside.any(), "the line goes through the gap")
        drawn = panel.ink().any(axis=0)
        self.assertTrue(drawn[: grey[0] - 1].all() and drawn[grey[-1] + 2 :].all(), "there is another gap")

    def test_a_measure_has_its_own_gaps(self):
        panels = self.panels(SAMPLES / "take3.wav", "--track", "lips=BeamData mode=distance a=1 b=2", "--from", 2.5, "--to", 6)
        panel = panels["lips", "track"]
        gaps = panel.entry["gaps"]
        self.assertEqual(len(gaps), 2)
        for gap, (first, last) in zip(gaps, ((402, 419), (830, 836))):
            begin, end = self.lost(first, last)
            self.assertAlmostEqual(gap[0], begin, delta=1e-4)
            self.assertAlmostEqual(gap[1], end, delta=1e-4)

    def test_values_lie_at_their_rows(self):
        panel = self.panels(SAMPLES / "take3.wav", "--track", "tip=BeamPel column=6", "--from", 1, "--to", 2)["tip", "track"]
        positions = np.cumsum(np.loadtxt(SAMPLES / "take3.xyd"), axis=0)[:, 5] / 1000
        for record in (160, 180, 240, 270):
            column = round(panel.column((record - 1) * self.PERIOD_S))
            self.assertAlmostEqual(panel.middle(column), panel.row(positions[record - 1]), delta=1.5)


    def test_a_track_without_its_file_is_all_gap(self):
        recording = self.write_wav(tone(500, 0.5))
        panel = self.panels(recording, "--track", "tip=BeamPel", "--allow-missing")["tip", "track"]
        self.assertEqual(panel.entry["gaps"], [[0.0, 0.5]])
        self.assertGreater((panel.pixels[:10] == GAP).mean(), 0.8)
        _, said = self.plot(recording, self.folder / "other.png", "--track", "tip=BeamPel", "-q", status=2)
        self.assertIn("filter 1 (BeamPel): ", said)
        self.assertIn("there is no such file", said)


class Events(Plots):
    def marks(self, filter_name, lines, *arguments):
        events = self.folder / "events"
        events.write_text("".join(line + "\n" for line in lines))
        silence = ("--silence", 0.5, "--rate", RATE)
        return self.panels(*silence, "-f", f"{filter_name} events={events}", *arguments)

    def check(self, panel, instants):
        self.assertEqual(panel.entry["marks"], instants)
        columns = panel.columns_of(VERMILLION)
        self.assertEqual(len(columns), len(instants))
        for column, instant in zip(columns, instants):
            self.assertAlmostEqual(column, panel.column(instant), delta=1)

    def test_impulses_are_marks_at_their_columns(self):
        panels = self.marks("PulseSyn", ("50 1", "200.5 0.5", "400 1"))
        self.check(panels["after impulses", "events"], [0.05, 0.2005, 0.4])
        # And where the signal has them.
        wave = panels["after", "waveform"]
        low = np.flatnonzero((wave.pixels[-20:] == BLUE).any(axis=0))
        self.assertAlmostEqual(low[0], wave.column(0.05), delta=1.5)

    def test_events_that_are_not_heard_are_no_marks(self):
        # Before the start, behind the end.
        panels = self.marks("PulseSyn", ("-5 1", "100 1", "700 1"))
        self.check(panels["after impulses", "events"], [0.1])
        # Less than half a window behind the start.
        panels = self.marks("FricSyn", ("3 1 0 0", "100 1 0 0"))
        self.check(panels["after bursts", "events"], [0.1])
        # Not before the next one: it has no period.
        panels = self.marks("GlotSyn", ("100 1 0.5 0.1", "300 1 0.5 0.1", "200 1 0.5 0.1"))
        self.check(panels["after pulses", "events"], [0.1, 0.2])

    def test_marks_outside_the_view_are_left_out(self):
        panels = self.marks("PulseSyn", ("50 1", "200 1", "400 1"), "--from", 0.1, "--to", 0.3)
        self.check(panels["after impulses", "events"], [0.2])


class Responses(Plots):
    def responses(self, *arguments):
        return self.panels("--response", *arguments)

    def test_the_notch_lies_at_its_frequency(self):
        for rate, frequency in ((16000, 2500), (48000, 6000)):
            with self.subTest(rate):
                chain = f"FIRNotch half_length=200 frequency={frequency}"
                panel = self.responses("--rate", rate, "-f", chain)["magnitude", "response"]
                self.assertEqual(panel.entry["x_axis"]["high"], rate / 2000)
                reached = [np.flatnonzero(column).max(initial=-1) for column in panel.ink().T > 60]
                deepest = np.flatnonzero(reached == np.max(reached)).mean()
                self.assertAlmostEqual(deepest, panel.column(frequency / 1000), delta=1.5)
                # Far from the notch everything passes.
                self.assertAlmostEqual(panel.middle(20), panel.row(0), delta=1)

    def test_the_curve_is_the_transform_of_the_hamming_average(self):
        half = 12
        panel = self.responses("--rate", 1000, "-f", f"FIRFilter half_length={half}")["magnitude", "response"]
        n = 2 * half + 1
        window = 0.54 - 0.46 * np.cos(2 * np.pi * np.arange(n) / (n - 1))
        window /= window.sum()
        for frequency in (10, 40, 60, 200, 330, 450):
            gain = abs(np.sum(window * np.exp(-2j * np.pi * frequency / 1000 * np.arange(n))))
            row = panel.row(20 * np.log10(gain))
            self.assertAlmostEqual(panel.middle(round(panel.column(frequency))), row, delta=2, msg=str(frequency))

    def test_gains_of_a_chain_add_up(self):
        one = self.responses("--rate", 8000, "-f", "FIRFilter 20")["magnitude", "response"]
        two = self.responses("--rate", 8000, "-f", "FIRFilter 20", "-f", "FIRFilter 20")["magnitude", "response"]
        axis = one.entry["y_axis"]
        for kilohertz in (0.05, 0.1, 0.15):
            middle = one.middle(round(one.column(kilohertz))) + 0.5
            gain = axis["high"] - middle / one.box["height"] * (axis["high"] - axis["low"])
            self.assertAlmostEqual(two.middle(round(two.column(kilohertz))), two.row(2 * gain), delta=2)

    def test_the_phase_is_that_of_a_filter_without_delay(self):
        panels = self.responses("--phase", "--rate", 8000, "-f", "FIRFilter 5")
        phase = panels["phase", "response"]
        self.assertEqual(phase.entry["y_axis"]["unit"], "degrees")
        for kilohertz in (0.1, 0.3, 0.5):
            self.assertAlmostEqual(phase.middle(round(phase.column(kilohertz))), phase.row(0), delta=1)

    def test_several_chains_share_the_axes(self):
        panel = self.responses("--track", "short=FIRFilter 5", "--track", "long=FIRFilter 50", "--rate", 8000)["magnitude", "response"]
        self.assertGreater(len(panel.columns_of(BLUE)), 100)
        self.assertGreater(len(panel.columns_of(VERMILLION)), 100)

    def test_filters_without_a_response_are_refused(self):
        out = self.folder / "out.png"
        for chain, why in (
            ("SineFilter 100", "filter 1 (SineFilter): has no frequency response: it makes a signal of its own"),
            ("SquareFilter", "it makes a signal of its own"),
            ("ResampleBlackman rate=8000", "it changes the sampling rate"),
            ("SumSources with=a.wav", "follows a second signal"),
            ("EchoCancel with=a.wav", "follows a second signal"),
            ("BeamPel", "follows its data file"),
            ("PulseSyn", "follows its data file"),
        ):
            with self.subTest(chain):
                _, said = self.plot("--response", out, "-f", chain, status=1)
                self.assertIn(why, said)
        for arguments, why in (
            (("-f", "FIRFilter 3", "--from", 1), "--from goes with a recording"),
            (("-f", "FIRFilter 3", "--to", 1), "--to goes with a recording"),
            (("-f", "FIRFilter 3", "--silence", 1), "--silence and --response exclude each other"),
            (("-f", "FIRFilter 3", "in.wav"), "with --response there is no recording"),
            ((), "a response is that of filters"),
        ):
            _, said = self.plot("--response", out, *arguments, status=1)
            self.assertIn(why, said)
        _, said = self.plot(out, "--phase", "--silence", 1, "--rate", 8000, "-f", "FIRFilter 3", status=1)
        self.assertIn("--phase goes with --response", said)
        self.assertFalse(out.exists())


class Formats(Plots):
    def setUp(self):
        super().setUp()
        self.recording = self.write_wav(tone(1000, 0.3))

    def test_two_runs_give_the_same_bytes(self):
        for extension in ("png", "svg", "pdf"):
            outs = [self.folder / f"{name}.{extension}" for name in "ab"]
            for out in outs:
                self.plot(self.recording, out, "-q")
            self.assertEqual(outs[0].read_bytes(), outs[1].read_bytes(), extension)

    def test_svg_is_xml_with_the_size_in_pixels(self):
        out = self.folder / "out.svg"
        self.plot(self.recording, out, "--size", "700x400")
        root = xml.etree.ElementTree.parse(out).getroot()
        self.assertEqual(root.tag, "{http://www.w3.org/2000/svg}svg")
        self.assertEqual((root.get("width"), root.get("height")), ("700px", "400px"))
        self.assertIn(b"<image", out.read_bytes())

    def test_pdf_is_whole_and_without_a_date(self):
        out = self.folder / "out.pdf"
        self.plot(self.recording, out)
        data = out.read_bytes()
        self.assertTrue(data.startswith(b"%PDF-1."))
        self.assertTrue(data.endswith(b"%%EOF\n"))
        start = int(re.search(rb"startxref\n(\d+)\n", data)[1])
        self.assertEqual(data[start : start + 4], b"xref")
        # Every entry of the table leads to its object.
        entries = re.findall(rb"(\d{10}) (\d{5}) ([nf]) ?", data[start:])
        for number, (offset, _, kind) in enumerate(entries):
            if kind == b"n":
                self.assertTrue(data[int(offset) :].startswith(b"%d 0 obj" % number))
        self.assertNotIn(b"Date", data)
        self.assertIn(b"in.wav, 16000 Hz", data)

    def test_a_picture_has_the_size_that_is_asked_for(self):
        out = self.folder / "out.png"
        _, message = self.plot(self.recording, out, "--size", "640x360")
        self.assertIn("PNG, 640 x 360 pixels", message)
        self.assertEqual(read_png(out.read_bytes()).shape, (360, 640))

    def test_a_picture_may_go_through_a_pipe(self):
        done = wavechain("plot", self.recording, "-", "--format", "png", "-q")
        self.assertEqual((done.returncode, done.stderr), (0, b""))
        read_png(done.stdout)

    def test_a_recording_may_come_through_a_pipe(self):
        arguments = ("-f", "FIRFilter 3", "--track", "slow=FIRFilter 30", "--layout", "-q")
        outs = [self.folder / name for name in ("named.png", "piped.png", "raw.png")]
        named, _ = self.plot(self.recording, outs[0], *arguments)
        data = self.recording.read_bytes()
        samples = data[data.index(b"data") + 8 :]
        piped = wavechain("plot", "-", outs[1], *arguments, input=data)
        raw = wavechain("plot", "-", outs[2], "-t", "f32", "--rate", RATE, *arguments, input=samples)
        for done, out in ((piped, outs[1]), (raw, outs[2])):
            self.assertEqual((done.returncode, done.stderr), (0, b""))
            self.assertEqual(done.stdout.decode(), named.replace("in.wav", "standard input"))
            # Below the title everything is the same.
            box = json.loads(named)["panels"][0]["plot"]
            pictures = [read_png(path.read_bytes())[box["y"] :] for path in (outs[0], out)]
            np.testing.assert_array_equal(*pictures)

    def test_names_of_any_bytes_are_drawn(self):
        odd = os.fsdecode(b"t\xff\xc3(\n\xe4\xb8\xad.wav")
        self.write_wav(tone(500, 0.1), odd)
        described, _ = self.plot(self.folder / odd, self.folder / "out.png", "--layout", "-q")
        self.assertIn("�", json.loads(described)["panels"][0]["title"])

    def test_it_draws_in_the_c_locale_without_a_home(self):
        environment = {"PATH": os.environ["PATH"], "LC_ALL": "C"}
        for name in ("ASAN_OPTIONS", "UBSAN_OPTIONS"):
            environment[name] = os.environ.get(name, "")
        done = wavechain("plot", self.recording, self.folder / "c.png", "-q", env=environment)
        self.assertEqual((done.returncode, done.stderr), (0, b""))
        self.plot(self.recording, self.folder / "d.png", "-q")
        self.assertEqual((self.folder / "c.png").read_bytes(), (self.folder / "d.png").read_bytes())


class Refusals(Plots):
    def setUp(self):
        super().setUp()
        self.recording = self.write_wav(tone(1000, 0.3))
        self.out = self.folder / "out.png"

    def check(self, status, message, *arguments):
        with self.subTest(message):
            _, said = self.plot(*arguments, "-q", status=status)
            self.assertIn(message, said)
            self.assertFalse(self.out.exists(), "a picture was written")

    def test_wrong_usage_is_named(self):
        ins = (self.recording, self.out)
        for message, arguments in (
            ("IN is required", ()),
            ("OUT is required", (self.recording,)),
            ("pictures are written as .png, .svg or .pdf", (self.recording, self.folder / "o.gif")),
            ("--format gif: pictures are written as png, svg or pdf", (*ins, "--format", "gif")),
            ("--size 3: takes width and height", (*ins, "--size", "3")),
            ("--size 800xtall: takes width and height", (*ins, "--size", "800xtall")),
            ("--size 200x200: too small for 4 panels", (*ins, "--size", "200x200", "-f", "FIRFilter 3")),
            ("--window 0: takes 0.1 to 1000 ms", (*ins, "--window", "0")),
            ("--dynamics 0.5: takes 1 to 300 dB", (*ins, "--dynamics", "0.5")),
            ("--max-frequency -1: takes", (*ins, "--max-frequency=-1")),
            ("--from -1: takes seconds from 0", (*ins, "--from=-1")),
            ("--from 2: the signal ends at 0.300 s", (*ins, "--from", "2")),
            ("--to 0.1: lies not behind --from 0.2", (*ins, "--from", "0.2", "--to", "0.1")),
            ("takes a stretch of 0.00001 s or more", (*ins, "--from", "0.2", "--to", "0.200001")),
            ("--track 'FIRFilter 20': takes a name of letters", (*ins, "--track", "FIRFilter 20")),
            ("there is no filter 'Fir'", (*ins, "--track", "a=Fir 3")),
            ("--track a: there are two signals of that name", (*ins, "--track", "a=FIRFilter 3", "--track", "a=FIRFilter 4")),
            ("--layout writes to standard output", (self.recording, "-", "--format", "png", "--layout")),
            ("--rate goes with --silence or with -t", (*ins, "--rate", "8000")),
            ("with --silence there is no recording", (*ins, "--silence", "1", "--rate", "8000")),
            ("with --silence there is nothing to draw without a filter", (self.out, "--silence", "1", "--rate", "8000")),
            ("--silence has no rate of its own", (self.out, "--silence", "1", "-f", "SineFilter")),
            ("one word too many", (*ins, "-f", "FIRFilter", "3")),
        ):
            self.check(1, message, *arguments)

    def test_recordings_that_cannot_be_drawn_are_named(self):
        empty = self.write_wav([], "empty.wav")
        self.check(2, "empty.wav: holds no sample", empty, self.out)
        self.check(2, "none.wav: cannot be opened", self.folder / "none.wav", self.out)

    def test_nothing_is_replaced_unasked(self):
        self.check(3, "is the input itself", self.recording, self.recording, "--format", "png", "--force")
        self.out.write_bytes(b"mine")
        _, said = self.plot(self.recording, self.out, "-q", status=3)
        self.assertIn("exists already; --force replaces it", said)
        self.assertEqual(self.out.read_bytes(), b"mine")
        self.plot(self.recording, self.out, "--force")
        read_png(self.out.read_bytes())

    def test_a_picture_that_cannot_be_written_whole_is_not_there(self):
        def limit():
            resource.setrlimit(resource.RLIMIT_FSIZE, (4096, 4096))

        done = wavechain("plot", self.recording, self.out, "-q", preexec_fn=limit)
        self.assertEqual((done.returncode, done.stderr.count(b"\n")), (3, 1))
        self.assertIn(b"out.png: cannot be written: File too large", done.stderr)
        self.assertEqual([path.name for path in self.folder.iterdir() if "part" in path.name], [])
        self.assertFalse(self.out.exists())
        done = wavechain("plot", self.recording, self.folder / "no" / "out.png", "-q")
        self.assertEqual((done.returncode, done.stderr.count(b"\n")), (3, 1))
        self.assertIn(b"no/out.png: cannot be written: No such file or directory", done.stderr)


if __name__ == "__main__":
    unittest.main()
