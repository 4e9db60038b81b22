#include "tracks/palate.h"

#include <algorithm>
#include <cmath>
#include <limits>

#include "frame/lifetime.h"
#include "numstream/num_stream.h"

namespace wavefilters {
namespace {

// The smallest of the numbers, infinity where there is none; what is not a number is passed
// over. Eight candidates are kept so that the comparisons do not wait for one another.
double Smallest(const double* numbers, std::int32_t count) {
  constexpr std::int32_t Lanes = 8;
  double least[Lanes];
  std::fill_n(least, Lanes, std::numeric_limits<double>::infinity());
  std::int32_t i = 0;
  for (; i + Lanes <= count; i += Lanes) {
    for (std::int32_t lane = 0; lane < Lanes; ++lane) {
      least[lane] = numbers[i + lane] < least[lane] ? numbers[i + lane] : least[lane];
    }
  }
  for (; i < count; ++i) {
    least[0] = numbers[i] < least[0] ? numbers[i] : least[0];
  }
  return *std::min_element(least, least + Lanes);
}

}  // namespace

std::string Palate::FileFor(const std::string& signalPath) {
  const auto slash = signalPath.rfind('\\');
  const std::string folder =
      slash == std::string::npos ? signalPath : signalPath.substr(0, slash + 1);
  return folder + "pal.dat";
}

bool Palate::Load(const std::string& file) {
  count = 0;
  Embedded<NumStream> stream{StreamMode::Text};
  if (!stream.OpenFromString(file)) {
    return false;
  }
  while (count < Capacity && stream.GetLine() && stream.GetDouble(xs[count]) &&
         stream.GetDouble(ys[count])) {
    ++count;
  }
  stream.Close();
  return true;
}

Palate::Nearest Palate::NearestTo(double x, double y) const {
  constexpr std::int32_t SearchLimit = 2048;
  const std::int32_t searched = std::min(count - 1, SearchLimit);
  double squares[SearchLimit];
  for (std::int32_t i = 0; i < searched; ++i) {
    const double dx = xs[i] - x;
    const double dy = ys[i] - y;
    squares[i] = dx * dx + dy * dy;
  }
  // Roots keep the order of squares, so that one root is enough to know the distance.
  const double smallest = Smallest(squares, searched);
  const double distance = std::sqrt(smallest);
  Nearest nearest;
  if (!(distance < nearest.distance)) {
    return nearest;
  }
  // But not their differences: the first point at this distance may have a square that is larger
  // by a few units in the last place. The bound lies above all of these.
  const double bound = smallest * (1.0 + 8.0 * std::numeric_limits<double>::epsilon()) +
                       std::numeric_limits<double>::min();
  std::int32_t first = 0;
  while (!(squares[first] <= bound && std::sqrt(squares[first]) == distance)) {
    ++first;
  }
  return {distance, first};
}

}  // namespace wavefilters
