#include <nlohmann/json.hpp>
#include <utility>

#include "host/plot_drawing.h"
#include "host/plot_label.h"

namespace wavechain {
namespace {

using Json = nlohmann::ordered_json;

// Objects are made member by member here: a list in braces whose memory runs out half-way is lost.

Json AxisJson(const Axis& axis) {
  Json json = Json::object();
  json["label"] = ValidUtf8(axis.label);
  json["unit"] = axis.unit;
  json["low"] = axis.range.low;
  json["high"] = axis.range.high;
  return json;
}

Json BoxJson(const Box& box) {
  Json json = Json::object();
  json["x"] = box.x;
  json["y"] = box.y;
  json["width"] = box.width;
  json["height"] = box.height;
  return json;
}

Json PanelJson(const Panel& panel, const Box& box) {
  Json json = Json::object();
  json["name"] = ValidUtf8(panel.name);
  json["kind"] = NameOf(panel.kind);
  json["title"] = ValidUtf8(panel.title);
  json["plot"] = BoxJson(box);
  json["x_axis"] = AxisJson(panel.x);
  json["y_axis"] = AxisJson(panel.y);
  if (panel.colours) {
    json["colours"] = AxisJson(panel.colours->levels);
  }
  json["gaps"] = Json::array();
  for (const Range& gap : panel.gaps) {
    Json ends = Json::array();
    ends.push_back(gap.low);
    ends.push_back(gap.high);
    json["gaps"].push_back(std::move(ends));
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
  Json json = Json::object();
  json["width"] = layout.size.width;
  json["height"] = layout.size.height;
  json["panels"] = Json::array();
  for (std::size_t i = 0; i < panels.size(); ++i) {
    json["panels"].push_back(PanelJson(panels[i], layout.plots[i]));
  }
  return json.dump(2) + "\n";
}

}  // namespace wavechain
