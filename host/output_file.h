#ifndef WAVEFILTERS_HOST_OUTPUT_FILE_H
#define WAVEFILTERS_HOST_OUTPUT_FILE_H

#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "host/file.h"

namespace wavechain {

/// Where a result goes. It appears whole, at Commit, or not at all: an OutputFile that ends
/// without having been committed takes what was written away with it.
class OutputFile {
 public:
  virtual ~OutputFile() = default;
  /// The file to write; it can be read and sought in.
  virtual int Descriptor() const = 0;
  /// Brings everything but its name to an end: what can still fail in Commit is to name it. Writes
  /// nothing more. Fails (output) as Commit does; Commit begins with it.
  virtual void Settle() {}
  /// Makes the result appear. Fails (output) where that is not wholly possible.
  virtual void Commit() = 0;
  /// Removes the file that Commit made appear, unless another has taken its place since.
  virtual void Withdraw() {}
  /// Removes a file where there is one; a link stays and what it leads to goes.
  static void Remove(const std::string& path);
  /// The target, for messages.
  const std::string& Name() const { return name; }

 protected:
  explicit OutputFile(std::string targetName) : name(std::move(targetName)) {}

 private:
  std::string name;
};

/// The target as messages name it ("-" is standard output).
std::string TargetName(const std::string& path);

/// What must hold before any work is done: the target ("-" is standard output) is not the
/// input, does not exist unless it is to be replaced, and is a regular file if it does. Fails
/// (output) where it does not hold.
void CheckTarget(const std::string& path, bool replace, const std::optional<FileIdentity>& input);

/// The same for the other files that are read, of which none may be replaced either; "-" and what
/// is not there are none.
void RequireNotRead(const std::string& path, const std::vector<std::string>& files);

/// Opens a result for writing: under a temporary name beside its target, or without a name
/// where the target is standard output. Fails (output) where that is not possible.
std::unique_ptr<OutputFile> OpenOutput(const std::string& path, bool replace);

}  // namespace wavechain

#endif
