// A host in C++: it links the library, sets a sine generator on a source of silence and prints
// what comes out. Each object below belongs to the host; the filter sees it through its slots only.

#include <algorithm>
#include <cstdio>
#include <vector>

#include "frame/interfaces.h"
#include "frame/lifetime.h"
#include "frame/ref.h"

using namespace wavefilters;

// One of the library's thirteen exported names.
extern "C" IFilterFactory* SineGenI(IFilterFactory** out);

namespace {

constexpr double Interval_ms = 0.1;  // 10 kHz
constexpr int SignalLength = 11;

/// What the host knows about a signal.
class Descriptor : public IWaveDescriptorC {
 public:
  int GetLength() override { return length; }
  void SetLength(int newLength) override { length = newLength; }
  void GetPeriod(double* out) override { *out = interval_ms; }
  void SetPeriod(double newInterval_ms) override { interval_ms = newInterval_ms; }
  void Reserved7() override {}
  void Reserved8() override {}
  void Reserved9() override {}
  void SetRange(double) override {}
  void Reserved11() override {}
  void Reserved12() override {}
  void Reserved13() override {}
  void Reserved14() override {}
  void Reserved15() override {}
  void SetUnits(const char*) override {}
  // Filters that read data files look for them beside this path. A sine has none.
  void GetName(char* buffer, int size) override {
    if (size > 0) {
      *buffer = '\0';
    }
  }

 protected:
  ~Descriptor() = default;

 private:
  int length = SignalLength;
  double interval_ms = Interval_ms;
};

/// A source of zeros.
class Silence : public IWaveSourceC {
 public:
  // A fresh object for each caller, with one reference that becomes the caller's: filters amend
  // the descriptors that they are given.
  void GetDescriptor(IWaveDescriptorC** out) override {
    *out = Ref<IWaveDescriptorC>::Share(new Heap<Descriptor>).Detach();
  }
  // Filters also ask for nothing, or for less; both get nothing.
  int TransmitNow(float* buffer, int count, int& produced) override {
    produced = std::clamp(count, 0, SignalLength - position);
    std::fill_n(buffer, produced, 0.0F);
    position += produced;
    return 1;
  }
  void Dispose() override {}
  bool EndOfSrc() override { return position >= SignalLength; }
  // Slot 7, which every source must have: filters pass the hint on without asking what they reach.
  virtual void EnableInPlace(bool) {}

 protected:
  ~Silence() = default;

 private:
  int position = 0;
};

}  // namespace

int main() {
  IFilterFactory* made = nullptr;
  SineGenI(&made);
  // The entry point's reference is ours; so is the one that GetFilter gives.
  const auto factory = Ref<IFilterFactory>::Adopt(made);
  IWaveFilterC* created = nullptr;
  factory->GetFilter(&created);
  const auto sine = Ref<IWaveFilterC>::Adopt(created);

  double parameters[] = {1000.0, 0.5};  // Hz, amplitude; the phase keeps its default
  sine->Set_param_list(parameters, 2);
  // The filter takes this reference over and releases it.
  IWaveSourceC* source = Ref<IWaveSourceC>::Share(new Heap<Silence>).Detach();
  sine->Set_src_list(&source, 1);

  IWaveDescriptorC* described = nullptr;
  sine->GetDescriptor(&described);
  const auto output = Ref<IWaveDescriptorC>::Adopt(described);
  double interval_ms = 0.0;
  output->GetPeriod(&interval_ms);
  std::printf("%d samples, one every %g ms\n", output->GetLength(), interval_ms);

  std::vector<float> block(4);
  while (!sine->EndOfSrc()) {
    int produced = 0;
    sine->TransmitNow(block.data(), static_cast<int>(block.size()), produced);
    for (int i = 0; i < produced; ++i) {
      std::printf("%.6f\n", static_cast<double>(block[static_cast<std::size_t>(i)]));
    }
  }
  sine->Dispose();
  return 0;  // the last references go with the Refs
}
