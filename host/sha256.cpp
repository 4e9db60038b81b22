#include "host/sha256.h"

#include <fcntl.h>
#include <fmt/format.h>
#include <openssl/evp.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <memory>
#include <vector>

#include "host/file.h"
#include "host/interrupt.h"

namespace wavechain {

std::optional<std::string> Sha256(int descriptor) {
  const std::unique_ptr<EVP_MD_CTX, decltype(&::EVP_MD_CTX_free)> state(::EVP_MD_CTX_new(),
                                                                        &::EVP_MD_CTX_free);
  bool good = ::EVP_DigestInit_ex(state.get(), ::EVP_sha256(), nullptr) == 1;
  std::vector<char> block(1 << 18);
  off_t at = 0;
  while (good) {
    StopIfInterrupted();
    const ssize_t came = ::pread(descriptor, block.data(), block.size(), at);
    if (came == 0) {
      break;
    }
    if (came < 0 && errno == EINTR) {
      continue;
    }
    good = came > 0 &&
           ::EVP_DigestUpdate(state.get(), block.data(), static_cast<std::size_t>(came)) == 1;
    at += came;
  }
  std::array<unsigned char, EVP_MAX_MD_SIZE> digest = {};
  unsigned size = 0;
  if (!good || ::EVP_DigestFinal_ex(state.get(), digest.data(), &size) != 1) {
    return std::nullopt;
  }
  std::string text;
  for (unsigned i = 0; i < size; ++i) {
    text += fmt::format("{:02x}", digest[i]);
  }
  return text;
}

std::optional<std::string> Sha256(const std::string& path) {
  const File file(::open(path.c_str(), O_RDONLY | O_CLOEXEC));
  return file.IsOpen() ? Sha256(file.Descriptor()) : std::nullopt;
}

}  // namespace wavechain
