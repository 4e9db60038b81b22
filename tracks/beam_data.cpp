#include "tracks/beam_data.h"

#include <algorithm>
#include <cmath>
#include <functional>

#include "frame/params.h"
#include "tracks/signal_path.h"

namespace wavefilters {
namespace {

// Places of coordinates in a record: x of pellets 3, 4 and 5, y of pellet 3. The y of a
// pellet follows its x.
constexpr std::size_t X3 = 4;
constexpr std::size_t Y3 = 5;
constexpr std::size_t X4 = 6;
constexpr std::size_t X5 = 8;

bool IsMeasured(double coordinate) { return coordinate < MissingData; }

double Length(double dx, double dy) { return std::sqrt(dx * dx + dy * dy); }

}  // namespace

BeamData::BeamData() {
  // Nothing has been measured before the first record: derivatives wait for their history.
  coordPrev.fill(MissingData);
  coordPrev2.fill(MissingData);
}

void BeamData::GetDescriptor(IWaveDescriptorC** out) {
  Source()->GetDescriptor(out);
  // The labels that hosts know, modes 5, 6 and 8 included.
  const char* units = "mm";
  double fullScale = 150.0;
  if (mode == 4) {
    units = "mm/s^2";
    fullScale = 50000.0;
  } else if (mode == 3) {
    units = "mm/s";
    fullScale = 500.0;
  } else if (mode == 8) {
    units = "mm/s";
    fullScale = 100.0;
  }
  (*out)->SetUnits(units);
  (*out)->SetRange(fullScale);
}

void BeamData::Set_param_list(double* values, int count) {
  paramA = 0;
  paramB = 0;
  const Params list{values, count};
  list.ReadInt(0, mode);
  list.ReadInt(1, paramA);
  list.ReadInt(2, paramB);
}

void BeamData::Init(IWaveDescriptorC* descriptor) {
  double interval_ms = 0.0;
  descriptor->GetPeriod(&interval_ms);
  Init(interval_ms);

  if (!palate.Load(Palate::FileFor(SignalPath(descriptor)))) {
    return;
  }
  haveData = false;
  if (Open(StemOf(SignalPath(descriptor)) + ".xyd")) {
    haveData = GetLine();
    span.Advance();
  }
}

void BeamData::Init(double interval_ms) {
  span.Restart(interval_ms);
  coord.fill(0.0);
}

int BeamData::Get_mem() { return PelletReserve; }

void BeamData::Apply(float* buf, int count, int start) {
  span.ZeroRest(buf, count, start);
  while (haveData && span.WantsRecord(count, start)) {
    if (!ReadRecord()) {
      haveData = false;
      return;
    }
    const double measure = Measure();
    // For every record, valid or not, whatever the mode.
    coordPrev2 = coordPrev;
    coordPrev = coord;
    // The record just read is rendered also where no line follows it.
    haveData = GetLine();
    span.Hold(buf, count, start, static_cast<float>(measure));
  }
}

bool BeamData::ReadRecord() {
  Record numbers;
  for (double& number : numbers) {
    if (!GetDouble(number)) {
      return false;
    }
  }
  std::transform(coord.begin(), coord.end(), numbers.begin(), coord.begin(), std::plus<>());
  return true;
}

double BeamData::Measure() {
  switch (mode) {
    case 1:
      return Measured(X3, X4 + 1) ? Distance(X3, X4) / PerMillimetre : 0.0;
    case 2:
      return Measured(X3, X5 + 1) ? Bend() : 0.0;
    case 3:
      return Measured(Y3, Y3) && IsMeasured(coordPrev[Y3]) ? Velocity() : 0.0;
    case 4:
      return Measured(Y3, Y3) && IsMeasured(coordPrev[Y3]) && IsMeasured(coordPrev2[Y3])
                 ? Acceleration()
                 : 0.0;
    case 5:
      return Measured(X3, Y3) ? Speed() : 0.0;
    case 6:
      return Measured(X3, Y3) ? TangentialAcceleration() : 0.0;
    case 7:
      return PairDistance();
    case 8:
      return Measured(X3, Y3) ? PalateDistance() : 0.0;
    default:
      return 0.0;
  }
}

// The segment from pellet 3 to pellet 4 times the sine of the turn into the one that follows.
double BeamData::Bend() const {
  const double incoming = std::atan2(coord[X4 + 1] - coord[X3 + 1], coord[X4] - coord[X3]);
  const double outgoing = std::atan2(coord[X5 + 1] - coord[X4 + 1], coord[X5] - coord[X4]);
  return std::sin(outgoing - incoming) * Distance(X3, X4) / PerMillimetre;
}

// Thousandths of a millimetre per millisecond are millimetres per second.
double BeamData::Velocity() const { return (coord[Y3] - coordPrev[Y3]) / FramePeriod_ms; }

// Times 1000 and not divided by the frame period once more: the scale of existing measurements.
double BeamData::Acceleration() const {
  return 1000.0 * ((coord[Y3] - coordPrev[Y3]) / FramePeriod_ms -
                   (coordPrev[Y3] - coordPrev2[Y3]) / FramePeriod_ms);
}

double BeamData::Speed() { return Path_mm() / FramePeriod_ms; }

double BeamData::TangentialAcceleration() {
  const double speed = 1000.0 * Path_mm() / FramePeriod_ms;
  const double acceleration = (speed - lastSpeed) / FramePeriod_ms;
  lastSpeed = speed;
  return acceleration;
}

double BeamData::PairDistance() {
  const auto isMeasured = [this](std::size_t place) { return IsMeasured(coord[place]); };
  // The places of the record before are tested: a change of pellets reaches this test late.
  if (paramA <= 0 || paramB <= 0 || !std::all_of(pairIndex.begin(), pairIndex.end(), isMeasured)) {
    return 0.0;
  }
  // A record has eight pellets. Other numbers are not kept, so that the next pair counts again.
  constexpr std::int32_t Pellets = 8;
  if (paramA > Pellets || paramB > Pellets) {
    return 0.0;
  }
  const std::size_t a = 2 * static_cast<std::size_t>(paramA) - 2;
  const std::size_t b = 2 * static_cast<std::size_t>(paramB) - 2;
  pairIndex = {a, a + 1, b, b + 1};
  return Distance(a, b) / PerMillimetre;
}

double BeamData::PalateDistance() const {
  const Palate::Nearest nearest = palate.NearestTo(coord[X3], coord[Y3]);
  return paramA == 1 ? nearest.index + 1.0 : nearest.distance / PerMillimetre;
}

bool BeamData::Measured(std::size_t first, std::size_t last) const {
  for (std::size_t place = first; place <= last; ++place) {
    if (!IsMeasured(coord[place])) {
      return false;
    }
  }
  return true;
}

double BeamData::Distance(std::size_t from, std::size_t to) const {
  return Length(coord[to] - coord[from], coord[to + 1] - coord[from + 1]);
}

double BeamData::Path_mm() {
  const double x_mm = coord[X3] / PerMillimetre;
  const double y_mm = coord[Y3] / PerMillimetre;
  const double path_mm = Length(lastX_mm - x_mm, lastY_mm - y_mm);
  lastX_mm = x_mm;
  lastY_mm = y_mm;
  return path_mm;
}

}  // namespace wavefilters
