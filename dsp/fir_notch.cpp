#include "dsp/fir_notch.h"

#include "frame/params.h"

namespace wavefilters {

void FIRNotch::Set_param_list(double* values, int count) {
  FIRFilter::Set_param_list(values, count);
  const Params list{values, count};
  list.Read(1, notchFreq);
  list.Read(2, edgeWeight);
}

void FIRNotch::CalcCoef(float* coefficients, int taps, double interval_s) {
  constexpr double TwoPi = 6.283185307179586;
  if (Console() != nullptr) {
    Console()->PutNum(10, 6, TwoPi * notchFreq * interval_s);
    Console()->NewLine();
  }
  DesignNotch(coefficients, taps, interval_s, notchFreq, edgeWeight);
}

}  // namespace wavefilters
