#include "host/record_commands.h"

#include "host/print.h"
#include "host/provenance.h"

namespace wavechain {

void RecordCommands::AddTo(CLI::App& app) {
  CLI::App* show = app.add_subcommand("show", "Tell how an output was made");
  show->add_option("FILE", shown, "what wavechain run or plot wrote")->required()->type_name("");
  show->add_flag("--json", json, "as JSON");
  show->callback([this] {
    const nlohmann::ordered_json record = ReadRecord(shown);
    const Provenance provenance = Provenance::FromJson(record, shown);
    // ASCII: it leaves the terminal alone.
    const auto replace = nlohmann::ordered_json::error_handler_t::replace;
    Print(json ? record.dump(2, ' ', true, replace) + "\n" : ProvenanceText(provenance));
  });

  CLI::App* again = app.add_subcommand("rerun", "Make an output again, byte for byte");
  again->add_option("FILE", rerun.file, "what wavechain run or plot wrote")
      ->required()
      ->type_name("");
  again
      ->add_option("OUT", rerun.output,
                   "where to write it; without it, what is made is compared with FILE")
      ->type_name("");
  again->add_option("--input", rerun.input, "where the recording lies by now");
  again->add_option("--folder", rerun.folder, "folder that the names of inputs are relative to");
  again->add_option("--library", rerun.library, "filter library to load");
  again->add_flag("--other-library", rerun.otherLibrary,
                  "go on with another library or program than recorded");
  again->add_flag("--force", rerun.force, "replace OUT where it exists");
  again->add_flag("-q,--quiet", rerun.quiet, "say nothing but warnings and errors");
  again->callback([this] { Print(Rerun(rerun)); });
}

}  // namespace wavechain
