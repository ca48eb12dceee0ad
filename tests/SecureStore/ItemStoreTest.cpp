// What a Keychain does on each real item store: the file store in a
// temporary folder, and the Secret Service of the session bus (skipped when
// none runs). One row per behaviour, each on a service of its own.

#include "SecureStore/FileItemStore.h"
#include "SecureStore/SecConstants.h"
#include "SecureStore/SecretServiceItemStore.h"
#include "StoreTesting.h"

#include <algorithm>
#include <random>

namespace securestore {
namespace {

struct FileStore {
  testsupport::TempDir directory;
  std::unique_ptr<ItemStore> store = std::make_unique<FileItemStore>(
      directory.path() / "kestrune-cli" / "keychain");
  std::string reason;
};

struct SecretServiceStore {
  std::string reason;
  std::unique_ptr<ItemStore> store = openSecretServiceItemStore(&reason);
};

std::string g(const Keychain &k, const std::string &key, bool any = true) {
  return k.get(key, any).value_or("absent") + " ";
}

std::string unique() {
  std::random_device device;
  return std::to_string(device()) + std::to_string(device());
}

const Bytes binary = {0x00, 0xFF, 0x0A, 0x00, 0x80, 'x'};
const Bytes latin1 = {'c', 'a', 'f', 0xE9};
const std::string noText = "failed to convert data to string\n";

struct Row {
  std::string name;
  std::function<std::string(const Keychain &k)> run;
  std::string expected;
};

const Row rows[] = {
    {"values are stored, replaced and removed",
     [](const Keychain &k) {
       std::string s = g(k, "u") + std::to_string(k.contains("u"));
       k.set("alice", "u");
       s += g(k, "u") + std::to_string(k.contains("u"));
       k.set("bob", "u");
       s += g(k, "u");
       k.remove("u");
       k.remove("u");
       return s + g(k, "u") + std::to_string(k.contains("u"));
     },
     "=> absent 0alice 1bob absent 0"},
    {"every byte of a value is kept",
     [](const Keychain &k) {
       k.set(binary, "b");
       k.set("", "e");
       k.set("🔑 ünïcode\n\ttext", "t");
       return std::to_string(k.getData("b") == binary) + g(k, "e") + g(k, "t");
     },
     "=> 1 🔑 ünïcode\n\ttext "},
    {"changing one item keeps the others",
     [](const Keychain &k) {
       k.set("1", "a"), k.set("2", "b"), k.set("3", "c"), k.set("two", "b");
       k.remove("c");
       std::vector<std::string> keys = k.allKeys();
       std::sort(keys.begin(), keys.end());
       return g(k, "a") + g(k, "b") + g(k, "c") + keys.at(0) + keys.at(1);
     },
     "=> 1 two absent ab"},
    {"services keep their own items",
     [](const Keychain &k) {
       Keychain other =
           Keychain(k.service() + "-other").withItemStore(k.getItemStore());
       k.set("one", "key");
       other.set("two", "key");
       k.removeAll();
       std::string s = g(k, "key") + g(other, "key");
       other.removeAll();
       return s + g(other, "key");
     },
     "=> absent two absent "},
    {"synchronizable items are seen only when asked",
     [](const Keychain &k) {
       Keychain cloud = k.synchronizable(true);
       cloud.set("cloud", "key", false);
       std::string s =
           g(k, "key", false) + g(cloud, "key", false) + g(k, "key");
       k.set("here", "key", false);
       return s + g(k, "key", false) + g(cloud, "key", false);
     },
     "=> absent cloud cloud here cloud "},
    {"attributes are kept, configured ones win, and an update rewrites "
     "accessibility",
     [](const Keychain &k) {
       k.label("label")
           .comment("comment")
           .accessibility(Accessibility::whenUnlocked)
           .attributes({{kSecAttrGeneric, toBytes("gen")}})
           .attributes({{kSecAttrLabel, std::string("wins")}})
           .set("v", "key");
       auto show = [&] {
         Attributes a = k.subscriptAttributes("key").value();
         return toText(*a.data()) + " " + *a.label() + " " +
                a.comment().value_or("-") + " " + *a.accessible() + " " +
                toText(a.generic().value_or(Bytes{})) + " " +
                std::to_string(*a.account() == "key" &&
                               *a.service() == k.service()) +
                "|";
       };
       std::string s = show();
       k.set("w", "key");
       return s + show();
     },
     "=> v wins comment " + std::string(kSecAttrAccessibleWhenUnlocked) +
         " gen 1|w wins comment " + kSecAttrAccessibleAfterFirstUnlock +
         " gen 1|"},
    {"the items are listed with readable keys",
     [](const Keychain &k) {
       k.set("1", "a");
       std::string text = k.description();
       text.replace(text.find(k.service()), k.service().size(), "S");
       return text;
     },
     "=> [\n  [\"accessibility\": \"AfterFirstUnlock\", \"class\": "
     "\"GenericPassword\", \"key\": \"a\", \"service\": \"S\", "
     "\"synchronizable\": \"false\"]\n]"},
    {"the class-wide lists read the default store",
     [](const Keychain &k) {
       k.set("x", "a");
       k.synchronizable(true).set("y", "b");
       setDefaultItemStore(&k.getItemStore());
       auto pairs = Keychain::allKeys(ItemClass::genericPassword);
       auto items = Keychain::allItems(ItemClass::genericPassword);
       setDefaultItemStore(nullptr);
       std::string s;
       for (const auto &[service, key] : pairs)
         s += service == k.service() ? key : "";
       std::sort(s.begin(), s.end());
       return s + " " +
              std::to_string(std::count_if(
                  items.begin(), items.end(), [&](const auto &item) {
                    auto service = item.find("service");
                    return service != item.end() &&
                           service->second == Value(k.service());
                  }));
     },
     "=> ab 1"},
    {"internet passwords are told apart by server, port and protocol",
     [](const Keychain &k) {
       std::string host = "h" + unique() + ".example.com";
       auto on = [&](const std::string &url, ProtocolType protocol) {
         return Keychain(url, protocol).withItemStore(k.getItemStore());
       };
       on("https://" + host + ":8443/path", ProtocolType::https)
           .set("secret", "alice");
       std::string s =
           g(on("https://" + host + ":8443/", ProtocolType::https), "alice") +
           g(on("https://" + host + ":8444/", ProtocolType::https), "alice") +
           g(on("https://" + host + ":8443/", ProtocolType::ftp), "alice") +
           g(on("https://x" + host + ":8443/", ProtocolType::https), "alice");
       on("https://" + host + ":8443/", ProtocolType::https).removeAll();
       return s;
     },
     "=> secret absent absent absent "},
    {"bytes that are not UTF-8 are kept but not read as text",
     [](const Keychain &k) {
       k.set(latin1, "p");
       return outcomesOf({[&] { return *k.get("p"); },
                          [&] { return k["p"].read().value_or("absent"); },
                          [&] {
                            k.set("caf\xE9", "u");
                            return "";
                          },
                          [&] {
                            k.set("x", "us\xE9r");
                            return "";
                          }}) +
              std::to_string(k.getData("p") == latin1);
     },
     "=> " + noText + "=> throws conversionError" + noText + "=> absent" +
         "failed to convert string to data\n=> throws conversionError" +
         "OSStatus error:[-50] One or more parameters passed to a function "
         "were not valid.\n=> throws param1"},
    {"an authentication policy that the store can't enforce writes nothing",
     [](const Keychain &k) {
       return outcomeOf([&] {
                k.accessibility(Accessibility::whenUnlocked,
                                AuthenticationPolicy::userPresence)
                    .set("v", "key");
                return "";
              }) +
              g(k, "key");
     },
     "=> this item store cannot enforce an authentication policy\n=> throws "
     "this item store cannot enforce an authentication policy"
     "absent "},
    {"the store answers the statuses of its rules",
     [](const Keychain &k) {
       ItemStore &store = k.getItemStore();
       Dictionary item = {{kSecClass, std::string(kSecClassGenericPassword)},
                          {kSecAttrService, k.service()},
                          {kSecAttrAccount, std::string("key")},
                          {kSecValueData, toBytes("v")}};
       Dictionary other = item, noClass = item, notText = item;
       other[kSecAttrAccount] = std::string("other");
       other.erase(kSecValueData);
       noClass.erase(kSecClass);
       notText[kSecAttrAccount] = std::string("\xFF\xFE");
       Dictionary change = {{kSecValueData, toBytes("x")}};
       std::string s;
       for (OSStatus status :
            {store.addItem(item), store.addItem(item),
             store.updateItems(other, change), store.deleteItems(other),
             store.copyMatching(other, nullptr),
             store.copyMatching(noClass, nullptr), store.addItem(notText)})
         s += std::to_string(status) + " ";
       return s + g(k, "key");
     },
     "=> 0 -25299 -25300 -25300 -25300 -50 -50 v "},
};

template <typename S> class ItemStoreTest : public testing::Test {};
using Stores = testing::Types<FileStore, SecretServiceStore>;
TYPED_TEST_SUITE(ItemStoreTest, Stores);

TYPED_TEST(ItemStoreTest, KeepsItemsAsTheKeychainAsks) {
  TypeParam fixture;
  if (!fixture.store)
    GTEST_SKIP() << "no Secret Service: " << fixture.reason;
  for (const Row &row : rows) {
    SCOPED_TRACE(row.name);
    Keychain k =
        Keychain("kestrune-test-" + unique()).withItemStore(*fixture.store);
    EXPECT_EQ(outcomeOf([&] { return row.run(k); }), row.expected);
    k.removeAll();
  }
}

} // namespace
} // namespace securestore
