#ifndef WAVEFILTERS_FRAME_SISO_FILTER_H
#define WAVEFILTERS_FRAME_SISO_FILTER_H

#include "frame/block_timer.h"
#include "frame/interfaces.h"
#include "frame/ref.h"

namespace wavefilters {

/// Base of every filter: one source, one output, an optional console.
///
/// All fifteen operations of IWaveFilterC exist here and pass through or do nothing, so a
/// filter overrides the slots that it changes. What the operations mean stands in
/// interfaces.h; below stands what this class makes of them.
///
/// A filter is unconnected, then connected by Set_src_list, then pulled, then unconnected
/// again by Dispose or by a Set_src_list with other sources. GetDescriptor, TransmitNow and
/// SrcSet need a source. Calls among a filter's own operations go through its slots: a host
/// may have exchanged one.
class SISOFilter : public IWaveFilterC {
 public:
  void GetDescriptor(IWaveDescriptorC** out) override;
  int TransmitNow(float* buffer, int count, int& produced) override;
  /// Disposes of and releases the source. The console is kept.
  void Dispose() override;
  /// The source's answer; true without a source.
  bool EndOfSrc() override;
  void EnableInPlace(bool flag) override;
  /// Keeps the first source, releases the others in order.
  int Set_src_list(IWaveSourceC** sources, int count) override;
  void Set_param_list(double* values, int count) override;
  void Set_console_out(IConsoleOutC* console) override;
  /// Adds a reference and releases it at once: nothing is kept.
  void Set_num_stream(INumStreamC* stream) override;
  int SrcSet() override;
  void Init(IWaveDescriptorC* descriptor) override;
  void Init(double interval_ms) override;

 protected:
  SISOFilter() = default;
  /// The end of every filter: the source is disposed of and released, then the console
  /// released. Derived classes have let go of their own things before.
  ~SISOFilter();

  IWaveSourceC* Source() const { return upstream.Get(); }
  IConsoleOutC* Console() const { return reports.Get(); }
  /// Fetches the source's descriptor; there must be a source.
  Ref<IWaveDescriptorC> SourceDescriptor() const;
  /// Takes over the caller's reference. The previous source has been let go of before.
  void KeepSource(IWaveSourceC* source) { upstream = Ref<IWaveSourceC>::Adopt(source); }
  /// Disposes of the source, if any, releases and forgets it.
  void DropSource();

  BlockTimer timer;  // for the classes that report timings

 private:
  Ref<IConsoleOutC> reports;
  Ref<IWaveSourceC> upstream;
};

}  // namespace wavefilters

#endif
