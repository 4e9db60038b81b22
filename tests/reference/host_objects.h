#pragma once

#include <string>

namespace reference {

// What a reference filter asks of its host, operation by operation, in the order in which a filter
// of the library must ask it. A test implements them beside its mock objects, records the calls on
// both sides in one notation and compares the lists.

struct Descriptor {
  virtual double GetPeriod() = 0;
  virtual std::string GetName(int size) = 0;
  virtual void SetLength(int length) = 0;
  virtual void SetPeriod(double interval_ms) = 0;
  virtual void SetRange(double fullScale) = 0;
  virtual void SetUnits(const std::string& units) = 0;
  virtual void Release() = 0;

 protected:
  ~Descriptor() = default;
};

struct Source {
  virtual Descriptor* GetDescriptor() = 0;
  // Returns what the source claims to have produced, which a filter need not believe.
  virtual int TransmitNow(float* buffer, int count) = 0;
  virtual void Dispose() = 0;
  virtual bool EndOfSrc() = 0;
  virtual void Release() = 0;

 protected:
  ~Source() = default;
};

struct NumStream {
  virtual void AddRef() = 0;
  virtual void Release() = 0;
  virtual bool Open(const std::string& name) = 0;
  virtual bool GetSingle(float& value) = 0;
  virtual bool GetDouble(double& value) = 0;
  virtual bool GetLine() = 0;
  virtual void Close() = 0;

 protected:
  ~NumStream() = default;
};

}  // namespace reference
