#ifndef KESTRUNECLI_PLATFORM_URLREFERENCE_H
#define KESTRUNECLI_PLATFORM_URLREFERENCE_H

#include <optional>
#include <string>
#include <string_view>

namespace platform {

/// A URL, or a reference relative to one, split into its parts exactly as
/// written: nothing is decoded, lower-cased or normalised. A part that the
/// text lacks is absent; a part that is there but empty is an empty string,
/// so "http://h/?" has an empty query while "http://h/" has none.
struct UrlReference {
  /// The whole text that was parsed.
  std::string text;
  /// "https" in "https://h/p"; absent for a relative reference.
  std::optional<std::string> scheme;
  /// "user:pass" in "http://user:pass@h/"; absent without an "@".
  std::optional<std::string> userInfo;
  /// The host, without the brackets of an IP literal ("::1" for
  /// "http://[::1]/"); absent when the text has no authority ("//").
  std::optional<std::string> host;
  /// The port's digits as written; empty for "http://h:/", absent without a
  /// colon after the host.
  std::optional<std::string> port;
  /// The path, possibly empty ("http://h") or relative ("a/b").
  std::string path;
  /// The text after "?", without it.
  std::optional<std::string> query;
  /// The text after "#", without it.
  std::optional<std::string> fragment;

  /// Parses \p text as an absolute URL or a relative reference after the
  /// rules of RFC 3986. Absent when \p text is empty or breaks those rules:
  /// a blank, a non-ASCII byte, a stray "#" or "%" that starts no escape.
  [[nodiscard]] static std::optional<UrlReference> parse(std::string_view text);

  /// The last segment of the path with its escapes decoded: "4711" for
  /// "https://h/apps/4711" and for ".../4711/". A path of slashes only gives
  /// "/", an empty path "". Escapes that don't decode to UTF-8 stay as
  /// written.
  std::string getLastPathComponent() const;
};

} // namespace platform

#endif
