"""What the tests of data files share: the program, and folders to run it in."""

import os
import pathlib
import subprocess
import tempfile
import unittest

WAVECHAIN = os.environ["WAVECHAIN"]
SAMPLES = pathlib.Path(os.environ["PROJECT_ROOT"]) / "examples" / "data"


def wavechain(*arguments, **options):
    """Runs the program to its end; standard error is text."""
    options.setdefault("timeout", 120)
    return subprocess.run([WAVECHAIN, *map(str, arguments)], capture_output=True, check=False, **options)


class Folder(unittest.TestCase):
    """Each test in a folder of its own, with a folder for temporary files that must end empty."""

    def setUp(self):
        self.held = tempfile.TemporaryDirectory()
        self.addCleanup(self.held.cleanup)
        self.folder = pathlib.Path(self.held.name)
        self.temporary = self.folder / "tmp"
        self.temporary.mkdir()

    def run_chain(self, *arguments, status=0, **options):
        """Runs `wavechain run`, expects its exit status and no temporary file left; returns standard error."""
        options.setdefault("env", {**os.environ, "TMPDIR": str(self.temporary)})
        done = wavechain("run", *arguments, **options)
        message = done.stderr.decode()
        self.assertEqual(done.returncode, status, message)
        self.assertEqual(list(self.temporary.iterdir()), [], "temporary files are left")
        if status != 0:
            # Reports may come before it; the error itself is one line, the last.
            self.assertRegex(message.splitlines()[-1], r"^wavechain: ")
        return message

    def link_samples(self, *names, to=None):
        """The sample data under other names: links in this test's folder."""
        for name in names or ("take3.wav", "take3.xyd", "pal.dat", "take3.iop"):
            (self.folder / (to or name)).symlink_to(SAMPLES / name)
