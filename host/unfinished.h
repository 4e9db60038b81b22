#ifndef WAVEFILTERS_HOST_UNFINISHED_H
#define WAVEFILTERS_HOST_UNFINISHED_H

#include <sys/types.h>

#include <string>

namespace wavechain {

/// Something of this process that its destructor brings to an end. Where the program ends without
/// unwinding, for want of memory, AbandonAll() does so; copies in other processes leave it alone.
class Unfinished {
 public:
  /// Brings to an end all that there are in this process, the youngest first. Asks for no memory.
  static void AbandonAll() noexcept;
  Unfinished(const Unfinished&) = delete;
  Unfinished& operator=(const Unfinished&) = delete;

 protected:
  Unfinished();
  ~Unfinished();

 private:
  /// Must not ask for memory.
  virtual void Abandon() noexcept = 0;

  Unfinished* older;
  pid_t owner;
};

/// The name of a temporary file or folder, which goes with all that lies in it. The text must
/// outlive this object; while it is empty there is none.
class TemporaryPath final : public Unfinished {
 public:
  explicit TemporaryPath(const std::string& text) : path(text) {}

 private:
  void Abandon() noexcept override;

  const std::string& path;
};

/// Removes a file, or a folder with all that lies in it; not there, or not to be removed, is no
/// error. Asks for no memory.
void RemoveWithContents(const std::string& path) noexcept;

}  // namespace wavechain

#endif
