#include "host/plot_subject.h"

#include "host/interrupt.h"
#include "host/recording_source.h"

namespace wavechain {
namespace {

// As in a run: some results depend on it.
constexpr int BlockSamples = 4096;

}  // namespace

PlotSubject::PlotSubject(std::string subjectName, std::vector<FilterCall> filterCalls,
                         const FilterLibrary& library, wavefilters::Ref<HostSource> source,
                         const ChainSettings& settings, Log& log)
    : name(std::move(subjectName)), calls(std::move(filterCalls)) {
  chain = std::make_unique<Chain>(library, std::move(source), calls, settings, log);
  events = chain->Events();
}

double PlotSubject::Duration_s() const {
  return 0.001 * Info().interval_ms * static_cast<double>(Info().length);
}

void PlotSubject::AddToLine(const std::vector<float>& block, int count, std::int64_t start) {
  const double interval_s = 0.001 * Info().interval_ms;
  std::vector<unsigned char> valid(static_cast<std::size_t>(count), 1);
  if (chain->Missing()) {
    chain->Missing()->Mark(start, valid);
  }
  for (std::size_t i = 0; i < valid.size(); ++i) {
    const auto at = static_cast<double>(start + static_cast<std::int64_t>(i));
    trace->Add(at * interval_s, block[i], valid[i] == 0);
  }
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
    AddToLine(block, came, at);
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
