#include "hardening/plain_filter.h"

#include <gtest/gtest.h>

#include <stdexcept>

#include "support/guarded_buffer.h"

namespace hardening {
namespace {

// At three places of the file, early, half-way and late, a line is longer than any before: whoever
// reads it needs a larger buffer in mid-stream.
std::string Padding(int line, double lines) {
  int width = 0;
  for (const double place : {0.15, 0.5, 0.9}) {
    width = width == 0 ? 1000 : 3 * width;
    if (line == static_cast<int>(place * lines)) {
      return std::string(static_cast<std::size_t>(width), ' ');
    }
  }
  return {};
}

std::string Number(double value) { return std::to_string(value); }

std::string PelletText(double duration_ms) {
  std::string text;
  for (int line = 0; line * 6.866 < duration_ms; ++line) {
    for (int column = 0; column < 16; ++column) {
      text += std::to_string(line == 0 ? 1000 * column : (line * 37 + column * 11) % 201 - 100);
      text += ' ';
    }
    text += Padding(line, duration_ms / 6.866) + "0\n";
  }
  return text;
}

std::string EventText(double duration_ms, double step_ms, const std::string& rest) {
  std::string text;
  int line = 0;
  for (double at_ms = 1.0; at_ms < duration_ms; at_ms += step_ms) {
    text += Number(at_ms) + rest + Padding(line++, duration_ms / step_ms) + " 0.5\n";
  }
  // The last event lies behind every signal: what depends on it is never rendered.
  return text + "1000000000" + rest + "\n";
}

std::string PalateText() {
  std::string text;
  for (int line = 0; line < 200; ++line) {
    text += Number(line * 100.0) + " " + Number(20000.0 - line * line) + Padding(line, 200) + "\n";
  }
  return text;
}

std::string TrackBytes(double duration_ms) {
  std::string bytes(1024, 'h');
  for (int i = 0; i * 1.145 < duration_ms; ++i) {
    bytes += static_cast<char>((i * 37) % 256);
    bytes += static_cast<char>((i * 101) % 256);
  }
  return bytes;
}

}  // namespace

bool Is(const Kind& kind, const Kind& other) { return std::string_view(kind.entry) == other.entry; }

namespace {

bool IsOneOf(const Kind& kind, std::initializer_list<Kind> others) {
  return std::any_of(others.begin(), others.end(),
                     [&kind](const Kind& other) { return Is(kind, other); });
}

}  // namespace

PlainFilter::PlainFilter(const Kind& kind) : object(support::Factory(kind).GetFilter()) {
  if (object == nullptr) {
    throw std::runtime_error(std::string(kind.entry) + " hands out no filter");
  }
}

PlainFilter::~PlainFilter() {
  if (object != nullptr) {
    EXPECT_EQ(Release(), 0U) << "a reference to the filter was left over";
  }
}

void PlainFilter::Attach(PlainHost& host, int count) {
  std::array<void*, 3> given{};
  for (std::size_t i = 0; i < given.size() && static_cast<int>(i) < count; ++i) {
    ++host.sources[i].counted.references;
    given[i] = &host.sources[i];
  }
  Slots().Set_src_list(object, given.data(), count);
}

int PlainFilter::Length() {
  void* descriptor = nullptr;
  Slots().GetDescriptor(object, &descriptor);
  const auto& slots = support::SlotsOf<DescriptorSlots>(descriptor);
  const int length = slots.GetLength(descriptor);
  slots.Release(descriptor);
  return length;
}

std::uint64_t PlainFilter::Release() {
  void* const released = object;
  object = nullptr;
  return support::SlotsOf<FilterSlots>(released).Release(released);
}

int PlainFilter::Pull(float* buffer, int count) {
  int produced = -12345;
  Slots().TransmitNow(object, buffer, count, &produced);
  return produced;
}

support::Samples PullGuarded(PlainFilter& filter, int count) {
  support::GuardedBuffer buffer(count);
  const int produced = filter.Pull(buffer.data(), count);
  EXPECT_GE(produced, 0);
  EXPECT_LE(produced, std::max(count, 0));
  buffer.CheckAfter(produced);
  return buffer.First(produced);
}

int PullFromLiars(const Kind& kind, PlainFilter& filter, int count) {
  support::GuardedBuffer buffer(count);
  const int produced = filter.Pull(buffer.data(), count);
  EXPECT_GE(produced, 0);
  EXPECT_LE(produced, std::max(count, 0));
  buffer.CheckAfter(NeedsSourceToPull(kind) ? count : produced);
  return produced;
}

support::Samples PullToEnd(PlainFilter& filter, int count, int most) {
  support::Samples all;
  for (int empty = 0; !filter.EndOfSrc() && static_cast<int>(all.size()) < most;) {
    const auto some = PullGuarded(filter, count);
    all.insert(all.end(), some.begin(), some.end());
    empty = some.empty() ? empty + 1 : 0;
    if (empty > 10000) {
      ADD_FAILURE() << "nothing comes any more, and yet there is no end";
      break;
    }
  }
  return all;
}

int SourceCount(const Kind& kind) {
  return IsOneOf(kind, {support::SumSources, support::EchoCancel}) ? 2 : 1;
}

bool ReadsText(const Kind& kind) {
  return IsOneOf(kind, {support::BeamPel, support::BeamData, support::GlotSyn, support::FricSyn,
                        support::PulseSyn});
}

bool Peeks(const Kind& kind) {
  return IsOneOf(kind,
                 {support::FIRFilter, support::FIRNotch, support::SumSources, support::EchoCancel});
}

bool NeedsSourceToPull(const Kind& kind) {
  return IsOneOf(kind, {support::SineGen, support::SquareGen});
}

std::vector<double> UsefulParams(const Kind& kind) {
  if (Is(kind, support::BeamPel)) return {6};
  if (Is(kind, support::BeamData)) return {8};
  if (Is(kind, support::FIRFilter)) return {20};
  if (Is(kind, support::FIRNotch)) return {20, 1000, 0.5};
  if (Is(kind, support::Resample)) return {3, 2, 0, 0, 0, 60};
  if (Is(kind, support::SumSources)) return {0.5, 0.25};
  if (Is(kind, support::EchoCancel)) return {5};
  if (Is(kind, support::SineGen)) return {440, 0.5, 30};
  if (Is(kind, support::SquareGen)) return {7, 1, 0.5};
  return {};
}

DataFiles::DataFiles(double duration_ms)
    : signal(folder.Path("take.wav")),
      missing(folder.Path("other.wav")),
      pellets(PelletText(duration_ms)),
      glottal(EventText(duration_ms, 8.0, " 0.5 0.6 0.1 0.3 -0.2 0.1")),
      fricative(EventText(duration_ms, 15.0, " 0.5 0.3 -0.2 0.1")),
      impulses(EventText(duration_ms, 5.0, " 0.5")) {
  // The pellet readers put the stem of the path in front of the whole path.
  const std::string whole = folder.Path("take.xyd");
  folder.Write("take" + whole, pellets);
  folder.Write("take.wavpal.dat", PalateText());
  folder.Write("take.gpl", glottal);
  folder.Write("take.fla", fricative);
  folder.Write("take.gpm", impulses);
  folder.Write("take.iop", TrackBytes(duration_ms));
}

const std::string& DataFiles::Text(const Kind& kind) const {
  if (Is(kind, support::GlotSyn)) return glottal;
  if (Is(kind, support::FricSyn)) return fricative;
  if (Is(kind, support::PulseSyn)) return impulses;
  return pellets;
}

}  // namespace hardening
