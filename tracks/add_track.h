#ifndef WAVEFILTERS_TRACKS_ADD_TRACK_H
#define WAVEFILTERS_TRACKS_ADD_TRACK_H

#include <cstdint>
#include <string>

#include "frame/siso_filter.h"

namespace wavefilters {

/// Samples that a track-driven filter holds between its source and its caller.
inline constexpr int TrackBufferSize = 8192;

/// Base of the filters whose output is computed from a data file that runs in step with
/// the input: the pellet readers and the voice sources.
///
/// Samples pass through a staging buffer. Whenever the source has delivered, Apply rewrites
/// all that is staged, in place; then leaves what lies beyond a reserve of Get_mem samples,
/// so Apply sees that much of the future. At the source's end the reserve leaves as the last
/// Apply left it: no Apply follows the end.
///
/// The data file is read through a number stream. A host may supply one, and then resolves
/// names itself; otherwise the filter makes one of its own when it first opens a file, and
/// keeps it through Dispose.
class AddTrack : public SISOFilter {
 public:
  /// May deliver fewer than `n` samples, and none, while the source still runs.
  int TransmitNow(float* out, int n, int& got) override;
  /// Closes the data file (the stream is kept), then lets go of the source. What is staged
  /// can still be pulled.
  void Dispose() override;
  /// True once the source has ended and nothing is staged.
  bool EndOfSrc() override;
  /// Releases the stream held before and keeps a reference to this one.
  void Set_num_stream(INumStreamC* stream) override;
  /// Also restarts the time base: the next sample from the source has index 0.
  int SrcSet() override;
  /// Slot 15. How many staged samples are kept back while the source runs, 0 to 8191.
  virtual int Get_mem();
  /// Slot 16. Rewrites buf[0 .. count); buf[0] is sample `start` of the signal, counted from
  /// 0. Calls overlap: samples held back as reserve come again, as the call before left them.
  virtual void Apply(float* buf, int count, int start);

 protected:
  AddTrack() = default;
  /// Closes and releases the stream.
  ~AddTrack();

  /// Opens the data file; true when it is open. A supplied stream (or one kept from an
  /// earlier attachment) is given `name` as it is. Otherwise a stream is made, and the file
  /// is the signal's path without extension followed by the whole of `name`. Without source
  /// and stream nothing opens.
  bool Open(std::string name);

  /// The stream's operations of the same names; false where there is no stream.
  bool GetLine() { return numStream && numStream->GetLine(); }
  bool GetDouble(double& value) { return numStream && numStream->GetDouble(value); }
  bool GetSingle(float& value) { return numStream && numStream->GetSingle(value); }

 private:
  void PullFromSource(int n);

  Ref<INumStreamC> numStream;
  float trackBuf[TrackBufferSize] = {};
  std::int32_t bufCount = 0;  // valid samples in trackBuf
  std::int32_t bufStart = 0;  // index in the signal of trackBuf[0]
};

}  // namespace wavefilters

#endif
