#include "host/info_command.h"

#include <nlohmann/json.hpp>
#include <vector>

#include "host/catalogue_text.h"
#include "host/failure.h"
#include "host/filter_library.h"
#include "host/print.h"
#include "host/text.h"

namespace wavechain {

void InfoCommand::List() const {
  const FilterLibrary loaded(library);
  auto all = nlohmann::ordered_json::array();
  std::string text;
  for (const FilterKind& kind : Catalogue()) {
    const bool available = loaded.Has(kind);
    if (json) {
      all.push_back(InfoJson(kind, available));
    } else {
      text += ListLine(kind, available);
    }
  }
  Print(json ? all.dump(2) + "\n" : text);
}

void InfoCommand::Info() const {
  const FilterKind* kind = FindFilter(topic);
  if (kind == nullptr) {
    Fail(ExitStatus::Usage, "there is no filter '{}'{}", topic, Suggestion(topic, FilterNames()));
  }
  const bool available = FilterLibrary(library).Has(*kind);
  Print(json ? InfoJson(*kind, available).dump(2) + "\n" : InfoText(*kind, available));
}

void InfoCommand::Help(const CLI::App& app) const {
  if (topic.empty()) {
    throw CLI::CallForAllHelp();
  }
  if (FindFilter(topic) != nullptr) {
    Info();
    return;
  }
  std::vector<std::string_view> topics;
  for (const CLI::App* command : app.get_subcommands([](const CLI::App*) { return true; })) {
    if (command->get_name() == topic) {
      PrintStreamed(command->help(app.get_name()));
      return;
    }
    topics.push_back(command->get_name());
  }
  const std::vector<std::string_view> filters = FilterNames();
  topics.insert(topics.end(), filters.begin(), filters.end());
  Fail(ExitStatus::Usage, "there is no help on '{}'{}", topic, Suggestion(topic, topics));
}

void InfoCommand::AddTo(CLI::App& app) {
  CLI::App* list = app.add_subcommand("list", "List the filters");
  list->add_flag("--json", json, "as JSON, with everything that info tells");
  list->add_option("--library", library, "filter library to load");
  list->callback([this] { List(); });
  CLI::App* info = app.add_subcommand("info", "Tell what a filter does, its parameters and files");
  info->add_option("FILTER", topic, "the filter's name")->required();
  info->add_flag("--json", json, "as JSON");
  info->add_option("--library", library, "filter library to load");
  info->callback([this] { Info(); });
}

void InfoCommand::AddHelpTo(CLI::App& app) {
  // What one types who knows other programs.
  CLI::App* help = app.add_subcommand("help", "Tell about a command or a filter");
  help->add_option("TOPIC", topic, "a command or a filter; left out, the commands")->type_name("");
  help->callback([this, &app] { Help(app); });
}

}  // namespace wavechain
