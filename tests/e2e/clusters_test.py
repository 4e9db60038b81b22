"""The examples of docs/clusters.md at work: GNU parallel and Snakemake; Slurm's script as far as it goes without it."""

import json
import os
import pathlib
import shutil
import subprocess
import unittest

from batch_runs import BatchFolder
from wavechain_runs import WAVECHAIN

ROOT = pathlib.Path(os.environ["PROJECT_ROOT"])
EXAMPLES = ROOT / "examples" / "clusters"
QUOTED = ("parallel_files.sh", "parallel_shards.sh", "Snakefile", "slurm_array.sh")


class Clusters(BatchFolder):
    def setUp(self):
        super().setUp()
        (self.folder / "recordings").mkdir()
        self.names = [f"take {i}.wav" for i in range(6)]
        self.tones(*(f"recordings/{name}" for name in self.names))
        shutil.copy(EXAMPLES / "smooth.toml", self.folder)
        programs = self.folder / "bin"
        programs.mkdir()
        (programs / "wavechain").symlink_to(WAVECHAIN)
        self.path = f"{programs}:{os.environ['PATH']}"
        self.batch(*(f"recordings/{name}" for name in self.names), "--chain", "smooth.toml")
        self.expected = self.files()
        shutil.rmtree(self.out)

    def example(self, name):
        """The example as the document quotes it."""
        text = (EXAMPLES / name).read_text()
        quoted = "".join(f"    {line}".rstrip() + "\n" for line in text.splitlines())
        self.assertIn("\n" + quoted + "\n", (ROOT / "docs" / "clusters.md").read_text())
        return text

    def call(self, *command, **variables):
        home = self.folder / "home"
        home.mkdir(exist_ok=True)
        (home / ".parallel").mkdir(exist_ok=True)
        (home / ".parallel" / "will-cite").touch()
        return subprocess.run(command, cwd=self.folder, capture_output=True, text=True, check=False, timeout=300,
                              env={**self.environment(), "PATH": self.path, "HOME": str(home), **variables})

    def expect(self, done):
        self.assertEqual(done.returncode, 0, done.stdout + done.stderr)
        self.assertEqual(self.files(), self.expected)

    def log(self, number):
        path = self.folder / f"batch.{number}.jsonl"
        return [json.loads(line) for line in path.read_text().splitlines()] if path.exists() else []

    def test_every_example_is_quoted(self):
        self.assertEqual(sorted(path.name for path in EXAMPLES.iterdir()),
                         sorted([*QUOTED, "smooth.toml", "slurm_one_node.sh"]))
        for name in QUOTED:
            self.example(name)

    def test_parallel_with_a_process_for_each_recording(self):
        self.expect(self.call("sh", "-c", self.example("parallel_files.sh")))
        (self.folder / "recordings" / "broken.wav").write_bytes(b"")
        self.assertNotEqual(self.call("sh", "-c", self.example("parallel_files.sh")).returncode, 0)

    def test_parallel_with_a_process_for_each_part(self):
        script = self.example("parallel_shards.sh")
        for status in ("done", "up-to-date"):
            self.expect(self.call("sh", "-c", script))
            lines = [line for number in range(1, 5) for line in self.log(number)]
            self.assertEqual([line["status"] for line in lines].count(status), len(self.names))
        self.assertEqual(len((self.folder / "parallel.log").read_text().splitlines()), 5)

    def test_snakemake(self):
        self.call("mkdir", "-p", "cache")
        (self.folder / "Snakefile").write_text(self.example("Snakefile"))
        command = ("/usr/bin/snakemake", "--cores", "2")
        self.expect(self.call(*command, XDG_CACHE_HOME=str(self.folder / "cache")))
        again = self.call(*command, XDG_CACHE_HOME=str(self.folder / "cache"))
        self.expect(again)
        self.assertIn("Nothing to be done", again.stderr)

    def test_the_array_s_script(self):
        self.example("slurm_array.sh")
        for task in range(1, 5):
            done = self.call("bash", EXAMPLES / "slurm_array.sh", SLURM_ARRAY_TASK_ID=str(task),
                             SLURM_ARRAY_TASK_COUNT="4")
            self.assertEqual(done.returncode, 0, done.stderr)
        self.assertEqual(self.files(), self.expected)

    def test_the_one_node_script_says_what_it_needs(self):
        self.assertEqual(self.call("bash", "-n", EXAMPLES / "slurm_one_node.sh").returncode, 0)
        done = self.call("bash", EXAMPLES / "slurm_one_node.sh")
        self.assertEqual(done.returncode, 1)
        self.assertIn("name the program, as in build/wavechain", done.stderr)


if __name__ == "__main__":
    unittest.main()
