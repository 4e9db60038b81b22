#include "voice/event_track.h"

#include "frame/numeric.h"

namespace wavefilters {

void EventTrack::Init(double interval_ms) {
  sample_ms = interval_ms;
  pending = false;
  const bool read = Open(fileExtension) && Advance();
  pending = read && interval_ms > 0.0;
}

int EventTrack::Get_mem() { return 4096; }

bool EventTrack::Due(int count, int start) const {
  constexpr std::int64_t Tail = 1024;
  return pending && nextIndex < std::int64_t{start} + count - Tail;
}

bool EventTrack::Advance() {
  pending = GetLine() && GetDouble(nextTime_ms);
  if (pending) {
    nextIndex = ToInt32(nextTime_ms / sample_ms);
  }
  return pending;
}

void EventTrack::ReadTract(Tract& tract) {
  float ratios[MaxTractOrder];
  int count = 0;
  while (count < MaxTractOrder && GetSingle(ratios[count])) {
    ++count;
  }
  tract.Set(ratios, count);
}

}  // namespace wavefilters
