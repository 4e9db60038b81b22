#include "host/batch_choices.h"

#include <algorithm>
#include <memory>
#include <set>

#include "host/catalogue.h"
#include "host/failure.h"
#include "host/host_arguments.h"

namespace wavechain {
namespace {

struct ColumnName {
  std::string_view filter;  // empty for all
  std::string_view argument;
};

ColumnName Split(std::string_view column) {
  const std::size_t dot = column.find('.');
  return dot == std::string_view::npos ? ColumnName{"", column}
                                       : ColumnName{column.substr(0, dot), column.substr(dot + 1)};
}

bool NamesFile(const HostArgument& argument) {
  return argument.holds == HostValue::File || argument.holds == HostValue::Signal;
}

bool Takes(const FilterKind& kind, std::string_view argument) {
  return std::ranges::any_of(kind.hostArguments, [&](const HostArgument& own) {
    return NamesFile(own) && own.name == argument;
  });
}

// What the file that the filter takes by this argument holds: those that hold the same are
// served by one.
std::string_view Content(const FilterKind& kind, std::string_view argument) {
  const auto file = std::ranges::find(kind.dataFiles, argument, &DataFile::argument);
  return file == kind.dataFiles.end() ? kind.name : file->name;
}

void Give(FilterCall& call, std::string_view argument, const std::string& path) {
  if (call.second && argument == "with") {
    SignalText second = *call.second;
    second.path = path;
    call.hostValues["with"] = second.Text();
    call.second = std::make_shared<const SignalText>(std::move(second));
  } else {
    call.hostValues[std::string(argument)] = path;
  }
}

// The contents that it was taken for, beside the names of the filters that took it.
using Taken = std::set<std::pair<std::string_view, std::string_view>>;

void GiveAll(std::vector<FilterCall>& calls, const FileChoice& choice, Taken& taken) {
  const ColumnName column = Split(choice.column);
  for (FilterCall& call : calls) {
    const bool meant = column.filter.empty() || column.filter == call.kind->name;
    if (meant && Takes(*call.kind, column.argument)) {
      Give(call, column.argument, choice.path);
      taken.emplace(Content(*call.kind, column.argument), call.kind->name);
    }
  }
}

void RequireClear(const FileChoice& choice, const Taken& taken, const std::string& place) {
  if (taken.empty()) {
    Fail(ExitStatus::Usage, "{}: no filter of the chain takes '{}'; leave that column out", place,
         choice.column);
  }
  const auto& first = *taken.begin();
  const auto& last = *taken.rbegin();
  if (first.first != last.first) {
    Fail(ExitStatus::Usage,
         "{}: '{}' could be for {} and for {}, which read different files; name the columns {}.{} "
         "and {}.{}",
         place, choice.column, first.second, last.second, first.second, choice.column, last.second,
         choice.column);
  }
}

}  // namespace

std::vector<std::string_view> FileArguments() {
  std::set<std::string_view> names;
  for (const FilterKind& kind : Catalogue()) {
    for (const HostArgument& argument : kind.hostArguments) {
      if (NamesFile(argument)) {
        names.insert(argument.name);
      }
    }
  }
  return {names.begin(), names.end()};
}

bool IsFileColumn(std::string_view column) {
  const auto [filter, argument] = Split(column);
  if (filter.empty()) {
    return column == argument && std::ranges::count(FileArguments(), argument) > 0;
  }
  const FilterKind* kind = FindFilter(filter);
  return kind != nullptr && Takes(*kind, argument);
}

ChainSet WithFiles(const ChainSet& chains, const std::vector<FileChoice>& choices,
                   const std::string& place) {
  ChainSet own = chains;
  // Those for a kind of filter go before those for all.
  std::vector<FileChoice> inOrder = choices;
  std::ranges::stable_sort(inOrder, {}, [](const FileChoice& choice) {
    return choice.column.find('.') != std::string::npos;
  });
  for (const FileChoice& choice : inOrder) {
    Taken taken;
    GiveAll(own.chain, choice, taken);
    for (std::vector<FilterCall>& track : own.tracks) {
      GiveAll(track, choice, taken);
    }
    RequireClear(choice, taken, place);
  }
  return own;
}

}  // namespace wavechain
