// The module kestrune-secret-service.so: the Secret Service client of
// SecretServiceClient.h over libsecret and GLib's D-Bus.

#include "SecureStore/SecretServiceClient.h"

#include <memory>
#include <string_view>
#include <type_traits>
#include <utility>

// The path-level calls (search, create, delete by D-Bus path) have been
// stable for years; libsecret still asks for this acknowledgement.
#define SECRET_API_SUBJECT_TO_CHANGE
#include <libsecret/secret.h>

namespace securestore::secretservice {

namespace {

constexpr char busName[] = "org.freedesktop.secrets";
constexpr char servicePath[] = "/org/freedesktop/secrets";
constexpr char serviceInterface[] = "org.freedesktop.Secret.Service";
constexpr char collectionInterface[] = "org.freedesktop.Secret.Collection";
constexpr int probeTimeoutMs = 5000;

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

struct CharsDeleter {
  void operator()(gchar *text) const { g_free(text); }
};
using CharsPtr = std::unique_ptr<gchar, CharsDeleter>;

// A GError of the service as an outcome. A locked item or collection can't
// be used without a prompt, which this client never shows.
Outcome outcomeOf(const GError *error) {
  if (!error)
    return Outcome::unavailable;
  if (error->domain == SECRET_ERROR) {
    switch (error->code) {
    case SECRET_ERROR_IS_LOCKED:
      return Outcome::locked;
    case SECRET_ERROR_NO_SUCH_OBJECT:
      return Outcome::noSuchObject;
    case SECRET_ERROR_ALREADY_EXISTS:
      return Outcome::alreadyExists;
    default:
      return Outcome::unavailable;
    }
  }
  if (g_dbus_error_is_remote_error(error)) {
    CharsPtr remote(g_dbus_error_get_remote_error(error));
    std::string_view name = remote ? remote.get() : "";
    if (name == "org.freedesktop.Secret.Error.IsLocked")
      return Outcome::locked;
    if (name == "org.freedesktop.Secret.Error.NoSuchObject")
      return Outcome::noSuchObject;
  }
  return Outcome::unavailable;
}

HashTablePtr tableOf(const Attributes &attributes) {
  HashTablePtr table(
      g_hash_table_new_full(g_str_hash, g_str_equal, g_free, g_free));
  for (const auto &[key, value] : attributes)
    g_hash_table_replace(table.get(), g_strdup(key.c_str()),
                         g_strdup(value.c_str()));
  return table;
}

Attributes attributesOfTable(GHashTable *table) {
  Attributes attributes;
  GHashTableIter iterator;
  gpointer key = nullptr;
  gpointer value = nullptr;
  g_hash_table_iter_init(&iterator, table);
  while (g_hash_table_iter_next(&iterator, &key, &value))
    attributes.emplace(static_cast<const gchar *>(key),
                       static_cast<const gchar *>(value));
  return attributes;
}

ValuePtr secretOf(const RemoteItem &item) {
  return ValuePtr(secret_value_new(
      reinterpret_cast<const gchar *>(item.secret.data()),
      static_cast<gssize>(item.secret.size()), "application/octet-stream"));
}

class LibsecretClient final : public SecretServiceClient {
public:
  LibsecretClient(GObjectPtr<GDBusConnection> connection,
                  GObjectPtr<SecretService> service)
      : connection(std::move(connection)), service(std::move(service)) {}

  Outcome openDefaultCollection(std::string &path) override {
    GError *rawError = nullptr;
    VariantPtr alias(g_dbus_connection_call_sync(
        connection.get(), busName, servicePath, serviceInterface, "ReadAlias",
        g_variant_new("(s)", "default"), G_VARIANT_TYPE("(o)"),
        G_DBUS_CALL_FLAGS_NO_AUTO_START, -1, nullptr, &rawError));
    ErrorPtr error(rawError);
    if (!alias)
      return outcomeOf(error.get());
    const gchar *collection = nullptr;
    g_variant_get(alias.get(), "(&o)", &collection);
    if (std::string_view(collection) == "/")
      return Outcome::noDefaultCollection;
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
      return outcomeOf(error.get());
    GVariant *boxed = nullptr;
    g_variant_get(locked.get(), "(v)", &boxed);
    VariantPtr flag(boxed);
    if (!g_variant_is_of_type(flag.get(), G_VARIANT_TYPE_BOOLEAN))
      return Outcome::unavailable;
    return g_variant_get_boolean(flag.get()) ? Outcome::locked : Outcome::ok;
  }

  Outcome search(const Attributes &attributes,
                 std::vector<RemoteItem> &items) override {
    HashTablePtr search = tableOf(attributes);
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
      return outcomeOf(error.get());
    if (locked && locked.get()[0])
      return Outcome::locked;
    if (!unlocked || !unlocked.get()[0])
      return Outcome::ok;

    rawError = nullptr;
    HashTablePtr secrets(secret_service_get_secrets_for_dbus_paths_sync(
        service.get(), const_cast<const gchar **>(unlocked.get()), nullptr,
        &rawError));
    error.reset(rawError);
    if (!secrets)
      return outcomeOf(error.get());

    for (gchar **path = unlocked.get(); *path; ++path) {
      GObjectPtr<SecretItem> proxy;
      if (Outcome outcome = itemAt(*path, proxy); outcome != Outcome::ok)
        return outcome;
      auto *secret =
          static_cast<SecretValue *>(g_hash_table_lookup(secrets.get(), *path));
      if (!secret)
        return Outcome::locked;
      RemoteItem item{*path, {}, {}, {}};
      HashTablePtr table(secret_item_get_attributes(proxy.get()));
      item.attributes = attributesOfTable(table.get());
      CharsPtr label(secret_item_get_label(proxy.get()));
      item.label = label ? label.get() : "";
      gsize length = 0;
      const gchar *bytes = secret_value_get(secret, &length);
      auto *begin = reinterpret_cast<const std::uint8_t *>(bytes);
      item.secret.assign(begin, begin + length);
      items.push_back(std::move(item));
    }
    return Outcome::ok;
  }

  Outcome create(const std::string &collection,
                 const RemoteItem &item) override {
    GVariantBuilder builder;
    g_variant_builder_init(&builder, G_VARIANT_TYPE("a{ss}"));
    for (const auto &[key, value] : item.attributes)
      g_variant_builder_add(&builder, "{ss}", key.c_str(), value.c_str());
    HashTablePtr properties(g_hash_table_new_full(
        g_str_hash, g_str_equal, nullptr,
        reinterpret_cast<GDestroyNotify>(g_variant_unref)));
    g_hash_table_insert(
        properties.get(),
        const_cast<gchar *>("org.freedesktop.Secret.Item.Label"),
        g_variant_ref_sink(g_variant_new_string(item.label.c_str())));
    g_hash_table_insert(
        properties.get(),
        const_cast<gchar *>("org.freedesktop.Secret.Item.Attributes"),
        g_variant_ref_sink(g_variant_builder_end(&builder)));

    ValuePtr secret = secretOf(item);
    GError *rawError = nullptr;
    CharsPtr path(secret_service_create_item_dbus_path_sync(
        service.get(), collection.c_str(), properties.get(), secret.get(),
        SECRET_ITEM_CREATE_NONE, nullptr, &rawError));
    ErrorPtr error(rawError);
    return path ? Outcome::ok : outcomeOf(error.get());
  }

  Outcome replace(const RemoteItem &item) override {
    GObjectPtr<SecretItem> proxy;
    if (Outcome outcome = itemAt(item.path.c_str(), proxy);
        outcome != Outcome::ok)
      return outcome;
    ValuePtr secret = secretOf(item);
    HashTablePtr attributes = tableOf(item.attributes);
    GError *rawError = nullptr;
    if (!secret_item_set_secret_sync(proxy.get(), secret.get(), nullptr,
                                     &rawError) ||
        !secret_item_set_attributes_sync(proxy.get(), nullptr, attributes.get(),
                                         nullptr, &rawError) ||
        !secret_item_set_label_sync(proxy.get(), item.label.c_str(), nullptr,
                                    &rawError)) {
      ErrorPtr error(rawError);
      return outcomeOf(error.get());
    }
    return Outcome::ok;
  }

  Outcome remove(const std::string &path) override {
    GError *rawError = nullptr;
    if (secret_service_delete_item_dbus_path_sync(service.get(), path.c_str(),
                                                  nullptr, &rawError))
      return Outcome::ok;
    ErrorPtr error(rawError);
    return outcomeOf(error.get());
  }

private:
  Outcome itemAt(const gchar *path, GObjectPtr<SecretItem> &proxy) {
    GError *rawError = nullptr;
    proxy.reset(secret_item_new_for_dbus_path_sync(
        service.get(), path, SECRET_ITEM_NONE, nullptr, &rawError));
    ErrorPtr error(rawError);
    return proxy ? Outcome::ok : outcomeOf(error.get());
  }

  GObjectPtr<GDBusConnection> connection;
  GObjectPtr<SecretService> service;
};

LibsecretClient *fail(std::string &reason, std::string why) {
  reason = std::move(why);
  return nullptr;
}

// Opens the Secret Service on the process's session bus (GLib keeps one
// session connection per process). The caller has made sure that a bus is
// there, so GLib never tries to launch one.
LibsecretClient *openClient(std::string &reason) {
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
  // session and proxies live exactly as long as this client.
  rawError = nullptr;
  GObjectPtr<SecretService> service(secret_service_open_sync(
      SECRET_TYPE_SERVICE, nullptr, SECRET_SERVICE_OPEN_SESSION, nullptr,
      &rawError));
  error.reset(rawError);
  if (!service)
    return fail(reason, std::string("cannot open the Secret Service: ") +
                            (error ? error->message : "unknown error"));
  return new LibsecretClient(std::move(connection), std::move(service));
}

} // namespace

} // namespace securestore::secretservice

// The entry that the program finds by name: extern "C" for an unmangled
// symbol: the module's one entry point.
extern "C" __attribute__((visibility("default")))
securestore::secretservice::SecretServiceClient *
kestruneOpenSecretService(std::string &reason) {
  namespace secretservice = securestore::secretservice;
  static_assert(std::string_view(secretservice::entrySymbol) ==
                "kestruneOpenSecretService");
  static_assert(std::is_same_v<decltype(kestruneOpenSecretService),
                               secretservice::OpenClient>);
  return secretservice::openClient(reason);
}
