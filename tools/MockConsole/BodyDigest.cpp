#include "MockConsole/BodyDigest.h"

#include <openssl/evp.h>

#include <stdexcept>

namespace mockconsole {

struct BodyDigest::Context {
  EVP_MD_CTX *md = nullptr;
};

BodyDigest::BodyDigest() : context(std::make_unique<Context>()) {
  context->md = EVP_MD_CTX_new();
  if (!context->md ||
      EVP_DigestInit_ex(context->md, EVP_sha256(), nullptr) != 1)
    throw std::runtime_error("cannot start a SHA-256 digest");
}

BodyDigest::~BodyDigest() { EVP_MD_CTX_free(context->md); }

void BodyDigest::update(const char *data, std::size_t size) {
  EVP_DigestUpdate(context->md, data, size);
}

std::string BodyDigest::finishHex() {
  unsigned char digest[EVP_MAX_MD_SIZE];
  unsigned int length = 0;
  EVP_DigestFinal_ex(context->md, digest, &length);
  constexpr char digits[] = "0123456789abcdef";
  std::string hex;
  for (unsigned int i = 0; i < length; ++i) {
    hex.push_back(digits[digest[i] >> 4]);
    hex.push_back(digits[digest[i] & 0xF]);
  }
  return hex;
}

} // namespace mockconsole
