#pragma once

#include <cstdint>
#include <functional>
#include <vector>

#include "reference/host_script.h"

namespace reference {

// One of the two block engines of a pair: a buffer of one source's samples with history and
// look-ahead.
class PairEngine {
 public:
  // Takes what it may read as `in` and combines it with what is in `out`.
  using Combine = std::function<void(const float* in, float* out, std::int64_t n)>;

  explicit PairEngine(Combine rule) : apply(std::move(rule)) {}

  void Attach(ScriptedSource* newSource) {
    source = newSource;
    source->ReadDescriptor();
    for (std::int64_t i = 0; i < histLen; ++i) buffer[static_cast<std::size_t>(i)] = 0.0F;
    bufFill = histLen;
    ended = false;
    padLeft = aheadLen;
  }

  void Dispose() {
    if (source == nullptr) return;
    source->Note("Dispose()");
    source->Note("Release()");
    source = nullptr;
  }

  void Fill(std::int64_t n) {
    std::int64_t want = std::min(n + histLen + aheadLen, Room) - bufFill;
    if (want <= 0) return;
    if (source != nullptr && !source->EndOfSrc()) {
      const std::int64_t came = source->TransmitNow(buffer.data() + bufFill, want);
      bufFill += came;
      want -= came;
    }
    if (source != nullptr && !source->EndOfSrc()) return;
    if (!ended) {
      const std::int64_t take = std::min(padLeft, want);
      padLeft -= take;
      ended = padLeft == 0;
      want = take;
    }
    for (std::int64_t i = 0; i < want; ++i) buffer[static_cast<std::size_t>(bufFill + i)] = 0.0F;
    bufFill += want;
  }

  std::int64_t Ready(std::int64_t n) const {
    return std::min(std::max(bufFill - histLen - aheadLen, std::int64_t{0}), n);
  }

  // A null `out` consumes nothing. A request below 0 gives 0 samples.
  std::int64_t TransmitNow(float* out, std::int64_t n) {
    Fill(n);
    const std::int64_t got = std::max(Ready(n), std::int64_t{0});
    if (got >= 1 && out != nullptr) {
      apply(buffer.data(), out, got);
      for (std::int64_t i = got; i < bufFill; ++i) {
        buffer[static_cast<std::size_t>(i - got)] = buffer[static_cast<std::size_t>(i)];
      }
      bufFill -= got;
    }
    return got;
  }

  std::int64_t histLen = 0;
  std::int64_t aheadLen = 0;
  bool ended = true;
  ScriptedSource* source = nullptr;

 private:
  static constexpr std::int64_t Room = 8192;

  Combine apply;
  std::int64_t bufFill = 0;
  std::int64_t padLeft = 0;
  std::vector<float> buffer = std::vector<float>(Room);
};

// Two engines and the rule that combines their samples.
class TwoSources {
 public:
  void Set_src_list(const std::vector<ScriptedSource*>& sources) {
    front.Dispose();
    if (!sources.empty()) front.Attach(sources[0]);
    partner.Dispose();
    if (sources.size() < 2) return;
    for (std::size_t i = 2; i < sources.size(); ++i) sources[i]->Note("Release()");
    partner.Attach(sources[1]);
  }

  // Reaches the first source alone.
  void Dispose() { front.Dispose(); }

  bool EndOfSrc() const { return front.ended && partner.ended; }

  // The two margins follow the request separately: a pull delivers what both have.
  std::int64_t TransmitNow(float* out, std::int64_t n) {
    front.Fill(n);
    const std::int64_t m = front.Ready(n);
    std::int64_t k = partner.TransmitNow(nullptr, n);
    k = std::min(k, m);
    front.TransmitNow(out, k);
    return partner.TransmitNow(out, k);
  }

  PairEngine front{[](const float* in, float* out, std::int64_t n) {
    for (std::int64_t i = 0; i < n; ++i) out[i] = in[i];
  }};
  PairEngine partner;

 protected:
  explicit TwoSources(PairEngine::Combine rule) : partner(std::move(rule)) {}
  ~TwoSources() = default;
};

struct Mixer final : TwoSources {
  double gain1 = 1.0;
  double gain2 = 1.0;

  Mixer()
      : TwoSources([this](const float* in, float* out, std::int64_t n) {
          for (std::int64_t i = 0; i < n; ++i) {
            const double weighted1 = static_cast<double>(out[i]) * gain1;
            const double weighted2 = static_cast<double>(in[i]) * gain2;
            out[i] = static_cast<float>(weighted1 + weighted2);
          }
        }) {}
  Mixer(const Mixer&) = delete;

  void Set_param_list(const std::vector<double>& p) {
    if (p.size() > 0) gain1 = p[0];
    if (p.size() > 1) gain2 = p[1];
  }
};

struct EchoSubtraction final : TwoSources {
  std::int64_t echoSpan = 0;

  EchoSubtraction()
      : TwoSources([this](const float* in, float* out, std::int64_t n) {
          for (std::int64_t i = 0; i < n; ++i) out[i] = out[i] - in[echoSpan + i];
        }) {}
  EchoSubtraction(const EchoSubtraction&) = delete;

  // In effect at once, in the margins and in the index.
  void Set_param_list(const std::vector<double>& p) {
    if (p.empty()) return;
    echoSpan = std::clamp<std::int64_t>(Truncated(p[0]), 0, 2048);
    partner.histLen = echoSpan;
    partner.aheadLen = echoSpan;
  }
};

}  // namespace reference
