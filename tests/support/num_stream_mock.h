#pragma once

#include <map>
#include <sstream>

#include "support/mock.h"

namespace support {

// A host's reader of number files: INumStreamC, over files that exist in `files` alone. All calls
// are noted. Text is read line by line; with `binary` the bytes are measured and handed out.
class NumStreamMock : public Mock {
 public:
  NumStreamMock(std::string objectName, CallLog& calls);

  // The object, for Set_num_stream, which adds a reference of its own where it keeps it.
  void* Lend() { return &object; }

  std::map<std::string, std::string> files;  // content by the exact name given to Open
  bool binary = false;

 private:
  bool OpenFile(const std::string& file);
  bool NextLine();

  bool isOpen = false;
  std::string content;
  std::istringstream text;
  std::istringstream line;
  bool hasLine = false;
  int bytesLeft = 0;
  SlotObject<NumStreamSlots, NumStreamMock> object;
};

}  // namespace support
