#include "host/failure.h"

#include <system_error>

namespace wavechain {

Failure::Failure(ExitStatus exitStatus, const std::string& message)
    : std::runtime_error(OneLine(message)), status(exitStatus) {}

std::string OneLine(std::string_view text) {
  std::string line;
  for (const char c : text) {
    const auto byte = static_cast<unsigned char>(c);
    if (c == '\n') {
      line += "\\n";
    } else if (c == '\t') {
      line += "\\t";
    } else if (byte < 0x20 || byte == 0x7f) {
      line += fmt::format("\\x{:02x}", byte);
    } else {
      line += c;
    }
  }
  return line;
}

std::string SystemText(int error) { return std::generic_category().message(error); }

}  // namespace wavechain
