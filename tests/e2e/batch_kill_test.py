"""A batch that is killed and begun again ends as if nothing had happened."""

import fcntl
import random
import shutil
import struct
import subprocess
import time
import unittest

from batch_runs import BatchFolder, write_wav
from wavechain_runs import WAVECHAIN

KILLS = 100


class Killed(BatchFolder):
    """Outputs with the record within and beside them, pellets (whose folders of links are temporary) and noise."""

    WORDS = ["--manifest", "list.csv", "-f", "FricSyn", "-f", "BeamPel 4", "-f", "FIRFilter 100", "--jobs", "3",
             "--keep-going"]

    def setUp(self):
        super().setUp()
        rows = ["input,output"]
        for i in range(12):
            name = f"take{i}"
            write_wav(self.folder / f"{name}.wav", 2000 + 500 * i, 200.0 + 20 * i)
            (self.folder / f"{name}.fla").write_text(f"{10 + i} 0.5 0.1\n60 0.2\n")
            (self.folder / f"{name}.xyd").write_text("".join(f"{i + 0.1 * row} 1 {row} 2 3 4\n" for row in range(40)))
            rows.append(f"{name}.wav,{'abc'[i % 3]}/{name}.{'csv' if i % 2 else 'wav'}")
        (self.folder / "list.csv").write_text("\n".join(rows))

    def leftovers(self):
        """What a killed batch leaves: files that have no name yet, and its folder for temporary files."""
        return [*self.out.rglob("*.part"), *self.temporary.iterdir()]

    def test_at_a_hundred_random_moments(self):
        started = time.monotonic()
        self.batch(*self.WORDS)
        length = time.monotonic() - started
        undisturbed = self.files()
        self.assertEqual(len(undisturbed), 18)
        shutil.rmtree(self.out)
        draw = random.Random(8)
        left = 0
        for kill in range(KILLS):
            if kill % 10 == 0:
                # From nothing, or over the outputs of another chain.
                shutil.rmtree(self.out, ignore_errors=True)
                if kill % 20 == 10:
                    self.batch(*self.WORDS, "--seed", "99", "-f", "SineFilter")
            process = self.begin(*self.WORDS)
            time.sleep(draw.uniform(0.0, length))
            process.kill()
            process.communicate()
            for path, content in self.files().items() if self.out.exists() else ():
                # Nothing half-written has a name.
                if path.endswith(".wav"):
                    size = struct.unpack("<I", content[4:8])[0]
                    self.assertEqual(size + 8, len(content), path)
            # Its processes may take a moment to go; what they leave must not pile up.
            left = max(left, len(self.leftovers()))
            self.assertLessEqual(left, 12)
            if kill % 10 == 9:
                self.batch(*self.WORDS)
                self.assertEqual(self.files(), undisturbed)
        # The kills have hit something.
        self.assertGreater(left, 0)

    def test_what_is_being_written_stays(self):
        self.out.mkdir()
        stale = self.out / "a"
        stale.mkdir()
        (stale / ".wavechain-77-0.part").write_bytes(b"stale")
        (stale / ".wavechain-own.part").write_bytes(b"another's")
        held = self.enterContext(open(stale / ".wavechain-78-0.part", "wb"))
        fcntl.flock(held, fcntl.LOCK_EX)
        (self.temporary / "wavechain-batch-abcdef").mkdir()
        (self.temporary / "wavechain-batch-abcdef" / "s.wav").write_bytes(b"")
        done = subprocess.run([WAVECHAIN, "batch", "--out", "out", *self.WORDS], cwd=self.folder,
                              env=self.environment(), capture_output=True, check=False)
        self.assertEqual(done.returncode, 0, done.stderr)
        self.assertEqual(sorted(path.name for path in stale.glob(".*")), [".wavechain-78-0.part", ".wavechain-own.part"])
        self.assertEqual(list(self.temporary.iterdir()), [])


if __name__ == "__main__":
    unittest.main()
