#include "host/audio_writer.h"

#include <unistd.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <cstring>
#include <limits>
#include <string_view>

#include "host/failure.h"
#include "host/interrupt.h"
#include "host/text.h"

namespace wavechain {
namespace {

constexpr std::int64_t HeaderRoom = 4096;

}  // namespace

void RequireRoom(const std::string& name, const OutputFormat& format, std::int64_t samples) {
  const std::int64_t most = (format.container->sizeLimit - HeaderRoom) / format.encoding->bytes;
  if (samples > most) {
    Fail(ExitStatus::Output,
         "{}: {} samples do not fit into a {} file, which ends at 4 GiB; write .w64 or .rf64", name,
         samples, format.container->name);
  }
}

AudioWriter::AudioWriter(int fileDescriptor, std::string fileName, const OutputFormat& outputFormat,
                         const SignalInfo& signal, const std::string& comment)
    : descriptor(fileDescriptor),
      name(std::move(fileName)),
      format(outputFormat),
      fullScale(signal.fullScale) {
  if (format.encoding->bits != 0 && !(std::isfinite(fullScale) && fullScale > 0.0)) {
    Fail(ExitStatus::Usage,
         "--encoding {}: the signal has no full scale to scale by ({}); use float32",
         format.encoding->name, NumberText(fullScale));
  }
  const double exactRate = 1000.0 / signal.interval_ms;
  if (!(exactRate >= 0.5 && exactRate < std::numeric_limits<int>::max())) {
    Fail(ExitStatus::Output, "{}: no audio file has the sampling rate of {} Hz", name,
         NumberText(exactRate));
  }
  rate = static_cast<int>(std::lround(exactRate));
  // An interval of 1000 / rate is not exact itself.
  rateRounded =
      format.container->kind != ContainerKind::Raw && std::abs(exactRate - rate) > 1e-9 * exactRate;
  RequireRoom(name, format, signal.length);

  SF_INFO info = {};
  info.samplerate = rate;
  info.channels = 1;
  info.format = format.Number();
  sound = std::make_unique<SoundFile>(descriptor, SFM_WRITE, info);
  if (sound->Get() == nullptr) {
    Refuse();
  }
  // Its PEAK chunk carries the time of writing.
  ::sf_command(sound->Get(), SFC_SET_ADD_PEAK_CHUNK, nullptr, SF_FALSE);
  if (!comment.empty()) {
    // Formats without a place for it refuse; the report on standard error says the same.
    SoundFile::RequireMemory(::sf_set_string(sound->Get(), SF_STR_COMMENT, comment.c_str()));
  }
}

void AudioWriter::Write(const float* samples, int count) {
  RequireRoom(name, format, total + count);
  sf_count_t written = count;
  if (format.encoding->subtype == SF_FORMAT_FLOAT) {
    written = ::sf_write_float(sound->Get(), samples, count);
  } else if (format.encoding->subtype == SF_FORMAT_DOUBLE) {
    doubles.assign(samples, samples + count);
    written = ::sf_write_double(sound->Get(), doubles.data(), count);
  } else {
    WriteIntegers(samples, count);
    written = ::sf_write_int(sound->Get(), integers.data(), count);
  }
  if (written != count || sound->SystemError() != 0) {
    Refuse();
  }
  total += count;
}

void AudioWriter::WriteIntegers(const float* samples, int count) {
  // Scaled here and not by libsndfile, which multiplies by 32767 what it divides by 32768.
  const int spareBits = 32 - format.encoding->bits;
  const double most = std::ldexp(1.0, format.encoding->bits - 1);
  const double scale = most / fullScale;
  integers.resize(static_cast<std::size_t>(count));
  for (int i = 0; i < count; ++i) {
    const double step = std::nearbyint(samples[i] * scale);
    const double limited = std::clamp(step, -most, most - 1.0);
    if (std::isnan(step)) {
      ++zeroed;
      integers[static_cast<std::size_t>(i)] = 0;
      continue;
    }
    clipped += limited == step ? 0 : 1;
    // libsndfile takes the uppermost bits of an int.
    integers[static_cast<std::size_t>(i)] =
        static_cast<int>(static_cast<std::int64_t>(limited) << spareBits);
  }
}

void AudioWriter::Close() {
  if (!sound->Close()) {
    Refuse();
  }
  if (format.container->type == SF_FORMAT_RF64) {
    ClearPeakTime();
  }
}

// libsndfile 1.2 leaves the PEAK chunk in RF64 files, whatever it is told.
void AudioWriter::ClearPeakTime() const {
  constexpr off_t TimeOffset = 12;  // behind the chunk's name, size and version
  constexpr std::array<char, 4> Zeros = {};
  off_t at = 12;  // behind the file's own name, size and form
  for (;;) {
    std::array<char, 8> chunk = {};
    if (::pread(descriptor, chunk.data(), chunk.size(), at) != 8) {
      return;
    }
    const std::string_view chunkName(chunk.data(), 4);
    std::uint32_t size = 0;
    std::memcpy(&size, chunk.data() + 4, sizeof size);
    if (chunkName == "data") {
      return;
    }
    if (chunkName == "PEAK" &&
        ::pwrite(descriptor, Zeros.data(), Zeros.size(), at + TimeOffset) != 4) {
      Fail(ExitStatus::Output, "{}: cannot be written: {}", name, SystemText(errno));
    }
    at += static_cast<off_t>(chunk.size()) + size + (size & 1U);
  }
}

void AudioWriter::Refuse() const {
  StopIfInterrupted();
  Fail(ExitStatus::Output, "{}: cannot be written: {}", name, sound->Error());
}

}  // namespace wavechain
