#include "tracks/add_track.h"

#include <algorithm>

#include "frame/lifetime.h"
#include "frame/numeric.h"
#include "numstream/num_stream.h"
#include "tracks/signal_path.h"

namespace wavefilters {

AddTrack::~AddTrack() {
  if (numStream) {
    numStream->Close();
  }
  numStream.Reset();
}

int AddTrack::TransmitNow(float* out, int n, int& got) {
  if (Source() != nullptr && !Source()->EndOfSrc()) {
    PullFromSource(n);
  }
  std::int64_t ready = bufCount;
  // Asked again: the read may have brought the end, and with it the reserve is released.
  if (Source() != nullptr && !Source()->EndOfSrc()) {
    ready = std::min<std::int64_t>(ready, std::int64_t{bufCount} - Get_mem());
  }
  const auto count = static_cast<std::int32_t>(std::min<std::int64_t>(n, ready));
  if (count <= 0) {
    got = 0;
    return 0;
  }
  std::copy_n(trackBuf, count, out);
  std::copy(trackBuf + count, trackBuf + bufCount, trackBuf);
  bufCount -= count;
  bufStart = LimitToInt32(std::int64_t{bufStart} + count);
  got = count;
  return 0;
}

void AddTrack::PullFromSource(int n) {
  const std::int64_t reach = std::min<std::int64_t>(std::int64_t{Get_mem()} + n, TrackBufferSize);
  // A want of 0 or below is asked for as well: sources and hosts count on every call.
  const std::int32_t want = LimitToInt32(reach - bufCount);
  int delivered = 0;
  Source()->TransmitNow(trackBuf + bufCount, want, delivered);
  delivered = Delivered(delivered, want);
  if (delivered > 0) {
    bufCount += delivered;
    Apply(trackBuf, bufCount, bufStart);
  }
}

void AddTrack::Dispose() {
  if (numStream) {
    numStream->Close();
  }
  SISOFilter::Dispose();
}

bool AddTrack::EndOfSrc() { return bufCount <= 0 && SISOFilter::EndOfSrc(); }

void AddTrack::Set_num_stream(INumStreamC* stream) {
  numStream.Reset();
  numStream = Ref<INumStreamC>::Share(stream);
}

int AddTrack::SrcSet() {
  SISOFilter::SrcSet();
  bufCount = 0;
  bufStart = 0;
  return 0;
}

int AddTrack::Get_mem() { return 0; }

void AddTrack::Apply(float* /*buf*/, int /*count*/, int /*start*/) {}

bool AddTrack::Open(std::string name) {
  if (numStream) {
    return numStream->Open(name.data());
  }
  if (Source() == nullptr) {
    return false;
  }
  Set_num_stream(new Heap<NumStream>(StreamMode::Text));
  auto descriptor = SourceDescriptor();
  std::string path = StemOf(SignalPath(descriptor.Get())) + name;
  descriptor.Reset();
  return numStream && numStream->Open(path.data());
}

}  // namespace wavefilters
