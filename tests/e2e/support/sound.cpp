#include "e2e/support/sound.h"

#include <algorithm>
#include <cmath>
#include <complex>
#include <stdexcept>

namespace e2e {
namespace {

constexpr double TwoPi = 6.283185307179586;

bool IsPcm(int format) {
  const int encoding = format & SF_FORMAT_SUBMASK;
  return encoding == SF_FORMAT_PCM_S8 || encoding == SF_FORMAT_PCM_U8 ||
         encoding == SF_FORMAT_PCM_16 || encoding == SF_FORMAT_PCM_24 ||
         encoding == SF_FORMAT_PCM_32;
}

class Reader {
 public:
  explicit Reader(const std::string& path) : file(::sf_open(path.c_str(), SFM_READ, &info)) {
    if (file == nullptr) {
      throw std::runtime_error(path + ": " + ::sf_strerror(nullptr));
    }
  }
  ~Reader() { ::sf_close(file); }
  Reader(const Reader&) = delete;
  Reader& operator=(const Reader&) = delete;

  template <class Value>
  std::vector<Value> All(sf_count_t (*read)(SNDFILE*, Value*, sf_count_t), sf_count_t first = 0) {
    if (::sf_seek(file, first, SEEK_SET) != first) {
      throw std::runtime_error("the file is shorter");
    }
    const sf_count_t frames = info.frames - first;
    std::vector<Value> values(static_cast<std::size_t>(frames * info.channels));
    if (read(file, values.data(), frames) != frames) {
      throw std::runtime_error("the file gives out early");
    }
    return values;
  }

  SF_INFO info = {};

 private:
  SNDFILE* file;
};

}  // namespace

void WriteSound(const std::string& path, const std::vector<float>& samples, int rate, int channels,
                int format) {
  SF_INFO info = {};
  info.samplerate = rate;
  info.channels = channels;
  info.format = format;
  SNDFILE* file = ::sf_open(path.c_str(), SFM_WRITE, &info);
  if (file == nullptr) {
    throw std::runtime_error(path + ": cannot be written");
  }
  const auto count = static_cast<sf_count_t>(samples.size());
  sf_count_t written = 0;
  if (IsPcm(format)) {
    // libsndfile itself would scale by one step less than what it divides by when reading.
    std::vector<int> steps;
    for (const float sample : samples) {
      steps.push_back(static_cast<int>(std::clamp(sample * 0x1p31, -0x1p31, 0x1p31 - 1.0)));
    }
    written = ::sf_write_int(file, steps.data(), count);
  } else {
    written = ::sf_write_float(file, samples.data(), count);
  }
  ::sf_close(file);
  if (written != count) {
    throw std::runtime_error(path + ": cannot be written");
  }
}

Sound ReadSound(const std::string& path) {
  Reader reader(path);
  return {reader.info.samplerate, reader.info.channels, reader.info.format,
          reader.All<float>(::sf_readf_float)};
}

std::vector<float> ReadEnd(const std::string& path, std::int64_t first) {
  return Reader(path).All<float>(::sf_readf_float, first);
}

std::vector<int> ReadIntegers(const std::string& path) {
  return Reader(path).All<int>(::sf_readf_int);
}

std::vector<double> ReadDoubles(const std::string& path) {
  return Reader(path).All<double>(::sf_readf_double);
}

std::vector<float> Tone(double frequency, double amplitude, int rate, int count) {
  std::vector<float> samples(static_cast<std::size_t>(count));
  for (std::size_t i = 0; i < samples.size(); ++i) {
    samples[i] =
        static_cast<float>(amplitude * std::sin(TwoPi * frequency * static_cast<double>(i) / rate));
  }
  return samples;
}

double Level(const std::vector<float>& samples, double frequency, int rate) {
  std::complex<double> sum = 0.0;
  for (std::size_t i = 0; i < samples.size(); ++i) {
    sum += double{samples[i]} * std::polar(1.0, -TwoPi * frequency * static_cast<double>(i) / rate);
  }
  return 2.0 * std::abs(sum) / static_cast<double>(samples.size());
}

}  // namespace e2e
