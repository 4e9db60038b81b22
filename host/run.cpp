#include "host/run.h"

#include <unistd.h>

#include <chrono>

#include "host/audio_input.h"
#include "host/audio_writer.h"
#include "host/chain.h"
#include "host/failure.h"
#include "host/interrupt.h"
#include "host/make.h"
#include "host/output_file.h"
#include "host/recording_source.h"
#include "host/text.h"

namespace wavechain {
namespace {

// Filters see the signal in blocks of this size, always: some results depend on it.
constexpr int BlockSamples = 4096;

struct Totals {
  std::int64_t samples = 0;
  std::int64_t nonFinite = 0;
};

std::vector<FilterCall> ParseFilters(const std::vector<std::string>& texts) {
  if (texts.empty()) {
    Fail(ExitStatus::Usage, "no filter is given; add -f \"FIRNotch half_length=200\" or its like");
  }
  std::vector<FilterCall> calls;
  for (const std::string& text : texts) {
    calls.push_back(ParseFilter(text));
  }
  return calls;
}

std::string ProgressText(std::int64_t samples, const SignalInfo& signal) {
  const double seconds = 0.001 * signal.interval_ms * static_cast<double>(samples);
  const double percent =
      signal.length > 0 ? 100.0 * static_cast<double>(samples) / static_cast<double>(signal.length)
                        : 100.0;
  return fmt::format("{:5.1f} %  {:.1f} s", percent, seconds);
}

Totals PullAll(Chain& chain, const AudioInput& input, AudioWriter& writer, Log& log) {
  std::vector<float> block(BlockSamples);
  Totals totals;
  // Asked before it is looked for an end: on an empty recording filters still report.
  do {
    StopIfInterrupted();
    const int came = chain.Pull(block.data(), BlockSamples);
    input.RequireIntact();
    totals.samples += came;
    totals.nonFinite += CountNonFinite(block.data(), came);
    writer.Write(block.data(), came);
    log.Progress([&] { return ProgressText(totals.samples, chain.Output()); });
  } while (!chain.AtEnd());
  return totals;
}

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
                      const std::string& more = "") {
  if (nonFinite > 0) {
    log.Warn(
        fmt::format("warning: {}: not finite: {}{}", name, Counted(nonFinite, "sample"), more));
  }
}

void WarnOfOutput(const std::string& name, const Totals& totals, const AudioWriter& writer,
                  Log& log) {
  WarnOfOddSamples(
      name, totals.nonFinite, log,
      writer.Zeroed() > 0 ? fmt::format(" ({} not a number, written as 0)", writer.Zeroed()) : "");
  if (writer.Clipped() > 0) {
    log.Warn(fmt::format("warning: {}: clipped: {} of {}", name, writer.Clipped(),
                         Counted(totals.samples, "sample")));
  }
  if (writer.RateRounded()) {
    log.Warn(
        fmt::format("warning: {}: its sampling rate is rounded to {} Hz", name, writer.Rate()));
  }
}

void ReportChain(const std::vector<FilterCall>& calls, Log& log) {
  for (std::size_t i = 0; i < calls.size(); ++i) {
    log.Report(fmt::format("{}  {}", i == 0 ? "chain" : "     ", calls[i].Text()));
  }
}

}  // namespace

void Run(const RunRequest& request) {
  const auto start = std::chrono::steady_clock::now();
  Log log(request.quiet, ::isatty(STDERR_FILENO) != 0);
  const std::vector<FilterCall> calls = ParseFilters(request.filters);
  const OutputFormat format = ChooseFormat(request.output, request.format, request.encoding);
  const FilterLibrary library(request.library);
  CheckTarget(request.output, request.force,
              request.input == "-" ? IdentityOf(STDIN_FILENO) : IdentityOf(request.input));

  AudioInput input(request.input, request.channel, request.allowTruncated);
  ReportInput(input, log);
  const auto source = Make<RecordingSource>(input);
  ReportChain(calls, log);
  Chain chain(library, wavefilters::Ref<HostSource>::Share(source.Get()), calls, log);
  const auto output = OpenOutput(request.output, request.force);
  AudioWriter writer(output->Descriptor(), output->Name(), format, chain.Output());

  const Totals totals = PullAll(chain, input, writer, log);
  writer.Close();
  log.ClearProgress();
  WarnOfOddSamples(input.Name(), source->NonFinite(), log);
  WarnOfOutput(output->Name(), totals, writer, log);
  output->Commit();

  log.Report(fmt::format("write  {}: {}, {} Hz, {}", output->Name(), format.Text(), writer.Rate(),
                         LengthText(totals.samples, chain.Output().interval_ms)));
  const std::chrono::duration<double> elapsed = std::chrono::steady_clock::now() - start;
  const double seconds = static_cast<double>(input.Length()) / input.Rate();
  log.Report(fmt::format("done   in {:.3f} s, {:.0f} times real time", elapsed.count(),
                         seconds / elapsed.count()));
}

}  // namespace wavechain
