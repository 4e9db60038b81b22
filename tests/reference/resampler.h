#pragma once

#include <cmath>
#include <cstdint>
#include <string>
#include <vector>

#include "reference/host_script.h"

namespace reference {

// What the parameter list settles.
struct ResamplerSettings {
  std::int64_t histLen = 0;
  std::int64_t aheadLen = 0;
  std::int64_t upFactor = 1;
  std::int64_t downFactor = 1;
  std::int64_t phaseStart = 0;
  std::int64_t downStart = 0;
  double cutoff = 1.0;
  double shift = 0.0;
  double widen = 0.52;

  void Set(const std::vector<double>& p) {
    if (p.size() > 0) downFactor = Truncated(p[0]);
    if (downFactor < 1) downFactor = 1;
    if (p.size() > 1) upFactor = Truncated(p[1]);
    if (upFactor < 1) upFactor = 1;
    if (p.size() > 2) downStart = Truncated(p[2]);
    if (p.size() > 3) phaseStart = Truncated(p[3]);
    if (p.size() > 4) shift = p[4];
    std::int64_t half = 60;
    if (p.size() > 5) half = Truncated(p[5]);
    if (half > 2048) half = 2048;
    if (half < 0) half = 0;
    if (downFactor >= upFactor) {
      cutoff = 1.0 / static_cast<double>(downFactor);
    } else {
      cutoff = 1.0 / static_cast<double>(upFactor);
    }
    if (p.size() > 6) cutoff = p[6];
    if (p.size() > 7) widen = p[7];
    histLen = half / upFactor;
    aheadLen = half / upFactor;
  }
};

// The Blackman-windowed sinc, modulated, with the gain of the high-rate steps.
inline std::vector<float> BlackmanKernel(const ResamplerSettings& s) {
  const double pi = 3.141592653589793;
  const double twoPi = 6.283185307179586;
  const std::int64_t count = (s.histLen + s.aheadLen) * s.upFactor + 1;
  if (count < 1) return {};
  std::vector<float> c(static_cast<std::size_t>(count));
  if (count == 1) {
    c[0] = 1.0F;
    return c;
  }
  const double h = 0.5 * (static_cast<double>(count) - 1.0);
  const double fc = s.widen / h + s.cutoff;
  for (std::size_t n = 0; n < c.size(); ++n) {
    const double i = static_cast<double>(n);
    const double t = (i - h) * pi;
    const double ideal = i == h ? fc : std::sin(fc * t) / t;
    const float single = static_cast<float>(ideal);
    const double modulation = std::cos(t * s.shift);
    const double piI = pi * i;
    const double twoPiI = twoPi * i;
    const double window = 0.08 * std::cos(twoPiI / h) + (0.42 - 0.5 * std::cos(piI / h));
    const float scaled = single * static_cast<float>(s.upFactor);
    c[n] = static_cast<float>(static_cast<double>(scaled) * modulation * window);
  }
  return c;
}

// One output: samples backward from in[j] against coefficients k, k + L backward... that is, j goes
// down by 1 and k by L. A term without a sample or a coefficient adds nothing.
inline float PolyphaseSum(const float* in, std::int64_t j, const std::vector<float>& coef,
                          std::int64_t k, std::int64_t upFactor) {
  if (k < 0) return 0.0F;
  double sum = 0.0;
  const auto coefCount = static_cast<std::int64_t>(coef.size());
  if (k >= coefCount) {  // as many steps as lead back into the kernel
    const std::int64_t steps = (k - coefCount) / upFactor + 1;
    k -= steps * upFactor;
    j -= steps;
  }
  while (k >= 0) {
    if (j >= 0) {
      const float product = in[j] * coef[static_cast<std::size_t>(k)];
      sum = sum + static_cast<double>(product);
    }
    j -= 1;
    k -= upFactor;
  }
  return static_cast<float>(sum);
}

// Where the stream stands in the high-rate steps.
struct ResamplerGrid {
  std::int64_t phase = 0;
  std::int64_t downCount = 0;
};

struct ResampledBlock {
  std::int64_t consumed = 0;
  std::vector<float> out;
};

inline float OutputAt(const ResamplerSettings& s, const std::vector<float>& coef, const float* in,
                      std::int64_t consumed, std::int64_t phase) {
  const std::int64_t j = s.histLen + consumed + s.aheadLen;
  std::int64_t k = static_cast<std::int64_t>(coef.size()) - 1 - phase;
  if (phase < 0) k -= s.upFactor;
  return PolyphaseSum(in, j, coef, k, s.upFactor);
}

// The polyphase loop, one high-rate step at a time.
inline ResampledBlock Step(const ResamplerSettings& s, const std::vector<float>& coef,
                           ResamplerGrid& grid, const float* in, std::int64_t nIn,
                           std::int64_t nOut) {
  ResampledBlock block;
  while (block.consumed < nIn && static_cast<std::int64_t>(block.out.size()) < nOut) {
    if (grid.downCount == 0) {
      block.out.push_back(OutputAt(s, coef, in, block.consumed, grid.phase));
    }
    grid.phase += 1;
    if (grid.phase >= s.upFactor) {
      grid.phase = 0;
      block.consumed += 1;
    }
    grid.downCount += 1;
    if (grid.downCount >= s.downFactor) grid.downCount = 0;
  }
  return block;
}

// The same from closed forms: where each output lies, without a walk through the steps between. A
// second, independent statement that also serves where a walk would take years.
inline ResampledBlock Jump(const ResamplerSettings& s, const std::vector<float>& coef,
                           ResamplerGrid& grid, const float* in, std::int64_t nIn,
                           std::int64_t nOut) {
  ResampledBlock block;
  if (nIn <= 0 || nOut <= 0) return block;
  const std::int64_t up = s.upFactor;
  const std::int64_t down = s.downFactor;
  // Steps until the phase wraps for the first time, until the count does, and until an output.
  const std::int64_t wrap = grid.phase + 1 >= up ? 1 : up - grid.phase;
  const std::int64_t countWrap = grid.downCount + 1 >= down ? 1 : down - grid.downCount;
  const std::int64_t firstOut = grid.downCount <= 0 ? -grid.downCount : countWrap;
  const std::int64_t stepsOfInput = wrap + (nIn - 1) * up;
  const std::int64_t stepsOfOutput = firstOut + (nOut - 1) * down + 1;
  const std::int64_t steps = std::min(stepsOfInput, stepsOfOutput);
  const auto consumedAt = [&](std::int64_t step) {
    return step < wrap ? 0 : 1 + (step - wrap) / up;
  };
  const auto phaseAt = [&](std::int64_t step) {
    return step < wrap ? grid.phase + step : (step - wrap) % up;
  };
  for (std::int64_t step = firstOut; step < steps; step += down) {
    block.out.push_back(OutputAt(s, coef, in, consumedAt(step), phaseAt(step)));
  }
  block.consumed = consumedAt(steps);
  grid = {phaseAt(steps), steps < countWrap ? grid.downCount + steps : (steps - countWrap) % down};
  return block;
}

enum class Walk { Steps, Jumps };

// The resampler with its buffering, as a host sees it.
class Resampler {
 public:
  explicit Resampler(Walk newWalk = Walk::Steps) : walk(newWalk) {}

  // In effect from the next attachment on.
  void Set_param_list(const std::vector<double>& p) { given.Set(p); }

  // An empty list only disposes.
  void Set_src_list(const std::vector<ScriptedSource*>& sources) {
    Dispose();
    if (sources.empty()) return;
    source = sources[0];
    for (std::size_t i = 1; i < sources.size(); ++i) sources[i]->Note("Release()");
    source->ReadDescriptor();
    settings = given;
    coef = BlackmanKernel(settings);
    bufFill = settings.histLen;
    for (std::int64_t i = 0; i < settings.histLen; ++i) buffer[static_cast<std::size_t>(i)] = 0.0F;
    ended = false;
    grid = {settings.phaseStart, settings.downStart};
    padLeft = settings.aheadLen;
  }

  void Dispose() {
    if (source == nullptr) return;
    source->Note("Dispose()");
    source->Note("Release()");
    source = nullptr;
  }

  bool EndOfSrc() const { return ended; }

  // What becomes of the source's interval and length.
  struct Output {
    double interval_ms;
    std::int32_t length;
  };

  Output GetDescriptor() {
    Output output{};
    source->Note("GetDescriptor()");
    source->Note("descriptor.GetPeriod()");
    const auto up = static_cast<double>(settings.upFactor);
    const auto down = static_cast<double>(settings.downFactor);
    output.interval_ms = down * source->interval_ms / up;
    source->Note("descriptor.SetPeriod(" + Shortest(output.interval_ms) + ")");
    source->Note("descriptor.GetLength()");
    output.length = Limited(source->length * settings.upFactor / settings.downFactor);
    source->Note("descriptor.SetLength(" + std::to_string(output.length) + ")");
    return output;
  }

  std::vector<float> TransmitNow(std::int64_t n) {
    const std::int64_t margins = settings.histLen + settings.aheadLen;
    std::int64_t needIn = (settings.upFactor + settings.downFactor * n - 1) / settings.upFactor;
    if (needIn > Room - margins) needIn = Room - margins;
    Fill(needIn + margins - bufFill);
    std::vector<float> out;
    const std::int64_t avail = bufFill - margins;
    if (avail >= 1) {
      out = Apply(buffer.data(), avail, n).out;
      for (std::int64_t i = lastConsumed; i < bufFill; ++i) {
        buffer[static_cast<std::size_t>(i - lastConsumed)] = buffer[static_cast<std::size_t>(i)];
      }
      bufFill -= lastConsumed;
    }
    if (padLeft > 0 || bufFill - margins > 0) {
      ended = false;
    } else {
      ended = source == nullptr || source->EndOfSrc();
    }
    return out;
  }

  ResampledBlock Apply(const float* in, std::int64_t nIn, std::int64_t nOut) {
    ResampledBlock block = walk == Walk::Steps ? Step(settings, coef, grid, in, nIn, nOut)
                                               : Jump(settings, coef, grid, in, nIn, nOut);
    lastConsumed = block.consumed;
    return block;
  }

  ResamplerSettings given;     // by the parameter list
  ResamplerSettings settings;  // of the stream
  std::vector<float> coef;     // may be exchanged for another kernel
  ScriptedSource* source = nullptr;

 private:
  static constexpr std::int64_t Room = 8192;

  void Fill(std::int64_t want) {
    if (source != nullptr && !source->EndOfSrc() && want > 0) {
      const std::int64_t came = source->TransmitNow(buffer.data() + bufFill, want);
      bufFill += came;
      want -= came;
    }
    if ((source == nullptr || source->EndOfSrc()) && want > 0) {
      if (!ended) {
        if (want > padLeft) want = padLeft;
        padLeft -= want;
      }
      for (std::int64_t i = 0; i < want; ++i) buffer[static_cast<std::size_t>(bufFill + i)] = 0.0F;
      bufFill += want;
    }
  }

  Walk walk;
  ResamplerGrid grid;
  std::int64_t bufFill = 0;
  std::int64_t padLeft = 0;
  bool ended = true;
  std::int64_t lastConsumed = 0;
  std::vector<float> buffer = std::vector<float>(Room);
};

}  // namespace reference
