#include "support/source_mock.h"

#include <algorithm>
#include <utility>

namespace support {

SourceMock::SourceMock(std::string objectName, CallLog& calls, std::vector<float> signal)
    : Mock(std::move(objectName), calls), samples(std::move(signal)) {
  description.length = static_cast<int>(samples.size());
  using Object = decltype(object);
  FillUnknown(object, this);
  SourceSlots& slots = object.slots;
  slots.GetDescriptor = [](void* self, void** out) {
    Object::Of(self).Enter("GetDescriptor");
    *out = Object::Of(self).NewDescriptor();
  };
  slots.TransmitNow = [](void* self, float* buffer, int wanted, int* produced) {
    Object::Of(self).Enter("TransmitNow", std::to_string(wanted));
    return Object::Of(self).Transmit(buffer, wanted, produced);
  };
  slots.Dispose = [](void* self) { Object::Of(self).Enter("Dispose"); };
  slots.EndOfSrc = [](void* self) {
    SourceMock& source = Object::Of(self);
    source.Enter("EndOfSrc");
    return source.end ? source.end() : source.Remaining() == 0;
  };
  slots.EnableInPlace = [](void* self, bool flag) {
    Object::Of(self).Enter("EnableInPlace", flag ? "true" : "false");
  };
}

void* SourceMock::Give() {
  ++count;
  return &object;
}

void SourceMock::Enter(const std::string& operation, const std::string& arguments) {
  Note(operation + "(" + arguments + ")");
  if (before) {
    before(operation);
  }
}

void* SourceMock::NewDescriptor() {
  if (shared != nullptr) {
    return shared->Give();
  }
  descriptors.emplace_back(name + ".descriptor", *log, description);
  return descriptors.back().Give();
}

int SourceMock::Transmit(float* buffer, int wanted, int* produced) {
  if (silent) {
    return result;
  }
  const int possible = std::clamp(wanted, 0, Remaining());
  const int written = deliver ? std::clamp(deliver(wanted), 0, possible) : possible;
  std::copy_n(samples.begin() + position, written, buffer);
  position += written;
  *produced = claim ? claim(wanted, written) : written;
  return result;
}

std::function<int(int)> InBlocksOf(std::vector<int> sizes) {
  return [sizes = std::move(sizes), next = std::size_t{0}](int) mutable {
    return sizes[next++ % sizes.size()];
  };
}

}  // namespace support
