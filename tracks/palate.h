#ifndef WAVEFILTERS_TRACKS_PALATE_H
#define WAVEFILTERS_TRACKS_PALATE_H

#include <cstdint>
#include <string>

namespace wavefilters {

/// The contour of a speaker's palate, from a text file with a point's x and y per line, in
/// thousandths of a millimetre.
class Palate {
 public:
  /// The nearest point of the contour that is searched.
  struct Nearest {
    double distance = 1000000.0;
    std::int32_t index = 0;
  };

  /// The contour's file beside the signal: the path up to and including its last backslash,
  /// then "pal.dat". Only a backslash ends a folder; without one, "pal.dat" follows the
  /// whole path.
  static std::string FileFor(const std::string& signalPath);

  /// Reads at most 4096 points, up to the first line without two numbers. False where the
  /// file does not open; the contour is then empty.
  bool Load(const std::string& file);

  /// Searches the first 2048 points, never the last one read; the first of equally near
  /// points is taken. Where nothing is searched, or nothing nearer than 1000000, the result
  /// is point 0 at 1000000.
  Nearest NearestTo(double x, double y) const;

 private:
  static constexpr std::int32_t Capacity = 4096;

  double xs[Capacity] = {};
  double ys[Capacity] = {};
  std::int32_t count = 0;
};

}  // namespace wavefilters

#endif
