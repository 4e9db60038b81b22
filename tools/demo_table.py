#!/usr/bin/python3
"""Prints what ./demo did, with the effect measured from the written files alone.

demo_table.py RECORDING HUMMING FILTERED FREQUENCY_HZ SECONDS: the recording as it was read, with
the hum, and after the notch; the hum's frequency; how long the last run took.
"""

import sys
import warnings

import numpy
from scipy.io import wavfile

# Far enough from the notch (Hz) for the filter to leave a sound as it is.
BESIDE_HZ = 600.0


def read(path):
    """Sampling rate and samples of a file of one channel, full scale at 1."""
    with warnings.catch_warnings():
        warnings.simplefilter("ignore", wavfile.WavFileWarning)
        rate, samples = wavfile.read(path)
    full_scale = -float(numpy.iinfo(samples.dtype).min) if samples.dtype.kind == "i" else 1.0
    return rate, samples / full_scale


def spectrum(rate, samples):
    """Frequencies in Hz, and the amplitude that a sine at each of them would have."""
    window = numpy.blackman(samples.size)
    amplitudes = 2.0 * numpy.abs(numpy.fft.rfft(samples * window)) / window.sum()
    return numpy.fft.rfftfreq(samples.size, 1.0 / rate), amplitudes


def tone_db(rate, samples, frequency_hz):
    """Level in dB (full scale 0) of the sine at that frequency, by Fourier sum at the very spot."""
    window = numpy.blackman(samples.size)
    turns = numpy.exp(-2j * numpy.pi * frequency_hz / rate * numpy.arange(samples.size))
    return decibel(2.0 * abs(numpy.sum(samples * window * turns)) / window.sum())


def beside_db(rate, samples, frequency_hz):
    """Level in dB of all that lies away from that frequency."""
    frequencies, amplitudes = spectrum(rate, samples)
    away = numpy.abs(frequencies - frequency_hz) > BESIDE_HZ
    return decibel(numpy.sqrt(numpy.sum(amplitudes[away] ** 2)))


def decibel(ratio):
    return 20.0 * numpy.log10(max(ratio, 1e-12))


def main():
    recording, humming, filtered = sys.argv[1:4]
    frequency_hz, seconds = float(sys.argv[4]), float(sys.argv[5])
    rate, samples = read(recording)
    before_rate, before = read(humming)
    after_rate, after = read(filtered)
    if not rate == before_rate == after_rate or not samples.size == before.size == after.size:
        sys.exit("demo: the written files do not have the recording's rate and length")

    duration_s = samples.size / rate
    tone = [tone_db(rate, each, frequency_hz) for each in (samples, before, after)]
    beside = [beside_db(rate, each, frequency_hz) for each in (samples, before, after)]
    print(f"{'read':8} {recording}: {rate} Hz, {samples.size} samples, {duration_s:.2f} s")
    print(f"{'written':8} {filtered}: {after_rate} Hz, {after.size} samples")
    print()
    print(f"{'dB below full scale':24} {'recording':>10} {'with hum':>10} {'filtered':>10}")
    print(f"{f'tone at {frequency_hz:g} Hz':24} " + " ".join(f"{each:10.1f}" for each in tone))
    print(f"{f'more than {BESIDE_HZ:g} Hz away':24} " + " ".join(f"{each:10.1f}" for each in beside))
    print()
    print(f"The notch takes the tone down by {tone[1] - tone[2]:.1f} dB; the rest of the sound "
          f"changes by {abs(beside[2] - beside[0]):.2f} dB.")
    print(f"It took {seconds * 1000:.0f} ms, start of the program included: "
          f"{duration_s / seconds:.0f} times faster than real time.")


if __name__ == "__main__":
    main()
