#include "host/check_report.h"

#include <fmt/format.h>

#include <nlohmann/json.hpp>

#include "host/failure.h"
#include "host/input_report.h"
#include "host/second_signal.h"
#include "host/text.h"

namespace wavechain {
namespace {

using Json = nlohmann::ordered_json;

CheckedSignal SecondOf(const ChainStep& step) {
  const AudioInput& recording = step.second->Recording();
  return {&recording, step.second->Source(), step.second->Steps()};
}

std::string NumberOf(const ChainStep& step) {
  return step.stage == 0 ? fmt::format("filter {}", step.number)
                         : fmt::format("filter {}, stage {}", step.number, step.stage);
}

// The interval of a whole rate is not exact.
std::string RateText(const SignalInfo& info) {
  return fmt::format("{:.10g} Hz", 1000.0 / info.interval_ms);
}

std::string UnitText(const SignalInfo& info) {
  return info.units.empty() ? "sample values" : info.units;
}

std::string SignalText(const SignalInfo& info) {
  return fmt::format("{}; {}, one every {:.10g} ms; {}, full scale {}",
                     LengthText(info.length, info.interval_ms), RateText(info), info.interval_ms,
                     UnitText(info), NumberText(info.fullScale));
}

// What the library says of it, where that is something else.
std::string LibraryText(const ChainStep& step) {
  const SignalInfo& own = step.delivered;
  if (step.libraryUnits == own.units && step.libraryFullScale == own.fullScale) {
    return "";
  }
  return fmt::format(" (the library says {}, {})",
                     step.libraryUnits.empty() ? "nothing" : step.libraryUnits,
                     NumberText(step.libraryFullScale));
}

std::string RecordingText(const CheckedSignal& signal) {
  if (signal.recording == nullptr) {
    return "silence";
  }
  const AudioInput& file = *signal.recording;
  return fmt::format("{}: {}, channel {} of {}", OneLine(file.Name()), OneLine(file.FormatText()),
                     file.Channel(), file.Channels());
}

void AddText(const CheckedSignal& signal, const std::string& name, const std::string& indent,
             std::string& text) {
  const auto line = [&](const std::string& content) { text += indent + content + "\n"; };
  line(fmt::format("{}: {}", name, RecordingText(signal)));
  line("  " + SignalText(signal.info));
  for (const ChainStep& step : signal.steps) {
    line(fmt::format("{}: {}", NumberOf(step), OneLine(step.call.Text())));
    if (step.second != nullptr) {
      AddText(SecondOf(step), "with", indent + "  ", text);
    }
    for (const LogLine& note : step.notes) {
      line("  " + note.text);
    }
    if (step.missing.value_or(0) > 0) {
      line(fmt::format("  gaps   {} of {} have no data behind them and are no measurement",
                       *step.missing, Counted(step.delivered.length, "sample")));
    }
    line("  " + SignalText(step.delivered) + LibraryText(step));
  }
}

Json InfoJson(const SignalInfo& info) {
  Json json = Json::object();
  json["samples"] = info.length;
  json["seconds"] = 0.001 * info.interval_ms * static_cast<double>(info.length);
  json["interval_ms"] = info.interval_ms;
  json["rate"] = 1000.0 / info.interval_ms;
  json["unit"] = info.units;
  json["full_scale"] = info.fullScale;
  return json;
}

Json RecordingJson(const CheckedSignal& signal) {
  Json json = Json::object();
  const AudioInput* file = signal.recording;
  json["recording"] = file == nullptr ? Json(nullptr) : Json(file->Name());
  json["format"] = file == nullptr ? Json(nullptr) : Json(file->FormatText());
  json["channel"] = file == nullptr ? Json(nullptr) : Json(file->Channel());
  json["channels"] = file == nullptr ? Json(nullptr) : Json(file->Channels());
  json.update(InfoJson(signal.info));
  return json;
}

// The line without its first word, if it begins with that.
std::string Behind(std::string_view start, const std::string& line) {
  return line.starts_with(start) ? line.substr(start.size()) : line;
}

Json SignalJson(const CheckedSignal& signal);

Json StepJson(const ChainStep& step) {
  Json json = Json::object();
  json["filter"] = step.number;
  json["stage"] = step.stage == 0 ? Json(nullptr) : Json(step.stage);
  json["kind"] = step.call.kind->name;
  json["parameters"] = Json::object();
  for (std::size_t i = 0; i < step.call.values.size(); ++i) {
    json["parameters"][std::string(step.call.kind->parameters[i].name)] = step.call.values[i];
  }
  json["arguments"] = Json::object();
  for (const auto& [name, value] : step.call.hostValues) {
    json["arguments"][name] = value;
  }
  json["with"] = step.second == nullptr ? Json(nullptr) : SignalJson(SecondOf(step));
  json["data"] = Json::array();
  json["warnings"] = Json::array();
  for (const LogLine& note : step.notes) {
    json[note.isWarning ? "warnings" : "data"].push_back(
        Behind(note.isWarning ? "warning: " : "data   ", note.text));
  }
  json["missing_samples"] = step.missing ? Json(*step.missing) : Json(nullptr);
  json["output"] = InfoJson(step.delivered);
  json["output"]["library_unit"] = step.libraryUnits;
  json["output"]["library_full_scale"] = step.libraryFullScale;
  return json;
}

Json SignalJson(const CheckedSignal& signal) {
  Json json = Json::object();
  json["input"] = RecordingJson(signal);
  json["filters"] = Json::array();
  for (const ChainStep& step : signal.steps) {
    json["filters"].push_back(StepJson(step));
  }
  json["output"] = InfoJson(signal.steps.empty() ? signal.info : signal.steps.back().delivered);
  return json;
}

// A text in Graphviz's quotes; a line break is left to it.
std::string Quoted(const std::string& text) {
  std::string quoted;
  for (const char c : text) {
    quoted += c == '"' || c == '\\' ? std::string{'\\', c} : c == '\n' ? "\\n" : std::string{c};
  }
  return '"' + quoted + '"';
}

class DotWriter {
 public:
  std::string Write(const CheckedSignal& signal) {
    const End end = Add(signal);
    Node("output", "shape=plaintext");
    Edge(end);
    return "digraph chain {\n  rankdir=LR;\n  node [shape=box];\n" + text + "}\n";
  }

 private:
  struct End {
    int node = 0;
    SignalInfo info = {};
  };

  void Node(const std::string& label, const std::string& more = "") {
    text += fmt::format("  n{} [label={}{}{}];\n", ++nodes, Quoted(label), more.empty() ? "" : ", ",
                        more);
  }

  // To the node added last.
  void Edge(const End& from) {
    const SignalInfo& info = from.info;
    text += fmt::format("  n{} -> n{} [label={}];\n", from.node, nodes,
                        Quoted(fmt::format("{}\n{}\n{}, full scale {}", RateText(info),
                                           LengthText(info.length, info.interval_ms),
                                           UnitText(info), NumberText(info.fullScale))));
  }

  End Add(const CheckedSignal& signal) {
    Node(signal.recording == nullptr ? "silence" : OneLine(signal.recording->Name()), "shape=oval");
    End end = {nodes, signal.info};
    for (const ChainStep& step : signal.steps) {
      std::optional<End> second;
      if (step.second != nullptr) {
        second = Add(SecondOf(step));
      }
      Node(NumberOf(step) + "\n" + OneLine(step.call.Text()));
      Edge(end);
      if (second) {
        Edge(*second);
      }
      end = {nodes, step.delivered};
    }
    return end;
  }

  std::string text;
  int nodes = 0;
};

}  // namespace

std::string CheckText(const CheckedSignal& signal) {
  std::string text;
  AddText(signal, "input", "", text);
  return text;
}

std::string CheckJson(const CheckedSignal& signal) {
  // Names of files may hold any byte; what is no text is replaced.
  return SignalJson(signal).dump(2, ' ', false, Json::error_handler_t::replace) + "\n";
}

std::string CheckDot(const CheckedSignal& signal) { return DotWriter().Write(signal); }

}  // namespace wavechain
