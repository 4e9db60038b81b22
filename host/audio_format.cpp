#include "host/audio_format.h"

#include <sndfile.h>

#include <algorithm>
#include <limits>
#include <vector>

#include "host/failure.h"
#include "host/text.h"

namespace wavechain {
namespace {

constexpr Encoding AllEncodings[] = {
    {"float32", SF_FORMAT_FLOAT, 0, 4}, {"float64", SF_FORMAT_DOUBLE, 0, 8},
    {"pcm16", SF_FORMAT_PCM_16, 16, 2}, {"pcm24", SF_FORMAT_PCM_24, 24, 3},
    {"pcm32", SF_FORMAT_PCM_32, 32, 4}, {"pcm8", SF_FORMAT_PCM_S8, 8, 1},
    {"ulaw", SF_FORMAT_ULAW, 16, 1},    {"alaw", SF_FORMAT_ALAW, 16, 1},
};
// WAV and its 64-bit relatives store 8-bit samples without a sign.
constexpr Encoding UnsignedPcm8 = {"pcm8", SF_FORMAT_PCM_U8, 8, 1};

constexpr std::int64_t FourGiB = 0xFFFFFFFF;
constexpr std::int64_t NoLimit = std::numeric_limits<std::int64_t>::max();

constexpr Container AllContainers[] = {
    {"wav", "wave", SF_FORMAT_WAV, FourGiB, "float32"},
    {"flac", "", SF_FORMAT_FLAC, NoLimit, "pcm24"},
    {"aiff", "aif", SF_FORMAT_AIFF, FourGiB, "float32"},
    {"w64", "", SF_FORMAT_W64, NoLimit, "float32"},
    {"rf64", "", SF_FORMAT_RF64, NoLimit, "float32"},
    {"au", "snd", SF_FORMAT_AU, FourGiB, "float32"},
    {"caf", "", SF_FORMAT_CAF, NoLimit, "float32"},
    {"f32", "", SF_FORMAT_RAW, NoLimit, "float32", ContainerKind::Raw},
    {"f64", "", SF_FORMAT_RAW, NoLimit, "float64", ContainerKind::Raw},
    {"s16", "", SF_FORMAT_RAW, NoLimit, "pcm16", ContainerKind::Raw},
    {"s24", "", SF_FORMAT_RAW, NoLimit, "pcm24", ContainerKind::Raw},
    {"s32", "", SF_FORMAT_RAW, NoLimit, "pcm32", ContainerKind::Raw},
    {"csv", "", 0, NoLimit, "", ContainerKind::Csv},
    {"npy", "", 0, NoLimit, "", ContainerKind::Npy},
    {"npz", "", 0, NoLimit, "", ContainerKind::Npz},
    {"ssff", "", 0, NoLimit, "", ContainerKind::Ssff},
};

template <class Entry>
std::vector<std::string_view> Names(std::span<const Entry> table) {
  std::vector<std::string_view> names;
  for (const Entry& entry : table) {
    names.push_back(entry.name);
  }
  return names;
}

bool Holds(const Container& container, const Encoding& encoding) {
  SF_INFO info = {};
  info.samplerate = 8000;
  info.channels = 1;
  info.format = container.type | encoding.subtype;
  return ::sf_format_check(&info) != 0;
}

bool IsSound(const Container& container) {
  return container.kind == ContainerKind::Audio || container.kind == ContainerKind::Raw;
}

std::string Extension(const std::string& path) {
  const std::string file = path.substr(path.rfind('/') + 1);
  const std::size_t dot = file.rfind('.');
  if (dot == std::string::npos || dot == 0) {
    return "";
  }
  std::string extension = file.substr(dot + 1);
  std::ranges::transform(extension, extension.begin(), [](char c) {
    return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
  });
  return extension;
}

const Container* FindContainer(std::string_view name) {
  for (const Container& container : AllContainers) {
    if (name == container.name || (!name.empty() && name == container.otherExtension)) {
      return &container;
    }
  }
  return nullptr;
}

const Container& ChooseContainer(const std::string& path,
                                 const std::optional<std::string>& format) {
  const std::string name = format.value_or(path == "-" ? "" : Extension(path));
  if (!format && name.empty()) {
    return AllContainers[0];
  }
  if (const Container* found = FindContainer(name)) {
    return *found;
  }
  const std::string choices = Suggestion(name, Names(Containers()));
  if (format) {
    Fail(ExitStatus::Usage, "--format {}: there is no such format{}", name, choices);
  }
  Fail(ExitStatus::Usage,
       "{}: the extension .{} names no format{} (or give --format, as in --format wav)", path, name,
       choices);
}

}  // namespace

int OutputFormat::Number() const {
  const int order = container->kind == ContainerKind::Raw ? static_cast<int>(SF_ENDIAN_LITTLE) : 0;
  return container->type | encoding->subtype | order;
}

bool OutputFormat::IsSound() const { return wavechain::IsSound(*container); }

std::string OutputFormat::Text() const {
  return encoding == nullptr ? std::string(container->name)
                             : fmt::format("{}, {}", container->name, encoding->name);
}

std::span<const Encoding> Encodings() { return AllEncodings; }
std::span<const Container> Containers() { return AllContainers; }

OutputFormat ChooseFormat(const std::string& path, const std::optional<std::string>& format,
                          const std::optional<std::string>& encoding) {
  const Container& container = ChooseContainer(path, format);
  if (container.kind == ContainerKind::Raw && encoding && *encoding != container.usualEncoding) {
    Fail(ExitStatus::Usage, "--encoding {}: {} samples are {}; leave it out", *encoding,
         container.name, container.usualEncoding);
  }
  if (!IsSound(container)) {
    if (encoding) {
      Fail(ExitStatus::Usage, "--encoding {}: a {} file has no choice of encodings; leave it out",
           *encoding, container.name);
    }
    return {&container, nullptr};
  }
  const std::string_view wanted = encoding ? *encoding : container.usualEncoding;
  const auto* found = std::ranges::find(AllEncodings, wanted, &Encoding::name);
  if (found == std::end(AllEncodings)) {
    Fail(ExitStatus::Usage, "--encoding {}: there is no such encoding{}", wanted,
         Suggestion(wanted, Names(Encodings())));
  }
  if (found->name == UnsignedPcm8.name && !Holds(container, *found)) {
    found = &UnsignedPcm8;
  }
  if (!Holds(container, *found)) {
    std::vector<std::string_view> held;
    for (const Encoding& candidate : AllEncodings) {
      if (Holds(container, candidate) ||
          (candidate.name == UnsignedPcm8.name && Holds(container, UnsignedPcm8))) {
        held.push_back(candidate.name);
      }
    }
    Fail(ExitStatus::Usage, "--encoding {}: {} files do not hold it; they hold {}", wanted,
         container.name, Joined(held));
  }
  return {&container, found};
}

}  // namespace wavechain
