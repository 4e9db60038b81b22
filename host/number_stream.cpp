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
  if (!broken) {
    opened = name;
  }
  file.clear();
  file.open(name);
  broken = broken || !file.is_open();
  return file.is_open();
}

bool NumberStream::GetSingle(float& value) { return Get(value); }

bool NumberStream::GetDouble(double& value) { return Get(value); }

template <class Number>
bool NumberStream::Get(Number& value) {
  if (!hasLine) {
    return false;
  }
  const bool got = static_cast<bool>(line >> value);
  broken = broken || line.bad();
  return got;
}

bool NumberStream::GetLine() {
  hasLine = false;
  std::string text;
  if (!file.is_open() || !std::getline(file, text)) {
    broken = broken || file.bad();
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
