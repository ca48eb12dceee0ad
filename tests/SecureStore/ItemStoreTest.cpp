// What a Keychain does on each item store: the one held in memory, the file
// store in a temporary folder, then the Secret Service of the session bus
// (skipped when none runs). One row per behaviour, each on a service of its
// own.

#include "SecureStore/FileItemStore.h"
#include "SecureStore/SecConstants.h"
#include "SecureStore/SecretServiceItemStore.h"
#include "StoreTesting.h"
#include "Support/MemoryItemStore.h"

#include <random>

namespace securestore {
namespace {

const Bytes binary = {0x00, 0xFF, 0x0A, 0x00, 0x80, 'x'};

const struct Row {
  std::string name;
  std::function<std::string(const Keychain &k)> run;
  std::string expected;
} rows[] = {
    {"values are stored, replaced and removed",
     [](const Keychain &k) {
       return scriptOutput(k, "get u , contains u , set u alice , set v 2 , "
                              "get u , contains u , set u bob , get u , remove "
                              "u , remove u , get u , contains u , keys");
     },
     "=> absent\n=> 00\n=> ok\n=> ok\n=> alice\n=> 11\n=> ok\n=> bob\n=> "
     "ok\n=> ok\n=> absent\n=> 00\n=> v \n"},
    {"every byte of a value is kept",
     [](const Keychain &k) {
       k.set(binary, "b");
       k.set("", "e");
       k.set("🔑 ünïcode\n\ttext", "t");
       return std::to_string(k.getData("b") == binary) + "[" + *k.get("e") +
              "]" + *k.get("t");
     },
     "1[]🔑 ünïcode\n\ttext"},
    {"each service keeps its own items",
     [](const Keychain &k) {
       Keychain other =
           Keychain(k.service() + "2").withItemStore(k.getItemStore());
       other.set("two", "key");
       k.set("one", "key");
       k.removeAll();
       return scriptOutput(other, "get key , removeAll , get key") +
              scriptOutput(k, "get key");
     },
     "=> two\n=> ok\n=> absent\n=> absent\n"},
    {"synchronizable items are seen only when asked",
     [](const Keychain &k) {
       Keychain cloud = k.synchronizable(true);
       cloud.set("cloud", "key", false);
       std::string s = k.get("key", false).value_or("absent") +
                       *cloud.get("key", false) + *k.get("key");
       k.set("here", "key", false);
       return s + *k.get("key", false) + *cloud.get("key", false);
     },
     "absentcloudcloudherecloud"},
    {"attributes are kept, configured ones win, an update rewrites "
     "accessibility",
     [](const Keychain &k) {
       k.label("label")
           .accessibility(Accessibility::whenUnlocked)
           .attributes({{kSecAttrLabel, std::string("wins")}})
           .set("v", "key");
       auto show = [&] {
         Attributes a = k.subscriptAttributes("key").value();
         return toText(*a.data()) + *a.label() + *a.accessible() + *a.account();
       };
       std::string s = show();
       k.set("w", "key");
       return s + "|" + show();
     },
     "vwins" + std::string(kSecAttrAccessibleWhenUnlocked) + "key|wwins" +
         kSecAttrAccessibleAfterFirstUnlock + "key"},
    {"bytes that are not UTF-8 are kept but not read as text",
     [](const Keychain &k) {
       k.set(Bytes{'c', 'a', 'f', 0xE9}, "p");
       return scriptOutput(k,
                           "get p , read p , set u caf\xE9 , set us\xE9r x , "
                           "data p");
     },
     "failed to convert data to string\n=> throws conversionError\nfailed "
     "to convert data to string\n=> absent\nfailed to convert string to "
     "data\n=> throws conversionError\nOSStatus error:[-50] One or more "
     "parameters passed to a function were not valid.\n=> throws param\n=> "
     "caf\xE9\n"},
    {"the store answers the statuses of its rules",
     [](const Keychain &k) {
       ItemStore &store = k.getItemStore();
       Dictionary other = {{kSecClass, std::string(kSecClassGenericPassword)},
                           {kSecAttrService, k.service()},
                           {kSecAttrAccount, std::string("other")}};
       Dictionary item = other, noClass = other;
       item[kSecAttrAccount] = std::string("key");
       item[kSecValueData] = toBytes("v");
       noClass.erase(kSecClass);
       std::string s;
       for (OSStatus status :
            {store.addItem(item), store.addItem(item),
             store.updateItems(other, {{kSecValueData, toBytes("x")}}),
             store.deleteItems(other), store.copyMatching(other, nullptr),
             store.copyMatching(noClass, nullptr)})
         s += std::to_string(status) + " ";
       return s + *k.get("key");
     },
     "0 -25299 -25300 -25300 -25300 -50 v"},
    {"a change that fails halfway leaves every item as it was",
     [](const Keychain &k) {
       k.set("old", "a");
       k.set("kept", "c");
       try {
         k.transaction([](const Keychain &change) {
           change.set("new", "a");
           change.set("added", "b");
           change.remove("c");
           throw Status(Status::Case::io);
         });
       } catch (const Status &) {
       }
       k.transaction([](const Keychain &change) { change.set("whole", "b"); });
       return scriptOutput(k, "get a , get b , get c");
     },
     "=> old\n=> whole\n=> kept\n"},
};

TEST(ItemStoreTest, KeepsItemsAsTheKeychainAsks) {
  testsupport::TempDir directory;
  std::string reason;
  std::unique_ptr<ItemStore> stores[] = {
      std::make_unique<MemoryItemStore>(),
      std::make_unique<FileItemStore>(directory.path() / "keychain"),
      openSecretServiceItemStore(&reason)};
  for (const std::unique_ptr<ItemStore> &store : stores)
    for (const Row &row : rows) {
      SCOPED_TRACE((store ? store->describe() : "") + ": " + row.name);
      if (!store)
        GTEST_SKIP() << "no Secret Service: " << reason;
      Keychain k =
          Keychain("kestrune-test-" + std::to_string(std::random_device()()))
              .withItemStore(*store);
      std::string printed, returned;
      printed = testsupport::captureStdout([&] { returned = row.run(k); });
      EXPECT_EQ(printed + returned, row.expected);
      k.removeAll();
    }
}

} // namespace
} // namespace securestore
