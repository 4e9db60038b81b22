#include "host/plot_response.h"

#include <unistd.h>

#include <algorithm>
#include <cmath>
#include <numbers>

#include "host/failure.h"
#include "host/frequency_response.h"
#include "host/plot_chains.h"
#include "host/plot_drawing.h"
#include "host/plot_label.h"
#include "host/plot_layout.h"
#include "host/plot_panel.h"
#include "host/plot_picture.h"
#include "host/plot_record.h"
#include "host/plot_trace.h"
#include "host/text.h"

namespace wavechain {
namespace {

constexpr double Least = 1e-12;     // of a gain that is told from 0
constexpr double Shown_dB = 120.0;  // below the greatest gain
constexpr double DefaultRate = 48000.0;

// A chain's response and what it is called in the key.
struct NamedResponse {
  std::string name;
  Response response;
};

double Decibels(std::complex<double> gain) {
  return 20.0 * std::log10(std::max(std::abs(gain), Least));
}

// Above -180, whatever rounding makes of it.
double Degrees(std::complex<double> gain) {
  const double phase = std::arg(gain) * 180.0 / std::numbers::pi;
  return phase < -179.9 ? phase + 360.0 : phase;
}

Curve MagnitudeOf(const Response& response, const Axis& x, double unit_Hz, int columns) {
  Trace trace(x.range, columns);
  for (std::size_t k = 0; k < response.gains.size(); ++k) {
    trace.Add(response.Frequency_Hz(k) / unit_Hz, Decibels(response.gains[k]), false);
  }
  trace.Finish(0.0);
  return {.pieces = trace.Pieces()};
}

// Where the phase turns over from 180 to -180 degrees the line breaks off.
Curve PhaseOf(const Response& response, const Axis& x, double unit_Hz, int columns, double floor) {
  Trace trace(x.range, columns);
  double before = 0.0;
  for (std::size_t k = 0; k < response.gains.size(); ++k) {
    const double phase = Degrees(response.gains[k]);
    const double frequency = response.Frequency_Hz(k) / unit_Hz;
    if (k > 0 && std::abs(phase - before) > 180.0) {
      trace.Add(frequency, 0.0, true);
    }
    // Next to nothing has no phase that means anything.
    trace.Add(frequency, phase, Decibels(response.gains[k]) < floor);
    before = phase;
  }
  trace.Finish(0.0);
  return {.pieces = trace.Pieces()};
}

// From a little above the greatest gain down to the least, or as far as is shown.
Range Gains_dB(const std::vector<NamedResponse>& responses) {
  constexpr double Round_dB = 5.0;
  double greatest = -1000.0;
  double least = 1000.0;
  for (const NamedResponse& named : responses) {
    for (const std::complex<double> gain : named.response.gains) {
      greatest = std::max(greatest, Decibels(gain));
      least = std::min(least, Decibels(gain));
    }
  }
  const double top = Round_dB * std::ceil((greatest + 1.0) / Round_dB);
  const double bottom = Round_dB * std::floor((least - 1.0) / Round_dB);
  return {std::max(bottom, top - Shown_dB), top};
}

std::vector<Panel> ResponsePanels(const std::vector<NamedResponse>& responses,
                                  const std::string& title, double highest_Hz, int columns,
                                  bool withPhase) {
  const bool inKilohertz = highest_Hz >= 2000.0;
  const double unit_Hz = inKilohertz ? 1000.0 : 1.0;
  const Axis x = {"frequency", inKilohertz ? "kHz" : "Hz", {0.0, highest_Hz / unit_Hz}};
  const Range gains = Gains_dB(responses);
  Panel magnitude = {.kind = PanelKind::Response, .name = "magnitude", .title = title, .x = x};
  magnitude.y = {"gain", "dB", gains};
  Panel phase = {.kind = PanelKind::Response, .name = "phase", .x = x};
  phase.y = {.label = "phase", .unit = "degrees", .range = {-190.0, 190.0}, .step = 90.0};
  for (std::size_t i = 0; i < responses.size(); ++i) {
    const Response& response = responses[i].response;
    Curve curve = MagnitudeOf(response, x, unit_Hz, columns);
    curve.name = responses[i].name;
    curve.colour = LineColour(i);
    curve.dashed = i % 2 == 1;
    magnitude.curves.push_back(curve);
    curve.pieces = PhaseOf(response, x, unit_Hz, columns, gains.high - Shown_dB).pieces;
    phase.curves.push_back(curve);
  }
  std::vector<Panel> panels = {std::move(magnitude)};
  if (withPhase) {
    panels.push_back(std::move(phase));
  }
  return panels;
}

void CheckRequest(const PlotRequest& request) {
  const auto refuse = [](bool given, const char* option) {
    if (given) {
      Fail(ExitStatus::Usage, "{} goes with a recording, not with --response", option);
    }
  };
  refuse(request.from_s.has_value(), "--from");
  refuse(request.to_s.has_value(), "--to");
  refuse(request.channel.has_value(), "--channel");
  refuse(request.type.has_value(), "-t");
  if (request.silence_s) {
    Fail(ExitStatus::Usage, "--silence and --response exclude each other");
  }
}

// The words that tell a chain from the others: its name, and what it consists of.
std::string KeyOf(const NamedChain& chain, double room) {
  const std::string text = chain.name == MainChain
                               ? ChainText(chain.calls)
                               : fmt::format("{}: {}", chain.name, ChainText(chain.calls));
  return WrapTitle(text, room, 1, [](std::string_view t) { return Canvas::TextWidth(t); }).front();
}

}  // namespace

std::string PlotResponse(const PlotRequest& request) {
  Drawing drawing;
  Log log(request.quiet, ::isatty(STDERR_FILENO) != 0);
  CheckRequest(request);
  const std::vector<NamedChain> chains = ParseChains(request);
  if (chains.empty()) {
    Fail(ExitStatus::Usage,
         "a response is that of filters; add -f \"FIRNotch half_length=200\" or its like");
  }
  const PictureTarget target = TargetOf(request);
  const auto size = request.size ? std::optional(ParseSize(*request.size)) : std::nullopt;
  const FilterLibrary library(request.library);
  CheckPictureTarget(request, chains);

  const double rate = request.rate.value_or(DefaultRate);
  const int width = size ? size->width : DefaultWidth;
  std::vector<NamedResponse> responses;
  responses.reserve(chains.size());
  for (const NamedChain& chain : chains) {
    responses.push_back({chains.size() > 1 ? KeyOf(chain, 0.6 * PlotWidth(width, false)) : "",
                         MeasureResponse(library, chain.calls, rate, log)});
  }
  const std::string title =
      fmt::format("Response{}, {:.10g} Hz",
                  chains.size() > 1 ? "" : " of " + ChainText(chains.front().calls), rate);
  const int plotWidth = PlotWidth(width, false);
  const int columns = static_cast<int>(plotWidth * target.Finesse());
  const std::vector<Panel> panels = ResponsePanels(
      responses, title, request.highest_Hz.value_or(0.5 * rate), columns, request.phase);
  std::vector<PanelPlan> plans;
  plans.reserve(panels.size());
  for (const Panel& panel : panels) {
    plans.push_back({panel.kind, static_cast<int>(TitleLines(panel.title, plotWidth).size())});
  }
  const Layout layout = LayOut(plans, size);
  std::vector<TrackRecord> drawn;
  drawn.reserve(chains.size());
  for (const NamedChain& chain : chains) {
    drawn.push_back(DrawnChain(chain.name, chain.calls));
  }
  PlotRequest measured = request;
  measured.rate = rate;
  const std::string record = PictureRecordText(measured, target, library, nullptr, drawn, {});
  // Behind the picture there is nothing to fail.
  std::string described = request.layout ? DescribeLayout(panels, layout) : "";
  WritePicture(drawing, target, title, panels, layout, record, log);
  return described;
}

}  // namespace wavechain
