#include "support/filter.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <stdexcept>
#include <utility>

#include "support/guarded_buffer.h"

namespace support {

Filter::Filter(void* newObject, const Kind& newKind) : object(newObject), kind(newKind) {}

Filter::Filter(Filter&& other) noexcept
    : object(std::exchange(other.object, nullptr)),
      kind(other.kind),
      table(std::move(other.table)) {}

Filter::~Filter() {
  if (object != nullptr) {
    EXPECT_EQ(Release(), 0U) << kind.entry << ": a reference was left over";
  }
}

std::uint64_t Filter::Release() {
  void* const released = std::exchange(object, nullptr);
  return SlotsOf<FilterSlots>(released).Release(released);
}

void Filter::Set_src_list(const std::vector<SourceMock*>& sources) {
  std::vector<void*> given;
  for (SourceMock* source : sources) {
    given.push_back(source->Give());
  }
  Slots().Set_src_list(object, given.data(), static_cast<int>(given.size()));
}

void Filter::Set_param_list(std::vector<double> values) {
  Slots().Set_param_list(object, values.data(), static_cast<int>(values.size()));
}

void Filter::Set_console_out(ConsoleMock* console) {
  Slots().Set_console_out(object, console == nullptr ? nullptr : console->Lend());
}

void Filter::Set_num_stream(NumStreamMock* stream) {
  Slots().Set_num_stream(object, stream == nullptr ? nullptr : stream->Lend());
}

void Filter::InitFrom(DescriptorMock& descriptor) {
  void* const lent = descriptor.Give();
  Slots().InitFrom(object, lent);
  SlotsOf<DescriptorSlots>(lent).Release(lent);
}

Description Filter::GetDescriptor(SourceMock& source) {
  void* descriptor = nullptr;
  Slots().GetDescriptor(object, &descriptor);
  const Description description =
      source.shared != nullptr ? source.shared->now : source.descriptors.back().now;
  SlotsOf<DescriptorSlots>(descriptor).Release(descriptor);
  return description;
}

Samples Filter::Pull(int count) {
  GuardedBuffer buffer(count);
  int produced = -12345;
  Slots().TransmitNow(object, buffer.data(), count, &produced);
  EXPECT_GE(produced, 0);
  EXPECT_LE(produced, std::max(count, 0));
  buffer.CheckAfter(produced);
  return buffer.First(produced);
}

int Filter::Peek(int count) {
  int produced = -12345;
  Slots().TransmitNow(object, nullptr, count, &produced);
  return produced;
}

Samples Filter::PullAll(const std::vector<int>& sizes) {
  Samples all;
  std::size_t empty = 0;
  for (std::size_t pull = 0; !EndOfSrc(); ++pull) {
    const Samples block = Pull(sizes[pull % sizes.size()]);
    all.insert(all.end(), block.begin(), block.end());
    empty = block.empty() ? empty + 1 : 0;
    if (empty > 100000 || all.size() > 100000000) {
      ADD_FAILURE() << kind.entry << ": no end after " << all.size() << " samples";
      break;
    }
  }
  return all;
}

Filter MakeFilter(const Kind& kind) {
  const Factory factory(kind);
  void* const object = factory.GetFilter();
  if (object == nullptr) {
    throw std::runtime_error(std::string(kind.entry) + " hands out no filter");
  }
  return {object, kind};
}

std::string KindName(const testing::TestParamInfo<Kind>& info) { return info.param.entry; }

}  // namespace support
