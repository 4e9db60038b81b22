#pragma once

#include <algorithm>
#include <cstdint>
#include <string>
#include <vector>

#include "reference/fir.h"

namespace reference {

// A source that gives its samples in blocks of given sizes, at most as many as were asked for, and
// notes what it was asked.
struct BlockSource {
  std::vector<float> samples;
  std::vector<int> sizes;
  std::size_t position = 0;
  std::size_t call = 0;
  std::vector<std::string>* log = nullptr;

  bool EndOfSrc() {
    log->push_back("source.EndOfSrc()");
    return position == samples.size();
  }

  std::vector<float> Transmit(std::int64_t want) {
    log->push_back("source.TransmitNow(" + std::to_string(want) + ")");
    const std::int64_t left = static_cast<std::int64_t>(samples.size() - position);
    const std::int64_t given = std::clamp<std::int64_t>(
        std::min<std::int64_t>(want, sizes[call++ % sizes.size()]), 0, left);
    const auto first = samples.begin() + static_cast<std::ptrdiff_t>(position);
    position += static_cast<std::size_t>(given);
    return {first, first + static_cast<std::ptrdiff_t>(given)};
  }
};

// The block engine with FIR margins, step by step: what one pull asks, delivers and keeps.
struct BlockEngine {
  static constexpr std::int64_t Room = 8192;
  std::vector<float> coef;
  std::int64_t margin = 0;  // samples of history, and of look-ahead
  std::vector<float> buffer;
  std::int64_t padLeft = 0;
  bool ended = true;
  BlockSource* source = nullptr;

  void Start(std::vector<float> design, BlockSource* from) {
    coef = std::move(design);
    margin = static_cast<std::int64_t>(coef.size() / 2);
    source = from;
    buffer.assign(static_cast<std::size_t>(margin), 0.0F);
    padLeft = margin;
    ended = false;
  }

  std::int64_t Fill() const { return static_cast<std::int64_t>(buffer.size()); }

  // Makes the buffer ready for n outputs and says how many there are.
  std::int64_t Prepare(std::int64_t n) {
    std::int64_t want = std::min(n + 2 * margin, Room) - Fill();
    if (want > 0) {
      if (source != nullptr && !source->EndOfSrc()) {
        const std::vector<float> given = source->Transmit(want);
        buffer.insert(buffer.end(), given.begin(), given.end());
        want -= static_cast<std::int64_t>(given.size());
      }
      if (source == nullptr || source->EndOfSrc()) {
        if (!ended) {
          const std::int64_t take = std::min(padLeft, want);
          padLeft -= take;
          ended = padLeft == 0;
          want = take;
        }
        buffer.resize(static_cast<std::size_t>(Fill() + want), 0.0F);
      }
    }
    return std::max<std::int64_t>(std::min(std::max<std::int64_t>(Fill() - 2 * margin, 0), n), 0);
  }

  std::vector<float> Pull(std::int64_t n) {
    const std::int64_t got = Prepare(n);
    std::vector<float> out = Convolve(buffer.data(), coef, static_cast<int>(got));
    buffer.erase(buffer.begin(), buffer.begin() + static_cast<std::ptrdiff_t>(got));
    return out;
  }
};

}  // namespace reference
