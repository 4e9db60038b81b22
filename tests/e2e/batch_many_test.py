"""A batch over thousands of tiny recordings: ten thousand where WAVEFILTERS_LONG_TESTS is set, as in `./check --matrix`."""

import os
import random
import struct
import unittest

from batch_runs import BatchFolder

FILES = 10_000 if "WAVEFILTERS_LONG_TESTS" in os.environ else 300
SAMPLES = 10
PATIENCE_S = 1200  # for what takes a minute without a sanitizer
HEADER = struct.Struct("<4sI4s4sIHHIIHH4sI")


def tiny(number):
    """Ten samples of 16 bits, another recording for each number."""
    data = struct.pack(f"<{SAMPLES}h", *((number * 7 + i * 1001) % 30000 for i in range(SAMPLES)))
    return HEADER.pack(b"RIFF", 36 + len(data), b"WAVE", b"fmt ", 16, 1, 1, 8000, 16000, 2, 16, b"data", len(data)) + data


class Many(BatchFolder):
    def test_tiny_files(self):
        names = [f"{number:05}.wav" for number in range(FILES)]
        for number, name in enumerate(names):
            (self.folder / name).write_bytes(tiny(number))
        (self.folder / "list.csv").write_text("\n".join(["input", *names]))
        words = ["--manifest", "list.csv", "-f", "FIRFilter 3", "--jobs", 4]
        lines, said = self.batch(*words, timeout=PATIENCE_S)
        self.assertEqual(list(sorted(lines)), names)
        self.assertEqual({(line["status"], line["samples"]) for line in lines.values()}, {("done", SAMPLES)})
        self.assertIn(f"done   {FILES} files made, 0 up to date", said)
        self.assertEqual(sorted(os.listdir(self.out)), names)
        for name in random.Random(3).sample(names, 10):
            self.run_alone(name, "alone.wav", "-f", "FIRFilter 3", "--force")
            self.assertEqual((self.out / name).read_bytes(), (self.folder / "alone.wav").read_bytes())
        changed = names[FILES // 2]
        (self.folder / changed).write_bytes(tiny(FILES))
        statuses = self.statuses(*words, timeout=PATIENCE_S)
        self.assertEqual([name for name, status in statuses.items() if status != "up-to-date"], [changed])
        self.assertEqual(len(statuses), FILES)


if __name__ == "__main__":
    unittest.main()
