#include "KestruneCLI/Helpers/APIAuthManager/HostnameNormalizer.h"

#include "Platform/UrlReference.h"

#include <algorithm>
#include <cctype>

namespace kestrune {
namespace {

std::string inSmallLetters(std::string text) {
  std::transform(text.begin(), text.end(), text.begin(), [](unsigned char c) {
    return static_cast<char>(std::tolower(c));
  });
  return text;
}

bool isWebScheme(const std::string &scheme) {
  return scheme == "https" || scheme == "http";
}

// Whether \p url has an authority with a host that isn't empty. An IP
// literal is never empty: "[]" doesn't parse.
bool hasHost(const platform::UrlReference &url) {
  return url.host && !url.host->empty();
}

} // namespace

std::optional<std::string> normalizeHostname(std::string_view hostname) {
  if (hostname.empty())
    return "https://";

  std::optional<platform::UrlReference> url =
      platform::UrlReference::parse(hostname);
  const std::string scheme =
      url && url->scheme ? inSmallLetters(*url->scheme) : std::string();
  if (url && url->host) {
    if (!hasHost(*url))
      return std::nullopt;
    std::string_view rest = hostname;
    if (url->scheme)
      rest.remove_prefix(url->scheme->size() + 1);
    return (isWebScheme(scheme) ? scheme : "https") + ":" + std::string(rest);
  }
  if (url && isWebScheme(scheme))
    return std::nullopt;

  // A bare host reads as a path, "host:port" as a scheme and a path, and
  // "127.0.0.1:8443" as nothing at all: each is meant as the authority. Text
  // with "://" was meant as a whole URL, and a user name never belongs in the
  // console's address.
  if (hostname.find("://") != std::string_view::npos)
    return std::nullopt;
  std::string candidate = "https://" + std::string(hostname);
  std::optional<platform::UrlReference> asAuthority =
      platform::UrlReference::parse(candidate);
  if (!asAuthority || !hasHost(*asAuthority) || asAuthority->userInfo)
    return std::nullopt;
  return candidate;
}

} // namespace kestrune
