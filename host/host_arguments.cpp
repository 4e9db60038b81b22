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

template <class... Values>
[[noreturn]] void Refuse(std::string_view text, fmt::format_string<Values...> what,
                         Values&&... values) {
  Fail(ExitStatus::Usage, "-f '{}': {}", text, fmt::format(what, std::forward<Values>(values)...));
}

const ResamplerQuality& ReadQuality(const std::string& name, std::string_view text) {
  if (const ResamplerQuality* quality = FindQuality(name)) {
    return *quality;
  }
  std::vector<std::string_view> names;
  for (const ResamplerQuality& quality : ResamplerQualities()) {
    names.push_back(quality.name);
  }
  Refuse(text, "there is no quality '{}'{}", name, Suggestion(name, names));
}

std::optional<Conversion> ReadConversion(const FilterCall& call, std::string_view text) {
  const std::optional<std::string> rate = Given(call, "rate");
  const std::optional<std::string> quality = Given(call, "quality");
  if (!rate && !quality) {
    return std::nullopt;
  }
  Conversion conversion;
  conversion.quality = &ReadQuality(quality.value_or(std::string(UsualQuality)), text);
  if (rate) {
    conversion.rate = ParseNumber(*rate);
    if (!conversion.rate || *conversion.rate <= 0.0) {
      Refuse(text, "rate takes a number of Hz above 0, not '{}'", *rate);
    }
  }
  if (rate && call.handed > 0) {
    Refuse(text, "rate settles all parameters; leave out {} or rate",
           call.kind->parameters[static_cast<std::size_t>(call.handed) - 1].name);
  }
  if (call.handed > Factors) {
    Refuse(text, "quality settles all parameters but down and up; leave out {} or quality",
           call.kind->parameters[static_cast<std::size_t>(call.handed) - 1].name);
  }
  if (!rate && call.handed == 0) {
    Refuse(text, "quality goes with rate, or with down and up; add rate=HZ");
  }
  return conversion;
}

std::optional<int> ReadChannel(const FilterCall& call, std::string_view text) {
  const std::optional<std::string> given = Given(call, "channel");
  if (!given) {
    return std::nullopt;
  }
  const std::optional<double> number = ParseNumber(*given);
  if (!number || *number < 1.0 || *number > 1e6 || *number != std::trunc(*number)) {
    Refuse(text, "channel takes a whole number from 1, not '{}'", *given);
  }
  return static_cast<int>(*number);
}

}  // namespace

SignalText ParseSignal(std::string_view text) {
  SignalText signal;
  std::size_t at = 0;
  signal.path = ReadPath(text, at);
  if (signal.path.empty() || signal.path == "-") {
    Fail(ExitStatus::Usage,
         "with='{}': takes the name of a file, and filters behind it, as in with=\"noise.wav | "
         "FIRFilter 20\"",
         text);
  }
  while (at < text.size()) {
    const std::size_t next = FindBar(text, at + 1);
    signal.filters.push_back(ParseFilter(Trimmed(text.substr(at + 1, next - at - 1))));
    at = next;
  }
  return signal;
}

void UnderstandHostArguments(FilterCall& call, std::string_view text) {
  for (const HostArgument& own : call.kind->hostArguments) {
    if (own.required && !Given(call, own.name)) {
      Refuse(text, "{} is missing ({}); add {}={}", own.name, own.help, own.name, own.value);
    }
  }
  call.conversion = ReadConversion(call, text);
  if (const std::optional<std::string> with = Given(call, "with")) {
    SignalText second = ParseSignal(*with);
    second.channel = ReadChannel(call, text);
    call.second = std::make_shared<const SignalText>(std::move(second));
  }
}

}  // namespace wavechain
