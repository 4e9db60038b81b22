#!/usr/bin/python3
"""Writes the event files of a short phrase that the voice sources speak.

    tools/make_phrase.py [FOLDER]      (default: examples/phrase)

The phrase is two Russian words, [saʃɨ ʃose] ("Sasha's highway"), 1.8 s at 16 kHz, with a pitch that
falls from 135 to 85 Hz. Run through a filter each, on silence at 16 kHz:

    phrase.gpl    glottal pulses for GlotSyn: instant (ms), amplitude, the pulse's resonance (kHz) and
                  its bandwidth (kHz), then the vowel's log-area ratios
    phrase.fla    noise bursts for FricSyn: centre (ms), amplitude, log-area ratios
    phrase.gpm    the same glottal instants for PulseSyn: instant (ms), amplitude; a bare buzz of the
                  phrase's melody, which replaces samples and so wants a run of its own
    phrase.json   what is said when, for tools/measure_phrase.py

The same seed gives the same bytes. Needs numpy.
"""

import argparse
import json
import pathlib

import numpy as np

import vowel_tubes

RATE = 16000
SILENCE_BEFORE, SILENCE_AFTER = 80.0, 240.0  # ms; the last 64 ms are out of the sources' reach
PITCH_FIRST, PITCH_LAST = 135.0, 85.0  # Hz
JITTER, SHIMMER = 0.004, 0.03  # random change of each period and amplitude, as a share of it

# The words, as sounds and their durations in ms; "" is a pause.
PHRASE = [
    ("s", 140), ("a", 200), ("ʃ", 140), ("ɨ", 170), ("", 60),
    ("ʃ", 150), ("o", 200), ("s", 150), ("e", 290),
]  # fmt: skip

# The growing resonance before each closure: half a swing of it takes as long as the glottis is open.
PULSE_FREQUENCY, PULSE_BANDWIDTH = 0.11, 0.06  # kHz
PULSE_AMPLITUDE = 0.15
# Amplitude of a vowel, against the differences that mouths of different width make.
LOUDNESS = {"a": 1.0, "e": 1.0, "o": 1.0, "ɨ": 1.0}
VOWEL_ONSET, VOWEL_RELEASE = 30.0, 50.0  # ms

# What a fricative's cavities in front of the narrowing resonate at (Hz) and with what bandwidth (Hz). A
# pole at half the sampling rate makes up for the source's fall towards high frequencies.
FRICATIVES = {
    "s": {"resonances": [(5600, 1400)], "tilt": 0.3, "amplitude": 0.006},
    "ʃ": {"resonances": [(2800, 500), (4600, 900)], "tilt": 0.5, "amplitude": 0.008},
}
# Bursts every half window: the squares of neighbouring half-sine windows add up to one.
BURST_STEP = 5.0  # ms
FRICATIVE_RAMP = 35.0  # ms


def timeline():
    """The sounds with the times (ms) at which they begin and end."""
    sounds, now = [], SILENCE_BEFORE
    for label, duration in PHRASE:
        if label:
            sounds.append({"label": label, "start_ms": now, "end_ms": now + duration})
        now += duration
    return sounds, now + SILENCE_AFTER


def loudness(time, start, end, onset, release):
    """0 to 1: rises like a quarter of a sine after the start, falls so before the end."""
    share = min((time - start) / onset, (end - time) / release, 1.0)
    return float(np.sin(np.pi / 2 * max(share, 0.0)))


def pitch(time, total):
    return PITCH_FIRST + (PITCH_LAST - PITCH_FIRST) * (time - SILENCE_BEFORE) / (
        total - SILENCE_BEFORE - SILENCE_AFTER
    )


def glottal_pulses(vowel, total, random):
    """Instants, amplitudes of a vowel's pulses. A last pulse of amplitude 0 one period after the others
    ends the ringing of the one before it, which otherwise waits for the next vowel's first."""
    start, end = vowel["start_ms"], vowel["end_ms"]
    pulses, time = [], start
    while time < end:
        amplitude = PULSE_AMPLITUDE * LOUDNESS[vowel["label"]]
        amplitude *= loudness(time, start, end, VOWEL_ONSET, VOWEL_RELEASE)
        amplitude *= 1 + SHIMMER * random.standard_normal()
        pulses.append((time, amplitude))
        time += 1000 / pitch(time, total) * (1 + JITTER * random.standard_normal())
    pulses.append((time, 0.0))
    return pulses


def fricative_ratios(sound):
    a = np.array([1.0, FRICATIVES[sound]["tilt"]])
    for frequency, bandwidth in FRICATIVES[sound]["resonances"]:
        radius = np.exp(-np.pi * bandwidth / RATE)
        a = np.convolve(a, [1, -2 * radius * np.cos(2 * np.pi * frequency / RATE), radius**2])
    return vowel_tubes.log_area_ratios(a)


def noise_bursts(sound):
    start, end = sound["start_ms"], sound["end_ms"]
    for time in np.arange(start + BURST_STEP, end - BURST_STEP / 2, BURST_STEP):
        share = loudness(time, start, end, FRICATIVE_RAMP, FRICATIVE_RAMP)
        yield time, FRICATIVES[sound["label"]]["amplitude"] * share


def line(numbers, ratios=()):
    return " ".join([f"{n:.6g}" for n in numbers] + [f"{r:.5f}" for r in ratios]) + "\n"


def events(seed):
    """The contents of the files by the ends of their names."""
    random = np.random.default_rng(seed)
    sounds, total = timeline()
    gpl, gpm, fla = [], [], []
    for sound in sounds:
        label = sound["label"]
        if label in FRICATIVES:
            ratios = fricative_ratios(label)
            fla += [line(burst, ratios) for burst in noise_bursts(sound)]
            continue
        ratios = vowel_tubes.vowel_ratios(label, RATE)
        pulses = glottal_pulses(sound, total, random)
        gpl += [line([*pulse, PULSE_FREQUENCY, PULSE_BANDWIDTH], ratios) for pulse in pulses]
        gpm += [line([time, 0.5 * amplitude / PULSE_AMPLITUDE]) for time, amplitude in pulses[:-1]]
        sound["formants_Hz"] = vowel_tubes.FORMANTS[label]
    story = {"rate_Hz": RATE, "duration_ms": total, "sounds": sounds}
    texts = {".gpl": gpl, ".gpm": gpm, ".fla": fla}
    texts[".json"] = [json.dumps(story, ensure_ascii=False, indent=2), "\n"]
    return {ending: "".join(lines) for ending, lines in texts.items()}


def main():
    here = pathlib.Path(__file__).resolve().parent
    parser = argparse.ArgumentParser(description="Write the event files of a short phrase.")
    parser.add_argument("folder", nargs="?", type=pathlib.Path, default=here.parent / "examples" / "phrase")
    parser.add_argument("--seed", type=int, default=1, help="of the pulses' jitter and shimmer (default 1)")
    arguments = parser.parse_args()
    arguments.folder.mkdir(parents=True, exist_ok=True)
    for ending, text in events(arguments.seed).items():
        (arguments.folder / f"phrase{ending}").write_text(text, encoding="utf-8", newline="\n")


if __name__ == "__main__":
    main()
