#!/usr/bin/python3
"""The eight measures of the pellet kinematics reader, computed from positions with NumPy.

This is not the filter's code in another language: each measure is written as the physical quantity that it is,
over all records at once, so that the filter's output can be checked against it.

Positions are an array of (records, 16): x and y of pellets 1 to 8, thousandths of a millimetre, one record every
6.866 ms. A coordinate of 1,000,000 or more was not measured. Every measure function returns one value per record,
and NaN where something that it needs was not measured; the filter renders 0 there, and so does rendered().

As a program, it compares a file that a host wrote with what the positions give:
    pellet_modes.py POSITIONS.npz speed OUT.csv --interval 0.0625
"""

import argparse
import sys

import numpy as np

FRAME_MS = 6.866
START_MS = -10.299  # one frame before the span of the first record, which begins half a frame before 0
MISSING_UM = 1_000_000
SEARCHED_POINTS = 2048

MODES = {
    "distance_3_4": 1,
    "bend": 2,
    "velocity": 3,
    "acceleration": 4,
    "speed": 5,
    "tangential_acceleration": 6,
    "distance": 7,
    "palate": 8,
}
UNITS = {1: "mm", 2: "mm", 3: "mm/s", 4: "mm/s per ms x 6.866", 5: "mm/ms", 6: "mm/s per ms", 7: "mm", 8: "mm"}


def measured(um):
    """The positions with NaN where nothing was measured: NaN then spreads to all that depends on it."""
    um = np.asarray(um, dtype=np.float64)
    return np.where(um < MISSING_UM, um, np.nan)


def pellet(um, number):
    """x and y of a pellet (1 to 8), thousandths of a millimetre, shape (records, 2)."""
    return measured(um)[:, 2 * number - 2 : 2 * number]


def length(vectors):
    return np.sqrt(vectors[..., 0] ** 2 + vectors[..., 1] ** 2)


def distance(um, a, b):
    """Distance between pellets a and b, mm (mode 7; mode 1 with pellets 3 and 4).

    The filter decides about a record by the pellets of the record before it; while a and b stay the same this only
    concerns the first record, where it looks at c1 instead. Data whose first record is complete shows no difference.
    """
    return length(pellet(um, b) - pellet(um, a)) / 1000.0


def bend(um):
    """How far the line from pellet 3 to 4 turns towards 5, mm: length of the first leg times the sine of the turn.

    The sine is the cross product of the two legs over both lengths, so the first length cancels. It is positive when
    the turn is to the left (counter-clockwise).
    """
    first = pellet(um, 4) - pellet(um, 3)
    second = pellet(um, 5) - pellet(um, 4)
    cross = first[:, 0] * second[:, 1] - first[:, 1] * second[:, 0]
    return cross / length(second) / 1000.0


def velocity(um):
    """Velocity of the height of pellet 3 since the record before, mm/s, upwards positive; none in the first record."""
    height = pellet(um, 3)[:, 1]
    return np.diff(height, prepend=np.nan) / FRAME_MS  # a thousandth of a millimetre per ms is a millimetre per s


def acceleration(um):
    """Change of velocity() from one record to the next, times 1000; none in the first two records.

    This is 6.866 times the acceleration in mm/s^2: a change of velocity per record, not per millisecond.
    """
    return 1000.0 * np.diff(velocity(um), prepend=np.nan)


def speed(um):
    """Way of pellet 3 per record over the frame period, mm/ms.

    A record without pellet 3 has no speed; the next complete one counts the whole way since the last complete one, as
    if it had taken one frame period. The first complete record counts its distance from the origin.
    """
    path = pellet(um, 3) / 1000.0
    complete = ~np.isnan(path).any(axis=1)
    result = np.full(len(path), np.nan)
    result[complete] = length(np.diff(path[complete], axis=0, prepend=[[0.0, 0.0]])) / FRAME_MS
    return result


def tangential_acceleration(um):
    """Change of speed() from one complete record to the next, mm/s per ms; the first one starts from rest."""
    mm_per_s = 1000.0 * speed(um)
    complete = ~np.isnan(mm_per_s)
    result = np.full(len(mm_per_s), np.nan)
    result[complete] = np.diff(mm_per_s[complete], prepend=0.0) / FRAME_MS
    return result


def palate(um, palate_um, want_point=False):
    """Distance from pellet 3 to the nearest point of the palate contour, mm, or that point's number counted from 1.

    The contour's last point is never searched, nor any beyond the first 2048. With nothing to search the distance is
    1000 mm and the point is 1.
    """
    tip = pellet(um, 3)
    searched = np.asarray(palate_um, dtype=np.float64)[: min(len(palate_um) - 1, SEARCHED_POINTS)]
    lost = np.isnan(tip).any(axis=1)
    if len(searched) == 0:
        return np.where(lost, np.nan, 1.0 if want_point else 1000.0)
    gaps = length(searched[None, :, :] - np.where(lost[:, None], 0.0, tip)[:, None, :])
    found = gaps.argmin(axis=1) + 1.0 if want_point else gaps.min(axis=1) / 1000.0
    return np.where(lost, np.nan, found)


def rendered(mode, um, palate_um, a=0, b=0):
    """What the filter renders for each record in a mode (its name or number): the measure, or 0 where there is none."""
    measures = {
        1: lambda: distance(um, 3, 4),
        2: lambda: bend(um),
        3: lambda: velocity(um),
        4: lambda: acceleration(um),
        5: lambda: speed(um),
        6: lambda: tangential_acceleration(um),
        7: lambda: distance(um, a, b),
        8: lambda: palate(um, palate_um, want_point=a == 1),
    }
    return np.nan_to_num(measures[MODES.get(mode, mode)](), nan=0.0)


def held(values, interval_ms, samples):
    """The record values as a signal: each record is held around its own time, and 0 follows the last one.

    The ends of the spans are summed up frame by frame: where an end falls on a sample, the sum's rounding decides.
    """
    steps = np.full(len(values) + 2, FRAME_MS)
    steps[0] = START_MS
    ends = np.trunc(np.cumsum(steps)[2:] / interval_ms)
    return np.append(values, 0.0)[np.searchsorted(ends, np.arange(samples), side="right")]


def read_output(path):
    """Values of a host's output file: .npy, or .csv with a header line and the value in the second column."""
    if str(path).endswith(".npy"):
        return np.load(path).ravel().astype(np.float64)
    return np.loadtxt(path, delimiter=",", comments="#", skiprows=1, usecols=1, ndmin=1)


def compare(expected, actual):
    """None when the signals agree to the precision of a 32-bit float, else one line about the first difference."""
    if len(expected) != len(actual):
        return f"{len(actual)} samples instead of {len(expected)}"
    close = np.isclose(actual, expected, rtol=2e-6, atol=1e-6)
    if close.all():
        return None
    at = int(np.flatnonzero(~close)[0])
    return f"{np.count_nonzero(~close)} samples differ, first number {at}: {actual[at]} instead of {expected[at]}"


def main():
    parser = argparse.ArgumentParser(description="Compare a rendered measure with what the positions give.")
    parser.add_argument("positions", help="file of make_pellet_data.py --positions (.npz)")
    parser.add_argument("mode", choices=MODES)
    parser.add_argument("output", help="what the host wrote: .csv or .npy")
    parser.add_argument("--interval", type=float, required=True, help="time between samples, ms")
    parser.add_argument("-a", type=int, default=0, help="first pellet, or 1 for the palate point's number")
    parser.add_argument("-b", type=int, default=0, help="second pellet")
    arguments = parser.parse_args()
    with np.load(arguments.positions) as take:
        values = rendered(arguments.mode, take["measured_um"], take["palate_um"], arguments.a, arguments.b)
        samples = round(float(take["duration_ms"]) / arguments.interval)
    difference = compare(held(values, arguments.interval, samples), read_output(arguments.output))
    if difference:
        sys.exit(f"{arguments.output}: {arguments.mode}: {difference}")


if __name__ == "__main__":
    main()
