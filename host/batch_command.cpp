#include "host/batch_command.h"

#include <CLI/App.hpp>

#include "host/chain_options.h"
#include "host/input_options.h"
#include "host/output_options.h"

namespace wavechain {
namespace {

constexpr const char* Footer =
    "A manifest is a .csv table whose first line names the columns, or a JSON object a line:\n"
    "input, and where needed output (a name within DIR), channel, and the files that a recording\n"
    "has for the chain: data, palate, events, with; GlotSyn.events is for that filter alone.\n"
    "Standard output gets a line of JSON for every file as it ends: input, output, status (done,\n"
    "up-to-date, failed), exit_status, seconds, samples, peak, nan, infinite, warnings, error.\n"
    "An output stays if its record names this very run: recording, data files, chain, library.\n"
    "The exit status is that of the first file in the list that failed.";

}  // namespace

void AddBatch(CLI::App& app, BatchRequest& request) {
  CLI::App* batch = app.add_subcommand("batch", "Run a chain of filters over many recordings");
  batch->add_option("FILES", request.inputs, "recordings, as run reads them")->type_name("");
  batch->add_option("--out", request.folder, "folder to write to; it is made where it is missing")
      ->required()
      ->type_name("DIR");
  batch
      ->add_option("--manifest", request.manifest,
                   "list of recordings in place of FILES; names in it are relative to its folder. "
                   "- is standard input")
      ->type_name("FILE");
  AddChainOptions(*batch, request.run.chain);
  AddTrackOption(*batch, request.run);
  // Kept as they come: to look one up by name takes memory, for want of which CLI11 would abort.
  batch->remove_option(AddInputOptions(*batch, request.run));
  CLI::Option* format = AddOutputOptions(*batch, request.run);
  format->description(
      format->get_description() +
      ". Also the extension of outputs that a manifest does not name; wav by default");
  batch->add_option("-j,--jobs", request.jobs,
                    "processes at a time; by default one for each processor. Results do not depend "
                    "on it");
  batch->add_flag("--keep-going", request.keepGoing, "go on behind a file that failed");
  batch
      ->add_option_function<std::string>(
          "--shard", [&request](const std::string& text) { request.shard = ParseShard(text); },
          "do one part of N, by a hash of the outputs' names: for job arrays")
      ->type_name("I/N");
  batch->add_option("--log", request.log, "append the lines of JSON to a file instead")
      ->type_name("FILE");
  batch->add_flag("--force", request.run.force,
                  "make every output, and replace files that wavechain did not make");
  batch->add_flag("-q,--quiet", request.run.quiet, "say nothing but errors on standard error");
  batch->footer(Footer);
  batch->callback([&request] { Batch(request); });
}

}  // namespace wavechain
