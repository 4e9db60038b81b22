#ifndef WAVEFILTERS_HOST_SIGNAL_DESCRIPTOR_H
#define WAVEFILTERS_HOST_SIGNAL_DESCRIPTOR_H

#include <cstdint>
#include <string>
#include <utility>

#include "frame/interfaces.h"

namespace wavechain {

/// What is known of a signal.
struct SignalInfo {
  std::int64_t length = 0;   // samples
  double interval_ms = 0.0;  // between samples
  double fullScale = 1.0;    // in the signal's unit
  std::string units = {};    // empty for plain sample values
  std::string name = {};     // path of the recording, with its extension
};

/// A description of a signal that filters may amend, which is why each GetDescriptor hands
/// out one of its own. Across the boundary a length has 32 bits: a longer signal is announced
/// as 2^31 - 1 samples.
class SignalDescriptor : public wavefilters::IWaveDescriptorC {
 public:
  int GetLength() override;
  void SetLength(int length) override;
  void GetPeriod(double* interval_ms) override;
  void SetPeriod(double interval_ms) override;
  void Reserved7() override {}
  void Reserved8() override {}
  void Reserved9() override {}
  void SetRange(double fullScale) override;
  void Reserved11() override {}
  void Reserved12() override {}
  void Reserved13() override {}
  void Reserved14() override {}
  void Reserved15() override {}
  void SetUnits(const char* units) override;
  void GetName(char* buffer, int size) override;

  /// What the description has become; its length is the untouched 64-bit one unless a filter
  /// has set another.
  const SignalInfo& Info() const { return info; }

 protected:
  explicit SignalDescriptor(SignalInfo described) : info(std::move(described)) {}
  ~SignalDescriptor() = default;

 private:
  SignalInfo info;
};

}  // namespace wavechain

#endif
