#include "host/chain_options.h"

#include <CLI/App.hpp>
#include <iterator>

#include "host/chain_file.h"
#include "host/failure.h"

namespace wavechain {

void AddChainOptions(CLI::App& command, std::vector<ChainPart>& parts) {
  // Called for each of them as it is read, so that filters and files keep their order.
  command
      .add_option_function<std::string>(
          "-f,--filter",
          [&parts](const std::string& text) {
            parts.push_back({false, text});
          },
          "a filter and its parameters, by name, by position or both, as in "
          "\"FIRNotch 200 frequency=2500\"; once for each filter, in order")
      ->trigger_on_parse()
      ->type_name("\"FILTER VALUE NAME=VALUE\"");
  command
      .add_option_function<std::string>(
          "--chain",
          [&parts](const std::string& path) {
            parts.push_back({true, path});
          },
          "a saved chain of filters (TOML), which stands among the -f where it is named; "
          "names of files in it are relative to its folder")
      ->trigger_on_parse()
      ->type_name("FILE");
}

std::vector<FilterCall> ReadChain(const std::vector<ChainPart>& parts) {
  if (parts.empty()) {
    Fail(ExitStatus::Usage,
         "no filter is given; add -f \"FIRNotch half_length=200\" or its like, or --chain FILE");
  }
  std::vector<FilterCall> calls;
  for (const ChainPart& part : parts) {
    if (part.isFile) {
      std::vector<FilterCall> saved = ReadChainFile(part.text);
      std::ranges::move(saved, std::back_inserter(calls));
    } else {
      calls.push_back(ParseFilter(part.text));
    }
  }
  return calls;
}

}  // namespace wavechain
