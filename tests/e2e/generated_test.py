"""The manual page and the completions: complete, without a warning, and at work in each shell."""

import json
import os
import pathlib
import re
import shlex
import subprocess
import tempfile
import unittest

from wavechain_runs import WAVECHAIN, wavechain


def generated(form):
    done = wavechain("--generate", form)
    assert done.returncode == 0 and done.stderr == b"", done.stderr
    return done.stdout.decode("ascii")


FILTERS = json.loads(wavechain("list", "--json").stdout)
NAMES = [one["name"] for one in FILTERS]


def commands():
    """Names of the commands, from the help text."""
    text = wavechain("--help").stdout.decode()
    return re.findall(r"^  ([a-z]+)  +", text.split("Subcommands:")[1], re.M)


def options(command):
    """Long options of a command, from its help text."""
    text = wavechain(command, "--help").stdout.decode().split("\nOptions:")[1]
    return re.findall(r"^  (?:-\w,)?(--[a-z-]+)", text, re.M)


class ManualPage(unittest.TestCase):
    def setUp(self):
        self.page = generated("man")

    def formatted(self):
        """The page as a reader sees it, without bold and underlined letters."""
        done = subprocess.run(["groff", "-man", "-ww", "-Tascii", "-P-c", "-rLL=200n"], input=self.page.encode(),
                              capture_output=True, check=True, env={**os.environ, "GROFF_NO_SGR": "1"})
        self.assertEqual(done.stderr, b"")
        return re.sub(r".\x08", "", done.stdout.decode("ascii"))

    def test_is_formatted_without_a_warning(self):
        text = self.formatted()
        for section in ("NAME", "SYNOPSIS", "DESCRIPTION", "OPTIONS", "COMMANDS", "FILTERS", "NOTES", "EXAMPLES"):
            self.assertRegex(text, rf"(?m)^{section}$")
        self.assertIn("wavechain - run chains of signal filters over recordings", text)

    def test_holds_every_command_and_option(self):
        text = self.formatted()
        self.assertIn("check", commands())
        for command in commands():
            part = re.search(rf"(?ms)^   {command}$(.*?)(?=^   \S|^\S)", text).group(1)
            for option in options(command):
                self.assertRegex(part, rf"(?m)^       (-\w, )?{option}( |$)", command)

    def test_holds_every_filter_with_its_parameters_and_files(self):
        text = self.formatted()
        self.assertEqual(len(FILTERS), 13)
        for one in FILTERS:
            part = re.search(rf"(?ms)^   {one['name']}$(.*?)(?=^   \S|^\S)", text).group(1)
            part = " ".join(part.split())
            self.assertIn(one["purpose"], part)
            for parameter in one["parameters"]:
                self.assertIn(f"{parameter['name']} {parameter['help']} (", part)
                self.assertIn(f"default {parameter['default_text']})", part)
                for name in parameter["values"]:
                    self.assertIn(f"={name}", part)
            for own in one["host_arguments"]:
                self.assertIn(f"{own['name']}={own['value']} {own['help']}", part)
            for file in one["data_files"]:
                self.assertIn(f"reads {file['name']} {file['content']}", part)

    def test_is_the_same_each_time(self):
        self.assertEqual(self.page, generated("man"))


class Completion(unittest.TestCase):
    """What all shells share: `offered` gives the words that are offered for a line."""

    def setUp(self):
        held = tempfile.TemporaryDirectory()
        self.addCleanup(held.cleanup)
        self.folder = pathlib.Path(held.name)

    def check(self, offered):
        self.assertLessEqual(set(commands()), set(offered("wavechain ")))
        self.assertEqual(offered("wavechain ch"), ["check"])
        for command in commands():
            for option in options(command):
                self.assertIn(option, offered(f"wavechain {command} {option[:-1]}"))
        self.assertEqual(set(offered("wavechain run --encoding pcm")), {"pcm8", "pcm16", "pcm24", "pcm32"})
        self.assertEqual(set(offered("wavechain plot --format p")), {"png", "pdf"})
        self.assertEqual(set(offered("wavechain info FIR")), {"FIRFilter", "FIRNotch"})
        self.assertEqual(offered("wavechain skeleton SineFilter Sq"), ["SquareFilter"])
        self.assertEqual(set(offered("wavechain help rer")), {"rerun"})
        self.assertEqual(set(offered("wavechain help FIR")), {"FIRFilter", "FIRNotch"})
        self.assertEqual(offered("wavechain run in.wav -f FIRN"), ["FIRNotch"])
        self.assertEqual(offered('wavechain run in.wav -f "FIRNotch ha'), ["FIRNotch half_length="])
        self.assertEqual(offered('wavechain run -f "BeamData a=1 mode=pal'), ["BeamData a=1 mode=palate"])
        self.assertEqual(offered('wavechain check -f "SumSources wi'), ["SumSources with="])


class Bash(Completion):
    # Splits as readline does, leaves an open quote at the last word, and prints what is offered.
    SCRIPT = r"""
source "$1"
COMP_WORDS=("${@:2}") COMP_CWORD=$(($# - 2))
_wavechain
if ((${#COMPREPLY[@]})); then printf '%s\n' "${COMPREPLY[@]}"; fi
"""

    def words(self, line):
        if line.count('"') % 2:
            head, last = line.rsplit('"', 1)
            return [*shlex.split(head), '"' + last]
        return shlex.split(line) + ([""] if line.endswith(" ") else [])

    def offered(self, words):
        done = subprocess.run(["bash", "--norc", "-c", self.SCRIPT, "bash", self.script, *words], capture_output=True,
                              check=True, text=True)
        self.assertEqual(done.stderr, "")
        return done.stdout.splitlines()

    def test_completes(self):
        self.script = self.folder / "wavechain"
        self.script.write_text(generated("bash"))
        subprocess.run(["bash", "-n", self.script], check=True)
        self.check(lambda line: self.offered(self.words(line)))
        # Bash hands "=" over as a word of its own.
        self.assertEqual(self.offered(["wavechain", "run", "--encoding", "=", "ul"]), ["ulaw"])
        self.assertIn("ulaw", self.offered(["wavechain", "run", "--encoding", "="]))
        # Names of files are left to bash itself.
        self.assertEqual(self.offered(["wavechain", "run", "/us"]), [])
        self.assertEqual(self.offered(["wavechain", "run", "--chain", "/us"]), [])
        said = subprocess.run(["bash", "--norc", "-c", 'source "$1"; complete -p wavechain', "bash", self.script],
                              capture_output=True, check=True, text=True)
        self.assertEqual(said.stdout, "complete -o bashdefault -o default -F _wavechain wavechain\n")


class Fish(Completion):
    def offered(self, line):
        script = f"source {self.script}; complete -C {shlex.quote(line)}"
        done = subprocess.run(["fish", "--no-config", "-c", script], capture_output=True, check=True, text=True,
                              env={**os.environ, "HOME": str(self.folder)}, cwd=self.folder)
        self.assertEqual(done.stderr, "")
        return [answer.split("\t")[0] for answer in done.stdout.splitlines()]

    def test_completes(self):
        self.script = self.folder / "wavechain.fish"
        self.script.write_text(generated("fish"))
        subprocess.run(["fish", "--no-config", "-n", self.script], check=True)
        self.check(self.offered)
        (self.folder / "take.wav").touch()
        self.assertEqual(self.offered("wavechain run tak"), ["take.wav"])
        self.assertEqual(self.offered("wavechain run --chain tak"), ["take.wav"])
        self.assertEqual(self.offered("wavechain info take.w"), [])


class Zsh(Completion):
    # Calls the completion with stand-ins for zsh's own helpers, which tell what they are handed.
    SCRIPT = r"""
_arguments() { print -r -- _arguments "${(@q)argv}"; }
_describe() { print -r -- _describe $argv[-1] "${(@P)argv[-1]}"; }
compset() { return 0; }
compadd() { print -r -- compadd "$argv"; }
source $1
state=$2; words=($3); CURRENT=2; PREFIX="x y"
_wavechain
"""

    def told(self, state, word):
        script = self.folder / "_wavechain"
        text = generated("zsh")
        # Loaded at its first use it calls itself; here it is called by the test, with a state.
        text = text.replace('\n_wavechain "$@"\n', "\n").replace("state line\n", "line\n")
        script.write_text(text)
        done = subprocess.run(["zsh", "-f", "-c", self.SCRIPT, "zsh", script, state, word], capture_output=True,
                              check=True, text=True)
        self.assertEqual(done.stderr, "")
        return done.stdout

    def test_describes_every_command_option_and_filter(self):
        script = self.folder / "script"
        script.write_text(generated("zsh"))
        self.assertTrue(script.read_text().startswith("#compdef wavechain\n"))
        subprocess.run(["zsh", "-f", "-n", script], check=True)
        told = self.told("command", "")
        for command in commands():
            self.assertIn(f"{command}:", told)
        for command in commands():
            told = self.told("arguments", command)
            for option in options(command):
                self.assertRegex(told, rf"{option}\\\[")
        text = generated("zsh")
        for one in FILTERS:
            words = [parameter["name"] for parameter in one["parameters"] + one["host_arguments"]]
            self.assertRegex(text, rf"(?m)^    {one['name']}\) compadd -S '' -- .*" + ".*".join(f"{w}=" for w in words))
            self.assertIn(f"'{one['name']}:", text)


class Usage(unittest.TestCase):
    def test_other_forms_are_refused(self):
        for arguments, given in ((["--generate", "html"], "html"), (["--generate"], "")):
            done = wavechain(*arguments)
            self.assertEqual(done.returncode, 1)
            self.assertEqual(done.stderr.decode(), f"wavechain: --generate {given}: takes man, bash, zsh or fish\n")
            self.assertEqual(done.stdout, b"")

    def test_the_option_is_hidden(self):
        self.assertNotIn(b"generate", wavechain("--help").stdout)
        self.assertNotIn(b"generate", wavechain("--frob").stderr)
        for form in ("man", "bash", "zsh", "fish"):
            self.assertNotIn("generate", generated(form))


if __name__ == "__main__":
    assert WAVECHAIN
    unittest.main()
