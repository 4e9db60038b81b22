#!/usr/bin/python3
"""The table of ./demo, on files whose levels are known because this test made them.

demo_table_test.py DEMO_TABLE
"""

import pathlib
import subprocess
import sys
import tempfile

import numpy
from scipy.io import wavfile

RATE = 16000
TONE_HZ = 2500.0


def sine(amplitude, frequency_hz):
    return amplitude * numpy.sin(2.0 * numpy.pi * frequency_hz / RATE * numpy.arange(RATE))


def table(folder, recording, humming, filtered):
    paths = []
    for name, samples in (("recording", recording), ("humming", humming), ("filtered", filtered)):
        paths.append(str(folder / f"{name}.wav"))
        wavfile.write(paths[-1], RATE, samples)
    return subprocess.run([sys.executable, sys.argv[1], *paths, str(TONE_HZ), "0.05"], text=True,
                          capture_output=True, check=False)


def expect(condition, what):
    if not condition:
        sys.exit(f"demo_table: {what}")


def main():
    # 0.5 is 6 dB below full scale, 0.1 is 20 dB, 0.0001 is 80 dB. The recording has 16 bits.
    speech = sine(0.5, 440.0)
    recording = numpy.round(speech * 32768.0).astype(numpy.int16)
    with tempfile.TemporaryDirectory() as name:
        folder = pathlib.Path(name)
        done = table(folder, recording, (speech + sine(0.1, TONE_HZ)).astype(numpy.float32),
                     (speech + sine(0.0001, TONE_HZ)).astype(numpy.float32))
        expect(done.returncode == 0, done.stderr)
        rows = {line[:24].strip(): line[24:].split() for line in done.stdout.splitlines()}
        expect(rows["tone at 2500 Hz"][1:] == ["-20.0", "-80.0"], done.stdout)
        expect("tone down by 60.0 dB" in done.stdout, done.stdout)
        expect("changes by 0.00 dB" in done.stdout, done.stdout)
        expect("50 ms" in done.stdout and ": 20 times faster" in done.stdout, done.stdout)

        done = table(folder, recording, speech.astype(numpy.float32), speech[:-1].astype(numpy.float32))
        expect(done.returncode != 0 and "rate and length" in done.stderr, done.stdout)


if __name__ == "__main__":
    main()
