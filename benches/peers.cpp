#include "benches/peers.h"

#include <samplerate.h>
#include <speex/speex_resampler.h>
#include <zita-resampler/resampler.h>

#include <algorithm>
#include <cmath>
#include <complex>
#include <memory>
#include <stdexcept>

namespace wavefilters::bench {
namespace {

constexpr int ZitaHalfLen = 32;
constexpr int SpeexQuality = 5;

Converter MakeZita(int up, int down) {
  auto resampler = std::make_shared<Resampler>();
  const auto from = static_cast<unsigned>(down) * 1000;
  const auto to = static_cast<unsigned>(up) * 1000;
  if (resampler->setup(from, to, 1, ZitaHalfLen) != 0) {
    throw std::runtime_error("zita-resampler takes no such ratio");
  }
  return [resampler](const float* in, int count, float* out, int room) {
    resampler->inp_count = static_cast<unsigned>(count);
    resampler->inp_data = const_cast<float*>(in);
    resampler->out_count = static_cast<unsigned>(room);
    resampler->out_data = out;
    resampler->process();
    return room - static_cast<int>(resampler->out_count);
  };
}

Converter MakeSpeex(int up, int down) {
  int error = 0;
  const std::shared_ptr<SpeexResamplerState> state(
      speex_resampler_init(1, static_cast<unsigned>(down) * 1000, static_cast<unsigned>(up) * 1000,
                           SpeexQuality, &error),
      speex_resampler_destroy);
  if (!state) {
    throw std::runtime_error(speex_resampler_strerror(error));
  }
  return [state](const float* in, int count, float* out, int room) {
    auto taken = static_cast<unsigned>(count);
    auto made = static_cast<unsigned>(room);
    speex_resampler_process_float(state.get(), 0, in, &taken, out, &made);
    return static_cast<int>(made);
  };
}

Converter MakeSamplerate(int up, int down) {
  int error = 0;
  const std::shared_ptr<SRC_STATE> state(src_new(SRC_SINC_FASTEST, 1, &error), src_delete);
  if (!state) {
    throw std::runtime_error(src_strerror(error));
  }
  return [state, ratio = static_cast<double>(up) / down](const float* in, int count, float* out,
                                                         int room) {
    SRC_DATA data{};
    data.data_in = in;
    data.input_frames = count;
    data.data_out = out;
    data.output_frames = room;
    data.src_ratio = ratio;
    src_process(state.get(), &data);
    return static_cast<int>(data.output_frames_gen);
  };
}

// Gain at a frequency given in parts of the inputs' Nyquist frequency; the response is sampled
// at twice the inputs' rate.
double Gain(const std::vector<float>& response, double frequency) {
  constexpr double HalfPi = 1.5707963267948966;
  std::complex<double> sum = 0.0;
  for (std::size_t i = 0; i < response.size(); ++i) {
    sum += double{response[i]} * std::polar(1.0, -HalfPi * frequency * static_cast<double>(i));
  }
  return std::abs(sum);
}

double Decibels(double ratio) { return 20.0 * std::log10(std::max(ratio, 1e-12)); }

}  // namespace

const Peer Peers[3] = {
    {"zita", MakeZita, {{"reach", ZitaHalfLen, 1.0}, {"quality", 64, 0.89}}},
    {"speex", MakeSpeex, {{"reach", 40, 1.0}, {"quality", 55, 0.93}}},
    {"samplerate", MakeSamplerate, {{"reach", 20, 1.0}, {"quality", 39, 0.79}}},
};

Quality QualityOf(const std::vector<float>& impulseResponse) {
  constexpr double Step = 0.001;
  constexpr double Band = 0.8;
  const double whole = Gain(impulseResponse, 0.0);
  double edge = 0.0;
  while (edge < 2.0 && Decibels(Gain(impulseResponse, edge) / whole) > -1.0) {
    edge += Step;
  }
  double images = 0.0;
  for (double f = 2.0 - Band; f <= 2.0; f += Step) {
    images = std::max(images, Gain(impulseResponse, f));
  }
  return {edge, Decibels(images / whole)};
}

}  // namespace wavefilters::bench
