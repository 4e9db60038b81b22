#include "reference/set_track.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <filesystem>
#include <fstream>
#include <random>

#include "support/filter.h"
#include "support/temp_folder.h"
#include "tracks/pellet_text.h"
#include "tracks/twin.h"

namespace tracks {
namespace {

using support::Calls;
using support::Slice;
using support::TempFolder;

using Track = Twin<reference::SetTrack>;

std::string Bytes(const std::vector<int>& values) {
  std::string bytes;
  for (const int value : values) {
    bytes.push_back(static_cast<char>((value >> 8) & 0xFF));
    bytes.push_back(static_cast<char>(value & 0xFF));
  }
  return bytes;
}

const std::string Header(1024, '\x55');

// Values that differ everywhere, so that a sample shows where it came from.
std::vector<int> Values(int count, int first = 1) {
  std::vector<int> values;
  for (int i = 0; i < count; ++i) values.push_back((first + 7 * i) % 65536 - 32768);
  return values;
}

Samples AsSamples(const std::vector<int>& values) {
  Samples samples;
  for (const int value : values) samples.push_back(static_cast<float>(value * 10.0 / 32768));
  return samples;
}

// A track file beside its signal, and a reader of it.
struct Recorded {
  explicit Recorded(const std::string& content) { folder.Write("take3.iop", content); }

  SourceScript Take(const std::string& name = "take3.wav") const {
    return Signal(10, 0.1, folder.Path(name));
  }

  // Changes the file in place, as another program might between two requests.
  void Overwrite(std::streamoff at, const std::string& bytes) const {
    std::fstream file(folder.Path("take3.iop"), std::ios::in | std::ios::out | std::ios::binary);
    file.seekp(at);
    file << bytes;
  }

  TempFolder folder;
};

int Length(const Calls& calls, const std::string& source = "source0") {
  const std::string start = source + ".descriptor.SetLength(";
  for (const std::string& call : calls) {
    if (call.compare(0, start.size(), start) == 0) return std::stoi(call.substr(start.size()));
  }
  return -1;
}

TEST(SetTrack, AmendsPeriodAndLengthOfTheSourcesDescriptor) {
  const Recorded recorded(Header + Bytes(Values(5000)));
  Track track(support::SetTrack);
  EXPECT_TRUE(track.EndOfSrc()) << "not connected yet";
  track.Attach({recorded.Take(), Signal(1), Signal(2)});
  EXPECT_EQ(track.LastCalls(),
            (Calls{"source1.Release()", "source2.Release()", "source0.GetDescriptor()",
                   "source0.descriptor.GetPeriod()", "source0.descriptor.GetName(512)",
                   "source0.descriptor.Release()"}));
  EXPECT_FALSE(track.EndOfSrc());
  EXPECT_TRUE(track.LastCalls().empty()) << "the source is not asked";
  track.GetDescriptor();
  EXPECT_EQ(track.LastCalls(),
            (Calls{"source0.GetDescriptor()", "source0.descriptor.SetPeriod(1.145081873353945)",
                   "source0.descriptor.SetLength(5000)", "source0.descriptor.Release()"}));
  track.Release();
  EXPECT_EQ(track.LastCalls(), (Calls{"source0.Dispose()", "source0.Release()"}));
}

TEST(SetTrack, DeliversTheTrackInRequestsOfAnySize) {
  const Recorded recorded(Header + Bytes(Values(5000)));
  Track track(support::SetTrack);
  track.Attach(recorded.Take());
  EXPECT_EQ(track.Pull(4096), AsSamples(Values(4096)));
  EXPECT_EQ(track.Pull(904), Slice(AsSamples(Values(5000)), 4096, 904));
  EXPECT_TRUE(track.LastCalls().empty()) << "the source is never pulled";
  EXPECT_FALSE(track.EndOfSrc()) << "by design it never ends";

  for (const std::vector<int>& sizes :
       {std::vector<int>{5000}, {1}, {7, 0, 4095}, {9000}, {-1, 4097}}) {
    Track again(support::SetTrack);
    again.Attach(recorded.Take());
    Samples all;
    for (std::size_t i = 0; all.size() < 14000 && again.Agrees(); ++i) {
      const Samples block = again.Pull(sizes[i % sizes.size()]);
      all.insert(all.end(), block.begin(), block.end());
    }
    EXPECT_EQ(Slice(all, 0, 5000), AsSamples(Values(5000)));
  }
}

TEST(SetTrack, ScalesTheValuesToTen) {
  const Recorded recorded(Header + Bytes({-32768, 32767, 1, 0, -1, 0x1234, 0x7F00, 0x00FF}));
  Track track(support::SetTrack);
  track.Attach(recorded.Take());
  EXPECT_EQ(track.Pull(8), (Samples{-10.0F, 9.99969482421875F, 10.0F / 32768, 0.0F, -10.0F / 32768,
                                    static_cast<float>(0x1234 * 10.0 / 32768),
                                    static_cast<float>(0x7F00 * 10.0 / 32768),
                                    static_cast<float>(255 * 10.0 / 32768)}));
}

TEST(SetTrack, RepeatsAShortTrackWithItsBytesSwappedOverAgain) {
  // Nothing is read after the end, but the swap runs over what stands in the buffer.
  const Recorded recorded(Header + Bytes({0x0102, 0x0304, -2}));
  Track track(support::SetTrack);
  track.Attach(recorded.Take());
  const Samples right = AsSamples({0x0102, 0x0304, -2});
  const Samples swapped = AsSamples({0x0201, 0x0403, -257});
  EXPECT_EQ(track.Pull(3), right);
  EXPECT_EQ(track.Pull(4), support::operator+(swapped, {right[0]}));
  EXPECT_EQ(track.Pull(5), (Samples{right[1], right[2], swapped[0], swapped[1], swapped[2]}));
}

TEST(SetTrack, LeavesTheRestOfTheBufferAtAShortRead) {
  const std::vector<int> values = Values(5000);
  const Recorded recorded(Header + Bytes(values));
  Track track(support::SetTrack);
  track.Attach(recorded.Take());
  EXPECT_EQ(track.Pull(4096 + 904), AsSamples(values));
  Samples rest;
  for (int i = 904; i < 4096; ++i) {
    const int value = values[static_cast<std::size_t>(i)] & 0xFFFF;
    const int swapped = ((value & 0xFF) << 8) | (value >> 8);
    rest.push_back(
        static_cast<float>((swapped < 32768 ? swapped : swapped - 65536) * 10.0 / 32768));
  }
  EXPECT_EQ(track.Pull(3192), rest);
}

TEST(SetTrack, IgnoresATrailingOddByte) {
  for (const int frames : {1, 10, 4095, 4096, 4097, 5000, 8192}) {
    const Recorded recorded(Header + Bytes(Values(frames)) + "\x77");
    Track track(support::SetTrack);
    track.Attach(recorded.Take());
    track.GetDescriptor();
    EXPECT_EQ(Length(track.LastCalls()), frames);
    EXPECT_EQ(track.Pull(frames), AsSamples(Values(frames)));
    // The odd byte is part of what the next reads find; the model keeps account of it.
    for (int pull = 0; pull < 5; ++pull) track.Pull(4096);
  }
}

TEST(SetTrack, HasNoTrackInAFileWithoutAWholeFrame) {
  for (const std::size_t size : {0U, 1U, 1023U, 1024U, 1025U}) {
    const Recorded recorded(std::string(size, 'x'));
    Track track(support::SetTrack);
    track.Attach(recorded.Take());
    EXPECT_TRUE(track.EndOfSrc()) << size;
    EXPECT_TRUE(track.Pull(100).empty()) << size;
    track.GetDescriptor();
    EXPECT_EQ(Length(track.LastCalls()), 0) << size;
  }
  const Recorded one(std::string(1026, 'x'));
  Track track(support::SetTrack);
  track.Attach(one.Take());
  EXPECT_FALSE(track.EndOfSrc());
  EXPECT_EQ(track.Pull(1), AsSamples({0x7878}));
}

TEST(SetTrack, HasNoTrackWhereNoRegularFileIs) {
  const TempFolder folder;
  std::filesystem::create_directory(folder.Path("folder.iop"));
  ASSERT_EQ(mkfifo(folder.Path("pipe.iop").c_str(), 0600), 0);
  std::filesystem::create_symlink("/dev/zero", folder.Path("device.iop"));
  std::filesystem::create_symlink("nowhere", folder.Path("dangling.iop"));
  for (const char* name :
       {"missing.wav", "folder.wav", "pipe.wav", "device.wav", "dangling.wav", "no/such/folder"}) {
    Track track(support::SetTrack);
    track.Attach(Signal(10, 0.1, folder.Path(name)));
    EXPECT_TRUE(track.EndOfSrc()) << name;
    EXPECT_TRUE(track.Pull(10).empty()) << name;
    track.GetDescriptor();
    EXPECT_EQ(Length(track.LastCalls()), 0) << name;
  }
  folder.Write("real", Header + Bytes({1, 2, 3}));
  std::filesystem::create_symlink("real", folder.Path("link.iop"));
  Track track(support::SetTrack);
  track.Attach(Signal(10, 0.1, folder.Path("link.wav")));
  EXPECT_EQ(track.Pull(3), AsSamples({1, 2, 3}));
}

TEST(SetTrack, CutsTheNameAtTheLastDotOfTheWholePath) {
  const TempFolder folder;
  const std::string content = Header + Bytes({1, 2, 3});
  for (const auto& [signal, file] :
       std::vector<std::pair<std::string, std::string>>{{"take3.wav", "take3.iop"},
                                                        {"take4", "take4.iop"},
                                                        {"a.b/take3", "a.iop"},
                                                        {"x.y.wav", "x.y.iop"},
                                                        {".wav", ".iop"},
                                                        {"d.e/take.wav", "d.e/take.iop"},
                                                        {"z.", "z.iop"},
                                                        {"b\\take.wav", "b\\take.iop"}}) {
    folder.Write(file, content);
    Track track(support::SetTrack);
    track.Attach(Signal(10, 0.1, folder.Path(signal)));
    EXPECT_EQ(track.Pull(3), AsSamples({1, 2, 3})) << signal;
    std::filesystem::remove(folder.Path(file));
  }
  Track track(support::SetTrack);
  track.Attach(Signal(10, 0.1, std::string(600, 'n')));
  EXPECT_TRUE(track.EndOfSrc());
}

TEST(SetTrack, ReadsNothingBeforeTheFirstRequestForASample) {
  const Recorded recorded(Header + Bytes({1, 2, 3, 4, 5}));
  Track track(support::SetTrack);
  track.Attach(recorded.Take());
  EXPECT_TRUE(track.Pull(0).empty());
  EXPECT_TRUE(track.Pull(-5).empty());
  recorded.Overwrite(1024, Bytes({7, 8, 9, 10, 11}));
  EXPECT_EQ(track.Pull(5), AsSamples({7, 8, 9, 10, 11}));
}

TEST(SetTrack, RefillsWithinTheRequestThatUsesTheBufferUp) {
  const Recorded recorded(Header + Bytes(Values(6000)));
  Track track(support::SetTrack);
  track.Attach(recorded.Take());
  EXPECT_EQ(track.Pull(4096), AsSamples(Values(4096)));
  recorded.Overwrite(1024 + 2 * 4096, std::string(2 * 1904, '\0'));
  EXPECT_EQ(
      support::SameBits(track.Product().Pull(1904), Slice(AsSamples(Values(6000)), 4096, 1904)),
      testing::AssertionSuccess());
}

TEST(SetTrack, StartsWithABufferOfZeros) {
  const Recorded recorded(Header + Bytes(Values(100)));
  Track track(support::SetTrack);
  track.Attach(recorded.Take());
  std::filesystem::resize_file(recorded.folder.Path("take3.iop"), 1024 + 2 * 40 + 1);
  Samples wanted = AsSamples(Values(40));
  const int high = (Values(41)[40] >> 8) & 0xFF;  // the one byte that is left of the next value
  wanted.push_back(
      static_cast<float>((high < 128 ? high * 256 : high * 256 - 65536) * 10.0 / 32768));
  wanted.resize(100, 0.0F);
  EXPECT_EQ(track.Pull(100), wanted);
}

TEST(SetTrack, DeliversWhatIsBufferedAfterDisposeAndEndsThen) {
  const Recorded recorded(Header + Bytes(Values(5000)));
  Track track(support::SetTrack);
  track.Attach(recorded.Take());
  track.Pull(1000);
  track.Dispose();
  EXPECT_EQ(track.LastCalls(), (Calls{"source0.Dispose()", "source0.Release()"}));
  EXPECT_FALSE(track.EndOfSrc()) << "the flag outlives the source";
  EXPECT_EQ(track.Pull(2000).size(), 2000U);
  EXPECT_EQ(track.Pull(2000).size(), 1096U);
  EXPECT_TRUE(track.EndOfSrc());
  EXPECT_TRUE(track.Pull(1).empty());

  Track exact(support::SetTrack);
  exact.Attach(recorded.Take());
  exact.Pull(4096);
  exact.Dispose();
  EXPECT_EQ(exact.Pull(4096).size(), 4096U) << "the refill had followed at once";
  EXPECT_TRUE(exact.EndOfSrc()) << "and this one finds no file";

  Track unread(support::SetTrack);
  unread.Attach(recorded.Take());
  unread.Dispose();
  EXPECT_FALSE(unread.EndOfSrc());
  EXPECT_TRUE(unread.Pull(0).empty());
  EXPECT_FALSE(unread.EndOfSrc());
  EXPECT_TRUE(unread.Pull(10).empty());
  EXPECT_TRUE(unread.EndOfSrc());
}

TEST(SetTrack, OpensTheNewSourcesTrackWhenAttachedAgain) {
  const Recorded recorded(Header + Bytes(Values(5000)));
  recorded.folder.Write("other.iop", Header + Bytes(Values(50, 9)));
  Track track(support::SetTrack);
  track.Attach(recorded.Take());
  track.Pull(1234);
  track.Attach(recorded.Take("other.wav"));
  EXPECT_EQ(track.LastCalls(),
            (Calls{"source0.Dispose()", "source0.Release()", "source1.GetDescriptor()",
                   "source1.descriptor.GetPeriod()", "source1.descriptor.GetName(512)",
                   "source1.descriptor.Release()"}));
  track.GetDescriptor();
  EXPECT_EQ(Length(track.LastCalls(), "source1"), 50);
  EXPECT_EQ(track.Pull(50), AsSamples(Values(50, 9)));
  track.Attach(recorded.Take("missing.wav"));
  EXPECT_TRUE(track.EndOfSrc());
  EXPECT_TRUE(track.Pull(10).empty());
  track.Attach(recorded.Take());
  EXPECT_FALSE(track.EndOfSrc());
  EXPECT_EQ(track.Pull(5000), AsSamples(Values(5000)));
  track.Attach(std::vector<SourceScript>{});
  EXPECT_FALSE(track.EndOfSrc());
  track.Pull(9000);
  EXPECT_TRUE(track.EndOfSrc());
}

TEST(SetTrack, KeepsItsBufferFromOneTrackToTheNext) {
  const Recorded recorded(Header + Bytes(Values(3000)));
  Track track(support::SetTrack);
  track.Attach(recorded.Take());
  track.Pull(100);
  const std::string other = recorded.folder.Write("other.iop", Header + Bytes(Values(500, 9)));
  track.Attach(recorded.Take("other.wav"));
  std::filesystem::resize_file(other, 1024 + 2 * 300);
  track.Pull(500);
  track.Pull(500);
}

TEST(SetTrack, GoesBackToTheStartAtEachSrcSet) {
  const Recorded recorded(Header + Bytes(Values(5000)));
  Track track(support::SetTrack);
  track.Attach(recorded.Take());
  track.Pull(4500);
  track.SrcSet();
  EXPECT_EQ(track.Pull(5000), AsSamples(Values(5000)));
}

TEST(SetTrack, MeasuresAVeryLargeFileAsTheLargestCount) {
  const TempFolder folder;
  for (const auto& [size, length] :
       std::vector<std::pair<std::uintmax_t, int>>{{2147483647U, 1073741311},
                                                   {2147483648U, 1073741311},
                                                   {2147483646U, 1073741311},
                                                   {2147483645U, 1073741310},
                                                   {5000000000U, 1073741311}}) {
    const std::string file = folder.Write("large.iop", Header + Bytes({1, 2, 3}));
    std::filesystem::resize_file(file, size);
    support::CallLog log;
    support::SourceMock source("source", log, support::Noise(10));
    source.description.name = folder.Path("large.wav");
    support::Filter filter = support::MakeFilter(support::SetTrack);
    filter.Set_src_list(source);
    EXPECT_EQ(filter.GetDescriptor(source).length, length) << size;
    EXPECT_EQ(filter.Pull(4), AsSamples({1, 2, 3, 0})) << size;
    std::filesystem::remove(file);
  }
}

TEST(SetTrack, IgnoresParametersAndKeepsNoStream) {
  const Recorded recorded(Header + Bytes({1, 2, 3}));
  support::CallLog log;
  support::NumStreamMock stream("stream", log);
  support::ConsoleMock console("console", log);
  support::SourceMock source("source", log, support::Noise(10));
  source.description.name = recorded.folder.Path("take3.wav");
  support::Filter filter = support::MakeFilter(support::SetTrack);
  filter.Set_param_list({2, 3, 4, 5});
  filter.Set_num_stream(&stream);
  EXPECT_EQ(log.Take(), (Calls{"stream.AddRef()", "stream.Release()"}));
  filter.Set_num_stream(nullptr);
  filter.Set_console_out(&console);
  filter.Set_src_list(source);
  EXPECT_EQ(filter.Pull(3), AsSamples({1, 2, 3}));
  log.Take();
  EXPECT_EQ(filter.Release(), 0U);
  EXPECT_EQ(log.Take(), (Calls{"source.Dispose()", "source.Release()", "console.Release()"}));
}

TEST(SetTrack, ReturnsANonZeroResult) {
  const Recorded recorded(Header + Bytes({1, 2, 3}));
  support::CallLog log;
  support::SourceMock source("source", log, support::Noise(10));
  source.description.name = recorded.folder.Path("take3.wav");
  support::Filter filter = support::MakeFilter(support::SetTrack);
  support::Samples buffer(10);
  int produced = -1;
  EXPECT_NE(filter.Slots().TransmitNow(filter.Object(), buffer.data(), 3, &produced), 0);
  EXPECT_EQ(produced, 0);
  filter.Set_src_list(source);
  EXPECT_NE(filter.Slots().TransmitNow(filter.Object(), buffer.data(), 3, &produced), 0);
  EXPECT_EQ(produced, 3);
  EXPECT_NE(filter.Slots().TransmitNow(filter.Object(), buffer.data(), 0, &produced), 0);
  EXPECT_EQ(produced, 0);
}

TEST(SetTrack, AgreesWithItsModelOnRandomFilesAndRequests) {
  for (unsigned seed = 1; seed <= 150 && !testing::Test::HasFailure(); ++seed) {
    SCOPED_TRACE("seed " + std::to_string(seed));
    std::mt19937 random(seed);
    const TempFolder folder;
    Track track(support::SetTrack);
    for (int attachment = 0; attachment < 3; ++attachment) {
      std::string content;
      const int sizes[] = {Between(random, 0, 1100), Between(random, 1020, 1030),
                           Between(random, 1024, 3000), Between(random, 1024, 40000),
                           1024 + 8192 * Between(random, 1, 3)};
      for (int i = sizes[random() % 5]; i > 0; --i) content.push_back(static_cast<char>(random()));
      folder.Write("a.iop", content);
      track.Attach(Signal(3, 0.1, folder.Path("a.wav")));
      for (int step = 0; step < 12; ++step) {
        switch (random() % 12) {
          case 0:
            track.EndOfSrc();
            break;
          case 1:
            track.GetDescriptor();
            break;
          default:
            track.Pull(random() % 4 == 0 ? Between(random, -2, 3) : Between(random, 1, 9000));
        }
      }
      if (random() % 3 == 0) {
        track.Dispose();
        for (int pull = 0; pull < 3; ++pull) track.Pull(Between(random, 0, 5000));
        track.EndOfSrc();
      }
    }
  }
}

}  // namespace
}  // namespace tracks
