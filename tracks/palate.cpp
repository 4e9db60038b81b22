#include "tracks/palate.h"

#include <algorithm>
#include <cmath>

#include "frame/lifetime.h"
#include "numstream/num_stream.h"

namespace wavefilters {

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
  Nearest nearest;
  for (std::int32_t i = 0; i < searched; ++i) {
    const double dx = xs[i] - x;
    const double dy = ys[i] - y;
    // Roots are compared, not squares: two squares may differ and yet have the same root.
    const double distance = std::sqrt(dx * dx + dy * dy);
    if (distance < nearest.distance) {
      nearest = {distance, i};
    }
  }
  return nearest;
}

}  // namespace wavefilters
