#!/usr/bin/python3
"""What of the library and the program the tests have run: lines, functions and branches.

coverage_report.py COUNTS.json DOCUMENT

COUNTS.json is gcovr's. DOCUMENT names, in tables, each branch of the library that no test takes, with
its reason: a line of the form

    | `tracks/palate.cpp` | `while (count < Capacity && ...)` | 1 | why |

where the second column is the line of the source and the third how many of its branches are missing.
Exits with 1 where a goal is missed, or where the document and the counts differ.

Branches are decisions in the source. Those by which an exception leaves a call, and the other side of
each such pair, are none: a call is not a decision.
"""

import collections
import json
import pathlib
import re
import sys

LIBRARY = ("frame", "numstream", "tracks", "voice", "dsp")
HOST = ("host",)


class Counts:
    """Of a file or of several: what there is, and what was run."""

    def __init__(self):
        self.lines = [0, 0]
        self.functions = [0, 0]
        self.branches = [0, 0]

    def add(self, other):
        for name in ("lines", "functions", "branches"):
            mine, theirs = getattr(self, name), getattr(other, name)
            mine[0] += theirs[0]
            mine[1] += theirs[1]


def percent(run, all_of_them):
    return 100.0 if all_of_them == 0 else 100.0 * run / all_of_them


def decisions(branches):
    """The counts of a line's branches without those of calls, which come as a pair: on, and thrown."""
    kept = []
    i = 0
    while i < len(branches):
        pair = branches[i:i + 2]
        if any(branch["throw"] for branch in pair):
            i += 2 if len(pair) == 2 and pair[1]["throw"] else 1
            continue
        kept.append(branches[i]["count"])
        i += 1
    return kept


def read_file(entry):
    counts = Counts()
    missing = {"lines": [], "functions": [], "branches": {}}
    for function in entry.get("functions", []):
        counts.functions[1] += 1
        counts.functions[0] += function["execution_count"] > 0
        if function["execution_count"] == 0:
            missing["functions"].append((function["lineno"], function["name"]))
    for line in entry["lines"]:
        if line.get("gcovr/noncode"):
            continue
        counts.lines[1] += 1
        counts.lines[0] += line["count"] > 0
        if line["count"] == 0:
            missing["lines"].append(line["line_number"])
        taken = decisions(line["branches"])
        counts.branches[1] += len(taken)
        counts.branches[0] += sum(count > 0 for count in taken)
        if not all(taken):
            missing["branches"][line["line_number"]] = sum(count == 0 for count in taken)
    return counts, missing


def reasons(document):
    """How many missing branches the document names, by file and line of the source."""
    named = collections.Counter()
    row = re.compile(r"^\| `([^`]+)` \| `` ?(.+?) ?`` \| (\d+) \|.*\S.*\|$|"
                     r"^\| `([^`]+)` \| `([^`]+)` \| (\d+) \|.*\S.*\|$")
    for line in document.read_text(encoding="utf-8").splitlines():
        found = row.match(line)
        if found:
            path, source, count = [group for group in found.groups() if group is not None]
            named[path, source.replace("\\|", "|")] += int(count)
    return named


def table(title, folders, files):
    total = Counts()
    print(f"{title:<40} {'lines':>16} {'functions':>16} {'branches':>16}")
    for path, (counts, _) in sorted(files.items()):
        if path.split("/")[0] not in folders:
            continue
        total.add(counts)
        row(path, counts)
    row(f"all of {title}", total)
    print()
    return total


def row(name, counts):
    cells = [f"{percent(*each):6.1f} % of {each[1]:<5}"
             for each in (counts.lines, counts.functions, counts.branches)]
    print(f"{name:<40} " + " ".join(cells))


def faults(root, library, host, files, document):
    for name, total, goals in (("library", library, (100.0, 100.0, 97.0)),
                               ("host", host, (95.0, 0.0, 0.0))):
        for what, goal in zip(("lines", "functions", "branches"), goals):
            if percent(*getattr(total, what)) < goal:
                yield f"{what} of the {name}: fewer than {goal:g} %"
    named = reasons(document)
    found = collections.Counter()
    for path, (_, missing) in sorted(files.items()):
        if path.split("/")[0] not in LIBRARY:
            continue
        source = (root / path).read_text(encoding="utf-8").splitlines()
        for number in missing["lines"]:
            yield f"{path}:{number}: never run: {source[number - 1].strip()}"
        for number, name in missing["functions"]:
            yield f"{path}:{number}: never called: {name}"
        for number, count in missing["branches"].items():
            text = source[number - 1].strip()
            found[path, text] += count
            if named[path, text] < found[path, text]:
                yield f"{path}:{number}: {count} branches not taken, for no reason given: {text}"
    for (path, text), count in named.items():
        if found[path, text] < count:
            yield f"{path}: named as not taken, but taken or gone: {text}"


def main():
    if len(sys.argv) != 3:
        sys.exit(__doc__)
    root = pathlib.Path(__file__).resolve().parent.parent
    with open(sys.argv[1], encoding="utf-8") as counts:
        entries = json.load(counts)["files"]
    files = {entry["file"]: read_file(entry) for entry in entries}
    library = table("library", LIBRARY, files)
    host = table("host", HOST, files)
    found = list(faults(root, library, host, files, pathlib.Path(sys.argv[2])))
    for fault in found:
        print(fault)
    return 1 if found else 0


if __name__ == "__main__":
    sys.exit(main())
