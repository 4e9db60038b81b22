#include "tracks/beam_pel.h"

#include "frame/params.h"
#include "tracks/signal_path.h"

namespace wavefilters {

void BeamPel::GetDescriptor(IWaveDescriptorC** out) {
  Source()->GetDescriptor(out);
  (*out)->SetUnits("mm");
  (*out)->SetRange(100.0);
}

void BeamPel::Set_param_list(double* values, int count) {
  const Params list{values, count};
  list.ReadInt(0, column);
}

void BeamPel::Init(IWaveDescriptorC* descriptor) {
  double interval_ms = 0.0;
  descriptor->GetPeriod(&interval_ms);
  Init(interval_ms);

  haveData = false;
  if (Open(StemOf(SignalPath(descriptor)) + ".xyd")) {
    haveData = GetLine();
    span.Advance();
  }
}

void BeamPel::Init(double interval_ms) {
  span.Restart(interval_ms);
  trackValue = 0.0;
}

int BeamPel::Get_mem() { return PelletReserve; }

void BeamPel::Apply(float* buf, int count, int start) {
  span.ZeroRest(buf, count, start);
  while (haveData && span.WantsRecord(count, start)) {
    if (!ReadRecord()) {
      haveData = false;
      return;
    }
    // The record just read is rendered also where no line follows it.
    haveData = GetLine();
    const double shown_mm = trackValue >= MissingData ? 0.0 : trackValue / PerMillimetre;
    span.Hold(buf, count, start, static_cast<float>(shown_mm));
  }
}

bool BeamPel::ReadRecord() {
  double number = 0.0;
  for (std::int32_t i = 0; i < column; ++i) {
    if (!GetDouble(number)) {
      return false;
    }
  }
  if (column < 1) {
    return false;
  }
  trackValue += number;
  return true;
}

}  // namespace wavefilters
