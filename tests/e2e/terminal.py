"""A shell in a terminal of its own, typed into like a user's."""

import ctypes
import fcntl
import os
import re
import select
import subprocess
import time

# What terminal.cpp beside this does, by the numbers of linux/mount.h and asm-generic/ioctls.h.
FSOPEN, FSCONFIG, FSMOUNT = 430, 431, 432
CLOEXEC, SET_STRING, CMD_CREATE = 1, 1, 6
TIOCSPTLCK, TIOCGPTPEER = 0x40045431, 0x5441
PROMPT = "ready> "


def screen_of_our_own():
    """A bare root has no terminals under /dev; a file system of them that is mounted nowhere then serves."""
    call = ctypes.CDLL(None, use_errno=True).syscall
    system = call(FSOPEN, b"devpts", CLOEXEC)
    call(FSCONFIG, system, SET_STRING, b"ptmxmode", b"0666", 0)
    call(FSCONFIG, system, CMD_CREATE, None, None, 0)
    mount = call(FSMOUNT, system, CLOEXEC, 0)
    os.close(system)
    if mount < 0:
        raise OSError(ctypes.get_errno(), "no terminal")
    try:
        return os.open("ptmx", os.O_RDWR | os.O_NOCTTY | os.O_CLOEXEC, dir_fd=mount)
    finally:
        os.close(mount)


def open_terminal():
    """The end that a screen would read, and the program's own."""
    try:
        return os.openpty()
    except OSError:
        screen = screen_of_our_own()
    fcntl.ioctl(screen, TIOCSPTLCK, b"\0\0\0\0")
    return screen, fcntl.ioctl(screen, TIOCGPTPEER, os.O_RDWR | os.O_NOCTTY | os.O_CLOEXEC)


class Shell:
    """bash with nothing of anybody's settings. `variables` are added to the environment."""

    def __init__(self, folder, **variables):
        self.screen, program = open_terminal()
        environment = {**os.environ, "PS1": PROMPT, "TERM": "xterm", "COLUMNS": "200", **variables}
        # Without editing a line is echoed as it is typed.
        self.bash = subprocess.Popen(
            ["bash", "--norc", "--noprofile", "--noediting", "-i"], stdin=program, stdout=program, stderr=program,
            cwd=folder, env=environment, start_new_session=True,
            preexec_fn=lambda: fcntl.ioctl(0, 0x540E, 0))  # fmt: skip
        os.close(program)
        self.shown = ""
        self.wait()

    def __enter__(self):
        return self

    def __exit__(self, *_):
        os.close(self.screen)
        self.bash.wait(60)

    def wait(self):
        """What the screen shows up to the next prompt."""
        text, until = "", time.monotonic() + 120
        while not text.endswith(PROMPT):
            if not select.select([self.screen], [], [], until - time.monotonic())[0]:
                raise TimeoutError(text)
            text += os.read(self.screen, 65536).decode()
        self.shown += text
        return text[: -len(PROMPT)]

    def type(self, line):
        """Types a line; returns what comes of it, as it stands on the screen at the end, and its exit status."""
        os.write(self.screen, line.encode() + b"\n")
        output = self.wait().replace("\r\n", "\n").split("\n", 1)[1]
        os.write(self.screen, b"echo $?\n")
        status = int(self.wait().replace("\r\n", "\n").split("\n")[1])
        # A line of progress is written over and over, and cleared in the end.
        return re.sub(r"(?m)^.*\r\x1b\[K", "", output), status
