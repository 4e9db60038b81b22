"""Lists of files for a batch, and parts of them."""

import json
import shutil
import unittest

from batch_runs import BatchFolder
from wavechain_runs import SAMPLES, wavechain


class Listed(BatchFolder):
    def setUp(self):
        super().setUp()
        self.tones("a.wav", "b.wav", "c.wav")
        (self.folder / "c.toml").write_text('[[filter]]\nkind = "FIRFilter"\nhalf_length = 5\n')

    def list(self, text, name="list.csv"):
        (self.folder / name).write_bytes(text if isinstance(text, bytes) else text.encode())
        return ["--manifest", name]

    def outputs(self, text, *words, name="list.csv", chain=("--chain", "c.toml"), **options):
        self.batch(*self.list(text, name), *chain, *words, **options)
        found = sorted(self.files())
        shutil.rmtree(self.out)
        return found


class Manifests(Listed):
    def test_tables(self):
        for text in ("input,output\na.wav,x/one.wav\nb.wav,\n",
                     "output,input\r\nx/one.wav,a.wav\r\n,b.wav\r\n",
                     "\ufeff\"input\",\"output\"\n\n\"a.wav\",\"x/one.wav\"\n\n\"b.wav\",\"\"",
                     '{"input": "a.wav", "output": "x/one.wav"}\n\n{"input": "b.wav"}\n',
                     '\n {"output": null, "input": "b.wav"}\r\n{"input":"a.wav","output":"./x//one.wav"}'):
            with self.subTest(text):
                self.assertEqual(self.outputs(text), ["b.wav", "x/one.wav"])
        self.assertEqual(self.outputs("input,output\na.wav,x.csv\n"), ["x.csv", "x.csv.json"])
        self.assertEqual(self.outputs("input,output\na.wav,x.csv\n", "--format", "npz"), ["x.csv"])

    def test_quotes(self):
        odd = 'a "b", c\nd.wav'
        shutil.copy(self.folder / "a.wav", self.folder / odd)
        quoted = odd.replace('"', '""')
        self.assertEqual(self.outputs(f'input\n"{quoted}"\nb.wav\n'), [odd, "b.wav"])
        self.assertEqual(self.outputs(json.dumps({"input": odd}), name="list.jsonl"), [odd])

    def test_names_are_relative_to_the_list(self):
        (self.folder / "sub").mkdir()
        shutil.copy(self.folder / "a.wav", self.folder / "sub" / "deep.wav")
        absolute = self.folder / "b.wav"
        self.assertEqual(self.outputs(f"input\ndeep.wav\n../c.wav\n{absolute}\n", name="sub/list.csv"),
                         ["b.wav", "c.wav", "deep.wav"])

    def test_from_standard_input(self):
        self.list("input\na.wav\n")
        with open(self.folder / "list.csv", "rb") as file:
            self.assertEqual(self.statuses("--manifest", "-", "--chain", "c.toml", stdin=file), {"a.wav": "done"})

    def test_channels(self):
        self.batch(*self.list("input,channel\na.wav,1\n"), "--chain", "c.toml")
        self.run_alone("a.wav", "alone.wav", "--chain", "c.toml", "--channel", 1)
        self.assertEqual((self.out / "a.wav").read_bytes(), (self.folder / "alone.wav").read_bytes())
        _, said = self.batch(*self.list("input,channel\na.wav,2\n"), "--chain", "c.toml", status=1)
        self.assertRegex(said, "^wavechain: a.wav: .*channel")

    def test_mistakes_are_told_with_their_line(self):
        cases = {
            "input\na.wav\nb.wav,\n": "list.csv:3: has 2 cells, the line of names has 1",
            "input,output\na.wav,\nb.wav\n": "list.csv:3: has 1 cell, the line of names has 2",
            "input,output\na.wav,x\n,y\n": "list.csv:3: names no input",
            "output\nx\n": "list.csv:2: names no input",
            "input,inptu\na.wav,\n": "list.csv:2: there is no column 'inptu'; did you mean input?",
            "input,FIRFilter.data\na.wav,x\n": "list.csv:2: there is no column 'FIRFilter.data'; there are input, "
                                                "output, channel, data, events, palate, with",
            "input,input\na.wav,b.wav\n": "list.csv:1: names a column twice",
            'input\n"a.wav\n\nb': "list.csv:2: a quoted cell has no end",
            'input\na.wav\n"a"b\n': 'list.csv:3: a quoted cell ends before its comma; write "" for a quote',
            "input,channel\na.wav,left\n": "list.csv:2: channel takes a whole number from 1, not 'left'",
            "input,data\na.wav,x\n": "list.csv:2: no filter of the chain takes 'data'; leave that column out",
            "input,output\na.wav,../x.wav\n": "list.csv:2: output '../x.wav' is no name of a file within out",
            "input,output\na.wav,/x.wav\n": "list.csv:2: output '/x.wav' is no name of a file within out",
            "input,output\na.wav,x/\n": "list.csv:2: output 'x/' is no name of a file within out",
            "input,output\na.wav,x.wav\nb.wav,y\nc.wav,./x.wav\n":
                "list.csv:2 and list.csv:4 would both be written to out/x.wav; name their outputs in a manifest",
            "input\n-\n": "list.csv:2: standard input is no file of a batch; use wavechain run",
            "": "list.csv: is empty; its first line names the columns, as in input,output",
            "input\n": "there is no file to run over; name some, or a list by --manifest",
            '{"input": "a.wav"}\n{"input": \n': 'list.csv:2: is no JSON object; write a line such as '
                                                '{"input": "a.wav"}',
            '{"input": ["a.wav"]}': "list.csv:1: input takes a text, not a value of type array",
            '{"input": 1.5}': "list.csv:1: input takes a text, not a value of type number",
            '{"input":' + "[" * 100_000 + "]" * 100_000 + "}": "list.csv:1: is no JSON object; write a line such as "
                                                               '{"input": "a.wav"}',
            '{"input": "a.wav"}\n\n{"inputs": "a.wav"}': "list.csv:3: there is no column 'inputs'; did you mean "
                                                         "input?",
        }
        for text, message in cases.items():
            with self.subTest(text):
                self.refused(message, *self.list(text), "--chain", "c.toml")
        self.refused("list.csv:2 would be written to out/x.json, where the record of out/x may stand",
                     *self.list("input,output\na.wav,x.json\nb.wav,x\n"), "--chain", "c.toml", "--format", "npy")
        self.refused("none.csv: cannot be opened: No such file or directory", "--manifest", "none.csv", "--chain",
                     "c.toml")
        self.refused(".: cannot be read: Is a directory", "--manifest", ".", "--chain", "c.toml")
        self.refused("'a.wav' stands beside --manifest; name files or a manifest, not both", "a.wav",
                     *self.list("input\na.wav\n"), "--chain", "c.toml")
        with open(self.folder / "large.csv", "wb") as file:
            file.truncate((1 << 28) + 1)
        self.refused("large.csv: is larger than 256 MiB, which no manifest is", "--manifest", "large.csv",
                     "--chain", "c.toml")


class OwnFiles(Listed):
    """What a recording has in the place of the chain's own files."""

    def setUp(self):
        super().setUp()
        shutil.copy(SAMPLES / "take3.xyd", self.folder / "here.xyd")
        shutil.copy(SAMPLES / "pal.dat", self.folder / "roof.dat")
        (self.folder / "voice.glo").write_text("10 20 0.5 5 1\n")
        (self.folder / "noise.fla").write_text("10 0.5 0.1\n300 0.2\n")

    def expect_like(self, manifest, *chain):
        """The batch makes of a.wav what a run with these filters makes."""
        words = [word for filter in chain for word in ("-f", filter)]
        (self.folder / "alone.wav").unlink(missing_ok=True)
        self.run_alone("a.wav", "alone.wav", *words)
        self.batch(*self.list(manifest), *self.chain)
        self.assertEqual((self.out / "a.wav").read_bytes(), (self.folder / "alone.wav").read_bytes())

    def test_data_and_palate(self):
        self.chain = ["-f", "BeamData mode=palate a=2", "-f", "BeamPel 4"]
        self.expect_like("input,data,palate\na.wav,here.xyd,roof.dat\n",
                         "BeamData mode=palate a=2 data=here.xyd palate=roof.dat", "BeamPel 4 data=here.xyd")
        self.chain = ["-f", "BeamPel 4 data=other.xyd"]
        self.expect_like("input,BeamPel.data\na.wav,here.xyd\n", "BeamPel 4 data=here.xyd")

    def test_events_of_two_filters(self):
        self.chain = ["-f", "GlotSyn", "-f", "FricSyn"]
        self.refused("list.csv:2: 'events' could be for FricSyn and for GlotSyn, which read different files; name the "
                     "columns FricSyn.events and GlotSyn.events",
                     *self.list("input,events\na.wav,noise.fla\n"), *self.chain)
        self.expect_like("input,FricSyn.events,GlotSyn.events\na.wav,noise.fla,voice.glo\n",
                         "GlotSyn events=voice.glo", "FricSyn events=noise.fla")

    def test_a_second_signal(self):
        self.chain = ["-f", 'SumSources gain2=0.5 with="none.wav | FIRFilter 3"']
        self.expect_like("input,with\na.wav,b.wav\n", 'SumSources gain2=0.5 with="b.wav | FIRFilter half_length=3"')

    def test_in_tracks_too(self):
        self.chain = ["--track", "x=BeamPel 4", "--track", "y=FIRFilter 3", "--format", "npz"]
        self.run_alone("a.wav", "alone.npz", "--track", "x=BeamPel 4 data=here.xyd", "--track", "y=FIRFilter 3")
        self.batch(*self.list("input,data\na.wav,here.xyd\n"), *self.chain)
        self.assertEqual((self.out / "a.npz").read_bytes(), (self.folder / "alone.npz").read_bytes())

    def test_another_file_is_another_output(self):
        shutil.copy(self.folder / "here.xyd", self.folder / "there.xyd")
        self.chain = ["-f", "BeamPel 4"]
        for path, status in (("here", "done"), ("here", "up-to-date"), ("there", "done")):
            manifest = self.list(f"input,data\na.wav,{path}.xyd\n")
            self.assertEqual(self.statuses(*manifest, *self.chain), {"a.wav": status})
        (self.folder / "there.xyd").unlink()
        lines, _ = self.batch(*manifest, *self.chain, status=2)
        self.assertIn("there.xyd", lines["a.wav"]["error"])


def hash_of(name):
    """64-bit FNV-1a, folded in half."""
    value = 0xCBF29CE484222325
    for byte in name.encode():
        value = (value ^ byte) * 0x100000001B3 % 2**64
    return value >> 32 ^ value & 0xFFFFFFFF


class Shards(Listed):
    def test_share_the_files_out(self):
        names = [f"take{i:02}.wav" for i in range(30)]
        for name in names:
            shutil.copy(self.folder / "a.wav", self.folder / name)
        self.batch(*names, "--chain", "c.toml")
        whole = self.files()
        shutil.rmtree(self.out)
        seen = []
        for shard in range(1, 5):
            # Named by way of another folder, in another order: the output's name alone counts.
            here = [f"./{name}" for name in reversed(names)] if shard % 2 else names
            lines, _ = self.batch(*here, "--chain", "c.toml", "--shard", f"{shard}/4")
            own = sorted(line["output"].removeprefix("out/") for line in lines.values())
            self.assertEqual(own, [name for name in names if hash_of(name) % 4 == shard - 1])
            self.assertTrue(own)
            seen += own
        self.assertEqual(sorted(seen), names)
        self.assertEqual(sorted(self.files()), sorted(whole))

    def test_nothing_to_do_is_no_failure(self):
        lines, said = self.batch("a.wav", "--chain", "c.toml", "--shard", f"{2 - hash_of('a.wav') % 2}/2")
        self.assertEqual(lines, {})
        self.assertRegex(said, "^done   0 files made, 0 up to date")

    def test_clashes_are_found_in_each(self):
        (self.folder / "d").mkdir()
        shutil.copy(self.folder / "a.wav", self.folder / "d")
        for shard in ("1/2", "2/2"):
            self.refused("a.wav and d/a.wav would both be written to out/a.wav; name their outputs in a manifest",
                         "a.wav", "d/a.wav", "--chain", "c.toml", "--shard", shard)


if __name__ == "__main__":
    unittest.main()
