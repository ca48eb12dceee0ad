#ifndef KESTRUNECLI_SECURESTORE_ITEMCODEC_H
#define KESTRUNECLI_SECURESTORE_ITEMCODEC_H

// Private to SecureStore: the JSON form in which the file store keeps its
// items and the Secret Service store keeps an item's attributes.

#include "SecureStore/ItemTable.h"

#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace securestore {

/// The whole store file: a format name, a version and the items.
std::string encodeStore(const std::vector<StoredItem> &items);

/// Reads a store file into \p items. Answers 0, invalidKeychain for
/// anything that is not a well-formed store, or wrongSecVersion for a store
/// written in a later format.
OSStatus decodeStore(std::string_view text, std::vector<StoredItem> &items);

/// One item's attributes as JSON text.
std::string encodeAttributes(const Dictionary &attributes);

/// The attributes of encodeAttributes, or std::nullopt for malformed text.
std::optional<Dictionary> decodeAttributes(std::string_view text);

} // namespace securestore

#endif
