#include "host/provenance.h"

#include <cstdint>
#include <limits>
#include <stdexcept>
#include <utility>

#include "host/failure.h"

namespace wavechain {
namespace {

using Object = nlohmann::ordered_json;

// Objects are made member by member here: a list in braces whose memory runs out half-way is lost.

Object FileJson(const FileRecord& file) {
  Object json = Object::object();
  json["file"] = file.name;
  json["sha256"] = file.sha256 ? Object(*file.sha256) : Object(nullptr);
  return json;
}

FileRecord FileFrom(const Object& json) {
  FileRecord file = {json.at("file").get<std::string>(), std::nullopt};
  if (!json.at("sha256").is_null()) {
    file.sha256 = json.at("sha256").get<std::string>();
  }
  return file;
}

Object TracksJson(const std::vector<TrackRecord>& tracks) {
  Object json = Object::array();
  for (const TrackRecord& track : tracks) {
    Object trackJson = Object::object();
    trackJson["name"] = track.name;
    trackJson["filters"] = track.filters;
    trackJson["unit"] = track.unit;
    trackJson["full_scale"] = track.fullScale;
    json.push_back(std::move(trackJson));
  }
  return json;
}

template <class Value>
void PutIf(Object& json, const char* key, const std::optional<Value>& value) {
  if (value) {
    json[key] = *value;
  }
}

void PutFlag(Object& json, const char* key, bool flag) {
  if (flag) {
    json[key] = true;
  }
}

// A number of a record that none of ours holds; the reason.
class OutOfRange : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

// A whole number in the type's range, from `least`; any other one has no conversion.
template <class Whole>
Whole TakenWhole(const Object& json, const char* key, Whole least) {
  const Object& number = json.at(key);
  constexpr Whole Most = std::numeric_limits<Whole>::max();
  // Without a sign it may exceed what the type with one holds.
  const bool fits = number.is_number_unsigned() ? number.get<std::uint64_t>() <= Most
                                                : number.is_number_integer();
  if (!fits || number < least) {
    throw OutOfRange(fmt::format("{} is no whole number from {} to {}", key, least, Most));
  }
  return number.get<Whole>();
}

template <class Value>
std::optional<Value> TakenIf(const Object& json, const char* key) {
  return json.contains(key) ? std::optional(json.at(key).get<Value>()) : std::nullopt;
}

Object PictureJson(const PictureRecord& picture) {
  Object json = Object::object();
  PutFlag(json, "response", picture.response);
  PutFlag(json, "phase", picture.phase);
  PutIf(json, "from_s", picture.from_s);
  PutIf(json, "to_s", picture.to_s);
  PutIf(json, "max_frequency_hz", picture.highest_Hz);
  json["window_ms"] = picture.window_ms;
  json["dynamics_db"] = picture.dynamics_dB;
  PutIf(json, "size", picture.size);
  return json;
}

PictureRecord PictureFrom(const Object& json) {
  return {.response = json.value("response", false),
          .phase = json.value("phase", false),
          .from_s = TakenIf<double>(json, "from_s"),
          .to_s = TakenIf<double>(json, "to_s"),
          .highest_Hz = TakenIf<double>(json, "max_frequency_hz"),
          .window_ms = json.at("window_ms").get<double>(),
          .dynamics_dB = json.at("dynamics_db").get<double>(),
          .size = TakenIf<std::string>(json, "size")};
}

void TakeChains(const Object& json, Provenance& record) {
  for (const Object& track : json.value("tracks", Object::array())) {
    record.tracks.push_back({track.at("name").get<std::string>(),
                             track.at("filters").get<std::vector<std::string>>(),
                             track.at("unit").get<std::string>()});
  }
  if (record.tracks.empty() || json.contains("filters")) {
    record.filters = json.at("filters").get<std::vector<std::string>>();
  }
}

void TakeOptions(const Object& options, Provenance& record) {
  record.seed = TakenWhole<unsigned>(options, "seed", 0);
  record.block = TakenWhole(options, "block", 1);
  record.allowTruncated = options.value("allow_truncated", false);
  record.allowMissing = options.value("allow_missing", false);
  record.libraryTail = options.value("library_tail", false);
  record.noValidity = options.value("no_validity", false);
}

Provenance Taken(const Object& json) {
  Provenance record;
  record.program = json.at("wavechain").get<std::string>();
  record.library = FileFrom(json.at("library"));
  record.givenLibrary = TakenIf<std::string>(json.at("library"), "given");
  const Object& input = json.at("input");
  record.silence_s = TakenIf<double>(input, "silence_s");
  record.rate = TakenIf<double>(input, "rate_hz");
  record.type = TakenIf<std::string>(input, "type");
  if (input.contains("channel")) {
    record.channel = TakenWhole(input, "channel", 1);
  }
  if (json.contains("picture")) {
    record.picture = PictureFrom(json.at("picture"));
  }
  if (!record.silence_s && !(record.picture && record.picture->response)) {
    record.input = FileFrom(input);
  }
  TakeChains(json, record);
  for (const Object& file : json.at("files")) {
    record.files.push_back(FileFrom(file));
  }
  TakeOptions(json.at("options"), record);
  const Object& output = json.at("output");
  record.format = output.at("format").get<std::string>();
  record.encoding = TakenIf<std::string>(output, "encoding");
  record.unit = output.value("unit", "");
  return record;
}

}  // namespace

Object Provenance::Json() const {
  Object libraryJson = FileJson(library);
  PutIf(libraryJson, "given", givenLibrary);
  Object inputJson = input ? FileJson(*input) : Object::object();
  PutIf(inputJson, "channel", channel);
  PutIf(inputJson, "type", type);
  PutIf(inputJson, "silence_s", silence_s);
  PutIf(inputJson, "rate_hz", rate);
  Object filesJson = Object::array();
  for (const FileRecord& file : files) {
    filesJson.push_back(FileJson(file));
  }
  Object options = Object::object();
  options["seed"] = seed;
  options["block"] = block;
  PutFlag(options, "allow_truncated", allowTruncated);
  PutFlag(options, "allow_missing", allowMissing);
  PutFlag(options, "library_tail", libraryTail);
  PutFlag(options, "no_validity", noValidity);
  Object outputJson = Object::object();
  outputJson["format"] = format;
  PutIf(outputJson, "encoding", encoding);
  if (tracks.empty() && !picture) {
    outputJson["unit"] = unit;
    outputJson["full_scale"] = fullScale;
  }
  Object json = Object::object();
  json["wavechain"] = program;
  json["library"] = libraryJson;
  json["input"] = inputJson;
  if (tracks.empty() || picture) {
    json["filters"] = filters;
  }
  if (!tracks.empty()) {
    json["tracks"] = TracksJson(tracks);
  }
  json["files"] = filesJson;
  json["options"] = options;
  json["output"] = outputJson;
  if (picture) {
    json["picture"] = PictureJson(*picture);
  }
  return json;
}

Provenance Provenance::FromJson(const Object& json, const std::string& file) {
  std::string why;
  try {
    return Taken(json);
  } catch (const Object::exception& error) {
    why = error.what();
  } catch (const OutOfRange& error) {
    why = error.what();
  }
  Fail(ExitStatus::Input, "{}: its record of how it was made cannot be understood: {}", file, why);
}

std::string RecordLine(const Object& record) {
  return record.dump(-1, ' ', true, Object::error_handler_t::replace);
}

std::string CommentOf(const std::string& words, const Provenance& record) {
  const std::string json = RecordLine(record.Json());
  return words.empty() ? json : words + "; " + json;
}

std::string RecordPath(const std::string& output) { return output + ".json"; }

}  // namespace wavechain
