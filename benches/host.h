#ifndef WAVEFILTERS_BENCHES_HOST_H
#define WAVEFILTERS_BENCHES_HOST_H

#include <cstdint>
#include <string>
#include <vector>

#include "frame/interfaces.h"
#include "frame/lifetime.h"
#include "frame/ref.h"

namespace wavefilters::bench {

// What a host needs to drive a filter of the built library, at as little cost of its own as
// possible.

/// Describes a signal in memory.
class Descriptor : public IWaveDescriptorC {
 public:
  int GetLength() override { return length; }
  void SetLength(int newLength) override { length = newLength; }
  void GetPeriod(double* interval) override { *interval = interval_ms; }
  void SetPeriod(double newInterval_ms) override { interval_ms = newInterval_ms; }
  void Reserved7() override {}
  void Reserved8() override {}
  void Reserved9() override {}
  void SetRange(double /*fullScale*/) override {}
  void Reserved11() override {}
  void Reserved12() override {}
  void Reserved13() override {}
  void Reserved14() override {}
  void Reserved15() override {}
  void SetUnits(const char* /*units*/) override {}
  void GetName(char* buffer, int size) override;

  std::int32_t length = 0;
  double interval_ms = 0.0;
  std::string name;

 protected:
  ~Descriptor() = default;
};

/// Hands out a piece of signal over and over, up to a length.
class LoopedSource : public IWaveSourceC {
 public:
  void GetDescriptor(IWaveDescriptorC** out) override;
  int TransmitNow(float* buffer, int count, int& produced) override;
  void Dispose() override {}
  bool EndOfSrc() override { return given >= length; }
  virtual void EnableInPlace(bool /*flag*/) {}

 protected:
  LoopedSource(const std::vector<float>& signal, std::int32_t wholeLength, double interval,
               std::string fileName = "")
      : piece(signal), length(wholeLength), interval_ms(interval), name(std::move(fileName)) {}
  ~LoopedSource() = default;

 private:
  const std::vector<float>& piece;
  std::int32_t length;
  double interval_ms;
  std::string name;
  std::int32_t given = 0;
};

/// A number file in memory: lines of numbers. Opening anything starts at the first line again.
class ListedNumbers : public INumStreamC {
 public:
  bool Open(char* /*name*/) override {
    next = 0;
    return true;
  }
  bool GetSingle(float& value) override;
  bool GetDouble(double& value) override;
  bool GetLine() override;
  void Close() override {}
  bool Open(std::string /*name*/) override { return Open(nullptr); }
  bool OpenFromString(std::string /*text*/) override { return Open(nullptr); }
  int BytesRemain() override { return 0; }
  void SkipBytes(int /*count*/) override {}
  int ReadBytes(char* /*buffer*/, int /*count*/) override { return 0; }

 protected:
  explicit ListedNumbers(std::vector<std::vector<double>> numbers) : lines(std::move(numbers)) {}
  ~ListedNumbers() = default;

 private:
  std::vector<std::vector<double>> lines;
  std::size_t next = 0;    // the line that GetLine makes current
  std::size_t column = 0;  // of the current line, the number read next
};

/// A new filter of the built library, by its entry point.
Ref<IWaveFilterC> MakeFilter(const char* entryPoint);

/// Sets parameters, then the sources; the references to them pass to the filter.
void Connect(IWaveFilterC& filter, std::vector<double> parameters,
             std::vector<IWaveSourceC*> sources);

/// A source with one reference, to be handed to `Connect`.
IWaveSourceC* NewSource(const std::vector<float>& signal, std::int32_t length,
                        double interval_ms = 1000.0 / 22050.0, std::string name = "");

/// What wavechain asks for at a time.
inline constexpr int UsualPull = 4096;

/// Pulls `pull` samples at a time until the end and returns how many came.
std::int64_t PullAll(IWaveSourceC& source, int pull = UsualPull);

}  // namespace wavefilters::bench

#endif
