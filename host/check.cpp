#include "host/check.h"

#include "host/check_report.h"
#include "host/failure.h"
#include "host/input_options.h"
#include "host/print.h"
#include "host/run_input.h"
#include "host/run_steps.h"

namespace wavechain {
namespace {

void WriteWarnings(const Log& kept) {
  Log log(true, false);
  for (const LogLine& line : kept.Kept()) {
    if (line.isWarning) {
      log.Warn(line.text);
    }
  }
}

void Check(const CheckCommand& command) {
  const RunRequest& request = command.run;
  const std::vector<FilterCall> calls = ReadChain(request.chain);
  const FilterLibrary library(request.library);
  CheckInput(request);
  const RunInput input(request);
  Log log;
  try {
    const Chain chain(library, wavefilters::Ref<HostSource>::Share(input.Source()), calls,
                      SettingsOf(request), log);
    const CheckedSignal checked = {input.File(), input.Source()->Info(), chain.Steps()};
    Print(command.json ? CheckJson(checked) : command.dot ? CheckDot(checked) : CheckText(checked));
  } catch (const Failure&) {
    WriteWarnings(log);
    throw;
  }
  // The other forms hold them.
  if (command.dot) {
    WriteWarnings(log);
  }
}

}  // namespace

void CheckCommand::AddTo(CLI::App& app) {
  CLI::App* check = app.add_subcommand(
      "check", "Set up a chain, say what it would do and what is odd, and pull nothing");
  CLI::Option* in = check->add_option("IN", run.input,
                                      "recording that the chain is for, as for run. Left out with "
                                      "--silence");
  in->type_name("");
  AddChainOptions(*check, run.chain);
  CLI::Option* asJson = check->add_flag("--json", json, "as JSON");
  check->add_flag("--dot", dot, "as a graph in Graphviz's language")->excludes(asJson);
  AddInputOptions(*check, run);
  check->footer("Exit status: as for run.");
  check->callback([this, in] {
    if (run.silence_s && in->count() > 0) {
      Fail(ExitStatus::Usage, "with --silence there is no recording: leave out {}", run.input);
    }
    if (!run.silence_s && in->count() == 0) {
      Fail(ExitStatus::Usage, "IN is required; see wavechain check --help");
    }
    Check(*this);
  });
}

}  // namespace wavechain
