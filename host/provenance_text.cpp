#include <fmt/ranges.h>

#include "host/failure.h"
#include "host/provenance.h"
#include "host/text.h"

namespace wavechain {
namespace {

std::string FileText(const FileRecord& file) {
  return fmt::format("{} ({})", OneLine(file.name),
                     file.sha256 ? "SHA-256 " + OneLine(*file.sha256) : "not there");
}

std::string InputText(const Provenance& record) {
  if (record.picture && record.picture->response) {
    return fmt::format("an impulse at {} Hz", NumberText(record.rate.value_or(0.0)));
  }
  if (!record.input) {
    return fmt::format("silence, {} s at {} Hz", NumberText(record.silence_s.value_or(0.0)),
                       NumberText(record.rate.value_or(0.0)));
  }
  std::string text = FileText(*record.input);
  text += record.channel ? fmt::format(", channel {}", *record.channel) : "";
  text += record.type ? fmt::format(", raw {} at {} Hz", OneLine(*record.type),
                                    NumberText(record.rate.value_or(0.0)))
                      : "";
  return text;
}

std::string OptionsText(const Provenance& record) {
  std::string text = fmt::format("seed {}, blocks of {} samples", record.seed, record.block);
  text += record.allowTruncated ? ", --allow-truncated" : "";
  text += record.allowMissing ? ", --allow-missing" : "";
  text += record.libraryTail ? ", --library-tail" : "";
  text += record.noValidity ? ", --no-validity" : "";
  return text;
}

// As one would type it.
std::string PictureText(const PictureRecord& picture) {
  std::string text = picture.response ? "--response " : "";
  text += picture.phase ? "--phase " : "";
  const auto add = [&text](const char* option, const std::optional<double>& value) {
    text += value ? fmt::format("{} {} ", option, NumberText(*value)) : "";
  };
  add("--from", picture.from_s);
  add("--to", picture.to_s);
  add("--max-frequency", picture.highest_Hz);
  text += picture.size ? fmt::format("--size {} ", OneLine(*picture.size)) : "";
  return text + fmt::format("--window {} --dynamics {}", NumberText(picture.window_ms),
                            NumberText(picture.dynamics_dB));
}

}  // namespace

std::string ProvenanceText(const Provenance& record) {
  std::string text =
      fmt::format("program  wavechain {}\nlibrary  {}\ninput    {}\n", OneLine(record.program),
                  FileText(record.library), InputText(record));
  for (std::size_t i = 0; i < record.filters.size(); ++i) {
    text += fmt::format("{}  {}\n", i == 0 ? "chain  " : "       ", OneLine(record.filters[i]));
  }
  for (const TrackRecord& track : record.tracks) {
    text += fmt::format("track    {}: {}{}\n", OneLine(track.name),
                        OneLine(fmt::format("{}", fmt::join(track.filters, " | "))),
                        track.unit.empty() ? "" : ", unit " + OneLine(track.unit));
  }
  for (std::size_t i = 0; i < record.files.size(); ++i) {
    text += fmt::format("{}  {}\n", i == 0 ? "files  " : "       ", FileText(record.files[i]));
  }
  text += fmt::format("options  {}\noutput   {}{}", OptionsText(record), OneLine(record.format),
                      record.encoding ? ", " + OneLine(*record.encoding) : "");
  text += record.unit.empty() ? "" : ", unit " + OneLine(record.unit);
  text += record.picture ? "\npicture  " + PictureText(*record.picture) : "";
  return text + "\n";
}

}  // namespace wavechain
