#ifndef KESTRUNECLI_SECURESTORE_ITEMSTORE_H
#define KESTRUNECLI_SECURESTORE_ITEMSTORE_H

#include "SecureStore/Dictionary.h"
#include "SecureStore/Error.h"
#include "SecureStore/Status.h"

#include <cstdint>
#include <filesystem>
#include <functional>
#include <optional>
#include <string>

namespace securestore {

/// What an item store gives for an access-control request: the object, or
/// nothing and perhaps an error.
struct AccessControlResult {
  std::optional<AccessControl> accessControl;
  std::optional<PlatformError> error;
};

/// Where keychain items live. Every call takes dictionaries of kSec... keys
/// and answers with a status number of the catalogue (0 for success,
/// Status::Case::itemNotFound when nothing matches). Stores never throw for
/// a bad store or a bad request: they answer with a status.
///
/// Common rules of every store: kSecClass is required; attribute keys
/// (kSecAttr...) match by equality, except that kSecAttrSynchronizable may
/// be kSecAttrSynchronizableAny, and a query without it matches only items
/// that are not synchronizable; kSecMatchLimit is kSecMatchLimitOne (the
/// default) or kSecMatchLimitAll; kSecUse... keys are carried, not matched.
/// Texts must be UTF-8, else the call answers Status::Case::param.
class ItemStore {
public:
  virtual ~ItemStore();

  /// Looks items up. With \p result, fills it after the query's kSecReturn...
  /// keys: the bytes of one item (kSecReturnData alone), the attributes of
  /// one item, or a list of attribute maps (kSecMatchLimitAll). Without it
  /// only reports whether a match exists.
  virtual OSStatus copyMatching(const Dictionary &query,
                                CopyResult *result) = 0;

  /// Creates one item; Status::Case::duplicateItem if one with the same
  /// class, service or server, account, access group and synchronizable
  /// state exists.
  virtual OSStatus addItem(const Dictionary &attributes) = 0;

  /// Writes \p attributesToUpdate over every item that matches \p query.
  virtual OSStatus updateItems(const Dictionary &query,
                               const Dictionary &attributesToUpdate) = 0;

  /// Deletes every item that matches \p query.
  virtual OSStatus deleteItems(const Dictionary &query) = 0;

  /// Makes an access control object of the accessibility raw value
  /// \p protection and the policy flags \p flags.
  virtual AccessControlResult createAccessControl(const std::string &protection,
                                                  std::uint64_t flags) = 0;

  /// Where the items live, for people: "file store at /…/keychain".
  virtual std::string describe() const = 0;

  /// Runs \p change as one change of the store and returns its status, or
  /// the status of keeping the change when that fails. \p change makes its
  /// calls on the store it is given, which answers like this one. Other
  /// processes see all of the change or none of it: when \p change answers
  /// a status other than 0 or throws (the exception goes on), or the change
  /// can't be kept, the items are left as they were. Changes of other
  /// processes through transact wait for this one to end.
  ///
  /// By default every write is journaled and, on failure, undone with the
  /// store's own calls, and no lock is taken; stores override this with
  /// what they can do better.
  virtual OSStatus transact(const std::function<OSStatus(ItemStore &)> &change);

  /// Runs \p read on the items as they stand at one instant: the store given
  /// to \p read answers every copyMatching alike whatever other processes
  /// change meanwhile. By default it reads this store directly.
  virtual void readSnapshot(const std::function<void(ItemStore &)> &read);
};

/// The store every Keychain uses unless it is given its own: the Secret
/// Service when a D-Bus session bus is reachable and a Secret Service with a
/// default collection runs on it, otherwise the file store at
/// defaultFileStorePath(). Chosen once per process, at the first use. With
/// the Secret Service, every item it writes or deletes also takes the items
/// of the same service out of the file store, so that one account is kept in
/// one place; reads use the Secret Service alone.
ItemStore &defaultItemStore();

/// The file store's place: $XDG_DATA_HOME/kestrune-cli/keychain when
/// XDG_DATA_HOME is an absolute path, else
/// ~/.local/share/kestrune-cli/keychain.
std::filesystem::path defaultFileStorePath();

} // namespace securestore

#endif
