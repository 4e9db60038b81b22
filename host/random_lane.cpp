#include "host/random_lane.h"

#include <cstdlib>

namespace wavechain {

RandomLane::RandomLane(unsigned seed) : before(::initstate(seed, state.data(), state.size())) {
  ::setstate(before);
}

RandomLane::~RandomLane() { ::setstate(before); }

void RandomLane::Take() { ::setstate(state.data()); }

}  // namespace wavechain
