#ifndef WAVEFILTERS_TRACKS_BEAM_PEL_H
#define WAVEFILTERS_TRACKS_BEAM_PEL_H

#include <cstdint>

#include "tracks/add_track.h"
#include "tracks/frame_span.h"

namespace wavefilters {

/// One coordinate of a pellet file as a signal in millimetres.
///
/// | index | parameter                                     | unit  | default |
/// |-------|-----------------------------------------------|-------|---------|
/// | 0     | column: which number of each line, from 1     | count | 6       |
///
/// The file lies beside the signal and ends in ".xyd": text, one record per line and every
/// 6.866 ms, whitespace-separated numbers in thousandths of a millimetre. Numbers are
/// differences: the running sum of the column is what is rendered, held over one frame
/// period around the record's time. A sum of 1000000 and more means no measurement and is
/// rendered as 0. The input gives the time base and the length only.
///
/// The data end with the file, or at a line that holds fewer than `column` numbers; from
/// there on, and without a file, the output is 0. A column below 1 has no data. A record
/// that starts in the last 1024 samples of the signal is not rendered.
class BeamPel : public AddTrack {
 public:
  /// The source's descriptor with the unit "mm" and a full scale of 100.
  void GetDescriptor(IWaveDescriptorC** out) override;
  void Set_param_list(double* values, int count) override;
  void Init(IWaveDescriptorC* descriptor) override;
  /// Sum and time start again; the file stays where it is.
  void Init(double interval_ms) override;
  int Get_mem() override;
  void Apply(float* buf, int count, int start) override;

 protected:
  BeamPel() = default;
  ~BeamPel() = default;

 private:
  bool ReadRecord();

  std::int32_t column = 6;

  bool haveData = false;
  FrameSpan span;
  double trackValue = 0.0;  // running sum, thousandths of a millimetre
};

}  // namespace wavefilters

#endif
