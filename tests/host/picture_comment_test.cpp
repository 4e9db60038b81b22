// What a picture carries, put in and read back.

#include "host/picture_comment.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include "host/failure.h"
#include "host/file.h"

namespace wavechain {
namespace {

TEST(PictureComments, StandBehindTheStartOfAnSvg) {
  EXPECT_EQ(WithSvgComment("<?xml?>\n<svg width=\"9\">\n<g/>\n</svg>\n", "a<b"),
            "<?xml?>\n<svg width=\"9\">\n<metadata>a&lt;b</metadata>\n<g/>\n</svg>\n");
}

TEST(PictureComments, HaveNoPlaceInAnSvgThatBeginsOtherwise) {
  EXPECT_THROW(WithSvgComment("<?xml?>\n<svg:svg>\n", "a"), Failure);
  EXPECT_THROW(WithSvgComment("<?xml?>\n<svg width=\"9\"><g/></svg>", "a"), Failure);
  EXPECT_THROW(WithSvgComment("", "a"), Failure);
}

TEST(PictureComments, AreLookedForInPicturesAlone) {
  const File file = TemporaryFile();
  const std::string sound = "RIFF" + std::string(100000, 'x');
  ASSERT_EQ(WriteAll(file.Descriptor(), sound.data(), sound.size()), 0);
  EXPECT_EQ(PictureComment(file.Descriptor()), "");
  // Of other files only the first bytes are read.
  EXPECT_LE(::lseek(file.Descriptor(), 0, SEEK_CUR), 16);
}

}  // namespace
}  // namespace wavechain
