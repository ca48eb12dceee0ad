#include "Platform/HttpSession.h"

#include "Platform/AsciiText.h"
#include "Platform/UrlReference.h"

#include <curl/curl.h>

#include <algorithm>
#include <cctype>
#include <cstdlib>
#include <exception>
#include <limits>
#include <mutex>
#include <string_view>

#include <pthread.h>
#include <signal.h>
#include <sys/socket.h>

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
// The console's answers are a few hundred bytes; whatever a server sends,
// no more than this is held.
constexpr std::size_t maxAnswerBytes = 4 * 1024 * 1024;
// A connect time-out of 0 means libcurl's default of 300 seconds, so the
// largest value stands for "no limit".
constexpr long unlimitedConnectMs = std::numeric_limits<long>::max();
// Larger reads than libcurl's default of 64 KiB halve the system calls of a
// big upload at the cost of one buffer.
constexpr long uploadBufferSize = 512 * 1024;

struct CurlDeleter {
  void operator()(CURL *handle) const noexcept { curl_easy_cleanup(handle); }
};
struct SlistDeleter {
  void operator()(curl_slist *list) const noexcept {
    curl_slist_free_all(list);
  }
};
struct CurlUrlDeleter {
  void operator()(CURLU *url) const noexcept { curl_url_cleanup(url); }
};
using CurlHandle = std::unique_ptr<CURL, CurlDeleter>;
using HeaderList = std::unique_ptr<curl_slist, SlistDeleter>;
using CurlUrl = std::unique_ptr<CURLU, CurlUrlDeleter>;

void initialiseCurl() {
  static std::once_flag once;
  std::call_once(once, [] { curl_global_init(CURL_GLOBAL_DEFAULT); });
}

/// Handles of finished transfers, each with the connections it opened, kept
/// for the next transfer: the requests of one run to one server go over one
/// connection for as long as the server keeps it open. A transfer takes the
/// handle given back last, or a new one when all are in use, so transfers
/// that run at once never share a handle or a connection; one taken on
/// another thread than it was given back on is ordered by the lock.
class HandlePool {
public:
  CurlHandle take() {
    {
      std::lock_guard lock(mutex);
      if (!idle.empty()) {
        CurlHandle handle = std::move(idle.back());
        idle.pop_back();
        return handle;
      }
    }
    return CurlHandle(curl_easy_init());
  }

  /// Keeps \p handle and its connections; a reset forgets every option of
  /// the transfer that used it (its buffers and callbacks), not the
  /// connections.
  void giveBack(CurlHandle handle) {
    curl_easy_reset(handle.get());
    std::lock_guard lock(mutex);
    idle.push_back(std::move(handle));
  }

private:
  std::mutex mutex;
  std::vector<CurlHandle> idle;
};

// Never destroyed: a transfer may still be running while the process ends,
// and the operating system closes the connections then.
HandlePool &handlePool() {
  static HandlePool *pool = new HandlePool();
  return *pool;
}

/// A handle from the pool for the time of one transfer.
class PooledHandle {
public:
  PooledHandle() : handle(handlePool().take()) {}
  ~PooledHandle() {
    if (handle)
      handlePool().giveBack(std::move(handle));
  }
  PooledHandle(const PooledHandle &) = delete;
  PooledHandle &operator=(const PooledHandle &) = delete;
  CURL *get() const noexcept { return handle.get(); }

private:
  CurlHandle handle;
};

/// The certificates to trust besides what libcurl trusts by default, named
/// as curl and OpenSSL programs name them: CURL_CA_BUNDLE (a file) wins;
/// else SSL_CERT_FILE (a file) and SSL_CERT_DIR (a hashed folder). Empty
/// variables count as unset. Read once, so every transfer of a run trusts
/// the same and can use the same connections.
struct Trust {
  std::optional<std::string> caFile, caFolder;
};

const Trust &trustFromEnvironment() {
  static const Trust trust = [] {
    auto variable = [](const char *name) -> std::optional<std::string> {
      const char *value = std::getenv(name);
      if (!value || !*value)
        return std::nullopt;
      return std::string(value);
    };
    if (auto bundle = variable("CURL_CA_BUNDLE"))
      return Trust{bundle, std::nullopt};
    return Trust{variable("SSL_CERT_FILE"), variable("SSL_CERT_DIR")};
  }();
  return trust;
}

std::string toLower(std::string text) {
  std::transform(text.begin(), text.end(), text.begin(), [](unsigned char c) {
    return static_cast<char>(std::tolower(c));
  });
  return text;
}

const char *sentenceFor(CURLcode code) {
  switch (code) {
  case CURLE_COULDNT_RESOLVE_HOST:
    return "A server with the specified hostname could not be found";
  case CURLE_COULDNT_RESOLVE_PROXY:
    return "The proxy server could not be found";
  case CURLE_COULDNT_CONNECT:
    return "Could not connect to the server";
  case CURLE_OPERATION_TIMEDOUT:
    return "The request timed out";
  case CURLE_SEND_ERROR:
  case CURLE_RECV_ERROR:
  case CURLE_GOT_NOTHING:
  case CURLE_PARTIAL_FILE:
  case CURLE_HTTP2:
  case CURLE_HTTP2_STREAM:
    return "The network connection was lost";
  case CURLE_SSL_CONNECT_ERROR:
  case CURLE_PEER_FAILED_VERIFICATION:
  case CURLE_SSL_CERTPROBLEM:
  case CURLE_SSL_CIPHER:
  case CURLE_SSL_CACERT_BADFILE:
  case CURLE_SSL_ISSUER_ERROR:
  case CURLE_SSL_PINNEDPUBKEYNOTMATCH:
  case CURLE_SSL_INVALIDCERTSTATUS:
  case CURLE_SSL_CRL_BADFILE:
  case CURLE_USE_SSL_FAILED:
    return "A secure connection to the server could not be made";
  case CURLE_UNSUPPORTED_PROTOCOL:
  case CURLE_URL_MALFORMAT:
    return "The URL is not supported";
  case CURLE_TOO_MANY_REDIRECTS:
    return "There were too many redirects";
  case CURLE_WEIRD_SERVER_REPLY:
  case CURLE_BAD_CONTENT_ENCODING:
    return "The server's answer could not be read";
  case CURLE_OUT_OF_MEMORY:
    return "There was not enough memory for the request";
  default:
    return "The request failed";
  }
}

/// Turns a failed transfer into our error: a stable sentence for the kind
/// of failure, and libcurl's own words about this one in parentheses.
HttpError describeFailure(CURLcode code, const char *errorBuffer) {
  std::string detail = (errorBuffer && *errorBuffer)
                           ? std::string(errorBuffer)
                           : std::string(curl_easy_strerror(code));
  return HttpError{std::string(sentenceFor(code)) + " (" + detail + ")"};
}

/// Scheme, host and port as libcurl will connect to them.
struct Origin {
  std::string scheme, host, port;
  bool operator==(const Origin &) const = default;
};

/// \p url read as libcurl reads the URL of a transfer; absent when it
/// can't.
CurlUrl parseAsCurl(const std::string &url) {
  CurlUrl handle(curl_url());
  if (!handle ||
      curl_url_set(handle.get(), CURLUPART_URL, url.c_str(),
                   CURLU_NON_SUPPORT_SCHEME | CURLU_GUESS_SCHEME) != CURLUE_OK)
    return nullptr;
  return handle;
}

std::optional<std::string> partOf(CURLU *url, CURLUPart which,
                                  unsigned int flags = 0) {
  char *text = nullptr;
  if (curl_url_get(url, which, &text, flags) != CURLUE_OK)
    return std::nullopt;
  std::string value(text);
  curl_free(text);
  return value;
}

std::optional<Origin> originOf(const std::string &url) {
  CurlUrl handle = parseAsCurl(url);
  if (!handle)
    return std::nullopt;
  auto scheme = partOf(handle.get(), CURLUPART_SCHEME);
  auto host = partOf(handle.get(), CURLUPART_HOST);
  auto port = partOf(handle.get(), CURLUPART_PORT, CURLU_DEFAULT_PORT);
  if (!scheme || !host || !port)
    return std::nullopt;
  return Origin{toLower(*scheme), toLower(*host), *port};
}

/// Refuses a URL that names no host, or whose host libcurl reads otherwise
/// than our own parser does: "https:///api/x" has an empty host, while
/// libcurl would look up a host called "api". Such a request is never
/// started, so no name is looked up and no connection made that nobody
/// named.
std::optional<HttpError> checkHost(const std::string &url, CURLU *parsed) {
  std::optional<UrlReference> reference = UrlReference::parse(url);
  std::string named = reference && reference->host ? *reference->host : "";
  if (named.empty())
    return HttpError{"The URL is not supported (it names no host)"};
  if (!parsed)
    return describeFailure(CURLE_URL_MALFORMAT, nullptr);
  std::string read = partOf(parsed, CURLUPART_HOST).value_or("");
  if (read.size() > 1 && read.front() == '[' && read.back() == ']')
    read = read.substr(1, read.size() - 2);
  if (!equalsIgnoringCase(named, read))
    return HttpError{"The URL is not supported (its host '" + named +
                     "' would be read as '" + read + "')"};
  return std::nullopt;
}

bool isTokenCharacter(unsigned char c) {
  if (std::isalnum(c))
    return true;
  constexpr std::string_view extra = "!#$%&'*+-.^_`|~";
  return extra.find(static_cast<char>(c)) != std::string_view::npos;
}

// A field that would break the request apart (a line break in a value) or
// that libcurl can't carry (a NUL) is refused rather than sent mangled.
std::optional<HttpError> checkHeaders(const HttpHeaders &headers) {
  for (const auto &[name, value] : headers) {
    bool nameIsToken =
        !name.empty() && std::all_of(name.begin(), name.end(), [](char c) {
          return isTokenCharacter(static_cast<unsigned char>(c));
        });
    if (!nameIsToken)
      return HttpError{"The request could not be made (the header name '" +
                       name + "' is not valid)"};
    if (value.find_first_of(std::string_view("\r\n\0", 3)) != std::string::npos)
      return HttpError{"The request could not be made (the value of the "
                       "header '" +
                       name + "' holds a line break or a NUL byte)"};
  }
  return std::nullopt;
}

bool hasHeader(const HttpHeaders &headers, std::string_view name) {
  return std::any_of(headers.begin(), headers.end(), [&](const auto &field) {
    return equalsIgnoringCase(field.first, name);
  });
}

/// The state of one request of the redirect chain, shared with libcurl's
/// callbacks.
struct Exchange {
  const HttpBody *body = nullptr;
  std::uint64_t bodyOffset = 0;
  std::optional<std::string> bodyFailure;
  std::string data;
  /// The body went past maxAnswerBytes, and reading stopped there.
  bool answerTooLarge = false;
  HttpHeaders headers;
  const char *errorBuffer = nullptr;
  /// How often libcurl was about to send the request.
  int attempts = 0;
  /// libcurl's words about the failure that made it want to send the
  /// request again; set only when it wanted to.
  std::optional<std::string> failureBeforeRetry;
};

// libcurl sends a request once more on a new connection when a reused one
// failed before any answer came in. The request may have reached the
// server, and nothing here is ever sent twice, so that second attempt is
// stopped before it connects (or, should it find another open connection,
// before it sends) and the request fails as it did.
void refuseRetry(Exchange &exchange) {
  if (!exchange.failureBeforeRetry)
    exchange.failureBeforeRetry = std::string(exchange.errorBuffer);
}

int onRequestReady(void *user, char *, char *, int, int) {
  auto &exchange = *static_cast<Exchange *>(user);
  if (exchange.attempts++ == 0)
    return CURL_PREREQFUNC_OK;
  refuseRetry(exchange);
  return CURL_PREREQFUNC_ABORT;
}

curl_socket_t onOpenSocket(void *user, curlsocktype, curl_sockaddr *address) {
  auto &exchange = *static_cast<Exchange *>(user);
  if (exchange.attempts > 0) {
    refuseRetry(exchange);
    return CURL_SOCKET_BAD;
  }
  return ::socket(address->family, address->socktype | SOCK_CLOEXEC,
                  address->protocol);
}

/// The failure that ended the first attempt of a request, as libcurl
/// reports it on a connection of its own: nothing written to the error
/// buffer means the server closed the connection without a word.
HttpError describeFailureBeforeRetry(const std::string &failure) {
  if (failure.empty())
    return describeFailure(CURLE_GOT_NOTHING, "Empty reply from server");
  return describeFailure(failure.starts_with("Send failure") ? CURLE_SEND_ERROR
                                                             : CURLE_RECV_ERROR,
                         failure.c_str());
}

std::size_t onBodyRead(char *buffer, std::size_t size, std::size_t count,
                       void *user) {
  auto &exchange = *static_cast<Exchange *>(user);
  try {
    std::size_t n =
        exchange.body->readAt(exchange.bodyOffset, buffer, size * count);
    exchange.bodyOffset += n;
    return n;
  } catch (const std::exception &error) {
    exchange.bodyFailure = error.what();
    return CURL_READFUNC_ABORT;
  }
}

int onBodySeek(void *user, curl_off_t offset, int origin) {
  auto &exchange = *static_cast<Exchange *>(user);
  if (origin != SEEK_SET || offset < 0)
    return CURL_SEEKFUNC_CANTSEEK;
  exchange.bodyOffset = static_cast<std::uint64_t>(offset);
  return CURL_SEEKFUNC_OK;
}

// A short count makes libcurl end the transfer with a write error.
std::size_t onData(char *buffer, std::size_t size, std::size_t count,
                   void *user) {
  auto &exchange = *static_cast<Exchange *>(user);
  if (size * count > maxAnswerBytes - exchange.data.size()) {
    exchange.answerTooLarge = true;
    return 0;
  }
  exchange.data.append(buffer, size * count);
  return size * count;
}

std::string_view trimmed(std::string_view text) {
  std::size_t first = text.find_first_not_of(" \t");
  if (first == std::string_view::npos)
    return {};
  std::size_t last = text.find_last_not_of(" \t");
  return text.substr(first, last - first + 1);
}

// Each status line starts a new set of fields, so interim answers (100) and
// a proxy's own answer leave only the final answer's fields behind.
std::size_t onHeaderLine(char *buffer, std::size_t size, std::size_t count,
                         void *user) {
  auto &exchange = *static_cast<Exchange *>(user);
  std::string_view line(buffer, size * count);
  while (!line.empty() && (line.back() == '\n' || line.back() == '\r'))
    line.remove_suffix(1);
  if (line.starts_with("HTTP/")) {
    exchange.headers.clear();
    return size * count;
  }
  if (line.empty())
    return size * count;
  if ((line.front() == ' ' || line.front() == '\t') &&
      !exchange.headers.empty()) {
    exchange.headers.back().second.append(" ").append(trimmed(line));
    return size * count;
  }
  std::size_t colon = line.find(':');
  if (colon == std::string_view::npos)
    return size * count;
  exchange.headers.emplace_back(std::string(line.substr(0, colon)),
                                std::string(trimmed(line.substr(colon + 1))));
  return size * count;
}

HeaderList makeHeaderList(const HttpSessionConfiguration &configuration) {
  curl_slist *list = nullptr;
  auto append = [&list](const std::string &line) {
    curl_slist *extended = curl_slist_append(list, line.c_str());
    if (!extended)
      throw std::bad_alloc();
    list = extended;
  };
  try {
    for (const auto &[name, value] : configuration.additionalHeaders) {
      // "Name:" would tell libcurl to leave the field out; "Name;" sends it
      // with an empty value.
      append(value.empty() ? name + ";" : name + ": " + value);
    }
    // Fields that libcurl adds unless told not to.
    append("Expect:");
    if (!hasHeader(configuration.additionalHeaders, "Accept"))
      append("Accept:");
    if (!hasHeader(configuration.additionalHeaders, "Content-Type"))
      append("Content-Type:");
  } catch (...) {
    curl_slist_free_all(list);
    throw;
  }
  return HeaderList(list);
}

bool isRedirect(long status) {
  return status == 301 || status == 302 || status == 303 || status == 307 ||
         status == 308;
}

/// Sets up \p handle for one request of the chain. Returns the failure of
/// the first option that libcurl refuses.
CURLcode configure(CURL *handle, CURLU *url, const std::string &method,
                   Exchange &exchange, curl_slist *headers, char *errorBuffer) {
  const HttpBody &body = *exchange.body;
  CURLcode code = CURLE_OK;
  auto set = [&](CURLoption option, auto value) {
    if (code == CURLE_OK)
      code = curl_easy_setopt(handle, option, value);
  };
  // The URL as checked, not the text again: libcurl sends what was checked.
  set(CURLOPT_CURLU, url);
  set(CURLOPT_ERRORBUFFER, errorBuffer);
  set(CURLOPT_NOSIGNAL, 1L);
  set(CURLOPT_PROTOCOLS_STR, "http,https");
  // A minimum, with the console and with a proxy reached over TLS,
  // whatever the system's OpenSSL configuration would allow.
  set(CURLOPT_SSLVERSION, static_cast<long>(CURL_SSLVERSION_TLSv1_2));
  set(CURLOPT_PROXY_SSLVERSION, static_cast<long>(CURL_SSLVERSION_TLSv1_2));
  set(CURLOPT_FOLLOWLOCATION, 0L);
  set(CURLOPT_TIMEOUT_MS, 0L);
  set(CURLOPT_CONNECTTIMEOUT_MS, unlimitedConnectMs);
  set(CURLOPT_SUPPRESS_CONNECT_HEADERS, 1L);
  set(CURLOPT_HTTPHEADER, headers);
  set(CURLOPT_WRITEFUNCTION, onData);
  set(CURLOPT_WRITEDATA, static_cast<void *>(&exchange));
  set(CURLOPT_HEADERFUNCTION, onHeaderLine);
  set(CURLOPT_HEADERDATA, static_cast<void *>(&exchange));
  set(CURLOPT_PREREQFUNCTION, onRequestReady);
  set(CURLOPT_PREREQDATA, static_cast<void *>(&exchange));
  set(CURLOPT_OPENSOCKETFUNCTION, onOpenSocket);
  set(CURLOPT_OPENSOCKETDATA, static_cast<void *>(&exchange));
  const Trust &trust = trustFromEnvironment();
  if (trust.caFile)
    set(CURLOPT_CAINFO, trust.caFile->c_str());
  if (trust.caFolder)
    set(CURLOPT_CAPATH, trust.caFolder->c_str());

  if (method == "HEAD") {
    set(CURLOPT_NOBODY, 1L);
    return code;
  }
  if (method == "GET" && body.getSize() == 0) {
    set(CURLOPT_HTTPGET, 1L);
    return code;
  }
  set(CURLOPT_POST, 1L);
  set(CURLOPT_POSTFIELDSIZE_LARGE, static_cast<curl_off_t>(body.getSize()));
  if (body.getSize() == 0) {
    set(CURLOPT_POSTFIELDS, "");
  } else {
    set(CURLOPT_READFUNCTION, onBodyRead);
    set(CURLOPT_READDATA, static_cast<void *>(&exchange));
    set(CURLOPT_SEEKFUNCTION, onBodySeek);
    set(CURLOPT_SEEKDATA, static_cast<void *>(&exchange));
    set(CURLOPT_UPLOAD_BUFFERSIZE, uploadBufferSize);
  }
  if (method != "POST")
    set(CURLOPT_CUSTOMREQUEST, method.c_str());
  return code;
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
    headers = makeHeaderList(configuration);
  } catch (const std::bad_alloc &) {
    return fail(describeFailure(CURLE_OUT_OF_MEMORY, nullptr));
  }

  for (int hop = 0;; ++hop) {
    CurlUrl parsed = parseAsCurl(url);
    if (auto refused = checkHost(url, parsed.get()))
      return fail(*refused);
    char errorBuffer[CURL_ERROR_SIZE] = {};
    Exchange exchange;
    exchange.body = &body;
    exchange.errorBuffer = errorBuffer;
    // A reset keeps the connections, so a redirect to the same server
    // reuses its connection.
    curl_easy_reset(handle.get());
    CURLcode code = configure(handle.get(), parsed.get(), method, exchange,
                              headers.get(), errorBuffer);
    if (code != CURLE_OK)
      return fail(describeFailure(code, errorBuffer));
    code = curl_easy_perform(handle.get());
    long status = 0;
    curl_easy_getinfo(handle.get(), CURLINFO_RESPONSE_CODE, &status);
    if (code != CURLE_OK) {
      HttpError error =
          exchange.bodyFailure
              ? HttpError{"The request body could not be sent (" +
                          *exchange.bodyFailure + ")"}
          : exchange.answerTooLarge
              ? HttpError{"The server's answer was too large (it was larger "
                          "than 4 MiB)"}
          : exchange.failureBeforeRetry
              ? describeFailureBeforeRetry(*exchange.failureBeforeRetry)
              : describeFailure(code, errorBuffer);
      // A final answer's status and fields that came in before the failure
      // go along with it: the caller may decide by them.
      std::optional<HttpResponse> received;
      if (status >= 200)
        received = HttpResponse{status, std::move(exchange.headers)};
      return Outcome{std::nullopt, std::move(received), std::move(error)};
    }

    // A redirect to another scheme, host or port is not followed: its
    // answer is the final one.
    char *next = nullptr;
    curl_easy_getinfo(handle.get(), CURLINFO_REDIRECT_URL, &next);
    if (!isRedirect(status) || next == nullptr || !firstOrigin ||
        originOf(next) != firstOrigin) {
      return Outcome{std::move(exchange.data),
                     HttpResponse{status, std::move(exchange.headers)},
                     std::nullopt};
    }
    if (hop == maxRedirects)
      return fail(describeFailure(CURLE_TOO_MANY_REDIRECTS, nullptr));
    url = next;
    // The method changes as browsers change it: a 303 turns everything but
    // HEAD into GET, a 301 or 302 turns POST into GET; 307 and 308 keep
    // method and body.
    if ((status == 303 && method != "HEAD") ||
        ((status == 301 || status == 302) && method == "POST")) {
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
