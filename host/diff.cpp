#include "host/diff.h"

#include <algorithm>
#include <cmath>
#include <nlohmann/json.hpp>
#include <vector>

#include "host/comparison.h"
#include "host/failure.h"
#include "host/interrupt.h"
#include "host/sample_reader.h"
#include "host/text.h"

namespace wavechain {
namespace {

using Json = nlohmann::ordered_json;

// A block stays small whatever number of channels a header claims.
constexpr int MostFrames = 4096;
constexpr int MostSamples = 1 << 20;

// One of the two files, as far as it has been read.
struct Side {
  std::unique_ptr<SampleReader> reader;
  std::vector<double> block = {};
  int came = 0;
  std::int64_t length = 0;

  void Read() {
    const int channels = reader->Channels();
    const int frames = std::clamp(MostSamples / channels, 1, MostFrames);
    block.resize(static_cast<std::size_t>(frames) * static_cast<std::size_t>(channels));
    came = reader->Read(block.data(), frames);
    length += came;
  }
};

struct Findings {
  Side a;
  Side b;
  Comparison samples;

  bool SameChannels() const { return a.reader->Channels() == b.reader->Channels(); }
  bool SameLength() const { return a.length == b.length; }
  // A file that says none agrees with any.
  bool SameRate() const {
    const std::optional<double> one = a.reader->Rate();
    const std::optional<double> other = b.reader->Rate();
    // The rate of a table comes from times that are rounded.
    constexpr double Rounding = 1e-9;
    return !one || !other || std::abs(*one - *other) <= Rounding * std::abs(*one);
  }
  bool Same() const {
    return SameChannels() && SameLength() && SameRate() && samples.Differing() == 0;
  }
};

void Compare(Findings& findings) {
  const bool comparable = findings.SameChannels();
  do {
    StopIfInterrupted();
    findings.a.Read();
    findings.b.Read();
    if (comparable) {
      findings.samples.Add(findings.a.block.data(), findings.b.block.data(),
                           std::min(findings.a.came, findings.b.came));
    }
  } while (findings.a.came > 0 || findings.b.came > 0);
}

// Objects are made member by member here: a list in braces whose memory runs out half-way is lost.

// JSON knows no infinity.
Json Number(double value) {
  if (std::isfinite(value)) {
    return value;
  }
  return NumberText(value);
}

Json SideJson(const Side& side, double rms) {
  const std::optional<double> rate = side.reader->Rate();
  Json json = Json::object();
  json["file"] = side.reader->Name();
  json["length"] = side.length;
  json["channels"] = side.reader->Channels();
  json["rate_hz"] = rate ? Number(*rate) : Json(nullptr);
  json["rms"] = Number(rms);
  return json;
}

Json PlaceJson(const std::optional<Difference>& place, std::optional<double> rate) {
  if (!place) {
    return nullptr;
  }
  Json json = Json::object();
  json["sample"] = place->frame;
  json["channel"] = place->channel + 1;
  json["time_s"] = rate ? Json(static_cast<double>(place->frame) / *rate) : Json(nullptr);
  json["a"] = Number(place->a);
  json["b"] = Number(place->b);
  json["difference"] = Number(place->Size());
  return json;
}

std::string JsonText(const Findings& f, double tolerance) {
  const std::optional<double> rate = f.a.reader->Rate();
  Json json = Json::object();
  json["same"] = f.Same();
  json["a"] = SideJson(f.a, f.samples.RmsA());
  json["b"] = SideJson(f.b, f.samples.RmsB());
  json["tolerance"] = tolerance;
  json["compared"] = f.samples.Samples();
  json["differing"] = f.samples.Differing();
  json["one_sided_nan"] = f.samples.OneSided();
  json["rms_difference"] = Number(f.samples.RmsDifference());
  json["greatest"] = PlaceJson(f.samples.Greatest(), rate);
  json["first"] = PlaceJson(f.samples.First(), rate);
  return json.dump(2, ' ', false, Json::error_handler_t::replace) + "\n";
}

std::string SideText(char letter, const Side& side) {
  const std::optional<double> rate = side.reader->Rate();
  return fmt::format("{}         {}: {}{}, {}\n", letter, OneLine(side.reader->Name()),
                     Counted(side.length, "sample"),
                     rate ? fmt::format(", {:.10g} Hz", *rate) : ", no rate",
                     Counted(side.reader->Channels(), "channel"));
}

std::string PlaceText(const Findings& f, const Difference& place) {
  const std::optional<double> rate = f.a.reader->Rate();
  std::string text = fmt::format("sample {}", place.frame);
  if (rate) {
    text += fmt::format(" ({:.6f} s)", static_cast<double>(place.frame) / *rate);
  }
  if (f.a.reader->Channels() > 1) {
    text += fmt::format(", channel {}", place.channel + 1);
  }
  return text + fmt::format(": {} and {}", NumberText(place.a), NumberText(place.b));
}

// How far below the first signal the difference lies.
std::string LevelText(const Comparison& samples) {
  const double level = 20.0 * std::log10(samples.RmsDifference() / samples.RmsA());
  return std::isfinite(level) ? fmt::format(" ({:.1f} dB of a)", level) : "";
}

std::string SamplesText(const Findings& f) {
  const Comparison& samples = f.samples;
  std::string text =
      fmt::format("RMS       a {:.6g}, b {:.6g}, difference {:.6g}{}\n", samples.RmsA(),
                  samples.RmsB(), samples.RmsDifference(), LevelText(samples));
  if (samples.Greatest()) {
    text += fmt::format("greatest  {:.6g} at {}\n", samples.Greatest()->Size(),
                        PlaceText(f, *samples.Greatest()));
  }
  if (samples.First()) {
    text += fmt::format("first     {}\n", PlaceText(f, *samples.First()));
  }
  if (samples.OneSided() > 0) {
    text +=
        fmt::format("not a number in one of the two: {}\n", Counted(samples.OneSided(), "sample"));
  }
  return text;
}

// What the two are: "same", or everything in which they differ.
std::string Verdict(const Findings& f, double tolerance) {
  std::vector<std::string> words;
  if (!f.SameChannels()) {
    words.emplace_back("number of channels (no sample was compared)");
  }
  if (!f.SameLength()) {
    words.push_back(
        fmt::format("length (by {})", Counted(std::abs(f.a.length - f.b.length), "sample")));
  }
  if (!f.SameRate()) {
    words.emplace_back("sampling rate");
  }
  if (f.samples.Differing() > 0) {
    words.push_back(
        fmt::format("{} of {}", f.samples.Differing(), Counted(f.samples.Samples(), "sample")));
  }
  const std::string within =
      tolerance > 0.0 ? fmt::format(" (tolerance {})", NumberText(tolerance)) : "";
  return words.empty()
             ? fmt::format("same{}\n", within)
             : fmt::format("different: {}{}\n", Joined({words.begin(), words.end()}), within);
}

}  // namespace

DiffAnswer Diff(const DiffRequest& request) {
  if (request.a == "-" && request.b == "-") {
    Fail(ExitStatus::Usage, "only one of the two files can be standard input");
  }
  if (!(request.tolerance >= 0.0)) {
    Fail(ExitStatus::Usage, "--tolerance {}: is 0 or more", NumberText(request.tolerance));
  }
  Side a = {OpenSamples(request.a, request.allowTruncated)};
  Side b = {OpenSamples(request.b, request.allowTruncated)};
  const int channels = a.reader->Channels();
  Findings findings = {std::move(a), std::move(b), Comparison(channels, request.tolerance)};
  Compare(findings);
  DiffAnswer answer = {findings.Same(), {}};
  if (request.json) {
    answer.text = JsonText(findings, request.tolerance);
  } else if (!request.quiet) {
    answer.text = SideText('a', findings.a) + SideText('b', findings.b);
    answer.text += findings.SameChannels() ? SamplesText(findings) : "";
    answer.text += Verdict(findings, request.tolerance);
  }
  return answer;
}

}  // namespace wavechain
