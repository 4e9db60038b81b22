#pragma once

#include <algorithm>
#include <charconv>
#include <cmath>
#include <cstdint>
#include <functional>
#include <string>
#include <utility>
#include <vector>

namespace reference {

using CallList = std::vector<std::string>;

inline std::string Shortest(double value) {
  if (std::isnan(value)) return "nan";
  char text[64];
  return {text, std::to_chars(text, text + sizeof text, value).ptr};
}

// The nearer end for what leaves 32 bits.
inline std::int32_t Limited(std::int64_t value) {
  return static_cast<std::int32_t>(
      std::clamp(value, std::int64_t{-2147483647} - 1, std::int64_t{2147483647}));
}

// Truncated toward zero; the nearer end for what leaves 32 bits, 0 for not-a-number.
inline std::int32_t Truncated(double value) {
  if (std::isnan(value)) return 0;
  if (value >= 2147483647.0) return 2147483647;
  if (value <= -2147483648.0) return -2147483647 - 1;
  return static_cast<std::int32_t>(value);
}

// A host's source as a model sees it. It follows the same kind of script as the mock of the tests
// and notes each call in the same words, so that the two lists can be compared.
class ScriptedSource {
 public:
  ScriptedSource(std::string sourceName, CallList& list, std::vector<float> signal)
      : samples(std::move(signal)), name(std::move(sourceName)), calls(&list) {
    length = static_cast<std::int32_t>(samples.size());
  }

  bool EndOfSrc() {
    Note("EndOfSrc()");
    return position == samples.size();
  }

  // How many samples of those asked for are to be taken as delivered.
  std::int64_t TransmitNow(float* buffer, std::int64_t wanted) {
    Note("TransmitNow(" + std::to_string(wanted) + ")");
    const auto left = static_cast<std::int64_t>(samples.size() - position);
    const std::int64_t possible = std::clamp(wanted, std::int64_t{0}, left);
    const int asked = static_cast<int>(wanted);
    const std::int64_t written =
        deliver ? std::clamp(std::int64_t{deliver(asked)}, std::int64_t{0}, possible) : possible;
    for (std::int64_t i = 0; i < written; ++i) buffer[i] = samples[position++];
    const std::int64_t claimed = claim ? claim(asked, static_cast<int>(written)) : written;
    return std::clamp(claimed, std::int64_t{0}, std::max(wanted, std::int64_t{0}));
  }

  // The filter asks for a descriptor, reads the interval, and lets go of it.
  void ReadDescriptor() {
    Note("GetDescriptor()");
    Note("descriptor.GetPeriod()");
    Note("descriptor.Release()");
  }

  void Note(const std::string& call) { calls->push_back(name + "." + call); }

  std::vector<float> samples;
  std::size_t position = 0;
  double interval_ms = 0.1;
  std::int32_t length = 0;
  std::function<int(int wanted)> deliver;
  std::function<int(int wanted, int written)> claim;

 private:
  std::string name;
  CallList* calls;
};

}  // namespace reference
