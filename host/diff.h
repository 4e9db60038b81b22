#ifndef WAVEFILTERS_HOST_DIFF_H
#define WAVEFILTERS_HOST_DIFF_H

#include <string>

namespace wavechain {

/// What `wavechain diff` was asked for.
struct DiffRequest {
  std::string a;  // a path; one of the two may be "-"
  std::string b;
  double tolerance = 0.0;
  bool json = false;
  bool quiet = false;
  bool allowTruncated = false;
};

struct DiffAnswer {
  bool same = false;
  std::string text;  // what to print; nothing with `quiet`
};

/// Compares two files sample by sample. Files of another rate, number of channels or length are
/// not the same either; what both have is compared all the same, unless their channels differ in
/// number. Fails where one of them cannot be read.
DiffAnswer Diff(const DiffRequest& request);

}  // namespace wavechain

#endif
