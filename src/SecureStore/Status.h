#ifndef KESTRUNECLI_SECURESTORE_STATUS_H
#define KESTRUNECLI_SECURESTORE_STATUS_H

#include "SecureStore/Error.h"
#include "SecureStore/StatusCases.h"

#include <cstddef>
#include <cstdint>
#include <functional>
#include <optional>
#include <span>
#include <string_view>

namespace securestore {

/// The signed 32-bit status number of an item store call; 0 is success.
using OSStatus = std::int32_t;

/// The shared domain text of keychain failures.
inline constexpr std::string_view SecureStoreErrorDomain =
    "com.Dorvane.SecureStore.error";

/// A named case of the keychain status catalogue, with its fixed message.
/// It is the failure that Keychain operations throw. Every number outside
/// the catalogue becomes unexpectedError.
class Status final : public Error {
public:
  /// The cases, valued by their raw status numbers.
  enum class Case : std::int32_t {
#define SECURESTORE_STATUS_CASE(name, raw, message) name = raw,
    SECURESTORE_STATUS_CASES(SECURESTORE_STATUS_CASE)
#undef SECURESTORE_STATUS_CASE
  };

  /// The number of cases in the catalogue.
  static constexpr std::size_t caseCount = 403;

  /// The domain of every Status: "com.Dorvane.SecureStore.error".
  static constexpr std::string_view errorDomain = SecureStoreErrorDomain;

  /// The given case. Implicit, so that a case stands where a Status is asked.
  Status(Case errorCase) noexcept : errorCase(errorCase) {}

  /// The case whose raw value is \p status, or unexpectedError for every
  /// number outside the catalogue. Never fails.
  explicit Status(OSStatus status) noexcept;

  /// The case whose raw value is \p rawValue, or std::nullopt.
  [[nodiscard]] static std::optional<Status> fromRawValue(OSStatus rawValue);

  /// Every case in declaration order.
  static std::span<const Case> allCases() noexcept;

  Case getCase() const noexcept { return errorCase; }
  /// The case's status number.
  OSStatus rawValue() const noexcept {
    return static_cast<OSStatus>(errorCase);
  }
  /// The same number as a machine-word integer.
  std::int64_t errorCode() const noexcept { return rawValue(); }
  /// The case's message; empty for internalComponent.
  std::string_view description() const noexcept;
  /// The case's name as declared, e.g. "itemNotFound".
  std::string_view caseName() const noexcept;
  /// One pair: NSLocalizedDescriptionKey and the message.
  UserInfo errorUserInfo() const;

  std::string domain() const override { return std::string(errorDomain); }
  std::int64_t code() const override { return errorCode(); }
  UserInfo userInfo() const override { return errorUserInfo(); }
  const char *what() const noexcept override;

  friend bool operator==(const Status &a, const Status &b) noexcept {
    return a.errorCase == b.errorCase;
  }

private:
  Case errorCase;
};

/// The status number of \p errorCase, as stores answer it.
inline OSStatus statusOf(Status::Case errorCase) noexcept {
  return static_cast<OSStatus>(errorCase);
}

} // namespace securestore

template <> struct std::hash<securestore::Status> {
  std::size_t operator()(const securestore::Status &status) const noexcept {
    return std::hash<std::int32_t>()(status.rawValue());
  }
};

#endif
