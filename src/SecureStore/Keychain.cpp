#include "SecureStore/Keychain.h"

#include "Platform/StandardOutput.h"
#include "Platform/UrlText.h"
#include "SecureStore/ItemTable.h"
#include "SecureStore/SecConstants.h"

#include <stdexcept>

namespace securestore {

namespace {

constexpr std::string_view dataConversionFailure =
    "failed to convert data to string";
constexpr std::string_view stringConversionFailure =
    "failed to convert string to data";

Value text(std::string_view value) { return std::string(value); }

// The dictionary every operation starts from.
Dictionary makeQuery(const Options &options,
                     bool ignoringAttributeSynchronizable) {
  Dictionary query;
  query[kSecClass] = text(rawValue(options.itemClass));
  if (options.accessGroup)
    query[kSecAttrAccessGroup] = *options.accessGroup;
  if (ignoringAttributeSynchronizable)
    query[kSecAttrSynchronizable] = text(kSecAttrSynchronizableAny);
  else
    query[kSecAttrSynchronizable] = options.synchronizable;
  switch (options.itemClass) {
  case ItemClass::genericPassword:
    query[kSecAttrService] = options.service;
    break;
  case ItemClass::internetPassword:
    if (options.server && options.server->getHost())
      query[kSecAttrServer] = *options.server->getHost();
    if (options.server && options.server->getPort())
      query[kSecAttrPort] = *options.server->getPort();
    if (options.protocolType)
      query[kSecAttrProtocol] = text(rawValue(*options.protocolType));
    query[kSecAttrAuthenticationType] =
        text(rawValue(options.authenticationType));
    break;
  }
  if (options.authenticationPrompt)
    query[kSecUseOperationPrompt] = *options.authenticationPrompt;
  if (options.authenticationContext)
    query[kSecUseAuthenticationContext] = options.authenticationContext;
  return query;
}

// Prints \p error and throws it.
template <typename E> [[noreturn]] void printAndThrow(const E &error) {
  platform::printLine(error.localizedDescription());
  throw error;
}

// The attributes of an add (with a key) or of an update (without one);
// Options.attributes win over everything computed. An access control that
// can't be made is printed and thrown: nothing is written.
Dictionary makeAttributes(const Options &options, ItemStore &store,
                          const std::optional<std::string> &key,
                          const Bytes &value) {
  Dictionary attributes;
  if (key) {
    attributes = makeQuery(options, true);
    attributes[kSecAttrAccount] = *key;
  }
  attributes[kSecValueData] = value;
  if (options.label)
    attributes[kSecAttrLabel] = *options.label;
  if (options.comment)
    attributes[kSecAttrComment] = *options.comment;
  if (!options.authenticationPolicy) {
    attributes[kSecAttrAccessible] = text(rawValue(options.accessibility));
  } else {
    AccessControlResult control =
        store.createAccessControl(std::string(rawValue(options.accessibility)),
                                  options.authenticationPolicy->rawValue);
    if (!control.accessControl) {
      if (control.error)
        printAndThrow(*control.error);
      printAndThrow(Status(Status::Case::unexpectedError));
    }
    attributes[kSecAttrAccessControl] = *control.accessControl;
  }
  attributes[kSecAttrSynchronizable] = options.synchronizable;
  for (const auto &[name, given] : options.attributes)
    attributes.insert_or_assign(name, given);
  return attributes;
}

std::optional<std::string> decode(const std::optional<Bytes> &bytes) {
  if (!bytes)
    return std::nullopt;
  std::string decoded = toText(*bytes);
  if (!platform::isValidUtf8(decoded)) {
    platform::printLine(dataConversionFailure);
    throw Status(Status::Case::conversionError);
  }
  return decoded;
}

bool isStatus(OSStatus status, Status::Case errorCase) {
  return status == static_cast<OSStatus>(errorCase);
}

} // namespace

Keychain::Keychain() = default;

Keychain::Keychain(std::string service) {
  options.service = std::move(service);
}

Keychain::Keychain(std::string service, std::string accessGroup) {
  options.service = std::move(service);
  options.accessGroup = std::move(accessGroup);
}

Keychain Keychain::withAccessGroup(std::string accessGroup) {
  Keychain keychain;
  keychain.options.accessGroup = std::move(accessGroup);
  return keychain;
}

Keychain::Keychain(ServerUrl server, ProtocolType protocolType,
                   std::optional<std::string> accessGroup,
                   AuthenticationType authenticationType) {
  options.itemClass = ItemClass::internetPassword;
  options.server = std::move(server);
  options.protocolType = protocolType;
  options.accessGroup = std::move(accessGroup);
  options.authenticationType = authenticationType;
}

namespace {
ServerUrl parseServer(std::string_view server) {
  std::optional<ServerUrl> url = ServerUrl::parse(server);
  if (!url)
    throw std::invalid_argument("not a URL: " + std::string(server));
  return *url;
}
} // namespace

Keychain::Keychain(std::string_view server, ProtocolType protocolType,
                   std::optional<std::string> accessGroup,
                   AuthenticationType authenticationType)
    : Keychain(parseServer(server), protocolType, std::move(accessGroup),
               authenticationType) {}

Keychain::Keychain(Options options, ItemStore *store)
    : options(std::move(options)), store(store) {}

Keychain Keychain::withItemStore(ItemStore &itemStore) const {
  return Keychain(options, &itemStore);
}

ItemStore &Keychain::getItemStore() const {
  return store ? *store : defaultItemStore();
}

Keychain Keychain::accessibility(Accessibility accessibility) const {
  Options changed = options;
  changed.accessibility = accessibility;
  return Keychain(std::move(changed), store);
}

Keychain
Keychain::accessibility(Accessibility accessibility,
                        AuthenticationPolicy authenticationPolicy) const {
  Options changed = options;
  changed.accessibility = accessibility;
  changed.authenticationPolicy = authenticationPolicy;
  return Keychain(std::move(changed), store);
}

Keychain Keychain::synchronizable(bool synchronizable) const {
  Options changed = options;
  changed.synchronizable = synchronizable;
  return Keychain(std::move(changed), store);
}

Keychain Keychain::label(std::string label) const {
  Options changed = options;
  changed.label = std::move(label);
  return Keychain(std::move(changed), store);
}

Keychain Keychain::comment(std::string comment) const {
  Options changed = options;
  changed.comment = std::move(comment);
  return Keychain(std::move(changed), store);
}

Keychain Keychain::attributes(const Dictionary &attributes) const {
  Options changed = options;
  for (const auto &[key, value] : attributes)
    changed.attributes.insert_or_assign(key, value);
  return Keychain(std::move(changed), store);
}

Keychain Keychain::authenticationPrompt(std::string prompt) const {
  Options changed = options;
  changed.authenticationPrompt = std::move(prompt);
  return Keychain(std::move(changed), store);
}

Keychain Keychain::authenticationUI(AuthenticationUI ui) const {
  Options changed = options;
  changed.authenticationUI = ui;
  return Keychain(std::move(changed), store);
}

Keychain
Keychain::authenticationContext(AuthenticationContextRef context) const {
  Options changed = options;
  changed.authenticationContext = std::move(context);
  return Keychain(std::move(changed), store);
}

std::optional<std::string>
Keychain::get(const std::string &key,
              bool ignoringAttributeSynchronizable) const {
  return decode(getData(key, ignoringAttributeSynchronizable));
}

std::optional<std::string>
Keychain::getString(const std::string &key,
                    bool ignoringAttributeSynchronizable) const {
  return get(key, ignoringAttributeSynchronizable);
}

std::optional<Bytes>
Keychain::getData(const std::string &key,
                  bool ignoringAttributeSynchronizable) const {
  Dictionary query = makeQuery(options, ignoringAttributeSynchronizable);
  query[kSecMatchLimit] = text(kSecMatchLimitOne);
  query[kSecReturnData] = true;
  query[kSecAttrAccount] = key;

  CopyResult result;
  OSStatus status = getItemStore().copyMatching(query, &result);
  if (status == 0) {
    if (const Bytes *bytes = std::get_if<Bytes>(&result))
      return *bytes;
    throw Status(Status::Case::unexpectedError);
  }
  if (isStatus(status, Status::Case::itemNotFound))
    return std::nullopt;
  throw securityError(status);
}

std::optional<Attributes>
Keychain::fetchAttributes(const std::string &key,
                          bool ignoringAttributeSynchronizable) const {
  Dictionary query = makeQuery(options, ignoringAttributeSynchronizable);
  query[kSecMatchLimit] = text(kSecMatchLimitOne);
  query[kSecReturnData] = true;
  query[kSecReturnAttributes] = true;
  query[kSecReturnRef] = true;
  query[kSecReturnPersistentRef] = true;
  query[kSecAttrAccount] = key;

  CopyResult result;
  OSStatus status = getItemStore().copyMatching(query, &result);
  if (status == 0) {
    if (Dictionary *attributes = std::get_if<Dictionary>(&result))
      return Attributes(std::move(*attributes));
    throw Status(Status::Case::unexpectedError);
  }
  if (isStatus(status, Status::Case::itemNotFound))
    return std::nullopt;
  throw securityError(status);
}

void Keychain::set(std::string_view value, const std::string &key,
                   bool ignoringAttributeSynchronizable) const {
  if (!platform::isValidUtf8(value)) {
    platform::printLine(stringConversionFailure);
    throw Status(Status::Case::conversionError);
  }
  set(toBytes(value), key, ignoringAttributeSynchronizable);
}

void Keychain::set(const Bytes &value, const std::string &key,
                   bool ignoringAttributeSynchronizable) const {
  ItemStore &itemStore = getItemStore();
  Dictionary lookUp = makeQuery(options, ignoringAttributeSynchronizable);
  lookUp[kSecAttrAccount] = key;
  lookUp[kSecReturnData] = true;
  lookUp[kSecUseAuthenticationUI] =
      text(rawValue(options.authenticationUI.value_or(AuthenticationUI::fail)));

  OSStatus status = itemStore.copyMatching(lookUp, nullptr);
  if (status == 0 || isStatus(status, Status::Case::interactionNotAllowed)) {
    // The search of an update always ignores the synchronizable state, so
    // the item found above is the one changed.
    Dictionary search = makeQuery(options, true);
    search[kSecAttrAccount] = key;
    Dictionary changes =
        makeAttributes(options, itemStore, std::nullopt, value);
    status = itemStore.updateItems(search, changes);
    if (status != 0)
      throw securityError(status);
    return;
  }
  if (isStatus(status, Status::Case::itemNotFound)) {
    Dictionary attributes = makeAttributes(options, itemStore, key, value);
    status = itemStore.addItem(attributes);
    if (status != 0)
      throw securityError(status);
    return;
  }
  throw securityError(status);
}

void Keychain::remove(const std::string &key,
                      bool ignoringAttributeSynchronizable) const {
  Dictionary query = makeQuery(options, ignoringAttributeSynchronizable);
  query[kSecAttrAccount] = key;
  OSStatus status = getItemStore().deleteItems(query);
  if (status != 0 && !isStatus(status, Status::Case::itemNotFound))
    throw securityError(status);
}

void Keychain::removeAll() const {
  Dictionary query = makeQuery(options, true);
  query[kSecMatchLimit] = text(kSecMatchLimitAll);
  OSStatus status = getItemStore().deleteItems(query);
  if (status != 0 && !isStatus(status, Status::Case::itemNotFound))
    throw securityError(status);
}

void Keychain::transaction(
    const std::function<void(const Keychain &)> &change) const {
  OSStatus status = getItemStore().transact([&](ItemStore &store) {
    change(withItemStore(store));
    return 0;
  });
  if (status != 0)
    throw securityError(status);
}

void Keychain::snapshot(
    const std::function<void(const Keychain &)> &read) const {
  getItemStore().readSnapshot(
      [&](ItemStore &store) { read(withItemStore(store)); });
}

bool Keychain::contains(const std::string &key,
                        bool withoutAuthenticationUI) const {
  Dictionary query = makeQuery(options, true);
  query[kSecAttrAccount] = key;
  if (withoutAuthenticationUI)
    query[kSecUseAuthenticationUI] = text(
        rawValue(options.authenticationUI.value_or(AuthenticationUI::fail)));
  else if (options.authenticationUI)
    query[kSecUseAuthenticationUI] = text(rawValue(*options.authenticationUI));

  OSStatus status = getItemStore().copyMatching(query, nullptr);
  if (status == 0)
    return true;
  if (isStatus(status, Status::Case::itemNotFound))
    return false;
  if (isStatus(status, Status::Case::interactionNotAllowed))
    return withoutAuthenticationUI;
  throw securityError(status);
}

std::vector<Dictionary> Keychain::items() const {
  Dictionary query = makeQuery(options, true);
  query[kSecMatchLimit] = text(kSecMatchLimitAll);
  query[kSecReturnAttributes] = true;
  CopyResult result;
  OSStatus status = getItemStore().copyMatching(query, &result);
  if (status == 0) {
    if (auto *list = std::get_if<std::vector<Dictionary>>(&result))
      return std::move(*list);
    return {};
  }
  if (!isStatus(status, Status::Case::itemNotFound))
    securityError(status);
  return {};
}

namespace {

std::vector<Dictionary> itemsOfClass(ItemClass itemClass,
                                     bool withSynchronizable) {
  Dictionary query;
  query[kSecClass] = text(rawValue(itemClass));
  if (withSynchronizable)
    query[kSecAttrSynchronizable] = text(kSecAttrSynchronizableAny);
  query[kSecMatchLimit] = text(kSecMatchLimitAll);
  query[kSecReturnAttributes] = true;
  CopyResult result;
  OSStatus status = defaultItemStore().copyMatching(query, &result);
  if (status == 0) {
    if (auto *list = std::get_if<std::vector<Dictionary>>(&result))
      return std::move(*list);
    return {};
  }
  if (!isStatus(status, Status::Case::itemNotFound))
    Keychain::securityError(status);
  return {};
}

} // namespace

std::vector<std::string> Keychain::allKeys() const {
  std::vector<std::string> keys;
  for (const Dictionary &item : prettify(options.itemClass, items()))
    if (const std::string *key = findText(item, "key"))
      keys.push_back(*key);
  return keys;
}

std::vector<Dictionary> Keychain::allItems() const {
  return prettify(options.itemClass, items());
}

std::vector<std::pair<std::string, std::string>>
Keychain::allKeys(ItemClass itemClass) {
  std::string_view owner =
      itemClass == ItemClass::genericPassword ? "service" : "server";
  std::vector<std::pair<std::string, std::string>> keys;
  for (const Dictionary &item :
       prettify(itemClass, itemsOfClass(itemClass, true))) {
    const std::string *first = findText(item, owner);
    const std::string *key = findText(item, "key");
    if (first && key)
      keys.emplace_back(*first, *key);
  }
  return keys;
}

std::vector<Dictionary> Keychain::allItems(ItemClass itemClass) {
  return prettify(itemClass, itemsOfClass(itemClass, false));
}

std::vector<Dictionary>
Keychain::prettify(ItemClass itemClass, const std::vector<Dictionary> &items) {
  std::vector<Dictionary> pretty;
  for (const Dictionary &attributes : items) {
    Dictionary item;
    item["class"] = text(securestore::description(itemClass));
    if (const std::string *group = findText(attributes, kSecAttrAccessGroup))
      item["accessGroup"] = *group;
    switch (itemClass) {
    case ItemClass::genericPassword:
      if (const std::string *service = findText(attributes, kSecAttrService))
        item["service"] = *service;
      break;
    case ItemClass::internetPassword:
      if (const std::string *server = findText(attributes, kSecAttrServer))
        item["server"] = *server;
      if (const std::string *raw = findText(attributes, kSecAttrProtocol))
        if (auto protocol = fromRawValue<ProtocolType>(*raw))
          item["protocol"] = text(securestore::description(*protocol));
      if (const std::string *raw =
              findText(attributes, kSecAttrAuthenticationType))
        if (auto type = fromRawValue<AuthenticationType>(*raw))
          item["authenticationType"] = text(securestore::description(*type));
      break;
    }
    if (const std::string *key = findText(attributes, kSecAttrAccount))
      item["key"] = *key;
    if (auto data = attributes.find(kSecValueData); data != attributes.end())
      if (const Bytes *bytes = std::get_if<Bytes>(&data->second)) {
        std::string decoded = toText(*bytes);
        if (platform::isValidUtf8(decoded))
          item["value"] = decoded;
        else
          item["value"] = *bytes;
      }
    if (const std::string *raw = findText(attributes, kSecAttrAccessible))
      if (auto accessibility = fromRawValue<Accessibility>(*raw))
        item["accessibility"] = text(securestore::description(*accessibility));
    if (auto sync = attributes.find(kSecAttrSynchronizable);
        sync != attributes.end())
      if (const bool *flag = std::get_if<bool>(&sync->second))
        item["synchronizable"] = text(*flag ? "true" : "false");
    pretty.push_back(std::move(item));
  }
  return pretty;
}

Status Keychain::securityError(OSStatus status) {
  Status error(status);
  if (error != Status(Status::Case::userCanceled))
    platform::printLine("OSStatus error:[" + std::to_string(error.errorCode()) +
                        "] " + std::string(error.description()));
  return error;
}

std::string Keychain::description() const {
  std::vector<Dictionary> all = allItems();
  if (all.empty())
    return "[]";
  std::string text = "[\n";
  for (const Dictionary &item : all)
    text += "  " + printDictionary(item) + "\n";
  return text + "]";
}

std::string Keychain::debugDescription() const {
  return printDictionaries(items());
}

Keychain::StringSubscript Keychain::operator[](std::string key) const {
  return StringSubscript(*this, std::move(key));
}

Keychain::StringSubscript Keychain::subscriptString(std::string key) const {
  return StringSubscript(*this, std::move(key));
}

Keychain::DataSubscript Keychain::subscriptData(std::string key) const {
  return DataSubscript(*this, std::move(key));
}

std::optional<Attributes>
Keychain::subscriptAttributes(const std::string &key) const {
  try {
    return fetchAttributes(key, true);
  } catch (const Error &) {
    // A failure reads as absence; securityError has printed its line.
    return std::nullopt;
  }
}

std::optional<std::string> Keychain::StringSubscript::read() const {
  try {
    return keychain.get(key, true);
  } catch (const Error &) {
    return std::nullopt;
  }
}

void Keychain::StringSubscript::write(
    const std::optional<std::string> &value) const {
  try {
    if (value)
      keychain.set(*value, key, true);
    else
      keychain.remove(key, true);
  } catch (const Error &) {
    // Subscript writes never fail; the printed line is the only trace.
  }
}

std::optional<Bytes> Keychain::DataSubscript::read() const {
  try {
    return keychain.getData(key, true);
  } catch (const Error &) {
    return std::nullopt;
  }
}

void Keychain::DataSubscript::write(const std::optional<Bytes> &value) const {
  try {
    if (value)
      keychain.set(*value, key, true);
    else
      keychain.remove(key, true);
  } catch (const Error &) {
    // Subscript writes never fail; the printed line is the only trace.
  }
}

} // namespace securestore
