#include "host/sha256.h"

#include <fcntl.h>
#include <fmt/format.h>
#include <openssl/err.h>
#include <openssl/evp.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <memory>
#include <new>
#include <vector>

#include "host/file.h"
#include "host/interrupt.h"

namespace wavechain {
namespace {

// Nothing but want of memory keeps OpenSSL from a digest that it knows. A record without one would
// be another record.
void Require(bool done) {
  if (!done) {
    ::ERR_clear_error();  // OpenSSL queues what went wrong, with texts, until somebody asks
    throw std::bad_alloc();
  }
}

}  // namespace

std::optional<std::string> Sha256(int descriptor) {
  const std::unique_ptr<EVP_MD_CTX, decltype(&::EVP_MD_CTX_free)> state(::EVP_MD_CTX_new(),
                                                                        &::EVP_MD_CTX_free);
  Require(state != nullptr && ::EVP_DigestInit_ex(state.get(), ::EVP_sha256(), nullptr) == 1);
  std::vector<char> block(1 << 18);
  off_t at = 0;
  for (;;) {
    StopIfInterrupted();
    const ssize_t came = ::pread(descriptor, block.data(), block.size(), at);
    if (came == 0) {
      break;
    }
    if (came < 0 && errno == EINTR) {
      continue;
    }
    if (came < 0) {
      return std::nullopt;
    }
    Require(::EVP_DigestUpdate(state.get(), block.data(), static_cast<std::size_t>(came)) == 1);
    at += came;
  }
  std::array<unsigned char, EVP_MAX_MD_SIZE> digest = {};
  unsigned size = 0;
  Require(::EVP_DigestFinal_ex(state.get(), digest.data(), &size) == 1);
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
