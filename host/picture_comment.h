#ifndef WAVEFILTERS_HOST_PICTURE_COMMENT_H
#define WAVEFILTERS_HOST_PICTURE_COMMENT_H

#include <string>
#include <string_view>

namespace wavechain {

/// A comment inside a picture, which shows nothing of it. The text is ASCII without control
/// characters.

/// The PNG with the text in a chunk of its own (keyword Comment).
std::string WithPngComment(const std::string& png, std::string_view comment);
/// The SVG with the text as its <metadata>. Fails (output) where it does not begin as cairo's do.
std::string WithSvgComment(const std::string& svg, std::string_view comment);

/// The comment of a PNG or SVG that was made so, or of a PDF that has it as its subject; nothing
/// of other files, of which only the first bytes are read.
std::string PictureComment(int descriptor);

}  // namespace wavechain

#endif
