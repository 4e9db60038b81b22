#include "host/failure.h"

#include <system_error>

namespace wavechain {

Failure::Failure(ExitStatus exitStatus, const std::string& message)
    : std::runtime_error(OneLine(message)), status(exitStatus) {}

std::string OneLine(std::string_view text) {
  constexpr char Lead = '\xc2';  // of the control characters from U+0080 to U+009F in UTF-8
  std::string line;
  for (std::size_t at = 0; at < text.size(); ++at) {
    const char c = text[at];
    const auto byte = static_cast<unsigned char>(c);
    const auto next = static_cast<unsigned char>(at + 1 < text.size() ? text[at + 1] : 0);
    if (c == '\n') {
      line += "\\n";
    } else if (c == '\t') {
      line += "\\t";
    } else if (byte < 0x20 || byte == 0x7f) {
      line += fmt::format("\\x{:02x}", byte);
    } else if (c == Lead && next >= 0x80 && next < 0xa0) {
      line += fmt::format("\\x{:02x}", next);
      ++at;
    } else {
      line += c;
    }
  }
  return line;
}

std::string SystemText(int error) { return std::generic_category().message(error); }

}  // namespace wavechain
