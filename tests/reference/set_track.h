#pragma once

#include <algorithm>
#include <array>
#include <cstdint>
#include <filesystem>
#include <fstream>
#include <string>
#include <vector>

#include "reference/host_objects.h"
#include "reference/signal_path.h"

namespace reference {

// A recorded track: 1024 bytes of header, then 16-bit values, most significant byte first, handed
// out from a buffer of 4096 values that is kept as the bytes that were last read into it.
class SetTrack {
 public:
  void GetDescriptor(Descriptor*& out) {
    out = source->GetDescriptor();
    out->SetPeriod(1.145081873353945);
    out->SetLength(static_cast<int>(length));
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
  }

  // Returns the number of samples handed out.
  int TransmitNow(float* out, int count) {
    int produced = 0;
    while (!endOfTrack && produced < count) {
      while (position < buffered && produced < count) {
        out[produced++] = static_cast<float>(Value(position++) * 10.0 * 3.0517578125e-5);
      }
      if (position >= buffered) Refill();
    }
    return produced;
  }

  bool EndOfSrc() const { return endOfTrack; }

  void Dispose() {
    isOpen = false;
    if (source == nullptr) return;
    source->Dispose();
    source->Release();
    source = nullptr;
  }

  void LastRelease() { Dispose(); }

 private:
  void Init(Descriptor& descriptor) {
    descriptor.GetPeriod();
    name = Stem(descriptor.GetName(512)) + ".iop";
    std::error_code error;
    isOpen = std::filesystem::is_regular_file(name, error);
    const std::int64_t size =
        isOpen ? static_cast<std::int64_t>(std::filesystem::file_size(name)) : 0;
    filePosition = std::min<std::int64_t>(size, 1024);
    bytesRemaining = size - filePosition;
    length = bytesRemaining / 2;
    endOfTrack = length < 1;
    position = 0;
    buffered = 0;
  }

  void Refill() {
    position = 0;
    buffered = isOpen ? bytesRemaining / 2 : 0;
    endOfTrack = buffered < 1;
    if (endOfTrack) return;
    buffered = std::min<std::int64_t>(buffered, 4096);
    // The file as it is now: it may have been cut or written to since it was opened.
    std::ifstream file(name, std::ios::binary);
    file.seekg(filePosition);
    const std::int64_t wanted = std::min<std::int64_t>(2 * buffered, bytesRemaining);
    char byte = 0;
    for (std::int64_t i = 0; i < wanted && file.get(byte); ++i, ++filePosition) {
      bytes[static_cast<std::size_t>(i)] = byte;
    }
    // From the file's byte order to that of a machine that keeps the low byte first.
    for (std::int64_t i = 0; i < buffered; ++i) {
      std::swap(bytes[static_cast<std::size_t>(2 * i)], bytes[static_cast<std::size_t>(2 * i + 1)]);
    }
  }

  double Value(std::int64_t i) const {
    const int low = static_cast<unsigned char>(bytes[static_cast<std::size_t>(2 * i)]);
    const int high = static_cast<unsigned char>(bytes[static_cast<std::size_t>(2 * i + 1)]);
    const int unsignedValue = 256 * high + low;
    return unsignedValue < 32768 ? unsignedValue : unsignedValue - 65536;
  }

  Source* source = nullptr;
  std::string name;
  bool isOpen = false;
  std::int64_t bytesRemaining = 0;
  std::int64_t filePosition = 0;
  std::int64_t length = 0;
  bool endOfTrack = true;
  std::int64_t buffered = 0;
  std::int64_t position = 0;
  std::array<char, 8192> bytes{};
};

}  // namespace reference
