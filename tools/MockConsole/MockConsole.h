#ifndef KESTRUNECLI_TOOLS_MOCKCONSOLE_MOCKCONSOLE_H
#define KESTRUNECLI_TOOLS_MOCKCONSOLE_MOCKCONSOLE_H

#include <chrono>
#include <cstdint>
#include <filesystem>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace mockconsole {

/// The console's routes, and everything else.
enum class Route {
  /// GET /api/system/groups/search?groupID={groupId}
  GroupSearch,
  /// POST
  /// /api/mam/blobs/uploadblob?filename=..&organizationgroupid=..&moduleType=..
  UploadBlob,
  /// POST /api/mam/groups/{number}/macos/apps
  CreateApplication,
  /// Any other method or path: 404 with a JSON message.
  Other,
};

/// "groups", "blobs", "apps" or "other": the route's name in the request log
/// and on the command line.
std::string_view getRouteName(Route route);
/// The route named \p name; absent for an unknown name.
std::optional<Route> findRoute(std::string_view name);

/// Header fields in the order given (or, for a request, as received).
using Headers = std::vector<std::pair<std::string, std::string>>;

/// A user of the console: requests must carry "Basic " and the Base64 of
/// "username:password" in Authorization, and apiKey in qm-tenant-code.
struct Account {
  std::string username;
  std::string password;
  std::string apiKey;
};

/// An answer that replaces the console's own for a route: used to provoke
/// every kind of answer a client must cope with.
struct Answer {
  int status = 200;
  std::string body{};
  /// Header fields of the answer. Content-Type is "application/json"
  /// unless given here.
  Headers headers{};
  /// Waits this long after reading the request before answering.
  std::chrono::milliseconds delay{0};
  /// Answers only once releaseHeldAnswers() is called or the console stops.
  bool holdUntilReleased = false;
  /// Closes the connection instead of answering, as soon as this many bytes
  /// of the request body are in (0: before reading any).
  std::optional<std::uint64_t> dropAfterBodyBytes{};
  /// Declares the whole body's length but closes the connection after
  /// sending this many bytes of it.
  std::optional<std::size_t> cutBodyAfter{};
  /// Text sent over and over inside the body: a body too large to hold.
  struct Repetition {
    /// Not empty.
    std::string text;
    /// Where in the body it goes.
    std::size_t at = 0;
    /// How many bytes of it in all; absent: without end, in chunks, until
    /// the client hangs up.
    std::optional<std::uint64_t> bytes{};
  };
  std::optional<Repetition> repeated{};
};

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

/// A blob the console stored.
struct StoredBlob {
  std::int64_t id = 0;
  std::string filename;
  std::int64_t organizationGroupId = 0;
  std::string moduleType;
  std::uint64_t length = 0;
  /// Empty when hashing is off.
  std::string sha256;
};

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
