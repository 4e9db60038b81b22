#ifndef TESTS_REFERENCE_EVENT_SOURCE_H_
#define TESTS_REFERENCE_EVENT_SOURCE_H_

#include <cstdint>
#include <string>
#include <utility>
#include <vector>

#include "reference/add_track.h"
#include "reference/int32.h"
#include "reference/tract.h"

namespace reference {

// What the three event-driven sources share: the file, the sampling interval, the next event.
class EventSource : public AddTrack {
 public:
  int Get_mem() override { return 4096; }
  void Set_param_list(const std::vector<double>&) {}

  void Init(double interval) {
    interval_ms = interval;
    pending = Open(extension) && ReadNextTime();
    // No time can be counted in such intervals.
    if (!(interval_ms > 0.0)) pending = false;
  }

 protected:
  explicit EventSource(std::string name) : extension(std::move(name)) {}

  void Init(Descriptor& descriptor) override { Init(descriptor.GetPeriod()); }

  // Goes to the next line and takes its instant as the next one. False at the end of the data.
  bool ReadNextTime() {
    double time_ms = 0.0;
    if (!stream->GetLine() || !stream->GetDouble(time_ms)) return false;
    next = Int32(time_ms / interval_ms);
    return true;
  }

  // The coefficients of the current line's remaining numbers, of which 256 at most are read.
  std::vector<float> ReadTract() {
    std::vector<float> ratios;
    float ratio = 0.0F;
    while (ratios.size() < 256 && stream->GetSingle(ratio)) ratios.push_back(ratio);
    return StepUp(ratios);
  }

  // Whether the next instant lies more than a tail's 1024 samples before the block's end.
  bool NextFits(std::int64_t count, std::int64_t start) const {
    return next < start + count - 1024;
  }

  double interval_ms = 0.0;
  bool pending = false;
  std::int64_t next = 0;

 private:
  std::string extension;
};

}  // namespace reference

#endif  // TESTS_REFERENCE_EVENT_SOURCE_H_
