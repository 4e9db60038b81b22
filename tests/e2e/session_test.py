"""A session as a new user would type it, in a terminal."""

import os
import shutil
import unittest

from pictures import read_png
from terminal import Shell
from wavechain_runs import SAMPLES, WAVECHAIN, Folder

ESCAPE = "\x1b"


class Session(Folder):
    def setUp(self):
        super().setUp()
        for name in ("take3.wav", "take3.xyd", "pal.dat"):
            shutil.copy(SAMPLES / name, self.folder / name)

    def shell(self, **variables):
        return Shell(self.folder, PATH=f"{os.path.dirname(WAVECHAIN)}:{os.environ['PATH']}",
                     TMPDIR=str(self.temporary), **variables)

    def test_from_the_list_of_filters_to_an_output_made_again(self):
        with self.shell() as shell:
            self.expect(shell, "wavechain", 1, "wavechain: no command is given; there are run, batch, list, info, ", "see wavechain --help")
            self.expect(shell, "wavechain list", 0, "FIRNotch          takes out a narrow band around one frequency\n")
            self.expect(shell, "wavechain info FIRNotsch", 1, "wavechain: there is no filter 'FIRNotsch'; did you mean FIRNotch?\n")
            self.expect(shell, "wavechain info FIRNotch", 0, "half_length  (samples, whole, 0 to 2048; default none)")
            run = 'wavechain run take3.wav quiet.wav -f "FIRNotch {}=200 frequency=2500"'
            self.expect(shell, run.format("half_lenght"), 1,
                        "wavechain: -f 'FIRNotch half_lenght=200 frequency=2500': FIRNotch has no parameter "
                        "'half_lenght'; did you mean half_length?\n")  # fmt: skip
            self.assertFalse((self.folder / "quiet.wav").exists())
            self.expect(shell, run.format("half_length"), 0, "read   take3.wav: ", "write  quiet.wav: wav, float32, 16000 Hz", "done   in ")
            self.expect(shell, run.format("half_length"), 3, "wavechain: quiet.wav: exists already; --force replaces it\n")
            self.expect(shell, 'wavechain plot take3.wav look.png -f "FIRNotch 200"', 0, "write  look.png: PNG, 1000 x ")
            self.assertEqual(read_png((self.folder / "look.png").read_bytes()).shape[1], 1000)
            self.expect(shell, "wavechain show quiet.wav", 0, "input    take3.wav (SHA-256 ",
                        "chain    FIRNotch half_length=200 frequency=2500 edge_weight=0.5\n")  # fmt: skip
            self.expect(shell, "wavechain rerun quiet.wav", 0, "quiet.wav: made again, byte for byte\n")
            self.expect(shell, "wavechain rerun quiet.wav again.wav", 0, "write  again.wav: ")
            self.expect(shell, "cmp quiet.wav again.wav && echo the same", 0, "the same\n")
            self.expect(shell, "wavechain run take3.wav - -f SineFilter", 3, "standard output: is a terminal; send it to a file or a pipe")
        self.assertEqual(list(self.temporary.iterdir()), [])

    def expect(self, shell, line, status, *parts):
        with self.subTest(line):
            said, ended = shell.type(line)
            self.assertEqual(ended, status, said)
            at = 0
            for part in parts:
                self.assertIn(part, said[at:])
                at = said.index(part, at) + len(part)
            self.assertNotIn(ESCAPE, said)

    def test_nothing_is_coloured_with_no_color_or_without(self):
        # What stays on the screen is plain; so there is nothing that NO_COLOR could turn off.
        shown = []
        for variables in ({}, {"NO_COLOR": "1"}, {"CLICOLOR_FORCE": "1"}):
            with self.shell(**variables) as shell:
                said = [shell.type(line)[0] for line in (
                    "wavechain --help", "wavechain help plot", "wavechain list", "wavechain info BeamData", "wavechain lisst",
                    "wavechain check take3.wav -f BeamPel", "wavechain show take3.wav", "wavechain diff take3.wav take3.wav")]  # fmt: skip
                shown.append(said)
                # The line of progress goes to the start of its line and clears the rest: no other escape.
                shell.type(f"wavechain run take3.wav {len(shown)}.wav -f 'FIRFilter 2000'")
                self.assertNotIn(ESCAPE, shell.shown.replace("\r\x1b[K", "").replace("\x1b[K", ""))
        self.assertNotIn(ESCAPE, "".join(shown[0]))
        self.assertEqual(shown[0], shown[1])
        self.assertEqual(shown[0], shown[2])


if __name__ == "__main__":
    unittest.main()
