#ifndef WAVEFILTERS_TRACKS_BEAM_DATA_H
#define WAVEFILTERS_TRACKS_BEAM_DATA_H

#include <array>
#include <cstddef>
#include <cstdint>

#include "tracks/add_track.h"
#include "tracks/frame_span.h"
#include "tracks/palate.h"

namespace wavefilters {

/// A measure of pellet movement as a signal: distances, a bend, velocities, accelerations
/// or the distance to the palate.
///
/// | index | parameter                                                | default |
/// |-------|----------------------------------------------------------|---------|
/// | 0     | mode, see below                                          | 0       |
/// | 1     | a: first pellet (mode 7); 1 for point numbers (mode 8)   | 0       |
/// | 2     | b: second pellet (mode 7)                                | 0       |
///
/// Every call of Set_param_list first clears a and b; all are truncated to whole numbers.
///
/// | mode | measure                                     | true unit    | announced       |
/// |------|---------------------------------------------|--------------|-----------------|
/// | 1    | distance of pellets 3 and 4                 | mm           | mm, 150         |
/// | 2    | signed bend at pellet 4                     | mm           | mm, 150         |
/// | 3    | velocity of pellet 3's y                    | mm/s         | mm/s, 500       |
/// | 4    | change of that velocity since the last one  | um/s         | mm/s^2, 50000   |
/// | 5    | speed of pellet 3                           | mm/ms        | mm, 150         |
/// | 6    | tangential acceleration of pellet 3         | mm/s per ms  | mm, 150         |
/// | 7    | distance of pellets a and b (1 to 8)        | mm           | mm, 150         |
/// | 8    | pellet 3 to the nearest palate point        | mm or number | mm/s, 100       |
/// | else | none, the output is 0                       |              | mm, 150         |
///
/// The file is BeamPel's: records of 16 differences (x and y of eight pellets), rendered in
/// the same way. A record whose measure needs a coordinate without measurement (a running
/// sum of 1000000 and more) is rendered as 0. The data end with the file, or at a line of
/// fewer than 16 numbers. Without a palate file (Palate::FileFor) nothing is rendered, in
/// any mode, and the pellet file is not opened.
class BeamData : public AddTrack {
 public:
  /// The source's descriptor with unit and full scale as announced above.
  void GetDescriptor(IWaveDescriptorC** out) override;
  void Set_param_list(double* values, int count) override;
  void Init(IWaveDescriptorC* descriptor) override;
  /// Sums and time start again. The history of the measures stays, also when another source
  /// is attached.
  void Init(double interval_ms) override;
  int Get_mem() override;
  void Apply(float* buf, int count, int start) override;

 protected:
  BeamData();
  ~BeamData() = default;

 private:
  using Record = std::array<double, 16>;

  bool ReadRecord();
  /// The measure of the current record by the mode; 0 where it is not valid.
  double Measure();
  double Bend() const;
  double Velocity() const;
  double Acceleration() const;
  double Speed();
  double TangentialAcceleration();
  double PairDistance();
  double PalateDistance() const;

  /// Whether coord[first .. last] have all been measured.
  bool Measured(std::size_t first, std::size_t last) const;
  /// Distance of the pellets whose x stand at these places in `coord`, in file units.
  double Distance(std::size_t from, std::size_t to) const;
  /// How far pellet 3 has come since it was last asked for, in millimetres.
  double Path_mm();

  std::int32_t mode = 0;
  std::int32_t paramA = 0;
  std::int32_t paramB = 0;

  bool haveData = false;
  FrameSpan span;
  Record coord = {};  // running sums, thousandths of a millimetre
  Record coordPrev;   // one record earlier
  Record coordPrev2;  // two records earlier

  // Modes 5 and 6: where pellet 3 was at the last valid record, and how fast it had come there.
  double lastX_mm = 0.0;
  double lastY_mm = 0.0;
  double lastSpeed = 0.0;  // mm/s
  // Mode 7: places in `coord` of the two pellets of the last valid record.
  std::array<std::size_t, 4> pairIndex = {};

  Palate palate;
};

}  // namespace wavefilters

#endif
