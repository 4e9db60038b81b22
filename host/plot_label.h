#ifndef WAVEFILTERS_HOST_PLOT_LABEL_H
#define WAVEFILTERS_HOST_PLOT_LABEL_H

#include <string>
#include <string_view>
#include <vector>

namespace wavechain {

/// The text with each byte that is no part of a UTF-8 character replaced by U+FFFD: file names
/// may hold any bytes, what draws text takes none but characters.
std::string ValidUtf8(std::string_view text);

/// A unit as print writes it: "mm/s^2 x 6.866" with a raised 2 and a multiplication sign.
std::string PrintedUnit(std::string_view unit);

/// Breaks a title into lines of at most `width`, as measured by `widthOf`, at its blanks. Of a
/// longer one than `most` lines the end is left out, which three dots tell; so is what is too
/// wide of a single word.
std::vector<std::string> WrapTitle(std::string_view title, double width, std::size_t most,
                                   double (*widthOf)(std::string_view text));

}  // namespace wavechain

#endif
