#!/usr/bin/python3
"""Measures a recording of the phrase that tools/make_phrase.py writes the events of.

    tools/measure_phrase.py WAV [FOLDER]      (default folder: examples/phrase)

For each vowel: F1 and F2 at its middle, by linear prediction on the recording where the glottis is
closed, against the published formants (10 % allowed), and the pitch by autocorrelation against the
events' times (2 %). For each fricative: the centre of gravity of its spectrum against what is usual for it.
Prints a table; exits with 1 where something is off, with 2 where the recording cannot be measured.

Needs numpy.
"""

import argparse
import json
import pathlib
import struct
import sys

import numpy as np

FORMANT_TOLERANCE, PITCH_TOLERANCE = 0.10, 0.02
# Centre of gravity above 500 Hz, in Hz. Means of many speakers are 6133 Hz for [s], 4229 Hz for [ʃ]
# (A. Jongman, R. Wayland, S. Wong, Journal of the Acoustical Society of America 108, 2000), in bands up
# to 11 kHz; here they end at 8 kHz.
CENTROIDS = {"s": (4500, 7000), "ʃ": (2500, 4500)}
MIDDLE = 80.0  # ms of a vowel that are looked at
LEAST_LEVEL = 0.001  # root mean square below which nothing is there to be measured


def read_wave(path):
    """Samples (full scale 1) and rate of a one-channel WAV file of 16-bit integers or 32-bit floats."""
    data = path.read_bytes()
    if data[:4] != b"RIFF" or data[8:12] != b"WAVE":
        raise ValueError("not a WAV file")
    place, format_ = 12, None
    while place + 8 <= len(data):
        name, size = struct.unpack_from("<4sI", data, place)
        body = data[place + 8 : place + 8 + size]
        if name == b"fmt ":
            code, channels, rate, _, _, bits = struct.unpack_from("<HHIIHH", body)
            format_ = struct.unpack_from("<H", body, 24)[0] if code == 0xFFFE else code, bits
            if channels != 1:
                raise ValueError(f"{channels} channels, one is wanted")
        if name == b"data" and format_ == (3, 32):
            return np.frombuffer(body, "<f4").astype(float), rate
        if name == b"data" and format_ == (1, 16):
            return np.frombuffer(body, "<i2") / 32768.0, rate
        place += 8 + size + size % 2
    raise ValueError("no samples of 16-bit integers or 32-bit floats")


def pulse_times(path):
    """Instants (ms) of all pulses but the silent ones, which end a vowel."""
    lines = [line.split() for line in path.read_text().splitlines()]
    return np.array([float(line[0]) for line in lines if float(line[1]) != 0])


def closed_phase_prediction(signal, rate, pulses, order):
    """Predictor by least squares (the covariance method) over the samples that follow a pulse by up to
    half a period, where the tract rings by itself."""
    rows, targets = [], []
    for start, end in zip(pulses, pulses[1:]):
        first = int(start * rate / 1000) + 1
        for n in range(first, first + int(0.5 * (end - start) * rate / 1000)):
            rows.append(signal[n - order : n][::-1])
            targets.append(signal[n])
    return np.append(1.0, -np.linalg.lstsq(np.array(rows), np.array(targets), rcond=None)[0])


def formants(predictor, rate):
    """The frequencies (Hz) of sharp resonances, lowest first."""
    roots = np.roots(predictor)
    roots = roots[(roots.imag > 0) & (np.abs(roots) > np.exp(-np.pi * 500 / rate))]
    found = np.sort(np.angle(roots)) * rate / (2 * np.pi)
    return found[found > 90]


def pitch(signal, rate):
    """Frequency (Hz) of the highest peak of the autocorrelation between 60 and 250 Hz."""
    signal = signal - signal.mean()
    count = len(signal)
    correlation = np.correlate(signal, signal, "full")[count - 1 :] / (count - np.arange(count))
    low, high = int(rate / 250), int(rate / 60)
    best = low + int(np.argmax(correlation[low:high]))
    left, top, right = correlation[best - 1 : best + 2]
    return rate / (best + 0.5 * (left - right) / (left - 2 * top + right))


def centroid(signal, rate):
    power = np.abs(np.fft.rfft(signal * np.hanning(len(signal)))) ** 2
    frequencies = np.fft.rfftfreq(len(signal), 1 / rate)
    wanted = frequencies > 500
    return float((power * frequencies)[wanted].sum() / power[wanted].sum())


def measured(sound, signal, rate, pulses):
    """What is found in a sound: (name, measured value, lowest, highest) for each thing looked at."""
    middle = (sound["start_ms"] + sound["end_ms"]) / 2
    reach = MIDDLE / 2 if "formants_Hz" in sound else (sound["end_ms"] - sound["start_ms"]) / 4
    piece = signal[int((middle - reach) * rate / 1000) : int((middle + reach) * rate / 1000)]
    level = float(np.sqrt(np.mean(piece**2))) if len(piece) else 0.0
    if level < LEAST_LEVEL:
        return [("level", level, LEAST_LEVEL, np.inf)]
    if "formants_Hz" not in sound:
        return [("centroid", centroid(piece, rate), *CENTROIDS[sound["label"]])]
    near = pulses[np.abs(pulses - middle) <= reach]
    found = formants(closed_phase_prediction(signal, rate, near, order=rate // 1000 + 4), rate)
    found = [*found[:2], np.nan, np.nan]
    result = [
        (f"F{n + 1}", found[n], hz * (1 - FORMANT_TOLERANCE), hz * (1 + FORMANT_TOLERANCE))
        for n, hz in enumerate(sound["formants_Hz"])
    ]
    said = 1000 / np.diff(near).mean()
    heard = pitch(piece, rate)
    return [*result, ("pitch", heard, said * (1 - PITCH_TOLERANCE), said * (1 + PITCH_TOLERANCE))]


def main():
    here = pathlib.Path(__file__).resolve().parent
    parser = argparse.ArgumentParser(description="Measure a recording of the phrase.")
    parser.add_argument("wav", type=pathlib.Path, help="recording, one channel")
    parser.add_argument("folder", nargs="?", type=pathlib.Path, default=here.parent / "examples" / "phrase")
    arguments = parser.parse_args()
    story = json.loads((arguments.folder / "phrase.json").read_text(encoding="utf-8"))
    try:
        signal, rate = read_wave(arguments.wav)
    except (OSError, ValueError, struct.error) as error:
        print(f"{arguments.wav}: {error}", file=sys.stderr)
        return 2
    if rate != story["rate_Hz"]:
        print(f"{arguments.wav}: {rate} Hz, {story['rate_Hz']} Hz are wanted", file=sys.stderr)
        return 2
    pulses = pulse_times(arguments.folder / "phrase.gpl")
    wrong, pitches = 0, []
    for sound in story["sounds"]:
        for name, value, low, high in measured(sound, signal, rate, pulses):
            good = low <= value <= high
            wrong += not good
            pitches += [value] if name == "pitch" else []
            verdict = "" if good else "  <- off"
            print(f"{sound['label']}  {name:8} {value:8.4g}   {low:8.4g} to {high:<8.4g}{verdict}")
    falls = len(pitches) > 1 and all(b < a for a, b in zip(pitches, pitches[1:]))
    if not falls:
        print("The pitch does not fall from vowel to vowel.")
    return 1 if wrong or not falls else 0


if __name__ == "__main__":
    sys.exit(main())
