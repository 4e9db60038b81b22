#ifndef WAVEFILTERS_HOST_PELLET_GAPS_H
#define WAVEFILTERS_HOST_PELLET_GAPS_H

#include <cstdint>
#include <span>
#include <string>
#include <vector>

#include "host/filter_arguments.h"
#include "host/gaps.h"

namespace wavechain {

/// Decides record by record whether everything that a filter's measure asks for was measured.
/// That is more than whether the filter renders a number: speed and tangential acceleration also
/// need the record before, or the two before, though the filter then measures from the last
/// complete record, or from the origin.
class MeasureCheck {
 public:
  /// For a call of BeamPel or BeamData; `palatePoints` are those that the filter searches.
  MeasureCheck(const FilterCall& filterCall, std::int64_t palatePoints);

  /// How many numbers of each line the filter reads.
  int Numbers() const;
  /// The next record as it stands in the file, coded as differences.
  bool IsMeasured(const std::vector<double>& record);

 private:
  bool Has(int column) const;
  bool HasPair(int pellet) const { return Has(2 * pellet - 1) && Has(2 * pellet); }
  bool HasDistance();
  bool IsComplete();

  const FilterCall& call;
  std::int64_t palate;
  std::vector<double> sums;
  int before = 0;                           // complete records in a row before this one
  std::vector<int> checked = {1, 1, 1, 1};  // columns that mode 7 looks at for missing values
};

/// What of a signal that is `length` samples long the filter leaves without data: samples that
/// rest on records that were not measured, and all behind the last record. `rendered`: the
/// filter begins no record in the last 1024 samples before there.
Gaps PelletGaps(const std::string& path, const FilterCall& call, std::int64_t palatePoints,
                double interval_ms, std::int64_t length, std::int64_t rendered);

}  // namespace wavechain

#endif
