#include "host/plot_label.h"

#include <cstddef>

namespace wavechain {
namespace {

constexpr std::string_view Dots = "\xe2\x80\xa6";

bool IsContinuation(char c) { return (static_cast<unsigned char>(c) & 0xc0U) == 0x80U; }

// How many bytes the character at the start of the text has; 0 where it starts none.
std::size_t CharacterLength(std::string_view text) {
  const auto lead = static_cast<unsigned char>(text.front());
  const std::size_t length = lead < 0x80U                    ? 1
                             : lead >= 0xc2U && lead < 0xe0U ? 2
                             : lead >= 0xe0U && lead < 0xf0U ? 3
                             : lead >= 0xf0U && lead < 0xf5U ? 4
                                                             : 0;
  if (length == 0 || length > text.size()) {
    return 0;
  }
  for (std::size_t i = 1; i < length; ++i) {
    if (!IsContinuation(text[i])) {
      return 0;
    }
  }
  // Characters written in more bytes than they need, surrogates, and what lies beyond the last.
  const auto second = length > 1 ? static_cast<unsigned char>(text[1]) : 0U;
  const bool refused = (lead == 0xe0U && second < 0xa0U) || (lead == 0xedU && second >= 0xa0U) ||
                       (lead == 0xf0U && second < 0x90U) || (lead == 0xf4U && second >= 0x90U);
  return refused ? 0 : length;
}

void ReplaceAll(std::string& text, std::string_view what, std::string_view by) {
  for (std::size_t at = 0; (at = text.find(what, at)) != std::string::npos; at += by.size()) {
    text.replace(at, what.size(), by);
  }
}

// The text with as much left out at its end as it takes to fit, and dots in its place.
std::string Shortened(std::string text, double width, double (*widthOf)(std::string_view)) {
  while (!text.empty() && widthOf(text + std::string(Dots)) > width) {
    while (IsContinuation(text.back()) && text.size() > 1) {
      text.pop_back();
    }
    text.pop_back();
  }
  return text + std::string(Dots);
}

}  // namespace

std::string ValidUtf8(std::string_view text) {
  constexpr std::string_view Replacement = "\xef\xbf\xbd";
  std::string valid;
  while (!text.empty()) {
    const std::size_t length = CharacterLength(text);
    valid += length == 0 ? Replacement : text.substr(0, length);
    text.remove_prefix(length == 0 ? 1 : length);
  }
  return valid;
}

std::string PrintedUnit(std::string_view unit) {
  std::string printed(unit);
  ReplaceAll(printed, "^2", "\xc2\xb2");
  ReplaceAll(printed, " x ", " \xc3\x97 ");
  return printed;
}

std::vector<std::string> WrapTitle(std::string_view title, double width, std::size_t most,
                                   double (*widthOf)(std::string_view text)) {
  std::vector<std::string> lines(1);
  for (std::size_t at = 0; at < title.size();) {
    const std::size_t end = std::min(title.find(' ', at), title.size());
    const std::string word(title.substr(at, end - at));
    at = end + 1;
    const std::string longer = lines.back().empty() ? word : lines.back() + " " + word;
    if (lines.back().empty() || widthOf(longer) <= width) {
      lines.back() = longer;
    } else if (lines.size() < most) {
      lines.push_back(word);
    } else {
      lines.back() = Shortened(longer, width, widthOf);
      return lines;
    }
  }
  for (std::string& line : lines) {
    if (widthOf(line) > width) {
      line = Shortened(line, width, widthOf);
    }
  }
  return lines;
}

}  // namespace wavechain
