#ifndef WAVEFILTERS_HOST_FREQUENCY_RESPONSE_H
#define WAVEFILTERS_HOST_FREQUENCY_RESPONSE_H

#include <complex>
#include <cstddef>
#include <vector>

#include "host/filter_arguments.h"
#include "host/filter_library.h"
#include "host/log.h"

namespace wavechain {

/// What a chain of linear filters does to a sine of each frequency from 0 to half the rate: the
/// values are equally spaced, both ends included. Delays are counted from the input.
struct Response {
  double rate = 1.0;  // Hz
  std::vector<std::complex<double>> gains;

  double Frequency_Hz(std::size_t index) const {
    return 0.5 * rate * static_cast<double>(index) / static_cast<double>(gains.size() - 1);
  }
};

/// Sends an impulse through the chain, made by the library, and transforms what comes out.
/// Fails (usage) on a filter that has no frequency response, and says why; fails (input) where
/// the chain rings on without an end.
Response MeasureResponse(const FilterLibrary& library, const std::vector<FilterCall>& calls,
                         double rate, Log& log);

}  // namespace wavechain

#endif
