#ifndef KESTRUNECLI_SECURESTORE_KEYCHAIN_H
#define KESTRUNECLI_SECURESTORE_KEYCHAIN_H

#include "SecureStore/Dictionary.h"
#include "SecureStore/ItemStore.h"
#include "SecureStore/KeychainTypes.h"
#include "SecureStore/Status.h"

#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <type_traits>
#include <utility>
#include <vector>

namespace securestore {

/// Text and byte values under text keys, kept as keychain items. A Keychain
/// holds its Options and never changes: every configuring call returns a
/// new object. Each operation builds kSec... dictionaries and calls an
/// ItemStore; failures are thrown as Status (or PlatformError, both
/// securestore::Error), and some print one line on standard output first,
/// as documented per operation.
///
/// The item store is the process-wide defaultItemStore() unless one was
/// given with withItemStore(); the store is looked up at each operation, so
/// building a Keychain touches no store.
class Keychain {
public:
  class StringSubscript;
  class DataSubscript;

  /// service is the running program's bundle identifier; Linux programs have
  /// none, so it stays empty.
  Keychain();
  /// Generic passwords of \p service.
  explicit Keychain(std::string service);
  /// Generic passwords of \p service in \p accessGroup.
  Keychain(std::string service, std::string accessGroup);
  /// As Keychain(), in \p accessGroup.
  [[nodiscard]] static Keychain withAccessGroup(std::string accessGroup);
  /// Internet passwords of \p server.
  Keychain(
      ServerUrl server, ProtocolType protocolType,
      std::optional<std::string> accessGroup = std::nullopt,
      AuthenticationType authenticationType = AuthenticationType::defaultType);
  /// Internet passwords of the URL \p server. Throws std::invalid_argument
  /// when the text is no URL.
  Keychain(
      std::string_view server, ProtocolType protocolType,
      std::optional<std::string> accessGroup = std::nullopt,
      AuthenticationType authenticationType = AuthenticationType::defaultType);

  /// A copy that uses \p store instead of the process-wide default. The
  /// store must outlive the copy and everything copied from it.
  [[nodiscard]] Keychain withItemStore(ItemStore &store) const;
  /// The store the operations call.
  ItemStore &getItemStore() const;

  // Read accessors, one per Options field. server and protocolType are set
  // on internet-password keychains only.
  const Options &getOptions() const noexcept { return options; }
  ItemClass itemClass() const noexcept { return options.itemClass; }
  const std::string &service() const noexcept { return options.service; }
  const std::optional<std::string> &accessGroup() const noexcept {
    return options.accessGroup;
  }
  const std::optional<ServerUrl> &server() const noexcept {
    return options.server;
  }
  std::optional<ProtocolType> protocolType() const noexcept {
    return options.protocolType;
  }
  AuthenticationType authenticationType() const noexcept {
    return options.authenticationType;
  }
  Accessibility accessibility() const noexcept { return options.accessibility; }
  std::optional<AuthenticationPolicy> authenticationPolicy() const noexcept {
    return options.authenticationPolicy;
  }
  bool synchronizable() const noexcept { return options.synchronizable; }
  const std::optional<std::string> &label() const noexcept {
    return options.label;
  }
  const std::optional<std::string> &comment() const noexcept {
    return options.comment;
  }
  const std::optional<std::string> &authenticationPrompt() const noexcept {
    return options.authenticationPrompt;
  }
  std::optional<AuthenticationUI> authenticationUI() const noexcept {
    return options.authenticationUI;
  }
  const AuthenticationContextRef &authenticationContext() const noexcept {
    return options.authenticationContext;
  }

  // Fluent copies: each returns a new Keychain with one change.
  [[nodiscard]] Keychain accessibility(Accessibility accessibility) const;
  [[nodiscard]] Keychain
  accessibility(Accessibility accessibility,
                AuthenticationPolicy authenticationPolicy) const;
  [[nodiscard]] Keychain synchronizable(bool synchronizable) const;
  [[nodiscard]] Keychain label(std::string label) const;
  [[nodiscard]] Keychain comment(std::string comment) const;
  /// Writes every pair of \p attributes over the stored attribute map.
  [[nodiscard]] Keychain attributes(const Dictionary &attributes) const;
  [[nodiscard]] Keychain authenticationPrompt(std::string prompt) const;
  [[nodiscard]] Keychain authenticationUI(AuthenticationUI ui) const;
  [[nodiscard]] Keychain
  authenticationContext(AuthenticationContextRef context) const;

  /// The text under \p key, or std::nullopt when none is stored. Throws the
  /// store's Status (after its "OSStatus error:[…] …" line); bytes that are
  /// not UTF-8 print "failed to convert data to string" and throw
  /// conversionError.
  [[nodiscard]] std::optional<std::string>
  get(const std::string &key,
      bool ignoringAttributeSynchronizable = true) const;
  /// The same as get.
  [[nodiscard]] std::optional<std::string>
  getString(const std::string &key,
            bool ignoringAttributeSynchronizable = true) const;
  /// The bytes under \p key, or std::nullopt when none is stored. A store
  /// answer that is not bytes throws unexpectedError without a line.
  [[nodiscard]] std::optional<Bytes>
  getData(const std::string &key,
          bool ignoringAttributeSynchronizable = true) const;
  /// What \p handler returns when given the attributes of the item under
  /// \p key (value included), or std::nullopt when none is stored.
  template <typename Handler>
  auto get(const std::string &key, bool ignoringAttributeSynchronizable,
           Handler &&handler) const
      -> std::invoke_result_t<Handler, std::optional<Attributes>> {
    return std::forward<Handler>(handler)(
        fetchAttributes(key, ignoringAttributeSynchronizable));
  }

  /// Stores \p value under \p key: adds the item, or updates it when one is
  /// there. Text that is not UTF-8 prints "failed to convert string to data"
  /// and throws conversionError.
  void set(std::string_view value, const std::string &key,
           bool ignoringAttributeSynchronizable = true) const;
  void set(const Bytes &value, const std::string &key,
           bool ignoringAttributeSynchronizable = true) const;
  /// Removes the item under \p key; removing what is not there succeeds.
  void remove(const std::string &key,
              bool ignoringAttributeSynchronizable = true) const;
  /// Removes every item of this keychain.
  void removeAll() const;
  /// Runs \p change with a copy of this keychain whose operations make one
  /// change of the store: other processes see all of its writes or none,
  /// and their changes wait until it is over. When \p change throws, none
  /// of its writes stay and the exception goes on; when the change can't be
  /// kept, it throws the store's Status (after its "OSStatus error:[…] …"
  /// line) and none of its writes stay either.
  void transaction(const std::function<void(const Keychain &)> &change) const;
  /// Runs \p read with a copy of this keychain that reads the items as
  /// they stood at one instant, whatever other processes change meanwhile.
  void snapshot(const std::function<void(const Keychain &)> &read) const;

  /// Whether an item is stored under \p key.
  [[nodiscard]] bool contains(const std::string &key,
                              bool withoutAuthenticationUI = false) const;

  /// The key of every item of this keychain.
  std::vector<std::string> allKeys() const;
  /// Every item of this keychain, prettified.
  std::vector<Dictionary> allItems() const;
  /// (service or server, key) of every item of \p itemClass in the default
  /// store.
  static std::vector<std::pair<std::string, std::string>>
  allKeys(ItemClass itemClass);
  /// Every item of \p itemClass in the default store, prettified.
  static std::vector<Dictionary> allItems(ItemClass itemClass);

  /// Turns raw attribute maps into maps with readable keys: "class",
  /// "accessGroup", "service" or "server"/"protocol"/"authenticationType",
  /// "key", "value", "accessibility", "synchronizable".
  static std::vector<Dictionary> prettify(ItemClass itemClass,
                                          const std::vector<Dictionary> &items);

  /// The Status of \p status. Unless it is userCanceled, prints
  /// "OSStatus error:[{code}] {message}" first.
  static Status securityError(OSStatus status);

  /// "[]", or "[\n" then "  {item}\n" per prettified item, then "]".
  std::string description() const;
  /// The raw attribute maps, printed as a list.
  std::string debugDescription() const;

  /// Text subscript: reading gives the text or std::nullopt, swallowing every
  /// failure; writing a text stores it, writing std::nullopt removes it.
  [[nodiscard]] StringSubscript operator[](std::string key) const;
  [[nodiscard]] StringSubscript subscriptString(std::string key) const;
  [[nodiscard]] DataSubscript subscriptData(std::string key) const;
  /// The attributes of the item under \p key; failures give std::nullopt.
  [[nodiscard]] std::optional<Attributes>
  subscriptAttributes(const std::string &key) const;

private:
  explicit Keychain(Options options, ItemStore *store);
  std::optional<Attributes>
  fetchAttributes(const std::string &key,
                  bool ignoringAttributeSynchronizable) const;
  std::vector<Dictionary> items() const;

  Options options;
  /// nullptr: the process-wide default store.
  ItemStore *store = nullptr;
};

/// The text subscript of one key. Holds a copy of its Keychain.
class Keychain::StringSubscript {
public:
  StringSubscript(Keychain keychain, std::string key)
      : keychain(std::move(keychain)), key(std::move(key)) {}
  std::optional<std::string> read() const;
  operator std::optional<std::string>() const { return read(); }
  void write(const std::optional<std::string> &value) const;
  StringSubscript &operator=(const std::optional<std::string> &value) {
    write(value);
    return *this;
  }

private:
  Keychain keychain;
  std::string key;
};

/// The byte subscript of one key. Holds a copy of its Keychain.
class Keychain::DataSubscript {
public:
  DataSubscript(Keychain keychain, std::string key)
      : keychain(std::move(keychain)), key(std::move(key)) {}
  std::optional<Bytes> read() const;
  operator std::optional<Bytes>() const { return read(); }
  void write(const std::optional<Bytes> &value) const;
  DataSubscript &operator=(const std::optional<Bytes> &value) {
    write(value);
    return *this;
  }

private:
  Keychain keychain;
  std::string key;
};

} // namespace securestore

#endif
