#include <gtest/gtest.h>

#include <cmath>
#include <random>

#include "reference/beam_data.h"
#include "reference/beam_pel.h"
#include "support/filter.h"
#include "support/temp_folder.h"
#include "tracks/pellet_text.h"
#include "tracks/twin.h"

// Random stories of a pellet filter's life beside its model: every sample in bits, every call.
namespace tracks {
namespace {

double Fraction(std::mt19937& random) { return static_cast<double>(random()) / 4294967296.0; }

double RandomInterval(std::mt19937& random) {
  static constexpr double common[] = {1.0 / 48, 1.0 / 44.1, 1.0 / 22.05, 1.0 / 16,
                                      0.1,      0.125,      0.37,        1.0};
  static const double odd[] = {0.0,          -0.0,  1e-300,    1e300,       HUGE_VAL,
                               std::nan(""), -0.1,  -HUGE_VAL, 0.5 * 6.866, 6.866,
                               0.001,        0.004, 20.0,      6.866 / 3,   1e-9};
  if (random() % 6 == 0) return odd[random() % std::size(odd)];
  if (random() % 2 == 0) return common[random() % std::size(common)];
  return 0.02 + 0.98 * Fraction(random);
}

int RandomLength(std::mt19937& random) {
  switch (random() % 5) {
    case 0:
      return Between(random, 0, 3);
    case 1:
      return Between(random, 1000, 1400);
    case 2:
      return Between(random, 4000, 9000);
    default:
      return Between(random, 0, 30000);
  }
}

SourceScript RandomSource(std::mt19937& random, const std::string& path) {
  SourceScript script = Signal(RandomLength(random), RandomInterval(random), path);
  if (random() % 3 != 0) {
    std::vector<int> sizes;
    for (int i = Between(random, 1, 5); i > 0; --i) {
      sizes.push_back(random() % 5 == 0 ? Between(random, 0, 3) : Between(random, 1, 9000));
    }
    sizes.push_back(Between(random, 500, 9000));
    script.deliver = support::InBlocksOf(sizes);
  }
  const int kind = Between(random, 0, 9);
  const int more = Between(random, 1, 100000);
  if (kind == 0) {
    script.claim = [more](int count, int written) {
      return written > 0 && written == count ? count + more : written;
    };
  }
  if (kind == 1) {
    script.claim = [more, calls = 0](int, int written) mutable {
      return ++calls % 4 == 0 ? -more : written;
    };
  }
  if (kind == 2) {
    script.end = [seed = random()](int remaining) mutable {
      seed = seed * 1664525U + 1013904223U;
      return remaining == 0 || (seed & 0xFFFFFFFFU) >> 29 == 0;
    };
  }
  return script;
}

// Text for a signal of the given length, often too short or far too long, often broken.
std::string RandomText(std::mt19937& random, const SourceScript& script) {
  const double fits = static_cast<double>(script.samples.size()) * script.interval_ms / 6.866 + 2;
  int records = std::isfinite(fits) && fits > 0 && fits < 5000 ? static_cast<int>(fits) : 300;
  if (random() % 3 == 0) records = Between(random, 0, records);
  std::string text = RandomRecords(random, records);
  if (random() % 3 == 0) text = Broken(random, text);
  return text;
}

std::vector<double> RandomParams(std::mt19937& random, const reference::BeamPel&) {
  std::vector<double> params{static_cast<double>(Between(random, 1, 16))};
  if (random() % 8 == 0) params[0] += 0.9;
  if (random() % 12 == 0) params.clear();
  return params;
}

std::vector<double> RandomParams(std::mt19937& random, const reference::BeamData&) {
  std::vector<double> params{static_cast<double>(Between(random, 0, 9)),
                             static_cast<double>(Between(random, -1, 8)),
                             static_cast<double>(Between(random, 1, 8))};
  if (random() % 2 == 0) params[0] = 7;
  if (random() % 4 == 0) params[0] = 8;
  if (random() % 8 == 0) params[1 + random() % 2] = Between(random, 8, 12);
  if (random() % 8 == 0) params.resize(random() % 4);
  return params;
}

template <class Model>
void OneStep(Twin<Model>& twin, std::mt19937& random) {
  switch (random() % 40) {
    case 0:
      twin.Set_param_list(RandomParams(random, twin.Reference()));
      break;
    case 1:
      twin.GetDescriptor();
      break;
    case 2:
      twin.Init(RandomInterval(random));
      break;
    case 3: {
      const int count = Between(random, 0, 8192);
      twin.Apply(support::Noise(count, static_cast<unsigned>(count)), count,
                 Between(random, -2000, 40000));
      break;
    }
    case 4:
      twin.Pull(Between(random, -9000, 0));
      break;
    case 5:
      twin.EndOfSrc();
      break;
    case 6:
      twin.Pull(Between(random, 1, 20));
      break;
    case 7:
      twin.SrcSet();
      break;
    default:
      twin.Pull(Between(random, 1, 9000));
  }
}

template <class Model>
void OneLife(const support::Kind& kind, unsigned seed) {
  SCOPED_TRACE("seed " + std::to_string(seed));
  std::mt19937 random(seed);
  const support::TempFolder folder;
  const std::string stem = folder.Path("x");
  const bool own = random() % 3 == 0;
  if (random() % 8 != 0)
    folder.Write("x.wavpal.dat", RandomRecords(random, Between(random, 0, 60)));
  Twin<Model> twin(kind);
  if (random() % 5 != 0) twin.Set_param_list(RandomParams(random, twin.Reference()));
  for (int attachment = Between(random, 1, 3); attachment > 0; --attachment) {
    const SourceScript script = RandomSource(random, stem + ".wav");
    const std::string text = RandomText(random, script);
    if (own) {
      folder.Write("x" + stem + ".xyd", text);
      folder.Write("x.xyd", Broken(random, text));
    } else if (random() % 10 != 0) {
      twin.Supply({{stem + ".xyd", text}});
    }
    twin.Attach(script);
    for (int step = Between(random, 2, 60); step > 0 && !testing::Test::HasFailure(); --step) {
      OneStep(twin, random);
    }
    if (random() % 4 == 0) {
      twin.Dispose();
      for (int pull = 0; pull < 3; ++pull) twin.Pull(Between(random, 0, 5000));
      twin.EndOfSrc();
    }
  }
}

TEST(RandomLives, OfThePelletReader) {
  for (unsigned seed = 1; seed <= 500 && !testing::Test::HasFailure(); ++seed) {
    OneLife<reference::BeamPel>(support::BeamPel, seed);
  }
}

TEST(RandomLives, OfTheKinematicsReader) {
  for (unsigned seed = 1; seed <= 500 && !testing::Test::HasFailure(); ++seed) {
    OneLife<reference::BeamData>(support::BeamData, seed);
  }
}

// Whole recordings, pulled to their end in blocks of every kind of size.
template <class Model>
void OneRecording(const support::Kind& kind, unsigned seed) {
  SCOPED_TRACE("seed " + std::to_string(seed));
  std::mt19937 random(seed);
  const support::TempFolder folder;
  const std::string stem = folder.Path("x");
  folder.Write("x.wavpal.dat", RandomRecords(random, 40));
  SourceScript script = RandomSource(random, stem + ".wav");
  script.claim = nullptr;
  script.end = nullptr;
  script.interval_ms = 0.02 + 0.98 * Fraction(random);
  Twin<Model> twin(kind);
  twin.Set_param_list(RandomParams(random, twin.Reference()));
  twin.Supply({{stem + ".xyd", RandomText(random, script)}});
  twin.Attach(script);
  std::vector<int> sizes;
  for (int i = Between(random, 1, 6); i > 0; --i) sizes.push_back(Between(random, 1, 9000));
  if (script.samples.size() < 3000) sizes.assign(1, 1);
  EXPECT_EQ(twin.PullAll(sizes).size(), script.samples.size());
}

TEST(RandomLives, OfWholeRecordings) {
  for (unsigned seed = 1001; seed <= 1200 && !testing::Test::HasFailure(); ++seed) {
    OneRecording<reference::BeamPel>(support::BeamPel, seed);
    OneRecording<reference::BeamData>(support::BeamData, seed);
  }
}

}  // namespace
}  // namespace tracks
