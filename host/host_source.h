#ifndef WAVEFILTERS_HOST_HOST_SOURCE_H
#define WAVEFILTERS_HOST_HOST_SOURCE_H

#include <utility>

#include "frame/interfaces.h"
#include "frame/ref.h"
#include "host/signal_descriptor.h"

namespace wavechain {

/// Base of the sources that the host puts into a chain. Filters pass the in-place hint of
/// slot 7 to whatever feeds them, so each of these has all slots of a filter; those that set
/// a filter up do nothing here.
class HostSource : public wavefilters::IWaveFilterC {
 public:
  /// A descriptor of its own for each caller.
  void GetDescriptor(wavefilters::IWaveDescriptorC** out) override;
  void EnableInPlace(bool flag) override;
  /// Takes over the references as every filter does, and gives them back: no source is kept.
  int Set_src_list(wavefilters::IWaveSourceC** sources, int count) override;
  void Set_param_list(double* values, int count) override;
  void Set_console_out(wavefilters::IConsoleOutC* console) override;
  void Set_num_stream(wavefilters::INumStreamC* stream) override;
  int SrcSet() override;
  void Init(wavefilters::IWaveDescriptorC* descriptor) override;
  void Init(double interval_ms) override;

  /// What this source delivers.
  const SignalInfo& Info() const { return info; }
  /// What a filter fed by this source delivers, according to the descriptor it handed on.
  /// The interface has no question for unit and full scale: they are read where the
  /// descriptor is the one this source gave last, and otherwise taken as unchanged.
  SignalInfo Read(wavefilters::IWaveDescriptorC& descriptor) const;

 protected:
  explicit HostSource(SignalInfo delivered) : info(std::move(delivered)) {}
  ~HostSource() = default;

 private:
  SignalInfo info;
  wavefilters::Ref<SignalDescriptor> lastGiven;
};

}  // namespace wavechain

#endif
