#include "host/plot_subject.h"

#include <fmt/format.h>

#include <algorithm>

#include "host/interrupt.h"
#include "host/recording_source.h"
#include "host/text.h"

namespace wavechain {
namespace {

// As in a run: some results depend on it.
constexpr int BlockSamples = 4096;

// The call for human readers: what was given, values by their names, or everything where
// nothing was.
std::string CallText(const FilterCall& call) {
  std::string text(call.kind->name);
  const auto handed = static_cast<std::size_t>(call.handed);
  const std::size_t shown = handed == 0 && !call.conversion ? call.values.size() : handed;
  for (std::size_t i = 0; i < shown; ++i) {
    const Parameter& parameter = call.kind->parameters[i];
    const auto name = std::ranges::find(parameter.names, call.values[i], &NamedValue::value);
    text += fmt::format(
        " {}={}", parameter.name,
        name == parameter.names.end() ? NumberText(call.values[i]) : std::string(name->name));
  }
  for (const auto& [name, value] : call.hostValues) {
    const bool isFile = std::ranges::find(call.kind->dataFiles, std::string_view(name),
                                          &DataFile::argument) != call.kind->dataFiles.end();
    text += fmt::format(" {}={}", name, isFile ? value.substr(value.rfind('/') + 1) : value);
  }
  return text;
}

}  // namespace

PlotSubject::PlotSubject(std::string subjectName, std::vector<FilterCall> filterCalls,
                         const FilterLibrary& library, wavefilters::Ref<HostSource> source,
                         const ChainSettings& settings, Log& log)
    : name(std::move(subjectName)), calls(std::move(filterCalls)) {
  chain = std::make_unique<Chain>(library, std::move(source), calls, settings, log);
}

double PlotSubject::Duration_s() const {
  return 0.001 * Info().interval_ms * static_cast<double>(Info().length);
}

std::string PlotSubject::ChainText() const {
  std::string text;
  for (const FilterCall& call : calls) {
    text += (text.empty() ? "" : " \xe2\x86\x92 ") + CallText(call);
  }
  return text;
}

void PlotSubject::Pull(const Grid& grid, const std::function<void(double time_s)>& afterBlock) {
  const double interval_s = 0.001 * Info().interval_ms;
  trace.emplace(grid.view_s, grid.columns);
  double enough_s = grid.view_s.high + interval_s;
  if (grid.spectrogram) {
    spectrogram.emplace(*grid.spectrogram, interval_s);
    enough_s += grid.spectrogram->window_s;
  }
  std::vector<float> block(BlockSamples);
  std::int64_t at = 0;
  double time_s = 0.0;
  do {
    StopIfInterrupted();
    const int came = chain->Pull(block.data(), BlockSamples);
    nonFinite += CountNonFinite(block.data(), came);
    for (int i = 0; i < came; ++i) {
      trace->Add(static_cast<double>(at + i) * interval_s, block[static_cast<std::size_t>(i)],
                 false);
    }
    if (spectrogram) {
      spectrogram->Add(block.data(), came);
    }
    at += came;
    time_s = static_cast<double>(at) * interval_s;
    afterBlock(time_s);
  } while (!chain->AtEnd() && time_s <= enough_s);
  trace->Finish(interval_s);
  if (spectrogram) {
    spectrogram->Finish();
  }
}

}  // namespace wavechain
