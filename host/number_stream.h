#ifndef WAVEFILTERS_HOST_NUMBER_STREAM_H
#define WAVEFILTERS_HOST_NUMBER_STREAM_H

#include <fstream>
#include <sstream>
#include <string>

#include "frame/interfaces.h"

namespace wavechain {

/// The host's own reader of number files, which it hands to filters that would otherwise look
/// for their file under a name of their own making. Text only: the binary operations do
/// nothing. Numbers are read in the classic locale; only regular files open.
class NumberStream : public wavefilters::INumStreamC {
 public:
  bool Open(char* name) override;
  bool GetSingle(float& value) override;
  bool GetDouble(double& value) override;
  bool GetLine() override;
  void Close() override;
  bool Open(std::string name) override;
  bool OpenFromString(std::string text) override;
  /// True once a file that is there could not be opened or read on; the filter takes that for
  /// the end of its data.
  bool Broken() const { return broken; }
  /// The name that the file was opened by; where one is broken, that one's.
  const std::string& Opened() const { return opened; }
  int BytesRemain() override { return 0; }
  void SkipBytes(int /*count*/) override {}
  int ReadBytes(char* /*buffer*/, int /*count*/) override { return 0; }

 protected:
  NumberStream();
  ~NumberStream() = default;

 private:
  template <class Number>
  bool Get(Number& value);

  std::string opened;
  std::ifstream file;
  std::istringstream line;
  bool hasLine = false;
  bool broken = false;
};

}  // namespace wavechain

#endif
