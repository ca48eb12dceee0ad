#include "MockConsole/MockConsole.h"

#include "MockConsole/AnswerScript.h"
#include "MockConsole/BodySink.h"
#include "MockConsole/ConnectionSocket.h"
#include "MockConsole/DirectBodyRead.h"
#include "MockConsole/SelfSignedCertificate.h"

#include "Platform/AsciiText.h"

#include <httplib.h>

#include <atomic>
#include <functional>
#include <stdexcept>
#include <thread>

#include <signal.h>
#include <sys/socket.h>

namespace mockconsole {
namespace {

// Fields that the server library adds to each request for its own use.
bool isLibraryField(const std::string &name) {
  return name == "REMOTE_ADDR" || name == "REMOTE_PORT" ||
         name == "LOCAL_ADDR" || name == "LOCAL_PORT";
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

/// \p request with its body as read, for the console's rules.
ConsoleRequest toConsoleRequest(const httplib::Request &request,
                                ReceivedBody body) {
  ConsoleRequest received;
  received.method = request.method;
  received.path = request.path;
  for (const auto &[name, value] : request.headers)
    if (!isLibraryField(name))
      received.headers.emplace_back(name, value);
  received.parameters.assign(request.params.begin(), request.params.end());
  received.bodyLength = body.length;
  received.body = std::move(body.kept);
  received.bodySha256 = std::move(body.sha256);
  return received;
}

/// Writes \p answer into \p response, with the faults it asks for.
void sendAnswer(const Answer &answer, httplib::Response &response) {
  response.status = answer.status;
  std::string contentType = "application/json";
  for (const auto &[name, value] : answer.headers) {
    if (platform::equalsIgnoringCase(name, "content-type"))
      contentType = value;
    else
      response.headers.emplace(name, value);
  }
  if (answer.repeated) {
    // Made piece by piece as it goes out, so that no size costs memory.
    auto send = [answer](std::size_t offset, httplib::DataSink &sink) {
      std::string piece = getRepeatedPiece(answer, offset, 64 * 1024);
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

} // namespace

struct MockConsole::State {
  explicit State(Options options)
      : options(std::move(options)),
        rules(this->options.firstBlobId, this->options.firstApplicationId),
        log(this->options.logPath) {}

  const Options options;
  const bool usesTls = options.tlsSelfSigned || options.tlsCertificate;
  ConsoleRules rules;
  AnswerScript script;
  RequestLog log;
  std::unique_ptr<httplib::Server> server;
  std::thread listener;
  std::atomic<bool> listenerEnded = false;
  std::atomic<bool> stopping = false;
  std::atomic<int> connections = 0;
  int port = 0;

  void handle(Route route, const httplib::Request &request,
              httplib::Response &response,
              const httplib::ContentReader *reader);
  std::string getBaseUrl() const;

private:
  ReceivedBody readBody(const httplib::Request &request,
                        const httplib::ContentReader *reader,
                        std::optional<std::uint64_t> dropAfter);
  void logRequest(Route route, const httplib::Request &request,
                  const ConsoleRequest &received, int status);
};

ReceivedBody
MockConsole::State::readBody(const httplib::Request &request,
                             const httplib::ContentReader *reader,
                             std::optional<std::uint64_t> dropAfter) {
  BodySink sink({options.keptBodyBytes, options.hashBodies,
                 options.bodyBytesPerSecond, dropAfter});
  if (sink.isDropped())
    return sink.finish();
  if (!reader) {
    sink.take(request.body.data(), request.body.size());
    return sink.finish();
  }
  auto take = [&](const char *data, std::size_t size) {
    std::uint64_t before = sink.getLength();
    bool more = sink.take(data, size);
    log.countBodyBytes(sink.getLength() - before);
    return more;
  };
  // After the library's first piece, which empties its own buffer, the rest
  // of a large plain body may be read past it (DirectBodyRead.h). Over TLS
  // the socket carries ciphertext: the library decrypts.
  std::optional<DirectBody> direct;
  if (!usesTls)
    direct = findDirectBody(request);
  (*reader)([&](const char *data, std::size_t size) {
    return take(data, size) && !direct;
  });
  if (!direct || sink.isDropped())
    return sink.finish();
  readDirectBody(*direct, sink, take, [this] { return stopping.load(); });
  return sink.finish();
}

void MockConsole::State::logRequest(Route route,
                                    const httplib::Request &request,
                                    const ConsoleRequest &received,
                                    int status) {
  LoggedRequest entry;
  entry.route = route;
  entry.method = received.method;
  entry.target = request.target;
  entry.headers = received.headers;
  entry.bodyLength = received.bodyLength;
  entry.bodySha256 = received.bodySha256;
  entry.body = received.body;
  entry.status = status;
  entry.clientPort = request.remote_port;
  entry.connection = servedConnection;
  log.add(std::move(entry));
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
  std::optional<Answer> scripted = script.takeAnswer(route);
  ReceivedBody body = readBody(
      request, reader, scripted ? scripted->dropAfterBodyBytes : std::nullopt);
  bool dropped = body.dropped;
  ConsoleRequest received = toConsoleRequest(request, std::move(body));
  if (dropped) {
    // Logged first: the client may look at the log as soon as it sees the
    // connection go.
    logRequest(route, request, received, 0);
    if (auto socket = findConnectionSocket(
            request.local_port, request.remote_addr, request.remote_port))
      dropConnection(*socket);
    return;
  }
  Answer answer =
      scripted ? *scripted : rules.answer(route, received, getBaseUrl());
  logRequest(route, request, received, answer.status);
  script.waitBeforeAnswering(answer);
  sendAnswer(answer, response);
}

MockConsole::MockConsole(Options options)
    : state(std::make_shared<State>(std::move(options))) {}

MockConsole::~MockConsole() { stop(); }

void MockConsole::start() {
  if (state->listener.joinable())
    return;
  State &s = *state;
  s.log.checkWritable();
  const Options &options = s.options;
  s.server = makeServer(options);
  s.server->new_task_queue = [&s] {
    return new CountingQueue([&s] { return ++s.connections; },
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
  state->stopping = true;
  state->script.stop();
  if (!state->listener.joinable())
    return;
  state->server->stop();
  state->listener.join();
}

int MockConsole::getPort() const { return state->port; }

std::string MockConsole::getBaseUrl() const { return state->getBaseUrl(); }

void MockConsole::addAccount(Account account) {
  state->rules.addAccount(std::move(account));
}

void MockConsole::mapGroup(std::string groupId, std::int64_t number) {
  state->rules.mapGroup(std::move(groupId), number);
}

void MockConsole::scriptAnswer(Route route, Answer answer) {
  state->script.setAnswer(route, std::move(answer));
}

void MockConsole::scriptAnswer(Route route, int call, Answer answer) {
  state->script.setAnswer(route, call, std::move(answer));
}

void MockConsole::clearScriptedAnswers() { state->script.clear(); }

void MockConsole::releaseHeldAnswers() { state->script.releaseHeldAnswers(); }

std::vector<LoggedRequest> MockConsole::getRequests() const {
  return state->log.getRequests();
}

bool MockConsole::waitForRequests(std::size_t count,
                                  std::chrono::milliseconds timeout) const {
  return state->log.waitForRequests(count, timeout);
}

bool MockConsole::waitForBodyBytes(std::uint64_t count,
                                   std::chrono::milliseconds timeout) const {
  return state->log.waitForBodyBytes(count, timeout);
}

std::vector<StoredBlob> MockConsole::getBlobs() const {
  return state->rules.getBlobs();
}

int MockConsole::getConnectionCount() const { return state->connections; }

} // namespace mockconsole
