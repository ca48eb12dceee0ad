#ifndef KESTRUNECLI_PLATFORM_HTTPORIGIN_H
#define KESTRUNECLI_PLATFORM_HTTPORIGIN_H

// Private to PlatformHttp: URLs as libcurl reads them, and where they lead.

#include "Platform/HttpMessage.h"

#include <curl/curl.h>

#include <memory>
#include <optional>
#include <string>

namespace platform {

struct CurlUrlDeleter {
  void operator()(CURLU *url) const noexcept { curl_url_cleanup(url); }
};
using CurlUrl = std::unique_ptr<CURLU, CurlUrlDeleter>;

/// \p url read as libcurl reads the URL of a transfer; null when it can't.
CurlUrl parseAsCurl(const std::string &url);

/// Scheme, host and port as libcurl will connect to them.
struct Origin {
  std::string scheme, host, port;
  bool operator==(const Origin &) const = default;
};

/// The origin of \p url, the scheme's default port filled in; absent when
/// libcurl can't read it.
std::optional<Origin> originOf(const std::string &url);

/// Refuses a URL that names no host, or whose host libcurl reads otherwise
/// than our own parser does: "https:///api/x" has an empty host, while
/// libcurl would look up a host called "api". \p parsed is \p url as
/// parseAsCurl read it. Such a request is never started, so no name is
/// looked up and no connection made that nobody named.
std::optional<HttpError> checkHost(const std::string &url, CURLU *parsed);

} // namespace platform

#endif
