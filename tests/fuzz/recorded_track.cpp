// A recorded track of any bytes, beside its model.

#include "fuzz/target.h"
#include "fuzz/tracks.h"
#include "reference/set_track.h"
#include "support/temp_folder.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t count) {
  static const support::TempFolder folder;
  fuzz::Input input(bytes, count);
  const std::string story = input.Text();
  // The header's bytes say nothing: the file begins with as many as the input asks for.
  const int header = input.Int(0, 1100);
  const std::string values = input.Rest();
  folder.Write("take.iop", std::string(static_cast<std::size_t>(header), 'h') + values);
  fuzz::Input steps(reinterpret_cast<const std::uint8_t*>(story.data()), story.size());
  tracks::Twin<reference::SetTrack> twin(support::SetTrack);
  // A track goes on for as long as it is asked, and each time round is a read: some rounds are
  // enough.
  const std::int64_t rounds = 20 + 2 * static_cast<std::int64_t>(values.size());
  const fuzz::Allowance allowance(
      std::min<std::int64_t>(rounds, fuzz::Allowance::OfRun(count).Left()));
  fuzz::Live(twin, steps, folder.Path("take.wav"), allowance);
  return 0;
}
