#pragma once

#include <functional>
#include <list>
#include <map>
#include <string>
#include <utility>

#include "reference/host_objects.h"
#include "reference/number_file.h"
#include "support/call_log.h"
#include "support/samples.h"

namespace tracks {

using support::CallLog;
using support::Samples;

// How a source behaves. The mock that the filter pulls from and the model's source each get a copy,
// so that both go through the same story.
struct SourceScript {
  Samples samples;
  double interval_ms = 0.1;
  std::string path = "signal.wav";
  std::function<int(int count)> deliver;             // as SourceMock's, and so the next one
  std::function<int(int count, int written)> claim;  //
  std::function<bool(int remaining)> end;            // what EndOfSrc answers
};

// The host's objects on the model's side. They note their calls in the mocks' notation.

class ModelDescriptor final : public reference::Descriptor {
 public:
  ModelDescriptor(std::string name, CallLog& calls, const SourceScript& said)
      : prefix(std::move(name) + ".descriptor."), log(&calls), script(&said) {}

  double GetPeriod() override;
  std::string GetName(int size) override;
  void SetLength(int length) override;
  void SetPeriod(double interval_ms) override;
  void SetRange(double fullScale) override;
  void SetUnits(const std::string& units) override;
  void Release() override;

 private:
  std::string prefix;
  CallLog* log;
  const SourceScript* script;
};

class ModelSource final : public reference::Source {
 public:
  ModelSource(std::string objectName, CallLog& calls, SourceScript behaviour)
      : name(std::move(objectName)), log(&calls), script(std::move(behaviour)) {}

  reference::Descriptor* GetDescriptor() override;
  int TransmitNow(float* buffer, int count) override;
  void Dispose() override;
  bool EndOfSrc() override;
  void Release() override;

 private:
  int Remaining() const { return static_cast<int>(script.samples.size()) - position; }

  std::string name;
  CallLog* log;
  SourceScript script;
  int position = 0;
  std::list<ModelDescriptor> descriptors;
};

class ModelStream final : public reference::NumStream {
 public:
  ModelStream(std::string name, CallLog& calls) : prefix(std::move(name) + "."), log(&calls) {}

  void AddRef() override;
  void Release() override;
  bool Open(const std::string& name) override;
  bool GetSingle(float& value) override;
  bool GetDouble(double& value) override;
  bool GetLine() override;
  void Close() override;

  std::map<std::string, std::string> files;

 private:
  std::string prefix;
  CallLog* log;
  reference::NumberText text;
};

}  // namespace tracks
