#include "numstream/num_stream.h"

#include <sys/stat.h>

#include <algorithm>
#include <locale>

#include "frame/numeric.h"

namespace wavefilters {
namespace {

// Asked before the file is opened, since opening a FIFO without a writer would block.
bool IsRegularFile(const char* name) {
  struct stat status;
  return name != nullptr && ::stat(name, &status) == 0 && S_ISREG(status.st_mode);
}

// While it lives, an exception inside an input operation passes on instead of becoming the
// end of the input. The stream must be good when it is made.
class ExceptionsPass {
 public:
  explicit ExceptionsPass(std::ios& affected) : stream(affected) {
    stream.exceptions(std::ios::badbit);
  }
  ~ExceptionsPass() { stream.exceptions(std::ios::goodbit); }
  ExceptionsPass(const ExceptionsPass&) = delete;
  ExceptionsPass& operator=(const ExceptionsPass&) = delete;

 private:
  std::ios& stream;
};

}  // namespace

NumStream::NumStream(StreamMode chosen) : mode(chosen) { file.imbue(std::locale::classic()); }

bool NumStream::Open(char* name) {
  Close();
  if (!IsRegularFile(name)) {
    file.setstate(std::ios::failbit);
    return false;
  }
  if (mode == StreamMode::Text) {
    file.open(name, std::ios::in);
    return file.is_open();
  }
  file.open(name, std::ios::in | std::ios::binary | std::ios::ate);
  if (!file.is_open()) {
    return false;
  }
  Measure();
  return true;
}

void NumStream::Measure() {
  // A position of -1 says that the file cannot be measured; it then has no bytes to give.
  bytesRemaining = LimitToInt32(std::max<std::streamoff>(file.tellg(), 0));
  file.seekg(0);
}

bool NumStream::GetSingle(float& value) { return hasLine && currentLine.Read(value); }

bool NumStream::GetDouble(double& value) { return hasLine && currentLine.Read(value); }

bool NumStream::GetLine() {
  hasLine = false;
  if (mode == StreamMode::Binary || !file.is_open() || !ReadLine()) {
    return false;
  }
  currentLine.Take(nextLine);
  hasLine = true;
  return true;
}

bool NumStream::ReadLine() {
  if (!file.good()) {
    return false;
  }
  const ExceptionsPass pass{file};
  try {
    std::getline(file, nextLine);
  } catch (const std::ios_base::failure&) {
    // The file could not be read any further: that is the end of its lines.
  }
  return !file.fail();
}

void NumStream::Close() {
  hasLine = false;
  if (file.is_open()) {
    file.close();
  }
  bytesRemaining = 0;
}

bool NumStream::Open(std::string name) { return Open(name.data()); }

bool NumStream::OpenFromString(std::string text) { return Open(std::string(text)); }

int NumStream::BytesRemain() { return IsOpenBinary() ? bytesRemaining : 0; }

void NumStream::SkipBytes(int count) {
  if (!IsOpenBinary()) {
    return;
  }
  const std::int32_t skipped = std::min(bytesRemaining, count);
  file.seekg(skipped, std::ios::cur);
  bytesRemaining = LimitToInt32(std::int64_t{bytesRemaining} - skipped);
}

int NumStream::ReadBytes(char* buffer, int count) {
  if (!IsOpenBinary()) {
    return 0;
  }
  const std::int32_t wanted = std::min(bytesRemaining, count);
  if (wanted > 0) {
    file.read(buffer, wanted);
  }
  return wanted;
}

}  // namespace wavefilters
