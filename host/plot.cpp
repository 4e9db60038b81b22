#include "host/plot.h"

#include <unistd.h>

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <memory>

#include "host/audio_input.h"
#include "host/failure.h"
#include "host/host_arguments.h"
#include "host/input_report.h"
#include "host/make.h"
#include "host/output_file.h"
#include "host/plot_drawing.h"
#include "host/plot_panels.h"
#include "host/plot_picture.h"
#include "host/recording_source.h"
#include "host/silent_source.h"
#include "host/text.h"

namespace wavechain {
namespace {

using Subjects = PanelMaker::Subjects;

// A chain to be drawn, and what it is called.
struct NamedChain {
  std::string name;
  std::vector<FilterCall> calls;
};

NamedChain ParseTrack(const std::string& text) {
  const std::size_t equals = text.find('=');
  const std::size_t blank = text.find_first_of(" \t");
  if (equals == std::string::npos || equals == 0 || blank < equals || equals + 1 == text.size()) {
    Fail(ExitStatus::Usage,
         "--track '{}': takes a name and a chain, as in --track \"tip=BeamPel column=6 | FIRFilter "
         "20\"",
         text);
  }
  // A chain is written like a second signal's, without the recording in front.
  return {text.substr(0, equals), ParseSignal("recording |" + text.substr(equals + 1)).filters};
}

// The chains asked for, in the order of the picture: the recording as it is comes first.
std::vector<NamedChain> ParseChains(const PlotRequest& request) {
  std::vector<NamedChain> chains;
  if (!request.silence_s) {
    chains.push_back({request.chain.empty() ? "recording" : "before", {}});
  }
  if (!request.chain.empty()) {
    chains.push_back({"after", ReadChain(request.chain)});
  }
  for (const std::string& text : request.tracks) {
    NamedChain track = ParseTrack(text);
    if (std::ranges::find(chains, track.name, &NamedChain::name) != chains.end()) {
      Fail(ExitStatus::Usage, "--track {}: there are two signals of that name; choose another",
           track.name);
    }
    chains.push_back(std::move(track));
  }
  if (chains.empty()) {
    Fail(ExitStatus::Usage,
         "with --silence there is nothing to draw without a filter; add -f or --track");
  }
  return chains;
}

void CheckNumbers(const PlotRequest& request) {
  const auto require = [](const char* option, double value, double least, double most,
                          const char* what) {
    if (!(value >= least && value <= most)) {
      Fail(ExitStatus::Usage, "{} {}: {}", option, NumberText(value), what);
    }
  };
  require("--window", request.window_ms, 0.1, 1000.0, "takes 0.1 to 1000 ms");
  require("--dynamics", request.dynamics_dB, 1.0, 300.0, "takes 1 to 300 dB");
  require("--max-frequency", request.highest_Hz.value_or(1.0), 1e-3, 1e6,
          "takes 0.001 to 1000000 Hz");
  require("--from", request.from_s.value_or(0.0), 0.0, 1e9, "takes seconds from 0");
  require("--silence", request.silence_s.value_or(1.0), 1e-6, 1e6, "takes seconds above 0");
  require("--rate", request.rate.value_or(1.0), 1.0, 1e6, "a sampling rate is 1 to 1000000 Hz");
  if (request.silence_s.has_value() != request.rate.has_value()) {
    Fail(ExitStatus::Usage, "--silence and --rate go together, as in --silence 2 --rate 16000");
  }
}

// The recordings that are read: no picture may replace one.
void CheckTargets(const PlotRequest& request, const std::vector<FilterCall>& calls) {
  for (const FilterCall& call : calls) {
    if (call.second) {
      CheckTarget(request.output, request.force, IdentityOf(call.second->path));
      CheckTargets(request, call.second->filters);
    }
  }
}

void CheckFiles(const PlotRequest& request, const std::vector<NamedChain>& chains) {
  if (request.input == "-") {
    Fail(ExitStatus::Usage,
         "standard input can be read once, a picture takes several readings; name the recording");
  }
  if (request.layout && request.output == "-") {
    Fail(ExitStatus::Usage, "--layout writes to standard output; name a file for the picture");
  }
  CheckTarget(request.output, request.force,
              request.silence_s ? std::nullopt : IdentityOf(request.input));
  for (const NamedChain& chain : chains) {
    CheckTargets(request, chain.calls);
  }
  for (const ChainPart& part : request.chain) {
    if (part.isFile) {
      CheckTarget(request.output, request.force, IdentityOf(part.text));
    }
  }
}

// Opens what is drawn: each signal is pulled from a reading of its own.
class Readings {
 public:
  Readings(const PlotRequest& plotRequest, Log& reportLog) : request(plotRequest), log(reportLog) {}

  wavefilters::Ref<HostSource> Open() {
    using wavefilters::Ref;
    if (request.silence_s) {
      const double samples = std::round(*request.silence_s * *request.rate);
      return Ref<HostSource>::Adopt(
          Make<SilentSource>(static_cast<std::int64_t>(samples), *request.rate).Detach());
    }
    inputs.push_back(
        std::make_unique<AudioInput>(request.input, request.channel, request.allowTruncated));
    if (inputs.size() == 1) {
      ReportInput(*inputs.front(), log);
    }
    return Ref<HostSource>::Adopt(Make<RecordingSource>(*inputs.back()).Detach());
  }

  void RequireIntact() const {
    for (const auto& input : inputs) {
      input->RequireIntact();
    }
  }

 private:
  const PlotRequest& request;
  Log& log;
  std::vector<std::unique_ptr<AudioInput>> inputs;
};

std::string BaseName(const std::string& path) { return path.substr(path.rfind('/') + 1); }

std::string RateText(const SignalInfo& signal) {
  return fmt::format("{:.10g} Hz", 1000.0 / signal.interval_ms);
}

std::string TitleOf(const PlotSubject& subject, const PlotRequest& request) {
  if (subject.Calls().empty()) {
    return fmt::format("{}{}, {}", subject.Name() == "before" ? "Before: " : "",
                       BaseName(request.input), RateText(subject.Info()));
  }
  const std::string name = subject.Name() != "after" ? subject.Name() + ": "
                           : request.silence_s       ? ""
                                                     : "After: ";
  return fmt::format("{}{}{}", name, subject.ChainText(),
                     subject.IsTrack() ? "" : ", " + RateText(subject.Info()));
}

Range ViewOf(const PlotRequest& request, const Subjects& subjects) {
  double duration_s = 0.0;
  for (const auto& subject : subjects) {
    duration_s = std::max(duration_s, subject->Duration_s());
  }
  if (duration_s <= 0.0) {
    Fail(ExitStatus::Input, "{}: holds no sample; there is nothing to draw", request.input);
  }
  const Range view = {request.from_s.value_or(0.0), request.to_s.value_or(duration_s)};
  if (view.low >= duration_s) {
    Fail(ExitStatus::Usage, "--from {}: the signal ends at {:.3f} s", NumberText(view.low),
         duration_s);
  }
  if (!(view.Width() > 0.0)) {
    Fail(ExitStatus::Usage, "--to {}: lies not behind --from {}", NumberText(view.high),
         NumberText(view.low));
  }
  constexpr double Shortest_s = 1e-5;
  if (!(view.Width() >= Shortest_s && view.high <= 1e9)) {
    Fail(ExitStatus::Usage, "--from {} --to {}: takes a stretch of 0.00001 s or more",
         NumberText(view.low), NumberText(view.high));
  }
  return view;
}

void PullAll(Subjects& subjects, const PanelMaker& maker, const Layout& layout,
             const Readings& readings, unsigned seed, Log& log) {
  for (std::size_t i = 0; i < subjects.size(); ++i) {
    // The library draws noise from the process's generator: each chain is drawn as if alone.
    std::srand(seed);
    subjects[i]->Pull(maker.GridOf(i, layout), [&](double time_s) {
      readings.RequireIntact();
      log.Progress(
          [&] { return fmt::format("{} of {}  {:.1f} s", i + 1, subjects.size(), time_s); });
    });
    WarnOfOddSamples(subjects[i]->Name(), subjects[i]->NonFinite(), log, " (drawn as gaps)");
  }
  log.ClearProgress();
}

}  // namespace

std::string Plot(const PlotRequest& request) {
  Log log(request.quiet, ::isatty(STDERR_FILENO) != 0);
  CheckNumbers(request);
  const std::vector<NamedChain> chains = ParseChains(request);
  const PictureTarget target = {request.output, request.force,
                                ChoosePictureFormat(request.output, request.format)};
  const std::optional<PictureSize> size =
      request.size ? std::optional(ParseSize(*request.size)) : std::nullopt;
  const FilterLibrary library(request.library);
  CheckFiles(request, chains);

  Readings readings(request, log);
  const ChainSettings settings = {
      .data = {request.silence_s ? "" : request.input, request.allowMissing, request.libraryTail},
      .allowTruncated = request.allowTruncated};
  Subjects subjects;
  std::vector<std::string> titles;
  for (const NamedChain& chain : chains) {
    subjects.push_back(std::make_unique<PlotSubject>(chain.name, chain.calls, library,
                                                     readings.Open(), settings, log));
    titles.push_back(TitleOf(*subjects.back(), request));
  }
  PanelMaker maker(
      subjects, titles, ViewOf(request, subjects),
      {request.highest_Hz, 0.001 * request.window_ms, request.dynamics_dB, target.Finesse()});
  const Layout layout = LayOut(maker.Plans(size ? size->width : DefaultWidth), size);
  PullAll(subjects, maker, layout, readings, request.seed, log);
  const std::vector<Panel> panels = maker.Make(layout);
  WritePicture(target, titles.front(), panels, layout, log);
  return request.layout ? DescribeLayout(panels, layout) : "";
}

}  // namespace wavechain
