#include "host/plot_layout.h"

#include <algorithm>

#include "host/failure.h"
#include "host/text.h"

namespace wavechain {
namespace {

// Numbers and name of the y axis stand to the left, the colour scale to the right.
constexpr int LeftMargin = 84;
constexpr int RightMargin = 92;
constexpr int PlainRightMargin = 28;
constexpr int TopMargin = 12;
constexpr int BottomMargin = 50;  // numbers and name of the x axis
constexpr int TitleGap = 6;       // between a title and its panel
constexpr int GroupGap = 18;      // above a title
constexpr int PairGap = 14;       // between panels that go together
constexpr int LeastHeight = 12;
constexpr int LeastWidth = 120;

int NaturalHeight(PanelKind kind) {
  switch (kind) {
    case PanelKind::Waveform:
      return 96;
    case PanelKind::Spectrogram:
      return 200;
    case PanelKind::Events:
      return 22;
    case PanelKind::Response:
      return 320;
    case PanelKind::Track:
      break;
  }
  return 120;
}

int SpaceAbove(const PanelPlan& panel, bool isFirst) {
  const int title = panel.titleLines > 0 ? panel.titleLines * TitleLineHeight + TitleGap : 0;
  const int gap = panel.titleLines > 0 ? GroupGap : PairGap;
  return title + (isFirst ? TopMargin : gap);
}

}  // namespace

PictureSize ParseSize(std::string_view text) {
  const std::size_t cross = text.find('x');
  const auto side = [&](std::string_view digits) {
    const std::optional<double> number = ParseNumber(digits);
    if (!number || *number < 200.0 || *number > 10000.0 ||
        *number != static_cast<double>(static_cast<int>(*number))) {
      Fail(ExitStatus::Usage,
           "--size {}: takes width and height from 200 to 10000, as in --size 1200x800", text);
    }
    return static_cast<int>(*number);
  };
  return {side(text.substr(0, cross)),
          side(cross == std::string_view::npos ? "" : text.substr(cross + 1))};
}

int PlotWidth(int pictureWidth, bool hasSpectrogram) {
  const int right = hasSpectrogram ? RightMargin : PlainRightMargin;
  return std::max(pictureWidth - LeftMargin - right, 1);
}

Layout LayOut(const std::vector<PanelPlan>& panels, const std::optional<PictureSize>& wanted) {
  int fixed = BottomMargin;
  int natural = 0;
  for (const PanelPlan& panel : panels) {
    fixed += SpaceAbove(panel, &panel == panels.data());
    natural += NaturalHeight(panel.kind);
  }
  const bool hasSpectrogram =
      std::ranges::find(panels, PanelKind::Spectrogram, &PanelPlan::kind) != panels.end();
  const PictureSize size = wanted.value_or(PictureSize{DefaultWidth, fixed + natural});
  const double stretch = static_cast<double>(size.height - fixed) / natural;
  const int width = PlotWidth(size.width, hasSpectrogram);
  Layout layout = {.size = size};
  int y = 0;
  for (const PanelPlan& panel : panels) {
    y += SpaceAbove(panel, &panel == panels.data());
    const int height = static_cast<int>(stretch * NaturalHeight(panel.kind));
    if (height < LeastHeight || width < LeastWidth) {
      Fail(ExitStatus::Usage,
           "--size {}x{}: too small for {}; {}x{} is what they take by themselves", size.width,
           size.height, Counted(static_cast<long long>(panels.size()), "panel"), DefaultWidth,
           fixed + natural);
    }
    layout.plots.push_back({LeftMargin, y, width, height});
    y += height;
  }
  return layout;
}

}  // namespace wavechain
