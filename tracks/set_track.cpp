#include "tracks/set_track.h"

#include <algorithm>

#include "tracks/signal_path.h"

namespace wavefilters {
namespace {

constexpr double TrackInterval_ms = 1.145081873353945;
constexpr std::int32_t HeaderBytes = 1024;
constexpr std::int32_t BytesPerValue = 2;

constexpr std::int16_t SwapBytes(std::int16_t value) {
  const auto bits = static_cast<std::uint16_t>(value);
  return static_cast<std::int16_t>(static_cast<std::uint16_t>((bits << 8) | (bits >> 8)));
}

}  // namespace

void SetTrack::Init(IWaveDescriptorC* descriptor) {
  double interval_ms = 0.0;
  descriptor->GetPeriod(&interval_ms);
  Init(interval_ms);

  std::string name = StemOf(SignalPath(descriptor)) + ".iop";
  track.Close();
  endOfTrack = !track.Open(name.data());
  buffered = 0;
  readPosition = 0;
  length = 0;
  if (!endOfTrack) {
    track.SkipBytes(HeaderBytes);
    length = track.BytesRemain() / BytesPerValue;
    endOfTrack = length < 1;
  }
}

void SetTrack::GetDescriptor(IWaveDescriptorC** out) {
  Source()->GetDescriptor(out);
  (*out)->SetPeriod(TrackInterval_ms);
  (*out)->SetLength(length);
}

int SetTrack::TransmitNow(float* buffer, int count, int& produced) {
  produced = 0;
  while (!endOfTrack && produced < count) {
    const std::int32_t used = std::min(buffered - readPosition, count - produced);
    for (std::int32_t i = 0; i < used; ++i) {
      // A full scale of 32768 becomes 10.
      buffer[produced + i] = static_cast<float>(values[readPosition + i] * 10.0 * 3.0517578125e-5);
    }
    readPosition += used;
    produced += used;
    // Refilled as soon as it is used up, also when the request is already complete.
    if (readPosition >= buffered && !Refill()) {
      break;
    }
  }
  return 1;
}

bool SetTrack::Refill() {
  readPosition = 0;
  // Reading does not reduce what remains: while the track is open, every refill asks for as
  // much as the first.
  buffered = track.BytesRemain() / BytesPerValue;
  endOfTrack = buffered < 1;
  if (endOfTrack) {
    return false;
  }
  buffered = std::min(buffered, Capacity);
  // Behind the end of the file nothing more comes; the swap runs over the old values again.
  track.ReadBytes(reinterpret_cast<char*>(values), buffered * BytesPerValue);
  std::transform(values, values + buffered, values, SwapBytes);
  return true;
}

void SetTrack::Dispose() {
  track.Close();
  SISOFilter::Dispose();
}

bool SetTrack::EndOfSrc() { return endOfTrack; }

}  // namespace wavefilters
