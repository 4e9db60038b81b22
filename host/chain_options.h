#ifndef WAVEFILTERS_HOST_CHAIN_OPTIONS_H
#define WAVEFILTERS_HOST_CHAIN_OPTIONS_H

#include <string>
#include <vector>

#include "host/filter_arguments.h"

namespace CLI {  // NOLINT(readability-identifier-naming): so the library calls it
class App;
}

namespace wavechain {

/// One -f, or one --chain, whose filters stand in its place.
struct ChainPart {
  bool isFile = false;
  std::string text = {};  // the filter, or the chain file's path
};

/// Gives the command the options -f and --chain, which fill `parts` in the order in which they
/// are written. `parts` must outlive the command.
void AddChainOptions(CLI::App& command, std::vector<ChainPart>& parts);

/// The filters of all parts, in order. Fails (usage) where there is none, and as ParseFilter
/// and ReadChainFile do.
std::vector<FilterCall> ReadChain(const std::vector<ChainPart>& parts);

}  // namespace wavechain

#endif
