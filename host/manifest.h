#ifndef WAVEFILTERS_HOST_MANIFEST_H
#define WAVEFILTERS_HOST_MANIFEST_H

#include <map>
#include <string>
#include <vector>

namespace wavechain {

/// What a manifest says of one file.
struct ManifestEntry {
  std::string place = {};  // "list.csv:3"
  std::map<std::string, std::string, std::less<>> values =
      {};  // by column; empty ones are left out
};

/// Reads a list of files: a table with a line of names first, its cells parted by commas and quoted
/// by " where they hold one, or a JSON object on each line, with texts and whole numbers as values.
/// Lines that hold nothing are skipped; "-" is standard input. Fails (usage) where the file cannot
/// be read or is neither; messages begin with FILE:LINE.
std::vector<ManifestEntry> ReadManifest(const std::string& path);

}  // namespace wavechain

#endif
