#include "KestruneCLI/Helpers/APIAuthManager/HostnameNormalizer.h"

#include <uriparser/Uri.h>

#include <algorithm>
#include <cctype>

namespace kestrune {
namespace {

struct Reference {
  std::string scheme; // in small letters; empty when there is none
  bool hasScheme = false;
  bool hasAuthority = false;
  bool hasEmptyHost = false;
  bool hasUserInfo = false;
};

// Reads \p text as an RFC 3986 URI reference.
std::optional<Reference> parseReference(std::string_view text) {
  UriUriA uri;
  const char *errorPosition = nullptr;
  if (uriParseSingleUriExA(&uri, text.data(), text.data() + text.size(),
                           &errorPosition) != URI_SUCCESS)
    return std::nullopt;
  Reference reference;
  if (uri.scheme.first) {
    reference.hasScheme = true;
    reference.scheme.assign(uri.scheme.first, uri.scheme.afterLast);
    std::transform(reference.scheme.begin(), reference.scheme.end(),
                   reference.scheme.begin(), [](unsigned char c) {
                     return static_cast<char>(std::tolower(c));
                   });
  }
  if (uri.hostText.first) {
    reference.hasAuthority = true;
    reference.hasEmptyHost = uri.hostText.first == uri.hostText.afterLast &&
                             !uri.hostData.ip6 && !uri.hostData.ipFuture.first;
    reference.hasUserInfo = uri.userInfo.first != nullptr;
  }
  uriFreeUriMembersA(&uri);
  return reference;
}

bool isWebScheme(const std::string &scheme) {
  return scheme == "https" || scheme == "http";
}

} // namespace

std::optional<std::string> normalizeHostname(std::string_view hostname) {
  if (hostname.empty())
    return "https://";

  std::optional<Reference> reference = parseReference(hostname);
  if (reference && reference->hasAuthority) {
    if (reference->hasEmptyHost)
      return std::nullopt;
    std::string_view rest = hostname;
    if (reference->hasScheme)
      rest.remove_prefix(reference->scheme.size() + 1);
    const std::string scheme =
        isWebScheme(reference->scheme) ? reference->scheme : "https";
    return scheme + ":" + std::string(rest);
  }
  if (reference && isWebScheme(reference->scheme))
    return std::nullopt;

  // A bare host reads as a path, "host:port" as a scheme and a path, and
  // "127.0.0.1:8443" as nothing at all: each is meant as the authority. Text
  // with "://" was meant as a whole URL, and a user name never belongs in the
  // console's address.
  if (hostname.find("://") != std::string_view::npos)
    return std::nullopt;
  std::string candidate = "https://" + std::string(hostname);
  std::optional<Reference> asAuthority = parseReference(candidate);
  if (!asAuthority || !asAuthority->hasAuthority || asAuthority->hasEmptyHost ||
      asAuthority->hasUserInfo)
    return std::nullopt;
  return candidate;
}

} // namespace kestrune
