#include "host/input_report.h"

#include <fmt/format.h>

#include "host/text.h"

namespace wavechain {

std::string LengthText(std::int64_t samples, double interval_ms) {
  return fmt::format("{}, {:.3f} s", Counted(samples, "sample"),
                     0.001 * interval_ms * static_cast<double>(samples));
}

void ReportInput(const AudioInput& input, Log& log) {
  const std::string channel =
      input.Channels() == 1 ? "1 channel"
                            : fmt::format("channel {} of {}", input.Channel(), input.Channels());
  log.Report(fmt::format("read   {}: {}, {} Hz, {}, {}", input.Name(), input.FormatText(),
                         input.Rate(), channel, LengthText(input.Length(), 1000.0 / input.Rate())));
}

void WarnOfOddSamples(const std::string& name, std::int64_t nonFinite, Log& log,
                      const std::string& more) {
  if (nonFinite > 0) {
    log.Warn(
        fmt::format("warning: {}: not finite: {}{}", name, Counted(nonFinite, "sample"), more));
  }
}

}  // namespace wavechain
