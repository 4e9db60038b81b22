"""The ways to where memory was asked for, or where a program ended: names of functions, innermost first."""

import bisect
import os
import re
import subprocess

# What others ask for memory through. Who called them decides.
PLUMBING = re.compile(
    r"((malloc|calloc|realloc|memalign|aligned_alloc|posix_memalign)$"
    r"|operator_new|\{anonymous\}::(New|NewAligned|NewOrNull|Fail|Aligned|Counted|Refuse|TraceInto|TracedBlocks::Add)$"
    r"|wavechain::\{anonymous\}::NoteFailure$"
    r"|std::|__gnu_cxx::|libc\.so|libstdc\+\+\.so)"
)


def bare(signature):
    """The name of a function alone: of "int a::b<c>::d<e>(f<g>) const", a::b::d."""
    shorter, name = signature.replace("(anonymous namespace)", "{anonymous}").replace("operator ", "operator_"), ""
    while shorter != name:
        name, shorter = shorter, re.sub("<[^<>]*>", "", shorter)
    return name.split("(")[0].split(" ")[-1]


class Functions:
    """The names of the functions of a program, which may lie anywhere in memory."""

    def __init__(self, program):
        lines = subprocess.run(["nm", "-C", "--defined-only", program], capture_output=True, text=True, check=True).stdout.splitlines()
        table = sorted((int(at, 16), name) for at, kind, name in (line.split(" ", 2) for line in lines) if kind in "tTwWuV")
        self.program = program
        self.places, self.names = zip(*table)

    def at(self, file, offset):
        """The function's name; in another file, the file's."""
        if file != self.program:
            return os.path.basename(file)
        # An address of return lies behind its call.
        return bare(self.names[bisect.bisect_right(self.places, offset - 1) - 1])

    def along(self, path):
        return [self.at(file, offset) for file, offset in path]


def before_ours(names):
    """What libraries have called one another from where this program called them."""
    end = next((i for i, name in enumerate(names) if name.startswith("wavechain::") and not PLUMBING.match(name)), len(names))
    return names[:end]


def is_within(libraries, names):
    return any(libraries.search(name) for name in before_ours(names))
