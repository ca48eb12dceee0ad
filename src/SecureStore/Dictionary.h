#ifndef KESTRUNECLI_SECURESTORE_DICTIONARY_H
#define KESTRUNECLI_SECURESTORE_DICTIONARY_H

#include <chrono>
#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <string>
#include <variant>
#include <vector>

namespace securestore {

/// Bytes of an item's value or of a binary attribute.
using Bytes = std::vector<std::uint8_t>;

/// A point in time, as item stores report creation and modification.
using Date = std::chrono::system_clock::time_point;

/// What an item store made of an accessibility and an authentication policy:
/// it stands under kSecAttrAccessControl in place of kSecAttrAccessible.
struct AccessControl {
  /// The raw value of the accessibility, e.g. kSecAttrAccessibleWhenUnlocked.
  std::string protection;
  /// The raw value of the authentication policy.
  std::uint64_t flags = 0;

  friend bool operator==(const AccessControl &,
                         const AccessControl &) = default;
};

/// An authentication context that a query may carry: an opaque object that
/// the keychain passes along and never calls. Subclass it to carry state.
class AuthenticationContext {
public:
  virtual ~AuthenticationContext();
};

/// Shared reference to a context; empty means absent.
using AuthenticationContextRef = std::shared_ptr<AuthenticationContext>;

/// One value of a query or attribute dictionary. Texts are UTF-8; booleans
/// stand for kCFBooleanTrue and kCFBooleanFalse.
using Value = std::variant<bool, std::int64_t, std::string, Bytes, Date,
                           AccessControl, AuthenticationContextRef>;

/// A query or attribute dictionary: kSec... key to value.
using Dictionary = std::map<std::string, Value, std::less<>>;

/// What SecItemCopyMatching gives through its result place: nothing, the
/// bytes of one item, the attributes of one item, or a list of those.
using CopyResult =
    std::variant<std::monostate, Bytes, Dictionary, std::vector<Dictionary>>;

/// Converts text to bytes, byte for byte.
Bytes toBytes(std::string_view text);

/// Converts bytes to text, byte for byte (no check of the encoding).
std::string toText(const Bytes &bytes);

/// A readable form of \p value: texts quoted, bytes as "N bytes", booleans
/// as true or false, dates in UTC.
std::string printValue(const Value &value);

/// A readable form of \p dictionary: ["key": value, ...], keys in order.
std::string printDictionary(const Dictionary &dictionary);

/// A readable form of a list of dictionaries: [[...], [...]].
std::string printDictionaries(const std::vector<Dictionary> &dictionaries);

} // namespace securestore

#endif
