// Data files: reading numbers, and the nearest point of a palate.

#include <benchmark/benchmark.h>

#include <fstream>
#include <string>

#include "benches/as_written.h"
#include "benches/data_files.h"
#include "benches/suites.h"
#include "frame/lifetime.h"
#include "numstream/num_stream.h"
#include "tracks/palate.h"

namespace wavefilters::bench {
namespace {

// Reads all lines of 16 numbers and returns how many numbers there were.
template <class Reader>
std::int64_t ReadAll(Reader& reader) {
  std::int64_t numbers = 0;
  while (reader.GetLine()) {
    double value = 0.0;
    for (int column = 0; column < 16 && reader.GetDouble(value); ++column) {
      benchmark::DoNotOptimize(value);
      ++numbers;
    }
  }
  return numbers;
}

template <class Reader>
void RunReader(benchmark::State& state, Reader& reader) {
  std::int64_t numbers = 0;
  for (auto _ : state) {
    reader.Open(Data().Pellets());
    numbers += ReadAll(reader);
  }
  state.SetItemsProcessed(numbers);
}

void ReadAsWritten(benchmark::State& state) {
  NumberFileAsWritten reader;
  RunReader(state, reader);
}

void ReadOurs(benchmark::State& state) {
  Embedded<NumStream> reader(StreamMode::Text);
  RunReader(state, reader);
}

constexpr int Searched = 2048;  // points: the first ones, and as many as are ever searched

// Where a pellet may be: somewhere else each time.
struct Pellet {
  double x = -40000.0;
  double y = 5000.0;
  void Move() {
    x = x > 0.0 ? -40000.0 : x + 370.0;
    y = y > 9000.0 ? 1000.0 : y + 190.0;
  }
};

void NearestPlain(benchmark::State& state) {
  std::vector<double> xs;
  std::vector<double> ys;
  std::ifstream file(Data().Palate());
  for (double x = 0.0, y = 0.0; file >> x >> y;) {
    xs.push_back(x);
    ys.push_back(y);
  }
  Pellet pellet;
  for (auto _ : state) {
    benchmark::DoNotOptimize(NearestAsWritten(xs.data(), ys.data(), Searched, pellet.x, pellet.y));
    pellet.Move();
  }
  state.SetItemsProcessed(state.iterations() * Searched);
}

void NearestOurs(benchmark::State& state) {
  Palate palate;
  palate.Load(Data().Palate());
  Pellet pellet;
  for (auto _ : state) {
    benchmark::DoNotOptimize(palate.NearestTo(pellet.x, pellet.y));
    pellet.Move();
  }
  state.SetItemsProcessed(state.iterations() * Searched);
}

}  // namespace

void RegisterTracks() {
  benchmark::RegisterBenchmark("numbers/16_a_line/as_written", ReadAsWritten);
  benchmark::RegisterBenchmark("numbers/16_a_line/ours", ReadOurs);
  benchmark::RegisterBenchmark("palate/2048/as_written", NearestPlain);
  benchmark::RegisterBenchmark("palate/2048/ours", NearestOurs);
}

}  // namespace wavefilters::bench
