#include "host/diff_command.h"

#include "host/print.h"

namespace wavechain {

void DiffCommand::AddTo(CLI::App& app) {
  CLI::App* diff = app.add_subcommand("diff", "Compare two recordings or tracks");
  // A command line that cannot be understood is trouble, too.
  diff->preparse_callback([this](std::size_t) { asked = true; });
  diff->add_option("A", request.a, "recording, .npy, .ssff or .csv file; - is standard input")
      ->required()
      ->type_name("");
  diff->add_option("B", request.b, "what to compare it with, of any of these formats")
      ->required()
      ->type_name("");
  diff->add_option("--tolerance", request.tolerance,
                   "samples that lie no further apart count as the same; 0 by default");
  diff->add_flag("--json", request.json, "as JSON");
  diff->add_flag("-q,--quiet", request.quiet, "say nothing: the exit status tells");
  diff->add_flag("--allow-truncated", request.allowTruncated,
                 "take what is there of a recording that was cut short");
  diff->footer("Exit status: 0 same, 1 different, 2 trouble. Samples are counted from 0.");
  diff->callback([this] {
    const DiffAnswer answer = Diff(request);
    different = !answer.same;
    Print(answer.text);
  });
}

int DiffCommand::Status(ExitStatus status) const {
  constexpr int Different = 1;
  if (!asked || status == ExitStatus::Interrupted) {
    return static_cast<int>(status);
  }
  if (status == ExitStatus::Done) {
    return different ? Different : 0;
  }
  return static_cast<int>(ExitStatus::Input);
}

}  // namespace wavechain
