#include "frame/siso_filter.h"

namespace wavefilters {

SISOFilter::~SISOFilter() {
  DropSource();
  reports.Reset();
}

void SISOFilter::GetDescriptor(IWaveDescriptorC** out) { Source()->GetDescriptor(out); }

int SISOFilter::TransmitNow(float* buffer, int count, int& produced) {
  return Source()->TransmitNow(buffer, count, produced);
}

void SISOFilter::Dispose() { DropSource(); }

bool SISOFilter::EndOfSrc() { return Source() == nullptr || Source()->EndOfSrc(); }

void SISOFilter::EnableInPlace(bool flag) {
  if (Source() != nullptr) {
    // The hint travels by slot number: every source has slot 7, the host's own as well.
    static_cast<IWaveFilterC*>(Source())->EnableInPlace(flag);
  }
}

int SISOFilter::Set_src_list(IWaveSourceC** sources, int count) {
  Dispose();
  if (count < 1) {
    return 0;
  }
  KeepSource(sources[0]);
  for (int i = 1; i < count; ++i) {
    sources[i]->Release();
  }
  return SrcSet();
}

void SISOFilter::Set_param_list(double* /*values*/, int /*count*/) {}

void SISOFilter::Set_console_out(IConsoleOutC* console) {
  // In this order, also when the same console comes again: hosts count on it.
  reports.Reset();
  reports = Ref<IConsoleOutC>::Share(console);
}

void SISOFilter::Set_num_stream(INumStreamC* stream) {
  if (stream != nullptr) {
    stream->AddRef();
    stream->Release();
  }
}

int SISOFilter::SrcSet() {
  const Ref<IWaveDescriptorC> descriptor = SourceDescriptor();
  Init(descriptor.Get());
  return 0;
}

void SISOFilter::Init(IWaveDescriptorC* descriptor) {
  double interval_ms = 0.0;
  descriptor->GetPeriod(&interval_ms);
  Init(interval_ms);
}

void SISOFilter::Init(double /*interval_ms*/) {}

Ref<IWaveDescriptorC> SISOFilter::SourceDescriptor() const {
  IWaveDescriptorC* descriptor = nullptr;
  Source()->GetDescriptor(&descriptor);
  return Ref<IWaveDescriptorC>::Adopt(descriptor);
}

void SISOFilter::DropSource() {
  if (Source() != nullptr) {
    Source()->Dispose();
    upstream.Reset();
  }
}

}  // namespace wavefilters
