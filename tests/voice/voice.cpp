#include "voice/voice.h"

#include <algorithm>

#include "support/guarded_buffer.h"

namespace voice {

std::string Line(const std::vector<double>& numbers, const std::vector<float>& ratios) {
  std::string line;
  for (const double number : numbers) line += support::Text(number) + " ";
  for (const float ratio : ratios) line += support::Text(static_cast<double>(ratio)) + " ";
  return line + "\n";
}

Voice::Voice(const support::Kind& kind, const std::string& text, double interval_ms)
    : stream("stream", log), filter(support::MakeFilter(kind)) {
  for (const char* name : {".gpl", ".fla", ".gpm"}) stream.files[name] = text;
  filter.Set_num_stream(&stream);
  filter.Init(interval_ms);
}

Samples Voice::Apply(const Samples& block, int count, int start) {
  const auto room = static_cast<int>(block.size());
  support::GuardedBuffer buffer(room);
  std::copy(block.begin(), block.end(), buffer.data());
  filter.Call<TrackApply>(16, buffer.data(), count, start);
  buffer.CheckAfter(room);
  return buffer.First(room);
}

Samples Rendered(const support::Kind& kind, const std::string& text, int count,
                 double interval_ms) {
  return Voice(kind, text, interval_ms).Apply(support::Constant(count));
}

Extent Sounding(const Samples& samples) {
  const auto sounds = [](float sample) { return sample != 0.0F; };
  const auto first = std::find_if(samples.begin(), samples.end(), sounds);
  if (first == samples.end()) return {};
  const auto last = std::find_if(samples.rbegin(), samples.rend(), sounds);
  return {static_cast<int>(first - samples.begin()), static_cast<int>(samples.rend() - last)};
}

}  // namespace voice
