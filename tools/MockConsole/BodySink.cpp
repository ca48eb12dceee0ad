#include "MockConsole/BodySink.h"

#include <algorithm>
#include <thread>

namespace mockconsole {

BodySink::BodySink(const BodyReading &reading) : reading(reading) {
  if (reading.hashed)
    digest.emplace();
  body.dropped = reading.dropAfter && *reading.dropAfter == 0;
}

bool BodySink::take(const char *data, std::size_t size) {
  if (reading.dropAfter && body.length + size >= *reading.dropAfter) {
    size = static_cast<std::size_t>(*reading.dropAfter - body.length);
    body.dropped = true;
  }
  body.length += size;
  if (digest)
    digest->update(data, size);
  if (body.kept.size() < reading.keptBytes)
    body.kept.append(data,
                     std::min(size, reading.keptBytes - body.kept.size()));
  // A throttled console takes no more than its rate since the first byte.
  if (reading.bytesPerSecond > 0)
    std::this_thread::sleep_until(
        started + std::chrono::duration<double>(
                      static_cast<double>(body.length) /
                      static_cast<double>(reading.bytesPerSecond)));
  return !body.dropped;
}

ReceivedBody BodySink::finish() {
  if (digest)
    body.sha256 = digest->finishHex();
  return std::move(body);
}

} // namespace mockconsole
