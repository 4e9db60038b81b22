#ifndef WAVEFILTERS_HOST_SKELETON_H
#define WAVEFILTERS_HOST_SKELETON_H

#include <CLI/App.hpp>
#include <string>
#include <vector>

#include "host/catalogue.h"

namespace wavechain {

/// A chain file to fill in, with these filters in order: each parameter with its default, and
/// its unit, range and meaning in comments. What has no default, and what the host itself acts
/// on, stands as a comment, too: a filter that needs it is refused until it is filled in.
std::string SkeletonText(const std::vector<const FilterKind*>& kinds);

/// `wavechain skeleton`.
struct SkeletonCommand {
  std::vector<std::string> filters = {};

  /// Adds the command; parsing fills in and prints the text. Fails (usage) with the nearest name
  /// where there is no such filter.
  void AddTo(CLI::App& app);
};

}  // namespace wavechain

#endif
