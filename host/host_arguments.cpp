#include "host/host_arguments.h"

#include <cmath>

#include "host/failure.h"
#include "host/text.h"

namespace wavechain {
namespace {

constexpr std::string_view UsualQuality = "good";
constexpr int Factors = 2;  // down and up lead the resampler's parameters

std::string_view Trimmed(std::string_view text) {
  constexpr std::string_view Blanks = " \t\r\n";
  const std::size_t first = text.find_first_not_of(Blanks);
  return first == std::string_view::npos
             ? std::string_view()
             : text.substr(first, text.find_last_not_of(Blanks) - first + 1);
}

// The next bar that separates, or the text's end; quotes and backslashes as in a filter.
std::size_t FindBar(std::string_view text, std::size_t from) {
  char quote = '\0';
  for (std::size_t at = from; at < text.size(); ++at) {
    const char c = text[at];
    if (c == '\\' && quote != '\'') {
      ++at;
    } else if (quote != '\0') {
      quote = c == quote ? '\0' : quote;
    } else if (c == '"' || c == '\'') {
      quote = c;
    } else if (c == '|') {
      return at;
    }
  }
  return text.size();
}

// A file name needs no quotes for its blanks, nor for an apostrophe: they only count where
// they stand first. Returns the name and moves `at` behind it.
std::string ReadPath(std::string_view text, std::size_t& at) {
  at = text.find_first_not_of(" \t\r\n");
  const char first = at == std::string_view::npos ? '\0' : text[at];
  if (first == '"' || first == '\'') {
    const std::size_t end = text.find(first, at + 1);
    if (end != std::string_view::npos) {
      const std::size_t bar = FindBar(text, end + 1);
      if (Trimmed(text.substr(end + 1, bar - end - 1)).empty()) {
        const std::string_view path = text.substr(at + 1, end - at - 1);
        at = bar;
        return std::string(path);
      }
    }
  }
  at = std::min(text.find('|'), text.size());
  return std::string(Trimmed(text.substr(0, at)));
}

std::optional<std::string> Given(const FilterCall& call, std::string_view name) {
  const auto found = call.hostValues.find(name);
  return found == call.hostValues.end() ? std::nullopt : std::optional(found->second);
}

// `about` is the argument that the message is about.
template <class... Values>
[[noreturn]] void Refuse(const FilterText& written, std::string_view about,
                         fmt::format_string<Values...> what, Values&&... values) {
  const Argument* argument = written.Find(about);
  const bool known = argument != nullptr && !argument->place.empty();
  Fail(ExitStatus::Usage, "{}: {}", known ? argument->place : written.place,
       fmt::format(what, std::forward<Values>(values)...));
}

// Quotes where ReadPath would not find the name's end without them.
std::string WrittenPath(const std::string& path) {
  const bool plain = path.find('|') == std::string::npos && !path.starts_with('"') &&
                     !path.starts_with('\'') && Trimmed(path) == path;
  if (plain) {
    return path;
  }
  const char quote = path.find('"') == std::string::npos ? '"' : '\'';
  return quote + path + quote;
}

const ResamplerQuality& ReadQuality(const std::string& name, const FilterText& written) {
  if (const ResamplerQuality* quality = FindQuality(name)) {
    return *quality;
  }
  std::vector<std::string_view> names;
  for (const ResamplerQuality& quality : ResamplerQualities()) {
    names.push_back(quality.name);
  }
  Refuse(written, "quality", "there is no quality '{}'{}", name, Suggestion(name, names));
}

std::optional<Conversion> ReadConversion(const FilterCall& call, const FilterText& written) {
  const std::optional<std::string> rate = Given(call, "rate");
  const std::optional<std::string> quality = Given(call, "quality");
  if (!rate && !quality) {
    return std::nullopt;
  }
  Conversion conversion;
  conversion.quality = &ReadQuality(quality.value_or(std::string(UsualQuality)), written);
  if (rate) {
    conversion.rate = ParseNumber(*rate);
    if (!conversion.rate || *conversion.rate <= 0.0) {
      Refuse(written, "rate", "rate takes a number of Hz above 0, not '{}'", *rate);
    }
  }
  if (rate && call.handed > 0) {
    Refuse(written, "rate", "rate settles all parameters; leave out {} or rate",
           call.kind->parameters[static_cast<std::size_t>(call.handed) - 1].name);
  }
  if (call.handed > Factors) {
    Refuse(written, "quality",
           "quality settles all parameters but down and up; leave out {} or quality",
           call.kind->parameters[static_cast<std::size_t>(call.handed) - 1].name);
  }
  if (!rate && call.handed == 0) {
    Refuse(written, "quality", "quality goes with rate, or with down and up; add rate=HZ");
  }
  return conversion;
}

std::optional<int> ReadChannel(const FilterCall& call, const FilterText& written) {
  const std::optional<std::string> given = Given(call, "channel");
  if (!given) {
    return std::nullopt;
  }
  const std::optional<double> number = ParseNumber(*given);
  if (!number || *number < 1.0 || *number > 1e6 || *number != std::trunc(*number)) {
    Refuse(written, "channel", "channel takes a whole number from 1, not '{}'", *given);
  }
  return static_cast<int>(*number);
}

}  // namespace

std::string SignalText::Text() const {
  std::string text = WrittenPath(path);
  for (const FilterCall& filter : filters) {
    text += " | " + filter.Text();
  }
  return text;
}

SignalText ParseSignal(std::string_view text, const Place& in) {
  SignalText signal;
  std::size_t at = 0;
  signal.path = ReadPath(text, at);
  if (signal.path.empty() || signal.path == "-") {
    Fail(ExitStatus::Usage,
         "{}{}with='{}': takes the name of a file, and filters behind it, as in with=\"noise.wav | "
         "FIRFilter 20\"",
         in.text, in.text.empty() ? "" : ": ", text);
  }
  signal.path = InFolder(in.folder, signal.path);
  if (at < text.size()) {
    signal.filters = ParseFilters(text.substr(at + 1), in);
  }
  return signal;
}

std::vector<FilterCall> ParseFilters(std::string_view text, const Place& in) {
  std::vector<FilterCall> filters;
  std::size_t at = 0;
  std::size_t next = 0;
  do {
    next = FindBar(text, at);
    filters.push_back(ParseFilter(Trimmed(text.substr(at, next - at)), in));
    at = next + 1;
  } while (next < text.size());
  return filters;
}

void UnderstandHostArguments(FilterCall& call, const FilterText& written) {
  for (const HostArgument& own : call.kind->hostArguments) {
    if (own.required && !Given(call, own.name)) {
      Refuse(written, {}, "{} is missing ({}); add {}={}", own.name, own.help, own.name, own.value);
    }
  }
  call.conversion = ReadConversion(call, written);
  if (const std::optional<std::string> with = Given(call, "with")) {
    SignalText second = ParseSignal(*with, {written.Find("with")->place, written.folder});
    second.channel = ReadChannel(call, written);
    if (!written.folder.empty()) {
      call.hostValues["with"] = second.Text();
    }
    call.second = std::make_shared<const SignalText>(std::move(second));
  }
}

}  // namespace wavechain
