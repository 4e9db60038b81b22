#include "host/number_stream.h"

#include <filesystem>
#include <locale>
#include <system_error>

namespace wavechain {

NumberStream::NumberStream() { line.imbue(std::locale::classic()); }

bool NumberStream::Open(char* name) {
  Close();
  std::error_code error;
  if (!std::filesystem::is_regular_file(name, error)) {
    return false;
  }
  file.clear();
  file.open(name);
  return file.is_open();
}

bool NumberStream::GetSingle(float& value) { return hasLine && static_cast<bool>(line >> value); }

bool NumberStream::GetDouble(double& value) { return hasLine && static_cast<bool>(line >> value); }

bool NumberStream::GetLine() {
  hasLine = false;
  std::string text;
  if (!file.is_open() || !std::getline(file, text)) {
    return false;
  }
  line.clear();
  line.str(std::move(text));
  hasLine = true;
  return true;
}

void NumberStream::Close() {
  hasLine = false;
  if (file.is_open()) {
    file.close();
  }
}

bool NumberStream::Open(std::string name) { return Open(name.data()); }

bool NumberStream::OpenFromString(std::string text) { return Open(std::move(text)); }

}  // namespace wavechain
