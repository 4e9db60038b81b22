// What a picture carries, put in and read back.

#include "host/picture_comment.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "host/failure.h"

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

}  // namespace
}  // namespace wavechain
