// Kinds of files beyond the usual: raw samples, sizes that nobody filled in, more than 4 GiB.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <fstream>

#include "e2e/support/program.h"
#include "e2e/support/sound.h"
#include "support/samples.h"
#include "support/temp_folder.h"

namespace {

using e2e::Outcome;
using e2e::Wavechain;
using support::TempFolder;
using testing::HasSubstr;

template <class Value>
std::string Bytes(const std::vector<Value>& values) {
  return {reinterpret_cast<const char*>(values.data()), values.size() * sizeof(Value)};
}

std::string Word(std::uint32_t value) { return Bytes(std::vector<std::uint32_t>{value}); }

class WavechainFormats : public testing::Test {
 protected:
  std::string Path(const std::string& name) const { return folder.Path(name); }

  // What the chain makes of a recording that has a header.
  std::vector<float> Usual(const std::vector<float>& samples, const std::string& filter) const {
    e2e::WriteSound(Path("usual.wav"), samples, 8000);
    EXPECT_EQ(
        Wavechain({"run", Path("usual.wav"), Path("done.wav"), "--force", "-f", filter}).status, 0);
    return e2e::ReadSound(Path("done.wav")).samples;
  }

  void ExpectFailure(std::vector<std::string> arguments, int status, const std::string& line,
                     const std::string& input = "") const {
    arguments.insert(arguments.begin(), "run");
    arguments.insert(arguments.end(), {"-q", "-f", "SineFilter"});
    const Outcome run = Wavechain(arguments, {.input = input});
    EXPECT_EQ(run.status, status);
    EXPECT_EQ(run.err, "wavechain: " + line + "\n");
    EXPECT_EQ(run.out, "");
    EXPECT_FALSE(std::filesystem::exists(Path("out.wav")));
  }

  // How many samples the program finds in a file.
  std::string Read(const std::string& bytes) const {
    const Outcome run = Wavechain({"run", "-", "-", "-f", "SineFilter 0 0"}, {.input = bytes});
    EXPECT_EQ(run.status, 0) << run.err;
    e2e::WriteFile(Path("read.wav"), run.out);
    return Bytes(e2e::ReadSound(Path("read.wav")).samples);
  }

  TempFolder folder;
};

TEST_F(WavechainFormats, RawFloatsGoThroughPipes) {
  const std::vector<float> samples = support::Noise(6000);
  const Outcome run =
      Wavechain({"run", "-", "-", "-t", "f32", "--rate", "8000", "-f", "FIRNotch 30"},
                {.input = Bytes(samples)});
  EXPECT_EQ(run.status, 0) << run.err;
  EXPECT_TRUE(run.out == Bytes(Usual(samples, "FIRNotch 30")));
}

TEST_F(WavechainFormats, TheFormatOfTheOutputMayStillBeChosen) {
  const std::vector<float> samples = support::Noise(100);
  const Outcome run = Wavechain(
      {"run", "-", "-", "-t", "f32", "--rate", "8000", "--format", "wav", "-f", "FIRFilter 3"},
      {.input = Bytes(samples)});
  e2e::WriteFile(Path("out.wav"), run.out);
  EXPECT_EQ(e2e::ReadSound(Path("out.wav")).rate, 8000);
  EXPECT_EQ(e2e::ReadSound(Path("out.wav")).samples, Usual(samples, "FIRFilter 3"));
}

TEST_F(WavechainFormats, EachRawTypeIsWrittenAndReadBack) {
  // Steps of 2^-10 fit into all of them.
  std::vector<float> samples;
  for (int i = -1000; i < 1000; ++i) {
    samples.push_back(static_cast<float>(i) / 1024.0F);
  }
  e2e::WriteSound(Path("in.wav"), samples, 8000);
  const std::map<std::string, std::size_t> sizes = {
      {"f32", 4}, {"f64", 8}, {"s16", 2}, {"s24", 3}, {"s32", 4}};
  for (const auto& [type, size] : sizes) {
    const std::string raw = Path("raw." + type);
    ASSERT_EQ(Wavechain({"run", Path("in.wav"), raw, "-f", "SineFilter 0 0"}).status, 0);
    EXPECT_EQ(e2e::ReadFile(raw).size(), size * samples.size());
    const std::string back = Path("back_" + type + ".wav");
    ASSERT_EQ(
        Wavechain({"run", raw, back, "-t", type, "--rate", "8000", "-f", "SineFilter 0 0"}).status,
        0);
    EXPECT_TRUE(e2e::ReadSound(back).samples == samples) << type;
  }
  // The order of bytes, by hand: -1000 / 1024 of 32768 steps.
  const std::string bytes = e2e::ReadFile(Path("raw.s16"));
  EXPECT_EQ(bytes.substr(0, 2), std::string("\x00\x83", 2));
}

TEST_F(WavechainFormats, RawSamplesWantTypeAndRate) {
  const std::string out = Path("out.wav");
  ExpectFailure({"-", out, "-t", "f33", "--rate", "8000"}, 1,
                "-t f33: there is no such type of raw samples; did you mean f32?");
  ExpectFailure({"-", out, "-t", "f32"}, 1,
                "-t f32: raw samples do not say their rate; add --rate HZ");
  ExpectFailure({"-", out, "-t", "f32", "--rate", "8000.5"}, 1,
                "--rate 8000.5: raw samples are read at a whole number of Hz");
  ExpectFailure({out, "-t", "f32", "--rate", "8000", "--silence", "1"}, 1,
                "-t and --silence exclude each other: silence has no samples to read");
  ExpectFailure({SPEECH_16K, out, "--rate", "8000"}, 1,
                "--rate goes with --silence or with -t; a recording's rate is changed by -f "
                "\"ResampleBlackman rate=8000\"");
  ExpectFailure({out, "--silence", "1"}, 1,
                "--silence has no rate of its own; add --rate, as in --rate 16000");
  ExpectFailure({SPEECH_16K, Path("out.f32"), "--encoding", "pcm16"}, 1,
                "--encoding pcm16: f32 samples are float32; leave it out");
}

TEST_F(WavechainFormats, HalfASampleIsRefusedUnlessAllowed) {
  const std::string bytes = Bytes(support::Noise(3)) + "xy";
  ExpectFailure({"-", Path("out.wav"), "-t", "f32", "--rate", "8000"}, 2,
                "standard input: is cut short: 14 bytes are not a whole number of f32 samples; "
                "--allow-truncated takes what is there",
                bytes);
  const Outcome run = Wavechain(
      {"run", "-", "-", "-t", "f32", "--rate", "8000", "--allow-truncated", "-f", "SineFilter 0 0"},
      {.input = bytes});
  EXPECT_EQ(run.status, 0) << run.err;
  EXPECT_EQ(run.out, bytes.substr(0, 12));
}

// Sizes as programs leave them that cannot go back in a pipe.
TEST_F(WavechainFormats, AWavOfUnknownSizeIsReadToItsEnd) {
  const std::vector<float> samples = support::Noise(1001);
  e2e::WriteSound(Path("in.wav"), samples, 8000);
  const std::string bytes = e2e::ReadFile(Path("in.wav"));
  const std::size_t data = bytes.find("data");
  ASSERT_NE(data, std::string::npos);
  const std::uint32_t unknown[] = {0, 0xFFFFFFFF, 0x7FFFFFFF, 0x7FFFF000, 0x80000000};
  for (const std::uint32_t size : unknown) {
    for (const std::uint32_t riff : {size, 0U, 0xFFFFFFFFU, 36U}) {
      std::string piped = bytes;
      piped.replace(4, 4, Word(riff)).replace(data + 4, 4, Word(size));
      EXPECT_TRUE(Read(piped) == Bytes(samples)) << riff << " " << size;
    }
  }
  std::string silent = bytes.substr(0, data + 8).replace(data + 4, 4, Word(0));
  EXPECT_EQ(Read(silent + std::string(400, '\0')), std::string(400, '\0'));
}

TEST_F(WavechainFormats, AnEmptyWavStaysEmpty) {
  e2e::WriteSound(Path("in.wav"), {}, 8000);
  std::string bytes = e2e::ReadFile(Path("in.wav"));
  bytes.resize(bytes.find("data") + 8);
  EXPECT_EQ(Read(bytes), "");
  // Chunks may follow, the last one without its filling byte.
  EXPECT_EQ(Read(bytes + "LIST" + Word(4) + "INFO"), "");
  EXPECT_EQ(Read(bytes + "note" + Word(3) + "abc"), "");
}

// A file with nothing in it but a header that announces 5 GiB, which costs no room on the disk.
class WavechainHugeFiles : public WavechainFormats {
 protected:
  static constexpr std::int64_t Samples = 1342177280;

  // Puts an 8-byte number at each place.
  std::string Huge(const std::string& name, int format,
                   const std::vector<std::pair<std::size_t, std::int64_t>>& sizes,
                   std::int64_t samples = Samples) const {
    const std::string path = Path(name);
    e2e::WriteSound(path, std::vector<float>(16, 0.0F), 8000, 1, format | SF_FORMAT_FLOAT);
    std::string header = e2e::ReadFile(path);
    header.resize(header.size() - 64);
    for (const auto& [at, more] : sizes) {
      const std::int64_t size = more + 4 * samples;
      std::memcpy(header.data() + at, &size, sizeof size);
    }
    e2e::WriteFile(path, header);
    std::filesystem::resize_file(path, header.size() + 4 * static_cast<std::size_t>(samples));
    return path;
  }

  void ExpectReadButNotWrittenAsWav(const std::string& path) const {
    ExpectFailure({path, Path("out.wav")}, 3,
                  Path("out.wav") +
                      ": 1342177280 samples do not fit into a wav file, which ends at 4 GiB; "
                      "write .w64 or .rf64");
  }

  std::string Small(int format) const {
    e2e::WriteSound(Path("small"), std::vector<float>(16, 0.0F), 8000, 1, format | SF_FORMAT_FLOAT);
    return e2e::ReadFile(Path("small"));
  }

  std::string HugeW64(std::int64_t samples) const {
    const std::size_t data = Small(SF_FORMAT_W64).find("data\xF3\xAC\xD3\x11");
    EXPECT_NE(data, std::string::npos);
    const auto before = static_cast<std::int64_t>(data) + 24;
    return Huge("huge.w64", SF_FORMAT_W64, {{16, before}, {data + 16, 24}}, samples);
  }
};

TEST_F(WavechainHugeFiles, W64IsReadAndAWavOutputRefusedBeforeAnythingIsDone) {
  ExpectReadButNotWrittenAsWav(HugeW64(Samples));
}

// Minutes and 5 GiB of the disk where the long tests are asked for; otherwise the same with less.
TEST_F(WavechainHugeFiles, SamplesBehindFourGiBAreReadAndWritten) {
  const std::int64_t samples = std::getenv("WAVEFILTERS_LONG_TESTS") != nullptr ? Samples : 1 << 16;
  const std::vector<float> tail = {0.25F, -0.5F, 0.125F, 1.0F};
  const std::string path = HugeW64(samples);
  std::fstream(path, std::ios::binary | std::ios::in | std::ios::out)
          .seekp(-static_cast<std::streamoff>(Bytes(tail).size()), std::ios::end)
      << Bytes(tail);
  // Adds zeros: a chain that samples go through, and leave as they came.
  const Outcome outcome = Wavechain({"run", path, Path("out.w64"), "-q", "--no-record", "-f",
                                     "SineFilter frequency=100 amplitude=0"});
  ASSERT_EQ(outcome.status, 0) << outcome.err;
  EXPECT_GE(std::filesystem::file_size(Path("out.w64")), 4 * static_cast<std::uintmax_t>(samples));
  EXPECT_THAT(e2e::ReadEnd(Path("out.w64"), samples - 6),
              testing::ElementsAre(0.0F, 0.0F, 0.25F, -0.5F, 0.125F, 1.0F));
}

TEST_F(WavechainHugeFiles, Rf64IsReadAndAWavOutputRefusedBeforeAnythingIsDone) {
  const std::string small = Small(SF_FORMAT_RF64);
  const std::size_t sizes = small.find("ds64") + 8;
  const auto before = static_cast<std::int64_t>(small.find("data"));
  ExpectReadButNotWrittenAsWav(
      Huge("huge.rf64", SF_FORMAT_RF64, {{sizes, before}, {sizes + 8, 0}}));
}

TEST_F(WavechainHugeFiles, AWavThatIsLongerThanItsSizesCanTellIsRefused) {
  std::string header = Small(SF_FORMAT_WAV);
  const std::size_t data = header.find("data");
  header.resize(data + 8);
  header.replace(4, 4, Word(0xFFFFFFFF)).replace(data + 4, 4, Word(0xFFFFFFFF));
  e2e::WriteFile(Path("huge.wav"), header);
  std::filesystem::resize_file(Path("huge.wav"),
                               header.size() + 4 * static_cast<std::size_t>(Samples));
  ExpectFailure({Path("huge.wav"), Path("out.wav")}, 2,
                Path("huge.wav") +
                    ": is longer than the 4 GiB that a WAV file can tell of; send it as W64 or "
                    "RF64, or as raw samples with -t");
}

}  // namespace
