#pragma once

#include <algorithm>
#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "reference/host_objects.h"
#include "reference/int32.h"
#include "reference/number_file.h"
#include "reference/signal_path.h"

namespace reference {

// A track-driven filter: takes its source's samples into a staging buffer, lets Apply rewrite all
// that is staged, and hands out what lies beyond the reserve.
class AddTrack {
 public:
  virtual ~AddTrack() = default;

  virtual void GetDescriptor(Descriptor*& out) { out = source->GetDescriptor(); }
  virtual int Get_mem() { return 0; }
  virtual void Apply(float*, std::int64_t /*count*/, std::int64_t /*start*/) {}

  void Set_num_stream(NumStream* supplied) {
    if (stream != nullptr) stream->Release();
    supplied->AddRef();
    stream = supplied;
  }

  void Set_src_list(const std::vector<Source*>& sources) {
    Dispose();
    if (sources.empty()) return;
    source = sources[0];
    for (std::size_t i = 1; i < sources.size(); ++i) sources[i]->Release();
    SrcSet();
  }

  void SrcSet() {
    Descriptor* descriptor = source->GetDescriptor();
    Init(*descriptor);
    descriptor->Release();
    buf_count = 0;
    buf_start = 0;
  }

  // Returns the number of samples handed out.
  int TransmitNow(float* out, int n) {
    if (source != nullptr && !source->EndOfSrc()) TakeFromSource(n);
    std::int64_t k = 0;
    if (source != nullptr && !source->EndOfSrc()) {
      k = std::min<std::int64_t>(n, buf_count - Get_mem());
    } else {
      k = std::min<std::int64_t>(n, buf_count);
    }
    if (k <= 0) return 0;
    for (std::int64_t i = 0; i < k; ++i) out[i] = track_buf[static_cast<std::size_t>(i)];
    for (std::int64_t i = k; i < buf_count; ++i) {
      track_buf[static_cast<std::size_t>(i - k)] = track_buf[static_cast<std::size_t>(i)];
    }
    buf_count -= k;
    buf_start += k;
    return static_cast<int>(k);
  }

  bool EndOfSrc() {
    if (buf_count > 0) return false;
    return source == nullptr || source->EndOfSrc();
  }

  void Dispose() {
    if (stream != nullptr) stream->Close();
    DropSource();
  }

  void LastRelease() {
    if (stream != nullptr) {
      stream->Close();
      stream->Release();
      stream = nullptr;
    }
    DropSource();
  }

 protected:
  virtual void Init(Descriptor& descriptor) = 0;

  bool Open(const std::string& name) {
    if (stream != nullptr) return stream->Open(name);
    own = std::make_unique<NumberFile>();
    stream = own.get();
    Descriptor* descriptor = source->GetDescriptor();
    const std::string path = descriptor->GetName(512);
    descriptor->Release();
    return stream->Open(Stem(path) + name);
  }

  NumStream* stream = nullptr;
  Source* source = nullptr;

 private:
  void TakeFromSource(std::int64_t n) {
    const std::int64_t wish = Get_mem() + n;
    const int want = Int32((wish <= 8192 ? wish : 8192) - buf_count);
    std::int64_t got = source->TransmitNow(&track_buf[static_cast<std::size_t>(buf_count)], want);
    got = std::min<std::int64_t>(got, want);  // a claim beyond the request is taken at the request
    if (got <= 0) return;
    buf_count += got;
    Apply(track_buf.data(), buf_count, buf_start);
  }

  void DropSource() {
    if (source == nullptr) return;
    source->Dispose();
    source->Release();
    source = nullptr;
  }

  std::unique_ptr<NumberFile> own;
  std::vector<float> track_buf = std::vector<float>(8192 + 1, 0.0F);
  std::int64_t buf_count = 0;
  std::int64_t buf_start = 0;
};

}  // namespace reference
