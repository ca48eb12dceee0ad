#ifndef KESTRUNECLI_SECURESTORE_ERROR_H
#define KESTRUNECLI_SECURESTORE_ERROR_H

#include <cstdint>
#include <exception>
#include <map>
#include <string>
#include <string_view>

namespace securestore {

/// The user-information key whose value is an error's readable message.
inline constexpr std::string_view NSLocalizedDescriptionKey =
    "NSLocalizedDescription";

/// User information of an error: text keys to text values.
using UserInfo = std::map<std::string, std::string>;

/// A failure of a keychain operation: either a Status of the catalogue or a
/// PlatformError that an item store reported. Callers that only report the
/// failure catch this type and print localizedDescription().
class Error : public std::exception {
public:
  /// The error's domain, e.g. "com.Dorvane.SecureStore.error".
  virtual std::string domain() const = 0;
  /// The error's number within its domain.
  virtual std::int64_t code() const = 0;
  /// The error's user information.
  virtual UserInfo userInfo() const = 0;
  /// The value under NSLocalizedDescriptionKey when there is one, otherwise
  /// "The operation couldn’t be completed. ({domain} error {code}.)".
  std::string localizedDescription() const;
};

/// A general error made from what a store reported: a domain, a code and
/// user information. Used when an access control object can't be made.
class PlatformError final : public Error {
public:
  PlatformError(std::string domain, std::int64_t code, UserInfo userInfo);

  std::string domain() const override { return errorDomain; }
  std::int64_t code() const override { return errorCode; }
  UserInfo userInfo() const override { return errorUserInfo; }
  const char *what() const noexcept override { return message.c_str(); }

  friend bool operator==(const PlatformError &a, const PlatformError &b) {
    return a.errorDomain == b.errorDomain && a.errorCode == b.errorCode &&
           a.errorUserInfo == b.errorUserInfo;
  }

private:
  std::string errorDomain;
  std::int64_t errorCode;
  UserInfo errorUserInfo;
  std::string message;
};

} // namespace securestore

#endif
