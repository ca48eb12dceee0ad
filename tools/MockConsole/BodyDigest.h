#ifndef KESTRUNECLI_TOOLS_MOCKCONSOLE_BODYDIGEST_H
#define KESTRUNECLI_TOOLS_MOCKCONSOLE_BODYDIGEST_H

#include <cstddef>
#include <memory>
#include <string>

namespace mockconsole {

/// SHA-256 over bytes that arrive in pieces.
class BodyDigest {
public:
  BodyDigest();
  ~BodyDigest();
  BodyDigest(const BodyDigest &) = delete;
  BodyDigest &operator=(const BodyDigest &) = delete;

  void update(const char *data, std::size_t size);
  /// The digest of everything so far, in lower-case hex. Ends the digest.
  std::string finishHex();

private:
  struct Context;
  std::unique_ptr<Context> context;
};

} // namespace mockconsole

#endif
