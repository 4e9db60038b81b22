#include "host/plot.h"

#include <unistd.h>

#include <algorithm>
#include <cstdlib>
#include <iterator>
#include <memory>
#include <utility>

#include "host/failure.h"
#include "host/input_report.h"
#include "host/output_file.h"
#include "host/plot_canvas.h"
#include "host/plot_chains.h"
#include "host/plot_drawing.h"
#include "host/plot_panels.h"
#include "host/plot_picture.h"
#include "host/plot_record.h"
#include "host/plot_response.h"
#include "host/run_input.h"
#include "host/run_steps.h"
#include "host/text.h"

namespace wavechain {
namespace {

using Subjects = PanelMaker::Subjects;

// The signals to be drawn from top to bottom: the recording as it is comes first.
std::vector<NamedChain> ParseSignals(const PlotRequest& request) {
  std::vector<NamedChain> chains = ParseChains(request);
  if (!request.silence_s) {
    chains.insert(chains.begin(), {request.chain.empty() ? "recording" : "before", {}});
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
  require("--silence", request.silence_s.value_or(1.0), 1e-6, 1e6,
          "takes seconds above 0, up to 1000000");
  require("--rate", request.rate.value_or(1.0), 1.0, 1e6, "a sampling rate is 1 to 1000000 Hz");
  if (request.phase && !request.response) {
    Fail(ExitStatus::Usage, "--phase goes with --response");
  }
}

// Opens what is drawn: each signal is pulled from a reading of its own.
class Readings {
 public:
  Readings(const PlotRequest& plotRequest, Log& log) : request(AsRunRequest(plotRequest)) {
    CheckInput(request);
    inputs.push_back(std::make_unique<RunInput>(request));
    ReportInput(*inputs.front(), log);
  }

  wavefilters::Ref<HostSource> Open() {
    if (std::exchange(isFirstTaken, true)) {
      inputs.push_back(std::make_unique<RunInput>(request, *inputs.front()));
    }
    return wavefilters::Ref<HostSource>::Share(inputs.back()->Source());
  }

  // The recording; null for silence.
  const AudioInput* File() const { return inputs.front()->File(); }

  void RequireIntact() const {
    for (const auto& input : inputs) {
      input->RequireIntact();
    }
  }

 private:
  RunRequest request;
  std::vector<std::unique_ptr<RunInput>> inputs;
  bool isFirstTaken = false;
};

// The recording's name, whatever it is called by now.
const std::string& KnownInput(const PlotRequest& request) {
  return request.recorded ? request.recorded->input : request.input;
}

std::string BaseName(const std::string& path) {
  return path == "-" ? "standard input" : path.substr(path.rfind('/') + 1);
}

std::string RateText(const SignalInfo& signal) {
  return fmt::format("{:.10g} Hz", 1000.0 / signal.interval_ms);
}

std::string TitleOf(const PlotSubject& subject, const PlotRequest& request) {
  if (subject.Calls().empty()) {
    return fmt::format("{}{}, {}", subject.Name() == "before" ? "Before: " : "",
                       BaseName(KnownInput(request)), RateText(subject.Info()));
  }
  const std::string name = subject.Name() != MainChain ? subject.Name() + ": "
                           : request.silence_s         ? ""
                                                       : "After: ";
  return fmt::format("{}{}{}", name, ChainText(subject.Calls()),
                     subject.IsTrack() ? "" : ", " + RateText(subject.Info()));
}

Range ViewOf(const PlotRequest& request, const Subjects& subjects) {
  double duration_s = 0.0;
  for (const auto& subject : subjects) {
    duration_s = std::max(duration_s, subject->Duration_s());
  }
  if (duration_s <= 0.0) {
    Fail(ExitStatus::Input, "{}: holds no sample; there is nothing to draw",
         BaseName(request.input));
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

std::string RecordOfSubjects(const PlotRequest& request, const PictureTarget& target,
                             const FilterLibrary& library, const AudioInput* file,
                             const Subjects& subjects) {
  std::vector<TrackRecord> drawn;
  std::vector<std::string> files;
  for (const auto& subject : subjects) {
    if (!subject->Calls().empty()) {
      drawn.push_back(DrawnChain(subject->Name(), subject->Calls(), subject->Info()));
      std::ranges::move(subject->Files(), std::back_inserter(files));
    }
  }
  return PictureRecordText(request, target, library, file, drawn, files);
}

}  // namespace

std::string Plot(const PlotRequest& request) {
  CheckNumbers(request);
  if (request.response) {
    return PlotResponse(request);
  }
  Drawing drawing;
  Log log(request.quiet, ::isatty(STDERR_FILENO) != 0);
  const std::vector<NamedChain> chains = ParseSignals(request);
  const PictureTarget target = TargetOf(request);
  const std::optional<PictureSize> size =
      request.size ? std::optional(ParseSize(*request.size)) : std::nullopt;
  const FilterLibrary library(request.library);
  CheckPictureTarget(request, chains);

  Readings readings(request, log);
  const std::string& known = KnownInput(request);
  const std::string beside = request.silence_s || known == "-" ? "" : known;
  const ChainSettings settings = {.data = {beside, request.allowMissing, request.libraryTail},
                                  .allowTruncated = request.allowTruncated};
  Subjects subjects;
  std::vector<std::string> titles;
  for (const NamedChain& chain : chains) {
    subjects.push_back(std::make_unique<PlotSubject>(chain.name, chain.calls, library,
                                                     readings.Open(), settings, log));
    RequireNotRead(request.output, subjects.back()->Files());
    titles.push_back(TitleOf(*subjects.back(), request));
  }
  PanelMaker maker(
      subjects, titles, ViewOf(request, subjects),
      {request.highest_Hz, 0.001 * request.window_ms, request.dynamics_dB, target.Finesse()});
  const Layout layout = LayOut(maker.Plans(size ? size->width : DefaultWidth), size);
  PullAll(subjects, maker, layout, readings, request.seed, log);
  const std::vector<Panel> panels = maker.Make(layout);
  // Behind the picture there is nothing to fail.
  std::string described = request.layout ? DescribeLayout(panels, layout) : "";
  WritePicture(drawing, target, titles.front(), panels, layout,
               RecordOfSubjects(request, target, library, readings.File(), subjects), log);
  return described;
}

}  // namespace wavechain
