// Filters of two sources: mixes against plain loops, lengths, second chains, and what is refused.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <limits>

#include "e2e/support/program.h"
#include "e2e/support/sound.h"
#include "support/samples.h"
#include "support/temp_folder.h"

namespace {

using e2e::Outcome;
using e2e::ReadSound;
using e2e::Wavechain;
using e2e::WriteSound;
using support::Noise;
using support::SameBits;
using support::Samples;
using testing::AllOf;
using testing::HasSubstr;

class TwoSources : public testing::Test {
 protected:
  std::string Path(const std::string& name) const { return folder.Path(name); }

  Outcome Run(const std::vector<std::string>& filters, const std::string& out = "out.wav",
              const std::vector<std::string>& options = {}) const {
    std::vector<std::string> arguments = {"run", Path("in.wav"), Path(out), "--force"};
    for (const std::string& filter : filters) {
      arguments.insert(arguments.end(), {"-f", filter});
    }
    arguments.insert(arguments.end(), options.begin(), options.end());
    return Wavechain(arguments);
  }

  Samples Result(const std::string& filter) const {
    const Outcome run = Run({filter});
    EXPECT_EQ(run.status, 0) << run.err;
    return ReadSound(Path("out.wav")).samples;
  }

  // What a chain of its own makes of a file.
  Samples Filtered(const std::string& file, const std::string& filter) const {
    const Outcome run =
        Wavechain({"run", Path(file), Path("filtered.wav"), "--force", "-f", filter});
    EXPECT_EQ(run.status, 0) << run.err;
    return ReadSound(Path("filtered.wav")).samples;
  }

  void ExpectRefusal(const std::string& filter, int status, const testing::Matcher<std::string>& m,
                     const std::vector<std::string>& options = {}) const {
    const Outcome run = Run({filter}, "refused.wav", options);
    EXPECT_EQ(run.status, status) << filter << "\n" << run.err;
    EXPECT_THAT(run.err, m);
    EXPECT_EQ(e2e::ReadFile(Path("refused.wav")), "") << filter;
  }

  std::string With(const std::string& file, const std::string& filters = "") const {
    return " with=\"" + Path(file) + filters + "\"";
  }

 private:
  support::TempFolder folder;
};

Samples Mixed(Samples a, Samples b, double gain1 = 1.0, double gain2 = 1.0) {
  const std::size_t count = std::max(a.size(), b.size());
  a.resize(count);
  b.resize(count);
  for (std::size_t i = 0; i < count; ++i) {
    a[i] = static_cast<float>(a[i] * gain1 + b[i] * gain2);
  }
  return a;
}

TEST_F(TwoSources, MixesSampleBySample) {
  const Samples a = Noise(20000, 1);
  const Samples b = Noise(20000, 2);
  WriteSound(Path("in.wav"), a);
  WriteSound(Path("b.wav"), b);
  EXPECT_TRUE(SameBits(Result("SumSources" + With("b.wav")), Mixed(a, b)));
  EXPECT_TRUE(
      SameBits(Result("SumSources gain1=1 gain2=-1" + With("b.wav")), Mixed(a, b, 1.0, -1.0)));
  EXPECT_TRUE(SameBits(Result("SumSources" + With("b.wav") + " 0.3 2.5"), Mixed(a, b, 0.3, 2.5)));
  EXPECT_TRUE(SameBits(Result("SumSources" + With("in.wav", "") + " 1 -1"), Samples(20000)));
}

TEST_F(TwoSources, RunsToTheEndOfTheLongerSignal) {
  for (const auto& [first, second] : {std::pair(5000, 3000),
                                      {3000, 5000},
                                      {1, 9000},
                                      {9000, 1},
                                      {4096, 8192},
                                      {8192, 4096},
                                      {4097, 20000},
                                      {20000, 4095},
                                      {0, 5000},
                                      {5000, 0},
                                      {0, 0},
                                      {100, 100},
                                      {8193, 8192}}) {
    const Samples a = Noise(first, 1);
    const Samples b = Noise(second, 2);
    WriteSound(Path("in.wav"), a);
    WriteSound(Path("b.wav"), b);
    const std::string lengths = std::to_string(first) + " and " + std::to_string(second);
    EXPECT_TRUE(SameBits(Result("SumSources 2 -0.7" + With("b.wav")), Mixed(a, b, 2.0, -0.7)))
        << lengths;
    for (const std::string span : {"0", "1", "2048"}) {
      EXPECT_TRUE(
          SameBits(Result("EchoCancel span=" + span + With("b.wav")), Mixed(a, b, 1.0, -1.0)))
          << lengths << " span " << span;
    }
  }
}

TEST_F(TwoSources, FiltersBehindAPairGetAllOfIt) {
  WriteSound(Path("in.wav"), Noise(3000, 1));
  WriteSound(Path("b.wav"), Noise(15000, 2));
  WriteSound(Path("c.wav"), Noise(9001, 3));
  const std::vector<std::string> filters = {"SumSources" + With("b.wav"),
                                            "EchoCancel" + With("c.wav"), "FIRNotch 300"};
  ASSERT_EQ(Run(filters, "chain.wav").status, 0);
  WriteSound(Path("plain.wav"),
             Mixed(Mixed(Noise(3000, 1), Noise(15000, 2)), Noise(9001, 3), 1.0, -1.0));
  EXPECT_TRUE(
      SameBits(ReadSound(Path("chain.wav")).samples, Filtered("plain.wav", "FIRNotch 300")));
}

TEST_F(TwoSources, TheSecondSignalGoesThroughAChainOfItsOwn) {
  const Samples a = Noise(7000, 1);
  WriteSound(Path("in.wav"), a);
  WriteSound(Path("b.wav"), Noise(9000, 2));
  const Samples smooth = Filtered("b.wav", "FIRFilter half_length=20");
  EXPECT_TRUE(SameBits(Result("SumSources" + With("b.wav", " | FIRFilter half_length=20")),
                       Mixed(a, smooth)));
  EXPECT_TRUE(SameBits(Result("SumSources" + With("b.wav", "|FIRFilter 20")), Mixed(a, smooth)));
  WriteSound(Path("smooth.wav"), smooth);
  EXPECT_TRUE(SameBits(Result("EchoCancel" + With("b.wav", " | FIRFilter 20 | FIRNotch 100")),
                       Mixed(a, Filtered("smooth.wav", "FIRNotch 100"), 1.0, -1.0)));
  const std::string nested = "SumSources with=\"" + Path("b.wav") + " | SumSources with='" +
                             Path("in.wav") + " | FIRFilter 20' | FIRNotch 50\"";
  WriteSound(Path("inner.wav"), Mixed(Noise(9000, 2), Filtered("in.wav", "FIRFilter 20")));
  EXPECT_TRUE(SameBits(Result(nested), Mixed(a, Filtered("inner.wav", "FIRNotch 50"))));
}

TEST_F(TwoSources, RatesMayMeetByResampling) {
  WriteSound(Path("in.wav"), Noise(4001, 1), 16000);
  WriteSound(Path("b.wav"), Noise(10007, 2), 48000);
  const Samples slow = Filtered("b.wav", "ResampleBlackman rate=16000");
  EXPECT_EQ(slow.size(), 3336U);  // 10007 / 3, rounded up
  EXPECT_TRUE(SameBits(Result("SumSources" + With("b.wav", " | ResampleBlackman rate=16000")),
                       Mixed(Noise(4001, 1), slow)));

  // A resampler announces a sample less than it delivers: none may be lost on either side.
  WriteSound(Path("short.wav"), Noise(100, 3), 8000);
  ASSERT_EQ(
      Run({"ResampleBlackman down=2 up=1", "SumSources" + With("short.wav")}, "pair.wav").status,
      0);
  const Samples half = Filtered("in.wav", "ResampleBlackman down=2 up=1");
  EXPECT_EQ(half.size(), 2001U);
  EXPECT_TRUE(SameBits(ReadSound(Path("pair.wav")).samples, Mixed(half, Noise(100, 3))));
  WriteSound(Path("short.wav"), Noise(100, 3), 16000);
  WriteSound(Path("b.wav"), Noise(10007, 2), 32000);
  const Outcome run = Wavechain({"run", Path("short.wav"), Path("pair.wav"), "--force", "-f",
                                 "SumSources" + With("b.wav", " | ResampleBlackman 2 1")});
  ASSERT_EQ(run.status, 0) << run.err;
  EXPECT_TRUE(SameBits(ReadSound(Path("pair.wav")).samples,
                       Mixed(Noise(100, 3), Filtered("b.wav", "ResampleBlackman 2 1"))));
}

TEST_F(TwoSources, DifferentRatesAreRefusedNamingBoth) {
  WriteSound(Path("in.wav"), Noise(100), 44100);
  WriteSound(Path("b.wav"), Noise(100), 16000);
  for (const std::string filter : {"SumSources", "EchoCancel"}) {
    ExpectRefusal(filter + With("b.wav"), 1,
                  AllOf(HasSubstr(Path("in.wav") + " comes at 44100 Hz"),
                        HasSubstr(Path("b.wav") + " at 16000 Hz"), HasSubstr("rate=44100")));
  }
  ExpectRefusal("SumSources" + With("b.wav", " | ResampleBlackman rate=44099"), 1,
                HasSubstr("filter 1 (SumSources): with: filter 1 (ResampleBlackman)"));
}

TEST_F(TwoSources, DataFilesLieBesideTheSecondRecording) {
  WriteSound(Path("in.wav"), Noise(1000, 1), 8000);
  WriteSound(Path("b.wav"), Samples(1000), 8000);
  e2e::WriteFile(Path("b.gpm"), "10 0.5\n50 0.25\n");
  const Samples pulses = Filtered("b.wav", "PulseSyn");
  EXPECT_EQ(std::ranges::count_if(pulses, [](float x) { return x != 0.0F; }), 2);
  EXPECT_TRUE(
      SameBits(Result("SumSources" + With("b.wav", " | PulseSyn")), Mixed(Noise(1000, 1), pulses)));
}

TEST_F(TwoSources, AChannelOfTheSecondRecordingIsChosen) {
  WriteSound(Path("in.wav"), Samples(500));
  const Samples left = Noise(500, 1);
  const Samples right = Noise(500, 2);
  Samples both;
  for (std::size_t i = 0; i < left.size(); ++i) {
    both.insert(both.end(), {left[i], right[i]});
  }
  WriteSound(Path("b.wav"), both, 48000, 2);
  EXPECT_TRUE(SameBits(Result("SumSources channel=1" + With("b.wav")), Mixed(Samples(500), left)));
  EXPECT_TRUE(SameBits(Result("SumSources channel=2" + With("b.wav")), Mixed(Samples(500), right)));
  ExpectRefusal("SumSources" + With("b.wav"), 1,
                HasSubstr("b.wav: has 2 channels; choose one by channel=1 to channel=2"));
  ExpectRefusal("SumSources channel=3" + With("b.wav"), 1, HasSubstr("channel=3: "));
  for (const std::string wrong : {"0", "-1", "1.5", "left"}) {
    ExpectRefusal("SumSources channel=" + wrong + With("b.wav"), 1,
                  HasSubstr("channel takes a whole number from 1, not '" + wrong + "'"));
  }
}

TEST_F(TwoSources, FileNamesMayHoldBlanksQuotesAndBars) {
  const Samples a = Noise(300, 1);
  const Samples b = Noise(300, 2);
  WriteSound(Path("in.wav"), a);
  for (const std::string name : {"two words.wav", "it's b.wav"}) {
    WriteSound(Path(name), b);
    EXPECT_TRUE(SameBits(Result("SumSources" + With(name)), Mixed(a, b))) << name;
    EXPECT_EQ(Run({"SumSources" + With(name, " | FIRFilter 5")}).status, 0) << name;
  }
  WriteSound(Path("a|b.wav"), b);
  EXPECT_TRUE(SameBits(Result("SumSources with=\"'" + Path("a|b.wav") + "'\""), Mixed(a, b)));
  EXPECT_EQ(Run({"SumSources with=\"'" + Path("a|b.wav") + "' | FIRFilter 5\""}).status, 0);
}

TEST_F(TwoSources, TheSecondSignalIsNeeded) {
  WriteSound(Path("in.wav"), Noise(100));
  ExpectRefusal("SumSources 1 -1", 1, HasSubstr("with is missing"));
  ExpectRefusal("EchoCancel", 1, HasSubstr("with is missing"));
  ExpectRefusal("SumSources with=", 1, HasSubstr("takes the name of a file"));
  ExpectRefusal("SumSources with=\" | FIRFilter 5\"", 1, HasSubstr("takes the name of a file"));
  ExpectRefusal("SumSources with=-", 1, HasSubstr("takes the name of a file"));
  ExpectRefusal("SumSources" + With("in.wav", " | FIRFilte 5"), 1, HasSubstr("did you mean FIR"));
  ExpectRefusal("SumSources" + With("in.wav", " | FIRFilter"), 1,
                HasSubstr("half_length is missing"));
  ExpectRefusal("SumSources" + With("in.wav", " | "), 1, HasSubstr("a filter's name comes first"));
  ExpectRefusal("SumSources" + With("in.wav", " | SumSources"), 1, HasSubstr("with is missing"));
  ExpectRefusal("FIRFilter 5" + With("in.wav"), 1, HasSubstr("no parameter 'with'"));
}

TEST_F(TwoSources, ABadSecondRecordingIsNamed) {
  WriteSound(Path("in.wav"), Noise(100));
  ExpectRefusal("SumSources" + With("none.wav"), 2,
                HasSubstr(Path("none.wav") + ": cannot be opened"));
  e2e::WriteFile(Path("text.wav"), "no recording\n");
  ExpectRefusal("SumSources" + With("text.wav"), 2, HasSubstr(Path("text.wav")));

  WriteSound(Path("cut.wav"), Noise(10000));
  e2e::WriteFile(Path("cut.wav"), e2e::ReadFile(Path("cut.wav")).substr(0, 20000));
  ExpectRefusal("SumSources" + With("cut.wav"), 2, HasSubstr(Path("cut.wav") + ": is cut short"));
  EXPECT_EQ(Run({"SumSources" + With("cut.wav")}, "cut_out.wav", {"--allow-truncated"}).status, 0);

  WriteSound(Path("bad.flac"), Noise(100000), 48000, 1, SF_FORMAT_FLAC | SF_FORMAT_PCM_16);
  const std::string bytes = e2e::ReadFile(Path("bad.flac"));
  e2e::WriteFile(Path("bad.flac"), bytes.substr(0, bytes.size() / 2));
  ExpectRefusal(
      "SumSources" + With("bad.flac"), 2,
      AllOf(HasSubstr(Path("bad.flac") + ": is damaged"), HasSubstr("of 100000 samples")));
  ExpectRefusal(
      "SumSources with='" + Path("in.wav") + " | EchoCancel with=" + Path("bad.flac") + "'", 2,
      HasSubstr(Path("bad.flac") + ": is damaged"));
}

TEST_F(TwoSources, OddSamplesOfTheSecondRecordingAreReported) {
  WriteSound(Path("in.wav"), Noise(100));
  Samples odd = Noise(100);
  odd[7] = std::numeric_limits<float>::infinity();
  WriteSound(Path("odd.wav"), odd);
  EXPECT_THAT(Run({"SumSources" + With("odd.wav")}).err,
              HasSubstr("warning: " + Path("odd.wav") + ": not finite: 1 sample\n"));
}

TEST_F(TwoSources, TheSecondRecordingIsNeverReplaced) {
  WriteSound(Path("in.wav"), Noise(100, 1));
  WriteSound(Path("b.wav"), Noise(100, 2));
  const std::string before = e2e::ReadFile(Path("b.wav"));
  for (const std::string& filter :
       {"SumSources" + With("b.wav"),
        "SumSources with='" + Path("in.wav") + " | EchoCancel with=" + Path("b.wav") + "'"}) {
    const Outcome run = Run({filter}, "b.wav");
    EXPECT_EQ(run.status, 3);
    EXPECT_THAT(run.err, HasSubstr(Path("b.wav") + ": is the input itself"));
    EXPECT_TRUE(e2e::ReadFile(Path("b.wav")) == before);
  }
}

TEST_F(TwoSources, SaysWhatItReads) {
  WriteSound(Path("in.wav"), Noise(100, 1));
  WriteSound(Path("b.wav"), Noise(200, 2));
  const Outcome run = Run({"SumSources" + With("b.wav", " | FIRFilter 5")});
  EXPECT_THAT(run.err, HasSubstr("read   " + Path("b.wav") + ": WAV"));
  EXPECT_THAT(run.err, HasSubstr("chain  SumSources gain1=1 gain2=1 with='" + Path("b.wav") +
                                 " | FIRFilter 5'\n"));
  EXPECT_THAT(run.err, HasSubstr("200 samples"));
  EXPECT_THAT(Wavechain({"info", "EchoCancel"}).out,
              HasSubstr("with=\"FILE | FILTER | ...\"  (required)"));
}

TEST_F(TwoSources, TwoRunsGiveTheSameBytes) {
  WriteSound(Path("in.wav"), Noise(30000, 1));
  WriteSound(Path("b.wav"), Noise(44100, 2), 44100);
  for (const std::string out : {"one.wav", "two.wav"}) {
    ASSERT_EQ(
        Run({"SumSources 1 0.5" + With("b.wav", " | ResampleBlackman rate=48000")}, out).status, 0);
  }
  EXPECT_TRUE(e2e::ReadFile(Path("one.wav")) == e2e::ReadFile(Path("two.wav")));
}

}  // namespace
