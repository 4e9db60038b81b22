"""The commands of docs/tutorial.md as a new user would type them, and what they print."""

import os
import pathlib
import re
import subprocess
import unittest

import numpy as np
from pictures import read_png
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


class Tutorial(Folder):
    def type_all(self, commands):
        """Types them into one shell, in a folder where the repository's examples lie and the program is built."""
        (self.folder / "examples").symlink_to(ROOT / "examples")
        (self.folder / "build").mkdir()
        (self.folder / "build" / "wavechain").symlink_to(WAVECHAIN)
        script = "exec 2>&1\n"
        for number, (command, _) in enumerate(commands):
            script += f"{command}\necho\necho '{MARK.format(number, '')[:-5]}' $? ===\n"
        environment = {**os.environ, "TMPDIR": str(self.temporary)}
        done = subprocess.run(
            ["bash"], input=script, stdout=subprocess.PIPE, text=True, cwd=self.folder, env=environment, timeout=300, check=False
        )
        return re.split(r"\n=== command \d+ ended with +(\d+) ===\n", done.stdout)

    def test_every_command_prints_what_the_tutorial_shows(self):
        commands = commands_of((ROOT / "docs" / "tutorial.md").read_text())
        self.assertGreater(len(commands), 10)
        printed = self.type_all(commands)
        self.assertEqual(len(printed), 2 * len(commands) + 1)
        for (command, wanted), output, status in zip(commands, printed[::2], printed[1::2]):
            with self.subTest(command):
                self.assertEqual(status, "0", output)
                lines = output.splitlines()
                if wanted and wanted[-1] == "...":
                    wanted, lines = wanted[:-1], lines[: len(wanted) - 1]
                self.assertEqual(lines, wanted)
        take = self.folder / "take"
        self.assertTrue((take / "figure.pdf").read_bytes().startswith(b"%PDF"))
        self.check_figure(take / "figure.png")

    def check_figure(self, path):
        """The document shows what its command makes; letters may differ where another version draws them."""
        made, shown = (read_png(file.read_bytes()) for file in (path, ROOT / "docs" / "take3.png"))
        self.assertEqual(made.shape, shown.shape)
        self.assertGreater(np.mean(made == shown), 0.98)


if __name__ == "__main__":
    unittest.main()
