#ifndef WAVEFILTERS_HOST_COMMAND_TABLE_H
#define WAVEFILTERS_HOST_COMMAND_TABLE_H

#include <CLI/App.hpp>
#include <string>
#include <vector>

namespace wavechain {

/// What may stand for a value on the command line.
enum class ValueKind { Any, File, Filter, Word };

/// An option or a positional argument.
struct CommandArgument {
  std::vector<std::string> names = {};  // "-f", "--filter"; for positional ones "IN"
  bool positional = false;
  bool required = false;
  bool many = false;       // may be given several times
  std::string value = {};  // what stands behind it, as in FILE; empty for flags
  std::string help = {};
  ValueKind kind = ValueKind::Any;
  std::vector<std::string> words = {};  // of ValueKind::Word
};

struct Command {
  std::string name = {};
  std::string help = {};
  std::string footer = {};
  std::vector<CommandArgument> arguments = {};
};

/// The program as it is understood: everything behind the manual page and the completions that
/// is not the catalogue's.
struct CommandTable {
  std::string version = {};
  Command program = {};
  std::vector<Command> commands = {};
};

/// The program's commands and options; hidden ones are left out.
CommandTable ReadCommands(const CLI::App& app, const std::string& version);

}  // namespace wavechain

#endif
