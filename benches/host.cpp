#include "benches/host.h"

#include <dlfcn.h>

#include <algorithm>
#include <stdexcept>

namespace wavefilters::bench {

void Descriptor::GetName(char* buffer, int size) {
  const auto copied = std::min(name.size(), static_cast<std::size_t>(std::max(size, 1)) - 1);
  std::copy_n(name.data(), copied, buffer);
  buffer[copied] = '\0';
}

void LoopedSource::GetDescriptor(IWaveDescriptorC** out) {
  auto* descriptor = new Heap<Descriptor>;
  descriptor->AddRef();
  descriptor->length = length;
  descriptor->interval_ms = interval_ms;
  descriptor->name = name;
  *out = descriptor;
}

int LoopedSource::TransmitNow(float* buffer, int count, int& produced) {
  const int all = std::clamp(count, 0, length - given);
  const auto pieceLength = static_cast<std::int32_t>(piece.size());
  for (int done = 0; done < all;) {
    const std::int32_t at = given % pieceLength;
    const int run = std::min(all - done, pieceLength - at);
    std::copy_n(piece.data() + at, run, buffer + done);
    done += run;
    given += run;
  }
  produced = all;
  return 0;
}

bool ListedNumbers::GetLine() {
  column = 0;
  return next < lines.size() && ++next > 0;
}

bool ListedNumbers::GetDouble(double& value) {
  if (next == 0 || column >= lines[next - 1].size()) {
    return false;
  }
  value = lines[next - 1][column++];
  return true;
}

bool ListedNumbers::GetSingle(float& value) {
  double wide = 0.0;
  const bool read = GetDouble(wide);
  if (read) {
    value = static_cast<float>(wide);
  }
  return read;
}

Ref<IWaveFilterC> MakeFilter(const char* entryPoint) {
  static void* const library = dlopen(WAVEFILTERS_LIBRARY, RTLD_NOW | RTLD_LOCAL);
  if (library == nullptr) {
    throw std::runtime_error(dlerror());
  }
  const auto entry = reinterpret_cast<EntryPoint>(dlsym(library, entryPoint));
  IFilterFactory* made = nullptr;
  if (entry == nullptr || entry(&made) == nullptr) {
    throw std::runtime_error(std::string("no entry point ") + entryPoint);
  }
  const auto factory = Ref<IFilterFactory>::Adopt(made);
  IWaveFilterC* filter = nullptr;
  factory->GetFilter(&filter);
  if (filter == nullptr) {
    throw std::runtime_error(std::string(entryPoint) + " makes no filter");
  }
  return Ref<IWaveFilterC>::Adopt(filter);
}

void Connect(IWaveFilterC& filter, std::vector<double> parameters,
             std::vector<IWaveSourceC*> sources) {
  filter.Set_param_list(parameters.data(), static_cast<int>(parameters.size()));
  filter.Set_src_list(sources.data(), static_cast<int>(sources.size()));
}

IWaveSourceC* NewSource(const std::vector<float>& signal, std::int32_t length, double interval_ms,
                        std::string name) {
  auto* source = new Heap<LoopedSource>(signal, length, interval_ms, std::move(name));
  source->AddRef();
  return source;
}

std::int64_t PullAll(IWaveSourceC& source, int pull) {
  std::vector<float> out(static_cast<std::size_t>(pull));
  std::int64_t all = 0;
  while (!source.EndOfSrc()) {
    int produced = 0;
    source.TransmitNow(out.data(), pull, produced);
    all += produced;
  }
  return all;
}

}  // namespace wavefilters::bench
