#include "numstream/num_stream.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <locale>
#include <new>

#include "frame/numeric.h"

namespace wavefilters {
namespace {

// A descriptor of the file, or -1 where it is no regular one. The name is looked at first, since
// opening alone sets some devices going; the file then opened may be another by now, so it is asked
// once more, and opening does not wait for a FIFO's other end.
int OpenRegularFile(const char* name) {
  struct stat status;
  if (name == nullptr || ::stat(name, &status) != 0 || !S_ISREG(status.st_mode)) {
    return -1;
  }
  const int descriptor = ::open(name, O_RDONLY | O_CLOEXEC | O_NOCTTY | O_NONBLOCK);
  if (descriptor >= 0 && (::fstat(descriptor, &status) != 0 || !S_ISREG(status.st_mode))) {
    ::close(descriptor);
    return -1;
  }
  return descriptor;
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
  const int descriptor = OpenRegularFile(name);
  if (descriptor < 0) {
    file.setstate(std::ios::failbit);
    return false;
  }
  Take(descriptor);
  if (mode == StreamMode::Binary) {
    Measure();
  }
  return true;
}

void NumStream::Take(int descriptor) {
  // Closes the descriptor itself where memory for its buffer is missing.
  contents = Contents(descriptor, std::ios::in | std::ios::binary);
  if (!contents.is_open()) {
    // An open file lacks nothing else to become a stream.
    ::close(descriptor);
    throw std::bad_alloc();
  }
  contents.pubimbue(std::locale::classic());
  file.clear();
}

void NumStream::Measure() {
  file.seekg(0, std::ios::end);
  // A position of -1 says that the file cannot be measured; it then has no bytes to give.
  bytesRemaining = LimitToInt32(std::max<std::streamoff>(file.tellg(), 0));
  file.seekg(0);
}

bool NumStream::GetSingle(float& value) { return hasLine && currentLine.Read(value); }

bool NumStream::GetDouble(double& value) { return hasLine && currentLine.Read(value); }

bool NumStream::GetLine() {
  hasLine = false;
  if (mode == StreamMode::Binary || !contents.is_open() || !ReadLine()) {
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
  contents.close();
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
