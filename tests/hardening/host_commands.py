"""What the tests of hostile surroundings share: command lines of wavechain, hundreds in one process.

COMMANDS names the program that runs them, LIBRARY the filter library that they load.
"""

import dataclasses
import json
import os
import subprocess


@dataclasses.dataclass
class Outcome:
    """How one command line ended."""

    status: int
    out: str
    err: str
    asked: int  # allocations that it asked for
    live: int  # blocks that it left behind
    threw: bool  # an exception came out of it
    refused: list  # the way to the last allocation that was refused
    kept: list | None  # the ways to them, if traced

    @property
    def lines(self):
        return self.err.splitlines()


class Commands:
    """The process. Where a request ends it, that is an EOFError, and another one takes its place: a new one, or
    after stand_by() one that finds everything as it was then."""

    def __init__(self):
        self.start()

    def start(self):
        self.process = subprocess.Popen([os.environ["COMMANDS"]], stdin=subprocess.PIPE, stdout=subprocess.PIPE, start_new_session=True)

    def run(self, *arguments, fault=None, refuse=0, from_there_on=False, files=0, **more):
        """Runs one command line, with a fault of the system (a dictionary, see system_faults.h), an
        allocation that is refused, at most so many open files; `trace`s its memory, `tell`s of refusals."""
        words = [str(argument) for argument in arguments]
        if words[0] in ("run", "check", "plot", "batch", "rerun", "list", "info"):
            words += ["--library", os.environ["LIBRARY"]]
        request = {"arguments": words, "fault": fault or {}, "refuse": refuse, "from_there_on": from_there_on, "files": files, **more}
        return Outcome(**self.ask(request))

    def attach(self, files, length, interval_ms, **more):
        """Attaches filters to files, see filter_request.h."""
        return self.ask({"files": files, "length": length, "interval_ms": interval_ms, **more})

    def stand_by(self):
        self.ask({"stand by": True})

    def ask(self, request):
        self.process.stdin.write(json.dumps(request).encode() + b"\n")
        self.process.stdin.flush()
        answer = self.process.stdout.readline()
        if not answer:
            status = self.close()
            self.start()
            raise EOFError(f"ended by {status}: {request}")
        answer = json.loads(answer)
        if "ended" in answer:
            raise EOFError(f"ended by {answer['ended']}: {request}")
        return answer

    def close(self):
        """Returns the exit status: leaks are found at the end."""
        self.process.stdin.close()
        self.process.stdout.close()
        return self.process.wait()
