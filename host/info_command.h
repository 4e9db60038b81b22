#ifndef WAVEFILTERS_HOST_INFO_COMMAND_H
#define WAVEFILTERS_HOST_INFO_COMMAND_H

#include <CLI/App.hpp>
#include <optional>
#include <string>

namespace wavechain {

/// `wavechain list`, `wavechain info` and `wavechain help`, which tell of filters and commands.
struct InfoCommand {
  std::string topic = {};
  std::optional<std::string> library = {};
  bool json = false;

  /// Add the commands; parsing fills in and prints. Fail (usage) with the nearest name for
  /// what there is not. `list` and `info` are the first commands of the program, `help` the last,
  /// whose parsing throws CLI::CallForAllHelp where no topic is given.
  void AddTo(CLI::App& app);
  void AddHelpTo(CLI::App& app);

 private:
  void List() const;
  void Info() const;
  void Help(const CLI::App& app) const;
};

}  // namespace wavechain

#endif
