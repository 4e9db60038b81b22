"""The sound and the recorded track of a take (see pellet_take.py): speech-like, made from nothing but arithmetic.

A train of glottal pulses runs through three resonances that follow the postures of the mouth; noise bursts and
hiss stand for the consonants. Nobody's voice was recorded, so nobody's licence applies.
"""

import math

from pellet_take import FRAME_MS, RECORDS, between, current_moves, nearly_normal, to_integer

RATE_HZ = 16000
TRACK_MS = 1.145081873353945  # time between two samples of a recorded track
BURST_MS = 18.0
STEP = 80  # samples between two looks at the mouth: 5 ms
BANDWIDTHS_HZ = (70.0, 100.0, 150.0)


class Resonance:
    """A two-pole resonator with gain 1 at frequency 0, or of about 1 at its peak."""

    def __init__(self, bandwidth_hz, level_peak=False):
        self.radius = math.exp(-math.pi * bandwidth_hz / RATE_HZ)
        self.level_peak = level_peak
        self.y1 = self.y2 = 0.0
        self.tune(1000.0)

    def tune(self, frequency_hz):
        angle = 2.0 * math.pi * frequency_hz / RATE_HZ
        self.b1 = 2.0 * self.radius * math.cos(angle)
        self.b2 = -self.radius * self.radius
        self.gain = 2.0 * (1.0 - self.radius) * math.sin(angle) if self.level_peak else 1.0 - self.b1 - self.b2

    def filter(self, x):
        y = self.gain * x + self.b1 * self.y1 + self.b2 * self.y2
        self.y2 = self.y1
        self.y1 = y
        return y


def glottal_flow_change(phase):
    """Slope of the air flow through the glottis at 0 <= phase < 1 of a period: open for three fifths of it."""
    u = phase / 0.6
    return 2.0 * u - 3.0 * u * u if u < 1.0 else 0.0


def noise_level(move, time_ms, part):
    """Strength and frequency of the noise: what the postures hold, or the burst of a closure that opens."""
    if move.origin.burst > 0.0 and 0.0 <= time_ms - move.start_ms < BURST_MS:
        return move.origin.burst, move.origin.noise_hz
    louder = max(move.origin, move.target, key=lambda phone: phone.hiss)
    return between(move.origin.hiss, move.target.hiss, part), louder.noise_hz


def speech(moves, rng):
    """Samples of the recording, integers of 16 bits at RATE_HZ."""
    samples = to_integer(RECORDS * FRAME_MS * RATE_HZ / 1000.0)
    tract = [Resonance(bandwidth) for bandwidth in BANDWIDTHS_HZ]
    constriction = Resonance(900.0, level_peak=True)
    phase = 0.0
    sound = []
    for time_ms, move in current_moves(moves, (i * 1000.0 / RATE_HZ for i in range(0, samples, STEP))):
        part = move.progress(time_ms)
        for resonance, low, high in zip(tract, move.origin.formants, move.target.formants):
            resonance.tune(between(low, high, part))
        voice = between(move.origin.voice, move.target.voice, part)
        hiss, noise_hz = noise_level(move, time_ms, part)
        constriction.tune(noise_hz)
        pitch_hz = 128.0 - 28.0 * time_ms / (RECORDS * FRAME_MS)
        for _ in range(min(STEP, samples - len(sound))):
            phase = (phase + pitch_hz / RATE_HZ) % 1.0
            y = voice * glottal_flow_change(phase)
            for resonance in tract:
                y = resonance.filter(y)
            sound.append(y + constriction.filter(hiss * (rng.random() - 0.5)))
    scale = 16000.0 / max(abs(y) for y in sound)
    return [to_integer(scale * y + 8.0 * (rng.random() - 0.5)) for y in sound]


def pressure_track(moves, rng):
    """Air pressure in the mouth, integers of 16 bits that span -10 to 10 V, one every TRACK_MS.

    The first 90 ms show the recorder's calibration: its lowest value, zero and its highest value.
    """
    samples = to_integer(RECORDS * FRAME_MS / TRACK_MS)
    track = []
    for time_ms, move in current_moves(moves, (i * TRACK_MS for i in range(samples))):
        if time_ms < 90.0:
            track.append((-32768, 0, 32767)[int(time_ms / 30.0)])
        else:
            volts = between(move.origin.pressure, move.target.pressure, move.progress(time_ms))
            track.append(to_integer(3276.8 * (volts + 0.02 * nearly_normal(rng))))
    return track
