#include "MockConsole/MockConsole.h"

#include "MockConsole/BodyDigest.h"
#include "MockConsole/ConnectionSocket.h"
#include "MockConsole/SelfSignedCertificate.h"

#include <httplib.h>
#include <nlohmann/json.hpp>

#include <algorithm>
#include <atomic>
#include <cctype>
#include <cerrno>
#include <charconv>
#include <condition_variable>
#include <fstream>
#include <functional>
#include <map>
#include <mutex>
#include <stdexcept>
#include <thread>

#include <poll.h>
#include <signal.h>
#include <sys/socket.h>

namespace mockconsole {
namespace {

using Json = nlohmann::json;

std::string toLower(std::string_view text) {
  std::string lower(text);
  std::transform(
      lower.begin(), lower.end(), lower.begin(),
      [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
  return lower;
}

// Text that came from a client need not be UTF-8; the log and the answers
// must still be valid JSON.
std::string dumpJson(const Json &json) {
  return json.dump(-1, ' ', false, Json::error_handler_t::replace);
}

std::string messageBody(std::string_view message) {
  return dumpJson(Json{{"message", message}});
}

std::optional<std::int64_t> parseInteger(std::string_view text) {
  std::int64_t value = 0;
  auto [end, error] =
      std::from_chars(text.data(), text.data() + text.size(), value);
  if (error != std::errc() || end != text.data() + text.size() || text.empty())
    return std::nullopt;
  return value;
}

/// The JSON integer under \p key of \p object.
std::optional<std::int64_t> integerIn(const Json &object, const char *key) {
  auto found = object.find(key);
  if (found == object.end())
    return std::nullopt;
  if (found->is_number_integer())
    return found->get<std::int64_t>();
  return std::nullopt;
}

// Fields that the server library adds to each request for its own use.
bool isLibraryField(const std::string &name) {
  return name == "REMOTE_ADDR" || name == "REMOTE_PORT" ||
         name == "LOCAL_ADDR" || name == "LOCAL_PORT";
}

Answer answerWith(int status, std::string body) {
  Answer answer;
  answer.status = status;
  answer.body = std::move(body);
  return answer;
}

/// The body of a request as it was read: counted, hashed, its start kept.
struct ReceivedBody {
  std::uint64_t length = 0;
  std::string kept;
  std::string sha256;
  /// The connection is to be dropped (scripted), or the client has gone.
  bool dropped = false;
};

/// Takes the pieces of a body as they arrive.
class BodySink {
public:
  BodySink(const Options &options, std::optional<std::uint64_t> dropAfter)
      : keptBytes(options.keptBodyBytes), dropAfter(dropAfter),
        bytesPerSecond(options.bodyBytesPerSecond) {
    if (options.hashBodies)
      digest.emplace();
    body.dropped = dropAfter && *dropAfter == 0;
  }

  /// Takes \p size bytes; false once the connection is to be dropped.
  bool take(const char *data, std::size_t size) {
    if (dropAfter && body.length + size >= *dropAfter) {
      size = static_cast<std::size_t>(*dropAfter - body.length);
      body.dropped = true;
    }
    body.length += size;
    if (digest)
      digest->update(data, size);
    if (body.kept.size() < keptBytes)
      body.kept.append(data, std::min(size, keptBytes - body.kept.size()));
    // A throttled console takes no more than its rate since the first byte.
    if (bytesPerSecond > 0)
      std::this_thread::sleep_until(
          started +
          std::chrono::duration<double>(static_cast<double>(body.length) /
                                        static_cast<double>(bytesPerSecond)));
    return !body.dropped;
  }

  bool isDropped() const { return body.dropped; }
  std::uint64_t getLength() const { return body.length; }
  void markClientGone() { body.dropped = true; }

  ReceivedBody finish() {
    if (digest)
      body.sha256 = digest->finishHex();
    return std::move(body);
  }

private:
  std::size_t keptBytes;
  std::optional<std::uint64_t> dropAfter;
  std::uint64_t bytesPerSecond;
  std::chrono::steady_clock::time_point started =
      std::chrono::steady_clock::now();
  std::optional<BodyDigest> digest;
  ReceivedBody body;
};

/// The declared length of a body that arrives plainly, without chunks or
/// compression: only then may it be read from the socket directly.
std::optional<std::uint64_t> plainLength(const httplib::Request &request) {
  if (request.has_header("Transfer-Encoding") ||
      request.has_header("Content-Encoding") ||
      !request.has_header("Content-Length"))
    return std::nullopt;
  std::string text = request.get_header_value("Content-Length");
  std::uint64_t length = 0;
  auto [end, error] =
      std::from_chars(text.data(), text.data() + text.size(), length);
  if (error != std::errc() || end != text.data() + text.size())
    return std::nullopt;
  return length;
}

// The number of the connection that the server's thread is serving: a
// thread serves one connection at a time, from start to end.
thread_local int servedConnection = 0;

/// The server's thread pool, counting the connections handed to it: the
/// server hands over each connection it accepts as one task.
class CountingQueue final : public httplib::TaskQueue {
public:
  CountingQueue(std::function<int()> countConnection, std::size_t threads)
      : countConnection(std::move(countConnection)), pool(threads) {}
  void enqueue(std::function<void()> serve) override {
    pool.enqueue([serve = std::move(serve), number = countConnection()] {
      servedConnection = number;
      serve();
    });
  }
  void shutdown() override { pool.shutdown(); }
  void on_idle() override { pool.on_idle(); }

private:
  std::function<int()> countConnection;
  httplib::ThreadPool pool;
};

/// At most \p size bytes from \p offset of \p answer's body with its
/// repetition in place.
std::string repeatedPiece(const Answer &answer, std::uint64_t offset,
                          std::size_t size) {
  const Answer::Repetition &repeated = *answer.repeated;
  const std::string &text = repeated.text;
  const std::size_t at = std::min(repeated.at, answer.body.size());
  const std::uint64_t end = repeated.bytes ? at + *repeated.bytes : UINT64_MAX;
  std::string piece;
  while (piece.size() < size) {
    const std::uint64_t position = offset + piece.size();
    std::string_view next;
    if (position < at) {
      next = std::string_view(answer.body).substr(position, at - position);
    } else if (position < end) {
      std::size_t phase = (position - at) % text.size();
      next = std::string_view(text).substr(phase, end - position);
    } else if (std::uint64_t from = at + (position - end);
               from < answer.body.size()) {
      next = std::string_view(answer.body).substr(from);
    } else {
      break;
    }
    piece += next.substr(0, size - piece.size());
  }
  return piece;
}

/// The server for \p options: plain HTTP, or HTTPS with a certificate.
std::unique_ptr<httplib::Server> makeServer(const Options &options) {
  if (options.tlsSelfSigned) {
    TlsIdentity identity = makeSelfSignedIdentity();
    writeCertificate(*identity.certificate, *options.tlsSelfSigned);
    // The server takes its own references to both.
    auto server = std::make_unique<httplib::SSLServer>(
        identity.certificate.get(), identity.key.get());
    if (!server->is_valid())
      throw std::runtime_error("cannot serve HTTPS with a new certificate");
    return server;
  }
  if (options.tlsCertificate || options.tlsKey) {
    if (!options.tlsCertificate || !options.tlsKey)
      throw std::runtime_error("HTTPS needs both a certificate and its key");
    auto server = std::make_unique<httplib::SSLServer>(
        options.tlsCertificate->c_str(), options.tlsKey->c_str());
    if (!server->is_valid())
      throw std::runtime_error("cannot use the certificate " +
                               options.tlsCertificate->string() +
                               " with the key " + options.tlsKey->string());
    return server;
  }
  return std::make_unique<httplib::Server>();
}

} // namespace

std::string_view getRouteName(Route route) {
  switch (route) {
  case Route::GroupSearch:
    return "groups";
  case Route::UploadBlob:
    return "blobs";
  case Route::CreateApplication:
    return "apps";
  case Route::Other:
    return "other";
  }
  return "other";
}

std::optional<Route> findRoute(std::string_view name) {
  for (Route route : {Route::GroupSearch, Route::UploadBlob,
                      Route::CreateApplication, Route::Other})
    if (getRouteName(route) == name)
      return route;
  return std::nullopt;
}

std::optional<std::string>
LoggedRequest::getHeader(std::string_view name) const {
  std::string wanted = toLower(name);
  for (const auto &[fieldName, value] : headers)
    if (toLower(fieldName) == wanted)
      return value;
  return std::nullopt;
}

struct MockConsole::State {
  explicit State(Options options) : options(std::move(options)) {
    if (this->options.logPath)
      logFile.open(*this->options.logPath, std::ios::app);
    nextBlobId = this->options.firstBlobId;
    nextApplicationId = this->options.firstApplicationId;
  }

  const Options options;
  const bool usesTls = options.tlsSelfSigned || options.tlsCertificate;
  std::unique_ptr<httplib::Server> server;
  std::thread listener;
  std::atomic<bool> listenerEnded = false;
  int port = 0;

  mutable std::mutex mutex;
  mutable std::condition_variable changed;
  std::vector<Account> accounts;
  std::map<std::string, std::int64_t> groups;
  std::map<Route, Answer> routeAnswers;
  std::map<std::pair<Route, int>, Answer> callAnswers;
  std::map<Route, int> callCounts;
  std::vector<LoggedRequest> requests;
  std::vector<StoredBlob> blobs;
  std::int64_t nextBlobId = 1;
  std::int64_t nextApplicationId = 1;
  std::uint64_t releaseGeneration = 0;
  std::uint64_t bodyBytesRead = 0;
  int connections = 0;
  bool stopping = false;
  std::ofstream logFile;

  void handle(Route route, const httplib::Request &request,
              httplib::Response &response,
              const httplib::ContentReader *reader);
  std::string getBaseUrl() const;

private:
  std::optional<Answer> takeScriptedAnswer(Route route);
  ReceivedBody readBody(const httplib::Request &request,
                        const httplib::ContentReader *reader,
                        std::optional<std::uint64_t> dropAfter);
  Answer answerAsConsole(Route route, const httplib::Request &request,
                         const ReceivedBody &body);
  std::optional<std::string> checkCredentials(const httplib::Request &request);
  Answer searchGroup(const httplib::Request &request);
  Answer storeBlob(const httplib::Request &request, const ReceivedBody &body);
  Answer createApplication(const httplib::Request &request,
                           const ReceivedBody &body);
  void log(Route route, const httplib::Request &request,
           const ReceivedBody &body, int status);
  void waitBeforeAnswering(const Answer &answer);
  void countBodyBytes(std::uint64_t count);
};

void MockConsole::State::countBodyBytes(std::uint64_t count) {
  std::lock_guard lock(mutex);
  bodyBytesRead += count;
  changed.notify_all();
}

std::optional<Answer> MockConsole::State::takeScriptedAnswer(Route route) {
  std::lock_guard lock(mutex);
  int call = ++callCounts[route];
  if (auto found = callAnswers.find({route, call}); found != callAnswers.end())
    return found->second;
  if (auto found = routeAnswers.find(route); found != routeAnswers.end())
    return found->second;
  return std::nullopt;
}

// The server library reads a body 4 KiB at a time and polls before each
// read, which makes it the bottleneck of a gigabyte upload over loopback. So
// after its first piece, which empties the library's own buffer, the rest of
// a plain body on a plain HTTP connection is read from the socket directly
// in large reads; the library then finds the body consumed and carries on
// with the answer.
ReceivedBody
MockConsole::State::readBody(const httplib::Request &request,
                             const httplib::ContentReader *reader,
                             std::optional<std::uint64_t> dropAfter) {
  BodySink sink(options, dropAfter);
  if (sink.isDropped())
    return sink.finish();
  if (!reader) {
    sink.take(request.body.data(), request.body.size());
    return sink.finish();
  }
  std::optional<std::uint64_t> length = plainLength(request);
  std::optional<int> socket;
  // Over TLS the socket carries ciphertext: the library decrypts.
  if (length && !usesTls)
    socket = findConnectionSocket(request.local_port, request.remote_addr,
                                  request.remote_port);
  auto take = [&](const char *data, std::size_t size) {
    std::uint64_t before = sink.getLength();
    bool more = sink.take(data, size);
    countBodyBytes(sink.getLength() - before);
    return more;
  };
  (*reader)([&](const char *data, std::size_t size) {
    return take(data, size) && !socket;
  });
  if (!socket || sink.isDropped())
    return sink.finish();

  std::vector<char> buffer(1024 * 1024);
  while (sink.getLength() < *length) {
    pollfd readable{*socket, POLLIN, 0};
    int ready = ::poll(&readable, 1, 100);
    if (ready == 0) {
      std::lock_guard lock(mutex);
      if (stopping) {
        sink.markClientGone();
        break;
      }
      continue;
    }
    std::size_t wanted = static_cast<std::size_t>(
        std::min<std::uint64_t>(buffer.size(), *length - sink.getLength()));
    ssize_t n = ready < 0 ? -1 : ::recv(*socket, buffer.data(), wanted, 0);
    if (n < 0 && errno == EINTR)
      continue;
    if (n <= 0) {
      sink.markClientGone();
      break;
    }
    if (!take(buffer.data(), static_cast<std::size_t>(n)))
      break;
  }
  return sink.finish();
}

std::optional<std::string>
MockConsole::State::checkCredentials(const httplib::Request &request) {
  std::string authorization = request.get_header_value("Authorization");
  std::string tenantCode = request.get_header_value("qm-tenant-code");
  std::lock_guard lock(mutex);
  for (const Account &account : accounts) {
    if (authorization !=
        "Basic " + encodeBase64(account.username + ":" + account.password))
      continue;
    if (!request.has_header("qm-tenant-code") || tenantCode != account.apiKey)
      return "The API key (qm-tenant-code) is not valid for this user.";
    return std::nullopt;
  }
  return "User credentials are incorrect.";
}

Answer MockConsole::State::searchGroup(const httplib::Request &request) {
  std::string groupId = request.get_param_value("groupID");
  Json groupList = Json::array();
  {
    std::lock_guard lock(mutex);
    if (auto found = groups.find(groupId);
        request.has_param("groupID") && found != groups.end())
      groupList.push_back(
          {{"Id", found->second}, {"GroupId", groupId}, {"Name", groupId}});
  }
  Json body = {{"OrganizationGroups", groupList},
               {"Page", 0},
               {"PageSize", 500},
               {"Total", groupList.size()}};
  return answerWith(200, dumpJson(body));
}

Answer MockConsole::State::storeBlob(const httplib::Request &request,
                                     const ReceivedBody &body) {
  std::string filename = request.get_param_value("filename");
  std::string moduleType = request.get_param_value("moduleType");
  auto groupNumber =
      parseInteger(request.get_param_value("organizationgroupid"));
  if (filename.empty())
    return answerWith(400, messageBody("The filename is missing."));
  if (moduleType != "Application" && moduleType != "General")
    return answerWith(
        400, messageBody("The moduleType '" + moduleType + "' is not known."));
  if (body.length == 0)
    return answerWith(400, messageBody("The uploaded file is empty."));
  std::lock_guard lock(mutex);
  bool groupKnown =
      groupNumber &&
      std::any_of(groups.begin(), groups.end(), [&](const auto &group) {
        return group.second == *groupNumber;
      });
  if (!groupKnown)
    return answerWith(
        400, messageBody("The organization group '" +
                         request.get_param_value("organizationgroupid") +
                         "' does not exist."));
  StoredBlob blob{nextBlobId++, filename,    *groupNumber,
                  moduleType,   body.length, body.sha256};
  blobs.push_back(blob);
  return answerWith(200, dumpJson(Json{{"Value", blob.id}}));
}

Answer MockConsole::State::createApplication(const httplib::Request &request,
                                             const ReceivedBody &body) {
  auto groupNumber = parseInteger(request.matches[1].str());
  Json application = Json::parse(body.kept, nullptr, false);
  std::lock_guard lock(mutex);
  bool groupKnown =
      groupNumber &&
      std::any_of(groups.begin(), groups.end(), [&](const auto &group) {
        return group.second == *groupNumber;
      });
  if (!groupKnown)
    return answerWith(404, messageBody("The organization group '" +
                                       request.matches[1].str() +
                                       "' does not exist."));
  if (body.length != body.kept.size() || !application.is_object())
    return answerWith(400,
                      messageBody("The request body is not a JSON object."));
  auto blobExists = [&](std::optional<std::int64_t> id) {
    return id &&
           std::any_of(blobs.begin(), blobs.end(),
                       [&](const StoredBlob &blob) { return blob.id == *id; });
  };
  if (!blobExists(integerIn(application, "applicationBlobId")))
    return answerWith(400, messageBody("applicationBlobId names no blob."));
  if (!blobExists(integerIn(application, "pkgInfoBlobId")))
    return answerWith(400, messageBody("pkgInfoBlobId names no blob."));
  if (application.contains("applicationIconId") &&
      !blobExists(integerIn(application, "applicationIconId")))
    return answerWith(400, messageBody("applicationIconId names no blob."));
  std::int64_t id = nextApplicationId++;
  Answer answer = answerWith(201, dumpJson(Json{{"Id", {{"Value", id}}}}));
  answer.headers.emplace_back("Location", getBaseUrl() +
                                              "/api/mam/apps/internal/" +
                                              std::to_string(id));
  return answer;
}

Answer MockConsole::State::answerAsConsole(Route route,
                                           const httplib::Request &request,
                                           const ReceivedBody &body) {
  if (route == Route::Other)
    return answerWith(404, messageBody("There is no such resource: " +
                                       request.method + " " + request.path));
  if (auto denied = checkCredentials(request))
    return answerWith(401, messageBody(*denied));
  switch (route) {
  case Route::GroupSearch:
    return searchGroup(request);
  case Route::UploadBlob:
    return storeBlob(request, body);
  case Route::CreateApplication:
    return createApplication(request, body);
  case Route::Other:
    break;
  }
  return answerWith(500, messageBody("unreachable"));
}

void MockConsole::State::log(Route route, const httplib::Request &request,
                             const ReceivedBody &body, int status) {
  LoggedRequest entry;
  entry.route = route;
  entry.method = request.method;
  entry.target = request.target;
  for (const auto &[name, value] : request.headers)
    if (!isLibraryField(name))
      entry.headers.emplace_back(name, value);
  entry.bodyLength = body.length;
  entry.bodySha256 = body.sha256;
  entry.body = body.kept;
  entry.status = status;
  entry.clientPort = request.remote_port;
  entry.connection = servedConnection;

  std::lock_guard lock(mutex);
  if (logFile.is_open()) {
    Json headers = Json::array();
    for (const auto &[name, value] : entry.headers)
      headers.push_back({name, value});
    logFile << dumpJson(Json{{"route", getRouteName(route)},
                             {"method", entry.method},
                             {"target", entry.target},
                             {"headers", headers},
                             {"bodyLength", entry.bodyLength},
                             {"bodySha256", entry.bodySha256},
                             {"status", status},
                             {"connection", entry.connection}})
            << '\n'
            << std::flush;
  }
  requests.push_back(std::move(entry));
  changed.notify_all();
}

void MockConsole::State::waitBeforeAnswering(const Answer &answer) {
  std::unique_lock lock(mutex);
  if (answer.delay.count() > 0)
    changed.wait_for(lock, answer.delay, [&] { return stopping; });
  if (!answer.holdUntilReleased)
    return;
  std::uint64_t generation = releaseGeneration;
  changed.wait(lock,
               [&] { return stopping || releaseGeneration != generation; });
}

std::string MockConsole::State::getBaseUrl() const {
  std::string host = options.bindAddress;
  if (host.find(':') != std::string::npos)
    host = "[" + host + "]";
  return (usesTls ? "https://" : "http://") + host + ":" + std::to_string(port);
}

void MockConsole::State::handle(Route route, const httplib::Request &request,
                                httplib::Response &response,
                                const httplib::ContentReader *reader) {
  std::optional<Answer> scripted = takeScriptedAnswer(route);
  ReceivedBody body = readBody(
      request, reader, scripted ? scripted->dropAfterBodyBytes : std::nullopt);
  if (body.dropped) {
    // Logged first: the client may look at the log as soon as it sees the
    // connection go.
    log(route, request, body, 0);
    if (auto socket = findConnectionSocket(
            request.local_port, request.remote_addr, request.remote_port))
      dropConnection(*socket);
    return;
  }
  Answer answer = scripted ? *scripted : answerAsConsole(route, request, body);
  log(route, request, body, answer.status);
  waitBeforeAnswering(answer);

  response.status = answer.status;
  std::string contentType = "application/json";
  for (const auto &[name, value] : answer.headers) {
    if (toLower(name) == "content-type")
      contentType = value;
    else
      response.headers.emplace(name, value);
  }
  if (answer.repeated) {
    // Made piece by piece as it goes out, so that no size costs memory.
    auto send = [answer](std::size_t offset, httplib::DataSink &sink) {
      std::string piece = repeatedPiece(answer, offset, 64 * 1024);
      return sink.write(piece.data(), piece.size());
    };
    if (!answer.repeated->bytes) {
      response.set_chunked_content_provider(contentType, send);
      return;
    }
    response.set_content_provider(
        answer.body.size() + *answer.repeated->bytes, contentType,
        [send](std::size_t offset, std::size_t, httplib::DataSink &sink) {
          return send(offset, sink);
        });
    return;
  }
  if (!answer.cutBodyAfter) {
    response.set_content(answer.body, contentType);
    return;
  }
  // The whole length is declared; the provider sends the first bytes and
  // then fails, which makes the library close the connection.
  std::string sent = answer.body.substr(0, *answer.cutBodyAfter);
  response.set_content_provider(
      answer.body.size(), contentType,
      [sent](std::size_t offset, std::size_t, httplib::DataSink &sink) {
        if (offset < sent.size())
          sink.write(sent.data() + offset, sent.size() - offset);
        return false;
      });
}

MockConsole::MockConsole(Options options)
    : state(std::make_shared<State>(std::move(options))) {}

MockConsole::~MockConsole() { stop(); }

void MockConsole::start() {
  if (state->listener.joinable())
    return;
  State &s = *state;
  if (s.options.logPath && !s.logFile.is_open())
    throw std::runtime_error("cannot write the log file " +
                             s.options.logPath->string());
  const Options &options = s.options;
  s.server = makeServer(options);
  s.server->new_task_queue = [&s] {
    return new CountingQueue(
        [&s] {
          std::lock_guard lock(s.mutex);
          return ++s.connections;
        },
        CPPHTTPLIB_THREAD_POOL_COUNT);
  };
  s.server->set_keep_alive_max_count(options.requestsPerConnection);
  auto on = [&s](Route route) {
    return [&s, route](const httplib::Request &request,
                       httplib::Response &response) {
      s.handle(route, request, response, nullptr);
    };
  };
  auto reading = [&s](Route route) {
    return [&s, route](const httplib::Request &request,
                       httplib::Response &response,
                       const httplib::ContentReader &reader) {
      s.handle(route, request, response, &reader);
    };
  };
  s.server->Get("/api/system/groups/search", on(Route::GroupSearch));
  s.server->Post("/api/mam/blobs/uploadblob", reading(Route::UploadBlob));
  s.server->Post(R"(/api/mam/groups/([^/]+)/macos/apps)",
                 reading(Route::CreateApplication));
  s.server->Get(".*", on(Route::Other));
  s.server->Post(".*", reading(Route::Other));
  s.server->Put(".*", reading(Route::Other));
  s.server->Patch(".*", reading(Route::Other));
  s.server->Delete(".*", reading(Route::Other));
  // The library's default also sets SO_REUSEPORT, which would let a second
  // console share a taken port silently.
  s.server->set_socket_options([](socket_t socket) {
    int yes = 1;
    setsockopt(socket, SOL_SOCKET, SO_REUSEADDR, &yes, sizeof yes);
  });
  // Slow clients and large bodies are the point of this server.
  s.server->set_read_timeout(std::chrono::minutes(10));
  s.server->set_write_timeout(std::chrono::minutes(10));

  s.port = options.port == 0
               ? s.server->bind_to_any_port(options.bindAddress)
               : (s.server->bind_to_port(options.bindAddress, options.port)
                      ? options.port
                      : -1);
  if (s.port < 0)
    throw std::runtime_error("cannot listen on " + options.bindAddress + ":" +
                             std::to_string(options.port));
  s.listener = std::thread([&s] {
    // A client that hangs up must not end the process: writes to it fail
    // instead. The server's worker threads inherit this mask.
    sigset_t pipe;
    sigemptyset(&pipe);
    sigaddset(&pipe, SIGPIPE);
    pthread_sigmask(SIG_BLOCK, &pipe, nullptr);
    s.server->listen_after_bind();
    s.listenerEnded = true;
  });
  // A stop before the accept loop runs would go unnoticed by the library
  // and leave the loop running for ever.
  while (!s.server->is_running() && !s.listenerEnded)
    std::this_thread::sleep_for(std::chrono::milliseconds(1));
}

void MockConsole::stop() {
  {
    std::lock_guard lock(state->mutex);
    state->stopping = true;
    state->changed.notify_all();
  }
  if (!state->listener.joinable())
    return;
  state->server->stop();
  state->listener.join();
}

int MockConsole::getPort() const { return state->port; }

std::string MockConsole::getBaseUrl() const { return state->getBaseUrl(); }

void MockConsole::addAccount(Account account) {
  std::lock_guard lock(state->mutex);
  state->accounts.push_back(std::move(account));
}

void MockConsole::mapGroup(std::string groupId, std::int64_t number) {
  std::lock_guard lock(state->mutex);
  state->groups[std::move(groupId)] = number;
}

void MockConsole::scriptAnswer(Route route, Answer answer) {
  std::lock_guard lock(state->mutex);
  state->routeAnswers[route] = std::move(answer);
}

void MockConsole::scriptAnswer(Route route, int call, Answer answer) {
  std::lock_guard lock(state->mutex);
  state->callAnswers[{route, call}] = std::move(answer);
}

void MockConsole::clearScriptedAnswers() {
  std::lock_guard lock(state->mutex);
  state->routeAnswers.clear();
  state->callAnswers.clear();
}

void MockConsole::releaseHeldAnswers() {
  std::lock_guard lock(state->mutex);
  ++state->releaseGeneration;
  state->changed.notify_all();
}

std::vector<LoggedRequest> MockConsole::getRequests() const {
  std::lock_guard lock(state->mutex);
  return state->requests;
}

bool MockConsole::waitForRequests(std::size_t count,
                                  std::chrono::milliseconds timeout) const {
  std::unique_lock lock(state->mutex);
  return state->changed.wait_for(
      lock, timeout, [&] { return state->requests.size() >= count; });
}

bool MockConsole::waitForBodyBytes(std::uint64_t count,
                                   std::chrono::milliseconds timeout) const {
  std::unique_lock lock(state->mutex);
  return state->changed.wait_for(lock, timeout,
                                 [&] { return state->bodyBytesRead >= count; });
}

std::vector<StoredBlob> MockConsole::getBlobs() const {
  std::lock_guard lock(state->mutex);
  return state->blobs;
}

int MockConsole::getConnectionCount() const {
  std::lock_guard lock(state->mutex);
  return state->connections;
}

} // namespace mockconsole
