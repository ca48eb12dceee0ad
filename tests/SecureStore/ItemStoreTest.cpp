// One suite of behaviour that every item store shows through a Keychain:
// the memory store, the file store in a temporary directory, and the Secret
// Service of the session bus (skipped when none runs).

#include "SecureStore/FileItemStore.h"
#include "SecureStore/Keychain.h"
#include "Support/MemoryItemStore.h"
#include "SecureStore/SecConstants.h"
#include "SecureStore/SecretServiceItemStore.h"
#include "Support/TestSupport.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <random>

namespace securestore {
namespace {

using testing::UnorderedElementsAre;

Value text(std::string_view value) { return std::string(value); }

std::string uniqueSuffix() {
  std::random_device device;
  return std::to_string(device()) + std::to_string(device());
}

struct MemoryStore {
  MemoryItemStore store;
  ItemStore *get() { return &store; }
  std::string skipReason() const { return {}; }
};

struct FileStore {
  testsupport::TempDir directory;
  FileItemStore store{directory.path() / "kestrune-cli" / "keychain"};
  ItemStore *get() { return &store; }
  std::string skipReason() const { return {}; }
};

struct SecretServiceStore {
  std::string reason;
  std::unique_ptr<ItemStore> store = openSecretServiceItemStore(&reason);
  ItemStore *get() { return store.get(); }
  std::string skipReason() const {
    return store ? std::string() : "no Secret Service: " + reason;
  }
};

template <typename S> class ItemStoreTest : public testing::Test {
protected:
  void SetUp() override {
    if (std::string reason = fixture.skipReason(); !reason.empty())
      GTEST_SKIP() << reason;
  }
  void TearDown() override {
    if (fixture.get())
      for (const std::string &service : services)
        Keychain(service).withItemStore(*fixture.get()).removeAll();
  }

  // A keychain of a service that no other test uses, so that tests on a
  // shared Secret Service never meet each other's items.
  Keychain keychain(const std::string &name = "main") {
    std::string service = "kestrune-test-" + name + "-" + uniqueSuffix();
    services.push_back(service);
    return Keychain(service).withItemStore(*fixture.get());
  }

  ItemStore &store() { return *fixture.get(); }

  S fixture;
  std::vector<std::string> services;
};

TYPED_TEST_SUITE_P(ItemStoreTest);

TYPED_TEST_P(ItemStoreTest, StoresReplacesAndRemovesValues) {
  Keychain keychain = this->keychain();
  EXPECT_EQ(keychain.get("username"), std::nullopt);
  EXPECT_FALSE(keychain.contains("username"));
  keychain.set("alice", "username");
  EXPECT_EQ(keychain.get("username"), "alice");
  EXPECT_TRUE(keychain.contains("username"));
  keychain.set("bob", "username");
  EXPECT_EQ(keychain.get("username"), "bob");
  keychain.remove("username");
  EXPECT_EQ(keychain.get("username"), std::nullopt);
  EXPECT_NO_THROW(keychain.remove("username"));
}

TYPED_TEST_P(ItemStoreTest, KeepsEveryByteOfAValue) {
  Keychain keychain = this->keychain();
  const Bytes binary = {0x00, 0xFF, 0x0A, 0x00, 0x80, 'x'};
  keychain.set(binary, "binary");
  keychain.set("", "empty");
  keychain.set("🔑 ünïcode\n\ttext", "text");
  EXPECT_EQ(keychain.getData("binary"), binary);
  EXPECT_EQ(keychain.get("empty"), "");
  EXPECT_EQ(keychain.get("text"), "🔑 ünïcode\n\ttext");
}

TYPED_TEST_P(ItemStoreTest, ChangingOneItemKeepsTheOthers) {
  Keychain keychain = this->keychain();
  keychain.set("1", "a");
  keychain.set("2", "b");
  keychain.set("3", "c");
  keychain.set("two", "b");
  keychain.remove("c");
  EXPECT_EQ(keychain.get("a"), "1");
  EXPECT_EQ(keychain.get("b"), "two");
  EXPECT_THAT(keychain.allKeys(), UnorderedElementsAre("a", "b"));
}

TYPED_TEST_P(ItemStoreTest, ServicesKeepTheirOwnItems) {
  Keychain first = this->keychain("first");
  Keychain second = this->keychain("second");
  first.set("one", "key");
  second.set("two", "key");
  EXPECT_EQ(first.get("key"), "one");
  EXPECT_EQ(second.get("key"), "two");
  first.removeAll();
  EXPECT_EQ(first.get("key"), std::nullopt);
  EXPECT_EQ(second.get("key"), "two");
}

TYPED_TEST_P(ItemStoreTest, SynchronizableItemsAreSeenOnlyWhenAsked) {
  Keychain local = this->keychain();
  Keychain synchronized = local.synchronizable(true);
  synchronized.set("cloud", "key", false);
  EXPECT_EQ(local.get("key", false), std::nullopt);
  EXPECT_EQ(synchronized.get("key", false), "cloud");
  EXPECT_EQ(local.get("key", true), "cloud");
  local.set("here", "key", false);
  EXPECT_EQ(local.get("key", false), "here");
  EXPECT_EQ(synchronized.get("key", false), "cloud");
}

TYPED_TEST_P(ItemStoreTest, KeepsAttributesOfEachItem) {
  Keychain keychain = this->keychain()
                          .label("the label")
                          .comment("a comment")
                          .accessibility(Accessibility::whenUnlocked)
                          .attributes({{kSecAttrGeneric, toBytes("gen")}});
  keychain.set("v", "key");
  std::optional<Attributes> attributes = keychain.subscriptAttributes("key");
  ASSERT_TRUE(attributes.has_value());
  EXPECT_EQ(attributes->data(), toBytes("v"));
  EXPECT_EQ(attributes->secClass(), kSecClassGenericPassword);
  EXPECT_EQ(attributes->service(), keychain.service());
  EXPECT_EQ(attributes->account(), "key");
  EXPECT_EQ(attributes->label(), "the label");
  EXPECT_EQ(attributes->comment(), "a comment");
  EXPECT_EQ(attributes->accessible(), kSecAttrAccessibleWhenUnlocked);
  EXPECT_EQ(attributes->generic(), toBytes("gen"));
  EXPECT_EQ(attributes->synchronizable(), false);
  EXPECT_TRUE(attributes->creationDate().has_value());
  EXPECT_TRUE(attributes->modificationDate().has_value());
  EXPECT_TRUE(attributes->persistentRef().has_value());
}

TYPED_TEST_P(ItemStoreTest, AnswersTheCatalogueStatusesOfItsRules) {
  Keychain keychain = this->keychain();
  Dictionary item = {{kSecClass, text(kSecClassGenericPassword)},
                     {kSecAttrService, text(keychain.service())},
                     {kSecAttrAccount, text("key")},
                     {kSecValueData, toBytes("v")}};
  ItemStore &store = this->store();
  EXPECT_EQ(store.addItem(item), 0);
  EXPECT_EQ(store.addItem(item), -25299) << "duplicateItem";
  Dictionary other = {{kSecClass, text(kSecClassGenericPassword)},
                      {kSecAttrService, text(keychain.service())},
                      {kSecAttrAccount, text("nothing")}};
  EXPECT_EQ(store.updateItems(other, {{kSecValueData, toBytes("x")}}), -25300);
  EXPECT_EQ(store.deleteItems(other), -25300);
  EXPECT_EQ(store.copyMatching(other, nullptr), -25300);
  Dictionary noClass = {{kSecAttrService, text(keychain.service())}};
  EXPECT_EQ(store.copyMatching(noClass, nullptr), -50) << "param";
  Dictionary notText = item;
  notText[kSecAttrAccount] = text("\xFF\xFE");
  EXPECT_EQ(store.addItem(notText), -50) << "param";
  EXPECT_EQ(keychain.get("key"), "v");
}

TYPED_TEST_P(ItemStoreTest, ListsEveryItemOfTheKeychain) {
  Keychain keychain = this->keychain();
  keychain.set("1", "a");
  keychain.set("2", "b");
  std::vector<Dictionary> items = keychain.allItems();
  ASSERT_EQ(items.size(), 2u);
  for (const Dictionary &item : items) {
    EXPECT_EQ(item.at("class"), text("GenericPassword"));
    EXPECT_EQ(item.at("service"), text(keychain.service()));
    EXPECT_EQ(item.at("accessibility"), text("AfterFirstUnlock"));
    EXPECT_EQ(item.at("synchronizable"), text("false"));
  }
  EXPECT_THAT(keychain.allKeys(), UnorderedElementsAre("a", "b"));
}

REGISTER_TYPED_TEST_SUITE_P(
    ItemStoreTest, StoresReplacesAndRemovesValues, KeepsEveryByteOfAValue,
    ChangingOneItemKeepsTheOthers, ServicesKeepTheirOwnItems,
    SynchronizableItemsAreSeenOnlyWhenAsked, KeepsAttributesOfEachItem,
    AnswersTheCatalogueStatusesOfItsRules, ListsEveryItemOfTheKeychain);
INSTANTIATE_TYPED_TEST_SUITE_P(Memory, ItemStoreTest, MemoryStore);
INSTANTIATE_TYPED_TEST_SUITE_P(File, ItemStoreTest, FileStore);
INSTANTIATE_TYPED_TEST_SUITE_P(SecretService, ItemStoreTest,
                               SecretServiceStore);

} // namespace
} // namespace securestore
