#include "tracks/own_stream.h"

#include <gtest/gtest.h>

#include <stdexcept>
#include <utility>

namespace tracks {
namespace {

void* captured = nullptr;
void (*keepStream)(void* self, void* stream) = nullptr;

void Capture(void* self, void* stream) {
  captured = stream;
  support::SlotsOf<NumStreamSlots>(stream).AddRef(stream);
  keepStream(self, stream);
}

}  // namespace

OwnStream::OwnStream() {
  support::CallLog log;
  support::SourceMock source("source", log, support::Constant(1));
  source.description.name = "there is no such file.wav";
  captured = nullptr;
  support::Filter filter = support::MakeFilter(support::GlotSyn);
  keepStream = filter.Exchange(11, &Capture);
  filter.Set_src_list(source);
  if (captured == nullptr) throw std::runtime_error("the filter attached no stream of its own");
  object = captured;
}

OwnStream::~OwnStream() {
  EXPECT_EQ(Slots().Release(object), 0U) << "a reference to the stream was left over";
}

std::vector<double> OwnStream::Numbers() {
  std::vector<double> numbers;
  for (double number = 0.0; GetDouble(number);) numbers.push_back(number);
  return numbers;
}

std::vector<std::vector<double>> OwnStream::AllNumbers() {
  std::vector<std::vector<double>> lines;
  while (GetLine()) lines.push_back(Numbers());
  return lines;
}

AnySlot OwnStream::ExchangeAny(int slot, AnySlot replacement) {
  // In front of slot 0 stand two words of type information, which the copy takes along.
  constexpr std::ptrdiff_t Front = 2;
  constexpr std::ptrdiff_t SlotCount = 13;
  AnySlot*& table = *static_cast<AnySlot**>(object);
  if (ownTable == nullptr) {
    ownTable = std::make_unique<std::vector<AnySlot>>(table - Front, table + SlotCount);
    table = ownTable->data() + Front;
  }
  return std::exchange(table[slot], replacement);
}

}  // namespace tracks
