#include "host/sound_input.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstdio>
#include <limits>
#include <sstream>
#include <string_view>
#include <vector>

#include "host/failure.h"
#include "host/interrupt.h"
#include "host/wav_size.h"

namespace wavechain {
namespace {

constexpr int BlockFrames = 4096;

bool IsRegular(int descriptor) {
  struct stat status = {};
  return ::fstat(descriptor, &status) == 0 && S_ISREG(status.st_mode);
}

bool IsDevice(int descriptor) {
  struct stat status = {};
  return ::fstat(descriptor, &status) == 0 && (S_ISCHR(status.st_mode) || S_ISBLK(status.st_mode));
}

bool IsFolder(int descriptor) {
  struct stat status = {};
  return ::fstat(descriptor, &status) == 0 && S_ISDIR(status.st_mode);
}

std::string FormatName(int format) {
  SF_FORMAT_INFO named = {};
  named.format = format;
  ::sf_command(nullptr, SFC_GET_FORMAT_INFO, &named, sizeof named);
  return named.name == nullptr ? "unknown" : named.name;
}

// For the fields of a header's log that tell a size worth comparing: by how many bytes it may be
// rounded up. The others give nothing.
std::optional<std::uint64_t> AllowedPadding(std::string_view field) {
  const std::string_view name = field.substr(0, field.find_last_not_of(' ') + 1);
  if (name == "data" || name == "SSND" || name == "Data Size") {
    return 0;
  }
  // W64 and RF64 are only compared as whole files.
  return name == "riff" || name == "Riff size" ? std::optional<std::uint64_t>(8) : std::nullopt;
}

}  // namespace

SoundInput::SoundInput(const std::string& recording, bool allowTruncated,
                       const std::optional<RawLayout>& rawLayout)
    : path(recording), name(recording == "-" ? "standard input" : recording), raw(rawLayout) {
  OpenFile();
  OpenSound();
  if (!allowTruncated) {
    RefuseTruncated();
  }
  // Streams of unknown length (FLAC made by a pipe) are counted once before they are read.
  constexpr auto Unknown = std::numeric_limits<sf_count_t>::max();
  length = info.frames == Unknown ? CountFrames() : std::max<std::int64_t>(info.frames, 0);
}

void SoundInput::OpenFile() {
  file = File(path == "-" ? ::fcntl(STDIN_FILENO, F_DUPFD_CLOEXEC, 0)
                          : ::open(path.c_str(), O_RDONLY | O_CLOEXEC));
  if (!file.IsOpen()) {
    const int error = errno;
    StopIfInterrupted();
    Fail(ExitStatus::Input, "{}: cannot be opened: {}", name, SystemText(error));
  }
  if (IsFolder(file.Descriptor())) {
    Fail(ExitStatus::Input, "{}: is a folder, not a recording", name);
  }
  if (IsDevice(file.Descriptor())) {
    // It would be copied for good, or be a terminal.
    Fail(ExitStatus::Input, "{}: is a device, not a recording", name);
  }
  // A redirected file that another program has begun to read starts where that one stopped.
  if (!IsRegular(file.Descriptor()) || ::lseek(file.Descriptor(), 0, SEEK_CUR) != 0) {
    Spool();
  }
}

void SoundInput::Spool() {
  File spool = TemporaryFile();
  int error = spool.IsOpen() ? 0 : errno;
  std::vector<char> block(1 << 16);
  while (error == 0) {
    StopIfInterrupted();
    const long came = ReadSome(file.Descriptor(), block.data(), block.size());
    StopIfInterrupted();
    if (came < 0) {
      Fail(ExitStatus::Input, "{}: cannot be read: {}", name, SystemText(static_cast<int>(-came)));
    }
    if (came == 0) {
      break;
    }
    error = WriteAll(spool.Descriptor(), block.data(), static_cast<std::size_t>(came));
  }
  if (error != 0) {
    Fail(ExitStatus::Input, "{}: no room for its temporary copy in {}: {}; set TMPDIR", name,
         TemporaryFolder(), SystemText(error));
  }
  ::lseek(spool.Descriptor(), 0, SEEK_SET);
  file = std::move(spool);
}

void SoundInput::OpenSound() {
  info = {};
  if (raw) {
    info.format = raw->type->number;
    info.samplerate = raw->rate;
    info.channels = 1;
  }
  const auto unknownSize = raw ? std::nullopt : UnfilledDataSize(file.Descriptor());
  ::lseek(file.Descriptor(), 0, SEEK_SET);
  sound = std::make_unique<SoundFile>(file.Descriptor(), SFM_READ, info, unknownSize);
  if (sound->Get() == nullptr) {
    struct stat status = {};
    ::fstat(file.Descriptor(), &status);
    Fail(ExitStatus::Input, "{}: cannot be read as a recording: {}", name,
         status.st_size == 0 ? "it is empty (0 bytes)" : sound->Error());
  }
  if (info.samplerate < 1 || info.channels < 1) {
    Fail(ExitStatus::Input, "{}: its header announces {} Hz and {} channels", name, info.samplerate,
         info.channels);
  }
}

void SoundInput::RefuseHalfSample() const {
  struct stat status = {};
  ::fstat(file.Descriptor(), &status);
  const std::int64_t more = status.st_size % raw->type->bytes;
  if (more != 0) {
    Fail(ExitStatus::Input,
         "{}: is cut short: {} bytes are not a whole number of {} samples; --allow-truncated takes "
         "what is there",
         name, status.st_size, raw->type->name);
  }
}

void SoundInput::RefuseTruncated() const {
  if (raw) {
    RefuseHalfSample();
    return;
  }
  if (IsBeyondWav(file.Descriptor())) {
    Fail(ExitStatus::Input,
         "{}: is longer than the 4 GiB that a WAV file can tell of; send it as W64 or RF64, or as "
         "raw samples with -t",
         name);
  }
  // libsndfile reads what is there without a word, which is only to be found in its log.
  std::array<char, 1 << 14> log = {};
  ::sf_command(sound->Get(), SFC_GET_LOG_INFO, log.data(), static_cast<int>(log.size()) - 1);
  if (const std::optional<Shortfall> shortfall = FindShortfall(log.data())) {
    Fail(ExitStatus::Input,
         "{}: is cut short: its header announces {} bytes, there are {}; --allow-truncated takes "
         "what is there",
         name, shortfall->announced, shortfall->present);
  }
}

std::int64_t SoundInput::CountFrames() {
  std::vector<float> block(static_cast<std::size_t>(info.channels) * BlockFrames);
  std::int64_t count = 0;
  while (const sf_count_t came = ::sf_readf_float(sound->Get(), block.data(), BlockFrames)) {
    StopIfInterrupted();
    count += came;
  }
  OpenSound();
  return count;
}

template <class Sample>
int SoundInput::ReadBy(sf_count_t (*read)(SNDFILE*, Sample*, sf_count_t), Sample* frames,
                       int count) {
  const auto wanted = static_cast<int>(std::min<std::int64_t>(count, length - position));
  int total = 0;
  while (total < wanted && !gaveOut) {
    const auto came = static_cast<int>(read(
        sound->Get(), frames + static_cast<std::ptrdiff_t>(total) * info.channels, wanted - total));
    gaveOut = came <= 0;
    total += std::max(came, 0);
  }
  position += total;
  return total;
}

int SoundInput::Read(float* frames, int count) { return ReadBy(::sf_readf_float, frames, count); }
int SoundInput::Read(double* frames, int count) { return ReadBy(::sf_readf_double, frames, count); }

void SoundInput::RequireIntact() const {
  if (!gaveOut) {
    return;
  }
  const bool reasonKnown = sound->SystemError() != 0 || ::sf_error(sound->Get()) != SF_ERR_NO_ERROR;
  Fail(ExitStatus::Input, "{}: is damaged: it gives out after {} of {} samples{}", name, position,
       length, reasonKnown ? fmt::format(" ({})", sound->Error()) : "");
}

std::string SoundInput::FormatText() const {
  return fmt::format("{}, {}", FormatName(info.format & SF_FORMAT_TYPEMASK),
                     FormatName(info.format & SF_FORMAT_SUBMASK));
}

std::optional<Shortfall> FindShortfall(const std::string& headerLog) {
  constexpr std::uint64_t UnknownSize = 0x7FFFF000;
  constexpr std::uint64_t UnknownLongSize = 0x7FFFFFFFFFFFF000;
  std::istringstream lines(headerLog);
  for (std::string line; std::getline(lines, line);) {
    char name[16] = {};
    unsigned long long announced = 0;
    unsigned long long present = 0;
    if (std::sscanf(line.c_str(), " %15[^:]: %llu (should be %llu)", name, &announced, &present) !=
        3) {
      continue;
    }
    const std::optional<std::uint64_t> padding = AllowedPadding(name);
    const bool known =
        announced < UnknownSize || (announced > 0xFFFFFFFFU && announced < UnknownLongSize);
    if (padding && known && announced > present + *padding) {
      return Shortfall{static_cast<std::int64_t>(announced), static_cast<std::int64_t>(present)};
    }
  }
  return std::nullopt;
}

}  // namespace wavechain
