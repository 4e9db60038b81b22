#include "host/completion.h"

#include <fmt/format.h>
#include <fmt/ranges.h>

#include <algorithm>

#include "host/catalogue_text.h"

namespace wavechain {
namespace {

std::string Replaced(std::string text, const std::string& what, const std::string& with) {
  for (std::size_t at = 0; (at = text.find(what, at)) != std::string::npos; at += with.size()) {
    text.replace(at, what.size(), with);
  }
  return text;
}

// Help texts up to their first full stop or semicolon: menus are narrow.
std::string Short(const std::string& help) {
  const std::size_t end = std::min(help.find(". "), help.find("; "));
  return help.substr(0, end);
}

// What may stand behind a filter's name: "half_length=", "mode=speed".
std::string ParameterWords(const FilterKind& kind) {
  std::vector<std::string> words;
  for (const Parameter& parameter : kind.parameters) {
    words.push_back(fmt::format("{}=", parameter.name));
    for (const NamedValue& named : parameter.names) {
      words.push_back(fmt::format("{}={}", parameter.name, named.name));
    }
  }
  for (const HostArgument& own : kind.hostArguments) {
    words.push_back(fmt::format("{}=", own.name));
  }
  return fmt::format("{}", fmt::join(words, " "));
}

std::string CommandNames(const CommandTable& table) {
  std::string names;
  for (const Command& command : table.commands) {
    names += (names.empty() ? "" : " ") + command.name;
  }
  return names;
}

std::string OptionNames(const Command& command) {
  std::string names;
  for (const CommandArgument& argument : command.arguments) {
    if (!argument.positional) {
      names += fmt::format("{}{}", names.empty() ? "" : " ", fmt::join(argument.names, " "));
    }
  }
  return names;
}

// Nothing for files: the shell completes these by itself.
std::string BashAnswer(const CommandArgument& argument) {
  switch (argument.kind) {
    case ValueKind::Word:
      return fmt::format("_wavechain_words \"{}\"", fmt::join(argument.words, " "));
    case ValueKind::Filter:
      return argument.positional ? "_wavechain_words \"$filters\"" : "_wavechain_filter";
    default:
      return ":";
  }
}

std::string BashCommand(const Command& command) {
  std::string text = fmt::format("    {})\n      case $prev in\n", command.name);
  std::string positional;
  for (const CommandArgument& argument : command.arguments) {
    if (argument.positional) {
      positional = BashAnswer(argument);
    } else if (!argument.value.empty()) {
      text += fmt::format("        {}) {}; return ;;\n", fmt::join(argument.names, "|"),
                          BashAnswer(argument));
    }
  }
  text += fmt::format(
      "      esac\n      if [[ $cur == -* ]]; then _wavechain_words \"{}\"; return; fi\n",
      OptionNames(command));
  return text + fmt::format("      {} ;;\n", positional.empty() ? ":" : positional);
}

// In single quotes, which both shells read the same way but for what stands in them.
std::string ZshQuoted(const std::string& text) { return "'" + Replaced(text, "'", "'\\''") + "'"; }
std::string FishQuoted(const std::string& text) {
  return "'" + Replaced(Replaced(text, "\\", "\\\\"), "'", "\\'") + "'";
}

// Within the brackets and between the colons of an argument's description.
std::string ZshText(const std::string& text) {
  std::string escaped;
  for (const char c : text) {
    escaped +=
        c == '[' || c == ']' || c == ':' || c == '\\' ? std::string{'\\', c} : std::string{c};
  }
  return escaped;
}

std::string ZshAction(const CommandArgument& argument) {
  switch (argument.kind) {
    case ValueKind::Word:
      return fmt::format("({})", fmt::join(argument.words, " "));
    case ValueKind::Filter:
      return argument.positional ? "_wavechain_names" : "_wavechain_filter";
    case ValueKind::File:
      return "_files";
    default:
      return "";
  }
}

std::string ZshArgument(const CommandArgument& argument) {
  if (argument.positional) {
    return " " +
           ZshQuoted(fmt::format("*:{}:{}", ZshText(argument.names.front()), ZshAction(argument)));
  }
  std::string text;
  for (const std::string& name : argument.names) {
    std::string entry =
        fmt::format("{}{}[{}]", argument.many ? "*" : "", name, ZshText(Short(argument.help)));
    if (!argument.value.empty()) {
      entry += fmt::format(":{}:{}", ZshText(argument.value), ZshAction(argument));
    }
    text += " \\\n        " + ZshQuoted(entry);
  }
  return text;
}

std::string ZshCommand(const Command& command) {
  std::string text = fmt::format("      {})\n        _arguments", command.name);
  std::string positional;
  for (const CommandArgument& argument : command.arguments) {
    if (argument.positional) {
      positional = " \\\n       " + ZshArgument(argument);
    } else {
      text += ZshArgument(argument);
    }
  }
  return text + positional + " ;;\n";
}

std::string FishArgument(const std::string& condition, const CommandArgument& argument) {
  std::string text = "complete -c wavechain -n " + FishQuoted(condition);
  for (const std::string& name : argument.names) {
    if (!argument.positional) {
      text += name.starts_with("--") ? " -l " + name.substr(2) : " -s " + name.substr(1);
    }
  }
  switch (argument.kind) {
    case ValueKind::Word:
      text +=
          fmt::format(" -x -a {}", FishQuoted(fmt::format("{}", fmt::join(argument.words, " "))));
      break;
    case ValueKind::Filter:
      text +=
          argument.positional ? " -f -a '(__wavechain_names)'" : " -x -a '(__wavechain_filter)'";
      break;
    case ValueKind::File:
      text += argument.positional ? " -F" : " -r -F";
      break;
    default:
      text += argument.value.empty() ? "" : " -x";
  }
  return text + (argument.positional ? "" : " -d " + FishQuoted(Short(argument.help))) + "\n";
}

}  // namespace

std::string BashCompletion(const CommandTable& table) {
  std::string text =
      "# Completion of wavechain for bash.\n\n"
      "_wavechain_words() { mapfile -t COMPREPLY < <(compgen -W \"$1\" -- \"$cur\"); }\n\n"
      "# A filter's name, or behind it, within quotes, its parameters.\n"
      "_wavechain_filter() {\n"
      "  local before last words\n"
      "  if [[ $cur != *' '* ]]; then _wavechain_words \"$filters\"; return; fi\n"
      "  before=${cur% *} last=${cur##* }\n"
      "  case ${cur%% *} in\n";
  for (const FilterKind& kind : Catalogue()) {
    text += fmt::format("    {}) words=\"{}\" ;;\n", kind.name, ParameterWords(kind));
  }
  text += fmt::format(
      "  esac\n"
      "  mapfile -t COMPREPLY < <(compgen -P \"$before \" -W \"$words\" -- \"$last\")\n"
      "  compopt -o nospace 2>/dev/null\n"
      "}}\n\n"
      "_wavechain() {{\n"
      "  local cur=${{COMP_WORDS[COMP_CWORD]}} prev=${{COMP_WORDS[COMP_CWORD - 1]}}\n"
      "  local filters=\"{}\"\n"
      "  COMPREPLY=()\n"
      "  # --chain=FILE comes in three words.\n"
      "  if [[ $cur == '=' ]]; then cur=; "
      "elif [[ $prev == '=' ]]; then prev=${{COMP_WORDS[COMP_CWORD - 2]}}; fi\n"
      "  cur=${{cur#[\\\"\\']}}\n"
      "  if ((COMP_CWORD == 1)); then _wavechain_words \"{} {}\"; return; fi\n"
      "  case ${{COMP_WORDS[1]}} in\n",
      fmt::join(FilterNames(), " "), CommandNames(table), OptionNames(table.program));
  for (const Command& command : table.commands) {
    text += BashCommand(command);
  }
  // Where nothing is offered, bash completes names of files.
  return text + "  esac\n}\n\ncomplete -o bashdefault -o default -F _wavechain wavechain\n";
}

std::string ZshCompletion(const CommandTable& table) {
  std::string text =
      "#compdef wavechain\n# Completion of wavechain for zsh.\n\n"
      "_wavechain_names() {\n  local -a kinds=(\n";
  for (const FilterKind& kind : Catalogue()) {
    text += "    " + ZshQuoted(fmt::format("{}:{}", kind.name, kind.purpose)) + "\n";
  }
  text +=
      "  )\n  _describe -t filters filter kinds\n}\n\n"
      "# A filter's name, or behind it, within quotes, its parameters.\n"
      "_wavechain_filter() {\n"
      "  if [[ $PREFIX != *' '* ]]; then _wavechain_names; return; fi\n"
      "  compset -q\n"
      "  case $words[1] in\n";
  for (const FilterKind& kind : Catalogue()) {
    text += fmt::format("    {}) compadd -S '' -- {} ;;\n", kind.name, ParameterWords(kind));
  }
  text +=
      "  esac\n}\n\n_wavechain() {\n"
      "  local curcontext=\"$curcontext\" state line\n"
      "  local -a commands=(\n";
  for (const Command& command : table.commands) {
    text += "    " + ZshQuoted(fmt::format("{}:{}", command.name, command.help)) + "\n";
  }
  text += "  )\n  _arguments -C";
  for (const CommandArgument& argument : table.program.arguments) {
    text += ZshArgument(argument);
  }
  text +=
      " \\\n    '1: :->command' '*:: :->arguments'\n"
      "  case $state in\n    command) _describe -t commands command commands ;;\n"
      "    arguments) case $words[1] in\n";
  for (const Command& command : table.commands) {
    text += ZshCommand(command);
  }
  return text + "    esac ;;\n  esac\n}\n\n_wavechain \"$@\"\n";
}

std::string FishCompletion(const CommandTable& table) {
  std::string text =
      "# Completion of wavechain for fish.\n\nfunction __wavechain_names\n"
      "    printf '%s\\t%s\\n'";
  for (const FilterKind& kind : Catalogue()) {
    text += fmt::format(" \\\n        {} {}", kind.name, FishQuoted(std::string(kind.purpose)));
  }
  text +=
      "\nend\n\n# A filter's name, or behind it, within quotes, its parameters.\n"
      "function __wavechain_filter\n"
      "    set -l whole (commandline -ct | string trim -l -c '\"\\'')\n"
      "    if not string match -q '* *' -- $whole\n        __wavechain_names\n"
      "        return\n    end\n"
      "    set -l before (string replace -r '[^ ]*$' '' -- $whole)\n"
      "    switch (string split -f 1 ' ' -- $whole)\n";
  for (const FilterKind& kind : Catalogue()) {
    if (const std::string words = ParameterWords(kind); !words.empty()) {
      text +=
          fmt::format("        case {}\n            printf '%s\\n' $before(string split ' ' {})\n",
                      kind.name, FishQuoted(words));
    }
  }
  text += "    end\nend\n\ncomplete -c wavechain -f\n";
  for (const Command& command : table.commands) {
    text += fmt::format("complete -c wavechain -n __fish_use_subcommand -a {} -d {}\n",
                        command.name, FishQuoted(command.help));
  }
  for (const CommandArgument& argument : table.program.arguments) {
    text += FishArgument("__fish_use_subcommand", argument);
  }
  for (const Command& command : table.commands) {
    for (const CommandArgument& argument : command.arguments) {
      text += FishArgument("__fish_seen_subcommand_from " + command.name, argument);
    }
  }
  return text;
}

}  // namespace wavechain
