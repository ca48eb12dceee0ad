#include "SecureStore/SecretServiceItemStore.h"

#include "SecureStore/ItemCodec.h"
#include "SecureStore/ItemTable.h"
#include "SecureStore/SecConstants.h"

#include <cstdlib>
#include <filesystem>
#include <map>
#include <mutex>
#include <vector>

// The path-level calls (search, create, delete by D-Bus path) have been
// stable for years; libsecret still asks for this acknowledgement.
#define SECRET_API_SUBJECT_TO_CHANGE
#include <libsecret/secret.h>

namespace securestore {

namespace {

constexpr char busName[] = "org.freedesktop.secrets";
constexpr char servicePath[] = "/org/freedesktop/secrets";
constexpr char serviceInterface[] = "org.freedesktop.Secret.Service";
constexpr char collectionInterface[] = "org.freedesktop.Secret.Collection";
constexpr char schemaName[] = "org.kestrune.cli.Keychain";
constexpr int probeTimeoutMs = 5000;

OSStatus statusOf(Status::Case errorCase) {
  return Status(errorCase).rawValue();
}

struct GObjectDeleter {
  void operator()(gpointer object) const { g_object_unref(object); }
};
template <typename T> using GObjectPtr = std::unique_ptr<T, GObjectDeleter>;

struct ErrorDeleter {
  void operator()(GError *error) const { g_error_free(error); }
};
using ErrorPtr = std::unique_ptr<GError, ErrorDeleter>;

struct HashTableDeleter {
  void operator()(GHashTable *table) const { g_hash_table_unref(table); }
};
using HashTablePtr = std::unique_ptr<GHashTable, HashTableDeleter>;

struct VariantDeleter {
  void operator()(GVariant *variant) const { g_variant_unref(variant); }
};
using VariantPtr = std::unique_ptr<GVariant, VariantDeleter>;

struct StrvDeleter {
  void operator()(gchar **strings) const { g_strfreev(strings); }
};
using StrvPtr = std::unique_ptr<gchar *, StrvDeleter>;

struct ValueDeleter {
  void operator()(SecretValue *value) const { secret_value_unref(value); }
};
using ValuePtr = std::unique_ptr<SecretValue, ValueDeleter>;

// A GError from the service as a catalogue status. A locked item or
// collection can't be used without a prompt, which this store never shows.
OSStatus statusOfError(const GError *error) {
  if (!error)
    return statusOf(Status::Case::notAvailable);
  if (error->domain == SECRET_ERROR) {
    switch (error->code) {
    case SECRET_ERROR_IS_LOCKED:
      return statusOf(Status::Case::interactionNotAllowed);
    case SECRET_ERROR_NO_SUCH_OBJECT:
      return statusOf(Status::Case::invalidItemRef);
    case SECRET_ERROR_ALREADY_EXISTS:
      return statusOf(Status::Case::duplicateItem);
    default:
      return statusOf(Status::Case::notAvailable);
    }
  }
  if (g_dbus_error_is_remote_error(error)) {
    gchar *remote = g_dbus_error_get_remote_error(error);
    std::string name = remote ? remote : "";
    g_free(remote);
    if (name == "org.freedesktop.Secret.Error.IsLocked")
      return statusOf(Status::Case::interactionNotAllowed);
    if (name == "org.freedesktop.Secret.Error.NoSuchObject")
      return statusOf(Status::Case::invalidItemRef);
  }
  return statusOf(Status::Case::notAvailable);
}

HashTablePtr newStringTable() {
  return HashTablePtr(
      g_hash_table_new_full(g_str_hash, g_str_equal, g_free, g_free));
}

void putString(GHashTable *table, const std::string &key,
               const std::string &value) {
  g_hash_table_replace(table, g_strdup(key.c_str()), g_strdup(value.c_str()));
}

std::optional<std::string> lookUpString(GHashTable *table, const char *key) {
  auto *value = static_cast<const gchar *>(g_hash_table_lookup(table, key));
  if (!value)
    return std::nullopt;
  return std::string(value);
}

// The plain attributes that let the service find an item, and that people
// see: class, service or server, account.
void putSearchAttributes(GHashTable *table, const Dictionary &dictionary) {
  putString(table, "xdg:schema", schemaName);
  if (const std::string *itemClass = findText(dictionary, kSecClass))
    putString(table, "class", *itemClass);
  if (const std::string *service = findText(dictionary, kSecAttrService))
    putString(table, "service", *service);
  if (const std::string *server = findText(dictionary, kSecAttrServer))
    putString(table, "server", *server);
  if (const std::string *account = findText(dictionary, kSecAttrAccount))
    putString(table, "account", *account);
}

HashTablePtr itemAttributes(const StoredItem &item) {
  HashTablePtr table = newStringTable();
  putSearchAttributes(table.get(), item.attributes);
  Dictionary rest = item.attributes;
  rest.erase(std::string(kSecValueData));
  putString(table.get(), "id", item.id);
  putString(table.get(), "attributes", encodeAttributes(rest));
  return table;
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

ValuePtr secretOf(const StoredItem &item) {
  Bytes bytes;
  if (auto data = item.attributes.find(kSecValueData);
      data != item.attributes.end())
    if (const Bytes *value = std::get_if<Bytes>(&data->second))
      bytes = *value;
  return ValuePtr(secret_value_new(
      reinterpret_cast<const gchar *>(bytes.data()),
      static_cast<gssize>(bytes.size()), "application/octet-stream"));
}

class SecretServiceItemStore final : public ItemStore {
public:
  SecretServiceItemStore(GObjectPtr<GDBusConnection> connection,
                         GObjectPtr<SecretService> service)
      : connection(std::move(connection)), service(std::move(service)) {}

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
    const StoredItem &item = loaded.table.items.at(before);

    GVariantBuilder builder;
    g_variant_builder_init(&builder, G_VARIANT_TYPE("a{ss}"));
    HashTablePtr table = itemAttributes(item);
    GHashTableIter iterator;
    gpointer key = nullptr;
    gpointer value = nullptr;
    g_hash_table_iter_init(&iterator, table.get());
    while (g_hash_table_iter_next(&iterator, &key, &value))
      g_variant_builder_add(&builder, "{ss}", static_cast<gchar *>(key),
                            static_cast<gchar *>(value));
    HashTablePtr properties(g_hash_table_new_full(
        g_str_hash, g_str_equal, nullptr,
        reinterpret_cast<GDestroyNotify>(g_variant_unref)));
    g_hash_table_insert(
        properties.get(),
        const_cast<gchar *>("org.freedesktop.Secret.Item.Label"),
        g_variant_ref_sink(g_variant_new_string(itemLabel(item).c_str())));
    g_hash_table_insert(
        properties.get(),
        const_cast<gchar *>("org.freedesktop.Secret.Item.Attributes"),
        g_variant_ref_sink(g_variant_builder_end(&builder)));

    ValuePtr secret = secretOf(item);
    GError *rawError = nullptr;
    gchar *path = secret_service_create_item_dbus_path_sync(
        service.get(), loaded.collection.c_str(), properties.get(),
        secret.get(), SECRET_ITEM_CREATE_NONE, nullptr, &rawError);
    ErrorPtr error(rawError);
    if (!path)
      return statusOfError(error.get());
    g_free(path);
    return 0;
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
      SecretItem *proxy = loaded.proxies.at(item.id).get();
      GError *rawError = nullptr;
      ValuePtr secret = secretOf(item);
      HashTablePtr attributes = itemAttributes(item);
      if (!secret_item_set_secret_sync(proxy, secret.get(), nullptr,
                                       &rawError) ||
          !secret_item_set_attributes_sync(proxy, nullptr, attributes.get(),
                                           nullptr, &rawError) ||
          !secret_item_set_label_sync(proxy, itemLabel(item).c_str(), nullptr,
                                      &rawError)) {
        ErrorPtr error(rawError);
        return statusOfError(error.get());
      }
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
    for (const StoredItem &item : removed) {
      GError *rawError = nullptr;
      if (!secret_service_delete_item_dbus_path_sync(
              service.get(), loaded.paths.at(item.id).c_str(), nullptr,
              &rawError)) {
        ErrorPtr error(rawError);
        return statusOfError(error.get());
      }
    }
    return 0;
  }

  AccessControlResult createAccessControl(const std::string &protection,
                                          std::uint64_t flags) override {
    return makeAccessControlWithoutPolicy(protection, flags);
  }

  std::string describe() const override {
    return "Secret Service (default collection)";
  }

private:
  struct Loaded {
    ItemTable table;
    std::string collection;
    std::map<std::string, std::string> paths;
    std::map<std::string, GObjectPtr<SecretItem>> proxies;
  };

  // The default collection's path, when it exists and is unlocked. Nothing
  // here may start a service or prompt.
  OSStatus openDefaultCollection(std::string &path) {
    GError *rawError = nullptr;
    VariantPtr alias(g_dbus_connection_call_sync(
        connection.get(), busName, servicePath, serviceInterface, "ReadAlias",
        g_variant_new("(s)", "default"), G_VARIANT_TYPE("(o)"),
        G_DBUS_CALL_FLAGS_NO_AUTO_START, -1, nullptr, &rawError));
    ErrorPtr error(rawError);
    if (!alias)
      return statusOfError(error.get());
    const gchar *collection = nullptr;
    g_variant_get(alias.get(), "(&o)", &collection);
    if (std::string_view(collection) == "/")
      return statusOf(Status::Case::noDefaultKeychain);
    path = collection;

    rawError = nullptr;
    VariantPtr locked(g_dbus_connection_call_sync(
        connection.get(), busName, path.c_str(),
        "org.freedesktop.DBus.Properties", "Get",
        g_variant_new("(ss)", collectionInterface, "Locked"),
        G_VARIANT_TYPE("(v)"), G_DBUS_CALL_FLAGS_NO_AUTO_START, -1, nullptr,
        &rawError));
    error.reset(rawError);
    if (!locked)
      return statusOfError(error.get());
    GVariant *boxed = nullptr;
    g_variant_get(locked.get(), "(v)", &boxed);
    VariantPtr flag(boxed);
    if (!g_variant_is_of_type(flag.get(), G_VARIANT_TYPE_BOOLEAN))
      return statusOf(Status::Case::notAvailable);
    if (g_variant_get_boolean(flag.get()))
      return statusOf(Status::Case::interactionNotAllowed);
    return 0;
  }

  // Reads the items that may match \p dictionary: those of this store with
  // the same class, service or server and account.
  OSStatus load(const Dictionary &dictionary, Loaded &loaded) {
    // D-Bus carries UTF-8 only; anything else is refused before it is sent.
    if (!hasOnlyUtf8(dictionary))
      return statusOf(Status::Case::param);
    if (OSStatus status = openDefaultCollection(loaded.collection))
      return status;
    HashTablePtr search = newStringTable();
    putSearchAttributes(search.get(), dictionary);

    gchar **rawUnlocked = nullptr;
    gchar **rawLocked = nullptr;
    GError *rawError = nullptr;
    gboolean found = secret_service_search_for_dbus_paths_sync(
        service.get(), nullptr, search.get(), nullptr, &rawUnlocked, &rawLocked,
        &rawError);
    StrvPtr unlocked(rawUnlocked);
    StrvPtr locked(rawLocked);
    ErrorPtr error(rawError);
    if (!found)
      return statusOfError(error.get());
    if (locked && locked.get()[0])
      return statusOf(Status::Case::interactionNotAllowed);
    if (!unlocked || !unlocked.get()[0])
      return 0;

    rawError = nullptr;
    HashTablePtr secrets(secret_service_get_secrets_for_dbus_paths_sync(
        service.get(), const_cast<const gchar **>(unlocked.get()), nullptr,
        &rawError));
    error.reset(rawError);
    if (!secrets)
      return statusOfError(error.get());

    for (gchar **path = unlocked.get(); *path; ++path) {
      rawError = nullptr;
      GObjectPtr<SecretItem> proxy(secret_item_new_for_dbus_path_sync(
          service.get(), *path, SECRET_ITEM_NONE, nullptr, &rawError));
      error.reset(rawError);
      if (!proxy)
        return statusOfError(error.get());
      HashTablePtr attributes(secret_item_get_attributes(proxy.get()));
      std::optional<std::string> id = lookUpString(attributes.get(), "id");
      std::optional<std::string> encoded =
          lookUpString(attributes.get(), "attributes");
      std::optional<Dictionary> decoded;
      if (encoded)
        decoded = decodeAttributes(*encoded);
      if (!id || !decoded || loaded.paths.contains(*id))
        return statusOf(Status::Case::invalidKeychain);
      auto *secret =
          static_cast<SecretValue *>(g_hash_table_lookup(secrets.get(), *path));
      if (!secret)
        return statusOf(Status::Case::interactionNotAllowed);
      gsize length = 0;
      const gchar *bytes = secret_value_get(secret, &length);
      auto *begin = reinterpret_cast<const std::uint8_t *>(bytes);
      decoded->insert_or_assign(std::string(kSecValueData),
                                Bytes(begin, begin + length));
      loaded.table.items.push_back({*id, std::move(*decoded)});
      loaded.paths.emplace(*id, *path);
      loaded.proxies.emplace(*id, std::move(proxy));
    }
    return 0;
  }

  std::mutex mutex;
  GObjectPtr<GDBusConnection> connection;
  GObjectPtr<SecretService> service;
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
  return std::filesystem::is_socket(std::filesystem::path(runtime) / "bus",
                                    ignored);
}

std::unique_ptr<ItemStore> fail(std::string *reason, std::string why) {
  if (reason)
    *reason = std::move(why);
  return nullptr;
}

} // namespace

std::unique_ptr<ItemStore> openSecretServiceItemStore(std::string *reason) {
  if (!hasSessionBus())
    return fail(reason, "no D-Bus session bus");
  GError *rawError = nullptr;
  GObjectPtr<GDBusConnection> connection(
      g_bus_get_sync(G_BUS_TYPE_SESSION, nullptr, &rawError));
  ErrorPtr error(rawError);
  if (!connection)
    return fail(reason,
                std::string("cannot reach the session bus: ") + error->message);
  // A bus that goes away must end our calls, not the process.
  g_dbus_connection_set_exit_on_close(connection.get(), FALSE);

  // Only a service that already runs counts: starting one by activation
  // would give a locked keyring that nobody can unlock here.
  rawError = nullptr;
  VariantPtr owner(g_dbus_connection_call_sync(
      connection.get(), "org.freedesktop.DBus", "/org/freedesktop/DBus",
      "org.freedesktop.DBus", "GetNameOwner", g_variant_new("(s)", busName),
      G_VARIANT_TYPE("(s)"), G_DBUS_CALL_FLAGS_NONE, probeTimeoutMs, nullptr,
      &rawError));
  error.reset(rawError);
  if (!owner)
    return fail(reason, "no Secret Service runs on the session bus");

  rawError = nullptr;
  VariantPtr alias(g_dbus_connection_call_sync(
      connection.get(), busName, servicePath, serviceInterface, "ReadAlias",
      g_variant_new("(s)", "default"), G_VARIANT_TYPE("(o)"),
      G_DBUS_CALL_FLAGS_NO_AUTO_START, probeTimeoutMs, nullptr, &rawError));
  error.reset(rawError);
  if (!alias)
    return fail(reason, std::string("the Secret Service does not answer: ") +
                            error->message);
  const gchar *collection = nullptr;
  g_variant_get(alias.get(), "(&o)", &collection);
  if (std::string_view(collection) == "/")
    return fail(reason, "the Secret Service has no default collection");

  // A service of our own rather than libsecret's shared one, so that its
  // session and proxies live exactly as long as this store.
  rawError = nullptr;
  GObjectPtr<SecretService> service(secret_service_open_sync(
      SECRET_TYPE_SERVICE, nullptr, SECRET_SERVICE_OPEN_SESSION, nullptr,
      &rawError));
  error.reset(rawError);
  if (!service)
    return fail(reason, std::string("cannot open the Secret Service: ") +
                            (error ? error->message : "unknown error"));
  return std::make_unique<SecretServiceItemStore>(std::move(connection),
                                                  std::move(service));
}

} // namespace securestore
