#include "host/host_source.h"

#include "host/make.h"

namespace wavechain {

using wavefilters::IConsoleOutC;
using wavefilters::INumStreamC;
using wavefilters::IWaveDescriptorC;
using wavefilters::Ref;

void HostSource::GetDescriptor(IWaveDescriptorC** out) {
  lastGiven = Make<SignalDescriptor>(info);
  *out = Ref<SignalDescriptor>::Share(lastGiven.Get()).Detach();
}

void HostSource::EnableInPlace(bool /*flag*/) {}

int HostSource::Set_src_list(IWaveSourceC** sources, int count) {
  for (int i = 0; i < count; ++i) {
    sources[i]->Release();
  }
  return 0;
}

void HostSource::Set_param_list(double* /*values*/, int /*count*/) {}
void HostSource::Set_console_out(IConsoleOutC* /*console*/) {}
void HostSource::Set_num_stream(INumStreamC* /*stream*/) {}
int HostSource::SrcSet() { return 0; }
void HostSource::Init(IWaveDescriptorC* /*descriptor*/) {}
void HostSource::Init(double /*interval_ms*/) {}

SignalInfo HostSource::Read(IWaveDescriptorC& descriptor) const {
  if (&descriptor == lastGiven.Get()) {
    return lastGiven->Info();
  }
  SignalInfo read = info;
  read.length = descriptor.GetLength();
  descriptor.GetPeriod(&read.interval_ms);
  return read;
}

}  // namespace wavechain
