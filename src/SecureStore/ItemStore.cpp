#include "SecureStore/ItemStore.h"

#include "Platform/UserFolders.h"
#include "SecureStore/FileItemStore.h"
#include "SecureStore/ItemTable.h"
#include "SecureStore/SecConstants.h"
#include "SecureStore/SecretServiceItemStore.h"

#include <cstdlib>
#include <memory>

namespace securestore {

ItemStore::~ItemStore() = default;

namespace {

// The query that finds exactly the item \p attributes describe: its class,
// service (or server and the like), account and synchronizable state.
Dictionary identityOf(const Dictionary &attributes) {
  Dictionary query = sameServiceQuery(attributes);
  if (auto account = attributes.find(kSecAttrAccount);
      account != attributes.end())
    query.insert(*account);
  auto synchronizable = attributes.find(kSecAttrSynchronizable);
  query.insert_or_assign(std::string(kSecAttrSynchronizable),
                         synchronizable != attributes.end()
                             ? synchronizable->second
                             : Value(false));
  return query;
}

// Passes every call on to a store and remembers how to take each write back:
// the items a change or removal found before it, and the items added.
class JournalingItemStore final : public ItemStore {
public:
  explicit JournalingItemStore(ItemStore &store) : store(store) {}

  OSStatus copyMatching(const Dictionary &query, CopyResult *result) override {
    return store.copyMatching(query, result);
  }

  OSStatus addItem(const Dictionary &attributes) override {
    OSStatus status = store.addItem(attributes);
    if (status == 0)
      entries.push_back({Entry::Kind::added, {identityOf(attributes)}});
    return status;
  }

  OSStatus updateItems(const Dictionary &query,
                       const Dictionary &attributesToUpdate) override {
    std::vector<Dictionary> before = itemsMatching(query);
    OSStatus status = store.updateItems(query, attributesToUpdate);
    if (status == 0)
      entries.push_back({Entry::Kind::updated, std::move(before)});
    return status;
  }

  OSStatus deleteItems(const Dictionary &query) override {
    std::vector<Dictionary> before = itemsMatching(query);
    OSStatus status = store.deleteItems(query);
    if (status == 0)
      entries.push_back({Entry::Kind::deleted, std::move(before)});
    return status;
  }

  AccessControlResult createAccessControl(const std::string &protection,
                                          std::uint64_t flags) override {
    return store.createAccessControl(protection, flags);
  }

  std::string describe() const override { return store.describe(); }

  /// Takes every write back, the last first. What can't be taken back stays
  /// as it is: there is nothing better to do with it.
  void undo() {
    for (auto entry = entries.rbegin(); entry != entries.rend(); ++entry)
      for (const Dictionary &item : entry->items)
        switch (entry->kind) {
        case Entry::Kind::added:
          (void)store.deleteItems(item);
          break;
        case Entry::Kind::updated: {
          Dictionary attributes = item;
          attributes.erase(std::string(kSecClass));
          (void)store.updateItems(identityOf(item), attributes);
          break;
        }
        case Entry::Kind::deleted:
          (void)store.addItem(item);
          break;
        }
    entries.clear();
  }

private:
  struct Entry {
    enum class Kind { added, updated, deleted };
    Kind kind;
    /// The identity of the item added; the items found before otherwise.
    std::vector<Dictionary> items;
  };

  // Every item \p query finds, attributes and value.
  std::vector<Dictionary> itemsMatching(const Dictionary &query) {
    Dictionary search = query;
    search[kSecMatchLimit] = std::string(kSecMatchLimitAll);
    search[kSecReturnAttributes] = true;
    search[kSecReturnData] = true;
    CopyResult result;
    if (store.copyMatching(search, &result) != 0)
      return {};
    if (auto *list = std::get_if<std::vector<Dictionary>>(&result))
      return std::move(*list);
    return {};
  }

  ItemStore &store;
  std::vector<Entry> entries;
};

} // namespace

OSStatus
ItemStore::transact(const std::function<OSStatus(ItemStore &)> &change) {
  JournalingItemStore journal(*this);
  OSStatus status = 0;
  try {
    status = change(journal);
  } catch (...) {
    journal.undo();
    throw;
  }
  if (status != 0)
    journal.undo();
  return status;
}

void ItemStore::readSnapshot(const std::function<void(ItemStore &)> &read) {
  read(*this);
}

namespace {

// One copy of the account: every call goes to the store chosen for the run,
// and once it has written or deleted an item of a service there, the other
// store keeps no item of that service: the items of a service make up one
// account, and a copy left behind would be a stale one, its password among
// them. The other store is only read until it holds such items, so it is
// never created for nothing, and what goes wrong there leaves them where
// they are without failing the call.
class OneAccountItemStore final : public ItemStore {
public:
  OneAccountItemStore(ItemStore &chosen, ItemStore &other)
      : chosen(chosen), other(other) {}

  OSStatus copyMatching(const Dictionary &query, CopyResult *result) override {
    return chosen.copyMatching(query, result);
  }

  OSStatus addItem(const Dictionary &attributes) override {
    OSStatus status = chosen.addItem(attributes);
    if (status == 0)
      removeOtherCopy(attributes);
    return status;
  }

  OSStatus updateItems(const Dictionary &query,
                       const Dictionary &attributesToUpdate) override {
    OSStatus status = chosen.updateItems(query, attributesToUpdate);
    if (status == 0)
      removeOtherCopy(query);
    return status;
  }

  OSStatus deleteItems(const Dictionary &query) override {
    OSStatus status = chosen.deleteItems(query);
    if (status != 0 && status != statusOf(Status::Case::itemNotFound))
      return status;
    return removeOtherCopy(query) ? 0 : status;
  }

  AccessControlResult createAccessControl(const std::string &protection,
                                          std::uint64_t flags) override {
    return chosen.createAccessControl(protection, flags);
  }

  std::string describe() const override { return chosen.describe(); }

  OSStatus
  transact(const std::function<OSStatus(ItemStore &)> &change) override {
    return chosen.transact([&](ItemStore &store) {
      OneAccountItemStore view(store, other);
      return change(view);
    });
  }

  void readSnapshot(const std::function<void(ItemStore &)> &read) override {
    chosen.readSnapshot(read);
  }

private:
  bool removeOtherCopy(const Dictionary &dictionary) {
    Dictionary service = sameServiceQuery(dictionary);
    return other.copyMatching(service, nullptr) == 0 &&
           other.deleteItems(service) == 0;
  }

  ItemStore &chosen;
  ItemStore &other;
};

// The one place where the process's store is chosen: the Secret Service
// when it runs, the file store otherwise. With the Secret Service, the file
// store is where a stale copy may lie.
// The store lives until the process ends and is never destroyed, so no
// D-Bus teardown runs inside exit().
ItemStore &automaticStore() {
  static ItemStore *store = [] {
    auto *fileStore = new FileItemStore(defaultFileStorePath());
    std::unique_ptr<ItemStore> secretService = openSecretServiceItemStore();
    if (secretService)
      return static_cast<ItemStore *>(
          new OneAccountItemStore(*secretService.release(), *fileStore));
    return static_cast<ItemStore *>(fileStore);
  }();
  return *store;
}

} // namespace

std::filesystem::path defaultFileStorePath() {
  std::filesystem::path dataHome;
  if (const char *xdg = std::getenv("XDG_DATA_HOME");
      xdg && *xdg && std::filesystem::path(xdg).is_absolute())
    dataHome = xdg;
  else
    dataHome = platform::homeDirectory() / ".local" / "share";
  return dataHome / "kestrune-cli" / "keychain";
}

ItemStore &defaultItemStore() { return automaticStore(); }

} // namespace securestore
