#include "host/command_line.h"

#include <unistd.h>

#include <CLI/CLI.hpp>
#include <algorithm>
#include <new>
#include <string>
#include <vector>

#include "host/batch_command.h"
#include "host/catalogue_text.h"
#include "host/check.h"
#include "host/command_table.h"
#include "host/completion.h"
#include "host/diff_command.h"
#include "host/failure.h"
#include "host/file.h"
#include "host/info_command.h"
#include "host/input_options.h"
#include "host/interrupt.h"
#include "host/man_page.h"
#include "host/out_of_memory.h"
#include "host/output_options.h"
#include "host/plot_command.h"
#include "host/print.h"
#include "host/record_commands.h"
#include "host/run.h"
#include "host/skeleton.h"
#include "host/text.h"
#include "host/version.h"

namespace wavechain {
namespace {

// A run on silence has no IN: the one file named is OUT.
void TakeFiles(const CLI::Option& in, const CLI::Option& out, RunRequest& request) {
  if (request.silence_s && out.count() > 0) {
    Fail(ExitStatus::Usage, "with --silence there is no recording: name OUT alone, not {} too",
         request.input);
  }
  if (request.silence_s) {
    request.output.swap(request.input);
  }
  const bool outMissing = request.silence_s ? in.count() == 0 : out.count() == 0;
  if (outMissing) {
    Fail(ExitStatus::Usage, "{} is required; see wavechain run --help",
         in.count() == 0 && !request.silence_s ? "IN" : "OUT");
  }
}

void AddRun(CLI::App& app, RunRequest& request) {
  CLI::App* run = app.add_subcommand("run", "Run a chain of filters over a recording");
  CLI::Option* in =
      run->add_option("IN", request.input,
                      "recording to read (WAV, FLAC, AIFF, W64, RF64 and what else libsndfile "
                      "reads); - is standard input. Left out with --silence");
  in->type_name("");
  CLI::Option* out = run->add_option(
      "OUT", request.output,
      "file to write, its format from the extension (WAV without one); - is standard "
      "output, which gets the whole file at the end. .csv, .npy, .npz and .ssff hold the numbers");
  out->type_name("");
  AddChainOptions(*run, request.chain);
  AddTrackOption(*run, request);
  AddInputOptions(*run, request);
  AddOutputOptions(*run, request);
  run->add_flag("--no-record", request.noRecord,
                "do not note in OUT, or in a .json file beside it, how it was made");
  run->add_flag("--force", request.force, "replace OUT where it exists");
  run->add_flag("-q,--quiet", request.quiet, "say nothing but warnings and errors");
  run->footer(HelpText());
  run->callback([&request, in, out] {
    TakeFiles(*in, *out, request);
    Run(request);
  });
}

void Report(std::string_view message) {
  try {
    const std::string line = fmt::format("wavechain: {}\n", OneLine(message));
    WriteAll(STDERR_FILENO, line.data(), line.size());
  } catch (const std::bad_alloc&) {
    ReportOutOfMemory();
  }
}

// CLI11 would only say that a command is missing.
void RequireKnownCommand(const CLI::App& app, int argc, const char* const* argv) {
  std::vector<std::string_view> names;
  for (const CLI::App* command : app.get_subcommands({})) {
    names.push_back(command->get_name());
  }
  if (argc < 2) {
    Fail(ExitStatus::Usage, "no command is given{}; see wavechain --help", Suggestion("", names));
  }
  if (std::string_view(argv[1]).starts_with('-')) {
    return;
  }
  if (std::ranges::find(names, std::string_view(argv[1])) == names.end()) {
    Fail(ExitStatus::Usage, "there is no command '{}'{}", argv[1], Suggestion(argv[1], names));
  }
}

// What CLI11 found no use for: "The following arguments were not expected" helps nobody.
[[noreturn]] void RefuseExtras(const CLI::App& app) {
  const auto chosen = app.get_subcommands();
  const CLI::App& asked = chosen.empty() ? app : *chosen.front();
  std::vector<std::string> names;
  for (const CLI::Option* option : asked.get_options()) {
    if (option->get_group().empty()) {
      continue;
    }
    for (const std::string& name : option->get_lnames()) {
      names.push_back("--" + name);
    }
  }
  const std::vector<std::string> extras = app.remaining(true);
  for (const std::string& extra : extras) {
    if (extra.starts_with('-')) {
      const std::string name = extra.substr(0, extra.find('='));
      Fail(ExitStatus::Usage, "there is no option {}{}", name,
           Suggestion(name, {names.begin(), names.end()}));
    }
  }
  // get_option_no_throw() would end the process where memory runs out.
  const bool mayBeParameter = std::ranges::find(names, "--filter") != names.end();
  Fail(ExitStatus::Usage, "'{}' is one word too many{}", extras.empty() ? "" : extras.front(),
       mayBeParameter ? "; a filter and its parameters stand in quotes, as in -f \"FIRNotch "
                        "half_length=200\""
                      : "");
}

void Understand(CLI::App& app, int argc, const char* const* argv) {
  RequireKnownCommand(app, argc, argv);
  try {
    app.parse(argc, argv);
  } catch (const CLI::CallForVersion&) {
    Print(VersionText());
  } catch (const CLI::CallForAllHelp&) {
    // Parsed, the program would tell of the command that asked.
    app.clear();
    PrintStreamed(app.help());
  } catch (const CLI::Success&) {
    PrintStreamed(app.help());
  } catch (const CLI::ExtrasError&) {
    RefuseExtras(app);
  } catch (const CLI::ParseError& error) {
    const auto chosen = app.get_subcommands();
    Fail(ExitStatus::Usage, "{}; see wavechain {}--help", error.what(),
         chosen.empty() ? "" : chosen.front()->get_name() + " ");
  }
}

// The texts that are installed beside the program, made from what it understands.
std::string Generated(const CLI::App& app, const std::string& form) {
  const CommandTable table = ReadCommands(app, WAVECHAIN_VERSION);
  if (form == "man") {
    return ManPage(table);
  }
  if (form == "bash") {
    return BashCompletion(table);
  }
  if (form == "zsh") {
    return ZshCompletion(table);
  }
  if (form == "fish") {
    return FishCompletion(table);
  }
  Fail(ExitStatus::Usage, "--generate {}: takes man, bash, zsh or fish", form);
}

}  // namespace

int CommandLine(int argc, const char* const* argv) {
  CatchInterrupts();
  const LackOfMemory watch;
  RunRequest run;
  BatchRequest batch;
  InfoCommand info;
  CheckCommand check;
  DiffCommand diff;
  RecordCommands records;
  SkeletonCommand skeleton;
  PlotRequest plot;
  try {
    CLI::App app("Runs chains of signal filters over recordings.", "wavechain");
    app.set_version_flag("--version", WAVECHAIN_VERSION,
                         "Print the versions of program and library and exit");
    app.require_subcommand(0, 1);
    app.get_formatter()->column_width(26);
    AddRun(app, run);
    AddBatch(app, batch);
    info.AddTo(app);
    check.AddTo(app);
    diff.AddTo(app);
    records.AddTo(app);
    skeleton.AddTo(app);
    AddPlot(app, plot);
    info.AddHelpTo(app);
    app.footer(
        "wavechain COMMAND --help tells more about a command; run's lists all filters.\n"
        "Exit status: 0 done, 1 wrong usage or chain, 2 input could not be processed,\n"
        "3 output could not be written, 130 interrupted. diff has statuses of its own.");
    // Hidden: for the build.
    app.add_option_function<std::string>(
           "--generate", [&app](const std::string& form) { PrintStreamed(Generated(app, form)); })
        ->expected(0, 1)
        ->group("");
    Understand(app, argc, argv);
    return diff.Status(ExitStatus::Done);
  } catch (const Failure& failure) {
    Report(failure.what());
    return diff.Status(failure.Status());
  } catch (const std::bad_alloc&) {
    ReportOutOfMemory();
  } catch (const std::exception& error) {
    Report(error.what());
  }
  return static_cast<int>(ExitStatus::Input);
}

}  // namespace wavechain
