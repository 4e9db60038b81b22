#include "host/track_run.h"

#include <algorithm>
#include <chrono>
#include <cmath>
#include <memory>
#include <set>

#include "host/failure.h"
#include "host/host_arguments.h"
#include "host/input_report.h"
#include "host/interrupt.h"
#include "host/output_file.h"
#include "host/random_lane.h"
#include "host/run_input.h"
#include "host/run_record.h"
#include "host/run_steps.h"
#include "host/table_writer.h"
#include "host/text.h"

namespace wavechain {
namespace {

std::string ValidityName(const std::string& track) { return track + "_valid"; }

// One of the chains, with everything that it would have if it were run alone.
class Lane {
 public:
  Lane(const RunRequest& request, const TrackText& text, std::unique_ptr<RunInput> laneInput,
       const std::vector<FilterCall>& laneCalls, const FilterLibrary& library, Log& log)
      : name(text.name),
        calls(laneCalls),
        input(std::move(laneInput)),
        chain(library, wavefilters::Ref<HostSource>::Share(input->Source()), calls,
              SettingsOf(request, name + ": "), log),
        random(request.seed),
        block(BlockSamples),
        valid(BlockSamples, 1) {}

  // The next block; none once the chain has ended. Asked once before it is looked for an end.
  void Pull() {
    came = 0;
    if (ended) {
      return;
    }
    random.Take();
    came = chain.Pull(block.data(), BlockSamples);
    input->RequireIntact();
    ended = chain.AtEnd();
    if (chain.Missing()) {
      chain.Missing()->Mark(totals.samples, valid);
    }
    totals.Add(block.data(), came);
  }

  ColumnBlock Block() const { return {block.data(), valid.data(), came}; }
  TableColumn Column(bool withValidity) const {
    return {name, chain.Output().units, withValidity ? ValidityName(name) : ""};
  }
  void Record(Provenance& record) const { RecordTrack(name, calls, chain, record); }

  const std::string& Name() const { return name; }
  const Chain& Through() const { return chain; }
  const RunInput& Input() const { return *input; }
  bool Ended() const { return ended; }
  int Came() const { return came; }
  std::int64_t Total() const { return totals.samples; }
  const SignalTotals& Totals() const { return totals; }

 private:
  std::string name;
  const std::vector<FilterCall>& calls;
  std::unique_ptr<RunInput> input;
  Chain chain;
  RandomLane random;
  std::vector<float> block;
  std::vector<unsigned char> valid;
  int came = 0;
  bool ended = false;
  SignalTotals totals;
};

using Lanes = std::vector<std::unique_ptr<Lane>>;

void RequireNames(const std::vector<TrackText>& tracks) {
  std::set<std::string> names = {"time_s", "rate_hz", "record"};
  for (const TrackText& track : tracks) {
    if (!names.insert(track.name).second || !names.insert(ValidityName(track.name)).second) {
      Fail(ExitStatus::Usage, "--track {}: there is such a column already; choose another name",
           track.name);
    }
  }
}

void RequireOneRate(const Lanes& lanes) {
  const SignalInfo& first = lanes.front()->Through().Output();
  for (const auto& lane : lanes) {
    const SignalInfo& other = lane->Through().Output();
    constexpr double Tolerance = 1e-11;
    if (!(std::abs(other.interval_ms - first.interval_ms) <= Tolerance * first.interval_ms)) {
      Fail(
          ExitStatus::Usage,
          "--track {}: comes at {:.10g} Hz, {} at {:.10g} Hz; all tracks must have one rate, as by "
          "\"... | ResampleBlackman rate={:.10g}\"",
          lane->Name(), 1000.0 / other.interval_ms, lanes.front()->Name(),
          1000.0 / first.interval_ms, 1000.0 / first.interval_ms);
    }
  }
}

// The length of the longest.
std::int64_t PullAll(const Lanes& lanes, TableWriter& table, Log& log) {
  std::int64_t total = 0;
  std::vector<ColumnBlock> blocks(lanes.size());
  do {
    StopIfInterrupted();
    int rows = 0;
    for (std::size_t i = 0; i < lanes.size(); ++i) {
      lanes[i]->Pull();
      blocks[i] = lanes[i]->Block();
      rows = std::max(rows, lanes[i]->Came());
    }
    table.Write(blocks, rows);
    total += rows;
    log.Progress([&] { return Counted(total, "sample"); });
  } while (!std::ranges::all_of(lanes, [](const auto& lane) { return lane->Ended(); }));
  return total;
}

void ReportLanes(const Lanes& lanes, std::int64_t total, Log& log) {
  for (const auto& lane : lanes) {
    WarnOfOddSamples("track " + lane->Name(), lane->Totals().NonFinite(), log);
    lane->Through().WarnOfInputs();
    ReportMissing(lane->Through(), lane->Name() + ": ", lane->Total(), log);
    if (lane->Total() < total) {
      log.Warn(fmt::format("warning: track {}: ends after {} of {}", lane->Name(), lane->Total(),
                           Counted(total, "sample")));
    }
  }
}

std::string Words(const Lanes& lanes) {
  std::string words;
  for (const auto& lane : lanes) {
    const SignalInfo& signal = lane->Through().Output();
    if (!signal.units.empty()) {
      words += fmt::format("{}{}: unit {}", words.empty() ? "" : ", ", lane->Name(), signal.units);
    }
  }
  return words;
}

Lanes MakeLanes(const RunRequest& request, const std::vector<std::vector<FilterCall>>& calls,
                const FilterLibrary& library, Log& log) {
  Lanes lanes;
  for (std::size_t i = 0; i < calls.size(); ++i) {
    auto input = lanes.empty() ? std::make_unique<RunInput>(request)
                               : std::make_unique<RunInput>(request, lanes.front()->Input());
    if (lanes.empty()) {
      ReportInput(*input, log);
    }
    ReportChain(calls[i], "track  " + request.tracks[i].name + ":", log);
    lanes.push_back(std::make_unique<Lane>(request, request.tracks[i], std::move(input), calls[i],
                                           library, log));
  }
  RequireOneRate(lanes);
  return lanes;
}

Table Describe(const Lanes& lanes, const std::string& comment, bool withValidity) {
  Table table = {lanes.front()->Through().Output().interval_ms, {}, comment};
  for (const auto& lane : lanes) {
    table.columns.push_back(lane->Column(withValidity));
  }
  return table;
}

SignalTotals TotalsOf(const Lanes& lanes) {
  SignalTotals totals;
  for (const auto& lane : lanes) {
    totals.AddBeside(lane->Totals());
  }
  return totals;
}

}  // namespace

TrackText ParseTrack(const std::string& text) {
  const std::size_t equals = text.find('=');
  const std::string name = text.substr(0, equals);
  const bool isWord = !name.empty() && std::ranges::all_of(name, [](char c) {
    return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9') || c == '_' ||
           c == '-' || c == '.';
  });
  if (equals == std::string::npos || !isWord) {
    Fail(ExitStatus::Usage,
         "--track '{}': takes a name of letters, digits, _, - and ., then = and a chain, as in "
         "speed=\"BeamData mode=speed | FIRFilter 20\"",
         text);
  }
  return {name, text.substr(equals + 1)};
}

void RequireTable(const OutputFormat& format) {
  const ContainerKind kind = format.container->kind;
  if (kind != ContainerKind::Csv && kind != ContainerKind::Npz && kind != ContainerKind::Ssff) {
    Fail(ExitStatus::Usage, "--track: a {} file holds a single signal; write .csv, .npz or .ssff",
         format.container->name);
  }
}

std::vector<std::vector<FilterCall>> ReadTracks(const RunRequest& request) {
  if (!request.chain.empty()) {
    Fail(ExitStatus::Usage, "--track names chains of its own; leave out -f and --chain");
  }
  RequireNames(request.tracks);
  std::vector<std::vector<FilterCall>> calls;
  for (const TrackText& track : request.tracks) {
    calls.push_back(ParseFilters(track.chain, {"--track " + track.name, ""}));
  }
  return calls;
}

RunResult RunTracks(const RunRequest& request, const std::vector<std::vector<FilterCall>>& calls,
                    const FilterLibrary& library, Log& log) {
  const auto start = std::chrono::steady_clock::now();
  const OutputFormat format = ChooseFormat(request.output, request.format, request.encoding);
  RequireTable(format);
  CheckInput(request);
  for (const std::vector<FilterCall>& one : calls) {
    CheckTargets(request, one);
  }

  const Lanes lanes = MakeLanes(request, calls, library, log);
  for (const auto& lane : lanes) {
    RequireNotRead(request.output, lane->Through().Files());
  }
  const RunInput& input = lanes.front()->Input();
  std::optional<Provenance> provenance;
  if (!request.noRecord) {
    provenance = RecordOf(request, format, library, input.File());
    for (const auto& lane : lanes) {
      lane->Record(*provenance);
    }
    if (IsUpToDate(request, *provenance)) {
      return {.upToDate = true};
    }
  }
  const auto output = OpenOutput(request.output, request.force);
  RecordKeeper record = provenance ? RecordKeeper(request, format, *provenance, Words(lanes))
                                   : RecordKeeper(Words(lanes));
  const Table described = Describe(lanes, record.Comment(), !request.noValidity);
  const auto table =
      MakeTableWriter(format.container->kind, output->Descriptor(), output->Name(), described);
  const std::int64_t total = PullAll(lanes, *table, log);
  table->Close();
  log.ClearProgress();
  WarnOfOddSamples(input.Name(), input.NonFinite(), log);
  ReportLanes(lanes, total, log);
  record.CommitWith(*output, format, log);

  Mention(log, [&] {
    return fmt::format("write  {}: {}, {}, {} Hz, {}", output->Name(), format.Text(),
                       Counted(static_cast<long long>(lanes.size()), "track"),
                       NumberText(table->Rate()), LengthText(total, described.interval_ms));
  });
  ReportSpeed(start, input, log);
  return {.totals = TotalsOf(lanes)};
}

}  // namespace wavechain
