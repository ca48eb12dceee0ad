#ifndef KESTRUNECLI_PLATFORM_HTTPSESSION_H
#define KESTRUNECLI_PLATFORM_HTTPSESSION_H

#include "Platform/HttpMessage.h"

#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <thread>
#include <vector>

namespace platform {

/// What every request of a session carries.
struct HttpSessionConfiguration {
  /// The header fields added to every request. They are the only fields
  /// besides those HTTP itself needs (Host, and Content-Length on a request
  /// with a body): no Accept, Content-Type, Expect, User-Agent or
  /// Accept-Encoding of the client's own.
  HttpHeaders additionalHeaders;
};

/// Called once when a request has ended. On an answer: the body (possibly
/// empty), the response and no error. On a failure: no data and the error,
/// with the response when its status line and header fields had come in
/// before the failure (a server that declared a body and hung up early). It
/// runs on the task's own thread and must not throw.
using DataTaskCompletion = std::function<void(
    std::optional<std::string> data, std::optional<HttpResponse> response,
    std::optional<HttpError> error)>;

/// One request on its way. It does nothing until resume(); the object waits
/// for its thread when it goes away, so the completion has run by then.
class HttpTask {
public:
  HttpTask(HttpTask &&) noexcept = default;
  HttpTask &operator=(HttpTask &&) = delete;
  ~HttpTask();

  /// Starts the transfer on a thread of its own; later calls do nothing.
  void resume();

private:
  friend class HttpSession;
  /// What the thread runs; defined in HttpSession.cpp.
  struct Transfer;
  explicit HttpTask(std::shared_ptr<Transfer> transfer);
  std::shared_ptr<Transfer> transfer;
  std::thread thread;
};

/// An HTTP client over libcurl. Each request follows redirects (at most 20)
/// that lead to its own scheme, host and port (the default port filled in)
/// and no others: the answer of a redirect elsewhere is the final answer,
/// so the header fields, credentials included, go to no other server. It
/// speaks TLS 1.2 or later, verified against the system's certificates, or
/// against those named by CURL_CA_BUNDLE, SSL_CERT_FILE and SSL_CERT_DIR,
/// takes proxies from the environment and has no time-out of any kind, the
/// connect phase included: it waits for as long as the server and the
/// network do. An answer's body is read up to 4 MiB; a larger one fails the
/// request. A URL without a host, or whose host libcurl would read
/// otherwise than UrlReference does, fails as an unsupported URL before any
/// lookup or connection.
///
/// Sessions carry no connections of their own: requests of the process
/// made one after another go to one server over one connection while the
/// server keeps it open (requests at the same time get connections of their
/// own), and a request is never sent a second time on another one.
class HttpSession {
public:
  explicit HttpSession(HttpSessionConfiguration configuration);

  /// A task that sends \p request and calls \p completion with the outcome.
  [[nodiscard]] HttpTask dataTask(HttpRequest request,
                                  DataTaskCompletion completion) const;

  const HttpSessionConfiguration &getConfiguration() const noexcept {
    return configuration;
  }

private:
  HttpSessionConfiguration configuration;
};

} // namespace platform

#endif
