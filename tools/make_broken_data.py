#!/usr/bin/python3
"""Makes copies of a short take with one thing wrong (or merely unusual) in each, for tests of programs that read them.

    make_broken_data.py FOLDER

Every case gets a folder of its own under FOLDER with take3.wav, take3.xyd, pal.dat and take3.iop, of which at most one
is damaged. FOLDER/cases.json tells about each case, by its name:
    file      the file that the case is about
    fault     "none", "missing", "empty", "line" (a line cannot be read), "positions" (instead of differences),
              "short" (no sample after the header) or "kind" (not a regular file)
    line      for "line": the first line that cannot be read, counted from 1
    records   how many records (or palate points, or track samples) can be read
"""

import argparse
import json
from pathlib import Path
from random import Random

import pellet_sound
from make_pellet_data import SEED, STEM, differences, number_lines, track_bytes, wave_bytes
from pellet_take import FRAME_MS, Take

RECORDS = 250  # as far as the first gap and beyond
BAD_LINE = 41
PELLETS = f"{STEM}.xyd"
PALATE = "pal.dat"
TRACK = f"{STEM}.iop"


def short_set(take):
    """The first records of the take with a recording that lasts as long."""
    samples = round(RECORDS * FRAME_MS * pellet_sound.RATE_HZ / 1000.0)
    noise = Random(SEED)
    track = pellet_sound.pressure_track(take.moves, Random(SEED + 1))
    return {
        PELLETS: number_lines(differences(take.measured_um[:RECORDS])),
        PALATE: number_lines(take.palate_um),
        TRACK: track_bytes(track[: round(RECORDS * FRAME_MS / pellet_sound.TRACK_MS)]),
        f"{STEM}.wav": wave_bytes([int(2000.0 * (noise.random() - 0.5)) for _ in range(samples)]),
    }


def with_line(content, number, text):
    """The file with another text in one of its lines."""
    lines = content.split(b"\n")
    lines[number - 1] = text
    return b"\n".join(lines)


def line(content, number):
    return content.split(b"\n")[number - 1]


def pellet_cases(good, take):
    """Name -> content (None: no such file), fault, first bad line, readable records."""
    good_line = line(good, BAD_LINE)
    numbers = good_line.split()
    positions = number_lines(take.measured_um[:RECORDS])

    def bad(text):
        return with_line(good, BAD_LINE, text), "line", BAD_LINE, BAD_LINE - 1

    def fine(content):
        return content, "none", None, RECORDS

    def as_exponent(number):
        sign = b"-" if number.startswith(b"-") else b"+"
        return sign + b"%d.%03dE+3" % divmod(abs(int(number)), 1000)

    return {
        "missing": (None, "missing", None, 0),
        "empty": (b"", "empty", None, 0),
        "only_blank_lines": (b"\n\n\n", "line", 1, 0),
        "word_in_line": bad(b" ".join(numbers[:7] + [b"lost"] + numbers[8:])),
        "word_first_line": (b"x1 y1 x2 y2\n" + good, "line", 1, 0),
        "comment_line": bad(b"# " + good_line),
        "short_line": bad(b" ".join(numbers[:15])),
        "blank_line": bad(b""),
        "decimal_comma": bad(good_line.replace(b" ", b",5 ")),
        "separated_by_commas": bad(good_line.replace(b" ", b",")),
        "cut_in_last_line": (good[: good.rstrip().rindex(b" ")], "line", RECORDS, RECORDS - 1),
        "blank_last_line": fine(good + b"\n"),
        "one_record": (line(good, 1) + b"\n", "none", None, 1),
        "plain_positions": (positions, "positions", None, RECORDS),
        "carriage_returns": fine(good.replace(b"\n", b"\r\n")),
        "no_last_newline": fine(good[:-1]),
        "extra_numbers": fine(with_line(good, BAD_LINE, good_line + b" 17 18 nineteen")),
        "tabs_and_blanks": fine(good.replace(b" ", b" \t  ")),
        "exponents": fine(with_line(good, BAD_LINE, b" ".join(map(as_exponent, numbers)))),
        "long_line": fine(with_line(good, BAD_LINE, good_line + b" " * 10_000_000)),
    }


def palate_cases(good):
    points = good.count(b"\n")
    many = [(-12 * i, int(18000 - (i - 2500) ** 2 * 0.002)) for i in range(5000)]
    return {
        "missing": (None, "missing", None, 0),
        "empty": (b"", "empty", None, 0),
        "word_in_line": (with_line(good, BAD_LINE, b"-20500 high"), "line", BAD_LINE, BAD_LINE - 1),
        "one_number_in_line": (with_line(good, BAD_LINE, b"-20500"), "line", BAD_LINE, BAD_LINE - 1),
        "one_line": (line(good, 1) + b"\n", "none", None, 1),
        "two_lines": (good[: good.index(b"\n", good.index(b"\n") + 1) + 1], "none", None, 2),
        "5000_lines": (number_lines(many), "none", None, 4096),
        "carriage_returns": (good.replace(b"\n", b"\r\n"), "none", None, points),
        "no_last_newline": (good[:-1], "none", None, points),
    }


def track_cases(good):
    samples = (len(good) - 1024) // 2
    return {
        "missing": (None, "missing", None, 0),
        "empty": (b"", "empty", None, 0),
        "half_a_header": (good[:512], "short", None, 0),
        "header_alone": (good[:1024], "short", None, 0),
        "header_and_a_byte": (good[:1025], "short", None, 0),
        "one_sample": (good[:1026], "none", None, 1),
        "odd_byte": (good + b"\x7f", "none", None, samples),
    }


def write_case(folder, files, name, content):
    """A complete set in `folder`, but with `content` in the file `name` (None: without that file)."""
    folder.mkdir(parents=True, exist_ok=True)
    for other, good in files.items():
        path = folder / other
        if other != name:
            path.write_bytes(good)
        elif content is not None:
            path.write_bytes(content)
        else:
            path.unlink(missing_ok=True)


def write_broken(folder):
    """Writes every case under `folder` and returns what cases.json holds."""
    folder = Path(folder)
    take = Take(SEED)
    files = short_set(take)
    groups = (
        ("pellets", PELLETS, pellet_cases(files[PELLETS], take)),
        ("palate", PALATE, palate_cases(files[PALATE])),
        ("track", TRACK, track_cases(files[TRACK])),
    )
    told = {}
    for group, file, cases in groups:
        for short_name, (content, fault, at, records) in cases.items():
            name = f"{group}_{short_name}"
            write_case(folder / name, files, file, content)
            told[name] = {"file": file, "fault": fault, "line": at, "records": records}
        name = f"{group}_is_a_folder"
        write_case(folder / name, files, file, None)
        (folder / name / file).mkdir(exist_ok=True)
        told[name] = {"file": file, "fault": "kind", "line": None, "records": 0}
    write_case(folder / "all_good", files, None, None)
    told["all_good"] = {"file": None, "fault": "none", "line": None, "records": RECORDS}
    (folder / "cases.json").write_text(json.dumps(told, indent=1) + "\n", encoding="ascii")
    return told


def main():
    parser = argparse.ArgumentParser(description="Make sets of pellet data with one damaged file each.")
    parser.add_argument("folder", type=Path, help="where to write them")
    write_broken(parser.parse_args().folder)


if __name__ == "__main__":
    main()
