#ifndef KESTRUNECLI_TOOLS_MOCKCONSOLE_MOCKCONSOLE_H
#define KESTRUNECLI_TOOLS_MOCKCONSOLE_MOCKCONSOLE_H

#include "MockConsole/Answer.h"
#include "MockConsole/ConsoleRules.h"
#include "MockConsole/RequestLog.h"
#include "MockConsole/Route.h"

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace mockconsole {

struct Options {
  /// Address to listen on.
  std::string bindAddress = "127.0.0.1";
  /// Port to listen on; 0 picks a free one.
  int port = 0;
  /// Whether bodies are hashed; off, they are only counted (benchmarks).
  bool hashBodies = true;
  /// Reads request bodies no faster than this; 0 for as fast as they come.
  std::uint64_t bodyBytesPerSecond = 0;
  /// How many bytes of each body the log keeps.
  std::size_t keptBodyBytes = 64 * 1024;
  std::int64_t firstBlobId = 1;
  std::int64_t firstApplicationId = 1;
  /// When set, one JSON line per request is appended to this file.
  std::optional<std::filesystem::path> logPath{};
  /// How many requests a connection carries before the console closes it
  /// after its answer; 1 closes every connection after one answer.
  std::size_t requestsPerConnection = 1000;
  /// HTTPS with this certificate and private key (PEM files).
  std::optional<std::filesystem::path> tlsCertificate{}, tlsKey{};
  /// HTTPS with a certificate made at start for 127.0.0.1, ::1 and
  /// localhost, written to this file (PEM) for clients to trust. Wins over
  /// tlsCertificate.
  std::optional<std::filesystem::path> tlsSelfSigned{};
};

/// A device-management console on a loopback port, over HTTP or HTTPS: a
/// stand-in for the real one in tests and demonstrations. It checks
/// credentials, knows groups by their ID, stores blobs (reading bodies of
/// any size without holding them) and creates applications, logs every
/// request with the connection it came on, and can be told to answer any
/// call differently. All members may be called from any thread.
///
/// This class is the transport: the server, its connections and the bodies
/// it reads. What the console answers is ConsoleRules; the answers scripted
/// in its place are an AnswerScript; what it received is a RequestLog.
class MockConsole {
public:
  explicit MockConsole(Options options = {});
  /// Stops the console.
  ~MockConsole();
  MockConsole(const MockConsole &) = delete;
  MockConsole &operator=(const MockConsole &) = delete;

  /// Starts listening; returns once requests are accepted. A console
  /// starts once. Throws std::runtime_error when the address can't be bound
  /// or the log file can't be written.
  void start();
  /// Releases held answers and stops; waits for requests in progress.
  void stop();

  /// The port listened on (valid after start()).
  int getPort() const;
  /// "http://{bindAddress}:{port}" ("https" with TLS), without a trailing
  /// slash.
  std::string getBaseUrl() const;

  void addAccount(Account account);
  /// Makes \p groupId known, with \p number as its numeric identifier.
  void mapGroup(std::string groupId, std::int64_t number);

  /// Answers every later call of \p route with \p answer.
  void scriptAnswer(Route route, Answer answer);
  /// Answers the \p call-th call of \p route (counted from 1 since start,
  /// scripted calls included) with \p answer; this wins over the above.
  void scriptAnswer(Route route, int call, Answer answer);
  /// Forgets every scripted answer.
  void clearScriptedAnswers();
  /// Lets every answer held so far go out.
  void releaseHeldAnswers();

  /// Every request so far, in the order their bodies were complete.
  std::vector<LoggedRequest> getRequests() const;
  /// Waits until at least \p count requests are logged; false on time-out.
  bool waitForRequests(std::size_t count,
                       std::chrono::milliseconds timeout) const;
  /// Waits until the request bodies read so far, those still coming in
  /// included, add up to at least \p count bytes; false on time-out.
  bool waitForBodyBytes(std::uint64_t count,
                        std::chrono::milliseconds timeout) const;
  /// Every blob stored so far.
  std::vector<StoredBlob> getBlobs() const;
  /// How many connections the console has accepted, those that never
  /// carried a request (a TLS handshake the client gave up) included.
  int getConnectionCount() const;

  struct State;

private:
  std::shared_ptr<State> state;
};

} // namespace mockconsole

#endif
