#ifndef KESTRUNECLI_PLATFORM_HTTPEXCHANGE_H
#define KESTRUNECLI_PLATFORM_HTTPEXCHANGE_H

// Private to PlatformHttp: one request and its answer on a libcurl handle.

#include "Platform/HttpMessage.h"

#include <curl/curl.h>

#include <memory>
#include <optional>
#include <string>

namespace platform {

struct SlistDeleter {
  void operator()(curl_slist *list) const noexcept {
    curl_slist_free_all(list);
  }
};
using HeaderList = std::unique_ptr<curl_slist, SlistDeleter>;

/// Refuses a field that would break the request apart (a line break in a
/// value) or that libcurl can't carry (a NUL, a name that is no token),
/// rather than send it mangled.
std::optional<HttpError> checkHeaders(const HttpHeaders &headers);

/// \p headers as libcurl sends them, and nothing of libcurl's own besides
/// what HTTP needs: no Expect, and no Accept or Content-Type unless given.
/// Throws std::bad_alloc.
HeaderList makeHeaderList(const HttpHeaders &headers);

/// What one request brought back.
struct ExchangeOutcome {
  /// The final answer's status; 0 before one came in.
  long status = 0;
  /// The final answer's header fields, as far as they came in.
  HttpHeaders headers;
  /// The body, at most 4 MiB of it.
  std::string data;
  /// Where a redirect leads, as the answer said.
  std::optional<std::string> redirectUrl;
  /// Set when the request failed.
  std::optional<HttpError> error;
};

/// Sends one request, \p method to \p url with \p body (streamed, read
/// again from the start should libcurl rewind) and the fields \p headers,
/// on \p handle: reset first, its connections kept. It follows no redirect,
/// waits without a time-out, speaks TLS 1.2 or later verified against the
/// system's certificates or those that CURL_CA_BUNDLE, SSL_CERT_FILE or
/// SSL_CERT_DIR name, and is never sent a second time.
ExchangeOutcome exchange(CURL *handle, CURLU *url, const std::string &method,
                         const HttpBody &body, curl_slist *headers);

} // namespace platform

#endif
