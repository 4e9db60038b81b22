#include "host/man_page.h"

#include <fmt/format.h>

#include <algorithm>
#include <sstream>

#include "host/catalogue_text.h"

namespace wavechain {
namespace {

// Text as roff takes it: a backslash is one, a hyphen that is to be typed is no dash, and no line
// is mistaken for a request.
std::string Escaped(const std::string& text) {
  std::string escaped = text.starts_with('.') || text.starts_with('\'') ? "\\&" : "";
  for (const char c : text) {
    if (c == '\\') {
      escaped += "\\e";
    } else if (c == '-') {
      escaped += "\\-";
    } else if (c == '\'') {
      escaped += "\\(aq";
    } else if (c == '"') {
      escaped += "\\(dq";
    } else {
      escaped += c;
    }
  }
  return escaped;
}

std::string Bold(const std::string& text) { return "\\fB" + Escaped(text) + "\\fR"; }
std::string Italic(const std::string& text) { return "\\fI" + Escaped(text) + "\\fR"; }

std::string Item(const std::string& head, const std::string& body) {
  return ".TP\n" + head + "\n" + Escaped(body) + "\n";
}

// Lines as they stand.
std::string Verbatim(const std::string& text) {
  std::istringstream lines(text);
  std::string page = ".PP\n.nf\n";
  for (std::string line; std::getline(lines, line);) {
    page += Escaped(line) + "\n";
  }
  return page + ".fi\n";
}

std::string Head(const CommandArgument& argument) {
  if (argument.positional) {
    return Italic(argument.names.front());
  }
  std::string head;
  for (const std::string& name : argument.names) {
    head += (head.empty() ? "" : ", ") + Bold(name);
  }
  return argument.value.empty() ? head : head + " " + Italic(argument.value);
}

std::string Synopsis(const Command& command) {
  std::string line = Bold("wavechain " + command.name);
  const bool hasOptions = std::ranges::any_of(
      command.arguments, [](const CommandArgument& argument) { return !argument.positional; });
  line += hasOptions ? " [" + Italic("options") + "]" : "";
  for (const CommandArgument& argument : command.arguments) {
    if (argument.positional) {
      const std::string name = Italic(argument.names.front()) + (argument.many ? " ..." : "");
      line += argument.required ? " " + name : " [" + name + "]";
    }
  }
  return line;
}

std::string CommandText(const Command& command) {
  std::string page = ".SS " + command.name + "\n" + Synopsis(command) + "\n.PP\n" +
                     Escaped(command.help + ".") + "\n";
  for (const bool positional : {true, false}) {
    for (const CommandArgument& argument : command.arguments) {
      if (argument.positional == positional) {
        page += Item(Head(argument), argument.help);
      }
    }
  }
  // The filters have a section of their own.
  return command.footer.empty() || command.footer == HelpText() ? page
                                                                : page + Verbatim(command.footer);
}

std::string FilterText(const FilterKind& kind) {
  std::string page =
      fmt::format(".SS {}\n{}\n", kind.name, Escaped(fmt::format("{}.", kind.purpose)));
  if (!kind.note.empty()) {
    page += ".PP\n" + Escaped(std::string(kind.note)) + "\n";
  }
  for (const Parameter& parameter : kind.parameters) {
    page += Item(Bold(std::string(parameter.name)),
                 fmt::format("{} ({}; default {})", parameter.help, RangeText(parameter),
                             DefaultText(parameter)));
    if (!parameter.names.empty()) {
      page += ".IP\n" + Escaped(NamesText(parameter)) + "\n";
    }
  }
  for (const HostArgument& own : kind.hostArguments) {
    page += Item(Bold(std::string(own.name)) + "=" + Italic(std::string(own.value)),
                 fmt::format("{}{}", own.help, own.required ? " (required)" : ""));
  }
  for (const DataFile& file : kind.dataFiles) {
    page += Item("reads " + Bold(std::string(file.name)), std::string(file.content));
  }
  return page;
}

}  // namespace

std::string ManPage(const CommandTable& table) {
  std::string page = fmt::format(".TH WAVECHAIN 1 \"\" \"WaveFilters {}\" \"User Commands\"\n",
                                 Escaped(table.version));
  page += ".SH NAME\nwavechain \\- run chains of signal filters over recordings\n.SH SYNOPSIS\n";
  for (const Command& command : table.commands) {
    page += (&command == table.commands.data() ? "" : ".br\n") + Synopsis(command) + "\n";
  }
  page += ".SH DESCRIPTION\n" + Escaped(table.program.help) + "\n.SH OPTIONS\n";
  for (const CommandArgument& argument : table.program.arguments) {
    page += Item(Head(argument), argument.help);
  }
  page += ".SH COMMANDS\n";
  for (const Command& command : table.commands) {
    page += CommandText(command);
  }
  page += ".SH FILTERS\nParameters go by name, by position in this order, or both.\n";
  for (const FilterKind& kind : Catalogue()) {
    page += FilterText(kind);
  }
  page += ".SH NOTES\n" + Verbatim(table.program.footer);
  page += ".SH EXAMPLES\n" +
          Verbatim(
              "wavechain run in.wav out.wav -f \"FIRNotch half_length=200 frequency=2500\"\n"
              "wavechain skeleton FIRNotch SineFilter > chain.toml\n"
              "wavechain check in.wav --chain chain.toml\n"
              "wavechain run in.wav out.wav --chain chain.toml");
  return page;
}

}  // namespace wavechain
