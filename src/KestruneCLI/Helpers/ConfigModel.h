#ifndef KESTRUNECLI_HELPERS_CONFIGMODEL_H
#define KESTRUNECLI_HELPERS_CONFIGMODEL_H

#include <cstdint>
#include <optional>
#include <string>

namespace kestrune {

/// The account: what sign-in proved and the keychain keeps.
struct ConfigModel {
  std::string username;
  std::string password;
  std::string apiKey;
  /// The console's base address with its scheme, as normalised at sign-in.
  std::string hostname;
  /// The organization group ID as the user typed it.
  std::string groupId;
  /// The console's number for that group; absent until a lookup gave one.
  std::optional<std::int64_t> groupIdNum;

  friend bool operator==(const ConfigModel &, const ConfigModel &) = default;
};

} // namespace kestrune

#endif
