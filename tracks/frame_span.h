#ifndef WAVEFILTERS_TRACKS_FRAME_SPAN_H
#define WAVEFILTERS_TRACKS_FRAME_SPAN_H

#include <algorithm>
#include <cstdint>

#include "frame/numeric.h"

namespace wavefilters {

/// Time between two records of a pellet file.
inline constexpr double FramePeriod_ms = 6.866;
/// Where the frame before the first record begins: one and a half periods before 0.
inline constexpr double FirstFrame_ms = -10.299;
/// Values from here on, in thousandths of a millimetre, mark a record without measurement.
inline constexpr double MissingData = 1000000.0;
/// Thousandths of a millimetre in a millimetre, the unit of what is rendered.
inline constexpr double PerMillimetre = 1000.0;
/// What the pellet readers have AddTrack keep back.
inline constexpr int PelletReserve = 4096;

/// Where the records of a pellet file lie in the signal: each is held for one frame period,
/// centred on its time. Shared by the two pellet readers.
///
/// The operations on a buffer take it as Apply gets it: buf[0 .. count), where buf[0] is
/// sample `start` of the signal. They write nothing outside it, whatever they are given, and
/// stay in 64 bits where sums of 32-bit numbers may leave their range.
class FrameSpan {
 public:
  /// Back to before the first record. The end in samples waits for the next Advance.
  void Restart(double interval_ms) {
    sample_ms = interval_ms;
    end_ms = FirstFrame_ms;
  }

  /// Moves the end on by one record. Its times are summed: a product would round otherwise.
  void Advance() {
    end_ms += FramePeriod_ms;
    end = ToInt32(end_ms / sample_ms);
  }

  /// Zeroes what lies behind the last record. What lies before it has been rendered by an
  /// earlier call.
  void ZeroRest(float* buf, int count, int start) {
    end = std::max(end, start);
    Fill(buf, End(start), count, 0.0F);
  }

  /// Whether another record belongs here: none that starts in the buffer's last 1024 samples.
  bool WantsRecord(int count, int start) const { return End(start) < std::int64_t{count} - 1024; }

  /// Advances over the next record and holds its value over the record's samples.
  void Hold(float* buf, int count, int start, float value) {
    const std::int64_t first = std::max<std::int64_t>(End(start), 0);
    Advance();
    Fill(buf, first, std::min<std::int64_t>(End(start), count), value);
  }

 private:
  std::int64_t End(int start) const { return std::int64_t{end} - start; }

  static void Fill(float* buf, std::int64_t first, std::int64_t last, float value) {
    if (first < last) {
      std::fill(buf + first, buf + last, value);
    }
  }

  double sample_ms = 0.0;
  double end_ms = 0.0;
  std::int32_t end = 0;  // index in the signal of the first sample behind the last record
};

}  // namespace wavefilters

#endif
