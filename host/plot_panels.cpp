#include "host/plot_panels.h"

#include <algorithm>
#include <cmath>

#include "host/plot_drawing.h"
#include "host/plot_label.h"

namespace wavechain {
namespace {

int Cells(int length, double finesse) {
  return std::max(static_cast<int>(std::lround(length * finesse)), 1);
}

Curve LineOf(const PlotSubject& subject, Colour colour) {
  return {.colour = colour, .pieces = subject.Line().Pieces()};
}

}  // namespace

PanelMaker::PanelMaker(Subjects& plotted, std::vector<std::string> panelTitles,
                       const Range& viewed_s, const PanelChoices& panelChoices)
    : subjects(plotted), titles(std::move(panelTitles)), view_s(viewed_s), choices(panelChoices) {
  for (const auto& subject : subjects) {
    if (!subject->IsTrack()) {
      highest_Hz = std::max(highest_Hz, 500.0 / subject->Info().interval_ms);
    }
  }
  if (highest_Hz > 0.0) {
    highest_Hz = choices.highest_Hz.value_or(highest_Hz);
  }
}

std::vector<PanelPlan> PanelMaker::Plans(int pictureWidth) const {
  const int plotWidth = PlotWidth(pictureWidth, highest_Hz > 0.0);
  std::vector<PanelPlan> plans;
  for (std::size_t i = 0; i < subjects.size(); ++i) {
    const auto lines = static_cast<int>(TitleLines(titles[i], plotWidth).size());
    if (subjects[i]->IsTrack()) {
      plans.push_back({PanelKind::Track, lines});
    } else {
      plans.push_back({PanelKind::Waveform, lines});
      plans.push_back({PanelKind::Spectrogram, 0});
    }
    plans.insert(plans.end(), subjects[i]->Events().size(), {PanelKind::Events, 0});
  }
  return plans;
}

std::size_t PanelMaker::FirstPanelOf(std::size_t subject) const {
  std::size_t panel = 0;
  for (std::size_t i = 0; i < subject; ++i) {
    panel += (subjects[i]->IsTrack() ? 1 : 2) + subjects[i]->Events().size();
  }
  return panel;
}

PlotSubject::Grid PanelMaker::GridOf(std::size_t subject, const Layout& layout) const {
  const std::size_t panel = FirstPanelOf(subject);
  PlotSubject::Grid grid = {.view_s = view_s,
                            .columns = Cells(layout.plots[panel].width, choices.finesse)};
  if (!subjects[subject]->IsTrack()) {
    grid.spectrogram = {.view_s = view_s,
                        .columns = grid.columns,
                        .highest_Hz = highest_Hz,
                        .rows = Cells(layout.plots[panel + 1].height, choices.finesse),
                        .window_s = choices.window_s};
  }
  return grid;
}

std::vector<Panel> PanelMaker::Make(const Layout& layout) const {
  const Range amplitudes = Amplitudes();
  const Range levels = Levels();
  std::vector<Panel> panels;
  for (std::size_t i = 0; i < subjects.size(); ++i) {
    if (subjects[i]->IsTrack()) {
      panels.push_back(Track(i));
    } else {
      panels.push_back(Waveform(i, amplitudes));
      panels.push_back(Picture(i, layout.plots[panels.size()], levels));
    }
    AddEvents(i, panels);
  }
  return panels;
}

Range PanelMaker::Amplitudes() const {
  std::optional<Range> all;
  for (const auto& subject : subjects) {
    if (!subject->IsTrack()) {
      all = Joined(all, subject->Line().Values());
    }
  }
  return Symmetrical(all);
}

Range PanelMaker::Levels() const {
  constexpr double Round_dB = 5.0;
  double highest = -200.0;
  for (const auto& subject : subjects) {
    if (subject->Spectra()) {
      highest = std::max(highest, subject->Spectra()->Greatest().value_or(highest));
    }
  }
  const double top = highest > -200.0 ? Round_dB * std::ceil(highest / Round_dB) : 0.0;
  return {top - choices.dynamics_dB, top};
}

Panel PanelMaker::Start(PanelKind kind, std::size_t subject) const {
  Panel panel;
  panel.kind = kind;
  panel.name = subjects[subject]->Name();
  panel.x = {"time", "s", view_s};
  return panel;
}

Panel PanelMaker::Waveform(std::size_t subject, const Range& amplitudes) const {
  Panel panel = Start(PanelKind::Waveform, subject);
  panel.title = titles[subject];
  panel.y = {"amplitude", "", amplitudes};
  panel.curves.push_back(LineOf(*subjects[subject], LineColour(0)));
  panel.gaps = subjects[subject]->Line().Gaps();
  return panel;
}

void PanelMaker::AddEvents(std::size_t subject, std::vector<Panel>& panels) const {
  for (const EventInstants& events : subjects[subject]->Events()) {
    Panel panel = Start(PanelKind::Events, subject);
    panel.name += " " + events.word + "s";
    panel.y = {events.word + "s", "", {}};
    for (const double instant_ms : events.instants_ms) {
      const double instant_s = 0.001 * instant_ms;
      if (instant_s >= view_s.low && instant_s <= view_s.high) {
        panel.marks.push_back(instant_s);
      }
    }
    panels.push_back(std::move(panel));
  }
}

Panel PanelMaker::Track(std::size_t subject) const {
  const Trace& line = subjects[subject]->Line();
  Panel panel = Start(PanelKind::Track, subject);
  panel.title = titles[subject];
  panel.y = {PrintedUnit(subjects[subject]->Info().units), "", Padded(line.Values())};
  panel.curves.push_back(LineOf(*subjects[subject], LineColour(subject)));
  panel.gaps = line.Gaps();
  panel.note = line.Values() ? "" : "no data here";
  return panel;
}

Panel PanelMaker::Picture(std::size_t subject, const Box& box, const Range& levels) const {
  const Spectrogram& spectra = *subjects[subject]->Spectra();
  Panel panel = Start(PanelKind::Spectrogram, subject);
  const bool inKilohertz = highest_Hz >= 2000.0;
  panel.y = {"frequency",
             inKilohertz ? "kHz" : "Hz",
             {0.0, inKilohertz ? 0.001 * highest_Hz : highest_Hz}};
  Raster raster = {.columns = Cells(box.width, choices.finesse),
                   .rows = Cells(box.height, choices.finesse)};
  for (int row = raster.rows - 1; row >= 0; --row) {
    for (int column = 0; column < raster.columns; ++column) {
      const std::optional<double> level = spectra.Level(column, row);
      raster.cells.push_back(level ? Viridis((*level - levels.low) / levels.Width()) : GapColour);
    }
  }
  panel.raster = std::move(raster);
  panel.colours = ColourScale{{"level", "dB", levels}};
  return panel;
}

}  // namespace wavechain
