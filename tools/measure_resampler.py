#!/usr/bin/python3
"""Measures chains of ResampleBlackman stages: passband ripple and rejection.

A chain is a list of stages "L/M,Q,widen" or "L/M,Q,widen,cutoff", first stage first; cutoff is
1 / max(L, M) where it is not given. Tones over the whole input band go through the chain on paper:
every tone of a stage comes out with its images, weighted by the kernel's response (coefficients as
the filter rounds them) and folded by the decimation. Frequencies are counted in lower Nyquist
frequencies, half of the lower of the chain's two rates.

  ripple(X)     largest deviation of a tone's gain from 1 in dB, for tones up to X
  rejection(X)  largest unwanted component in dB below the tone, for tones of 2 - X and below (images
                and aliases) and of X and above (everything that is left of them)

How a quality is had with P = max(L, M): the kernel's response depends on Q / P alone. From the
middle of its transition, at 1 + widen P / Q, it has fallen by 75 dB after 2.8 P / Q, by 80 dB after
5.2 and by 100 dB after 12.1; ripple is below 0.01 dB 2.5 P / Q before it. A widen of -12.2 therefore
rejects by 100 dB from 1.0 on, and a Q of 98 P keeps the passband flat to 0.85. Q ends at 2048, so
that P may be 21 at most: larger factors go in stages, none of which may fall below the lower of the
two rates in between.

  quality  Q      widen  largest P
  fast     14 P    0     146
  good     39 P   -5.2    52
  best     98 P  -12.2    21

Usage: tools/measure_resampler.py                              the table of these qualities
       tools/measure_resampler.py 8/7,784,-12.2 20/21,2040,-12.2
       tools/measure_resampler.py --csv CHAIN                  the data of a plot
       tools/measure_resampler.py --library libwavefilters.so [CHAIN]
                                                               tones through the filter itself
"""
import sys
from fractions import Fraction

import loaded_filter
import numpy as np

FFT_SIZE = 1 << 20
FLOOR = 1e-9  # components below -180 dB are dropped


class Stage:
    """One filter: factors up/down, half-length, widen and cutoff as in its parameter list."""

    def __init__(self, up, down, half, widen=0.52, cutoff=None):
        self.up, self.down, self.half, self.widen = up, down, min(half, 2048), widen
        self.cutoff = 1 / max(up, down) if cutoff is None else cutoff
        spectrum = np.abs(np.fft.rfft(self.kernel(), FFT_SIZE)) / up
        self.response = spectrum.astype(np.float64)

    @staticmethod
    def parse(text):
        ratio, half, *rest = text.split(",")
        up, down = map(int, ratio.split("/"))
        return Stage(up, down, int(half), *map(float, rest))

    def kernel(self):
        """The coefficients, rounded to single precision where the filter rounds."""
        reach = self.half // self.up * self.up
        if reach == 0:
            return np.ones(1)
        i = np.arange(-reach, reach + 1)
        fc = self.widen / reach + self.cutoff
        sinc = (fc * np.sinc(fc * i)).astype(np.float32) * np.float32(self.up)
        return (sinc.astype(np.float64) * np.blackman(2 * reach + 1)).astype(np.float32)

    def gain(self, frequency):
        """Of a frequency in cycles per high-rate step, 0 to 0.5."""
        return np.interp(frequency * FFT_SIZE, np.arange(len(self.response)), self.response)

    def macs(self):
        """Multiplications and additions for one output."""
        return 2 * (self.half // self.up) + 1

    def __str__(self):
        return f"{self.up}/{self.down},{self.half},{self.widen:g}"


def fold(frequency, rate):
    """Where a frequency appears after sampling at a rate."""
    turned = np.mod(frequency, rate)
    return np.minimum(turned, rate - turned)


def components(stages, tones, rate):
    """All that becomes of tones (in units in which the input rate is `rate`).

    Returns their index, frequency and amplitude, and whether each is the tone itself."""
    index, place = np.arange(len(tones)), tones.copy()
    amplitude, wanted = np.ones(len(tones)), np.ones(len(tones), bool)
    for stage in stages:
        high = rate * stage.up
        parts = []
        for k in range(stage.up // 2 + 1):
            for sign in (1, -1) if k else (1,):
                at = k * rate + sign * place
                inside = (at >= 0) & (at <= high / 2)
                weight = amplitude * stage.gain(np.where(inside, at, 0) / high)
                kept = inside & (weight > FLOOR)
                parts.append((index[kept], at[kept], weight[kept], wanted[kept] & (k == 0)))
        index, at, amplitude, wanted = (np.concatenate(part) for part in zip(*parts))
        rate = high / stage.down
        place = fold(at, rate)
        wanted = wanted & (at <= rate / 2)
    return index, place, amplitude, wanted


class Measured:
    """Gain and worst unwanted component of each tone."""

    def __init__(self, stages, count=3000):
        ratio = Fraction(1)
        for stage in stages:
            ratio *= Fraction(stage.up, stage.down)
        rate = 2 * max(1.0, float(1 / ratio))  # the lower Nyquist frequency is 1
        # Not on a grid on which images meet.
        self.tones = (np.arange(count) + 0.5 + 1e-3 * np.sqrt(2)) / count * rate / 2
        index, _, amplitude, wanted = components(stages, self.tones, rate)
        self.gain, self.unwanted = np.zeros(count), np.zeros(count)
        np.maximum.at(self.gain, index[wanted], amplitude[wanted])
        np.maximum.at(self.unwanted, index[~wanted], amplitude[~wanted])

    def ripple_db(self, to):
        return np.abs(decibels(self.gain[self.tones <= to])).max()

    def rejection_db(self, start):
        low, high = self.tones <= 2 - start, self.tones >= start
        worst = np.concatenate([self.unwanted[low], self.gain[high], self.unwanted[high]])
        return -decibels(worst.max(initial=FLOOR))

    def band_db(self, drop):
        """The tone up to which nothing is weaker than `drop` dB."""
        weak = np.nonzero(decibels(self.gain) < -drop)[0]
        return self.tones[weak[0]] if len(weak) else self.tones[-1]


def decibels(amplitude):
    return 20 * np.log10(np.maximum(amplitude, FLOOR))


def cost(stages):
    """Multiplications and additions for one output of the chain."""
    total, share = 0.0, 1.0
    for stage in reversed(stages):
        total += stage.macs() * share
        share *= stage.down / stage.up
    return total


class Played:
    """The same figures from tones that a built library resamples, over fewer tones."""

    EDGE = 3000  # samples at either end that the kernels' ends may reach

    def __init__(self, stages, library, count=40000):
        ratio = np.prod([stage.up / stage.down for stage in stages])
        nyquist_in = max(1.0, 1 / ratio)
        nyquist_out = nyquist_in * ratio
        self.tones = np.concatenate([np.linspace(0.013, 0.8, 9), np.linspace(0.85, 0.997, 6),
                                     np.linspace(1.003, 0.999 * nyquist_in, 8)])
        self.tones = self.tones[self.tones < nyquist_in]
        self.gain, self.unwanted = np.zeros(len(self.tones)), np.zeros(len(self.tones))
        for i, tone in enumerate(self.tones):
            samples = np.sin(np.pi * tone / nyquist_in * np.arange(count) + 0.3)
            for s in stages:
                p = [s.down, s.up, 0, 0, 0, s.half, s.cutoff, s.widen]
                samples = loaded_filter.run(library, "ResampleI", p, samples)
            self.weigh(i, samples[self.EDGE:-self.EDGE].astype(float), np.pi * tone / nyquist_out)

    def weigh(self, i, samples, step):
        """Fits the tone, and looks for the largest of what is left."""
        window = np.kaiser(len(samples), 20)
        if step < np.pi and self.tones[i] < 1:
            angle = step * np.arange(len(samples))
            tone = np.stack([np.cos(angle), np.sin(angle)], 1)
            fit, *_ = np.linalg.lstsq(tone * window[:, None], samples * window, rcond=None)
            self.gain[i] = np.hypot(*fit)
            samples = samples - tone @ fit
        self.unwanted[i] = np.abs(np.fft.rfft(samples * window)).max() * 2 / window.sum()

    ripple_db, rejection_db, band_db = Measured.ripple_db, Measured.rejection_db, Measured.band_db


def report(stages, measured):
    m = measured(stages)
    print(f"{' '.join(map(str, stages)):<34} {m.ripple_db(0.8):9.4f} {m.ripple_db(0.85):9.4f} "
          f"{m.band_db(3):6.3f} {m.rejection_db(1.0):7.1f} {m.rejection_db(1.2):7.1f} "
          f"{cost(stages):7.0f}")


def main(arguments):
    measured = Measured
    if arguments and arguments[0] == "--library":
        library = arguments[1]
        arguments = arguments[2:]
        measured = lambda stages: Played(stages, library)
    if arguments and arguments[0] == "--csv":
        m = Measured([Stage.parse(text) for text in arguments[1:]])
        print("tone,gain_dB,unwanted_dB")
        for row in zip(m.tones, decibels(m.gain), decibels(m.unwanted)):
            print(",".join(f"{value:.6g}" for value in row))
        return
    print(f"{'stages L/M,Q,widen':<34} {'ripple.8':>9} {'ripple.85':>9} {'-3 dB':>6} "
          f"{'rej 1.0':>7} {'rej 1.2':>7} {'MAC/out':>7}")
    for chain in [" ".join(arguments)] if arguments else TABLE.strip().splitlines():
        report([Stage.parse(text) for text in chain.split()], measured)


TABLE = """
1/2,60,0.52
2/1,60,0.52
2/3,60,0.52
160/147,2048,0.52
147/160,2048,0.52
1/2,28,0
2/1,28,0
2/3,42,0
3/2,42,0
8/7,112,0 20/21,300,0
21/20,294,0 7/8,112,0
1/2,78,-5.2
2/1,78,-5.2
2/3,118,-5.2
3/2,117,-5.2
8/7,312,-5.2 20/21,820,-5.2
21/20,819,-5.2 7/8,315,-5.2
1/2,196,-12.2
2/1,196,-12.2
2/3,294,-12.2
3/2,294,-12.2
8/7,784,-12.2 20/21,2040,-12.2
21/20,2037,-12.2 7/8,784,-12.2
"""

if __name__ == "__main__":
    main(sys.argv[1:])
