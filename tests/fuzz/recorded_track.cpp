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
  folder.Write("take.iop", std::string(static_cast<std::size_t>(header), 'h') + input.Rest());
  fuzz::Input steps(reinterpret_cast<const std::uint8_t*>(story.data()), story.size());
  tracks::Twin<reference::SetTrack> twin(support::SetTrack);
  fuzz::Live(twin, steps, folder.Path("take.wav"));
  return 0;
}
