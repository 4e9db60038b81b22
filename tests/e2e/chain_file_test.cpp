// Saved chains: the same bytes as from the command line, names of files, and every refusal.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>

#include "e2e/support/program.h"
#include "e2e/support/sound.h"
#include "support/samples.h"
#include "support/temp_folder.h"

namespace {

using e2e::Outcome;
using e2e::Wavechain;
using testing::HasSubstr;

using Texts = std::vector<std::string>;

class ChainFile : public testing::Test {
 protected:
  // A take with data files beside it, a second recording, and events to name.
  ChainFile() {
    for (const char* name : {"take3.wav", "take3.xyd", "take3.iop", "pal.dat"}) {
      std::filesystem::create_symlink(std::string(EXAMPLE_DATA) + "/" + name, Path(name));
    }
    e2e::WriteSound(Path("noise.wav"), support::Noise(3000), 16000);
    folder.Write("clicks.gpm", "10 0.5\n20 -0.25\n");
    folder.Write("bursts.fla", "30 0.1 1 2\n");
    folder.Write("pulses.gpl", "5 1 0.5 0.1 1\n12 0.5 0.5 0.1\n");
  }

  std::string Path(const std::string& name) const { return folder.Path(name); }

  Outcome Run(Texts chain, const std::string& out, const Texts& options = {}) const {
    Texts arguments = {"run", "take3.wav", out, "-q"};
    arguments.insert(arguments.end(), chain.begin(), chain.end());
    arguments.insert(arguments.end(), options.begin(), options.end());
    return Wavechain(arguments, {.folder = Path("")});
  }

  // The bytes that a chain makes of the take, through standard output.
  std::string Made(const Texts& chain, const Texts& options = {}) const {
    const Outcome run = Run(chain, "-", options);
    EXPECT_EQ(run.status, 0) << run.err;
    return run.out;
  }

  std::string MadeBy(const std::string& toml, const Texts& options = {}) const {
    folder.Write("chain.toml", toml);
    return Made({"--chain", "chain.toml"}, options);
  }

  void ExpectRefusal(const std::string& toml, const std::string& line) const {
    folder.Write("chain.toml", toml);
    const Outcome run = Run({"--chain", "chain.toml"}, "out.wav");
    EXPECT_EQ(run.status, 1) << toml;
    EXPECT_EQ(run.err, "wavechain: chain.toml" + line + "\n");
    EXPECT_FALSE(std::filesystem::exists(Path("out.wav")));
  }

  support::TempFolder folder;
};

struct Pair {
  const char* toml;
  Texts filters;
};

TEST_F(ChainFile, GivesTheBytesOfTheSameFiltersOnTheCommandLine) {
  const Pair pairs[] = {
      {"[[filter]]\nkind = \"SetTrack\"\n", {"SetTrack"}},
      {"[[filter]]\nkind = \"SetTrack\"\ndata = \"take3.iop\"\n", {"SetTrack data=take3.iop"}},
      {"[[filter]]\nkind = \"BeamPel\"\ncolumn = 5\n", {"BeamPel column=5"}},
      {"[[filter]]\nkind = \"BeamData\"\nmode = \"distance\"\na = 1\nb = 3\n",
       {"BeamData mode=distance a=1 b=3"}},
      {"[[filter]]\nmode = 8\nkind = 'BeamData'\npalate = \"pal.dat\"\n",
       {"BeamData mode=palate palate=pal.dat"}},
      {"[[filter]]\nkind = \"GlotSyn\"\nevents = \"pulses.gpl\"\n", {"GlotSyn events=pulses.gpl"}},
      {"[[filter]]\nkind = \"FricSyn\"\nevents = \"bursts.fla\"\n", {"FricSyn events=bursts.fla"}},
      {"[[filter]]\nkind = \"PulseSyn\"\nevents = \"clicks.gpm\"\n",
       {"PulseSyn events=clicks.gpm"}},
      {"filter = [{kind = \"FIRFilter\", half_length = 0x14}, {kind = \"SquareFilter\"}]\n",
       {"FIRFilter 20", "SquareFilter"}},
      {"[[filter]]\nkind = \"FIRNotch\"\nhalf_length = 200.0\nedge_weight = 2.5e-1\n"
       "# the next one\n[[filter]]\nkind = \"SineFilter\"\nphase = -90\nfrequency = 0.1\n",
       {"FIRNotch 200 edge_weight=0.25", "SineFilter phase=-90 frequency=0.1"}},
      {"[[filter]]\nkind = \"ResampleBlackman\"\nrate = 12_000\nquality = \"fast\"\n",
       {"ResampleBlackman rate=12000 quality=fast"}},
      {"[[filter]]\nkind = \"ResampleBlackman\"\ndown = 2\nwiden = \"0.5\"\n",
       {"ResampleBlackman down=2 widen=0.5"}},
      {"[[filter]]\nkind = \"SumSources\"\ngain2 = 0.3\nwith = \"noise.wav | FIRFilter 20\"\n"
       "channel = 1\n",
       {"SumSources gain2=0.3 channel=1 with='noise.wav | FIRFilter 20'"}},
      {"[[filter]]\nkind = \"EchoCancel\"\nwith = \"noise.wav\"\n", {"EchoCancel with=noise.wav"}},
  };
  for (const Pair& pair : pairs) {
    Texts chain;
    for (const std::string& filter : pair.filters) {
      chain.insert(chain.end(), {"-f", filter});
    }
    EXPECT_TRUE(MadeBy(pair.toml) == Made(chain)) << pair.toml;
  }
}

TEST_F(ChainFile, StandsAmongTheOtherFiltersWhereItIsNamed) {
  folder.Write("smooth.toml", "[[filter]]\nkind = \"FIRFilter\"\nhalf_length = 3\n");
  folder.Write("tone.toml", "[[filter]]\nkind = \"SineFilter\"\n");
  const std::string sine = "SineFilter";
  const std::string wide = "FIRFilter 9";
  const std::string narrow = "FIRFilter 3";
  EXPECT_TRUE(Made({"-f", sine, "--chain", "smooth.toml", "-f", wide, "--chain=tone.toml"}) ==
              Made({"-f", sine, "-f", narrow, "-f", wide, "-f", sine}));
  EXPECT_TRUE(Made({"--chain", "smooth.toml", "-f", sine}) == Made({"-f", narrow, "-f", sine}));
  EXPECT_FALSE(Made({"--chain", "smooth.toml", "-f", sine}) == Made({"-f", sine, "-f", narrow}));
}

TEST_F(ChainFile, NamesFilesFromItsOwnFolder) {
  const std::string elsewhere = Path("some where/else");
  std::filesystem::create_directories(elsewhere);
  for (const char* name : {"noise.wav", "clicks.gpm"}) {
    std::filesystem::rename(Path(name), elsewhere + "/" + name);
  }
  const std::string chain = "some where/else/mix.toml";
  folder.Write(chain,
               "[[filter]]\nkind = \"PulseSyn\"\nevents = \"clicks.gpm\"\n"
               "[[filter]]\nkind = \"SumSources\"\n"
               "with = \"noise.wav | PulseSyn events=clicks.gpm\"\n"
               "[[filter]]\nkind = \"BeamPel\"\ndata = \"" +
                   Path("take3.xyd") + "\"\n");
  EXPECT_TRUE(Made({"--chain", chain}) ==
              Made({"-f", "PulseSyn events='some where/else/clicks.gpm'", "-f",
                    "SumSources with=\"some where/else/noise.wav | PulseSyn "
                    "events='some where/else/clicks.gpm'\"",
                    "-f", "BeamPel data='" + Path("take3.xyd") + "'"}));
  const Outcome run = Wavechain({"run", "take3.wav", "out.wav", "--chain", chain, "-q", "--force"},
                                {.folder = Path("")});
  EXPECT_EQ(run.status, 0) << run.err;
  std::filesystem::remove(elsewhere + "/clicks.gpm");
  EXPECT_THAT(Run({"--chain", chain}, "none.wav").err,
              HasSubstr("filter 1 (PulseSyn): some where/else/clicks.gpm: there is no such file"));
}

TEST_F(ChainFile, MayComeThroughAPipe) {
  const Outcome run =
      Wavechain({"run", "take3.wav", "-", "-q", "--chain", "/dev/stdin"},
                {.input = "[[filter]]\nkind = \"SineFilter\"\n", .folder = Path("")});
  EXPECT_EQ(run.status, 0) << run.err;
  EXPECT_TRUE(run.out == Made({"-f", "SineFilter"}));
}

TEST_F(ChainFile, IsNeverReplacedByTheOutput) {
  const std::string chain = "[[filter]]\nkind = \"SineFilter\"\n";
  folder.Write("chain.toml", chain);
  const Outcome run =
      Run({"--chain", "chain.toml"}, "./chain.toml", {"--force", "--format", "wav"});
  EXPECT_EQ(run.status, 3);
  EXPECT_EQ(run.err, "wavechain: ./chain.toml: is the input itself; name another output\n");
  EXPECT_EQ(e2e::ReadFile(Path("chain.toml")), chain);
}

TEST_F(ChainFile, ThatCannotBeReadIsNamed) {
  const auto said = [&](const std::string& path) {
    const Outcome run = Run({"--chain", path}, "out.wav");
    EXPECT_EQ(run.status, 1);
    return run.err;
  };
  EXPECT_EQ(said("none.toml"),
            "wavechain: none.toml: cannot be opened: No such file or directory\n");
  EXPECT_EQ(said("."), "wavechain: .: cannot be read: Is a directory\n");
  EXPECT_EQ(said("/dev/zero"), "wavechain: /dev/zero: is larger than 1 MiB, which no chain is\n");
  EXPECT_EQ(Run({"--chain"}, "out.wav").err,
            "wavechain: --chain: 1 required FILE missing; see wavechain run --help\n");
}

TEST_F(ChainFile, ThatIsNoTomlIsRefusedWithLineAndColumn) {
  ExpectRefusal("[[filter]]\nkind = FIRNotch\n",
                ":2:8: is not TOML: boolean: expected 'false', saw 'F'; texts stand in quotes, as "
                "in kind = \"FIRNotch\"");
  ExpectRefusal("[[filter]]\nkind = \"BeamData\"\nmode = speed\n",
                ":3:8: is not TOML: value: could not determine value type; texts stand in quotes, "
                "as in kind = \"FIRNotch\"");
  ExpectRefusal("[[filter]\n", ":1:10: is not TOML: table header: expected ']', saw '\\n'");
  ExpectRefusal("[[filter]]\nkind = \"SineFilter\"\nphase = 1\nphase = 2\n",
                ":4:9: is not TOML: key-value pair: cannot redefine existing integer 'phase'");
  ExpectRefusal("\xff\n", ":1:1: is not TOML: Encountered invalid utf-8 sequence");
}

TEST_F(ChainFile, ThatHoldsNoFiltersIsRefused) {
  const std::string nothing =
      ": holds no filter; it takes a line [[filter]], and below it kind = \"FIRNotch\" or its like";
  ExpectRefusal("", nothing);
  ExpectRefusal("# nothing\n", nothing);
  ExpectRefusal("filter = []\n", nothing);
  ExpectRefusal("[filter]\nkind = \"SineFilter\"\n",
                ":1:2: a filter starts with [[filter]], in double brackets");
  ExpectRefusal("filter = [\"SineFilter\"]\n",
                ":1:11: a filter is a table, not a text; it starts with [[filter]]");
  ExpectRefusal("[[filters]]\nkind = \"SineFilter\"\n",
                ":1:3: there is no 'filters' in a chain; did you mean filter?");
  ExpectRefusal("[[filter]]\nkind = \"SineFilter\"\n[output]\n",
                ":3:2: there is no 'output' in a chain; there are filter");
}

TEST_F(ChainFile, KindsAreTextsThatTheCatalogueKnows) {
  ExpectRefusal("# x\n\n[[filter]]\nhalf_length = 3\n",
                ":3:1: the filter's kind is missing; add kind = \"FIRNotch\" or its like");
  ExpectRefusal("[[filter]]\nkind = 3\n", ":2:8: kind takes a text in quotes, not a number");
  ExpectRefusal("[[filter]]\nhalf_lenght = 3\nkind = \"FIRNotsch\"\n",
                ":3:8: there is no filter 'FIRNotsch'; did you mean FIRNotch?");
}

TEST_F(ChainFile, UnknownKeysComeWithTheNearestName) {
  ExpectRefusal("[[filter]]\nkind = \"FIRNotch\"\n  half_lenght = 200\n",
                ":3:3: FIRNotch has no parameter 'half_lenght'; did you mean half_length?");
  ExpectRefusal("[[filter]]\nkind = \"GlotSyn\"\ngain.left = 2\n",
                ":3:1: GlotSyn has no parameter 'gain'; there are events");
  // In the order in which they are written.
  ExpectRefusal("[[filter]]\nkind = \"FIRNotch\"\nwidth = 3\nheight = 4\n",
                ":3:1: FIRNotch has no parameter 'width'; there are half_length, frequency, "
                "edge_weight");
}

TEST_F(ChainFile, ValuesAreCheckedLikeThoseOfTheCommandLine) {
  ExpectRefusal("[[filter]]\nkind = \"SineFilter\"\n\n[[filter]]\nkind = \"FIRFilter\"\n",
                ":4:1: half_length is missing (samples, whole, 1 to 2048); add half_length=NUMBER");
  ExpectRefusal("[[filter]]\nkind = \"FIRNotch\"\nhalf_length = 2.50\n",
                ":3:15: half_length takes a whole number, not 2.5");
  ExpectRefusal("[[filter]]\nkind = \"FIRNotch\"\n\"half_length\" = 2049\n",
                ":3:17: half_length=2049 is out of range (samples, whole, 0 to 2048)");
  ExpectRefusal("[[filter]]\nkind = \"SineFilter\"\namplitude = nan\n",
                ":3:13: amplitude takes a number (sample units, real, any value), not 'nan'");
  ExpectRefusal("[[filter]]\nkind = \"SineFilter\"\namplitude = true\n",
                ":3:13: amplitude takes a number (sample units, real, any value), not 'true'");
  ExpectRefusal(
      "[[filter]]\nkind = \"BeamData\"\nmode = \"sp\xc3\xa9"
      "d\" # \xc3\xa9\n",
      ":3:8: mode takes a number or a name, not 'sp\xc3\xa9"
      "d'; did you mean speed?");
  // A column counts letters, not bytes.
  ExpectRefusal("filter = [{kind = \"GlotSyn\", events = \"\xc3\xa9\", gain = 1}]\n",
                ":1:44: GlotSyn has no parameter 'gain'; there are events");
}

TEST_F(ChainFile, ValuesOfTheWrongTypeAreNamed) {
  ExpectRefusal("[[filter]]\nkind = \"SineFilter\"\nphase = [1, 2]\n",
                ":3:9: phase takes one value, not an array");
  ExpectRefusal("[[filter]]\nkind = \"SineFilter\"\nphase = {a = 1}\n",
                ":3:9: phase takes one value, not a table");
  ExpectRefusal("[[filter]]\nkind = \"ResampleBlackman\"\nrate = 2026-11-21\n",
                ":3:8: rate takes one value, not a date or a time");
  ExpectRefusal("[[filter]]\nkind = \"BeamPel\"\ndata = 5\n",
                ":3:8: data takes a text in quotes, not a number");
  ExpectRefusal("[[filter]]\nkind = \"ResampleBlackman\"\nquality = false\n",
                ":3:11: quality takes a text in quotes, not true or false");
  ExpectRefusal("[[filter]]\nkind = \"BeamPel\"\ndata = \"a\\u0000b\"\n",
                ":3:8: data holds a zero byte");
}

TEST_F(ChainFile, TheHostsOwnArgumentsAreCheckedToo) {
  ExpectRefusal("[[filter]]\nkind = \"ResampleBlackman\"\nquality = \"bset\"\nrate = 8000\n",
                ":3:11: there is no quality 'bset'; did you mean best?");
  ExpectRefusal("[[filter]]\nkind = \"ResampleBlackman\"\nrate = -1\n",
                ":3:8: rate takes a number of Hz above 0, not '-1'");
  ExpectRefusal("[[filter]]\nkind = \"ResampleBlackman\"\ndown = 2\nrate = 8000\n",
                ":4:8: rate settles all parameters; leave out down or rate");
  ExpectRefusal("[[filter]]\nkind = \"ResampleBlackman\"\nquality = \"best\"\n",
                ":3:11: quality goes with rate, or with down and up; add rate=HZ");
  ExpectRefusal("[[filter]]\nkind = \"SumSources\"\nwith = \"noise.wav\"\nchannel = 1.5\n",
                ":4:11: channel takes a whole number from 1, not '1.5'");
  ExpectRefusal("[[filter]]\nkind = \"SumSources\"\n",
                ":1:1: with is missing (the second signal: a recording, and filters that it goes "
                "through by choice); add with=\"FILE | FILTER | ...\"");
  ExpectRefusal("[[filter]]\nkind = \"SumSources\"\nwith = \"\"\n",
                ":3:8: with='': takes the name of a file, and filters behind it, as in "
                "with=\"noise.wav | FIRFilter 20\"");
}

TEST_F(ChainFile, FiltersOfASecondSignalAreNamedAtTheirPlace) {
  ExpectRefusal("[[filter]]\nkind = \"SumSources\"\nwith = \"a.wav | FIRFiltr 20\"\n",
                ":3:8: 'FIRFiltr 20': there is no filter 'FIRFiltr'; did you mean FIRFilter?");
  ExpectRefusal("[[filter]]\nkind = \"SumSources\"\nwith = \"a.wav | FIRFilter '20\"\n",
                ":3:8: 'FIRFilter '20': a ' is opened and never closed");
  ExpectRefusal(
      "[[filter]]\nkind = \"SumSources\"\nwith = \"a.wav | EchoCancel with='b.wav | FIRFilter'\"\n",
      ":3:8: 'EchoCancel with='b.wav | FIRFilter'': 'FIRFilter': half_length is missing (samples, "
      "whole, 1 to 2048); add half_length=NUMBER");
}

}  // namespace
