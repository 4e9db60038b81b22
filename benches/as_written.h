#ifndef WAVEFILTERS_BENCHES_AS_WRITTEN_H
#define WAVEFILTERS_BENCHES_AS_WRITTEN_H

#include <fstream>
#include <memory>
#include <sstream>
#include <string>

#include "frame/interfaces.h"

namespace wavefilters::bench {

// The yardstick of every ratio: each computation as one would first write it down, one output
// after the other, with the same bits. Compiled by g++ -O2 whatever compiler builds the rest.

/// out[i] = sum of in[i + k] * coef[k], four products at a time.
void ConvolveAsWritten(const float* in, const float* coef, int taps, float* out, int outCount);

/// A rational resampler by high-rate steps.
struct ResampleAsWritten {
  const float* coef;
  int coefCount;
  int margins;  // histLen + aheadLen
  int up;
  int down;
  int phase = 0;
  int downCount = 0;

  void Apply(const float* in, float* out, int nIn, int nOut, int& consumed, int& produced);
};

/// Glottal pulses, from the numbers of `events` whose first instant has been read, added to `out`
/// one after the other.
struct GlottalAsWritten {
  double interval_ms;
  double next_ms;
  INumStreamC* events;

  void Apply(float* out, int count);
};

/// A reader of number files with a string stream for each line.
class NumberFileAsWritten {
 public:
  bool Open(const std::string& name);
  bool GetLine();
  bool GetDouble(double& value);

 private:
  std::ifstream file;
  std::unique_ptr<std::istringstream> line;
  std::string text;
};

/// Index of the point nearest to (x, y), the first of equals.
int NearestAsWritten(const double* xs, const double* ys, int count, double x, double y);

}  // namespace wavefilters::bench

#endif
