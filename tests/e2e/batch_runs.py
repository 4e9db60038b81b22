"""What the tests of `wavechain batch` share: recordings by the dozen, and a way to run over them."""

import json
import math
import os
import struct
import subprocess
import wave

from wavechain_runs import WAVECHAIN, Folder, wavechain


def write_wav(path, count, pitch=440.0, rate=8000):
    """A tone of 16 bits."""
    samples = [round(12000 * math.sin(2 * math.pi * pitch * i / rate)) for i in range(count)]
    with wave.open(str(path), "wb") as file:
        file.setparams((1, 2, rate, count, "NONE", ""))
        file.writeframes(struct.pack(f"<{count}h", *samples))


class BatchFolder(Folder):
    """Runs in a folder of its own; temporary files must be gone at the end, wherever they were."""

    def setUp(self):
        super().setUp()
        self.out = self.folder / "out"

    def environment(self):
        return {**os.environ, "TMPDIR": str(self.temporary)}

    def tones(self, *names, count=3000):
        for i, name in enumerate(names):
            write_wav(self.folder / name, count + 100 * i, 300.0 + 50 * i)
        return names

    def files(self, folder=None):
        """Every file below a folder with its bytes."""
        folder = folder or self.out
        return {str(path.relative_to(folder)): path.read_bytes() for path in sorted(folder.rglob("*")) if path.is_file()}

    def expect_clean(self):
        self.assertEqual(list(self.temporary.iterdir()), [])
        self.assertEqual(list(self.folder.rglob("*.part")), [])

    def batch(self, *words, status=0, **options):
        """The lines of JSON by the input's name, and what was said."""
        done = wavechain("batch", "--out", "out", *words, cwd=self.folder, env=self.environment(), **options)
        said = done.stderr.decode()
        self.assertEqual(done.returncode, status, said)
        self.expect_clean()
        lines = [json.loads(line) for line in done.stdout.decode().splitlines()]
        by_input = {line["input"]: line for line in lines}
        self.assertEqual(len(by_input), len(lines), "a file has two lines")
        return by_input, said

    def statuses(self, *words, **options):
        return {name: line["status"] for name, line in self.batch(*words, **options)[0].items()}

    def refused(self, message, *words, status=1, **options):
        """Refused before anything was done."""
        lines, said = self.batch(*words, status=status, **options)
        self.assertEqual((lines, said), ({}, f"wavechain: {message}\n"))
        self.assertFalse(self.out.exists())

    def run_alone(self, *words):
        done = wavechain("run", "-q", *words, cwd=self.folder, env=self.environment())
        self.assertEqual((done.returncode, done.stderr), (0, b""))

    def begin(self, *words):
        """A batch that is left running."""
        return subprocess.Popen([WAVECHAIN, "batch", "--out", "out", *map(str, words)], cwd=self.folder,
                                env=self.environment(), stdout=subprocess.PIPE, stderr=subprocess.PIPE)


def children(process):
    with open(f"/proc/{process.pid}/task/{process.pid}/children", encoding="ascii") as file:
        return [int(word) for word in file.read().split()]
