#include "support/temp_folder.h"

#include <stdlib.h>

#include <fstream>
#include <stdexcept>
#include <system_error>

namespace support {

TempFolder::TempFolder() {
  std::string name = (std::filesystem::temp_directory_path() / "wavefilters-XXXXXX").string();
  if (mkdtemp(name.data()) == nullptr) {
    throw std::runtime_error("no temporary folder " + name);
  }
  folder = name;
}

TempFolder::~TempFolder() {
  std::error_code ignored;
  std::filesystem::remove_all(folder, ignored);
}

std::string TempFolder::Write(const std::string& name, const std::string& bytes) const {
  std::filesystem::create_directories((folder / name).parent_path());
  std::ofstream file(folder / name, std::ios::binary);
  file << bytes;
  if (!file.flush()) {
    throw std::runtime_error("cannot write " + name);
  }
  return Path(name);
}

}  // namespace support
