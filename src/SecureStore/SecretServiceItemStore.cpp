#include "SecureStore/SecretServiceItemStore.h"

#include "SecureStore/ItemCodec.h"
#include "SecureStore/ItemTable.h"
#include "SecureStore/SecConstants.h"
#include "SecureStore/SecretServiceClient.h"
#include "SecureStore/StoreLock.h"

#include "Platform/Module.h"

#include <cstdlib>
#include <filesystem>
#include <map>
#include <mutex>
#include <vector>

namespace securestore {

namespace {

namespace fs = std::filesystem;
using secretservice::Attributes;
using secretservice::Outcome;
using secretservice::RemoteItem;
using secretservice::SecretServiceClient;

constexpr char schemaName[] = "org.kestrune.cli.Keychain";

using securestore::statusOf;

OSStatus statusOf(Outcome outcome) {
  switch (outcome) {
  case Outcome::ok:
    return 0;
  case Outcome::locked:
    return statusOf(Status::Case::interactionNotAllowed);
  case Outcome::noSuchObject:
    return statusOf(Status::Case::invalidItemRef);
  case Outcome::alreadyExists:
    return statusOf(Status::Case::duplicateItem);
  case Outcome::noDefaultCollection:
    return statusOf(Status::Case::noDefaultKeychain);
  case Outcome::unavailable:
    break;
  }
  return statusOf(Status::Case::notAvailable);
}

// The plain attributes by which items are found: service (or server) and
// account, whatever else an item carries, so that items stored by hand with
// secret-tool count too. A search for neither, which would list every item
// of every program, is kept to this store's own items.
Attributes searchAttributes(const Dictionary &dictionary) {
  Attributes search;
  if (const std::string *service = findText(dictionary, kSecAttrService))
    search["service"] = *service;
  if (const std::string *server = findText(dictionary, kSecAttrServer))
    search["server"] = *server;
  if (search.empty()) {
    search["xdg:schema"] = schemaName;
    if (const std::string *itemClass = findText(dictionary, kSecClass))
      search["class"] = *itemClass;
  }
  if (const std::string *account = findText(dictionary, kSecAttrAccount))
    search["account"] = *account;
  return search;
}

// The attributes this store writes: class, service or server and account in
// plain text, for the service and for people; the identifier; and every
// attribute in "attributes".
Attributes itemAttributes(const StoredItem &item) {
  Attributes attributes{{"xdg:schema", schemaName}, {"id", item.id}};
  if (const std::string *itemClass = findText(item.attributes, kSecClass))
    attributes["class"] = *itemClass;
  if (const std::string *service = findText(item.attributes, kSecAttrService))
    attributes["service"] = *service;
  if (const std::string *server = findText(item.attributes, kSecAttrServer))
    attributes["server"] = *server;
  if (const std::string *account = findText(item.attributes, kSecAttrAccount))
    attributes["account"] = *account;
  Dictionary rest = item.attributes;
  rest.erase(std::string(kSecValueData));
  attributes["attributes"] = encodeAttributes(rest);
  return attributes;
}

std::string itemLabel(const StoredItem &item) {
  if (const std::string *label = findText(item.attributes, kSecAttrLabel))
    return *label;
  std::string owner;
  if (const std::string *service = findText(item.attributes, kSecAttrService))
    owner = *service;
  else if (const std::string *server =
               findText(item.attributes, kSecAttrServer))
    owner = *server;
  const std::string *account = findText(item.attributes, kSecAttrAccount);
  return account ? owner + " " + *account : owner;
}

// A service item as this store reads it. Items of this store carry their
// attributes; an item made by another program counts as a generic password
// of its service and account, known by its path.
std::optional<StoredItem> storedItemOf(const RemoteItem &remote) {
  const Attributes &plain = remote.attributes;
  auto schema = plain.find("xdg:schema");
  if (schema != plain.end() && schema->second == schemaName) {
    auto id = plain.find("id");
    auto encoded = plain.find("attributes");
    if (id == plain.end() || encoded == plain.end())
      return std::nullopt;
    std::optional<Dictionary> decoded = decodeAttributes(encoded->second);
    if (!decoded)
      return std::nullopt;
    return StoredItem{id->second, std::move(*decoded)};
  }
  Dictionary attributes{
      {std::string(kSecClass), std::string(kSecClassGenericPassword)},
      {std::string(kSecAttrLabel), remote.label}};
  for (auto [plainName, key] :
       {std::pair{"service", kSecAttrService}, {"account", kSecAttrAccount}})
    if (auto found = plain.find(plainName); found != plain.end())
      attributes.emplace(key, found->second);
  return StoredItem{remote.path, std::move(attributes)};
}

class SecretServiceItemStore final : public ItemStore {
public:
  explicit SecretServiceItemStore(std::unique_ptr<SecretServiceClient> client)
      : client(std::move(client)) {}

  OSStatus copyMatching(const Dictionary &query, CopyResult *result) override {
    std::lock_guard lock(mutex);
    Loaded loaded;
    if (OSStatus status = load(query, loaded))
      return status;
    return loaded.table.copyMatching(query, result);
  }

  OSStatus addItem(const Dictionary &attributes) override {
    std::lock_guard lock(mutex);
    Loaded loaded;
    if (OSStatus status = load(attributes, loaded))
      return status;
    std::size_t before = loaded.table.items.size();
    if (OSStatus status = loaded.table.addItem(
            attributes, std::chrono::system_clock::now(), makeItemId()))
      return status;
    return statusOf(client->create(
        loaded.collection, remoteItemOf(loaded.table.items.at(before), {})));
  }

  OSStatus updateItems(const Dictionary &query,
                       const Dictionary &attributesToUpdate) override {
    std::lock_guard lock(mutex);
    if (!hasOnlyUtf8(attributesToUpdate))
      return statusOf(Status::Case::param);
    Loaded loaded;
    if (OSStatus status = load(query, loaded))
      return status;
    std::vector<std::size_t> changed;
    if (OSStatus status = loaded.table.updateItems(
            query, attributesToUpdate, std::chrono::system_clock::now(),
            &changed))
      return status;
    for (std::size_t index : changed) {
      const StoredItem &item = loaded.table.items[index];
      // Attributes that another program gave the item stay with it.
      if (Outcome outcome =
              client->replace(remoteItemOf(item, loaded.remote.at(item.id)));
          outcome != Outcome::ok)
        return statusOf(outcome);
    }
    return 0;
  }

  OSStatus deleteItems(const Dictionary &query) override {
    std::lock_guard lock(mutex);
    Loaded loaded;
    if (OSStatus status = load(query, loaded))
      return status;
    std::vector<StoredItem> removed;
    if (OSStatus status = loaded.table.deleteItems(query, &removed))
      return status;
    for (const StoredItem &item : removed)
      if (Outcome outcome = client->remove(loaded.remote.at(item.id).path);
          outcome != Outcome::ok)
        return statusOf(outcome);
    return 0;
  }

  AccessControlResult createAccessControl(const std::string &protection,
                                          std::uint64_t flags) override {
    return makeAccessControlWithoutPolicy(protection, flags);
  }

  std::string describe() const override {
    return "Secret Service (default collection)";
  }

  // The service has no transactions: changes of the processes of one user
  // take turns under a lock of ours, and a change that fails halfway is
  // taken back item by item.
  OSStatus
  transact(const std::function<OSStatus(ItemStore &)> &change) override {
    StoreLock lock;
    if (OSStatus status =
            lock.acquire(changeLockPath(), StoreLock::Mode::exclusive))
      return status;
    return ItemStore::transact(change);
  }

  // A reading waits for a change under way, so it never sees half of one.
  // Where there is no lock to share, nobody has changed anything through it.
  void readSnapshot(const std::function<void(ItemStore &)> &read) override {
    StoreLock lock;
    (void)lock.acquire(changeLockPath(), StoreLock::Mode::shared);
    read(*this);
  }

private:
  // In the user's runtime folder when there is one, else beside the file
  // store.
  static fs::path changeLockPath() {
    if (const char *runtime = std::getenv("XDG_RUNTIME_DIR");
        runtime && *runtime && fs::path(runtime).is_absolute()) {
      std::error_code ignored;
      if (fs::is_directory(runtime, ignored))
        return fs::path(runtime) / "kestrune-cli.lock";
    }
    return defaultFileStorePath().parent_path() / "secret-service.lock";
  }

  struct Loaded {
    ItemTable table;
    std::string collection;
    /// The service's item under each item identifier.
    std::map<std::string, RemoteItem> remote;
  };

  // \p item as the service keeps it, over the plain attributes of \p before.
  static RemoteItem remoteItemOf(const StoredItem &item, RemoteItem before) {
    for (auto &[key, value] : itemAttributes(item))
      before.attributes.insert_or_assign(key, std::move(value));
    before.label = itemLabel(item);
    before.secret.clear();
    if (auto data = item.attributes.find(kSecValueData);
        data != item.attributes.end())
      if (const Bytes *value = std::get_if<Bytes>(&data->second))
        before.secret = *value;
    return before;
  }

  // Reads the items that may match \p dictionary: those with the same
  // service or server and account.
  OSStatus load(const Dictionary &dictionary, Loaded &loaded) {
    // D-Bus carries UTF-8 only; anything else is refused before it is sent.
    if (!hasOnlyUtf8(dictionary))
      return statusOf(Status::Case::param);
    if (Outcome outcome = client->openDefaultCollection(loaded.collection);
        outcome != Outcome::ok)
      return statusOf(outcome);
    std::vector<RemoteItem> found;
    if (Outcome outcome = client->search(searchAttributes(dictionary), found);
        outcome != Outcome::ok)
      return statusOf(outcome);
    for (RemoteItem &remote : found) {
      std::optional<StoredItem> item = storedItemOf(remote);
      if (!item || loaded.remote.contains(item->id))
        return statusOf(Status::Case::invalidKeychain);
      auto *begin = remote.secret.data();
      item->attributes.insert_or_assign(
          std::string(kSecValueData),
          Bytes(begin, begin + remote.secret.size()));
      loaded.remote.emplace(item->id, std::move(remote));
      loaded.table.items.push_back(std::move(*item));
    }
    return 0;
  }

  std::mutex mutex;
  std::unique_ptr<SecretServiceClient> client;
};

// The session bus is there when its address is known, or when the usual
// socket exists. Asking GLib without either would try to launch a bus.
bool hasSessionBus() {
  if (const char *address = std::getenv("DBUS_SESSION_BUS_ADDRESS");
      address && *address)
    return true;
  const char *runtime = std::getenv("XDG_RUNTIME_DIR");
  if (!runtime || !*runtime)
    return false;
  std::error_code ignored;
  return fs::is_socket(fs::path(runtime) / "bus", ignored);
}

std::unique_ptr<ItemStore> fail(std::string *reason, std::string why) {
  if (reason)
    *reason = std::move(why);
  return nullptr;
}

// The module's entry; nullptr with the reason in \p problem when the module
// is missing. A module that loads stays: GLib can't be unloaded.
secretservice::OpenClient *loadModule(std::string &problem) {
#ifdef KESTRUNE_SECRET_SERVICE_MODULE
  return reinterpret_cast<secretservice::OpenClient *>(
      platform::findModuleEntry(KESTRUNE_SECRET_SERVICE_MODULE,
                                secretservice::entrySymbol, problem));
#else
  problem = "built without libsecret";
  return nullptr;
#endif
}

} // namespace

std::unique_ptr<ItemStore> openSecretServiceItemStore(std::string *reason) {
  if (!hasSessionBus())
    return fail(reason, "no D-Bus session bus");
  std::string problem;
  secretservice::OpenClient *open = loadModule(problem);
  if (!open)
    return fail(reason, problem);
  std::unique_ptr<SecretServiceClient> client(open(problem));
  if (!client)
    return fail(reason, problem);
  return std::make_unique<SecretServiceItemStore>(std::move(client));
}

} // namespace securestore
