"""How long wavechain takes over texts of any sort: every format, every sort, some megabytes of each.

soak_texts.py [MEGABYTES]     of each text, 4 if nothing is said

WAVECHAIN names the program. Prints the seconds per megabyte of each text, as each format's data, and ends with 1 where one takes
more than LIMIT_S, or where the program fails. Seconds are those of the processor, which nobody else on the machine changes much.
"""

import itertools
import os
import pathlib
import random
import resource
import subprocess
import sys
import tempfile

from hostile_text import FORMATS, GOOD_LINES, text_of

LIMIT_S = 2.0
MEGABYTE = 1_000_000
EVENT_MS = 20.0  # from one event to the next
RECORD_MS = 6.866  # from one record to the next
GOOD = 1  # index of the line that texts are made of


def row(kind, number):
    """A good line, as words; an event's instant is behind that of the line before."""
    words = [str(value) for value in FORMATS[kind].lines[GOOD]]
    if kind in ("gpl", "fla", "gpm"):
        words[0] = f"{(number + 1) * EVENT_MS:.0f}"
    return words


def rows(change):
    """A text of good lines, each changed; with the number of lines."""

    def make(kind, size):
        pieces = []
        written = 0
        for number in itertools.count():
            line = change(row(kind, number)).encode()
            pieces.append(line)
            written += len(line)
            if written >= size:
                return b"".join(pieces), number + 1

    return make


def behind(text):
    return rows(lambda words: " ".join(words) + text + "\n")


def second(text):
    return rows(lambda words: " ".join([words[0], text, *words[2:]]) + "\n")


def filled(text):
    """A text of one thing over and over, with good lines behind it."""
    return lambda kind, size: (text * (size // len(text)) + b"\n" + text_of(FORMATS[kind].lines), 1 + GOOD_LINES)


def noise(kind, size):
    return random.Random(7).randbytes(size), 1


TEXTS = {
    "plain lines": behind(""),
    "CR LF": behind("\r"),
    "long fractions": second("0." + "1234567890" * 3),
    "digits of a thousand": second("0." + "7" * 1000),
    "leading zeros": second("0" * 100 + "1"),
    "long exponents": second("1e-00000000000000000001"),
    "denormal": second("4.9e-324"),
    "vanishing": second("1e-99999"),
    "glued": second("0.5x"),
    "hexadecimal": second("0x1.8p3"),
    "overflowing": second("1e400"),
    "overflowing behind": behind(" 1e400"),
    "infinite behind": behind(" inf"),
    "words behind": behind(" word word word"),
    "blanks between": rows(lambda words: (" " * 50).join(words) + "\n"),
    "blanks behind": behind(" " * 500),
    "numbers behind": behind(" 0" * 500),
    "fractions behind": behind(" 0.123456789" * 500),
    "NUL behind": behind("\0" * 100),
    "a line of digits": filled(b"7"),
    "a line of numbers": filled(b"1 "),
    "a line of fractions": filled(b"0.25 "),
    "a line of overflows": filled(b"1e400 "),
    "a line of vanishing": filled(b"1e-99999 "),
    "a line of odd numbers": filled(b"1x "),
    "a line of words": filled(b"word "),
    "a line of blanks": filled(b" "),
    "a line of NUL": filled(b"\0"),
    "a line without blanks": filled(b"x"),
    "empty lines": filled(b"\n"),
    "lines of a number": filled(b"1\n"),
    "lines of a word": filled(b"word\n"),
    "lines of a blank": filled(b" \n"),
    "random bytes": noise,
}


def seconds_of(command, folder):
    before = resource.getrusage(resource.RUSAGE_CHILDREN)
    # What waits instead of working ends here.
    done = subprocess.run(command, cwd=folder, capture_output=True, check=False, timeout=600)
    after = resource.getrusage(resource.RUSAGE_CHILDREN)
    if done.returncode != 0:
        sys.exit(f"{' '.join(command)} ended with {done.returncode}: {done.stderr.decode(errors='replace')}")
    return after.ru_utime - before.ru_utime + after.ru_stime - before.ru_stime


def measure(folder, kind, make, size):
    content, lines = make(kind, size)
    (folder / "hostile").write_bytes(content)
    # A sample for each line, and some more: the library reads to the end, as the program has done before it.
    step_ms = RECORD_MS if kind in ("xyd", "pal") else EVENT_MS
    chain = FORMATS[kind].filter_text.format("hostile", xyd="plain.xyd", pal="plain.pal")
    signal = ["--silence", f"{(lines + 2000) * step_ms / 1000}", "--rate", f"{1000 / step_ms}"]
    command = [os.environ["WAVECHAIN"], "run", "out.npy", "--force", "--no-record", "--allow-missing", *signal, "-f", chain]
    return seconds_of(command, folder) * MEGABYTE / len(content)


def main():
    size = int(float(sys.argv[1] if len(sys.argv) > 1 else "4") * MEGABYTE)
    slow = []
    with tempfile.TemporaryDirectory() as name:
        folder = pathlib.Path(name)
        for kind in ("xyd", "pal"):
            (folder / f"plain.{kind}").write_bytes(text_of(FORMATS[kind].lines))
        print(f"{'seconds per megabyte':24}" + "".join(f"{kind:>8}" for kind in FORMATS))
        for text, make in TEXTS.items():
            took = [measure(folder, kind, make, size) for kind in FORMATS]
            slow += [text] if max(took) > LIMIT_S else []
            print(f"{text:24}" + "".join(f"{seconds:8.3f}" for seconds in took), flush=True)
    if slow:
        sys.exit(f"more than {LIMIT_S} s per megabyte: {', '.join(slow)}")


if __name__ == "__main__":
    main()
