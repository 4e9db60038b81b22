#ifndef WAVEFILTERS_HOST_PARSE_JSON_H
#define WAVEFILTERS_HOST_PARSE_JSON_H

#include <nlohmann/json.hpp>
#include <optional>
#include <string_view>

namespace wavechain {

/// Whether arrays and objects of a JSON text lie more than 32 deep within one another. No other
/// value may be copied or written out: the parser's own functions do so by calling themselves.
bool IsNestedDeeply(std::string_view json);

/// The JSON object that the text is, its members in the order of `Json`; nothing for other values,
/// for what is no JSON, and where it is nested deeply.
template <class Json>
std::optional<Json> ParseObject(std::string_view text) {
  if (IsNestedDeeply(text)) {
    return std::nullopt;
  }
  Json json = Json::parse(text.begin(), text.end(), nullptr, false);
  return json.is_object() ? std::optional(std::move(json)) : std::nullopt;
}

}  // namespace wavechain

#endif
