#include "Platform/HttpExchange.h"

#include "Platform/AsciiText.h"
#include "Platform/HttpFailure.h"

#include <algorithm>
#include <cctype>
#include <cstdint>
#include <cstdlib>
#include <exception>
#include <limits>
#include <new>
#include <string_view>

#include <sys/socket.h>

namespace platform {
namespace {

// The console's answers are a few hundred bytes; whatever a server sends,
// no more than this is held.
constexpr std::size_t maxAnswerBytes = 4 * 1024 * 1024;
// A connect time-out of 0 means libcurl's default of 300 seconds, so the
// largest value stands for "no limit".
constexpr long unlimitedConnectMs = std::numeric_limits<long>::max();
// Larger reads than libcurl's default of 64 KiB halve the system calls of a
// big upload at the cost of one buffer.
constexpr long uploadBufferSize = 512 * 1024;

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

bool isTokenCharacter(unsigned char c) {
  if (std::isalnum(c))
    return true;
  constexpr std::string_view extra = "!#$%&'*+-.^_`|~";
  return extra.find(static_cast<char>(c)) != std::string_view::npos;
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

HeaderList makeHeaderList(const HttpHeaders &headers) {
  curl_slist *list = nullptr;
  auto append = [&list](const std::string &line) {
    curl_slist *extended = curl_slist_append(list, line.c_str());
    if (!extended)
      throw std::bad_alloc();
    list = extended;
  };
  try {
    for (const auto &[name, value] : headers) {
      // "Name:" would tell libcurl to leave the field out; "Name;" sends it
      // with an empty value.
      append(value.empty() ? name + ";" : name + ": " + value);
    }
    // Fields that libcurl adds unless told not to.
    append("Expect:");
    if (!hasHeader(headers, "Accept"))
      append("Accept:");
    if (!hasHeader(headers, "Content-Type"))
      append("Content-Type:");
  } catch (...) {
    curl_slist_free_all(list);
    throw;
  }
  return HeaderList(list);
}

ExchangeOutcome exchange(CURL *handle, CURLU *url, const std::string &method,
                         const HttpBody &body, curl_slist *headers) {
  char errorBuffer[CURL_ERROR_SIZE] = {};
  Exchange exchange;
  exchange.body = &body;
  exchange.errorBuffer = errorBuffer;
  ExchangeOutcome outcome;
  // A reset keeps the connections, so a redirect to the same server
  // reuses its connection.
  curl_easy_reset(handle);
  CURLcode code =
      configure(handle, url, method, exchange, headers, errorBuffer);
  if (code != CURLE_OK) {
    outcome.error = describeFailure(code, errorBuffer);
    return outcome;
  }
  code = curl_easy_perform(handle);
  curl_easy_getinfo(handle, CURLINFO_RESPONSE_CODE, &outcome.status);
  outcome.headers = std::move(exchange.headers);
  if (code != CURLE_OK) {
    outcome.error =
        exchange.bodyFailure
            ? HttpError{"The request body could not be sent (" +
                        *exchange.bodyFailure + ")"}
        : exchange.answerTooLarge
            ? HttpError{"The server's answer was too large (it was larger "
                        "than 4 MiB)"}
        : exchange.failureBeforeRetry
            ? describeFailureBeforeRetry(*exchange.failureBeforeRetry)
            : describeFailure(code, errorBuffer);
    return outcome;
  }
  outcome.data = std::move(exchange.data);
  char *next = nullptr;
  curl_easy_getinfo(handle, CURLINFO_REDIRECT_URL, &next);
  if (next)
    outcome.redirectUrl = std::string(next);
  return outcome;
}

} // namespace platform
