// The library's number stream over any file: as text beside a plain reader of lines, and as bytes
// beside arithmetic on the file's length, with counts that no host means.

#include <gtest/gtest.h>

#include <algorithm>

#include "frame/lifetime.h"
#include "frame/numeric.h"
#include "fuzz/input.h"
#include "fuzz/target.h"
#include "numstream/num_stream.h"
#include "reference/number_file.h"
#include "support/temp_folder.h"

namespace {

using wavefilters::Embedded;
using wavefilters::NumStream;
using wavefilters::StreamMode;

void ReadText(fuzz::Input& input, const std::string& file) {
  const int story = input.Byte();
  Embedded<NumStream> stream{StreamMode::Text};
  reference::NumberFile plain;
  ASSERT_EQ(stream.OpenFromString(file), plain.Open(file));
  int failures = 0;
  for (int step = 0; failures < 8; ++step) {
    bool read = false;
    if ((story >> (step % 8)) % 2 == 1 || failures > 2) {
      read = plain.GetLine();
      EXPECT_EQ(stream.GetLine(), read);
    } else {
      double wanted = -77.25;
      double got = wanted;
      read = plain.GetDouble(wanted);
      EXPECT_EQ(stream.GetDouble(got), read);
      EXPECT_EQ(std::memcmp(&got, &wanted, sizeof got), 0);
    }
    failures = read ? 0 : failures + 1;
  }
  stream.Close();
}

// What lies in the file from `position` on, of `wanted` bytes; the rest of the buffer is untouched.
void CheckBytes(const std::string& content, std::int64_t position, const std::vector<char>& buffer,
                std::int64_t wanted) {
  const auto length = static_cast<std::int64_t>(content.size());
  const std::int64_t first = std::clamp<std::int64_t>(position, 0, length);
  const std::int64_t came = std::clamp<std::int64_t>(wanted, 0, length - first);
  for (std::size_t i = 0; i < buffer.size(); ++i) {
    const bool read = static_cast<std::int64_t>(i) < came;
    ASSERT_EQ(buffer[i], read ? content[static_cast<std::size_t>(first) + i] : '#');
  }
}

void ReadBytes(fuzz::Input& input, const std::string& file, const std::string& content) {
  Embedded<NumStream> stream{StreamMode::Binary};
  if (!stream.OpenFromString(file)) return;
  std::int64_t position = 0;
  std::int64_t remain = static_cast<std::int64_t>(content.size());
  EXPECT_EQ(stream.BytesRemain(), remain);
  for (int step = 0; step < 20 && !input.Empty(); ++step) {
    const int count = input.Flag() ? input.Int(-300, 300) : wavefilters::ToInt32(input.Number());
    const std::int64_t taken = std::min<std::int64_t>(count, remain);
    if (input.Flag()) {
      stream.SkipBytes(count);
      position += taken;
      remain = std::clamp<std::int64_t>(remain - taken, INT32_MIN, INT32_MAX);
    } else {
      // A read takes nothing from what remains.
      std::vector<char> buffer(static_cast<std::size_t>(std::max<std::int64_t>(taken, 0)) + 16,
                               '#');
      EXPECT_EQ(stream.ReadBytes(buffer.data(), count), taken);
      CheckBytes(content, position, buffer, taken);
      position += std::max<std::int64_t>(taken, 0);
    }
    EXPECT_EQ(stream.BytesRemain(), remain);
    // Where a stream stands that was sent out of its file is nobody's business.
    if (position < 0 || position > static_cast<std::int64_t>(content.size())) break;
  }
  stream.Close();
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t count) {
  static const support::TempFolder folder;
  fuzz::Input input(bytes, count);
  const bool asText = input.Flag();
  const std::string story = input.Text();
  const std::string content = input.Rest();
  const std::string file = folder.Write("numbers", content);
  fuzz::Input steps(reinterpret_cast<const std::uint8_t*>(story.data()), story.size());
  if (asText) {
    ReadText(steps, file);
  } else {
    ReadBytes(steps, file, content);
  }
  return 0;
}
