#ifndef KESTRUNECLI_SECURESTORE_SECRETSERVICECLIENT_H
#define KESTRUNECLI_SECURESTORE_SECRETSERVICECLIENT_H

// Private to SecureStore: the calls of the Secret Service that the item
// store needs, as the module kestrune-secret-service.so gives them. The
// module alone links libsecret and GLib; the program loads it on first use,
// so runs that never reach the Secret Service load neither. Program and
// module share the system's C++ runtime, so the calls take and give our own
// C++ types.

#include <cstdint>
#include <map>
#include <string>
#include <vector>

namespace securestore::secretservice {

/// The plain attributes of an item, as the service shows them.
using Attributes = std::map<std::string, std::string>;

/// How a call ended.
enum class Outcome {
  ok,
  /// The collection or an item is locked; unlocking would need a prompt.
  locked,
  /// The item or collection is gone.
  noSuchObject,
  alreadyExists,
  /// The service has no default collection.
  noDefaultCollection,
  /// The service does not answer, or answers with something else.
  unavailable
};

/// One item of the service: its D-Bus object path, plain attributes, label
/// and secret.
struct RemoteItem {
  std::string path;
  Attributes attributes;
  std::string label;
  std::vector<std::uint8_t> secret;
};

/// A connection to the Secret Service of the session bus. Calls answer with
/// an Outcome; only running out of memory throws.
class SecretServiceClient {
public:
  // Defined here, so that the module and the program each have what they
  // need of the class without linking the other.
  virtual ~SecretServiceClient() = default;

  /// The path of the default collection, when it exists and is unlocked.
  virtual Outcome openDefaultCollection(std::string &path) = 0;

  /// Every item whose attributes include all of \p attributes, secrets
  /// included; locked when one of them is locked.
  virtual Outcome search(const Attributes &attributes,
                         std::vector<RemoteItem> &items) = 0;

  /// Creates \p item (its path is not used) in \p collection.
  virtual Outcome create(const std::string &collection,
                         const RemoteItem &item) = 0;

  /// Gives the item at \p item.path the secret, attributes and label of
  /// \p item.
  virtual Outcome replace(const RemoteItem &item) = 0;

  virtual Outcome remove(const std::string &path) = 0;
};

/// The module's one entry point, found by entrySymbol: a client that the
/// caller owns, or nullptr with the reason in \p reason when no Secret
/// Service with a default collection answers on the session bus.
using OpenClient = SecretServiceClient *(std::string &reason);
inline constexpr char entrySymbol[] = "kestruneOpenSecretService";

} // namespace securestore::secretservice

#endif
