#ifndef KESTRUNECLI_HELPERS_APIAUTHMANAGER_HOSTNAMENORMALIZER_H
#define KESTRUNECLI_HELPERS_APIAUTHMANAGER_HOSTNAMENORMALIZER_H

#include <optional>
#include <string>
#include <string_view>

namespace kestrune {

/// Turns the console address a user typed into the base URL text the tool
/// stores and builds requests on, or std::nullopt when it is no address.
///
/// - A URL with an authority keeps everything after its scheme (host, port,
///   path, trailing slash); the scheme stays when it is http or https (in any
///   case, written in small letters) and becomes https otherwise:
///   "ftp://x.example" gives "https://x.example", "//x" gives "https://x".
/// - Anything else is read as the authority and what follows it, and gets
///   "https://" in front: "uem.example.com" gives "https://uem.example.com",
///   "uem.example.com:8443" and "127.0.0.1:8443" keep their port.
/// - Refused: text that is no URL reference either way (blanks, non-ASCII,
///   bad escapes, a port that isn't a number), an empty host, an http or
///   https scheme without "//", and a user name in front of a bare host.
/// - The empty text gives "https://", so that a caller can report the address
///   as missing rather than as invalid.
[[nodiscard]] std::optional<std::string>
normalizeHostname(std::string_view hostname);

} // namespace kestrune

#endif
