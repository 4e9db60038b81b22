#!/usr/bin/python3
"""Writes tests/resample/vectors/upfirdn.txt: what SciPy's upfirdn makes of random signals.

With L high-rate steps per input sample, one output every M of them and a kernel c of 2 m L + 1
coefficients (m = Q // L), output n is upfirdn(c, x, up=L)[m L + M n]: the kernel is centred on the
sample. The kernel is designed here in double precision, from the textbook window of NumPy.

Usage: tools/make_upfirdn_vectors.py > tests/resample/vectors/upfirdn.txt
"""
import numpy as np
from scipy.signal import upfirdn

# M, L, Q, shift, cutoff (None: 1 / max(L, M)), widen, samples
CASES = [
    (1, 1, 60, 0.0, None, 0.52, 150),
    (2, 1, 60, 0.0, None, 0.52, 151),
    (1, 2, 60, 0.0, None, 0.52, 80),
    (3, 2, 90, 0.0, None, 0.52, 120),
    (2, 3, 90, 0.0, 0.25, 1.0, 77),
    (7, 8, 200, 0.0, None, 2.0, 64),
    (8, 7, 200, 0.0, None, 0.0, 64),
    (147, 160, 2000, 0.0, None, 0.52, 50),
    (160, 147, 2000, 0.0, None, 0.52, 50),
    (5, 4, 61, 0.5, 0.1, 0.52, 90),
    (1, 70, 60, 0.0, None, 0.52, 5),
    (13, 3, 1000, 0.0, 0.07, 0.3, 700),
]


def kernel(up, down, half, shift, cutoff, widen):
    reach = half // up * up
    if reach == 0:
        return np.ones(1)
    i = np.arange(-reach, reach + 1)
    fc = widen / reach + (1 / max(up, down) if cutoff is None else cutoff)
    modulation = np.cos(np.pi * i * shift)
    return up * fc * np.sinc(fc * i) * modulation * np.blackman(2 * reach + 1)


def main():
    rng = np.random.default_rng(147160)
    for down, up, half, shift, cutoff, widen, count in CASES:
        x = np.round(rng.uniform(-1, 1, count) * 4096) / 4096  # whole in single precision, too
        c = kernel(up, down, half, shift, cutoff, widen)
        outputs = -(-count * up // down)
        full = upfirdn(c, np.concatenate([x, np.zeros(half // up + down + 1)]), up=up)
        y = full[half // up * up + down * np.arange(outputs)]
        given = 1 / max(up, down) if cutoff is None else cutoff
        print("parameters", down, up, 0, 0, shift, half, repr(given), widen)
        print("x", *(f"{v:.12g}" for v in x))
        print("y", *(f"{v:.9g}" for v in y))


if __name__ == "__main__":
    main()
