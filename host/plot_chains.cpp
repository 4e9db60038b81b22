#include "host/plot_chains.h"

#include <fmt/format.h>
#include <unistd.h>

#include <algorithm>

#include "host/failure.h"
#include "host/host_arguments.h"
#include "host/output_file.h"
#include "host/text.h"
#include "host/track_run.h"

namespace wavechain {
namespace {

// The call for human readers: what was given, values by their names, or everything where
// nothing was.
std::string CallText(const FilterCall& call) {
  std::string text(call.kind->name);
  const auto handed = static_cast<std::size_t>(call.handed);
  const std::size_t shown = handed == 0 && !call.conversion ? call.values.size() : handed;
  for (std::size_t i = 0; i < shown; ++i) {
    const Parameter& parameter = call.kind->parameters[i];
    const auto name = std::ranges::find(parameter.names, call.values[i], &NamedValue::value);
    text += fmt::format(
        " {}={}", parameter.name,
        name == parameter.names.end() ? NumberText(call.values[i]) : std::string(name->name));
  }
  for (const auto& [name, value] : call.hostValues) {
    const bool isFile = std::ranges::find(call.kind->dataFiles, std::string_view(name),
                                          &DataFile::argument) != call.kind->dataFiles.end();
    text += fmt::format(" {}={}", name, isFile ? value.substr(value.rfind('/') + 1) : value);
  }
  return text;
}

// The recordings that are read: no picture may replace one.
void CheckTargets(const PlotRequest& request, const std::vector<FilterCall>& calls) {
  for (const FilterCall& call : calls) {
    if (call.second) {
      CheckTarget(request.output, request.force, IdentityOf(call.second->path));
      CheckTargets(request, call.second->filters);
    }
  }
}

}  // namespace

std::vector<NamedChain> ParseChains(const PlotRequest& request) {
  std::vector<NamedChain> chains;
  if (!request.chain.empty()) {
    chains.push_back({std::string(MainChain), ReadChain(request.chain)});
  }
  for (const std::string& text : request.tracks) {
    const TrackText written = ParseTrack(text);
    NamedChain track = {written.name, ParseFilters(written.chain, {"--track " + written.name, ""})};
    const bool isTaken = track.name == "before" || track.name == "recording" ||
                         std::ranges::find(chains, track.name, &NamedChain::name) != chains.end();
    if (isTaken) {
      Fail(ExitStatus::Usage, "--track {}: there are two signals of that name; choose another",
           track.name);
    }
    chains.push_back(std::move(track));
  }
  return chains;
}

std::string ChainText(const std::vector<FilterCall>& calls) {
  constexpr std::string_view Arrow = " \xe2\x86\x92 ";
  std::string text;
  for (const FilterCall& call : calls) {
    text += (text.empty() ? "" : std::string(Arrow)) + CallText(call);
  }
  return text;
}

PictureTarget TargetOf(const PlotRequest& request) {
  return {request.output, request.force, ChoosePictureFormat(request.output, request.format)};
}

void CheckPictureTarget(const PlotRequest& request, const std::vector<NamedChain>& chains) {
  if (request.layout && request.output == "-") {
    Fail(ExitStatus::Usage, "--layout writes to standard output; name a file for the picture");
  }
  CheckTarget(request.output, request.force,
              request.input == "-" ? IdentityOf(STDIN_FILENO) : IdentityOf(request.input));
  for (const NamedChain& chain : chains) {
    CheckTargets(request, chain.calls);
  }
  for (const ChainPart& part : request.chain) {
    if (part.isFile) {
      CheckTarget(request.output, request.force, IdentityOf(part.text));
    }
  }
}

}  // namespace wavechain
