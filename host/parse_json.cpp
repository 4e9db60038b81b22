#include "host/parse_json.h"

namespace wavechain {

// Brackets of a text that is no JSON may count wrongly, but only behind the place where the parser
// gives up.
bool IsNestedDeeply(std::string_view json) {
  constexpr int MostDepth = 32;
  int depth = 0;
  bool isQuoted = false;
  for (std::size_t at = 0; at < json.size(); ++at) {
    const char c = json[at];
    if (isQuoted) {
      at += c == '\\' ? 1 : 0;
      isQuoted = c != '"';
      continue;
    }
    isQuoted = c == '"';
    depth += (c == '[' || c == '{') ? 1 : 0;
    depth -= (c == ']' || c == '}') ? 1 : 0;
    if (depth > MostDepth) {
      return true;
    }
  }
  return false;
}

}  // namespace wavechain
