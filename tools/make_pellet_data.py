#!/usr/bin/python3
"""Makes examples/data: one take of synthetic speech with the files that a pellet tracker leaves beside it.

    make_pellet_data.py [FOLDER]                writes the files (default: examples/data of this repository)
    make_pellet_data.py --positions FILE        also writes what they were made from, as .npz or .csv
    make_pellet_data.py --check [FOLDER]        writes nothing; tells whether FOLDER holds what it should

The same seed gives the same bytes on every machine. examples/data/README.md describes the files, pellet_take.py the
movements and pellet_sound.py the sound. Needs Python 3 and, for --positions FILE.npz and --check, NumPy.
"""

import argparse
import csv
import io
import struct
import sys
import wave
from itertools import accumulate, pairwise
from pathlib import Path
from random import Random

import pellet_sound
from pellet_take import FRAME_MS, MISSING_UM, PELLETS, RECORDS, Take

SEED = 20240611
STEM = "take3"
TRACK_HEADER_BYTES = 1024
FOLDER = Path(__file__).resolve().parent.parent / "examples" / "data"


def number_lines(rows):
    return "".join(" ".join(map(str, row)) + "\n" for row in rows).encode("ascii")


def differences(rows):
    """The first record as it is, every other one as what it adds to the record before."""
    return [rows[0]] + [[b - a for a, b in zip(before, now)] for before, now in pairwise(rows)]


def wave_bytes(samples):
    out = io.BytesIO()
    with wave.open(out, "wb") as file:
        file.setnchannels(1)
        file.setsampwidth(2)
        file.setframerate(pellet_sound.RATE_HZ)
        file.writeframes(struct.pack(f"<{len(samples)}h", *samples))
    return out.getvalue()


def track_bytes(samples):
    header = b"take3: air pressure in the mouth, 10 V full scale, 1.145081873353945 ms per sample\n"
    return header.ljust(TRACK_HEADER_BYTES, b"\0") + struct.pack(f">{len(samples)}h", *samples)


def make_files(take):
    """Name -> content of every file of the set."""
    return {
        f"{STEM}.xyd": number_lines(differences(take.measured_um)),
        "pal.dat": number_lines(take.palate_um),
        f"{STEM}.iop": track_bytes(pellet_sound.pressure_track(take.moves, Random(SEED + 1))),
        f"{STEM}.wav": wave_bytes(pellet_sound.speech(take.moves, Random(SEED + 2))),
    }


def write_positions(take, path):
    """What the files were made from: the measured coordinates with their gaps, and the movement without noise."""
    if path.suffix == ".npz":
        import numpy as np

        measured = np.array(take.measured_um, dtype=np.int64)
        np.savez(
            path,
            measured_um=measured,  # (records, 16): x and y of pellets 1 to 8; 1,000,000 and more: missing
            missing=measured >= MISSING_UM,
            true_mm=np.array(take.true_mm),  # the same without noise and gaps
            palate_um=np.array(take.palate_um, dtype=np.int64),  # (points, 2)
            frame_ms=FRAME_MS,
            duration_ms=RECORDS * FRAME_MS,
        )
        return
    with open(path, "w", newline="", encoding="ascii") as file:
        out = csv.writer(file, lineterminator="\n")
        out.writerow(["time_ms"] + [f"{axis}{pellet}_um" for pellet in range(1, 9) for axis in "xy"])
        for record, row in enumerate(take.measured_um):
            out.writerow([f"{record * FRAME_MS:.3f}"] + [um if um < MISSING_UM else "" for um in row])


def read_pellets(content):
    """The positions that a reader gets from a pellet file: the sums of all records so far."""
    rows = [list(map(int, line.split())) for line in content.decode("ascii").splitlines()]
    return list(accumulate(rows, lambda sums, row: [a + b for a, b in zip(sums, row)]))


def movement_problems(take):
    """The take must look like speech: how far and how fast the pellets move, and that they stay in the mouth."""
    import numpy as np

    from pellet_modes import length, measured

    true = np.array(take.true_mm)
    seen = measured(take.measured_um) / 1000.0
    contour = np.array(take.palate_um)[::-1] / 1000.0  # from the back to the front
    fastest = [1000.0 * np.nanmax(length(np.diff(mm[:, 4:6], axis=0))) / FRAME_MS for mm in (true, seen)]
    ranges = np.nanmax(seen, axis=0) - np.nanmin(seen, axis=0)
    noise = np.nanstd(seen - true)
    clearance = min(np.min(np.interp(true[:, x], *contour.T) - true[:, x + 1]) for x in (4, 6, 8, 10))
    closest = np.nanmin(length(contour[None] - seen[:, None, 4:6]))
    for speed, kind in zip(fastest, ("true", "measured")):
        yield not 300.0 <= speed <= 400.0, f"tongue tip: {kind} speeds reach {speed:.0f} mm/s, not 300 to 400"
    yield not 4.0 <= ranges[1] <= 6.0, f"upper lip: height ranges over {ranges[1]:.2f} mm, not about 5"
    yield not 19.0 <= ranges[5] <= 21.0, f"tongue tip: height ranges over {ranges[5]:.2f} mm, not about 20"
    yield not 0.02 <= noise <= 0.04, f"noise: {noise:.3f} mm, not about 0.03"
    yield clearance < 0.1, f"tongue: {clearance:.2f} mm from the palate, it would run through it"
    yield not closest < 2.0, f"tongue tip: never nearer than {closest:.2f} mm to the palate"


def measure_problems(measured_um, palate_um):
    """Every measure must be there for most of the take, and meet missing values."""
    import numpy as np

    from pellet_modes import MODES, rendered

    um = np.array(measured_um)
    lost = um >= MISSING_UM
    for mode in MODES:
        share = np.mean(rendered(mode, um, palate_um, a=1, b=2) != 0.0)
        yield share < 0.8, f"mode {mode}: only {100.0 * share:.1f} % of the records give a value"
    for column in range(1, 11):
        yield not lost[:, column - 1].any(), f"coordinate {column}: no missing values"
    yield lost[:3].any(), "missing values among the first three records, where the measures start"
    yield not (np.diff(lost.astype(int), axis=0) == -1).any(), "no gap ends: the jump back is missing"
    plausible = np.abs(um[~lost])
    yield plausible.max() >= 100_000, f"a coordinate of {plausible.max()} looks neither measured nor missing"


def check(folder):
    """One line for everything in `folder` that is not as it should be."""
    take = Take(SEED)
    problems = []
    for name, wanted in make_files(take).items():
        path = folder / name
        found = path.read_bytes() if path.is_file() else None
        if found is None:
            problems.append(f"{path}: missing; run tools/make_pellet_data.py")
        elif found != wanted:
            at = next((i for i, (a, b) in enumerate(zip(found, wanted)) if a != b), min(len(found), len(wanted)))
            problems.append(f"{path}: differs from what the script makes, first at byte {at}; was it edited?")
    if not problems:
        pellets = read_pellets((folder / f"{STEM}.xyd").read_bytes())
        if pellets != take.measured_um:
            problems.append(f"{STEM}.xyd: its running sums are not the positions")
        if RECORDS * FRAME_MS < 10_000.0 or len(pellets) != RECORDS or any(len(row) != 16 for row in pellets):
            problems.append(f"{STEM}.xyd: not {RECORDS} records of 16 numbers over at least 10 s")
        found = [*movement_problems(take), *measure_problems(pellets, take.palate_um)]
        problems += [text for wrong, text in found if wrong]
    return problems


def main():
    pellets = ", ".join(f"{number} {name}" for number, name in enumerate(PELLETS, 1))
    parser = argparse.ArgumentParser(description="Make or check the sample data.", epilog=f"Pellets: {pellets}.")
    parser.add_argument("folder", nargs="?", type=Path, default=FOLDER, help="where the files are (examples/data)")
    parser.add_argument("--positions", type=Path, metavar="FILE", help="also write the positions, .npz or .csv")
    parser.add_argument("--check", action="store_true", help="write no data files, check those in the folder")
    arguments = parser.parse_args()
    if arguments.positions:
        if arguments.positions.suffix not in (".npz", ".csv"):
            parser.error(f"{arguments.positions}: the name must end in .npz or .csv")
        write_positions(Take(SEED), arguments.positions)
    if arguments.check:
        problems = check(arguments.folder)
        if problems:
            sys.exit("\n".join(problems))
        return
    arguments.folder.mkdir(parents=True, exist_ok=True)
    for name, content in make_files(Take(SEED)).items():
        (arguments.folder / name).write_bytes(content)


if __name__ == "__main__":
    main()
