#include "SecureStore/ItemTable.h"

#include "Platform/UrlText.h"
#include "SecureStore/KeychainTypes.h"
#include "SecureStore/SecConstants.h"

#include <algorithm>
#include <array>
#include <random>

namespace securestore {

namespace {

constexpr std::array<std::string_view, 5> genericPrimaryKey = {
    kSecClass, kSecAttrService, kSecAttrAccount, kSecAttrAccessGroup,
    kSecAttrSynchronizable};
constexpr std::array<std::string_view, 10> internetPrimaryKey = {
    kSecClass,
    kSecAttrServer,
    kSecAttrPort,
    kSecAttrProtocol,
    kSecAttrAuthenticationType,
    kSecAttrAccount,
    kSecAttrPath,
    kSecAttrSecurityDomain,
    kSecAttrAccessGroup,
    kSecAttrSynchronizable};

bool isAttributeKey(std::string_view key) {
  return key.starts_with("kSecAttr");
}

bool isUseKey(std::string_view key) { return key.starts_with("kSecUse"); }

bool isReturnKey(std::string_view key) {
  return key == kSecReturnData || key == kSecReturnAttributes ||
         key == kSecReturnRef || key == kSecReturnPersistentRef;
}

bool isSynchronizable(const Dictionary &item) {
  auto found = item.find(kSecAttrSynchronizable);
  if (found == item.end())
    return false;
  const bool *flag = std::get_if<bool>(&found->second);
  return flag && *flag;
}

} // namespace

// Every text of a dictionary, keys included, must be UTF-8: no store can
// keep anything else faithfully.
bool hasOnlyUtf8(const Dictionary &dictionary) {
  for (const auto &[key, value] : dictionary) {
    if (!platform::isValidUtf8(key))
      return false;
    if (const std::string *text = std::get_if<std::string>(&value);
        text && !platform::isValidUtf8(*text))
      return false;
    if (const AccessControl *control = std::get_if<AccessControl>(&value);
        control && !platform::isValidUtf8(control->protection))
      return false;
  }
  return true;
}

namespace {

OSStatus checkClass(const Dictionary &dictionary) {
  const std::string *itemClass = findText(dictionary, kSecClass);
  if (!itemClass)
    return Status(Status::Case::param).rawValue();
  if (!fromRawValue<ItemClass>(*itemClass))
    return Status(Status::Case::noSuchClass).rawValue();
  return 0;
}

enum class QueryUse { search, change };

// A search may carry match limits and return keys; the query of an update or
// delete carries no return keys.
OSStatus checkQuery(const Dictionary &query, QueryUse use) {
  if (!hasOnlyUtf8(query))
    return Status(Status::Case::param).rawValue();
  if (OSStatus status = checkClass(query))
    return status;
  for (const auto &[key, value] : query) {
    if (key == kSecClass || isUseKey(key))
      continue;
    if (key == kSecAttrSynchronizable) {
      const std::string *any = std::get_if<std::string>(&value);
      if (!std::holds_alternative<bool>(value) &&
          !(any && *any == kSecAttrSynchronizableAny))
        return Status(Status::Case::param).rawValue();
      continue;
    }
    if (isAttributeKey(key))
      continue;
    if (key == kSecMatchLimit) {
      const std::string *limit = std::get_if<std::string>(&value);
      if (!limit ||
          (*limit != kSecMatchLimitOne && *limit != kSecMatchLimitAll))
        return Status(Status::Case::param).rawValue();
      continue;
    }
    if (isReturnKey(key) && use == QueryUse::search &&
        std::holds_alternative<bool>(value))
      continue;
    return Status(Status::Case::param).rawValue();
  }
  return 0;
}

// The attributes an item may hold: kSecAttr... keys and the value.
OSStatus checkAttributes(const Dictionary &attributes) {
  if (!hasOnlyUtf8(attributes))
    return Status(Status::Case::param).rawValue();
  for (const auto &[key, value] : attributes) {
    if (isUseKey(key) || key == kSecClass)
      continue;
    if (!isAttributeKey(key) && key != kSecValueData)
      return Status(Status::Case::param).rawValue();
    if (std::holds_alternative<AuthenticationContextRef>(value))
      return Status(Status::Case::itemInvalidValue).rawValue();
    if (key == kSecValueData && !std::holds_alternative<Bytes>(value))
      return Status(Status::Case::param).rawValue();
    if (key == kSecAttrSynchronizable && !std::holds_alternative<bool>(value))
      return Status(Status::Case::param).rawValue();
    if (key == kSecAttrAccessControl &&
        !std::holds_alternative<AccessControl>(value))
      return Status(Status::Case::param).rawValue();
    if (key == kSecAttrAccessible) {
      const std::string *text = std::get_if<std::string>(&value);
      if (!text || !fromRawValue<Accessibility>(*text))
        return Status(Status::Case::param).rawValue();
    }
  }
  return 0;
}

bool matches(const Dictionary &item, const Dictionary &query) {
  for (const auto &[key, value] : query) {
    if (key != kSecClass && !isAttributeKey(key))
      continue;
    if (key == kSecAttrSynchronizable) {
      if (const bool *flag = std::get_if<bool>(&value))
        if (*flag != isSynchronizable(item))
          return false;
      continue;
    }
    auto found = item.find(key);
    if (found == item.end() || found->second != value)
      return false;
  }
  return query.contains(kSecAttrSynchronizable) || !isSynchronizable(item);
}

bool samePrimaryKey(const Dictionary &a, const Dictionary &b) {
  const std::string *itemClass = findText(a, kSecClass);
  bool internet = itemClass && *itemClass == kSecClassInternetPassword;
  auto same = [&](std::string_view key) {
    if (key == kSecAttrSynchronizable)
      return isSynchronizable(a) == isSynchronizable(b);
    auto inA = a.find(key);
    auto inB = b.find(key);
    if (inA == a.end() || inB == b.end())
      return inA == a.end() && inB == b.end();
    return inA->second == inB->second;
  };
  if (internet) {
    for (std::string_view key : internetPrimaryKey)
      if (!same(key))
        return false;
    return true;
  }
  for (std::string_view key : genericPrimaryKey)
    if (!same(key))
      return false;
  return true;
}

// Whether a change made two items of \p after share a primary key that
// they did not share in \p before. Items that already did (another program
// may have stored the same item twice) are changed together.
bool addsDuplicates(const std::vector<StoredItem> &before,
                    const std::vector<StoredItem> &after) {
  for (std::size_t i = 0; i < after.size(); ++i)
    for (std::size_t j = i + 1; j < after.size(); ++j)
      if (samePrimaryKey(after[i].attributes, after[j].attributes) &&
          !samePrimaryKey(before[i].attributes, before[j].attributes))
        return true;
  return false;
}

bool wants(const Dictionary &query, std::string_view key) {
  auto found = query.find(key);
  if (found == query.end())
    return false;
  const bool *flag = std::get_if<bool>(&found->second);
  return flag && *flag;
}

// Writes one attribute over an item. An access control and a plain
// accessibility exclude each other.
void writeAttribute(Dictionary &item, const std::string &key,
                    const Value &value) {
  if (isUseKey(key) || key == kSecClass)
    return;
  if (key == kSecAttrAccessControl)
    item.erase(kSecAttrAccessible);
  if (key == kSecAttrAccessible)
    item.erase(kSecAttrAccessControl);
  item.insert_or_assign(key, value);
}

} // namespace

Dictionary sameServiceQuery(const Dictionary &dictionary) {
  const std::string *itemClass = findText(dictionary, kSecClass);
  bool internet = itemClass && *itemClass == kSecClassInternetPassword;
  Dictionary query;
  auto copy = [&](std::string_view key) {
    auto found = dictionary.find(key);
    if (key != kSecAttrAccount && found != dictionary.end())
      query.insert(*found);
  };
  if (internet)
    std::for_each(internetPrimaryKey.begin(), internetPrimaryKey.end(), copy);
  else
    std::for_each(genericPrimaryKey.begin(), genericPrimaryKey.end(), copy);
  query.insert_or_assign(std::string(kSecAttrSynchronizable),
                         std::string(kSecAttrSynchronizableAny));
  return query;
}

const std::string *findText(const Dictionary &dictionary,
                            std::string_view key) {
  auto found = dictionary.find(key);
  if (found == dictionary.end())
    return nullptr;
  return std::get_if<std::string>(&found->second);
}

OSStatus ItemTable::copyMatching(const Dictionary &query,
                                 CopyResult *result) const {
  if (OSStatus status = checkQuery(query, QueryUse::search))
    return status;
  const std::string *limit = findText(query, kSecMatchLimit);
  bool all = limit && *limit == kSecMatchLimitAll;
  std::vector<const StoredItem *> found;
  for (const StoredItem &item : items)
    if (matches(item.attributes, query)) {
      found.push_back(&item);
      if (!all)
        break;
    }
  if (found.empty())
    return Status(Status::Case::itemNotFound).rawValue();
  if (!result)
    return 0;

  bool data = wants(query, kSecReturnData);
  bool attributes = wants(query, kSecReturnAttributes);
  bool persistentRef = wants(query, kSecReturnPersistentRef);
  bool ref = wants(query, kSecReturnRef);
  auto describe = [&](const StoredItem &item) {
    Dictionary described;
    if (attributes)
      for (const auto &[key, value] : item.attributes)
        if (key != kSecValueData)
          described.emplace(key, value);
    if (data)
      if (auto value = item.attributes.find(kSecValueData);
          value != item.attributes.end())
        described.emplace(kSecValueData, value->second);
    if (persistentRef)
      described.emplace(kSecValuePersistentRef, toBytes(item.id));
    return described;
  };

  if (!data && !attributes && !persistentRef && !ref) {
    *result = std::monostate{};
    return 0;
  }
  if (all) {
    std::vector<Dictionary> list;
    for (const StoredItem *item : found)
      list.push_back(describe(*item));
    *result = std::move(list);
    return 0;
  }
  if (data && !attributes && !persistentRef && !ref) {
    auto value = found.front()->attributes.find(kSecValueData);
    const Bytes *bytes = value == found.front()->attributes.end()
                             ? nullptr
                             : std::get_if<Bytes>(&value->second);
    *result = bytes ? *bytes : Bytes{};
    return 0;
  }
  *result = describe(*found.front());
  return 0;
}

OSStatus ItemTable::addItem(const Dictionary &attributes, Date now,
                            std::string id) {
  if (OSStatus status = checkClass(attributes))
    return status;
  if (OSStatus status = checkAttributes(attributes))
    return status;
  StoredItem item{std::move(id), {}};
  item.attributes.emplace(kSecClass, *findText(attributes, kSecClass));
  for (const auto &[key, value] : attributes)
    writeAttribute(item.attributes, key, value);
  item.attributes.try_emplace(kSecAttrSynchronizable, false);
  if (!item.attributes.contains(kSecAttrAccessControl))
    item.attributes.try_emplace(kSecAttrAccessible,
                                std::string(kSecAttrAccessibleWhenUnlocked));
  item.attributes.try_emplace(kSecValueData, Bytes{});
  item.attributes.insert_or_assign(kSecAttrCreationDate, now);
  item.attributes.insert_or_assign(kSecAttrModificationDate, now);
  for (const StoredItem &other : items)
    if (samePrimaryKey(other.attributes, item.attributes))
      return Status(Status::Case::duplicateItem).rawValue();
  items.push_back(std::move(item));
  return 0;
}

OSStatus ItemTable::updateItems(const Dictionary &query,
                                const Dictionary &changes, Date now,
                                std::vector<std::size_t> *changed) {
  if (OSStatus status = checkQuery(query, QueryUse::change))
    return status;
  if (changes.contains(kSecClass))
    return Status(Status::Case::param).rawValue();
  if (OSStatus status = checkAttributes(changes))
    return status;
  std::vector<StoredItem> updated = items;
  std::vector<std::size_t> indexes;
  for (std::size_t i = 0; i < updated.size(); ++i) {
    if (!matches(updated[i].attributes, query))
      continue;
    for (const auto &[key, value] : changes)
      writeAttribute(updated[i].attributes, key, value);
    updated[i].attributes.insert_or_assign(kSecAttrModificationDate, now);
    indexes.push_back(i);
  }
  if (indexes.empty())
    return Status(Status::Case::itemNotFound).rawValue();
  if (addsDuplicates(items, updated))
    return Status(Status::Case::duplicateItem).rawValue();
  items = std::move(updated);
  if (changed)
    *changed = std::move(indexes);
  return 0;
}

OSStatus ItemTable::deleteItems(const Dictionary &query,
                                std::vector<StoredItem> *removed) {
  if (OSStatus status = checkQuery(query, QueryUse::change))
    return status;
  std::vector<StoredItem> kept;
  std::vector<StoredItem> gone;
  for (StoredItem &item : items)
    (matches(item.attributes, query) ? gone : kept).push_back(std::move(item));
  items = std::move(kept);
  if (gone.empty())
    return Status(Status::Case::itemNotFound).rawValue();
  if (removed)
    *removed = std::move(gone);
  return 0;
}

std::string makeItemId() {
  static constexpr char digits[] = "0123456789abcdef";
  std::random_device device;
  std::string id;
  for (int i = 0; i < 4; ++i) {
    std::uint32_t word = device();
    for (int j = 0; j < 8; ++j, word >>= 4)
      id.push_back(digits[word & 0xF]);
  }
  return id;
}

AccessControlResult
makeAccessControlWithoutPolicy(const std::string &protection,
                               std::uint64_t flags) {
  if (!fromRawValue<Accessibility>(protection))
    return {std::nullopt,
            PlatformError("NSOSStatusErrorDomain",
                          Status(Status::Case::param).rawValue(),
                          {{std::string(NSLocalizedDescriptionKey),
                            "unknown accessibility " + protection}})};
  if (flags != 0)
    return {std::nullopt,
            PlatformError("NSOSStatusErrorDomain",
                          Status(Status::Case::unimplemented).rawValue(),
                          {{std::string(NSLocalizedDescriptionKey),
                            "this item store cannot enforce an "
                            "authentication policy"}})};
  return {AccessControl{protection, flags}, std::nullopt};
}

} // namespace securestore
