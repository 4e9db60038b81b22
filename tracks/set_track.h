#ifndef WAVEFILTERS_TRACKS_SET_TRACK_H
#define WAVEFILTERS_TRACKS_SET_TRACK_H

#include <cstdint>

#include "frame/lifetime.h"
#include "frame/siso_filter.h"
#include "numstream/num_stream.h"

namespace wavefilters {

/// Replaces its source's signal by a recorded track, -10 to 10, from the file beside the
/// signal that shares its name and ends in ".iop": 1024 bytes of header, then signed 16-bit
/// values, the more significant byte first. A last odd byte is ignored.
///
/// The source gives the name and the descriptor; its samples are never pulled. There are no
/// parameters. The sampling interval is always 1.145081873353945 ms, the length the track's own.
///
/// A track once open never ends: a host stops at the length that GetDescriptor announces,
/// and what comes beyond it means nothing. Without a track (a missing file, or no whole
/// value after the header) the length is 0 and EndOfSrc is true from the start.
class SetTrack : public SISOFilter {
 public:
  using SISOFilter::Init;

  /// The source's descriptor with the track's interval and length.
  void GetDescriptor(IWaveDescriptorC** out) override;
  /// The file is read for the first time when the first sample is asked for. Returns 1.
  int TransmitNow(float* buffer, int count, int& produced) override;
  /// Closes the track, then lets go of the source. EndOfSrc answers as before.
  void Dispose() override;
  bool EndOfSrc() override;
  void Init(IWaveDescriptorC* descriptor) override;

 protected:
  SetTrack() = default;
  ~SetTrack() = default;

 private:
  static constexpr std::int32_t Capacity = 4096;

  bool Refill();

  bool endOfTrack = true;
  std::int32_t length = 0;    // samples of the track
  std::int32_t buffered = 0;  // values in the buffer
  std::int32_t readPosition = 0;
  Embedded<NumStream> track{StreamMode::Binary};
  std::int16_t values[Capacity] = {};
};

}  // namespace wavefilters

#endif
