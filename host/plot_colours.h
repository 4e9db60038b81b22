#ifndef WAVEFILTERS_HOST_PLOT_COLOURS_H
#define WAVEFILTERS_HOST_PLOT_COLOURS_H

#include <cstddef>
#include <cstdint>

namespace wavechain {

/// A colour as 0xRRGGBB (sRGB).
using Colour = std::uint32_t;

/// What is drawn beside the data.
constexpr Colour InkColour = 0x222222;
constexpr Colour FrameColour = 0x666666;
constexpr Colour GridColour = 0xdddddd;
constexpr Colour GapColour = 0xe8e8e8;
constexpr Colour PaperColour = 0xffffff;

/// Colour number `index` for lines, of a palette that people with any of the common colour
/// vision deficiencies tell apart: M. Okabe and K. Ito, "Color Universal Design" (2008), without
/// its yellow, which is too pale for lines on white. After seven it starts again.
Colour LineColour(std::size_t index);

/// The colour of a level from 0 (dark) to 1 (bright); levels beyond are taken as these, and what
/// is not a number as 0. The map is viridis, by S. van der Walt and N. Smith (2015, CC0):
/// perceptually uniform, in grey print too, and made for colour-blind readers.
Colour Viridis(double level);

}  // namespace wavechain

#endif
