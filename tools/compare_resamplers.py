#!/usr/bin/python3
"""Measures resamplers by the files that they write: tones go in, one after the other in one file.

  ripple(X)     largest deviation of a tone's gain from 1 in dB, for tones up to X
  rejection(X)  largest unwanted component in dB below the tone, for tones of 2 - X and below (images
                and aliases) and of X and above (everything that is left of them)

Tones are counted in lower Nyquist frequencies, half of the lower of the two rates. The programs that
are compared come from Debian's packages sox, samplerate-programs, zita-resampler and python3-scipy;
those that are not installed are left out.

Usage: tools/compare_resamplers.py WAVECHAIN           the table of docs/resampling.md
       tools/compare_resamplers.py WAVECHAIN --csv     the data of a plot: every tone's figures
       tools/compare_resamplers.py WAVECHAIN --limits  only wavechain's qualities; fails where one
                                                       misses what it promises
"""
import shutil
import subprocess
import sys
import tempfile
import warnings
from fractions import Fraction
from math import ceil
from pathlib import Path

import numpy as np
from scipy.io import wavfile
from scipy.signal import resample_poly

RATES = [(24000, 48000), (48000, 24000), (32000, 48000), (44100, 48000), (48000, 44100)]
LEVEL = 0.5
WINDOW = 32768  # output samples that a tone is judged by
EDGE = 4000  # at either end of a tone, further than any kernel reaches

# What each quality promises: ripple to 0.8 and 0.85, rejection from 1.0 and 1.2 on.
PROMISES = {"fast": (0.01, None, None, 75), "good": (0.01, None, 80, 100),
            "best": (0.001, 0.01, 100, 120)}


class Ratio:
    """Two rates, and the file of tones that is measured between them."""

    def __init__(self, before, after):
        self.before, self.after = before, after
        self.ratio = Fraction(after, before)
        lower = min(before, after) / 2
        top = before / 2 / lower
        tones = np.concatenate([np.linspace(0.0131, 0.8, 10), np.linspace(0.8125, 0.85, 4),
                                np.linspace(0.86, 0.9995, 10), np.linspace(1.0005, 1.2, 10),
                                np.linspace(1.23, 1.97, 8)])
        self.tones = tones[tones < 0.999 * top]
        self.hertz = self.tones * lower
        # Each tone is as long as whole blocks of the ratio, so that it starts on an output.
        blocks = ceil((WINDOW + 2 * EDGE) / self.ratio.numerator)
        self.length = blocks * self.ratio.denominator

    @property
    def name(self):
        return f"{self.ratio.numerator}:{self.ratio.denominator}"

    def samples(self):
        t = np.arange(self.length) / self.before
        parts = [np.sin(2 * np.pi * f * t + 0.3) for f in self.hertz]
        return (LEVEL * np.concatenate(parts)).astype(np.float32)

    def measure(self, out):
        return Measured(self, out)


class Measured:
    """Gain and worst unwanted component of each tone in a file, in dB."""

    def __init__(self, ratio, out):
        self.tones = ratio.tones
        step = ratio.length * ratio.ratio
        self.gain, self.unwanted = np.full((2, len(self.tones)), -200.0)
        for i, hertz in enumerate(ratio.hertz):
            start = int(i * step) + EDGE
            self.weigh(i, out[start:start + WINDOW].astype(float) / LEVEL, hertz / ratio.after)

    def weigh(self, i, samples, frequency):
        """Fits the tone, and looks for the largest of what is left."""
        window = np.kaiser(len(samples), 20)
        if self.tones[i] < 1:  # otherwise none of it is wanted
            angle = 2 * np.pi * frequency * np.arange(len(samples))
            tone = np.stack([np.cos(angle), np.sin(angle)], 1)
            fit, *_ = np.linalg.lstsq(tone * window[:, None], samples * window, rcond=None)
            self.gain[i] = decibels(np.hypot(*fit))
            samples = samples - tone @ fit
        self.unwanted[i] = decibels(np.abs(np.fft.rfft(samples * window)).max() * 2 / window.sum())

    def ripple(self, to):
        return np.abs(self.gain[self.tones <= to]).max()

    def rejection(self, start):
        low, high = self.tones <= 2 - start, self.tones >= start
        return -max(self.unwanted[low].max(), self.unwanted[high].max(initial=-200))

    def figures(self):
        return self.ripple(0.8), self.ripple(0.85), self.rejection(1.0), self.rejection(1.2)


def decibels(amplitude):
    return 20 * np.log10(np.maximum(amplitude, 1e-10))


def run(*command):
    subprocess.run([str(word) for word in command], check=True, stdout=subprocess.DEVNULL,
                   stderr=subprocess.DEVNULL)


class Resamplers:
    """Named functions that turn in.wav into out.wav at a rate."""

    def __init__(self, wavechain):
        self.all = {f"wavechain {q}": self.wavechain(wavechain, q) for q in PROMISES}

    @staticmethod
    def wavechain(program, quality):
        return lambda a, b, ratio: run(program, "run", a, b, "-q", "--force", "-f",
                                       f"ResampleBlackman rate={ratio.after} quality={quality}")

    def add_others(self):
        self.add("sox", "soxr (sox rate -h)", lambda a, b, ratio: run(
            "sox", a, "-e", "floating-point", "-b", 32, b, "rate", "-h", ratio.after))
        self.add("sox", "soxr (sox rate -v)", lambda a, b, ratio: run(
            "sox", a, "-e", "floating-point", "-b", 32, b, "rate", "-v", ratio.after))
        self.add("sndfile-resample", "libsamplerate best", lambda a, b, ratio: run(
            "sndfile-resample", "--no-normalize", "-to", ratio.after, "-c", 0, a, b))
        self.add("zita-resampler", "zita-resampler", lambda a, b, ratio: run(
            "zita-resampler", "--wav", "--float", "--rate", ratio.after, a, b))
        self.all["SciPy resample_poly"] = scipy_poly

    def add(self, program, name, function):
        if shutil.which(program):
            self.all[name] = function


def scipy_poly(source, target, ratio):
    _, samples = wavfile.read(source)
    out = resample_poly(samples.astype(float), ratio.ratio.numerator, ratio.ratio.denominator)
    wavfile.write(target, ratio.after, out.astype(np.float32))


def measured(resamplers):
    """Every resampler over every ratio."""
    with tempfile.TemporaryDirectory() as folder:
        source, target = Path(folder, "in.wav"), Path(folder, "out.wav")
        for rates in RATES:
            ratio = Ratio(*rates)
            wavfile.write(source, ratio.before, ratio.samples())
            for name, resample in resamplers.all.items():
                target.unlink(missing_ok=True)
                resample(source, target, ratio)
                rate, out = wavfile.read(target)
                assert rate == ratio.after, f"{name} wrote {rate} Hz"
                yield name, ratio, ratio.measure(out)


def table(resamplers):
    print("| ratio | resampler | ripple to 0.8, dB | ripple to 0.85, dB | rejection from 1.0, dB | "
          "rejection from 1.2, dB |")
    print("|---|---|---|---|---|---|")
    for name, ratio, m in measured(resamplers):
        a, b, c, d = m.figures()
        print(f"| {ratio.name} | {name} | {a:.4f} | {b:.4f} | {c:.1f} | {d:.1f} |")


def curves(resamplers):
    print("ratio,resampler,tone,gain_dB,unwanted_dB")
    for name, ratio, m in measured(resamplers):
        for row in zip(m.tones, m.gain, m.unwanted):
            print(f"{ratio.name},{name}," + ",".join(f"{value:.6g}" for value in row))


def missed_limits(resamplers):
    missed = 0
    for name, ratio, m in measured(resamplers):
        ripple, wide_ripple, rejection, far_rejection = m.figures()
        most_ripple, most_wide, least, least_far = PROMISES[name.split()[1]]
        kept = [ripple < most_ripple, most_wide is None or wide_ripple < most_wide,
                least is None or rejection >= least, far_rejection >= least_far]
        missed += not all(kept)
        print(f"{'kept  ' if all(kept) else 'MISSED'} {ratio.name:>8} {name}: ripple "
              f"{ripple:.4f} {wide_ripple:.4f} dB, rejection {rejection:.1f} {far_rejection:.1f} dB")
    return missed


def main(arguments):
    # SciPy's remark on chunks beside the samples.
    warnings.simplefilter("ignore", wavfile.WavFileWarning)
    resamplers = Resamplers(arguments[0])
    if "--limits" in arguments:
        sys.exit(1 if missed_limits(resamplers) else 0)
    resamplers.add_others()
    (curves if "--csv" in arguments else table)(resamplers)


if __name__ == "__main__":
    main(sys.argv[1:])
