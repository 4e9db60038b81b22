#ifndef WAVEFILTERS_HOST_PLOT_PANELS_H
#define WAVEFILTERS_HOST_PLOT_PANELS_H

#include <memory>
#include <optional>
#include <vector>

#include "host/plot_layout.h"
#include "host/plot_panel.h"
#include "host/plot_subject.h"

namespace wavechain {

/// What makes panels over time of signals.
struct PanelChoices {
  std::optional<double> highest_Hz = {};  // of the spectrograms; by default half the highest rate
  double window_s = 0.015;                // of the spectrograms
  double dynamics_dB = 70.0;              // from the darkest to the brightest
  double finesse = 1.0;                   // cells of a raster for each unit of the picture
};

/// The panels of some signals over one stretch of time: a waveform and a spectrogram for each
/// sound, a track for each measure, and a row of marks for each file of events. Sounds share their
/// scales, so that before and after can be compared.
class PanelMaker {
 public:
  using Subjects = std::vector<std::unique_ptr<PlotSubject>>;

  /// The subjects are not pulled yet; `titles` has one for each.
  PanelMaker(Subjects& plotted, std::vector<std::string> titles, const Range& viewed_s,
             const PanelChoices& panelChoices);

  /// What the layout has to know, in a picture of that width.
  std::vector<PanelPlan> Plans(int pictureWidth) const;
  /// How finely a subject is to be pulled for its panels in that layout.
  PlotSubject::Grid GridOf(std::size_t subject, const Layout& layout) const;
  /// The panels, once all subjects have been pulled.
  std::vector<Panel> Make(const Layout& layout) const;

 private:
  void AddEvents(std::size_t subject, std::vector<Panel>& panels) const;
  std::size_t FirstPanelOf(std::size_t subject) const;
  Panel Start(PanelKind kind, std::size_t subject) const;
  Panel Waveform(std::size_t subject, const Range& amplitudes) const;
  Panel Picture(std::size_t subject, const Box& box, const Range& levels) const;
  Panel Track(std::size_t subject) const;
  Range Amplitudes() const;
  Range Levels() const;

  Subjects& subjects;
  std::vector<std::string> titles;
  Range view_s;
  PanelChoices choices;
  double highest_Hz = 0.0;  // 0 where there is no sound
};

}  // namespace wavechain

#endif
