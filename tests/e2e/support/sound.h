#pragma once

#include <sndfile.h>

#include <cstdint>
#include <string>
#include <vector>

namespace e2e {

// Contents of an audio file, its channels interleaved.
struct Sound {
  int rate = 0;
  int channels = 0;
  int format = 0;
  std::vector<float> samples;
};

// `format` is libsndfile's number for container and encoding.
void WriteSound(const std::string& path, const std::vector<float>& samples, int rate = 48000,
                int channels = 1, int format = SF_FORMAT_WAV | SF_FORMAT_FLOAT);
// Throws where the file cannot be read to its end.
Sound ReadSound(const std::string& path);
// What comes from frame `first` on, which is read alone.
std::vector<float> ReadEnd(const std::string& path, std::int64_t first);
// The samples as 32-bit integers, the file's bits uppermost.
std::vector<int> ReadIntegers(const std::string& path);
std::vector<double> ReadDoubles(const std::string& path);

// A sine of the given peak value.
std::vector<float> Tone(double frequency, double amplitude, int rate, int count);

// Peak value of the sine of that frequency in the samples, by correlation.
double Level(const std::vector<float>& samples, double frequency, int rate);

}  // namespace e2e
