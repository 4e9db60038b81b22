#ifndef WAVEFILTERS_VOICE_EVENT_TRACK_H
#define WAVEFILTERS_VOICE_EVENT_TRACK_H

#include <cstdint>

#include "tracks/add_track.h"
#include "voice/tract.h"

namespace wavefilters {

/// What the voice sources share: a text file of events, one a line, that begins with the
/// event's instant in milliseconds. One event is pending at a time; its line is current in the
/// number stream, read up to the instant.
///
/// An event is rendered once it lies more than 1024 samples before the end of the staged block,
/// so that what it rings on for fits. Where an instant cannot be read, the data end.
class EventTrack : public AddTrack {
 public:
  using AddTrack::Init;
  /// Opens the event file and reads the first instant. An interval that is not above 0 leaves
  /// the filter silent, as a file that cannot be read does.
  void Init(double interval_ms) override;
  int Get_mem() override;

 protected:
  /// `extension` begins with its dot; it is text that outlives the filter.
  explicit EventTrack(const char* extension) : fileExtension(extension) {}
  ~EventTrack() = default;

  double Interval_ms() const { return sample_ms; }
  /// Sample index of the pending event, from the start of the signal.
  std::int32_t Index() const { return nextIndex; }
  /// True when the pending event is to be rendered into a block of `count` samples from
  /// sample `start` on.
  bool Due(int count, int start) const;
  /// The data have ended, or cannot be read on: nothing is pending any more.
  void End() { pending = false; }
  /// Makes the next line's event the pending one. Without one the data end: false.
  bool Advance();
  /// Reads log-area ratios from the rest of the current line, up to 256 of them or to the
  /// first that is no number, into `tract`.
  void ReadTract(Tract& tract);

 private:
  const char* fileExtension;

  double sample_ms = 0.0;
  bool pending = false;
  double nextTime_ms = 0.0;
  std::int32_t nextIndex = 0;
};

}  // namespace wavefilters

#endif
