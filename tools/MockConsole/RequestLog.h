#ifndef KESTRUNECLI_TOOLS_MOCKCONSOLE_REQUESTLOG_H
#define KESTRUNECLI_TOOLS_MOCKCONSOLE_REQUESTLOG_H

#include "MockConsole/Answer.h"
#include "MockConsole/Route.h"

#include <chrono>
#include <condition_variable>
#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <fstream>
#include <mutex>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace mockconsole {

/// One request as the console received it.
struct LoggedRequest {
  Route route = Route::Other;
  std::string method;
  /// The request target exactly as sent: path and query, still escaped.
  std::string target;
  /// The header fields as received, sorted by name; the server library
  /// leaves out fields with an empty value.
  Headers headers;
  /// Bytes of body received.
  std::uint64_t bodyLength = 0;
  /// SHA-256 of those bytes in lower-case hex; empty when hashing is off.
  std::string bodySha256;
  /// The first bytes of the body, up to Options::keptBodyBytes.
  std::string body;
  /// The status answered; 0 when the connection was dropped instead.
  int status = 0;
  /// The client's port: requests on different connections differ here.
  int clientPort = 0;
  /// The connection it came on, numbered from 1 in the order the console
  /// accepted them.
  int connection = 0;

  /// The value of the field \p name, whose case doesn't matter.
  [[nodiscard]] std::optional<std::string>
  getHeader(std::string_view name) const;
};

/// Every request the console received, in memory and, when asked, as one
/// JSON line per request in a file; and the count of body bytes read so
/// far. All members may be called from any thread.
class RequestLog {
public:
  /// Appends to the file \p path when given.
  explicit RequestLog(std::optional<std::filesystem::path> path);

  /// Throws std::runtime_error when the file can't be written.
  void checkWritable() const;

  void add(LoggedRequest request);
  /// Counts \p count more bytes of request bodies read.
  void countBodyBytes(std::uint64_t count);

  std::vector<LoggedRequest> getRequests() const;
  /// Waits until at least \p count requests are logged; false on time-out.
  bool waitForRequests(std::size_t count,
                       std::chrono::milliseconds timeout) const;
  /// Waits until at least \p count body bytes are counted; false on
  /// time-out.
  bool waitForBodyBytes(std::uint64_t count,
                        std::chrono::milliseconds timeout) const;

private:
  const std::optional<std::filesystem::path> path;
  mutable std::mutex mutex;
  mutable std::condition_variable changed;
  std::ofstream file;
  std::vector<LoggedRequest> requests;
  std::uint64_t bodyBytesRead = 0;
};

} // namespace mockconsole

#endif
