#include "host/catalogue_text.h"

#include <fmt/format.h>

#include <cmath>
#include <cstdint>
#include <limits>
#include <nlohmann/json.hpp>
#include <utility>

#include "host/text.h"

namespace wavechain {
namespace {

using Json = nlohmann::ordered_json;

std::string LimitsText(const Parameter& parameter) {
  // The ends of the 32-bit range are no limits that anyone would meet.
  constexpr double Most = std::numeric_limits<std::int32_t>::max();
  constexpr double Least = std::numeric_limits<std::int32_t>::min();
  const bool low = parameter.minimum > Least;
  const bool high = parameter.maximum < Most;
  if (parameter.belowHalfRate) {
    return fmt::format("{} to half the sampling rate", NumberText(parameter.minimum));
  }
  if (low && high) {
    return fmt::format("{} to {}", NumberText(parameter.minimum), NumberText(parameter.maximum));
  }
  if (low) {
    return fmt::format("{} or more", NumberText(parameter.minimum));
  }
  return high ? fmt::format("{} or less", NumberText(parameter.maximum)) : "any value";
}

// Objects are made member by member here: a list in braces whose memory runs out half-way is lost.

Json Limit(double value) { return std::isfinite(value) ? Json(value) : Json(nullptr); }

Json ParameterJson(const Parameter& parameter) {
  Json json = Json::object();
  json["name"] = parameter.name;
  json["unit"] = parameter.unit;
  json["default"] = parameter.preset ? Json(*parameter.preset) : Json(nullptr);
  json["default_text"] = DefaultText(parameter);
  json["required"] = parameter.Required();
  json["minimum"] = Limit(parameter.minimum);
  json["maximum"] = Limit(parameter.maximum);
  json["maximum_is_half_rate"] = parameter.belowHalfRate;
  json["whole"] = parameter.whole;
  json["help"] = parameter.help;
  json["values"] = Json::object();
  for (const NamedValue& named : parameter.names) {
    json["values"][std::string(named.name)] = named.value;
  }
  return json;
}

}  // namespace

std::vector<std::string_view> FilterNames() {
  std::vector<std::string_view> names;
  for (const FilterKind& kind : Catalogue()) {
    names.push_back(kind.name);
  }
  return names;
}

std::string RangeText(const Parameter& parameter) {
  return fmt::format("{}{}{}, {}", parameter.unit, parameter.unit.empty() ? "" : ", ",
                     parameter.whole ? "whole" : "real", LimitsText(parameter));
}

std::string NamesText(const Parameter& parameter) {
  std::string text;
  for (const NamedValue& named : parameter.names) {
    text += fmt::format("{}{}={}", text.empty() ? "" : ", ", NumberText(named.value), named.name);
  }
  return text;
}

std::string DefaultText(const Parameter& parameter) {
  if (parameter.preset) {
    return NumberText(*parameter.preset);
  }
  return parameter.computed == nullptr ? "none" : std::string(parameter.computedText);
}

std::string InfoText(const FilterKind& kind, bool available) {
  std::string text = fmt::format("{}: {}\n", kind.name, kind.purpose);
  if (!kind.note.empty()) {
    text += fmt::format("  {}\n", kind.note);
  }
  if (!available) {
    text += "  not in this library\n";
  }
  text += fmt::format("  entry point {}, {}\n", kind.entryPoint, Counted(kind.sources, "source"));
  text += kind.parameters.empty() ? "parameters: none\n" : "parameters, in order:\n";
  for (const Parameter& parameter : kind.parameters) {
    text += fmt::format("  {}  ({}; default {})\n", parameter.name, RangeText(parameter),
                        DefaultText(parameter));
    text += fmt::format("      {}\n", parameter.help);
    if (!parameter.names.empty()) {
      text += fmt::format("      {}\n", NamesText(parameter));
    }
  }
  for (const HostArgument& own : kind.hostArguments) {
    text += fmt::format("  {}={}{}\n      {}\n", own.name, own.value,
                        own.required ? "  (required)" : "", own.help);
  }
  text += kind.dataFiles.empty() ? "data files: none\n" : "data files, beside the recording:\n";
  for (const DataFile& file : kind.dataFiles) {
    text += fmt::format("  {}  {}\n", file.name, file.content);
  }
  return text;
}

std::string ListLine(const FilterKind& kind, bool available) {
  return fmt::format("{:<17} {}{}\n", kind.name, kind.purpose,
                     available ? "" : " (not in this library)");
}

std::string HelpText() {
  std::string text = "Filters, with their parameters in order:\n";
  for (const FilterKind& kind : Catalogue()) {
    text += fmt::format("  {}: {}\n", kind.name, kind.purpose);
    for (const Parameter& parameter : kind.parameters) {
      text += fmt::format("      {} ({}; default {})\n", parameter.name, RangeText(parameter),
                          DefaultText(parameter));
      if (!parameter.names.empty()) {
        text += fmt::format("          {}\n", NamesText(parameter));
      }
    }
    for (const HostArgument& own : kind.hostArguments) {
      text += fmt::format("      {}={}\n", own.name, own.value);
    }
  }
  return text;
}

Json InfoJson(const FilterKind& kind, bool available) {
  Json json = Json::object();
  json["name"] = kind.name;
  json["entry_point"] = kind.entryPoint;
  json["purpose"] = kind.purpose;
  json["note"] = kind.note;
  json["available"] = available;
  json["sources"] = kind.sources;
  json["parameters"] = Json::array();
  for (const Parameter& parameter : kind.parameters) {
    json["parameters"].push_back(ParameterJson(parameter));
  }
  json["host_arguments"] = Json::array();
  for (const HostArgument& own : kind.hostArguments) {
    Json argument = Json::object();
    argument["name"] = own.name;
    argument["value"] = own.value;
    argument["required"] = own.required;
    argument["help"] = own.help;
    json["host_arguments"].push_back(std::move(argument));
  }
  json["data_files"] = Json::array();
  for (const DataFile& file : kind.dataFiles) {
    Json dataFile = Json::object();
    dataFile["name"] = file.name;
    dataFile["content"] = file.content;
    json["data_files"].push_back(std::move(dataFile));
  }
  return json;
}

}  // namespace wavechain
