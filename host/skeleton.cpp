#include "host/skeleton.h"

#include <fmt/format.h>

#include <algorithm>
#include <sstream>

#include "host/catalogue_text.h"
#include "host/failure.h"
#include "host/print.h"
#include "host/text.h"

namespace wavechain {
namespace {

// Comment lines of the text, broken between words.
std::string Comment(const std::string& text) {
  constexpr std::size_t Width = 100;
  std::istringstream words(text);
  std::string lines;
  std::string line = "#";
  for (std::string word; words >> word;) {
    if (line.size() + 1 + word.size() > Width) {
      lines += line + "\n";
      line = "#";
    }
    line += " " + word;
  }
  return lines + line + "\n";
}

// The default as TOML has it: by its name where it has one.
std::string PresetText(const Parameter& parameter) {
  const auto named = std::ranges::find(parameter.names, *parameter.preset, &NamedValue::value);
  return named == parameter.names.end() ? NumberText(*parameter.preset)
                                        : fmt::format("\"{}\"", named->name);
}

// `isChoice`: something else may take the place of the parameter.
std::string ParameterText(const Parameter& parameter, bool isChoice) {
  const std::string fallback = parameter.Required()
                                   ? "required, there is no default"
                                   : fmt::format("default {}", DefaultText(parameter));
  std::string text =
      Comment(fmt::format("{} ({}; {})", parameter.help, RangeText(parameter), fallback));
  if (!parameter.names.empty()) {
    text += Comment(NamesText(parameter));
  }
  const bool active = parameter.preset && !isChoice;
  return text + fmt::format("{}{} = {}\n", active ? "" : "#", parameter.name,
                            parameter.preset ? PresetText(parameter) : "NUMBER");
}

std::string ArgumentText(const HostArgument& own) {
  const bool quoted = own.holds != HostValue::Number && !own.value.starts_with('"');
  const std::string_view quote = quoted ? "\"" : "";
  return Comment(fmt::format("{}{}", own.help, own.required ? " (required)" : "")) +
         fmt::format("#{} = {}{}{}\n", own.name, quote, own.value, quote);
}

std::string FilterText(const FilterKind& kind) {
  std::string text = "\n" + Comment(fmt::format("{}: {}", kind.name, kind.purpose));
  if (!kind.note.empty()) {
    text += Comment(std::string(kind.note));
  }
  for (const DataFile& file : kind.dataFiles) {
    text += Comment(fmt::format("reads {}: {}", file.name, file.content));
  }
  text += fmt::format("[[filter]]\nkind = \"{}\"\n", kind.name);
  for (const HostArgument& own : kind.hostArguments) {
    text += ArgumentText(own);
  }
  const bool isChoice = std::ranges::any_of(kind.hostArguments, &HostArgument::settlesParameters);
  for (const Parameter& parameter : kind.parameters) {
    text += ParameterText(parameter, isChoice);
  }
  return text;
}

}  // namespace

std::string SkeletonText(const std::vector<const FilterKind*>& kinds) {
  std::string text =
      "# A chain of filters, for wavechain run --chain THIS_FILE IN OUT. They run in this order.\n"
      "# What keeps its default may be left out; take the # away from what is to count beside it.\n"
      "# Names of files are relative to this file's folder.\n";
  for (const FilterKind* kind : kinds) {
    text += FilterText(*kind);
  }
  return text;
}

void SkeletonCommand::AddTo(CLI::App& app) {
  CLI::App* skeleton = app.add_subcommand("skeleton", "Print a chain file to fill in");
  skeleton->add_option("FILTER", filters, "names of the filters, in the order of the chain")
      ->required()
      ->type_name("");
  skeleton->footer("As in: wavechain skeleton FIRNotch SineFilter > chain.toml");
  skeleton->callback([this] {
    std::vector<const FilterKind*> kinds;
    for (const std::string& name : filters) {
      const FilterKind* kind = FindFilter(name);
      if (kind == nullptr) {
        Fail(ExitStatus::Usage, "there is no filter '{}'{}", name, Suggestion(name, FilterNames()));
      }
      kinds.push_back(kind);
    }
    Print(SkeletonText(kinds));
  });
}

}  // namespace wavechain
