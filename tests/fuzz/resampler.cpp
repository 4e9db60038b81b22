// A resampler with any parameters, beside the model that jumps from output to output.

#include "fuzz/input.h"
#include "fuzz/target.h"
#include "resample/settings.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t count) {
  fuzz::Input input(bytes, count);
  static const support::Samples noise = support::Noise(3000, 5);
  fuzz::Allowance allowance = fuzz::Allowance::OfRun(count);
  const auto signal = [&input, most = std::min(allowance.Left(), 3000)] {
    return support::Samples(noise.begin(), noise.begin() + input.Int(0, most));
  };
  resample::Pair pair(reference::Walk::Jumps);
  pair.Set_param_list(input.Numbers(9));
  pair.Attach(signal());
  if (input.Flag()) pair.sources.back().Deliver(support::InBlocksOf(input.Sizes(900)));
  for (int step = 0; step < 30 && !input.Empty(); ++step) {
    switch (input.Int(0, 15)) {
      case 0:
        pair.Set_param_list(input.Numbers(9));
        break;
      case 1:
        pair.Attach(signal());
        break;
      case 2:
        pair.filter.Dispose();
        pair.model.Dispose();
        break;
      case 3:
        pair.Pull(allowance.Of(input.Int(-10000, 20000)));
        break;
      default:
        pair.Pull(allowance.Of(input.Int(0, 1500)));
    }
    pair.SameCalls();
  }
  return 0;
}
