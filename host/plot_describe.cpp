#include <nlohmann/json.hpp>

#include "host/plot_drawing.h"
#include "host/plot_label.h"

namespace wavechain {
namespace {

using Json = nlohmann::ordered_json;

Json AxisJson(const Axis& axis) {
  return {{"label", ValidUtf8(axis.label)},
          {"unit", axis.unit},
          {"low", axis.range.low},
          {"high", axis.range.high}};
}

Json PanelJson(const Panel& panel, const Box& box) {
  Json json = {{"name", ValidUtf8(panel.name)},
               {"kind", NameOf(panel.kind)},
               {"title", ValidUtf8(panel.title)},
               {"plot", {{"x", box.x}, {"y", box.y}, {"width", box.width}, {"height", box.height}}},
               {"x_axis", AxisJson(panel.x)},
               {"y_axis", AxisJson(panel.y)}};
  if (panel.colours) {
    json["colours"] = AxisJson(panel.colours->levels);
  }
  json["gaps"] = Json::array();
  for (const Range& gap : panel.gaps) {
    json["gaps"].push_back({gap.low, gap.high});
  }
  json["marks"] = panel.marks;
  return json;
}

}  // namespace

std::string_view NameOf(PanelKind kind) {
  switch (kind) {
    case PanelKind::Waveform:
      return "waveform";
    case PanelKind::Spectrogram:
      return "spectrogram";
    case PanelKind::Events:
      return "events";
    case PanelKind::Response:
      return "response";
    case PanelKind::Track:
      break;
  }
  return "track";
}

std::string DescribeLayout(const std::vector<Panel>& panels, const Layout& layout) {
  Json json = {{"width", layout.size.width}, {"height", layout.size.height}};
  json["panels"] = Json::array();
  for (std::size_t i = 0; i < panels.size(); ++i) {
    json["panels"].push_back(PanelJson(panels[i], layout.plots[i]));
  }
  return json.dump(2) + "\n";
}

}  // namespace wavechain
