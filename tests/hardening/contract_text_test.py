#!/usr/bin/python3
"""The binary contract as the built library shows it, against the stored one.

contract_text_test.py LIBRARY STORED            compares
contract_text_test.py LIBRARY STORED --write    stores what is there, for a new version

Read from the library's file: its soname, its exported names, and the table of every class that
it makes objects of, slot by slot, with the types of the arguments. Classes with equal tables stand
together. Whoever changes the stored text changes the contract: docs/contract.md says what follows.
"""

import difflib
import pathlib
import re
import subprocess
import sys


def run(*command):
    return subprocess.run(command, text=True, check=True, capture_output=True).stdout


def without_classes(function):
    """"wavefilters::Heap<A::B>::Release()" is "Release()"."""
    name, arguments = re.fullmatch(r"(.*?)(\([^()]*\))", function).groups()
    operation = name.rsplit("::", 1)[-1]
    return operation + arguments.replace("wavefilters::", "").replace(
        "std::__cxx11::basic_string<char, std::char_traits<char>, std::allocator<char> >",
        "std::string")


class Symbols:
    def __init__(self, library):
        self.functions = {}
        self.tables = []
        for line in run("nm", "--demangle", "--print-size", library).splitlines():
            found = re.fullmatch(r"([0-9a-f]{16}) ([0-9a-f]{16}) (\w) (.*)", line)
            if not found:
                continue
            address, size, _, name = found.groups()
            table = re.fullmatch(r"vtable for wavefilters::(Heap|Embedded)<(.*?) ?>", name)
            if table:
                self.tables.append((table.group(2), int(address, 16), int(size, 16)))
            elif "wavefilters::" in name and name.endswith(")"):
                self.functions[int(address, 16)] = name

    def relocated(self, library):
        """What the loader puts where: the functions in the tables among it."""
        places = {}
        for line in run("readelf", "-W", "--relocs", library).splitlines():
            found = re.match(r"([0-9a-f]{12,16})\s+\w+\s+R_X86_64_RELATIVE\s+([0-9a-f]+)", line)
            if found:
                places[int(found.group(1), 16)] = int(found.group(2), 16)
        return places


def tables(library):
    symbols = Symbols(library)
    places = symbols.relocated(library)
    for name, address, size in symbols.tables:
        slots = []
        # Two words of type information stand in front of slot 0.
        for place in range(address + 16, address + size, 8):
            function = symbols.functions.get(places.get(place))
            slots.append(without_classes(function) if function else "nothing of this library")
        yield name.replace("wavefilters::", ""), tuple(slots)


def description(library):
    dynamic = run("readelf", "-W", "--dynamic", library)
    yield "library " + re.search(r"soname: \[(.*?)\]", dynamic).group(1)
    yield ""
    names = re.findall(r"^[0-9a-f]+ \w (\w+)$",
                       run("nm", "--dynamic", "--defined-only", library), re.MULTILINE)
    yield "exports"
    yield from (f"  {name}" for name in sorted(names) if not name.startswith("__odr_asan"))
    classes = {}
    for name, slots in tables(library):
        classes.setdefault(slots, set()).add(name)
    for slots, group in sorted(classes.items(), key=lambda each: sorted(each[1])):
        yield ""
        yield from sorted(group)
        yield from (f"  {number:2} {slot}" for number, slot in enumerate(slots))


def main():
    library, stored = sys.argv[1], pathlib.Path(sys.argv[2])
    found = "".join(line + "\n" for line in description(library))
    if sys.argv[3:] == ["--write"]:
        stored.write_text(found, encoding="utf-8")
        return
    difference = difflib.unified_diff(stored.read_text(encoding="utf-8").splitlines(),
                                      found.splitlines(), "stored", "built", lineterm="")
    text = "\n".join(difference)
    if text:
        sys.exit("the binary contract has changed:\n" + text)


if __name__ == "__main__":
    main()
