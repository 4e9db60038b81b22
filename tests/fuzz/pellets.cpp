// Pellet files and palates of any text, beside the models.

#include "fuzz/target.h"
#include "fuzz/tracks.h"
#include "reference/beam_data.h"
#include "reference/beam_pel.h"
#include "support/temp_folder.h"

namespace {

template <class Model>
void Run(const support::Kind& kind, fuzz::Input& input, const std::string& text,
         const std::string& path, fuzz::Allowance allowance) {
  tracks::Twin<Model> twin(kind);
  if (input.Byte() % 8 != 0) twin.Set_param_list(input.Numbers(4));
  twin.Supply({{".xyd", text}});
  fuzz::Live(twin, input, path, allowance);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t count) {
  static const support::TempFolder folder;
  const fuzz::Allowance allowance = fuzz::Allowance::OfRun(count);
  fuzz::Input input(bytes, count);
  const bool kinematics = input.Flag();
  const std::string story = input.Text();
  folder.Write("take.wavpal.dat", input.Text());
  const std::string text = input.Rest();
  fuzz::Input steps(reinterpret_cast<const std::uint8_t*>(story.data()), story.size());
  if (kinematics) {
    Run<reference::BeamData>(support::BeamData, steps, text, folder.Path("take.wav"), allowance);
  } else {
    Run<reference::BeamPel>(support::BeamPel, steps, text, folder.Path("take.wav"), allowance);
  }
  return 0;
}
