#include "support/num_stream_mock.h"

#include <algorithm>
#include <utility>

namespace support {

NumStreamMock::NumStreamMock(std::string objectName, CallLog& calls)
    : Mock(std::move(objectName), calls) {
  count = lent = 1;
  using Object = decltype(object);
  FillUnknown(object, this);
  NumStreamSlots& slots = object.slots;
  slots.Open = [](void* self, char* file) {
    Object::Of(self).Note("Open(\"" + std::string(file) + "\")");
    return Object::Of(self).OpenFile(file);
  };
  slots.OpenString = [](void* self, const void* file) {
    Object::Of(self).Note("OpenString(\"" + *static_cast<const std::string*>(file) + "\")");
    return Object::Of(self).OpenFile(*static_cast<const std::string*>(file));
  };
  slots.OpenFromString = [](void* self, const void* file) {
    Object::Of(self).Note("OpenFromString(\"" + *static_cast<const std::string*>(file) + "\")");
    return Object::Of(self).OpenFile(*static_cast<const std::string*>(file));
  };
  slots.GetLine = [](void* self) {
    Object::Of(self).Note("GetLine()");
    return Object::Of(self).NextLine();
  };
  slots.GetSingle = [](void* self, float* value) {
    Object::Of(self).Note("GetSingle()");
    return Object::Of(self).hasLine && Object::Of(self).line >> *value;
  };
  slots.GetDouble = [](void* self, double* value) {
    Object::Of(self).Note("GetDouble()");
    return Object::Of(self).hasLine && Object::Of(self).line >> *value;
  };
  slots.Close = [](void* self) {
    Object::Of(self).Note("Close()");
    Object::Of(self).isOpen = Object::Of(self).hasLine = false;
    Object::Of(self).bytesLeft = 0;
  };
  slots.BytesRemain = [](void* self) {
    Object::Of(self).Note("BytesRemain()");
    return Object::Of(self).bytesLeft;
  };
  slots.SkipBytes = [](void* self, int wanted) {
    NumStreamMock& stream = Object::Of(self);
    stream.Note("SkipBytes(" + std::to_string(wanted) + ")");
    stream.bytesLeft -= std::min(stream.bytesLeft, wanted);
  };
  slots.ReadBytes = [](void* self, char* buffer, int wanted) {
    NumStreamMock& stream = Object::Of(self);
    stream.Note("ReadBytes(" + std::to_string(wanted) + ")");
    const int kept = std::clamp(wanted, 0, stream.bytesLeft);
    stream.content.copy(buffer, static_cast<std::size_t>(kept),
                        stream.content.size() - static_cast<std::size_t>(stream.bytesLeft));
    return kept;
  };
}

bool NumStreamMock::OpenFile(const std::string& file) {
  const auto found = files.find(file);
  isOpen = found != files.end();
  hasLine = false;
  content = isOpen ? found->second : std::string();
  text = std::istringstream(content);
  bytesLeft = binary ? static_cast<int>(content.size()) : 0;
  return isOpen;
}

bool NumStreamMock::NextLine() {
  std::string words;
  hasLine = isOpen && !binary && std::getline(text, words);
  line = std::istringstream(words);
  return hasLine;
}

}  // namespace support
