#pragma once

#include <filesystem>
#include <fstream>
#include <iterator>
#include <locale>
#include <sstream>
#include <string>

#include "reference/host_objects.h"

namespace reference {

// The whole content of a regular file (symbolic links are followed); false for anything else.
inline bool ReadFile(const std::string& name, std::string& content) {
  std::error_code error;
  if (!std::filesystem::is_regular_file(name, error)) return false;
  std::ifstream file(name, std::ios::binary);
  if (!file) return false;
  content.assign(std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>());
  return true;
}

// A text of numbers, read line by line. A line is what stands before the next line feed, and each
// line is a stream of its own in the classic locale.
class NumberText {
 public:
  void Take(const std::string& content) {
    text = content;
    next = 0;
    hasLine = false;
  }

  bool GetLine() {
    hasLine = false;
    if (next >= text.size()) return false;
    std::string content;
    while (next < text.size() && text[next] != '\n') content.push_back(text[next++]);
    ++next;  // the line feed, or the missing one at the end
    line.clear();
    line.str(content);
    line.imbue(std::locale::classic());
    hasLine = true;
    return true;
  }

  bool GetDouble(double& value) { return hasLine && static_cast<bool>(line >> value); }
  bool GetSingle(float& value) { return hasLine && static_cast<bool>(line >> value); }

 private:
  std::string text;
  std::size_t next = 0;
  bool hasLine = false;
  std::istringstream line;
};

// A text file of numbers; closed, it is an empty one.
class NumberFile final : public NumStream {
 public:
  void AddRef() override {}
  void Release() override {}

  bool Open(const std::string& name) override {
    std::string content;
    const bool isOpen = ReadFile(name, content);
    text.Take(content);
    return isOpen;
  }

  bool GetLine() override { return text.GetLine(); }
  bool GetSingle(float& value) override { return text.GetSingle(value); }
  bool GetDouble(double& value) override { return text.GetDouble(value); }
  void Close() override { text.Take(""); }

 private:
  NumberText text;
};

}  // namespace reference
