#include "host/command_table.h"

#include <algorithm>

#include "host/audio_format.h"
#include "host/catalogue.h"
#include "host/raw_format.h"

namespace wavechain {
namespace {

template <class Entry>
std::vector<std::string> NamesOf(std::span<const Entry> table) {
  std::vector<std::string> names;
  for (const Entry& entry : table) {
    names.emplace_back(entry.name);
  }
  return names;
}

// The words that an option takes, if these are all that it takes.
std::vector<std::string> WordsOf(const std::string& command, const std::string& name) {
  if (name == "--encoding") {
    return NamesOf(Encodings());
  }
  if (name == "--type") {
    return NamesOf(RawTypes());
  }
  if (name == "--format") {
    return command == "plot" ? std::vector<std::string>{"png", "svg", "pdf"}
                             : NamesOf(Containers());
  }
  return {};
}

void SetKind(const std::string& command, CommandArgument& argument) {
  const std::string& name = argument.names.back();
  argument.words = WordsOf(command, name);
  if (!argument.words.empty()) {
    argument.kind = ValueKind::Word;
  } else if (name == "--filter" || name == "FILTER") {
    argument.kind = ValueKind::Filter;
  } else if (argument.positional || name == "--library" || argument.value.starts_with("FILE") ||
             argument.value.starts_with("DIR")) {
    argument.kind = ValueKind::File;
  }
}

Command Read(const CLI::App& app) {
  Command command;
  command.name = app.get_name();
  command.help = app.get_description();
  command.footer = app.get_footer();
  for (const CLI::Option* option : app.get_options()) {
    if (option->get_group().empty()) {
      continue;
    }
    CommandArgument argument;
    argument.positional = option->get_positional();
    argument.required = option->get_required();
    argument.help = option->get_description();
    if (argument.positional) {
      argument.names = {option->get_single_name()};
    } else {
      for (const std::string& name : option->get_snames()) {
        argument.names.push_back("-" + name);
      }
      for (const std::string& name : option->get_lnames()) {
        argument.names.push_back("--" + name);
      }
      if (option->get_items_expected_max() > 0) {
        argument.value = option->get_type_name().empty() ? "VALUE" : option->get_type_name();
      }
    }
    const std::string& name = argument.names.back();
    argument.many = option->get_items_expected_max() > 1 || name == "--filter" || name == "--chain";
    SetKind(command.name, argument);
    command.arguments.push_back(argument);
  }
  return command;
}

// What help knows about.
std::vector<std::string> Topics(const CommandTable& table) {
  std::vector<std::string> topics;
  for (const Command& command : table.commands) {
    topics.push_back(command.name);
  }
  for (const FilterKind& kind : Catalogue()) {
    topics.emplace_back(kind.name);
  }
  return topics;
}

}  // namespace

CommandTable ReadCommands(const CLI::App& app, const std::string& version) {
  CommandTable table;
  table.version = version;
  table.program = Read(app);
  for (const CLI::App* command : app.get_subcommands([](const CLI::App*) { return true; })) {
    table.commands.push_back(Read(*command));
  }
  for (Command& command : table.commands) {
    for (CommandArgument& argument : command.arguments) {
      if (argument.names.front() == "TOPIC") {
        argument.kind = ValueKind::Word;
        argument.words = Topics(table);
      }
    }
  }
  return table;
}

}  // namespace wavechain
