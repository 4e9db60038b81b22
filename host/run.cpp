#include "host/run.h"

#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <cmath>
#include <cstdlib>
#include <memory>

#include "host/audio_writer.h"
#include "host/chain.h"
#include "host/failure.h"
#include "host/input_report.h"
#include "host/interrupt.h"
#include "host/output_file.h"
#include "host/recording_source.h"
#include "host/run_input.h"
#include "host/run_record.h"
#include "host/run_steps.h"
#include "host/signal_writer.h"
#include "host/text.h"
#include "host/track_run.h"

namespace wavechain {
namespace {

std::string ProgressText(std::int64_t samples, const SignalInfo& signal) {
  const double seconds = 0.001 * signal.interval_ms * static_cast<double>(samples);
  const double percent =
      signal.length > 0 ? 100.0 * static_cast<double>(samples) / static_cast<double>(signal.length)
                        : 100.0;
  return fmt::format("{:5.1f} %  {:.1f} s", percent, seconds);
}

SignalTotals PullAll(Chain& chain, const RunInput& input, SignalWriter& writer, Log& log) {
  std::vector<float> block(BlockSamples);
  SignalTotals totals;
  // Asked before it is looked for an end: on an empty recording filters still report.
  do {
    StopIfInterrupted();
    const int came = chain.Pull(block.data(), BlockSamples);
    input.RequireIntact();
    totals.Add(block.data(), came);
    writer.Write(block.data(), came);
    log.Progress([&] { return ProgressText(totals.samples, chain.Output()); });
  } while (!chain.AtEnd());
  return totals;
}

void WarnOfOutput(const std::string& name, const SignalTotals& totals, const SignalWriter& writer,
                  Log& log) {
  WarnOfOddSamples(
      name, totals.NonFinite(), log,
      writer.Zeroed() > 0 ? fmt::format(" ({} not a number, written as 0)", writer.Zeroed()) : "");
  if (writer.Clipped() > 0) {
    log.Warn(fmt::format("warning: {}: clipped: {} of {}", name, writer.Clipped(),
                         Counted(totals.samples, "sample")));
  }
  if (writer.RateRounded()) {
    log.Warn(fmt::format("warning: {}: its sampling rate is rounded to {} Hz", name,
                         NumberText(writer.Rate())));
  }
}

// What a reader of the file has to know and no field of it says.
std::string Comment(const std::vector<FilterCall>& calls, const SignalInfo& signal) {
  std::string comment;
  if (!signal.units.empty()) {
    comment = fmt::format("unit {}, full scale {}", signal.units, NumberText(signal.fullScale));
  }
  const bool hasEvents = std::ranges::any_of(calls, [](const FilterCall& call) {
    return call.kind->trackDriven && call.kind->outputScale == nullptr;
  });
  if (hasEvents) {
    // The last pulse of a voice lasts to the end of the block that it is rendered in.
    comment += fmt::format("{}blocks of {} samples", comment.empty() ? "" : "; ", BlockSamples);
  }
  return comment;
}

RunResult RunChain(const RunRequest& request, const std::vector<FilterCall>& calls,
                   const FilterLibrary& library, Log& log) {
  const auto start = std::chrono::steady_clock::now();
  // Who sends raw samples through a pipe expects the like of them.
  const bool rawThrough = request.type && request.output == "-" && !request.format;
  const OutputFormat format =
      ChooseFormat(request.output, rawThrough ? request.type : request.format, request.encoding);
  CheckInput(request);
  CheckTargets(request, calls);
  for (const ChainPart& part : request.chain) {
    if (part.isFile) {
      CheckTarget(request.output, request.force, IdentityOf(part.text));
    }
  }

  const RunInput input(request);
  ReportInput(input, log);
  ReportChain(calls, "chain", log);
  Chain chain(library, wavefilters::Ref<HostSource>::Share(input.Source()), calls,
              SettingsOf(request), log);
  RequireNotRead(request.output, chain.Files());
  if (format.IsSound()) {
    // Now: a record takes a hash of the input, which takes its time where there is no room for it.
    RequireRoom(TargetName(request.output), format, chain.Output().length);
  }
  std::optional<Provenance> provenance;
  if (!request.noRecord) {
    provenance = RecordOf(request, format, library, input.File());
    RecordChain(calls, chain, *provenance);
    if (IsUpToDate(request, *provenance)) {
      return {.upToDate = true};
    }
  }
  const auto output = OpenOutput(request.output, request.force);
  const std::string words = Comment(calls, chain.Output());
  RecordKeeper record =
      provenance ? RecordKeeper(request, format, *provenance, words) : RecordKeeper(words);
  const auto writer =
      MakeWriter(output->Descriptor(), output->Name(), format, chain.Output(),
                 request.noValidity ? std::nullopt : chain.Missing(), record.Comment());

  // The library draws noise from the process's generator: so every run repeats.
  std::srand(request.seed);
  const SignalTotals totals = PullAll(chain, input, *writer, log);
  writer->Close();
  log.ClearProgress();
  WarnOfOddSamples(input.Name(), input.NonFinite(), log);
  chain.WarnOfInputs();
  WarnOfOutput(output->Name(), totals, *writer, log);
  ReportMissing(chain, "", totals.samples, log);
  record.CommitWith(*output, format, log);

  Mention(log, [&] {
    return fmt::format("write  {}: {}, {} Hz, {}", output->Name(), format.Text(),
                       NumberText(writer->Rate()),
                       LengthText(totals.samples, chain.Output().interval_ms));
  });
  ReportSpeed(start, input, log);
  return {.totals = totals};
}

}  // namespace

ChainSet ReadChains(const RunRequest& request) {
  ChainSet chains;
  if (request.tracks.empty()) {
    chains.chain = ReadChain(request.chain);
  } else {
    chains.tracks = ReadTracks(request);
  }
  return chains;
}

void Run(const RunRequest& request) {
  Log log(request.quiet, ::isatty(STDERR_FILENO) != 0);
  const ChainSet chains = ReadChains(request);
  const FilterLibrary library(request.library);
  Run(request, chains, library, log);
}

RunResult Run(const RunRequest& request, const ChainSet& chains, const FilterLibrary& library,
              Log& log) {
  return request.tracks.empty() ? RunChain(request, chains.chain, library, log)
                                : RunTracks(request, chains.tracks, library, log);
}

}  // namespace wavechain
