#ifndef WAVEFILTERS_HOST_BATCH_CHOICES_H
#define WAVEFILTERS_HOST_BATCH_CHOICES_H

#include <string>
#include <string_view>
#include <vector>

#include "host/run.h"

namespace wavechain {

/// A file that one recording of a batch has in the place of what its chain says or would find:
/// "palate", or "GlotSyn.events" for filters of one kind only.
struct FileChoice {
  std::string column = {};
  std::string path = {};
};

/// The host's arguments that name a file: data, palate, events, with.
std::vector<std::string_view> FileArguments();

/// Whether such a column can be understood: an argument that names a file, with or without a
/// filter's name before it.
bool IsFileColumn(std::string_view column);

/// The chains with these files. Fails (usage) where no filter takes one, or where filters of
/// several kinds would take it for files of different content. `place` leads the message.
ChainSet WithFiles(const ChainSet& chains, const std::vector<FileChoice>& choices,
                   const std::string& place);

}  // namespace wavechain

#endif
