#!/usr/bin/python3
"""How the built library and the program are protected: read from their ELF tables by readelf.

flags_test.py plain|instrumented LIBRARY [PROGRAM]

An instrumented build (a sanitizer, or no optimisation) has no _FORTIFY_SOURCE, may leave functions to the
runtime of its sanitizer, and its program may lie at a fixed address.
"""

import re
import subprocess
import sys


def readelf(option, path):
    return subprocess.run(["readelf", "-W", option, path], text=True, check=True,
                          capture_output=True).stdout


def faults_of_segments(path):
    segments = [line.split() for line in readelf("--program-headers", path).splitlines()]
    # Type, offset, two addresses, two sizes, then up to three letters, then the alignment.
    flags = {}
    for words in segments:
        if len(words) > 7 and words[1].startswith("0x"):
            flags.setdefault(words[0], []).append("".join(words[6:-1]))
    if not flags.get("LOAD"):
        yield "readelf shows no segments"
    if flags.get("GNU_STACK") != ["RW"]:
        yield "the stack may hold code"
    if "GNU_RELRO" not in flags:
        yield "no segment is made read-only after relocation"
    if any("W" in each and "E" in each for each in flags.get("LOAD", [])):
        yield "a segment is writable and executable"


def faults_of_dynamic_section(path):
    entries = re.findall(r"\(([A-Z_0-9]+)\)\s+(.*)", readelf("--dynamic", path))
    values = dict(entries)
    if "BIND_NOW" not in values.get("FLAGS", "") and "NOW" not in values.get("FLAGS_1", ""):
        yield "symbols are bound lazily: their table stays writable"
    if "TEXTREL" in values or "TEXTREL" in values.get("FLAGS", ""):
        yield "code is relocated at load"
    for tag in ("RPATH", "RUNPATH"):
        if tag in values:
            yield f"{tag} {values[tag]}: a folder of the machine that built it"


def undefined_names(path):
    for line in readelf("--dyn-syms", path).splitlines():
        words = line.split()
        if len(words) >= 8 and words[6] == "UND":
            yield words[4], words[7]


def faults_of_symbols(path, instrumented):
    undefined = list(undefined_names(path))
    if not any(name.startswith("__stack_chk_fail@") for _, name in undefined):
        yield "no function guards its stack frame"
    if not instrumented:
        # What a library at link time has defined carries that library's version.
        for binding, name in undefined:
            if binding == "GLOBAL" and "@" not in name:
                yield f"{name} is left to whatever the process has"


def faults_of_library(path, instrumented):
    yield from faults_of_segments(path)
    yield from faults_of_dynamic_section(path)
    yield from faults_of_symbols(path, instrumented)


def faults_of_program(path, instrumented):
    yield from faults_of_segments(path)
    yield from faults_of_dynamic_section(path)
    names = [name for _, name in undefined_names(path)]
    if not any(name.startswith("__stack_chk_fail@") for name in names):
        yield "no function guards its stack frame"
    if not instrumented and not re.search(r"Type:\s+DYN", readelf("--file-header", path)):
        yield "the program has a fixed address"
    # The library itself calls nothing that has a checked variant.
    if not instrumented and not any(re.match(r"__\w+_chk@", name) and "stack" not in name
                                 for name in names):
        yield "no call checks the size of its buffer"


def main():
    instrumented = sys.argv[1] == "instrumented"
    faults = [f"library: {fault}" for fault in faults_of_library(sys.argv[2], instrumented)]
    for program in sys.argv[3:]:
        faults += [f"program: {fault}" for fault in faults_of_program(program, instrumented)]
    if faults:
        sys.exit("\n".join(faults))


if __name__ == "__main__":
    main()
