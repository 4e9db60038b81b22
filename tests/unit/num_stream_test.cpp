#include "numstream/num_stream.h"

#include <dlfcn.h>
#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/stat.h>

#include <cerrno>
#include <cstddef>
#include <cstdio>
#include <filesystem>
#include <functional>
#include <iterator>
#include <limits>
#include <locale>
#include <new>
#include <string>
#include <utility>

#include "frame/lifetime.h"
#include "frame/ref.h"
#include "support/temp_folder.h"
#include "unit/short_memory.h"

namespace wavefilters {
namespace {

namespace fs = std::filesystem;

constexpr int Lowest = std::numeric_limits<int>::min();
constexpr int Highest = std::numeric_limits<int>::max();

// While it lives, something happens behind the stream's back when it has looked at a name.
std::function<void()> behindItsBack;

class AfterTheLook {
 public:
  explicit AfterTheLook(std::function<void()> happens) { behindItsBack = std::move(happens); }
  ~AfterTheLook() { behindItsBack = nullptr; }
  AfterTheLook(const AfterTheLook&) = delete;
  AfterTheLook& operator=(const AfterTheLook&) = delete;
};

// What the system does not do for a file that has just been opened, while one of these lives.
enum class Refused { Nothing, Status, Stream };
Refused refused = Refused::Nothing;

class Refusal {
 public:
  explicit Refusal(Refused what) { refused = what; }
  ~Refusal() { refused = Refused::Nothing; }
  Refusal(const Refusal&) = delete;
  Refusal& operator=(const Refusal&) = delete;
};

std::ptrdiff_t OpenFiles() {
  return std::distance(fs::directory_iterator("/proc/self/fd"), fs::directory_iterator());
}

class NumStreamTest : public testing::Test {
 protected:
  // Writes a file and opens it; the streams are members, for one of each is all a test needs.
  NumStream& Text(const std::string& bytes) { return Opened(text, bytes); }
  NumStream& Binary(const std::string& bytes) { return Opened(binary, bytes); }

  NumStream& Opened(NumStream& stream, const std::string& bytes) {
    EXPECT_TRUE(stream.Open(folder.Write("numbers", bytes)));
    return stream;
  }

  support::TempFolder folder;
  Embedded<NumStream> text{StreamMode::Text};
  Embedded<NumStream> binary{StreamMode::Binary};
};

void ExpectDouble(NumStream& stream, double wanted) {
  double value = -77.0;
  EXPECT_TRUE(stream.GetDouble(value)) << wanted;
  EXPECT_EQ(value, wanted);
}

void ExpectNoDouble(NumStream& stream, double left) {
  double value = -77.0;
  EXPECT_FALSE(stream.GetDouble(value));
  EXPECT_EQ(value, left);
}

// The bytes that ReadBytes writes into a buffer of `size`, and what it returns.
struct Bytes {
  int result = 0;
  std::string written;
};

Bytes Read(NumStream& stream, int count, std::size_t size = 64) {
  std::string buffer(size, '\x5a');
  Bytes bytes;
  bytes.result = stream.ReadBytes(buffer.data(), count);
  buffer.erase(buffer.find_last_not_of('\x5a') + 1);
  bytes.written = buffer;
  return bytes;
}

// ---- text ----

TEST_F(NumStreamTest, NewStreamReadsNothing) {
  ExpectNoDouble(text, -77.0);
  EXPECT_FALSE(text.GetLine());
  EXPECT_EQ(text.BytesRemain(), 0);
  EXPECT_EQ(binary.BytesRemain(), 0);
  binary.SkipBytes(5);
  EXPECT_EQ(binary.BytesRemain(), 0);
  EXPECT_EQ(Read(binary, 5).result, 0);
  binary.Close();
  text.Close();
}

TEST_F(NumStreamTest, NoNumberComesBeforeTheFirstLine) {
  NumStream& stream = Text("1 2\n");
  ExpectNoDouble(stream, -77.0);
  EXPECT_TRUE(stream.GetLine());
  ExpectDouble(stream, 1.0);
}

TEST_F(NumStreamTest, AWordEndsTheNumbersOfItsLineOnly) {
  NumStream& stream = Text("1.5 2e3 x 4\n5\n");
  ASSERT_TRUE(stream.GetLine());
  ExpectDouble(stream, 1.5);
  ExpectDouble(stream, 2000.0);
  ExpectNoDouble(stream, 0.0);
  ExpectNoDouble(stream, -77.0);
  ASSERT_TRUE(stream.GetLine());
  ExpectDouble(stream, 5.0);
  EXPECT_FALSE(stream.GetLine());
}

TEST_F(NumStreamTest, NumbersLeftOnALineAreDroppedAndNoneContinuesOnTheNext) {
  NumStream& stream = Text("1 2 3\n4\n");
  ASSERT_TRUE(stream.GetLine());
  ExpectDouble(stream, 1.0);
  ASSERT_TRUE(stream.GetLine());
  ExpectDouble(stream, 4.0);
  ExpectNoDouble(stream, -77.0);
}

TEST_F(NumStreamTest, BlankLinesAreLines) {
  NumStream& stream = Text("\n \t\n7\n");
  ASSERT_TRUE(stream.GetLine());
  ExpectNoDouble(stream, -77.0);
  ASSERT_TRUE(stream.GetLine());
  ExpectNoDouble(stream, -77.0);
  ASSERT_TRUE(stream.GetLine());
  ExpectDouble(stream, 7.0);
  EXPECT_FALSE(stream.GetLine());
}

TEST_F(NumStreamTest, AnEmptyFileHasNoLine) {
  NumStream& stream = Text("");
  EXPECT_FALSE(stream.GetLine());
  EXPECT_FALSE(stream.GetLine());
}

TEST_F(NumStreamTest, TheLastLineNeedsNoNewline) {
  NumStream& stream = Text("1\n2");
  ASSERT_TRUE(stream.GetLine());
  ASSERT_TRUE(stream.GetLine());
  ExpectDouble(stream, 2.0);
  EXPECT_FALSE(stream.GetLine());
  ExpectNoDouble(stream, -77.0);
}

TEST_F(NumStreamTest, CarriageReturnsAreWhiteSpace) {
  NumStream& stream = Text("1 2\r\n\r\n3\r\n");
  ASSERT_TRUE(stream.GetLine());
  ExpectDouble(stream, 1.0);
  ExpectDouble(stream, 2.0);
  ExpectNoDouble(stream, -77.0);
  ASSERT_TRUE(stream.GetLine());
  ExpectNoDouble(stream, -77.0);
  ASSERT_TRUE(stream.GetLine());
  ExpectDouble(stream, 3.0);
  EXPECT_FALSE(stream.GetLine());
}

TEST_F(NumStreamTest, ANulByteIsNeitherNumberNorEndOfTheLine) {
  NumStream& stream = Text(std::string("1\0 2\n3\n", 7));
  ASSERT_TRUE(stream.GetLine());
  ExpectDouble(stream, 1.0);
  ExpectNoDouble(stream, 0.0);
  ASSERT_TRUE(stream.GetLine());
  ExpectDouble(stream, 3.0);
}

TEST_F(NumStreamTest, SignsPointsAndExponentsAreRead) {
  NumStream& stream = Text("-12.345 +7 .5 5. -1E-2 0007\n");
  ASSERT_TRUE(stream.GetLine());
  for (const double wanted : {-12.345, 7.0, 0.5, 5.0, -0.01, 7.0}) {
    ExpectDouble(stream, wanted);
  }
}

TEST_F(NumStreamTest, HexadecimalInfAndNanAreNoNumbers) {
  NumStream& stream = Text("0x1A\ninf\nnan\n-infinity\n");
  ASSERT_TRUE(stream.GetLine());
  ExpectDouble(stream, 0.0);  // the digit before the x
  ExpectNoDouble(stream, 0.0);
  for (int line = 0; line < 3; ++line) {
    ASSERT_TRUE(stream.GetLine());
    ExpectNoDouble(stream, 0.0);
  }
}

TEST_F(NumStreamTest, TooLargeNumbersFailWithTheLargestOfTheType) {
  NumStream& stream = Text("1e400\n-1e400 1\n1e40\n-1e40\n");
  ASSERT_TRUE(stream.GetLine());
  ExpectNoDouble(stream, std::numeric_limits<double>::max());
  ASSERT_TRUE(stream.GetLine());
  ExpectNoDouble(stream, std::numeric_limits<double>::lowest());
  ExpectNoDouble(stream, -77.0);
  float value = 0.0F;
  ASSERT_TRUE(stream.GetLine());
  EXPECT_FALSE(stream.GetSingle(value));
  EXPECT_EQ(value, std::numeric_limits<float>::max());
  ASSERT_TRUE(stream.GetLine());
  EXPECT_FALSE(stream.GetSingle(value));
  EXPECT_EQ(value, std::numeric_limits<float>::lowest());
}

TEST_F(NumStreamTest, FloatsAndDoublesTakeTurnsOnALine) {
  NumStream& stream = Text("0.1 0.1 0.1 x\n");
  ASSERT_TRUE(stream.GetLine());
  float single = 0.0F;
  EXPECT_TRUE(stream.GetSingle(single));
  EXPECT_EQ(single, 0.1F);
  ExpectDouble(stream, 0.1);
  EXPECT_TRUE(stream.GetSingle(single));
  EXPECT_EQ(single, 0.1F);
  EXPECT_FALSE(stream.GetSingle(single));
  EXPECT_EQ(single, 0.0F);
  single = -77.0F;
  EXPECT_FALSE(stream.GetSingle(single));
  EXPECT_EQ(single, -77.0F);
}

class CommaPoint : public std::numpunct<char> {
 protected:
  char do_decimal_point() const override { return ','; }
  char do_thousands_sep() const override { return '.'; }
  std::string do_grouping() const override { return "\3"; }
};

TEST_F(NumStreamTest, TheHostsLocaleDoesNotChangeANumber) {
  const std::locale before =
      std::locale::global(std::locale(std::locale::classic(), new CommaPoint));
  {
    Embedded<NumStream> late{StreamMode::Text};
    NumStream& stream = Opened(late, "-12.345 12,5 -1e3x 1.000.000\n");
    ASSERT_TRUE(stream.GetLine());
    ExpectDouble(stream, -12.345);
    ExpectDouble(stream, 12.0);
    ExpectNoDouble(stream, 0.0);
    ASSERT_TRUE(Opened(late, "-1e3x\n").GetLine());
    ExpectDouble(stream, -1000.0);
    ASSERT_TRUE(Opened(late, "1.000.000\n").GetLine());
    ExpectDouble(stream, 1.0);
  }
  std::locale::global(before);
}

TEST_F(NumStreamTest, ALineOfTenMegabytesIsALine) {
  std::string line;
  int numbers = 0;
  for (; line.size() < 10 * 1000 * 1000; ++numbers) {
    line += "1234.5 ";
  }
  NumStream& stream = Text(line + "\n8\n");
  ASSERT_TRUE(stream.GetLine());
  double value = 0.0;
  int good = 0;
  while (stream.GetDouble(value)) {
    good += value == 1234.5 ? 1 : 0;
  }
  EXPECT_EQ(good, numbers);
  ASSERT_TRUE(stream.GetLine());
  ExpectDouble(stream, 8.0);
}

TEST_F(NumStreamTest, TextModeHasNoBytes) {
  NumStream& stream = Text("1 2\n3\n");
  EXPECT_EQ(stream.BytesRemain(), 0);
  stream.SkipBytes(4);
  const Bytes bytes = Read(stream, 4);
  EXPECT_EQ(bytes.result, 0);
  EXPECT_EQ(bytes.written, "");
  ASSERT_TRUE(stream.GetLine());
  ExpectDouble(stream, 1.0);
}

TEST_F(NumStreamTest, AFailedAllocationPassesAndLeavesAStreamThatOpensAgain) {
  NumStream& stream = Text(std::string(1000 * 1000, '7') + "\n2\n");
  {
    const ShortMemory memory{100 * 1000};
    EXPECT_THROW(stream.GetLine(), std::bad_alloc);
  }
  EXPECT_FALSE(stream.GetLine());
  ExpectNoDouble(stream, -77.0);
  ASSERT_TRUE(Text("1\n").GetLine());
  ExpectDouble(stream, 1.0);
}

// ---- opening ----

TEST_F(NumStreamTest, AMissingFileDoesNotOpen) {
  EXPECT_FALSE(text.Open(folder.Path("missing")));
  EXPECT_FALSE(binary.Open(folder.Path("missing")));
  EXPECT_FALSE(text.Open(std::string()));
  EXPECT_FALSE(text.GetLine());
  EXPECT_EQ(binary.BytesRemain(), 0);
}

TEST_F(NumStreamTest, AFailedOpenHasClosedTheFileBefore) {
  NumStream& lines = Text("1\n2\n");
  ASSERT_TRUE(lines.GetLine());
  EXPECT_FALSE(lines.Open(folder.Path("missing")));
  ExpectNoDouble(lines, -77.0);
  EXPECT_FALSE(lines.GetLine());

  NumStream& bytes = Binary("0123456789");
  EXPECT_FALSE(bytes.Open(folder.Path("missing")));
  EXPECT_EQ(bytes.BytesRemain(), 0);
  EXPECT_EQ(Read(bytes, 4).result, 0);
}

TEST_F(NumStreamTest, OpensAgainAfterTheEndAndAfterAFailure) {
  NumStream& stream = Text("1\n");
  ASSERT_TRUE(stream.GetLine());
  ASSERT_FALSE(stream.GetLine());
  ASSERT_TRUE(Text("2\n").GetLine());
  ExpectDouble(stream, 2.0);
  ASSERT_FALSE(stream.Open(folder.Path("missing")));
  ASSERT_TRUE(Text("3\n").GetLine());
  ExpectDouble(stream, 3.0);
}

TEST_F(NumStreamTest, CloseEndsLineAndFile) {
  NumStream& stream = Text("1 2\n3\n");
  ASSERT_TRUE(stream.GetLine());
  stream.Close();
  ExpectNoDouble(stream, -77.0);
  EXPECT_FALSE(stream.GetLine());
  NumStream& bytes = Binary("0123");
  bytes.Close();
  EXPECT_EQ(bytes.BytesRemain(), 0);
  EXPECT_EQ(Read(bytes, 2).result, 0);
}

TEST_F(NumStreamTest, ATextGivenToOpenFromStringIsAFileName) {
  EXPECT_FALSE(text.OpenFromString("1 2 3"));
  EXPECT_FALSE(text.GetLine());
  ASSERT_TRUE(text.OpenFromString(folder.Write("1 2 3", "9\n")));
  ASSERT_TRUE(text.GetLine());
  ExpectDouble(text, 9.0);
}

TEST_F(NumStreamTest, ALinkToARegularFileOpens) {
  fs::create_symlink(folder.Write("target", "4\n"), folder.Path("link"));
  fs::create_symlink(folder.Path("link"), folder.Path("second"));
  ASSERT_TRUE(text.Open(folder.Path("second")));
  ASSERT_TRUE(text.GetLine());
  ExpectDouble(text, 4.0);
  ASSERT_TRUE(binary.Open(folder.Path("link")));
  EXPECT_EQ(binary.BytesRemain(), 2);
}

TEST_F(NumStreamTest, OnlyRegularFilesOpenAndNothingBlocks) {
  ASSERT_EQ(::mkfifo(folder.Path("fifo").c_str(), 0600), 0);
  fs::create_directory(folder.Path("directory"));
  fs::create_symlink(folder.Path("fifo"), folder.Path("link to fifo"));
  fs::create_symlink(folder.Path("nothing"), folder.Path("dangling"));
  fs::create_symlink(folder.Path("loop"), folder.Path("loop"));
  for (const std::string& name :
       {folder.Path("fifo"), folder.Path("directory"), folder.Path("link to fifo"),
        folder.Path("dangling"), folder.Path("loop"), std::string("/dev/zero"),
        std::string("/dev/null"), std::string("/dev/tty")}) {
    EXPECT_FALSE(text.Open(name)) << name;
    EXPECT_FALSE(text.GetLine()) << name;
    EXPECT_FALSE(binary.Open(name)) << name;
    EXPECT_EQ(binary.BytesRemain(), 0) << name;
    EXPECT_EQ(Read(binary, 8).result, 0) << name;
  }
}

TEST_F(NumStreamTest, NoNameOpensNothing) {
  char* const nothing = nullptr;
  EXPECT_FALSE(text.Open(nothing));
  EXPECT_FALSE(text.GetLine());
  EXPECT_FALSE(binary.Open(nothing));
  EXPECT_EQ(binary.BytesRemain(), 0);
}

TEST_F(NumStreamTest, AFileThatTheSystemDoesNotOpenHasNothing) {
  const std::string name = folder.Write("numbers", "1 2\n");
  {
    const AfterTheLook remove([&] { fs::remove(name); });
    EXPECT_FALSE(text.Open(name));
  }
  EXPECT_FALSE(text.GetLine());
  folder.Write("numbers", "1 2\n");
  {
    const AfterTheLook remove([&] { fs::remove(name); });
    EXPECT_FALSE(binary.Open(name));
  }
  EXPECT_EQ(binary.BytesRemain(), 0);
  EXPECT_EQ(Read(binary, 4).result, 0);
}

// The memory of a process is a regular file by its status, and nothing can be read at its
// beginning.
TEST_F(NumStreamTest, AFileThatCannotBeReadEnds) {
  ASSERT_TRUE(text.Open(std::string("/proc/self/mem")));
  EXPECT_FALSE(text.GetLine());
  EXPECT_FALSE(text.GetLine());
  ExpectNoDouble(text, -77.0);
}

TEST_F(NumStreamTest, AMemberIsCountedAndStays) {
  EXPECT_EQ(text.AddRef(), 1U);
  EXPECT_EQ(text.AddRef(), 2U);
  EXPECT_EQ(text.Release(), 1U);
  EXPECT_EQ(text.Release(), 0U);
  EXPECT_TRUE(Text("1\n").GetLine());
}

TEST_F(NumStreamTest, WhatTakesAFilesPlaceWhileItIsOpenedDoesNotOpenEither) {
  const std::string name = folder.Write("numbers", "1\n");
  for (NumStream* stream : {static_cast<NumStream*>(&text), static_cast<NumStream*>(&binary)}) {
    {
      const AfterTheLook swap([&] {
        fs::remove(name);
        ASSERT_EQ(::mkfifo(name.c_str(), 0600), 0);
      });
      EXPECT_FALSE(stream->Open(name));
    }
    fs::remove(name);
    folder.Write("numbers", "1\n");
    EXPECT_TRUE(stream->Open(name));
  }
}

TEST_F(NumStreamTest, AFileOfWhichTheSystemTellsNothingDoesNotOpen) {
  const std::string name = folder.Write("numbers", "1\n");
  const std::ptrdiff_t before = OpenFiles();
  {
    const Refusal refusal(Refused::Status);
    EXPECT_FALSE(text.Open(name));
    EXPECT_FALSE(binary.Open(name));
  }
  EXPECT_EQ(OpenFiles(), before);
  EXPECT_FALSE(text.GetLine());
  EXPECT_EQ(binary.BytesRemain(), 0);
  EXPECT_TRUE(text.Open(name));
}

TEST_F(NumStreamTest, AFileWithoutMemoryToReadItByPassesThatOnAndIsClosed) {
  const std::string name = folder.Write("numbers", "1\n");
  const std::ptrdiff_t before = OpenFiles();
  {
    const Refusal refusal(Refused::Stream);
    EXPECT_THROW(text.Open(name), std::bad_alloc);
    EXPECT_THROW(binary.Open(name), std::bad_alloc);
  }
  EXPECT_EQ(OpenFiles(), before);
  EXPECT_FALSE(text.GetLine());
  EXPECT_EQ(binary.BytesRemain(), 0);
  EXPECT_TRUE(text.Open(name));
}

TEST_F(NumStreamTest, TheLastReleaseClosesTheFile) {
  const std::ptrdiff_t before = OpenFiles();
  auto stream = Ref<INumStreamC>::Share(new Heap<NumStream>(StreamMode::Text));
  ASSERT_TRUE(stream->Open(folder.Write("numbers", "1\n")));
  EXPECT_EQ(stream->AddRef(), 2U);
  EXPECT_EQ(stream->Release(), 1U);
  EXPECT_EQ(OpenFiles(), before + 1);
  EXPECT_EQ(stream.Detach()->Release(), 0U);
  EXPECT_EQ(OpenFiles(), before);
}

// ---- bytes ----

TEST_F(NumStreamTest, BinaryModeHasNoLines) {
  NumStream& stream = Binary("1 2\n");
  EXPECT_FALSE(stream.GetLine());
  ExpectNoDouble(stream, -77.0);
  EXPECT_EQ(stream.BytesRemain(), 4);
  EXPECT_EQ(Read(stream, 4).written, "1 2\n");
}

TEST_F(NumStreamTest, AHeaderIsSkippedAndNoMoreThanTheFile) {
  NumStream& stream = Binary(std::string(1024, 'h') + "abcdef");
  EXPECT_EQ(stream.BytesRemain(), 1030);
  stream.SkipBytes(1024);
  EXPECT_EQ(stream.BytesRemain(), 6);
  stream.SkipBytes(100);
  EXPECT_EQ(stream.BytesRemain(), 0);
  const Bytes bytes = Read(stream, 10);
  EXPECT_EQ(bytes.result, 0);
  EXPECT_EQ(bytes.written, "");
}

TEST_F(NumStreamTest, ReadingMovesOnButDoesNotReduceWhatRemains) {
  NumStream& stream = Binary("0123456789");
  EXPECT_EQ(Read(stream, 4).written, "0123");
  const Bytes second = Read(stream, 4);
  EXPECT_EQ(second.result, 4);
  EXPECT_EQ(second.written, "4567");
  EXPECT_EQ(stream.BytesRemain(), 10);
}

TEST_F(NumStreamTest, TheResultIsTheRequestAlsoWhereTheFileHeldLess) {
  NumStream& stream = Binary("0123456789");
  EXPECT_EQ(Read(stream, 8).result, 8);
  const Bytes rest = Read(stream, 8);
  EXPECT_EQ(rest.result, 8);
  EXPECT_EQ(rest.written, "89");
  const Bytes nothing = Read(stream, 8);
  EXPECT_EQ(nothing.result, 8);
  EXPECT_EQ(nothing.written, "");
}

TEST_F(NumStreamTest, AFileThatShrankGivesWhatItHas) {
  NumStream& stream = Binary("0123456789");
  fs::resize_file(folder.Path("numbers"), 3);
  const Bytes bytes = Read(stream, 10);
  EXPECT_EQ(bytes.result, 10);
  EXPECT_EQ(bytes.written, "012");
}

TEST_F(NumStreamTest, HugeAndNegativeCountsStayInTheBuffer) {
  NumStream& stream = Binary("0123456789");
  const Bytes all = Read(stream, Highest, 12);
  EXPECT_EQ(all.result, 10);
  EXPECT_EQ(all.written, "0123456789");
  for (const int count : {0, -1, Lowest}) {
    NumStream& again = Binary("0123456789");
    const Bytes none = Read(again, count, 1);
    EXPECT_EQ(none.result, count);
    EXPECT_EQ(none.written, "");
    EXPECT_EQ(Read(again, 2).written, "01");
  }
}

TEST_F(NumStreamTest, ASkipByANegativeNumberMovesBackAndRaisesWhatRemains) {
  NumStream& stream = Binary("0123456789");
  stream.SkipBytes(6);
  EXPECT_EQ(stream.BytesRemain(), 4);
  stream.SkipBytes(-2);
  EXPECT_EQ(stream.BytesRemain(), 6);
  EXPECT_EQ(Read(stream, 3).written, "456");
}

TEST_F(NumStreamTest, WhatRemainsIsLimitedTo32Bits) {
  NumStream& stream = Binary("0123456789");
  stream.SkipBytes(Lowest);
  EXPECT_EQ(stream.BytesRemain(), Highest);
  stream.SkipBytes(-1);
  EXPECT_EQ(stream.BytesRemain(), Highest);
  stream.SkipBytes(Highest);
  EXPECT_EQ(stream.BytesRemain(), 0);
}

TEST_F(NumStreamTest, FilesFrom2GiBOnAreMeasuredAsTheLargestCount) {
  const std::string name = folder.Write("large", "start");
  for (const auto& [size, measured] :
       {std::pair{0x7ffffffeULL, Highest - 1}, std::pair{0x7fffffffULL, Highest},
        std::pair{0x80000000ULL, Highest}, std::pair{0x100000005ULL, Highest}}) {
    fs::resize_file(name, size);
    ASSERT_TRUE(binary.Open(name));
    EXPECT_EQ(binary.BytesRemain(), measured) << size;
    EXPECT_EQ(Read(binary, 5).written, "start");
  }
}

}  // namespace
}  // namespace wavefilters

// In place of the C library's, for the whole program.
extern "C" __attribute__((visibility("default"))) int stat(const char* name, struct stat* status) {
  const int result = ::fstatat(AT_FDCWD, name, status, 0);
  if (const auto happens = std::exchange(wavefilters::behindItsBack, nullptr)) {
    happens();
  }
  return result;
}

extern "C" __attribute__((visibility("default"))) int fstat(int descriptor, struct stat* status) {
  if (wavefilters::refused == wavefilters::Refused::Status) {
    errno = EIO;
    return -1;
  }
  return ::fstatat(descriptor, "", status, AT_EMPTY_PATH);
}

extern "C" __attribute__((visibility("default"))) FILE* fdopen(int descriptor, const char* mode) {
  if (wavefilters::refused == wavefilters::Refused::Stream) {
    errno = ENOMEM;
    return nullptr;
  }
  static auto* const real = reinterpret_cast<decltype(&::fdopen)>(::dlsym(RTLD_NEXT, "fdopen"));
  return real(descriptor, mode);
}
