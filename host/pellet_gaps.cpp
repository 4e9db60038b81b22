#include "host/pellet_gaps.h"

#include <algorithm>
#include <cmath>
#include <limits>

#include "host/data_check.h"

namespace wavechain {
namespace {

constexpr double Missing = 1000000.0;
constexpr double RecordPeriod_ms = 6.866;
constexpr double Start_ms = -10.299;  // one and a half periods before 0
constexpr std::int64_t UnrenderedTail = 1024;
constexpr int RecordNumbers = 16;

// As filters make sample numbers of times.
std::int64_t SampleAt(double time_ms, double interval_ms) {
  constexpr double Most = std::numeric_limits<std::int32_t>::max();
  return static_cast<std::int64_t>(std::clamp(std::trunc(time_ms / interval_ms), -Most, Most));
}

bool IsColumn(const FilterCall& call) { return call.kind->name == "BeamPel"; }

}  // namespace

MeasureCheck::MeasureCheck(const FilterCall& filterCall, std::int64_t palatePoints)
    : call(filterCall), palate(palatePoints), sums(static_cast<std::size_t>(Numbers())) {}

int MeasureCheck::Numbers() const {
  return IsColumn(call) ? static_cast<int>(call.values[0]) : RecordNumbers;
}

bool MeasureCheck::Has(int column) const {
  return sums[static_cast<std::size_t>(column) - 1] < Missing;
}

bool MeasureCheck::IsMeasured(const std::vector<double>& record) {
  for (std::size_t i = 0; i < sums.size(); ++i) {
    sums[i] += record[i];
  }
  const bool complete = IsComplete();
  const int needed = IsColumn(call) || call.values[0] < 3 || call.values[0] > 6 ? 0
                     : call.values[0] == 3 || call.values[0] == 5               ? 1
                                                                                : 2;
  const bool measured = complete && before >= needed;
  before = complete ? before + 1 : 0;
  return measured;
}

// Whether the record itself holds what the measure asks for.
bool MeasureCheck::IsComplete() {
  if (IsColumn(call)) {
    return Has(Numbers());
  }
  switch (static_cast<int>(call.values[0])) {
    case 1:
      return HasPair(3) && HasPair(4);
    case 2:
      return HasPair(3) && HasPair(4) && HasPair(5);
    case 3:
    case 4:
      return Has(6);
    case 5:
    case 6:
      return HasPair(3);
    case 7:
      return HasDistance();
    case 8:
      return HasPair(3) && palate > 0;
    default:
      return false;
  }
}

// The filter looks for missing values at the pellets of the record before, in the first record
// at column 1: it may render 0 though both were measured, or a number though one was not.
bool MeasureCheck::HasDistance() {
  const int a = static_cast<int>(call.values[1]);
  const int b = static_cast<int>(call.values[2]);
  const auto has = [this](int column) { return Has(column); };
  if (a <= 0 || b <= 0 || !std::ranges::all_of(checked, has)) {
    return false;
  }
  checked = {2 * a - 1, 2 * a, 2 * b - 1, 2 * b};
  return std::ranges::all_of(checked, has);
}

Gaps PelletGaps(const std::string& path, const FilterCall& call, std::int64_t palatePoints,
                double interval_ms, std::int64_t length, std::int64_t rendered) {
  MeasureCheck check(call, palatePoints);
  Gaps gaps;
  // Summed up period by period as the filter does: where a span's end falls on a sample, the
  // sum's rounding decides.
  double end_ms = Start_ms + RecordPeriod_ms;
  std::int64_t end = SampleAt(end_ms, interval_ms);
  ReadRecords(path, check.Numbers(), [&](const std::vector<double>& record) {
    if (end >= rendered - UnrenderedTail) {
      return false;
    }
    const std::int64_t start = end;
    end_ms += RecordPeriod_ms;
    end = SampleAt(end_ms, interval_ms);
    if (!check.IsMeasured(record)) {
      gaps.Add({start, std::min(end, length)});
    }
    return true;
  });
  gaps.Add({std::max<std::int64_t>(end, 0), length});
  return gaps;
}

}  // namespace wavechain
