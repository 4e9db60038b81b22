#pragma once

#include <algorithm>
#include <cstdint>

#include "reference/add_track.h"

namespace reference {

// What the two pellet filters share: one record every 6.866 ms, held for one frame period around
// its time, over the samples that it covers. A subclass reads a record and gives its value.
class PelletRecords : public AddTrack {
 public:
  int Get_mem() override { return 4096; }

  void Apply(float* buf, std::int64_t count, std::int64_t start) override {
    if (span_end < start) span_end = start;
    for (std::int64_t i = span_end - start; i < count; ++i) buf[i] = 0.0F;
    while (have_data && span_end - start < count - 1024) {
      float value = 0.0F;
      if (!ReadRecord(value)) {
        have_data = false;
        return;
      }
      have_data = stream->GetLine();
      const std::int64_t first = std::max<std::int64_t>(span_end - start, 0);
      NextSpan();
      const std::int64_t last = std::min<std::int64_t>(span_end - start, count);
      for (std::int64_t i = first; i < last; ++i) buf[i] = value;
    }
  }

  // The file stays where it is, and so does the end of the span last rendered.
  virtual void Init(double interval_ms) {
    sample_ms = interval_ms;
    span_end_ms = -10.299;
  }

 protected:
  using AddTrack::Init;

  // Reads the current line and forms its value; false where the line does not hold a record.
  virtual bool ReadRecord(float& value) = 0;

  void OpenRecords(const std::string& name) {
    const bool opened = Open(name);
    have_data = false;
    if (!opened) return;
    have_data = stream->GetLine();
    NextSpan();
  }

 private:
  void NextSpan() {
    span_end_ms += 6.866;
    span_end = Int32(span_end_ms / sample_ms);
  }

  double sample_ms = 0.0;
  bool have_data = false;
  double span_end_ms = 0.0;
  std::int64_t span_end = 0;
};

}  // namespace reference
