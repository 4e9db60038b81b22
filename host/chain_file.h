#ifndef WAVEFILTERS_HOST_CHAIN_FILE_H
#define WAVEFILTERS_HOST_CHAIN_FILE_H

#include <string>
#include <vector>

#include "host/filter_arguments.h"

namespace wavechain {

/// Reads a saved chain: a TOML file with a table [[filter]] for each filter, in order, which
/// names its `kind` and gives its parameters and the host's own arguments by name. Names of
/// files in it are relative to its folder. The calls are those that `-f` would give.
///
/// Fails (usage) where the file cannot be read or is not TOML, where it holds no filter or a
/// key that nobody knows, and as ResolveFilter does. Messages begin with FILE:LINE:COLUMN.
std::vector<FilterCall> ReadChainFile(const std::string& path);

}  // namespace wavechain

#endif
