#pragma once

#include "fuzz/input.h"
#include "tracks/twin.h"

namespace fuzz {

// A source of up to `most` samples of noise, with deliveries, claims and an interval of the
// fuzzer's choice.
inline tracks::SourceScript Source(Input& input, const std::string& path, int most) {
  static const support::Samples noise = support::Noise(6000, 3);
  tracks::SourceScript script;
  script.samples.assign(noise.begin(), noise.begin() + input.Int(0, std::min(most, 6000)));
  script.interval_ms = input.Interval_ms();
  script.path = path;
  if (input.Flag()) script.deliver = support::InBlocksOf(input.Sizes(9000));
  if (input.Byte() % 8 == 7) {
    const int more = input.Int(-100000, 100000);
    // Only a source that delivered all that was asked for may claim more: less would be unread.
    script.claim = [more](int count, int written) {
      return written > 0 && (written == count || more < 0) ? written + more : written;
    };
  }
  return script;
}

// One life of a filter beside its model: one or two attachments, and pulls of any size, of as many
// samples together as are allowed.
template <class Model>
void Live(tracks::Twin<Model>& twin, Input& input, const std::string& path, Allowance allowance) {
  for (int attachment = input.Int(1, 2); attachment > 0; --attachment) {
    twin.Attach(Source(input, path, allowance.Left()));
    if (input.Flag()) twin.GetDescriptor();
    for (int step = input.Int(0, 3); step > 0; --step) {
      if constexpr (requires { twin.Reference().Init(0.1); }) {
        if (input.Byte() % 16 == 15) twin.Init(input.Interval_ms());
      }
      twin.Pull(allowance.Of(input.Int(-9000, 20000)));
    }
    const std::vector<int> sizes = input.Sizes(9000);
    for (std::size_t pull = 0; pull < 20 && !twin.EndOfSrc(); ++pull) {
      const int size = allowance.Of(sizes[pull % sizes.size()]);
      if (size == 0) break;
      twin.Pull(size);
    }
  }
  twin.Release();
}

}  // namespace fuzz
