"""Prints what ./bench measured as tables: every speed beside its goal, and how cost grows.

    report.py [--document FILE] BENCH.json LENGTHS.txt

All ratios are of one run. Of the repetitions of a benchmark the best one counts, since a machine
can only slow a loop down; the ratio of the medians stands beside it. With --document the tables
also replace what stands between the two markers of FILE.
"""

import argparse
import json
import os
import platform
import re
import statistics
import sys

BEGIN = "<!-- figures: begin -->"
END = "<!-- figures: end -->"


class Measured:
    """Rates by name, as in "fir/128/slots"; the best of all repetitions and their median."""

    def __init__(self, results):
        self.context = results["context"]
        self.repetitions = {}
        self.counters = {}
        for run in results["benchmarks"]:
            if run["run_type"] != "iteration" or run.get("error_occurred"):
                continue
            name = re.sub(r"/(manual_time|iterations:\d+|repeats:\d+)", "", run["name"])
            self.repetitions.setdefault(name, []).append(run.get("items_per_second", 0.0))
            self.counters[name] = run

    def has(self, *names):
        return all(name in self.repetitions for name in names)

    def best(self, name):
        return max(self.repetitions[name])

    def median(self, name):
        return statistics.median(self.repetitions[name])

    def peak(self):
        names = [name for name in self.repetitions if name.startswith("peak/")]
        return max(map(self.best, names), default=0.0)


def ratio(measured, name, yardstick):
    """The ratio of the best rates and that of the medians; None for what was not measured."""
    if not measured.has(name, yardstick):
        return None
    return (measured.best(name) / measured.best(yardstick),
            measured.median(name) / measured.median(yardstick))


def row(what, values, goals, form="x{:.1f}"):
    """A row of the table of goals. Several cases in one row are separated by slashes."""
    if any(value is None for value in values):
        return f"| {what} | not compared | | {goals_text(goals, form)} | |"
    best = " / ".join(form.format(value[0]) for value in values)
    median = " / ".join(form.format(value[1]) for value in values)
    # Compared as printed: what rounds to the goal has reached it.
    reached = [float(re.sub(r"[^\d.]", "", form.format(value[0]))) >= goal
               for value, goal in zip(values, goals)]
    word = "reached" if all(reached) else "missed" if not any(reached) else "in part"
    return f"| {what} | {best} | {median} | {goals_text(goals, form)} | {word} |"


def goals_text(goals, form):
    texts = [re.sub(r"{.*}", f"{goal:g}", form) for goal in goals]
    return texts[0] if len(set(texts)) == 1 else " / ".join(texts)


def part_of_peak(measured, half_len, variant):
    name = f"fir/{half_len}/{variant}"
    if not measured.has(name) or not measured.peak():
        return None
    scale = 100.0 * (2 * half_len + 1) / measured.peak()
    return measured.best(name) * scale, measured.median(name) * scale


def fir_rows(m):
    def against_plain(variant, *half_lens):
        return [ratio(m, f"fir/{n}/{variant}", f"fir/{n}/as_written") for n in half_lens]

    def of_peak(variant, *half_lens):
        return [part_of_peak(m, n, variant) for n in half_lens]

    long = (128, 512, 2048)
    percent = "{:.0f} %"
    yield row("FIR, half-length 128 / 512 / 2048, slot 4, part of peak", of_peak("slots", *long),
              (75, 85, 88), percent)
    yield row("the same, against the plain loop", against_plain("slots", *long), (12, 13.5, 14))
    yield row("its kernel, AVX-512, part of peak", of_peak("avx512", *long), (75, 85, 88), percent)
    yield row("its kernel, AVX-512", against_plain("avx512", *long), (12, 13.5, 14))
    yield row("its kernel, AVX2, part of peak", of_peak("avx2", *long), (50, 50, 50), percent)
    yield row("its kernel, AVX2", against_plain("avx2", *long), (8, 8, 8))
    yield row("its kernel, SSE2", against_plain("sse2", *long), (5, 5, 5))
    yield row("FIR, half-length 8 / 32, slot 4", against_plain("slots", 8, 32), (7, 8))
    yield row("its kernel, AVX-512", against_plain("avx512", 8, 32), (7, 8))
    yield row("FIR, half-length 128, slot 4, against liquid-dsp's firfilt",
              [ratio(m, "fir/128/slots", "fir/128/liquid")], (24,))


def resampler_rows(m):
    def against_plain(variant, half_len, rates):
        return [ratio(m, f"resample/{r}_{half_len}/{variant}", f"resample/{r}_{half_len}/as_written")
                for r in rates]

    rates = ("2:1", "1:2", "3:2")
    for half_len, goal in ((60, 5.5), (120, 6.2), (2048, 8)):
        yield row(f"resampler 2/1, 1/2, 3/2, half-length {half_len}, slot 4",
                  against_plain("slots", half_len, rates), (goal,) * 3)
    yield row("resampler 160/147, 147/160, half-length 2048, slot 4",
              against_plain("slots", 2048, ("160:147", "147:160")), (17, 17))
    for peer, name in (("zita", "zita-resampler (hlen 32)"), ("speex", "speexdsp (q5)"),
                       ("samplerate", "libsamplerate (fastest)")):
        for match in ("reach", "quality"):
            cases = [case for case in ("2:1", "1:2", "3:2")
                     if m.has(f"peer/{peer}_{case}/{match}")]
            yield row(f"resampler {', '.join(c.replace(':', '/') for c in cases)} against {name}, "
                      f"same {match}",
                      [ratio(m, f"peer/{peer}_{case}/{match}", f"peer/{peer}_{case}/peer")
                       for case in cases], (1,) * len(cases), "x{:.2f}")


def other_rows(m):
    def glottal(*cases):
        return [ratio(m, f"glottal/{case}/slots", f"glottal/{case}/as_written") for case in cases]

    yield row("one glottal pulse, order 20, period 80 / 400, slot 16",
              glottal("1_20_80", "1_20_400"), (1.15, 1.05), "x{:.2f}")
    orders = (12, 20, 32, 64)
    yield row("eight glottal pulses in a block, order 12 / 20 / 32 / 64, slot 16",
              glottal(*(f"8_{order}_80" for order in orders)), (5.5,) * 4)
    yield row("three of them", glottal(*(f"3_{order}_80" for order in orders)), (2.3,) * 4)
    yield row("number files, 16 integers a line",
              [ratio(m, "numbers/16_a_line/ours", "numbers/16_a_line/as_written")], (5,))
    yield row("nearest palate point", [ratio(m, "palate/2048/ours", "palate/2048/as_written")],
              (1.8,), "x{:.2f}")
    if m.has("process/20_s/wavechain", "process/20_s/sox"):
        ours, sox = (1e3 / m.best(f"process/20_s/{name}") for name in ("wavechain", "sox"))
        word = "reached" if ours <= sox else "within the limit" if ours <= 1.3 * sox else "missed"
        yield (f"| 20 s at 22.05 kHz, FIRNotch 200 and 2/1, whole process, against sox | "
               f"{ours:.1f} ms to {sox:.1f} ms | | no slower, at most 1.3 times | {word} |")


def goals(m):
    yield "| what | best | median | goal | |"
    yield "|---|---|---|---|---|"
    yield from fir_rows(m)
    yield from resampler_rows(m)
    yield from other_rows(m)


def filters(m):
    yield "| filter, slot 4, pulls of 4096 | ns a sample | times real time at 22.05 kHz |"
    yield "|---|---|---|"
    for name in sorted(m.repetitions):
        if name.startswith("filter/"):
            rate = m.best(name)
            yield f"| {name.split('/')[1][:-1]} | {1e9 / rate:.2f} | {rate / 22050:.0f} |"


def qualities(m):
    yield "| 2/1 | 1 dB edge, of the Nyquist frequency | strongest image of the band up to 0.8 |"
    yield "|---|---|---|"
    for name, run in sorted(m.counters.items()):
        if name.startswith("quality/"):
            _, peer, which = name.split("/")
            what = peer if which == "peer" else f"this library, same {which} as {peer}"
            yield f"| {what} | {run['edge']:.2f} | {run['images_dB']:.0f} dB |"


def growth(m):
    yield "| FIR kernel | 17 taps | 65 | 257 | 1025 | 4097 |"
    yield "|---|---|---|---|---|---|"
    for variant in ("as_written", "sse2", "avx2", "avx512", "slots"):
        names = [f"fir/{n}/{variant}" for n in (8, 32, 128, 512, 2048)]
        if m.has(*names):
            cells = " | ".join(f"{1e9 / m.best(name):.2f}" for name in names)
            yield f"| {variant.replace('_', ' ')}, ns an output | {cells} |"
    yield ""
    yield "| pull size | 64 | 256 | 1024 | 4096 |"
    yield "|---|---|---|---|---|"
    for case in sorted({name.split("/")[1] for name in m.repetitions if name.startswith("pull/")}):
        cells = " | ".join(f"{1e9 / m.best(f'pull/{case}/{pull}'):.2f}"
                           for pull in (64, 256, 1024, 4096))
        yield f"| {case.replace('_', ' ').replace(':', '/')}, ns an output | {cells} |"


def lengths(path):
    names = {1: "1 s", 10: "10 s", 60: "1 min", 600: "10 min", 3600: "1 h", 36000: "10 h"}
    yield "| FIRNotch 200, then 2/1 | length | time | processor time | peak memory |"
    yield "|---|---|---|---|---|"
    for what in ("library", "wavechain"):
        for line in open(path, encoding="utf-8"):
            run, seconds, wall, processor, memory = line.split()
            if run == what:
                yield (f"| {what} | {names[int(seconds)]} | {float(wall):.3f} s | "
                       f"{float(processor):.3f} s | {int(memory) / 1024:.1f} MiB |")


def processor():
    with open("/proc/cpuinfo", encoding="utf-8") as info:
        for line in info:
            if line.startswith("model name"):
                return line.split(":", 1)[1].strip()
    return platform.machine()


def machine(m):
    lacks = [key[6:] for key in m.context if key.startswith("lacks ")]
    yield f"- {m.context['date'][:10]}, {processor()}, {os.cpu_count()} cores, pinned to one of them"
    yield f"- {m.context['compiler']}, `{m.context['flags']}`; the plain loops: g++ `-O2`"
    if lacks:
        yield f"- not compared, since this machine lacks them: {', '.join(lacks)}"


def report(m, lengths_path):
    for part in (machine(m), goals(m), qualities(m), filters(m), growth(m), lengths(lengths_path)):
        yield from part
        yield ""


def write_document(path, text):
    with open(path, encoding="utf-8") as old:
        document = old.read()
    before, rest = document.split(BEGIN)
    after = rest.split(END)[1]
    with open(path, "w", encoding="utf-8") as new:
        new.write(f"{before}{BEGIN}\n\n{text}{END}{after}")


def main():
    parser = argparse.ArgumentParser(description=__doc__.splitlines()[0])
    parser.add_argument("--document", metavar="FILE")
    parser.add_argument("bench")
    parser.add_argument("lengths")
    arguments = parser.parse_args()
    with open(arguments.bench, encoding="utf-8") as results:
        measured = Measured(json.load(results))
    text = "\n".join(report(measured, arguments.lengths))
    sys.stdout.write(text)
    if arguments.document:
        write_document(arguments.document, text)


if __name__ == "__main__":
    main()
