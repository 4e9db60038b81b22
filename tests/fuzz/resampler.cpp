// A resampler with any parameters, beside the model that jumps from output to output.

#include "fuzz/input.h"
#include "fuzz/target.h"
#include "resample/settings.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t count) {
  fuzz::Input input(bytes, count);
  resample::Pair pair(reference::Walk::Jumps);
  pair.Set_param_list(input.Numbers(9));
  pair.Attach(support::Noise(input.Int(0, 3000), 5));
  if (input.Flag()) pair.sources.back().Deliver(support::InBlocksOf(input.Sizes(900)));
  for (int step = 0; step < 30 && !input.Empty(); ++step) {
    switch (input.Int(0, 15)) {
      case 0:
        pair.Set_param_list(input.Numbers(9));
        break;
      case 1:
        pair.Attach(support::Noise(input.Int(0, 3000), 6));
        break;
      case 2:
        pair.filter.Dispose();
        pair.model.Dispose();
        break;
      case 3:
        pair.Pull(input.Int(-10000, 20000));
        break;
      default:
        pair.Pull(input.Int(0, 1500));
    }
    pair.SameCalls();
  }
  return 0;
}
