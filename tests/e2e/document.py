"""Commands of a document, typed into a shell where the repository's examples lie."""

import os
import pathlib
import re
import subprocess

from wavechain_runs import WAVECHAIN, Folder

ROOT = pathlib.Path(os.environ["PROJECT_ROOT"])
PROMPT = "    $ "
MARK = "=== command {} ended with {} ==="


def commands_of(text):
    """Each command of a document with the lines that stand below it."""
    commands = []
    for line in text.splitlines():
        if line.startswith(PROMPT):
            commands.append((line[len(PROMPT) :], []))
        elif line.startswith("    ") and commands:
            commands[-1][1].append(line[4:])
    return commands


class Document(Folder):
    def type_document(self, name, least, path=""):
        """Types its commands, and expects each to succeed and to print what the document shows."""
        commands = commands_of((ROOT / "docs" / name).read_text())
        self.assertGreaterEqual(len(commands), least)
        printed = self.type_all(commands, path)
        self.assertEqual(len(printed), 2 * len(commands) + 1)
        for (command, wanted), output, status in zip(commands, printed[::2], printed[1::2]):
            with self.subTest(command):
                self.assertEqual(status, "0", output)
                lines = output.splitlines()
                if wanted and wanted[-1] == "...":
                    wanted, lines = wanted[:-1], lines[: len(wanted) - 1]
                self.assertEqual(lines, wanted)

    def type_all(self, commands, path):
        """Types them into one shell, in a folder where the repository's examples lie and the program is built."""
        (self.folder / "examples").symlink_to(ROOT / "examples")
        (self.folder / "build").mkdir()
        (self.folder / "build" / "wavechain").symlink_to(WAVECHAIN)
        script = "exec 2>&1\n"
        for number, (command, _) in enumerate(commands):
            script += f"{command}\nended=$?; echo; echo '{MARK.format(number, '')[:-5]}' $ended ===\n"
        environment = {**os.environ, "TMPDIR": str(self.temporary), "PATH": path + os.environ["PATH"]}
        done = subprocess.run(
            ["bash"], input=script, stdout=subprocess.PIPE, text=True, cwd=self.folder, env=environment, timeout=300, check=False
        )
        return re.split(r"\n=== command \d+ ended with +(\d+) ===\n", done.stdout)
