#include "voice/glot_syn.h"

namespace wavefilters {

void GlotSyn::Apply(float* out, int count, int start) {
  int ready = 0;
  while (Due(count, start)) {
    GlotPulse& pulse = pulses[ready];
    if (!ReadResonance(pulse)) {
      End();
      break;
    }
    ReadTract(pulse.tract);
    const std::int64_t index = Index();
    const std::int64_t at = index - start;
    pulse.period = Advance() ? Index() - index : count - at;
    if (at >= 0 && pulse.period >= 1) {
      pulse.at = static_cast<int>(at);
      ++ready;
    }
    if (ready == MostPulsesAtOnce) {
      AddPulses(pulses, ready, Interval_ms(), out);
      ready = 0;
    }
  }
  AddPulses(pulses, ready, Interval_ms(), out);
}

bool GlotSyn::ReadResonance(GlotPulse& pulse) {
  return GetDouble(pulse.amplitude) && GetDouble(pulse.frequency_kHz) &&
         GetDouble(pulse.bandwidth_kHz);
}

}  // namespace wavefilters
