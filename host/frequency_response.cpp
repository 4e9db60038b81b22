#include "host/frequency_response.h"

#include <algorithm>
#include <cmath>
#include <kissfft/kissfft.hh>
#include <optional>
#include <string_view>

#include "host/chain.h"
#include "host/failure.h"
#include "host/impulse_source.h"
#include "host/interrupt.h"
#include "host/make.h"

namespace wavechain {
namespace {

constexpr int BlockSamples = 4096;

// Why there is no frequency response; nothing where there is one.
std::optional<std::string_view> WhyNone(const FilterKind& kind) {
  if (kind.linear) {
    return std::nullopt;
  }
  if (!kind.dataFiles.empty()) {
    return "what comes out follows its data file, not its input alone";
  }
  if (kind.sources > 1) {
    return "what comes out follows a second signal, not its input alone";
  }
  if (kind.deliveredLength != nullptr) {
    return "it changes the sampling rate, so that one frequency may come out as several";
  }
  return "it makes a signal of its own, whatever comes in";
}

void RequireLinear(const std::vector<FilterCall>& calls) {
  for (std::size_t i = 0; i < calls.size(); ++i) {
    if (const auto why = WhyNone(*calls[i].kind)) {
      Fail(ExitStatus::Usage,
           "filter {} ({}): has no frequency response: {}; --response takes FIRFilter and FIRNotch",
           i + 1, calls[i].kind->name, *why);
    }
  }
}

// What the chain makes of an impulse in the middle of so many samples.
std::vector<double> ImpulseResponse(const FilterLibrary& library,
                                    const std::vector<FilterCall>& calls, double rate,
                                    std::size_t length, Log& log) {
  const auto samples = static_cast<std::int64_t>(length);
  Chain chain(
      library,
      wavefilters::Ref<HostSource>::Adopt(Make<ImpulseSource>(samples, rate, samples / 2).Detach()),
      calls, {}, log);
  std::vector<double> response;
  std::vector<float> block(BlockSamples);
  do {
    StopIfInterrupted();
    const int came = chain.Pull(block.data(), BlockSamples);
    response.insert(response.end(), block.begin(), block.begin() + came);
  } while (!chain.AtEnd());
  response.resize(length);
  return response;
}

// Whether the response has died away before both ends.
bool IsWhole(const std::vector<double>& response) {
  const auto margin = static_cast<std::ptrdiff_t>(response.size() / 16);
  const auto isZero = [](double sample) { return sample == 0.0; };
  return std::all_of(response.begin(), response.begin() + margin, isZero) &&
         std::all_of(response.end() - margin, response.end(), isZero);
}

std::vector<std::complex<double>> Transformed(const std::vector<double>& response) {
  const std::size_t half = response.size() / 2;
  const kissfft<double> transform(half, false);
  std::vector<std::complex<double>> gains(half + 1);
  transform.transform_real(response.data(), gains.data());
  // The gain at half the rate comes as the imaginary part of the one at 0.
  gains[half] = gains[0].imag();
  gains[0] = gains[0].real();
  // The impulse stands in the middle, which turns the sign of every other value.
  for (std::size_t k = 1; k <= half; k += 2) {
    gains[k] = -gains[k];
  }
  return gains;
}

}  // namespace

Response MeasureResponse(const FilterLibrary& library, const std::vector<FilterCall>& calls,
                         double rate, Log& log) {
  constexpr std::size_t Shortest = 1U << 16;
  constexpr std::size_t Longest = 1U << 22;
  RequireLinear(calls);
  for (std::size_t length = Shortest; length <= Longest; length *= 2) {
    const std::vector<double> response = ImpulseResponse(library, calls, rate, length, log);
    if (!std::ranges::all_of(response, [](double sample) { return std::isfinite(sample); })) {
      Fail(ExitStatus::Input, "the response to an impulse is not finite");
    }
    if (IsWhole(response)) {
      return {rate, Transformed(response)};
    }
  }
  Fail(ExitStatus::Input, "the response to an impulse does not end within {} samples", Longest);
}

}  // namespace wavechain
