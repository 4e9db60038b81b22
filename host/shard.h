#ifndef WAVEFILTERS_HOST_SHARD_H
#define WAVEFILTERS_HOST_SHARD_H

#include <string>
#include <string_view>

namespace wavechain {

/// One of several parts into which names fall by a hash of theirs, the same on every machine.
struct Shard {
  unsigned number = 1;  // from 1
  unsigned count = 1;

  /// Whether the name falls into this part. By the 64-bit FNV-1a hash of its bytes, its upper half
  /// folded onto its lower one by exclusive or, modulo `count`.
  bool Holds(std::string_view name) const;
};

/// Understands I/N. Fails (usage) on anything else, and where I is not 1 to N.
Shard ParseShard(const std::string& text);

}  // namespace wavechain

#endif
