"""The take behind examples/data: what a speaker's eight pellets did while some syllables were said.

Coordinates are millimetres in the plane through the middle of the head. The origin is the edge of
the upper incisors, x grows towards the front, y grows upwards. The speaker moves from one phone's
posture to the next; every pellet travels in a straight line with the smoothest possible speed
(minimum jerk), so its greatest speed is 1.875 x distance / duration.

Everything is plain arithmetic on Python floats and random.Random.random(), whose sequence Python
keeps from version to version: the same seed gives the same take everywhere.
"""

import math
from dataclasses import dataclass
from random import Random

FRAME_MS = 6.866  # time between two records
RECORDS = 1500  # 10.299 s
MISSING_UM = 1_000_000  # a coordinate at or above this was not measured
NOISE_MM = 0.03  # standard deviation of the measurement noise

# The order of the pellets in a record: pellet 1 first.
PELLETS = (
    "upper lip",
    "lower lip",
    "tongue tip",
    "tongue blade",
    "tongue body",
    "tongue dorsum",
    "jaw, incisor",
    "jaw, molar",
)


@dataclass(frozen=True)
class Phone:
    """A posture of the mouth and the sound that goes with it."""

    pellets: tuple  # eight (x, y), mm
    formants: tuple  # Hz
    voice: float = 0.0  # strength of the voice
    hiss: float = 0.0  # strength of the noise while the posture is held
    burst: float = 0.0  # strength of the noise when a closure opens
    noise_hz: float = 1000.0  # where that noise is loudest
    pressure: float = 0.0  # air pressure in the mouth, volts of the sensor


PHONES = {
    "rest": Phone(
        (
            (9.5, 2.6), (8.0, -9.0), (-12.0, -4.0), (-26.0, 2.0),
            (-39.0, 3.0), (-51.0, -1.0), (-2.0, -9.0), (-34.0, -10.0),
        ),
        (500, 1500, 2500),
    ),
    "a": Phone(
        (
            (9.0, 3.4), (6.5, -20.0), (-16.0, -10.0), (-28.0, -6.0),
            (-41.0, -3.0), (-53.0, -4.0), (-4.0, -17.0), (-35.0, -14.0),
        ),
        (730, 1150, 2450),
        voice=1.0,
        pressure=0.3,
    ),
    "i": Phone(
        (
            (8.8, 4.0), (7.5, -13.0), (-10.0, -1.0), (-20.5, 9.5),
            (-33.0, 12.0), (-46.0, 8.0), (-2.0, -10.0), (-34.0, -10.5),
        ),
        (290, 2250, 2950),
        voice=0.7,
        pressure=0.5,
    ),
    "u": Phone(
        (
            (11.8, 2.0), (11.0, -12.0), (-20.0, -3.0), (-31.0, 5.0),
            (-43.0, 11.5), (-54.0, 8.0), (-2.5, -10.5), (-34.2, -11.0),
        ),
        (320, 800, 2250),
        voice=0.8,
        pressure=0.5,
    ),
    "t": Phone(
        (
            (9.3, 2.8), (7.2, -11.0), (-9.0, 9.4), (-22.0, 7.0),
            (-36.0, 5.0), (-50.0, 1.0), (-1.5, -8.5), (-33.5, -9.5),
        ),
        (350, 1750, 2650),
        burst=1.5,
        noise_hz=4000.0,
        pressure=6.2,
    ),
    "k": Phone(
        (
            (9.2, 2.8), (7.2, -13.0), (-17.0, -4.0), (-28.0, 6.0),
            (-40.0, 15.8), (-52.0, 11.5), (-2.0, -10.0), (-34.0, -10.5),
        ),
        (320, 1900, 2350),
        burst=1.5,
        noise_hz=1900.0,
        pressure=6.6,
    ),
    "p": Phone(
        (
            (9.8, -0.8), (8.6, -5.2), (-13.0, -4.5), (-26.5, 1.5),
            (-39.5, 2.5), (-51.5, -1.0), (-2.0, -9.0), (-34.0, -10.0),
        ),
        (350, 900, 2250),
        burst=1.0,
        noise_hz=900.0,
        pressure=6.8,
    ),
    "s": Phone(
        (
            (9.0, 3.2), (7.4, -10.5), (-8.5, 7.6), (-21.5, 6.5),
            (-35.0, 5.5), (-49.5, 1.5), (-1.0, -8.0), (-33.2, -9.2),
        ),
        (350, 1600, 2600),
        hiss=1.2,
        noise_hz=5500.0,
        pressure=5.1,
    ),
}
CONSONANTS = ("t", "k", "s", "t", "p")  # the tip's consonants more often: three of the eight measures follow the tip
VOWELS = ("a", "i", "a", "u")


@dataclass(frozen=True)
class Gap:
    """A run of records in which coordinates of one pellet were lost; `value` stands in their place."""

    pellet: int  # 1 to 8
    axes: str  # "xy", or the one coordinate that was lost
    first: int  # first record of the run, counted from 1
    count: int
    value_um: int = MISSING_UM


GAPS = (
    Gap(3, "xy", 201, 24),
    Gap(4, "xy", 215, 30, 1_048_575),  # begins inside the tip's gap and outlasts it
    Gap(2, "xy", 402, 18),
    Gap(5, "xy", 560, 21),
    Gap(3, "x", 700, 9),  # the tip's height was still measured
    Gap(3, "y", 741, 1),  # a single record
    Gap(1, "xy", 830, 7),
    Gap(4, "y", 904, 12),
    Gap(3, "xy", 1101, 15, 1_000_001),
    Gap(6, "xy", 1203, 40),
    Gap(8, "xy", RECORDS - 59, 60),  # never comes back
)


@dataclass(frozen=True)
class Move:
    """The way from one posture to the next; the next one is held until another move starts."""

    start_ms: float
    end_ms: float
    origin: Phone
    target: Phone

    def progress(self, time_ms):
        """How much of the way is done, 0 to 1: the minimum-jerk polynomial."""
        u = min(max((time_ms - self.start_ms) / (self.end_ms - self.start_ms), 0.0), 1.0)
        return u * u * u * (10.0 - 15.0 * u + 6.0 * u * u)


def between(a, b, part):
    return a + (b - a) * part


def utterance(rng):
    """The moves of the take: phrases of six syllables with rests between them."""

    def pick(names):
        return PHONES[names[int(rng.random() * len(names))]]

    moves = []
    time_ms = 350.0
    here = PHONES["rest"]

    def go(target, hold_ms):
        nonlocal here, time_ms
        move_ms = between(106.0, 140.0, rng.random())
        moves.append(Move(time_ms, time_ms + move_ms, here, target))
        here = target
        time_ms += move_ms + hold_ms

    while time_ms < RECORDS * FRAME_MS - 2600.0:
        for _ in range(6):
            go(pick(CONSONANTS), between(25.0, 50.0, rng.random()))
            go(pick(VOWELS), between(40.0, 110.0, rng.random()))
        go(PHONES["rest"], 250.0)
    while time_ms < RECORDS * FRAME_MS - 700.0:
        go(PHONES["t"], 40.0)
        go(PHONES["a"], 60.0)
    go(PHONES["rest"], 0.0)
    return moves


def current_moves(moves, times_ms):
    """For rising times: each time with the move that started last (the first one before it starts)."""
    index = 0
    for time_ms in times_ms:
        while index + 1 < len(moves) and moves[index + 1].start_ms <= time_ms:
            index += 1
        yield time_ms, moves[index]


def true_positions(moves):
    """Noise-free coordinates, one list of 16 (x and y of pellets 1 to 8) per record, mm."""
    rows = []
    for time_ms, move in current_moves(moves, (k * FRAME_MS for k in range(RECORDS))):
        part = move.progress(time_ms)
        pairs = zip(move.origin.pellets, move.target.pellets)
        rows.append([between(a, b, part) for start, end in pairs for a, b in zip(start, end)])
    return rows


def nearly_normal(rng):
    """Mean 0, deviation 1, from additions alone: log and cos may differ between maths libraries."""
    return sum(rng.random() for _ in range(12)) - 6.0


def to_integer(value):
    return math.floor(value + 0.5)


def measured_positions(rows, rng):
    """What the tracker recorded: integers, thousandths of a millimetre, with noise and gaps."""
    measured = [[to_integer(1000.0 * (mm + NOISE_MM * nearly_normal(rng))) for mm in row] for row in rows]
    for gap in GAPS:
        for record in range(gap.first - 1, gap.first - 1 + gap.count):
            for axis in gap.axes:
                measured[record][2 * (gap.pellet - 1) + "xy".index(axis)] = gap.value_um
    return measured


def palate_height(x):
    """Height of the palate above the edge of the incisors, mm, for x from -60 to 0.

    The curve bends downwards everywhere, so a straight way between two postures below it stays below it.
    """
    u = (x + 30.0) / 30.0
    return 18.0 - (18.0 * u * u * u if u > 0.0 else 8.0 * u * u)


def palate_contour():
    """Points from the incisors to the back, every half millimetre, thousandths of a millimetre."""
    return [(-500 * i, to_integer(1000.0 * palate_height(-0.5 * i))) for i in range(1, 121)]


class Take:
    """Everything that was recorded about the movements; `moves` tells the sound what to say."""

    def __init__(self, seed):
        rng = Random(seed)
        self.moves = utterance(rng)
        self.true_mm = true_positions(self.moves)
        self.measured_um = measured_positions(self.true_mm, rng)
        self.palate_um = palate_contour()
