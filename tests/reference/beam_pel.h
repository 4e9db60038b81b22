#pragma once

#include <vector>

#include "reference/pellet_records.h"

namespace reference {

// One column of a pellet file, summed from record to record, in millimetres.
class BeamPel : public PelletRecords {
 public:
  void Set_param_list(const std::vector<double>& values) {
    if (!values.empty()) column = Int32(values[0]);
  }

  void GetDescriptor(Descriptor*& out) override {
    out = source->GetDescriptor();
    out->SetUnits("mm");
    out->SetRange(100.0);
  }

  void Init(double interval_ms) override {
    PelletRecords::Init(interval_ms);
    track_value = 0.0;
  }

 protected:
  void Init(Descriptor& descriptor) override {
    Init(descriptor.GetPeriod());
    OpenRecords(Stem(descriptor.GetName(512)) + ".xyd");
  }

  bool ReadRecord(float& value) override {
    if (column < 1) return false;
    double number = 0.0;
    for (int i = 0; i < column; ++i) {
      if (!stream->GetDouble(number)) return false;
    }
    track_value += number;
    value = track_value >= 1000000.0 ? 0.0F : static_cast<float>(track_value / 1000.0);
    return true;
  }

 private:
  int column = 6;
  double track_value = 0.0;
};

}  // namespace reference
