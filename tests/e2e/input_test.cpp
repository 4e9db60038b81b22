// What the program reads, and what it says of what it cannot read.

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/stat.h>

#include <cstdint>
#include <thread>

#include "e2e/support/program.h"
#include "e2e/support/sound.h"
#include "support/samples.h"
#include "support/temp_folder.h"

namespace {

using e2e::Outcome;
using e2e::ReadFile;
using e2e::ReadSound;
using e2e::Surroundings;
using e2e::Wavechain;
using e2e::WriteFile;
using e2e::WriteSound;
using support::SameBits;
using support::Samples;
using support::TempFolder;
using testing::HasSubstr;
using testing::SizeIs;

// A filter that adds zeros: what comes out is what was read.
const std::string Through = "SineFilter 0 0";

// Samples that every encoding holds exactly.
Samples Steps(int count) {
  Samples samples(static_cast<std::size_t>(count));
  for (std::size_t i = 0; i < samples.size(); ++i) {
    samples[i] = static_cast<float>(static_cast<int>(i * 37 % 255) - 127) / 128.0F;
  }
  return samples;
}

class WavechainInput : public testing::Test {
 protected:
  std::string Path(const std::string& name) const { return folder.Path(name); }

  // Reads the file through the program, which must succeed.
  Samples Read(const std::string& path, const std::vector<std::string>& more = {},
               const Surroundings& around = {}) const {
    std::vector<std::string> arguments = {"run", path, Path("out.wav"), "--force",
                                          "-q",  "-f", Through};
    arguments.insert(arguments.end(), more.begin(), more.end());
    const Outcome run = Wavechain(arguments, around);
    EXPECT_EQ(run.status, 0) << path << ": " << run.err;
    EXPECT_EQ(run.err, "");
    return ReadSound(Path("out.wav")).samples;
  }

  // The program must refuse with that status, one line that names file and reason, and no output.
  void ExpectRefusal(const std::string& path, int status, const std::string& reason,
                     const std::vector<std::string>& more = {},
                     const Surroundings& around = {}) const {
    std::vector<std::string> arguments = {"run", path, Path("out.wav"), "-q", "-f", Through};
    arguments.insert(arguments.end(), more.begin(), more.end());
    const std::vector<std::string> before = e2e::FilesIn(Path(""));
    const Outcome run = Wavechain(arguments, around);
    EXPECT_EQ(run.status, status) << run.err;
    EXPECT_THAT(run.ErrorLines(), SizeIs(1)) << run.err;
    EXPECT_THAT(run.err, HasSubstr(path == "-" ? "standard input" : path));
    EXPECT_THAT(run.err, HasSubstr(reason));
    EXPECT_EQ(e2e::FilesIn(Path("")), before);
  }

  TempFolder folder;
};

TEST_F(WavechainInput, ReadsEveryFormatAndEncoding) {
  const Samples steps = Steps(9000);
  const int containers[] = {SF_FORMAT_WAV,  SF_FORMAT_FLAC, SF_FORMAT_AIFF, SF_FORMAT_W64,
                            SF_FORMAT_RF64, SF_FORMAT_AU,   SF_FORMAT_CAF,  SF_FORMAT_WAVEX};
  const int encodings[] = {SF_FORMAT_PCM_U8, SF_FORMAT_PCM_S8, SF_FORMAT_PCM_16, SF_FORMAT_PCM_24,
                           SF_FORMAT_PCM_32, SF_FORMAT_FLOAT,  SF_FORMAT_DOUBLE};
  int tried = 0;
  for (const int container : containers) {
    for (const int encoding : encodings) {
      SF_INFO info = {};
      info.samplerate = 48000;
      info.channels = 1;
      info.format = container | encoding;
      if (::sf_format_check(&info) != 0) {
        WriteSound(Path("in"), steps, 48000, 1, info.format);
        EXPECT_TRUE(SameBits(Read(Path("in")), steps)) << std::hex << info.format;
        ++tried;
      }
    }
  }
  EXPECT_GE(tried, 40);
}

TEST_F(WavechainInput, SeveralChannelsNeedAChoice) {
  const Samples interleaved = support::Noise(3 * 10000);
  WriteSound(Path("three.wav"), interleaved, 48000, 3);
  ExpectRefusal(Path("three.wav"), 1, "has 3 channels; choose one by --channel 1 to --channel 3");
  ExpectRefusal(Path("three.wav"), 1, "--channel 4", {"--channel", "4"});
  for (int channel = 1; channel <= 3; ++channel) {
    Samples expected;
    for (std::size_t i = static_cast<std::size_t>(channel) - 1; i < interleaved.size(); i += 3) {
      expected.push_back(interleaved[i]);
    }
    EXPECT_TRUE(
        SameBits(Read(Path("three.wav"), {"--channel", std::to_string(channel)}), expected));
  }
}

TEST_F(WavechainInput, OneChannelMayBeNamed) {
  const Samples steps = Steps(100);
  WriteSound(Path("mono.wav"), steps);
  ExpectRefusal(Path("mono.wav"), 1, "has 1 channel", {"--channel", "2"});
  EXPECT_TRUE(SameBits(Read(Path("mono.wav"), {"--channel", "1"}), steps));
}

TEST_F(WavechainInput, ReadsPathsWithBlanksAndDotsAndWithoutExtension) {
  const Samples steps = Steps(100);
  for (const std::string name : {"two words.wav", "v1.2 final", "none", "...", "-f", "o'\"k.wav"}) {
    WriteSound(Path(name), steps);
    EXPECT_TRUE(SameBits(Read(Path(name)), steps)) << name;
  }
}

TEST_F(WavechainInput, ReadsStandardInputFromAPipeInEveryFormat) {
  const Samples steps = Steps(100000);
  for (const int container : {SF_FORMAT_WAV, SF_FORMAT_FLAC, SF_FORMAT_AIFF, SF_FORMAT_W64}) {
    WriteSound(Path("in"), steps, 48000, 1, container | SF_FORMAT_PCM_16);
    EXPECT_TRUE(SameBits(Read("-", {}, {.input = ReadFile(Path("in"))}), steps));
  }
}

TEST_F(WavechainInput, ReadsStandardInputFromAFile) {
  const Samples steps = Steps(5000);
  WriteSound(Path("in.wav"), steps);
  EXPECT_TRUE(SameBits(Read("-", {}, {.inputFile = Path("in.wav")}), steps));
}

TEST_F(WavechainInput, ReadsNamedPipes) {
  const Samples steps = Steps(50000);
  WriteSound(Path("in.wav"), steps);
  ASSERT_EQ(::mkfifo(Path("pipe").c_str(), 0600), 0);
  std::thread writer([&] { WriteFile(Path("pipe"), ReadFile(Path("in.wav"))); });
  EXPECT_TRUE(SameBits(Read(Path("pipe")), steps));
  writer.join();
}

TEST_F(WavechainInput, TellsWhereTheCopyOfAPipeFindsNoRoom) {
  WriteSound(Path("in.wav"), Steps(50000));
  ExpectRefusal("-", 2, "No space left on device", {},
                {.input = ReadFile(Path("in.wav")), .variables = e2e::Fault("write", ENOSPC)});
}

TEST_F(WavechainInput, FollowsLinks) {
  const Samples steps = Steps(100);
  WriteSound(Path("in.wav"), steps);
  ASSERT_EQ(::symlink("in.wav", Path("link").c_str()), 0);
  EXPECT_TRUE(SameBits(Read(Path("link")), steps));
}

TEST_F(WavechainInput, RefusesWhatIsNoRecording) {
  WriteFile(Path("text.wav"), "This is no recording, whatever its name says.\n");
  ExpectRefusal(Path("text.wav"), 2, "cannot be read as a recording");
  WriteFile(Path("empty.wav"), "");
  ExpectRefusal(Path("empty.wav"), 2, "it is empty (0 bytes)");
  ExpectRefusal("-", 2, "it is empty (0 bytes)");
  ExpectRefusal(Path("missing.wav"), 2, "cannot be opened: No such file or directory");
  ASSERT_EQ(::mkdir(Path("folder").c_str(), 0700), 0);
  ExpectRefusal(Path("folder"), 2, "is a folder");
}

TEST_F(WavechainInput, RefusesADamagedHeader) {
  WriteSound(Path("whole.wav"), Steps(1000), 48000, 1, SF_FORMAT_WAV | SF_FORMAT_PCM_16);
  const std::string whole = ReadFile(Path("whole.wav"));
  WriteFile(Path("in.wav"), whole.substr(0, 20));
  ExpectRefusal(Path("in.wav"), 2, "cannot be read as a recording");
  WriteFile(Path("in.wav"), whole.substr(0, 44));
  ExpectRefusal(Path("in.wav"), 2, "is cut short");
}

TEST_F(WavechainInput, RefusesRecordingsThatWereCutShort) {
  const Samples noise = support::Noise(60000);
  const int formats[] = {SF_FORMAT_WAV | SF_FORMAT_PCM_16,   SF_FORMAT_WAV | SF_FORMAT_FLOAT,
                         SF_FORMAT_WAVEX | SF_FORMAT_FLOAT,  SF_FORMAT_AIFF | SF_FORMAT_PCM_16,
                         SF_FORMAT_AIFF | SF_FORMAT_FLOAT,   SF_FORMAT_W64 | SF_FORMAT_PCM_16,
                         SF_FORMAT_RF64 | SF_FORMAT_PCM_16,  SF_FORMAT_AU | SF_FORMAT_PCM_16,
                         SF_FORMAT_FLAC | SF_FORMAT_PCM_16,  SF_FORMAT_CAF | SF_FORMAT_PCM_16,
                         SF_FORMAT_WAV | SF_FORMAT_IMA_ADPCM};
  for (const int format : formats) {
    WriteSound(Path("whole"), noise, 48000, 1, format);
    const std::string whole = ReadFile(Path("whole"));
    for (const double part : {0.5, 0.99}) {
      WriteFile(
          Path("cut"),
          whole.substr(0, static_cast<std::size_t>(part * static_cast<double>(whole.size()))));
      ExpectRefusal(Path("cut"), 2, Path("cut"));
    }
  }
}

TEST_F(WavechainInput, SaysHowMuchOfACutRecordingIsThere) {
  WriteSound(Path("whole.wav"), Steps(1000), 48000, 1, SF_FORMAT_WAV | SF_FORMAT_PCM_16);
  WriteFile(Path("cut.wav"), ReadFile(Path("whole.wav")).substr(0, 44 + 600));
  ExpectRefusal(Path("cut.wav"), 2, "its header announces 2000 bytes, there are 600");
}

TEST_F(WavechainInput, TakesWhatIsThereWhenAllowedTo) {
  const Samples steps = Steps(1000);
  WriteSound(Path("whole.wav"), steps, 48000, 1, SF_FORMAT_WAV | SF_FORMAT_PCM_16);
  WriteFile(Path("cut.wav"), ReadFile(Path("whole.wav")).substr(0, 44 + 601));
  EXPECT_TRUE(
      SameBits(Read(Path("cut.wav"), {"--allow-truncated"}), support::Slice(steps, 0, 300)));
}

TEST_F(WavechainInput, TakesHeadersWithoutAKnownSize) {
  const Samples steps = Steps(1000);
  WriteSound(Path("whole.wav"), steps, 48000, 1, SF_FORMAT_WAV | SF_FORMAT_PCM_16);
  std::string bytes = ReadFile(Path("whole.wav"));
  // What programs write into a pipe, where the end is not known yet.
  for (const std::uint32_t size : {0xFFFFFFFFU, 0x7FFFFFFFU, 0x7FFFF000U, 0x80000000U}) {
    for (std::size_t i = 0; i < 4; ++i) {
      bytes[4 + i] = bytes[40 + i] = static_cast<char>(size >> (8 * i));
    }
    WriteFile(Path("piped.wav"), bytes);
    EXPECT_TRUE(SameBits(Read(Path("piped.wav")), steps)) << size;
  }
}

TEST_F(WavechainInput, CountsTheSamplesOfAFlacStreamWithoutALength) {
  const Samples steps = Steps(20000);
  WriteSound(Path("in.flac"), steps, 48000, 1, SF_FORMAT_FLAC | SF_FORMAT_PCM_16);
  std::string bytes = ReadFile(Path("in.flac"));
  // The number of samples: the last 36 bits of 8 bytes, 18 bytes into the file.
  bytes[21] = static_cast<char>(bytes[21] & 0xF0);
  for (std::size_t i = 22; i < 26; ++i) {
    bytes[i] = '\0';
  }
  WriteFile(Path("in.flac"), bytes);
  EXPECT_TRUE(SameBits(Read(Path("in.flac")), steps));
}

TEST_F(WavechainInput, RefusesARecordingThatIsDamagedInside) {
  WriteSound(Path("in.flac"), support::Noise(100000), 48000, 1, SF_FORMAT_FLAC | SF_FORMAT_PCM_16);
  std::string bytes = ReadFile(Path("in.flac"));
  for (std::size_t i = bytes.size() / 2; i < bytes.size() / 2 + 400; ++i) {
    bytes[i] = static_cast<char>(bytes[i] ^ 0x5a);
  }
  WriteFile(Path("in.flac"), bytes);
  ExpectRefusal(Path("in.flac"), 2, "of 100000 samples");
}

TEST_F(WavechainInput, NeverLosesOrInventsASampleOfRealSpeech) {
  for (const std::string speech : {SPEECH_48K, SPEECH_16K}) {
    EXPECT_TRUE(SameBits(Read(speech), ReadSound(speech).samples));
  }
}

TEST_F(WavechainInput, SurvivesEveryKindOfDamage) {
  // Whatever the bytes are, the program ends by itself with one of its own statuses, and an
  // output exists exactly when it says so.
  WriteSound(Path("whole"), support::Noise(3000), 48000, 2, SF_FORMAT_WAV | SF_FORMAT_PCM_16);
  const std::string whole = ReadFile(Path("whole"));
  for (std::size_t at = 0; at < 44; ++at) {
    for (const char value : {'\0', '\x01', '\x7f', '\xff'}) {
      std::string damaged = whole;
      damaged[at] = value;
      WriteFile(Path("damaged"), damaged);
      const Outcome run = Wavechain({"run", Path("damaged"), Path("out.wav"), "--force", "-q",
                                     "--channel", "1", "-f", "FIRNotch 20 0"});
      EXPECT_THAT(run.status, testing::AnyOf(0, 1, 2, 3)) << at << ": " << run.err;
      EXPECT_EQ(run.ErrorLines().size() - (run.status == 0 ? 0 : 1), 0U) << run.err;
      const bool written = ::unlink(Path("out.wav").c_str()) == 0;
      EXPECT_EQ(written, run.status == 0) << at;
    }
  }
}

}  // namespace
