#ifndef WAVEFILTERS_BENCHES_SIGNALS_H
#define WAVEFILTERS_BENCHES_SIGNALS_H

#include <cstddef>
#include <vector>

namespace wavefilters::bench {

/// White noise between -1 and 1, the same in every run.
std::vector<float> Noise(std::size_t count);

}  // namespace wavefilters::bench

#endif
