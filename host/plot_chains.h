#ifndef WAVEFILTERS_HOST_PLOT_CHAINS_H
#define WAVEFILTERS_HOST_PLOT_CHAINS_H

#include <string>
#include <string_view>
#include <vector>

#include "host/filter_arguments.h"
#include "host/plot.h"
#include "host/plot_picture.h"

namespace wavechain {

/// What the chain of -f is called.
constexpr std::string_view MainChain = "after";

/// A chain to be drawn, and what it is called.
struct NamedChain {
  std::string name;
  std::vector<FilterCall> calls;
};

/// The chains that a picture was asked for: that of -f, if there is one, then each --track. Fails
/// (usage) on names that are missing or given twice, and as ParseFilter does.
std::vector<NamedChain> ParseChains(const PlotRequest& request);

/// The filters one after the other for human readers: what was given of their parameters, or
/// all where nothing was, and files without their folders.
std::string ChainText(const std::vector<FilterCall>& calls);

/// Where the picture is to go. Fails (usage) where no format can be told.
PictureTarget TargetOf(const PlotRequest& request);

/// What must hold before any work is done: as CheckTarget, for every file that is read. Fails
/// (usage) where picture and layout would both go to standard output.
void CheckPictureTarget(const PlotRequest& request, const std::vector<NamedChain>& chains);

}  // namespace wavechain

#endif
