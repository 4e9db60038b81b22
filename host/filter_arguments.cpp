#include "host/filter_arguments.h"

#include <algorithm>
#include <cmath>
#include <filesystem>

#include "host/catalogue_text.h"
#include "host/failure.h"
#include "host/host_arguments.h"
#include "host/text.h"

namespace wavechain {
namespace {

// Reads one word from `text` at `at`, quotes and backslashes resolved.
class WordReader {
 public:
  WordReader(std::string_view whole, std::string_view messageStart)
      : text(whole), place(messageStart) {}

  bool Next(Argument& word) {
    while (at < text.size() && IsBlank(text[at])) {
      ++at;
    }
    if (at == text.size()) {
      return false;
    }
    word = Argument{};
    while (at < text.size() && !IsBlank(text[at])) {
      ReadPiece(word);
    }
    return true;
  }

 private:
  static bool IsBlank(char c) { return c == ' ' || c == '\t' || c == '\n' || c == '\r'; }

  void ReadPiece(Argument& word) {
    const char c = text[at++];
    if (c == '"' || c == '\'') {
      ReadQuoted(c, word.value);
    } else if (c == '\\' && at < text.size() && IsEscapable(text[at])) {
      word.value += text[at++];
    } else if (c == '=' && !word.name) {
      word.name = std::move(word.value);
      word.value.clear();
    } else {
      word.value += c;
    }
  }

  void ReadQuoted(char quote, std::string& value) {
    while (at < text.size() && text[at] != quote) {
      if (quote == '"' && text[at] == '\\' && at + 1 < text.size() && IsEscapable(text[at + 1])) {
        ++at;
      }
      value += text[at++];
    }
    if (at == text.size()) {
      Fail(ExitStatus::Usage, "{}: a {} is opened and never closed", place, quote);
    }
    ++at;
  }

  static bool IsEscapable(char c) { return c == '"' || c == '\'' || c == '\\' || IsBlank(c); }

  std::string_view text;
  std::string_view place;
  std::size_t at = 0;
};

// Settles the values of one filter, argument by argument.
class Resolver {
 public:
  Resolver(const FilterKind& filterKind, const FilterText& filterText)
      : kind(filterKind),
        written(filterText),
        place(filterText.place),
        given(filterKind.parameters.size()) {}

  void Take(const Argument& argument) {
    place = argument.place.empty() ? written.place : argument.place;
    if (!argument.name) {
      TakeByPosition(argument.value);
    } else if (const auto* parameter = Find(kind.parameters, *argument.name)) {
      Set(static_cast<std::size_t>(parameter - kind.parameters.data()), argument.value);
    } else if (const auto* own = Find(kind.hostArguments, *argument.name)) {
      const bool isFile = own->holds == HostValue::File;
      const std::string& value = argument.value;
      if (!hostValues.emplace(own->name, isFile ? InFolder(written.folder, value) : value).second) {
        Refuse("{} is given twice", own->name);
      }
    } else {
      RefuseName(*argument.name);
    }
  }

  FilterCall Finish() {
    place = written.place;
    FilterCall call;
    call.kind = &kind;
    for (std::size_t i = 0; i < given.size(); ++i) {
      const Parameter& parameter = kind.parameters[i];
      if (given[i]) {
        call.handed = static_cast<int>(i) + 1;
      } else if (parameter.Required()) {
        Refuse("{} is missing ({}); add {}=NUMBER", parameter.name, RangeText(parameter),
               parameter.name);
      }
      call.values.push_back(given[i] ? *given[i] : Default(parameter, call.values));
    }
    call.hostValues = std::move(hostValues);
    return call;
  }

 private:
  template <class Entry>
  static const Entry* Find(std::span<const Entry> table, std::string_view name) {
    const auto found = std::ranges::find(table, name, &Entry::name);
    return found == table.end() ? nullptr : &*found;
  }

  static double Default(const Parameter& parameter, std::span<const double> before) {
    return parameter.preset ? *parameter.preset : parameter.computed(before);
  }

  template <class... Values>
  [[noreturn]] void Refuse(fmt::format_string<Values...> what, Values&&... values) const {
    Fail(ExitStatus::Usage, "{}: {}", place, fmt::format(what, std::forward<Values>(values)...));
  }

  [[noreturn]] void RefuseName(std::string_view name) const {
    std::vector<std::string_view> names;
    for (const Parameter& parameter : kind.parameters) {
      names.push_back(parameter.name);
    }
    for (const HostArgument& own : kind.hostArguments) {
      names.push_back(own.name);
    }
    if (names.empty()) {
      Refuse("{} takes no parameters, so not '{}' either", kind.name, name);
    }
    Refuse("{} has no parameter '{}'{}", kind.name, name, Suggestion(name, names));
  }

  void TakeByPosition(const std::string& value) {
    const auto open = std::ranges::find_if(given, [](const auto& one) { return !one; });
    if (open == given.end()) {
      Refuse("'{}' is one value too many; {} takes {}", value, kind.name,
             Counted(static_cast<long long>(given.size()), "parameter"));
    }
    Set(static_cast<std::size_t>(open - given.begin()), value);
  }

  void Set(std::size_t index, const std::string& value) {
    const Parameter& parameter = kind.parameters[index];
    if (given[index]) {
      Refuse("{} is given twice, {} and {}", parameter.name, NumberText(*given[index]), value);
    }
    const double number = Number(parameter, value);
    if (parameter.whole && number != std::trunc(number)) {
      Refuse("{} takes a whole number, not {}", parameter.name, value);
    }
    if (number < parameter.minimum || number > parameter.maximum) {
      Refuse("{}={} is out of range ({}){}{}", parameter.name, value, RangeText(parameter),
             parameter.reason.empty() ? "" : ": ", parameter.reason);
    }
    given[index] = number;
  }

  double Number(const Parameter& parameter, const std::string& value) const {
    if (const auto* named = Find(parameter.names, value)) {
      return named->value;
    }
    if (const std::optional<double> number = ParseNumber(value)) {
      return *number;
    }
    if (parameter.names.empty()) {
      Refuse("{} takes a number ({}), not '{}'", parameter.name, RangeText(parameter), value);
    }
    std::vector<std::string_view> names;
    for (const NamedValue& named : parameter.names) {
      names.push_back(named.name);
    }
    Refuse("{} takes a number or a name, not '{}'{}", parameter.name, value,
           Suggestion(value, names));
  }

  const FilterKind& kind;
  const FilterText& written;
  std::string_view place;  // of what is looked at
  std::vector<std::optional<double>> given;
  std::map<std::string, std::string, std::less<>> hostValues;
};

// In the quotes that give the value back when it is read.
std::string Quoted(const std::string& value) {
  if (value.find('\'') == std::string::npos) {
    return "'" + value + "'";
  }
  std::string quoted = "\"";
  for (const char c : value) {
    quoted += c == '"' || c == '\\' ? std::string{'\\', c} : std::string{c};
  }
  return quoted + "\"";
}

}  // namespace

std::string FilterCall::Text() const {
  std::string text(kind->name);
  const auto shown = conversion ? static_cast<std::size_t>(handed) : values.size();
  for (std::size_t i = 0; i < shown; ++i) {
    text += fmt::format(" {}={}", kind->parameters[i].name, NumberText(values[i]));
  }
  for (const auto& [name, value] : hostValues) {
    text += fmt::format(" {}={}", name, Quoted(value));
  }
  return text;
}

const Argument* FilterText::Find(std::string_view argument) const {
  const auto found =
      std::ranges::find_if(arguments, [&](const Argument& one) { return one.name == argument; });
  return found == arguments.end() ? nullptr : &*found;
}

FilterText SplitFilter(std::string_view text, const Place& in) {
  FilterText filter;
  filter.folder = in.folder;
  filter.place =
      in.text.empty() ? fmt::format("-f '{}'", text) : fmt::format("{}: '{}'", in.text, text);
  WordReader reader(text, filter.place);
  Argument word;
  if (!reader.Next(word) || word.name) {
    Fail(ExitStatus::Usage, "{}: a filter's name comes first, as in FIRNotch half_length=200",
         filter.place);
  }
  filter.name = word.value;
  while (reader.Next(word)) {
    word.place = in.text.empty() ? std::string() : filter.place;
    filter.arguments.push_back(word);
  }
  return filter;
}

FilterCall ResolveFilter(const FilterText& written) {
  const FilterKind* kind = FindFilter(written.name);
  if (kind == nullptr) {
    Fail(ExitStatus::Usage, "{}: there is no filter '{}'{}", written.place, written.name,
         Suggestion(written.name, FilterNames()));
  }
  return ResolveFilter(*kind, written);
}

FilterCall ResolveFilter(const FilterKind& kind, const FilterText& written) {
  Resolver resolver(kind, written);
  for (const Argument& argument : written.arguments) {
    resolver.Take(argument);
  }
  FilterCall call = resolver.Finish();
  UnderstandHostArguments(call, written);
  return call;
}

FilterCall ParseFilter(std::string_view text, const Place& in) {
  return ResolveFilter(SplitFilter(text, in));
}

std::string InFolder(const std::string& folder, const std::string& path) {
  return path.empty() ? path : (std::filesystem::path(folder) / path).string();
}

}  // namespace wavechain
