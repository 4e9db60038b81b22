#include "tracks/pellet_text.h"

#include <array>
#include <cstdio>

#include "support/samples.h"

namespace tracks {
namespace {

std::string Number(std::mt19937& random, double value) {
  static constexpr std::array<const char*, 7> formats{"%.0f", "%.0f", "%+.0f", "%.3f",
                                                      "%g",   "%.9e", "%.17g"};
  char text[64];
  std::snprintf(text, sizeof text, formats[random() % formats.size()], value);
  return text;
}

std::string Gap(std::mt19937& random) {
  static constexpr std::array<const char*, 6> gaps{" ", " ", " ", "\t", "   ", "\v \f"};
  return gaps[random() % gaps.size()];
}

std::vector<std::size_t> LineStarts(const std::string& text) {
  std::vector<std::size_t> starts{0};
  for (std::size_t i = 0; i + 1 < text.size(); ++i) {
    if (text[i] == '\n') starts.push_back(i + 1);
  }
  return starts;
}

}  // namespace

int Between(std::mt19937& random, int lowest, int highest) {
  return lowest + static_cast<int>(random() % static_cast<unsigned>(highest - lowest + 1));
}

SourceScript Signal(int count, double interval_ms, const std::string& path) {
  SourceScript script;
  script.samples = support::Noise(count, 77);
  script.interval_ms = interval_ms;
  script.path = path;
  return script;
}

std::string Lines(const std::vector<std::vector<double>>& records) {
  std::string text;
  for (const std::vector<double>& record : records) {
    for (std::size_t i = 0; i < record.size(); ++i) {
      text += (i == 0 ? "" : " ") + support::Text(record[i]);
    }
    text += "\n";
  }
  return text;
}

std::string Column(int column, const std::vector<double>& values) {
  std::vector<std::vector<double>> records;
  for (const double value : values) {
    std::vector<double> record(16, 0.0);
    record[static_cast<std::size_t>(column - 1)] = value;
    records.push_back(record);
  }
  return Lines(records);
}

std::string RandomRecords(std::mt19937& random, int count) {
  std::array<double, 16> missing{};
  std::string text;
  for (int record = 0; record < count; ++record) {
    for (double& mark : missing) {
      double step = record == 0 ? Between(random, -40000, 40000) : Between(random, -3000, 3000);
      if (random() % 3 == 0) step += Between(random, 0, 999) / 1000.0;
      if (random() % 60 == 0 || (mark > 0 && random() % 4 == 0)) {
        step += mark > 0 ? -mark : 1000000.0;
        mark = mark > 0 ? 0.0 : 1000000.0;
      }
      text += (&mark == missing.data() ? "" : Gap(random)) + Number(random, step);
    }
    text += random() % 8 == 0 ? " \r\n" : "\n";
  }
  return text;
}

std::string Broken(std::mt19937& random, const std::string& text) {
  if (text.empty()) return text;
  const std::vector<std::size_t> starts = LineStarts(text);
  const std::size_t start = starts[random() % starts.size()];
  const std::size_t place = random() % text.size();
  const std::size_t lineEnd = std::min(text.find('\n', start), text.size());
  const std::string head = text.substr(0, start);
  const std::string tail = text.substr(start);
  switch (random() % 9) {
    case 0:  // a short line
      return head + "1 2 3 4 5\n" + tail;
    case 1:
      return head + "\n" + tail;
    case 2:
      return head + "   \t\r\n" + tail;
    case 3:
      return text.substr(0, place) + "word" + text.substr(place);
    case 4:
      return text.substr(0, lineEnd) + " 17 18 19 words follow" + text.substr(lineEnd);
    case 5:  // the file ends within a line
      return text.substr(0, place);
    case 6:
      return text.substr(0, text.size() - 1);
    case 7:  // a number beyond what a double can hold
      return head + "1e999 " + tail;
    default: {
      std::string returns;
      for (const char c : text) returns += c == '\n' ? std::string("\r\n") : std::string(1, c);
      return returns;
    }
  }
}

}  // namespace tracks
