#include "Platform/HttpSession.h"

#include "Platform/HttpConnectionPool.h"
#include "Platform/HttpExchange.h"
#include "Platform/HttpFailure.h"
#include "Platform/HttpOrigin.h"

#include <new>

#include <pthread.h>
#include <signal.h>

namespace platform {

struct HttpTask::Transfer {
  HttpSessionConfiguration configuration;
  HttpRequest request;
  DataTaskCompletion completion;
  void run();

private:
  /// What the completion is called with.
  struct Outcome {
    std::optional<std::string> data;
    std::optional<HttpResponse> response;
    std::optional<HttpError> error;
  };
  Outcome perform();
};

namespace {

constexpr int maxRedirects = 20;

bool isRedirect(long status) {
  return status == 301 || status == 302 || status == 303 || status == 307 ||
         status == 308;
}

} // namespace

// The handle goes back to the pool before the completion runs: a caller
// woken by it may start its next request at once, and that one is to find
// the connection free.
void HttpTask::Transfer::run() {
  Outcome outcome = perform();
  completion(std::move(outcome.data), std::move(outcome.response),
             std::move(outcome.error));
}

HttpTask::Transfer::Outcome HttpTask::Transfer::perform() {
  auto fail = [](HttpError error) {
    return Outcome{std::nullopt, std::nullopt, std::move(error)};
  };
  if (auto invalid = checkHeaders(configuration.additionalHeaders))
    return fail(*invalid);
  PooledHandle handle;
  if (!handle.get())
    return fail(describeFailure(CURLE_FAILED_INIT, nullptr));

  std::string url = request.url;
  std::string method = request.method;
  HttpBody body = request.body;
  // Every request of the chain goes to the origin of the first, so the
  // credentials in the header fields reach no other server.
  const std::optional<Origin> firstOrigin = originOf(url);
  HeaderList headers;
  try {
    headers = makeHeaderList(configuration.additionalHeaders);
  } catch (const std::bad_alloc &) {
    return fail(describeFailure(CURLE_OUT_OF_MEMORY, nullptr));
  }

  for (int hop = 0;; ++hop) {
    CurlUrl parsed = parseAsCurl(url);
    if (auto refused = checkHost(url, parsed.get()))
      return fail(*refused);
    ExchangeOutcome answer =
        exchange(handle.get(), parsed.get(), method, body, headers.get());
    if (answer.error) {
      // A final answer's status and fields that came in before the failure
      // go along with it: the caller may decide by them.
      std::optional<HttpResponse> received;
      if (answer.status >= 200)
        received = HttpResponse{answer.status, std::move(answer.headers)};
      return Outcome{std::nullopt, std::move(received),
                     std::move(answer.error)};
    }

    // A redirect to another scheme, host or port is not followed: its
    // answer is the final one.
    if (!isRedirect(answer.status) || !answer.redirectUrl || !firstOrigin ||
        originOf(*answer.redirectUrl) != firstOrigin) {
      return Outcome{std::move(answer.data),
                     HttpResponse{answer.status, std::move(answer.headers)},
                     std::nullopt};
    }
    if (hop == maxRedirects)
      return fail(describeFailure(CURLE_TOO_MANY_REDIRECTS, nullptr));
    url = *answer.redirectUrl;
    // The method changes as browsers change it: a 303 turns everything but
    // HEAD into GET, a 301 or 302 turns POST into GET; 307 and 308 keep
    // method and body.
    if ((answer.status == 303 && method != "HEAD") ||
        ((answer.status == 301 || answer.status == 302) && method == "POST")) {
      method = "GET";
      body = HttpBody();
    }
  }
}

HttpTask::HttpTask(std::shared_ptr<Transfer> transfer)
    : transfer(std::move(transfer)) {}

HttpTask::~HttpTask() {
  if (thread.joinable())
    thread.join();
}

void HttpTask::resume() {
  if (thread.joinable() || !transfer)
    return;
  thread = std::thread([transfer = transfer] {
    // A server that hangs up must fail the request, not end the process: a
    // write to its socket then fails instead of raising SIGPIPE here.
    sigset_t pipe;
    sigemptyset(&pipe);
    sigaddset(&pipe, SIGPIPE);
    pthread_sigmask(SIG_BLOCK, &pipe, nullptr);
    transfer->run();
  });
}

HttpSession::HttpSession(HttpSessionConfiguration configuration)
    : configuration(std::move(configuration)) {
  initialiseCurl();
}

HttpTask HttpSession::dataTask(HttpRequest request,
                               DataTaskCompletion completion) const {
  return HttpTask(std::make_shared<HttpTask::Transfer>(HttpTask::Transfer{
      configuration, std::move(request), std::move(completion)}));
}

} // namespace platform
