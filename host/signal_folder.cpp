#include "host/signal_folder.h"

#include <unistd.h>

#include <cerrno>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <system_error>

#include "host/failure.h"
#include "host/file.h"

namespace wavechain {
namespace {

// A backslash in the signal's path would move the place where the palate is looked for, and
// a path that comes near 512 bytes would be cut.
std::string Parent() {
  constexpr std::size_t Longest = 400;
  std::string parent = TemporaryFolder();
  const bool fits = parent.size() <= Longest && parent.find('\\') == std::string::npos;
  return fits ? parent : "/tmp";
}

}  // namespace

SignalFolder::SignalFolder() {
  folder = Parent() + "/wavechain-XXXXXX";
  if (::mkdtemp(folder.data()) == nullptr) {
    Fail(ExitStatus::Input, "cannot make a temporary folder in {}: {}", Parent(),
         SystemText(errno));
  }
}

SignalFolder::~SignalFolder() {
  // Its files by their names, which are known: looking them up would take memory or a descriptor,
  // of which there may be none.
  for (const std::string& file : made) {
    ::unlink(file.c_str());
  }
  ::rmdir(folder.c_str());
}

void SignalFolder::LinkByExtension(std::string_view extension, const std::string& file) {
  Link(folder + "/s" + std::string(extension), file);
}

void SignalFolder::LinkBehindName(std::string_view behind, const std::string& file) {
  Link(SignalName() + std::string(behind), file);
}

void SignalFolder::EmptyBehindName(std::string_view behind) {
  const std::string path = SignalName() + std::string(behind);
  made.push_back(path);
  if (!std::ofstream(path).is_open()) {
    Fail(ExitStatus::Input, "{}: cannot be made: {}", path, SystemText(errno));
  }
}

void SignalFolder::Link(const std::string& link, const std::string& file) {
  made.push_back(link);
  std::error_code error;
  const auto target = std::filesystem::absolute(file, error);
  if (!error) {
    std::filesystem::create_symlink(target, link, error);
  }
  if (error) {
    Fail(ExitStatus::Input, "cannot give {} a temporary name: {}", OneLine(file), error.message());
  }
}

}  // namespace wavechain
