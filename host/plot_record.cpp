#include "host/plot_record.h"

#include "host/run_record.h"

namespace wavechain {
namespace {

// Up to the last parameter that was given, or with all where none was: read again, it hands over
// as many.
std::string GivenText(FilterCall call) {
  if (call.handed > 0) {
    call.values.resize(static_cast<std::size_t>(call.handed));
  }
  return call.Text();
}

}  // namespace

RunRequest AsRunRequest(const PlotRequest& request) {
  RunRequest run;
  run.input = request.input;
  run.library = request.library;
  run.channel = request.channel;
  run.type = request.type;
  run.silence_s = request.silence_s;
  run.rate = request.rate;
  run.seed = request.seed;
  run.allowTruncated = request.allowTruncated;
  run.allowMissing = request.allowMissing;
  run.libraryTail = request.libraryTail;
  run.recorded = request.recorded;
  return run;
}

TrackRecord DrawnChain(const std::string& name, const std::vector<FilterCall>& calls,
                       const SignalInfo& delivered) {
  TrackRecord drawn = {name, {}, delivered.units, delivered.fullScale};
  drawn.filters.reserve(calls.size());
  for (const FilterCall& call : calls) {
    drawn.filters.push_back(GivenText(call));
  }
  return drawn;
}

std::string PictureRecordText(const PlotRequest& request, const PictureTarget& target,
                              const FilterLibrary& library, const AudioInput* file,
                              const std::vector<TrackRecord>& drawn,
                              const std::vector<std::string>& files) {
  if (request.noRecord) {
    return "";
  }
  Provenance record = RecordOfInput(AsRunRequest(request), library, file);
  RecordFiles(files, record);
  record.tracks = drawn;
  if (!request.chain.empty()) {
    record.filters = drawn.front().filters;
    record.tracks.erase(record.tracks.begin());
  }
  record.format = WordFor(target.format);
  record.picture = PictureRecord{.response = request.response,
                                 .phase = request.phase,
                                 .from_s = request.from_s,
                                 .to_s = request.to_s,
                                 .highest_Hz = request.highest_Hz,
                                 .window_ms = request.window_ms,
                                 .dynamics_dB = request.dynamics_dB,
                                 .size = request.size};
  return CommentOf("", record);
}

}  // namespace wavechain
