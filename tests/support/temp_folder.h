#pragma once

#include <filesystem>
#include <string>

namespace support {

// A new folder of the test's own, removed with all it holds at the end of the scope.
class TempFolder {
 public:
  TempFolder();
  ~TempFolder();
  TempFolder(const TempFolder&) = delete;
  TempFolder& operator=(const TempFolder&) = delete;

  // The path of a file in the folder, there or not.
  std::string Path(const std::string& name) const { return (folder / name).string(); }

  // Writes the bytes as they are (text, too: a line ends with "\n") and gives the path.
  std::string Write(const std::string& name, const std::string& bytes) const;

 private:
  std::filesystem::path folder;
};

}  // namespace support
