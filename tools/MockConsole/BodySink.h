#ifndef KESTRUNECLI_TOOLS_MOCKCONSOLE_BODYSINK_H
#define KESTRUNECLI_TOOLS_MOCKCONSOLE_BODYSINK_H

#include "MockConsole/BodyDigest.h"

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>

namespace mockconsole {

/// The body of a request as it was read: counted, hashed, its start kept.
struct ReceivedBody {
  std::uint64_t length = 0;
  std::string kept;
  std::string sha256;
  /// The connection is to be dropped (scripted), or the client has gone.
  bool dropped = false;
};

/// How a body is taken in.
struct BodyReading {
  /// How many bytes of it are kept.
  std::size_t keptBytes = 0;
  bool hashed = true;
  /// No faster than this; 0 for as fast as it comes.
  std::uint64_t bytesPerSecond = 0;
  /// The connection is to be dropped once this many bytes are in.
  std::optional<std::uint64_t> dropAfter{};
};

/// Takes the pieces of a body as they arrive, holding no more of it than
/// the start it keeps.
class BodySink {
public:
  explicit BodySink(const BodyReading &reading);

  /// Takes \p size bytes; false once the connection is to be dropped.
  bool take(const char *data, std::size_t size);

  bool isDropped() const { return body.dropped; }
  std::uint64_t getLength() const { return body.length; }
  void markClientGone() { body.dropped = true; }

  /// The body so far; ends the sink.
  ReceivedBody finish();

private:
  BodyReading reading;
  std::chrono::steady_clock::time_point started =
      std::chrono::steady_clock::now();
  std::optional<BodyDigest> digest;
  ReceivedBody body;
};

} // namespace mockconsole

#endif
