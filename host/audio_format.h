#ifndef WAVEFILTERS_HOST_AUDIO_FORMAT_H
#define WAVEFILTERS_HOST_AUDIO_FORMAT_H

#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <string_view>

namespace wavechain {

/// How a sample is stored.
struct Encoding {
  std::string_view name;  // as given to --encoding
  int subtype;            // libsndfile's number
  int bits;               // of the integers that samples are scaled to; 0 for floats
  int bytes;              // that a sample takes, before any compression
};

/// Who writes a container: libsndfile (samples without a header, too), or the host itself.
enum class ContainerKind { Audio, Raw, Csv, Npy, Npz, Ssff };

/// A kind of file that holds a signal.
struct Container {
  std::string_view name;  // as given to --format, and the usual extension
  std::string_view otherExtension;
  int type;  // libsndfile's number; 0 for what it does not know
  /// Greatest size of a file in bytes.
  std::int64_t sizeLimit;
  /// Its encoding where none is asked for.
  std::string_view usualEncoding;
  ContainerKind kind = ContainerKind::Audio;
};

struct OutputFormat {
  const Container* container = nullptr;
  const Encoding* encoding = nullptr;  // null where the container has but one form

  /// libsndfile's number for the two; for audio only.
  int Number() const;
  /// Whether libsndfile writes it: it then has an encoding.
  bool IsSound() const;
  std::string Text() const;
};

std::span<const Encoding> Encodings();
std::span<const Container> Containers();

/// Settles how to write `path` ("-" is standard output): the container by `format`, otherwise
/// by the extension, otherwise WAV; the encoding as asked for, otherwise the container's usual
/// one, 32-bit float wherever it holds floats. Fails (usage) on unknown names, with the
/// nearest, and on encodings that the container does not hold.
OutputFormat ChooseFormat(const std::string& path, const std::optional<std::string>& format,
                          const std::optional<std::string>& encoding);

}  // namespace wavechain

#endif
