#pragma once

#include <array>
#include <cmath>
#include <vector>

#include "reference/pellet_records.h"

namespace reference {

// Eight measures of the pellets' running sums, one per record.
class BeamData : public PelletRecords {
 public:
  void Set_param_list(const std::vector<double>& values) {
    param_a = values.size() >= 2 ? Int32(values[1]) : 0;
    param_b = values.size() >= 3 ? Int32(values[2]) : 0;
    if (!values.empty()) mode = Int32(values[0]);
  }

  void GetDescriptor(Descriptor*& out) override {
    out = source->GetDescriptor();
    out->SetUnits(mode == 4 ? "mm/s^2" : mode == 3 || mode == 8 ? "mm/s" : "mm");
    out->SetRange(mode == 4 ? 50000.0 : mode == 3 ? 500.0 : mode == 8 ? 100.0 : 150.0);
  }

  void Init(double interval_ms) override {
    PelletRecords::Init(interval_ms);
    coord.fill(0.0);
  }

 protected:
  void Init(Descriptor& descriptor) override {
    Init(descriptor.GetPeriod());
    if (!ReadPalate(PalatePath(descriptor.GetName(512)))) return;
    OpenRecords(Stem(descriptor.GetName(512)) + ".xyd");
  }

  bool ReadRecord(float& value) override {
    std::array<double, 16> record{};
    for (double& number : record) {
      if (!stream->GetDouble(number)) return false;
    }
    for (std::size_t i = 0; i < 16; ++i) coord[i] += record[i];
    value = static_cast<float>(Measure());
    coord_prev2 = coord_prev;
    coord_prev = coord;
    return true;
  }

 private:
  // The file's number i, counted from 1 as in the table of measures.
  double C(int i) const { return coord[static_cast<std::size_t>(i - 1)]; }

  bool Valid(int first, int last) const {
    for (int i = first; i <= last; ++i) {
      if (!(C(i) < 1000000.0)) return false;
    }
    return true;
  }

  static double Length(double x, double y) { return std::sqrt(x * x + y * y); }

  double Measure() {
    switch (mode) {
      case 1:
        return Valid(5, 8) ? Length(C(7) - C(5), C(8) - C(6)) / 1000 : 0.0;
      case 2:
        return Valid(5, 10) ? Bend() : 0.0;
      case 3:
        return Valid(6, 6) && coord_prev[5] < 1000000.0 ? (C(6) - coord_prev[5]) / 6.866 : 0.0;
      case 4:
        return Valid(6, 6) && coord_prev[5] < 1000000.0 && coord_prev2[5] < 1000000.0
                   ? Acceleration()
                   : 0.0;
      case 5:
        return Valid(5, 6) ? Step() / 6.866 : 0.0;
      case 6:
        return Valid(5, 6) ? TangentialAcceleration() : 0.0;
      case 7:
        return PairDistance();
      case 8:
        return Valid(5, 6) ? Palate() : 0.0;
      default:
        return 0.0;
    }
  }

  double Bend() const {
    const double d = Length(C(7) - C(5), C(8) - C(6));
    const double a1 = std::atan2(C(8) - C(6), C(7) - C(5));
    const double a2 = std::atan2(C(10) - C(8), C(9) - C(7));
    return std::sin(a2 - a1) * d / 1000;
  }

  double Acceleration() const {
    const double p1 = coord_prev[5];
    const double p2 = coord_prev2[5];
    return 1000 * ((C(6) - p1) / 6.866 - (p1 - p2) / 6.866);
  }

  // The way from the position that modes 5 and 6 last saw, in millimetres.
  double Step() {
    const double x = C(5) / 1000;
    const double y = C(6) / 1000;
    const double way = Length(last_x - x, last_y - y);
    last_x = x;
    last_y = y;
    return way;
  }

  double TangentialAcceleration() {
    const double speed = 1000 * Step() / 6.866;
    const double change = (speed - last_speed) / 6.866;
    last_speed = speed;
    return change;
  }

  double PairDistance() {
    if (param_a <= 0 || param_b <= 0) return 0.0;
    for (const int index : pair_index) {
      if (!Valid(index + 1, index + 1)) return 0.0;
    }
    // Without such a pellet the record has no measure and leaves everything as it was.
    if (param_a > 8 || param_b > 8) return 0.0;
    pair_index = {2 * param_a - 2, 2 * param_a - 1, 2 * param_b - 2, 2 * param_b - 1};
    return Length(C(pair_index[2] + 1) - C(pair_index[0] + 1),
                  C(pair_index[3] + 1) - C(pair_index[1] + 1)) /
           1000;
  }

  double Palate() const {
    double smallest = 1000000.0;
    int nearest = 0;
    for (int i = 0; i < palate_count - 1 && i < 2048; ++i) {
      const auto at = static_cast<std::size_t>(i);
      const double distance = Length(palate_x[at] - C(5), palate_y[at] - C(6));
      if (distance < smallest) {
        smallest = distance;
        nearest = i;
      }
    }
    return param_a == 1 ? nearest + 1 : smallest / 1000;
  }

  bool ReadPalate(const std::string& name) {
    palate_count = 0;
    NumberFile file;
    if (!file.Open(name)) return false;
    double x = 0.0;
    double y = 0.0;
    while (palate_count < 4096 && file.GetLine() && file.GetDouble(x) && file.GetDouble(y)) {
      palate_x[static_cast<std::size_t>(palate_count)] = x;
      palate_y[static_cast<std::size_t>(palate_count)] = y;
      ++palate_count;
    }
    return true;
  }

  static constexpr std::array<double, 16> NotYetRead() {
    std::array<double, 16> values{};
    values.fill(1000000.0);
    return values;
  }

  int mode = 0;
  int param_a = 0;
  int param_b = 0;
  std::array<double, 16> coord{};
  std::array<double, 16> coord_prev = NotYetRead();
  std::array<double, 16> coord_prev2 = NotYetRead();
  double last_x = 0.0;
  double last_y = 0.0;
  double last_speed = 0.0;
  std::array<int, 4> pair_index{};
  std::vector<double> palate_x = std::vector<double>(4096, 0.0);
  std::vector<double> palate_y = std::vector<double>(4096, 0.0);
  int palate_count = 0;
};

}  // namespace reference
