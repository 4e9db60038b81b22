#ifndef WAVEFILTERS_HOST_WORKERS_H
#define WAVEFILTERS_HOST_WORKERS_H

#include <sys/types.h>

#include <cstddef>
#include <functional>
#include <string>
#include <vector>

#include "host/file.h"
#include "host/unfinished.h"

namespace wavechain {

/// Pieces of work, each done in a process of its own, a copy of this one, which hands back a text.
/// None outlives this process, however that ends.
class Workers final : private Unfinished {
 public:
  /// What one of them came to.
  struct Answer {
    std::size_t number = 0;
    std::string text = {};  // not all of it where the process did not come so far
    std::string end = {};   // how it ended: "its process was ended by signal 9 (Killed)"
  };

  Workers() = default;
  /// Stops those that are left, and waits for them.
  ~Workers();
  Workers(const Workers&) = delete;
  Workers& operator=(const Workers&) = delete;

  /// Begins a piece of work, which is known by its number. Fails (input) where the system lends no
  /// process.
  void Start(std::size_t number, const std::function<std::string()>& work);
  std::size_t Count() const { return running.size(); }
  /// Waits until one has ended, but no longer than so many milliseconds; which ones have.
  std::vector<Answer> Wait(int milliseconds);
  /// Asks all of them to come to an end.
  void Stop() const;

 private:
  struct Worker {
    std::size_t number = 0;
    pid_t process = -1;
    File pipe;
    std::string text;
  };

  void Abandon() noexcept override;
  static int Reap(Worker& worker) noexcept;

  std::vector<Worker> running;
};

}  // namespace wavechain

#endif
