#include "host/manifest.h"

#include <fcntl.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <optional>
#include <set>
#include <string_view>

#include "host/failure.h"
#include "host/file.h"
#include "host/interrupt.h"
#include "host/parse_json.h"
#include "host/text.h"

namespace wavechain {
namespace {

// Far beyond any list; a recording named by mistake is not read to its end.
constexpr std::size_t MostBytes = std::size_t{1} << 28;

std::string ReadWhole(const std::string& path, const std::string& name) {
  const File file(path == "-" ? ::dup(STDIN_FILENO) : ::open(path.c_str(), O_RDONLY | O_CLOEXEC));
  if (!file.IsOpen()) {
    Fail(ExitStatus::Usage, "{}: cannot be opened: {}", name, SystemText(errno));
  }
  std::string text;
  std::array<char, 1 << 16> block = {};
  while (text.size() <= MostBytes) {
    const long came = ReadSome(file.Descriptor(), block.data(), block.size());
    if (came < 0) {
      StopIfInterrupted();
      Fail(ExitStatus::Usage, "{}: cannot be read: {}", name, SystemText(static_cast<int>(-came)));
    }
    if (came == 0) {
      return text;
    }
    text.append(block.data(), static_cast<std::size_t>(came));
  }
  Fail(ExitStatus::Usage, "{}: is larger than 256 MiB, which no manifest is", name);
}

struct Row {
  int line = 0;
  std::vector<std::string> cells;
};

// A table of cells as spreadsheets write it.
class CsvRows {
 public:
  CsvRows(std::string_view csv, const std::string& fileName) : text(csv), name(fileName) {}

  // The next line that holds anything; nothing at the end. A quoted cell may hold line breaks.
  std::optional<Row> Next() {
    while (at < text.size()) {
      Row row = {line, {}};
      do {
        row.cells.push_back(Cell());
      } while (Skip(','));
      static_cast<void>(Skip('\r'));
      if (at < text.size() && !Skip('\n')) {
        Fail(ExitStatus::Usage,
             "{}:{}: a quoted cell ends before its comma; write \"\" for a quote", name, line);
      }
      ++line;
      if (row.cells.size() > 1 || !row.cells.front().empty()) {
        return row;
      }
    }
    return std::nullopt;
  }

 private:
  bool Skip(char c) {
    const bool there = at < text.size() && text[at] == c;
    at += there ? 1 : 0;
    return there;
  }

  std::string Cell() {
    if (!Skip('"')) {
      const std::size_t end = std::min(text.find_first_of(",\n", at), text.size());
      std::string_view cell = text.substr(at, end - at);
      if (cell.ends_with('\r')) {
        cell.remove_suffix(1);
      }
      at += cell.size();
      return std::string(cell);
    }
    const int start = line;
    std::string cell;
    while (at < text.size()) {
      if (Skip('"')) {
        if (!Skip('"')) {
          return cell;
        }
        cell += '"';
      } else {
        line += text[at] == '\n' ? 1 : 0;
        cell += text[at++];
      }
    }
    Fail(ExitStatus::Usage, "{}:{}: a quoted cell has no end", name, start);
  }

  std::string_view text;
  const std::string& name;
  std::size_t at = 0;
  int line = 1;
};

std::vector<ManifestEntry> ReadCsv(std::string_view text, const std::string& name) {
  CsvRows rows(text, name);
  std::vector<ManifestEntry> entries;
  const std::optional<Row> head = rows.Next();
  if (!head) {
    Fail(ExitStatus::Usage, "{}: is empty; its first line names the columns, as in input,output",
         name);
  }
  const std::set<std::string> columns(head->cells.begin(), head->cells.end());
  if (columns.size() < head->cells.size()) {
    Fail(ExitStatus::Usage, "{}:{}: names a column twice", name, head->line);
  }
  while (const std::optional<Row> row = rows.Next()) {
    ManifestEntry entry = {fmt::format("{}:{}", name, row->line), {}};
    if (row->cells.size() != head->cells.size()) {
      Fail(ExitStatus::Usage, "{}: has {}, the line of names has {}", entry.place,
           Counted(static_cast<long long>(row->cells.size()), "cell"), head->cells.size());
    }
    for (std::size_t i = 0; i < row->cells.size(); ++i) {
      if (!row->cells[i].empty()) {
        entry.values[head->cells[i]] = row->cells[i];
      }
    }
    if (entries.empty()) {
      // Known or not is asked of every column, whether or not a file has it.
      for (const std::string& column : head->cells) {
        entry.values.try_emplace(column);
      }
    }
    entries.push_back(std::move(entry));
  }
  return entries;
}

std::vector<ManifestEntry> ReadJsonLines(std::string_view text, const std::string& name) {
  std::vector<ManifestEntry> entries;
  for (int line = 1; !text.empty(); ++line) {
    const std::size_t end = std::min(text.find('\n'), text.size());
    const std::string_view one = text.substr(0, end);
    text.remove_prefix(std::min(end + 1, text.size()));
    if (one.find_first_not_of(" \t\r") == std::string_view::npos) {
      continue;
    }
    ManifestEntry entry = {fmt::format("{}:{}", name, line), {}};
    const auto json = ParseObject<nlohmann::json>(one);
    if (!json) {
      Fail(ExitStatus::Usage, R"({}: is no JSON object; write a line such as {{"input": "a.wav"}})",
           entry.place);
    }
    for (const auto& [key, value] : json->items()) {
      if (!value.is_string() && !value.is_number_integer() && !value.is_null()) {
        Fail(ExitStatus::Usage, "{}: {} takes a text, not a value of type {}", entry.place, key,
             value.type_name());
      }
      entry.values[key] = value.is_string() ? value.get<std::string>()
                          : value.is_null() ? std::string()
                                            : value.dump();
    }
    entries.push_back(std::move(entry));
  }
  return entries;
}

// A zero byte would end a file's name for the system, but not in our messages.
void RequireText(const ManifestEntry& entry) {
  for (const auto& [key, value] : entry.values) {
    if (value.find('\0') != std::string::npos) {
      Fail(ExitStatus::Usage, "{}: {} holds a zero byte", entry.place, key);
    }
  }
}

}  // namespace

std::vector<ManifestEntry> ReadManifest(const std::string& path) {
  constexpr std::string_view Mark = "\xef\xbb\xbf";  // that some spreadsheets write first
  const std::string name = path == "-" ? "standard input" : path;
  const std::string text = ReadWhole(path, name);
  std::string_view rest = text;
  if (rest.starts_with(Mark)) {
    rest.remove_prefix(Mark.size());
  }
  const std::size_t first = rest.find_first_not_of(" \t\r\n");
  const bool isJson = first != std::string_view::npos && rest[first] == '{';
  std::vector<ManifestEntry> entries = isJson ? ReadJsonLines(rest, name) : ReadCsv(rest, name);
  for (const ManifestEntry& entry : entries) {
    RequireText(entry);
  }
  return entries;
}

}  // namespace wavechain
