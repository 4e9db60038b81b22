// Event files of any text for the three voice sources, beside their models.

#include <cstdlib>

#include "fuzz/target.h"
#include "fuzz/tracks.h"
#include "reference/fric_syn.h"
#include "reference/glot_syn.h"
#include "reference/pulse_syn.h"

namespace {

template <class Model>
void Run(tracks::Twin<Model>& twin, fuzz::Input& input, const std::string& extension,
         const std::string& text, fuzz::Allowance allowance) {
  twin.Supply({{extension, text}});
  fuzz::Live(twin, input, "take.wav", allowance);
}

// The C library's generator with a state of its own: the model draws the numbers that the library
// draws from the process's, since both start from the same seed.
class Generator {
 public:
  explicit Generator(unsigned seed) {
    initstate_r(seed, state, sizeof state, &data);
    std::srand(seed);
  }
  Generator(const Generator&) = delete;
  Generator& operator=(const Generator&) = delete;

  int Next() {
    std::int32_t number = 0;
    random_r(&data, &number);
    return number;
  }

 private:
  char state[128] = {};  // as large as the process's, which makes the sequences the same
  random_data data{};
};

void RunFrication(fuzz::Input& input, const std::string& text, fuzz::Allowance allowance) {
  Generator generator(7);
  tracks::Twin<reference::FricSyn> twin(support::FricSyn);
  twin.Reference().DrawFrom([&generator] { return generator.Next(); });
  Run(twin, input, ".fla", text, allowance);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t count) {
  const fuzz::Allowance allowance = fuzz::Allowance::OfRun(count);
  fuzz::Input input(bytes, count);
  const int kind = input.Int(0, 2);
  const std::string story = input.Text();
  const std::string text = input.Rest();
  fuzz::Input steps(reinterpret_cast<const std::uint8_t*>(story.data()), story.size());
  if (kind == 0) {
    tracks::Twin<reference::GlotSyn> twin(support::GlotSyn);
    Run(twin, steps, ".gpl", text, allowance);
  } else if (kind == 1) {
    tracks::Twin<reference::PulseSyn> twin(support::PulseSyn);
    Run(twin, steps, ".gpm", text, allowance);
  } else {
    RunFrication(steps, text, allowance);
  }
  return 0;
}
