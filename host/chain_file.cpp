#include "host/chain_file.h"

#include <fcntl.h>
#include <toml++/toml.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <filesystem>
#include <span>
#include <utility>

#include "host/catalogue_text.h"
#include "host/failure.h"
#include "host/file.h"
#include "host/text.h"

namespace wavechain {
namespace {

// Far beyond any chain; a recording named by mistake is not read to its end.
constexpr std::size_t MostBytes = std::size_t{1} << 20;

constexpr std::string_view Filters = "filter";
constexpr std::string_view Kind = "kind";

std::string ReadWhole(const std::string& path) {
  const File file(::open(path.c_str(), O_RDONLY | O_CLOEXEC));
  if (!file.IsOpen()) {
    Fail(ExitStatus::Usage, "{}: cannot be opened: {}", path, SystemText(errno));
  }
  std::string text;
  std::array<char, 4096> block = {};
  while (text.size() <= MostBytes) {
    const long came = ReadSome(file.Descriptor(), block.data(), block.size());
    if (came < 0) {
      Fail(ExitStatus::Usage, "{}: cannot be read: {}", path, SystemText(static_cast<int>(-came)));
    }
    if (came == 0) {
      return text;
    }
    text.append(block.data(), static_cast<std::size_t>(came));
  }
  Fail(ExitStatus::Usage, "{}: is larger than 1 MiB, which no chain is", path);
}

// Where a text in quotes that starts at `at` ends.
std::size_t BehindQuotes(std::string_view text, std::size_t at) {
  const char quote = text[at];
  const std::string_view three = text.substr(at, 3);
  const bool isLong = three.size() == 3 && three[1] == quote && three[2] == quote;
  for (at += isLong ? 3 : 1; at < text.size(); ++at) {
    if (text[at] == '\\' && quote == '"') {
      ++at;
    } else if (isLong && text.substr(at, 3) == three) {
      return at + 3;
    } else if (!isLong && (text[at] == quote || text[at] == '\n')) {
      return at + 1;
    }
  }
  return at;
}

// Where a key, or whatever else stands between two signs of the grammar, has too many dots outside
// of quotes and comments; nothing where none has. Each of a key's is a table within a table, which
// the parser's own functions follow by calling themselves.
std::optional<std::size_t> DeepKey(std::string_view text) {
  constexpr std::string_view Ends = "\n=,[]{}";
  constexpr int MostDots = 32;
  int dots = 0;
  for (std::size_t at = 0; at < text.size();) {
    const char c = text[at];
    if (c == '"' || c == '\'') {
      at = BehindQuotes(text, at);
      continue;
    }
    if (c == '#') {
      at = std::min(text.find('\n', at), text.size());
      continue;
    }
    dots = Ends.find(c) != std::string_view::npos ? 0 : dots + (c == '.' ? 1 : 0);
    if (dots > MostDots) {
      return at;
    }
    ++at;
  }
  return std::nullopt;
}

// Line and column as the parser counts them: in characters, not in bytes.
toml::source_region RegionAt(std::string_view text, std::size_t at) {
  const std::string_view before = text.substr(0, at);
  const std::string_view line = before.substr(before.rfind('\n') + 1);
  const auto characters = std::ranges::count_if(
      line, [](char c) { return (static_cast<unsigned char>(c) & 0xc0U) != 0x80U; });
  const auto number = std::ranges::count(before, '\n') + 1;
  const toml::source_position place = {static_cast<toml::source_index>(number),
                                       static_cast<toml::source_index>(characters + 1)};
  return {place, place, nullptr};
}

// The parser's words, and what they most often come from.
std::string WhyNotToml(std::string_view description) {
  constexpr std::string_view Start = "Error while parsing ";
  if (description.starts_with(Start)) {
    description.remove_prefix(Start.size());
  }
  const bool maybeUnquoted = description.starts_with("boolean") || description.starts_with("value");
  return fmt::format("is not TOML: {}{}", description,
                     maybeUnquoted ? "; texts stand in quotes, as in kind = \"FIRNotch\"" : "");
}

std::string_view TypeText(const toml::node& node) {
  switch (node.type()) {
    case toml::node_type::table:
      return "a table";
    case toml::node_type::array:
      return "an array";
    case toml::node_type::string:
      return "a text";
    case toml::node_type::integer:
    case toml::node_type::floating_point:
      return "a number";
    case toml::node_type::boolean:
      return "true or false";
    default:
      return "a date or a time";
  }
}

// A value as it would be written behind NAME= on the command line; nothing for what could not
// be.
std::optional<std::string> ValueText(const toml::node& node) {
  if (const auto* text = node.as_string()) {
    return text->get();
  }
  if (const auto* whole = node.as_integer()) {
    return fmt::format("{}", whole->get());
  }
  if (const auto* real = node.as_floating_point()) {
    return NumberText(real->get());
  }
  if (const auto* flag = node.as_boolean()) {
    return flag->get() ? "true" : "false";
  }
  return std::nullopt;
}

using Entry = std::pair<const toml::key*, const toml::node*>;

// A table's entries as they are written: the parser sorts them by name.
std::vector<Entry> InOrder(const toml::table& table) {
  std::vector<Entry> entries;
  for (const auto& [key, node] : table) {
    entries.emplace_back(&key, &node);
  }
  std::ranges::sort(entries, [](const Entry& a, const Entry& b) {
    return a.first->source().begin < b.first->source().begin;
  });
  return entries;
}

template <class Entry>
const Entry* FindEntry(std::span<const Entry> table, std::string_view name) {
  const auto found = std::ranges::find(table, name, &Entry::name);
  return found == table.end() ? nullptr : &*found;
}

// One chain file on its way to the calls that it stands for.
class ChainReader {
 public:
  explicit ChainReader(const std::string& chainPath)
      : path(chainPath), folder(std::filesystem::path(chainPath).parent_path().string()) {}

  std::vector<FilterCall> Read() {
    const toml::table file = Parse();
    std::vector<FilterCall> calls;
    for (const auto& [key, node] : InOrder(file)) {
      if (key->str() != Filters) {
        Refuse(key->source(), "there is no '{}' in a chain{}", key->str(),
               Suggestion(key->str(), {Filters}));
      }
      const toml::array* tables = node->as_array();
      if (tables == nullptr) {
        Refuse(key->source(), "a filter starts with [[filter]], in double brackets");
      }
      for (const toml::node& one : *tables) {
        calls.push_back(ReadFilter(one));
      }
    }
    if (calls.empty()) {
      Fail(ExitStatus::Usage,
           "{}: holds no filter; it takes a line [[filter]], and below it kind = \"FIRNotch\" or "
           "its like",
           path);
    }
    return calls;
  }

 private:
  std::string Place(const toml::source_region& source) const {
    return fmt::format("{}:{}:{}", path, source.begin.line, source.begin.column);
  }

  template <class... Values>
  [[noreturn]] void Refuse(const toml::source_region& source, fmt::format_string<Values...> what,
                           Values&&... values) const {
    Fail(ExitStatus::Usage, "{}: {}", Place(source),
         fmt::format(what, std::forward<Values>(values)...));
  }

  toml::table Parse() const {
    const std::string text = ReadWhole(path);
    if (const std::optional<std::size_t> at = DeepKey(text)) {
      Refuse(RegionAt(text, *at), "a name has more dots than any in a chain");
    }
    try {
      return toml::parse(std::string_view(text));
    } catch (const toml::parse_error& error) {
      Refuse(error.source(), "{}", WhyNotToml(error.description()));
    }
  }

  FilterCall ReadFilter(const toml::node& node) const {
    const toml::table* table = node.as_table();
    if (table == nullptr) {
      Refuse(node.source(), "a filter is a table, not {}; it starts with [[filter]]",
             TypeText(node));
    }
    const toml::node* kind = table->get(Kind);
    if (kind == nullptr) {
      Refuse(node.source(), "the filter's kind is missing; add kind = \"FIRNotch\" or its like");
    }
    FilterText written;
    written.name = Text(Kind, *kind);
    written.place = Place(kind->source());
    written.folder = folder;
    if (FindFilter(written.name) != nullptr) {
      // What the filter as a whole lacks is said of it as a whole.
      written.place = Place(node.source());
    }
    for (const auto& [key, value] : InOrder(*table)) {
      if (key->str() != Kind) {
        written.arguments.push_back(ReadArgument(written.name, *key, *value));
      }
    }
    return ResolveFilter(written);
  }

  Argument ReadArgument(std::string_view filter, const toml::key& key,
                        const toml::node& value) const {
    const FilterKind* kind = FindFilter(filter);
    const auto* own = kind == nullptr ? nullptr : FindEntry(kind->hostArguments, key.str());
    const bool known =
        own != nullptr || (kind != nullptr && FindEntry(kind->parameters, key.str()) != nullptr);
    Argument argument;
    argument.name = std::string(key.str());
    argument.place = Place(known ? value.source() : key.source());
    if (own != nullptr && own->holds != HostValue::Number) {
      argument.value = Text(key.str(), value);
    } else if (const std::optional<std::string> text = ValueText(value)) {
      argument.value = *text;
    } else if (known) {
      Refuse(value.source(), "{} takes one value, not {}", key.str(), TypeText(value));
    }
    return argument;
  }

  std::string Text(std::string_view name, const toml::node& value) const {
    const auto* text = value.as_string();
    if (text == nullptr) {
      Refuse(value.source(), "{} takes a text in quotes, not {}", name, TypeText(value));
    }
    // It would end a file's name for the system, but not in our messages.
    if (text->get().find('\0') != std::string::npos) {
      Refuse(value.source(), "{} holds a zero byte", name);
    }
    return text->get();
  }

  const std::string& path;
  std::string folder;
};

}  // namespace

std::vector<FilterCall> ReadChainFile(const std::string& path) { return ChainReader(path).Read(); }

}  // namespace wavechain
