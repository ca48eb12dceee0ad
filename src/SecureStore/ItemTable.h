#ifndef KESTRUNECLI_SECURESTORE_ITEMTABLE_H
#define KESTRUNECLI_SECURESTORE_ITEMTABLE_H

// The query semantics that every item store shares, applied to a list of
// items held in memory: the stores of SecureStore build on it, and so does
// the tests' memory store (tests/Support/MemoryItemStore.h).

#include "SecureStore/ItemStore.h"

#include <string>
#include <vector>

namespace securestore {

/// One item: an identifier that stays with it, and its attributes, value
/// (kSecValueData) and dates included.
struct StoredItem {
  std::string id;
  Dictionary attributes;

  friend bool operator==(const StoredItem &, const StoredItem &) = default;
};

/// A list of items and the four item calls over it.
class ItemTable {
public:
  std::vector<StoredItem> items;

  OSStatus copyMatching(const Dictionary &query, CopyResult *result) const;

  /// Appends the new item, stamped with \p now and \p id.
  OSStatus addItem(const Dictionary &attributes, Date now, std::string id);

  /// \p changed receives the indexes of the items that were changed.
  OSStatus updateItems(const Dictionary &query, const Dictionary &changes,
                       Date now, std::vector<std::size_t> *changed = nullptr);

  /// \p removed receives the items that were deleted.
  OSStatus deleteItems(const Dictionary &query,
                       std::vector<StoredItem> *removed = nullptr);
};

/// A fresh random item identifier: 32 hexadecimal digits.
std::string makeItemId();

/// The access control answer of stores that cannot enforce authentication:
/// an object for an empty policy, otherwise an error saying so.
AccessControlResult
makeAccessControlWithoutPolicy(const std::string &protection,
                               std::uint64_t flags);

/// A query for every item of the class, service (or server, port,
/// protocol and the like) and access group of \p dictionary, whatever its
/// account, synchronizable or not.
Dictionary sameServiceQuery(const Dictionary &dictionary);

/// Whether every text of \p dictionary, keys included, is UTF-8.
bool hasOnlyUtf8(const Dictionary &dictionary);

/// The text value under \p key, if it is a text.
const std::string *findText(const Dictionary &dictionary, std::string_view key);

} // namespace securestore

#endif
