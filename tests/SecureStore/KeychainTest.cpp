#include "SecureStore/Keychain.h"

#include "Support/MemoryItemStore.h"
#include "SecureStore/SecConstants.h"
#include "Support/TestSupport.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <functional>

namespace securestore {
namespace {

using Operation = MemoryItemStore::Operation;
using testsupport::captureStdout;

Value text(std::string_view value) { return std::string(value); }

const std::string notUtf8 = "\xC3\x28 broken";

std::string nameOf(Operation operation) {
  switch (operation) {
  case Operation::copyMatching:
    return "copyMatching";
  case Operation::addItem:
    return "addItem";
  case Operation::updateItems:
    return "updateItems";
  case Operation::deleteItems:
    return "deleteItems";
  case Operation::createAccessControl:
    return "createAccessControl";
  }
  return "?";
}

std::string operationsOf(const MemoryItemStore &store) {
  std::string names;
  for (const MemoryItemStore::Call &call : store.getCalls())
    names += (names.empty() ? "" : " ") + nameOf(call.operation);
  return names;
}

std::string show(const std::optional<std::string> &value) {
  return value ? "\"" + *value + "\"" : "absent";
}

// Runs \p action and describes what came of it: its own text, or the
// failure it threw.
std::string outcomeOf(const std::function<std::string()> &action) {
  try {
    return action();
  } catch (const Status &status) {
    return "throws " + std::string(status.caseName());
  } catch (const PlatformError &error) {
    return "throws platform error: " + error.localizedDescription();
  }
}

Keychain accountKeychain(MemoryItemStore &store) {
  return Keychain("kestrune-cli")
      .accessibility(Accessibility::afterFirstUnlock)
      .withItemStore(store);
}

TEST(KeychainTest, TheToolsFourCallsUseExactlyTheseDictionaries) {
  MemoryItemStore store;
  Keychain keychain = accountKeychain(store);

  keychain.set("V", "A", true);
  keychain.set("W", "A", true);
  EXPECT_EQ(keychain.get("A", true), "W");
  keychain.remove("A", true);

  const Dictionary lookUp = {
      {kSecClass, text(kSecClassGenericPassword)},
      {kSecAttrSynchronizable, text(kSecAttrSynchronizableAny)},
      {kSecAttrService, text("kestrune-cli")},
      {kSecAttrAccount, text("A")},
      {kSecReturnData, true},
      {kSecUseAuthenticationUI, text(kSecUseAuthenticationUIFail)}};
  const Dictionary add = {
      {kSecClass, text(kSecClassGenericPassword)},
      {kSecAttrService, text("kestrune-cli")},
      {kSecAttrAccount, text("A")},
      {kSecValueData, toBytes("V")},
      {kSecAttrAccessible, text(kSecAttrAccessibleAfterFirstUnlock)},
      {kSecAttrSynchronizable, false}};
  const Dictionary search = {
      {kSecClass, text(kSecClassGenericPassword)},
      {kSecAttrSynchronizable, text(kSecAttrSynchronizableAny)},
      {kSecAttrService, text("kestrune-cli")},
      {kSecAttrAccount, text("A")}};
  const Dictionary changes = {
      {kSecValueData, toBytes("W")},
      {kSecAttrAccessible, text(kSecAttrAccessibleAfterFirstUnlock)},
      {kSecAttrSynchronizable, false}};
  Dictionary read = search;
  read[kSecMatchLimit] = text(kSecMatchLimitOne);
  read[kSecReturnData] = true;

  std::vector<MemoryItemStore::Call> calls = store.getCalls();
  ASSERT_EQ(operationsOf(store), "copyMatching addItem copyMatching "
                                 "updateItems copyMatching deleteItems");
  EXPECT_EQ(calls[0].query, lookUp);
  EXPECT_FALSE(calls[0].hasResultPlace);
  EXPECT_EQ(calls[1].attributes, add);
  EXPECT_EQ(calls[2].query, lookUp);
  EXPECT_EQ(calls[3].query, search);
  EXPECT_EQ(calls[3].attributes, changes);
  EXPECT_EQ(calls[4].query, read);
  EXPECT_TRUE(calls[4].hasResultPlace);
  EXPECT_EQ(calls[5].query, search);
}

struct StatusCase {
  std::string_view name;
  std::function<void(MemoryItemStore &)> script;
  std::function<std::string(const Keychain &)> action;
  std::string_view outcome;
  std::string_view printed;
  std::string_view operations;
};

const std::string itemNotFoundLine =
    "OSStatus error:[-25300] The specified item could not be found in the "
    "keychain.\n";

void answer(MemoryItemStore &store, Operation operation, OSStatus status,
            CopyResult result = {}) {
  store.answerNext(operation, status, std::move(result));
}

std::string getText(const Keychain &keychain) {
  return show(keychain.get("k"));
}

std::string setText(const Keychain &keychain) {
  keychain.set("v", "k");
  return "ok";
}

const StatusCase statusCases[] = {
    {"get gives the stored text",
     [](MemoryItemStore &s) {
       answer(s, Operation::copyMatching, 0, toBytes("abc"));
     },
     getText, "\"abc\"", "", "copyMatching"},
    {"get gives absence for itemNotFound",
     [](MemoryItemStore &s) { answer(s, Operation::copyMatching, -25300); },
     getText, "absent", "", "copyMatching"},
    {"get fails with other statuses after printing them",
     [](MemoryItemStore &s) { answer(s, Operation::copyMatching, -25308); },
     getText, "throws interactionNotAllowed",
     "OSStatus error:[-25308] User interaction is not allowed.\n",
     "copyMatching"},
    {"get fails silently when the user canceled",
     [](MemoryItemStore &s) { answer(s, Operation::copyMatching, -128); },
     getText, "throws userCanceled", "", "copyMatching"},
    {"get reports numbers outside the catalogue as unexpectedError",
     [](MemoryItemStore &s) { answer(s, Operation::copyMatching, 42); },
     getText, "throws unexpectedError",
     "OSStatus error:[-99999] Unexpected error has occurred.\n",
     "copyMatching"},
    {"get fails without a line when the result is no bytes",
     [](MemoryItemStore &s) {
       answer(s, Operation::copyMatching, 0, Dictionary{});
     },
     getText, "throws unexpectedError", "", "copyMatching"},
    {"get fails without a line when there is no result",
     [](MemoryItemStore &s) { answer(s, Operation::copyMatching, 0); }, getText,
     "throws unexpectedError", "", "copyMatching"},
    {"get refuses bytes that are not UTF-8",
     [](MemoryItemStore &s) {
       answer(s, Operation::copyMatching, 0, toBytes(notUtf8));
     },
     getText, "throws conversionError", "failed to convert data to string\n",
     "copyMatching"},
    {"getData gives bytes that are not UTF-8",
     [](MemoryItemStore &s) {
       answer(s, Operation::copyMatching, 0, toBytes(notUtf8));
     },
     [](const Keychain &k) { return toText(k.getData("k").value()); }, notUtf8,
     "", "copyMatching"},
    {"set updates when the look-up finds the item",
     [](MemoryItemStore &s) {
       answer(s, Operation::copyMatching, 0);
       answer(s, Operation::updateItems, 0);
     },
     setText, "ok", "", "copyMatching updateItems"},
    {"set updates when the look-up may not interact",
     [](MemoryItemStore &s) {
       answer(s, Operation::copyMatching, -25308);
       answer(s, Operation::updateItems, 0);
     },
     setText, "ok", "", "copyMatching updateItems"},
    {"set adds when the look-up finds nothing",
     [](MemoryItemStore &s) { answer(s, Operation::copyMatching, -25300); },
     setText, "ok", "", "copyMatching addItem"},
    {"set changes nothing when the look-up fails",
     [](MemoryItemStore &s) { answer(s, Operation::copyMatching, -25291); },
     setText, "throws notAvailable",
     "OSStatus error:[-25291] No keychain is available. You may need to "
     "restart your computer.\n",
     "copyMatching"},
    {"set fails when the add fails",
     [](MemoryItemStore &s) { answer(s, Operation::addItem, -25299); }, setText,
     "throws duplicateItem",
     "OSStatus error:[-25299] The specified item already exists in the "
     "keychain.\n",
     "copyMatching addItem"},
    {"set fails when the update fails",
     [](MemoryItemStore &s) {
       answer(s, Operation::copyMatching, 0);
       answer(s, Operation::updateItems, -25293);
     },
     setText, "throws authFailed",
     "OSStatus error:[-25293] The user name or passphrase you entered is not "
     "correct.\n",
     "copyMatching updateItems"},
    {"set refuses text that is not UTF-8 before any call",
     [](MemoryItemStore &) {},
     [](const Keychain &k) {
       k.set(notUtf8, "k");
       return std::string("ok");
     },
     "throws conversionError", "failed to convert string to data\n", ""},
    {"remove of a missing item succeeds silently", [](MemoryItemStore &) {},
     [](const Keychain &k) {
       k.remove("k");
       return std::string("ok");
     },
     "ok", "", "deleteItems"},
    {"remove fails with other statuses",
     [](MemoryItemStore &s) { answer(s, Operation::deleteItems, -25292); },
     [](const Keychain &k) {
       k.remove("k");
       return std::string("ok");
     },
     "throws readOnly",
     "OSStatus error:[-25292] This keychain cannot be modified.\n",
     "deleteItems"},
    {"removeAll of an empty keychain succeeds", [](MemoryItemStore &) {},
     [](const Keychain &k) {
       k.removeAll();
       return std::string("ok");
     },
     "ok", "", "deleteItems"},
    {"removeAll fails with other statuses",
     [](MemoryItemStore &s) { answer(s, Operation::deleteItems, -128); },
     [](const Keychain &k) {
       k.removeAll();
       return std::string("ok");
     },
     "throws userCanceled", "", "deleteItems"},
    {"contains is true for a match",
     [](MemoryItemStore &s) { answer(s, Operation::copyMatching, 0); },
     [](const Keychain &k) { return std::to_string(k.contains("k")); }, "1", "",
     "copyMatching"},
    {"contains is false without a match", [](MemoryItemStore &) {},
     [](const Keychain &k) { return std::to_string(k.contains("k")); }, "0", "",
     "copyMatching"},
    {"contains answers its flag when it may not interact",
     [](MemoryItemStore &s) {
       answer(s, Operation::copyMatching, -25308);
       answer(s, Operation::copyMatching, -25308);
     },
     [](const Keychain &k) {
       return std::to_string(k.contains("k", true)) +
              std::to_string(k.contains("k", false));
     },
     "10", "", "copyMatching copyMatching"},
    {"contains fails with other statuses",
     [](MemoryItemStore &s) { answer(s, Operation::copyMatching, -25293); },
     [](const Keychain &k) { return std::to_string(k.contains("k")); },
     "throws authFailed",
     "OSStatus error:[-25293] The user name or passphrase you entered is not "
     "correct.\n",
     "copyMatching"},
    {"the subscript reads a failure as absence",
     [](MemoryItemStore &s) { answer(s, Operation::copyMatching, -25295); },
     [](const Keychain &k) { return show(k["k"]); }, "absent",
     "OSStatus error:[-25295] The specified keychain is not a valid keychain "
     "file.\n",
     "copyMatching"},
    {"the subscript reads bytes that are not UTF-8 as absence",
     [](MemoryItemStore &s) {
       answer(s, Operation::copyMatching, 0, toBytes(notUtf8));
     },
     [](const Keychain &k) { return show(k["k"]); }, "absent",
     "failed to convert data to string\n", "copyMatching"},
    {"the subscript drops a failed write",
     [](MemoryItemStore &s) { answer(s, Operation::addItem, -34); },
     [](const Keychain &k) {
       k["k"] = std::string("v");
       return std::string("ok");
     },
     "ok", "OSStatus error:[-34] The disk is full.\n", "copyMatching addItem"},
    {"the subscript removes when given absence", [](MemoryItemStore &) {},
     [](const Keychain &k) {
       k["k"] = std::nullopt;
       return std::string("ok");
     },
     "ok", "", "deleteItems"},
    {"the data subscript gives bytes that are not UTF-8",
     [](MemoryItemStore &s) {
       answer(s, Operation::copyMatching, 0, toBytes(notUtf8));
     },
     [](const Keychain &k) {
       std::optional<Bytes> bytes = k.subscriptData("k");
       return bytes ? toText(*bytes) : std::string("absent");
     },
     notUtf8, "", "copyMatching"},
    {"the attribute look-up hands the attributes to its handler",
     [](MemoryItemStore &s) {
       answer(s, Operation::copyMatching, 0,
              Dictionary{{kSecAttrAccount, text("k")},
                         {kSecAttrLabel, text("shown")}});
     },
     [](const Keychain &k) {
       return k.get("k", true, [](std::optional<Attributes> attributes) {
         return attributes ? attributes->label().value_or("?")
                           : std::string("none");
       });
     },
     "shown", "", "copyMatching"},
    {"the attribute look-up hands absence to its handler",
     [](MemoryItemStore &) {},
     [](const Keychain &k) {
       return k.get("k", true, [](std::optional<Attributes> attributes) {
         return std::string(attributes ? "some" : "none");
       });
     },
     "none", "", "copyMatching"},
    {"the attribute look-up fails when the result is no map",
     [](MemoryItemStore &s) {
       answer(s, Operation::copyMatching, 0, toBytes("v"));
     },
     [](const Keychain &k) {
       return k.get("k", true, [](std::optional<Attributes>) {
         return std::string("called");
       });
     },
     "throws unexpectedError", "", "copyMatching"},
    {"enumeration reads a failure as no items",
     [](MemoryItemStore &s) { answer(s, Operation::copyMatching, -25291); },
     [](const Keychain &k) { return std::to_string(k.allKeys().size()); }, "0",
     "OSStatus error:[-25291] No keychain is available. You may need to "
     "restart your computer.\n",
     "copyMatching"},
};

TEST(KeychainTest, EachOperationTreatsEachStatusItsOwnWay) {
  for (const StatusCase &c : statusCases) {
    SCOPED_TRACE(c.name);
    MemoryItemStore store;
    c.script(store);
    Keychain keychain = accountKeychain(store);
    std::string outcome;
    std::string printed = captureStdout(
        [&] { outcome = outcomeOf([&] { return c.action(keychain); }); });
    EXPECT_EQ(outcome, c.outcome);
    EXPECT_EQ(printed, c.printed);
    EXPECT_EQ(operationsOf(store), c.operations);
  }
}

TEST(KeychainTest, WithoutIgnoringSynchronizableOnlyTheLookUpNarrows) {
  MemoryItemStore store;
  Keychain keychain = accountKeychain(store).synchronizable(true);
  store.answerNext(Operation::copyMatching, 0);
  store.answerNext(Operation::updateItems, 0);
  keychain.set("V", "A", false);

  std::vector<MemoryItemStore::Call> calls = store.getCalls();
  ASSERT_EQ(operationsOf(store), "copyMatching updateItems");
  EXPECT_EQ(calls[0].query.at(kSecAttrSynchronizable), Value(true));
  EXPECT_EQ(calls[1].query.at(kSecAttrSynchronizable),
            text(kSecAttrSynchronizableAny));
  EXPECT_EQ(calls[1].attributes.at(kSecAttrSynchronizable), Value(true));
}

TEST(KeychainTest, ConfiguredAttributesWinInAddAndUpdateButNotInTheLookUp) {
  MemoryItemStore store;
  Keychain keychain =
      accountKeychain(store)
          .label("a label")
          .comment("a comment")
          .attributes({{kSecAttrAccessible, text(kSecAttrAccessibleAlways)},
                       {kSecAttrGeneric, toBytes("g")}})
          .attributes({{kSecAttrLabel, text("wins")}});
  keychain.set("V", "A");
  keychain.set("W", "A");

  std::vector<MemoryItemStore::Call> calls = store.getCalls();
  ASSERT_EQ(operationsOf(store),
            "copyMatching addItem copyMatching updateItems");
  for (const Dictionary *written :
       {&calls[1].attributes, &calls[3].attributes}) {
    EXPECT_EQ(written->at(kSecAttrAccessible), text(kSecAttrAccessibleAlways));
    EXPECT_EQ(written->at(kSecAttrLabel), text("wins"));
    EXPECT_EQ(written->at(kSecAttrComment), text("a comment"));
    EXPECT_EQ(written->at(kSecAttrGeneric), Value(toBytes("g")));
  }
  EXPECT_FALSE(calls[0].query.contains(kSecAttrLabel));
  EXPECT_FALSE(calls[0].query.contains(kSecAttrGeneric));
}

TEST(KeychainTest, PromptContextAndInterfaceChoiceTravelWithTheQueries) {
  MemoryItemStore store;
  auto context = std::make_shared<AuthenticationContext>();
  Keychain keychain = accountKeychain(store)
                          .authenticationPrompt("Unlock")
                          .authenticationContext(context)
                          .authenticationUI(AuthenticationUI::skip);
  keychain.set("V", "A");
  (void)keychain.contains("A", false);
  (void)accountKeychain(store).contains("A", false);

  std::vector<MemoryItemStore::Call> calls = store.getCalls();
  ASSERT_EQ(calls.size(), 4u);
  EXPECT_EQ(calls[0].query.at(kSecUseOperationPrompt), text("Unlock"));
  EXPECT_EQ(calls[0].query.at(kSecUseAuthenticationContext), Value(context));
  EXPECT_EQ(calls[0].query.at(kSecUseAuthenticationUI),
            text(kSecUseAuthenticationUISkip));
  EXPECT_EQ(calls[1].attributes.at(kSecUseOperationPrompt), text("Unlock"));
  EXPECT_EQ(calls[2].query.at(kSecUseAuthenticationUI),
            text(kSecUseAuthenticationUISkip));
  EXPECT_FALSE(calls[3].query.contains(kSecUseAuthenticationUI));
}

TEST(KeychainTest, AnAuthenticationPolicyStoresAnAccessControlInstead) {
  MemoryItemStore store;
  Keychain keychain = accountKeychain(store).accessibility(
      Accessibility::whenUnlocked,
      AuthenticationPolicy::userPresence | AuthenticationPolicy::orPolicy);
  keychain.set("V", "A");

  std::vector<MemoryItemStore::Call> calls = store.getCalls();
  ASSERT_EQ(operationsOf(store), "copyMatching createAccessControl addItem");
  EXPECT_EQ(calls[1].attributes,
            (Dictionary{{"protection", text(kSecAttrAccessibleWhenUnlocked)},
                        {"flags", std::int64_t{0x4001}}}));
  EXPECT_EQ(calls[2].attributes.at(kSecAttrAccessControl),
            Value(AccessControl{kSecAttrAccessibleWhenUnlocked, 0x4001}));
  EXPECT_FALSE(calls[2].attributes.contains(kSecAttrAccessible));
}

TEST(KeychainTest, AnAccessControlThatCantBeMadeIsPrintedAndWritesNothing) {
  struct Case {
    std::optional<PlatformError> error;
    std::string_view outcome;
    std::string_view printed;
  };
  const Case cases[] = {
      {PlatformError("NSOSStatusErrorDomain", -4,
                     {{"NSLocalizedDescription", "no biometry here"}}),
       "throws platform error: no biometry here", "no biometry here\n"},
      {std::nullopt, "throws unexpectedError",
       "Unexpected error has occurred.\n"}};
  for (const Case &c : cases) {
    SCOPED_TRACE(c.outcome);
    MemoryItemStore store;
    store.failAccessControl(c.error);
    Keychain keychain = accountKeychain(store).accessibility(
        Accessibility::afterFirstUnlock, AuthenticationPolicy::biometryAny);
    std::string outcome;
    std::string printed = captureStdout([&] {
      outcome = outcomeOf([&] {
        keychain.set("V", "A");
        return std::string("ok");
      });
    });
    EXPECT_EQ(outcome, c.outcome);
    EXPECT_EQ(printed, c.printed);
    EXPECT_EQ(operationsOf(store), "copyMatching createAccessControl");
  }
}

TEST(KeychainTest, ConfiguringMakesACopyAndLeavesTheOriginal) {
  Keychain original("svc");
  Keychain changed = original.accessibility(Accessibility::always)
                         .synchronizable(true)
                         .label("l")
                         .comment("c")
                         .authenticationPrompt("p")
                         .authenticationUI(AuthenticationUI::allow);
  EXPECT_EQ(original.accessibility(), Accessibility::afterFirstUnlock);
  EXPECT_FALSE(original.synchronizable());
  EXPECT_FALSE(original.label().has_value());
  EXPECT_FALSE(original.authenticationUI().has_value());
  EXPECT_EQ(changed.accessibility(), Accessibility::always);
  EXPECT_TRUE(changed.synchronizable());
  EXPECT_EQ(changed.label(), "l");
  EXPECT_EQ(changed.comment(), "c");
  EXPECT_EQ(changed.authenticationPrompt(), "p");
  EXPECT_EQ(changed.service(), "svc");
}

TEST(KeychainTest, InternetPasswordsAreFoundByServerPortAndProtocol) {
  MemoryItemStore store;
  Keychain keychain =
      Keychain("https://example.com:8443/path", ProtocolType::https, "grp")
          .withItemStore(store);
  keychain.set("secret", "alice");
  EXPECT_EQ(keychain.get("alice"), "secret");
  const Dictionary read = store.getCalls().back().query;
  EXPECT_EQ(
      Keychain("https://other.example.com:8443/", ProtocolType::https, "grp")
          .withItemStore(store)
          .get("alice"),
      std::nullopt);

  Dictionary expected = {
      {kSecClass, text(kSecClassInternetPassword)},
      {kSecAttrAccessGroup, text("grp")},
      {kSecAttrSynchronizable, text(kSecAttrSynchronizableAny)},
      {kSecAttrServer, text("example.com")},
      {kSecAttrPort, std::int64_t{8443}},
      {kSecAttrProtocol, text(kSecAttrProtocolHTTPS)},
      {kSecAttrAuthenticationType, text(kSecAttrAuthenticationTypeDefault)},
      {kSecAttrAccount, text("alice")}};
  EXPECT_EQ(read.size(), expected.size() + 2);
  for (const auto &[key, value] : expected)
    EXPECT_EQ(read.at(key), value) << key;
  EXPECT_THROW(Keychain("http://exa mple.com", ProtocolType::http),
               std::invalid_argument);
}

TEST(KeychainTest, ValuesRoundTripThroughTheStore) {
  MemoryItemStore store;
  Keychain keychain = accountKeychain(store);
  EXPECT_FALSE(keychain.contains("k"));
  keychain["k"] = std::string("first");
  EXPECT_TRUE(keychain.contains("k"));
  EXPECT_EQ(keychain["k"].read(), "first");
  keychain.set("", "k");
  EXPECT_EQ(keychain.getString("k"), "");
  keychain.set(Bytes{0, 1, 2, 0xFF}, "bytes");
  EXPECT_EQ(keychain.getData("bytes"), (Bytes{0, 1, 2, 0xFF}));
  keychain.subscriptData("bytes") = std::nullopt;
  EXPECT_FALSE(keychain.contains("bytes"));

  std::optional<Attributes> attributes = keychain.subscriptAttributes("k");
  ASSERT_TRUE(attributes.has_value());
  EXPECT_EQ(attributes->account(), "k");
  EXPECT_EQ(attributes->service(), "kestrune-cli");
  EXPECT_EQ(attributes->data(), Bytes{});
  EXPECT_EQ(attributes->accessible(), kSecAttrAccessibleAfterFirstUnlock);
  EXPECT_EQ(attributes->synchronizable(), false);
  EXPECT_TRUE(attributes->creationDate().has_value());
  EXPECT_FALSE(attributes->port().has_value());
  EXPECT_EQ((*attributes)[kSecAttrAccount],
            &attributes->attributes.at(kSecAttrAccount));

  keychain.removeAll();
  EXPECT_TRUE(keychain.allKeys().empty());
}

TEST(KeychainTest, DescriptionListsPrettifiedItems) {
  MemoryItemStore store;
  Keychain keychain = accountKeychain(store);
  EXPECT_EQ(keychain.description(), "[]");
  keychain.set("one", "a");
  keychain.set("two", "b");
  Keychain("other").withItemStore(store).set("x", "c");

  EXPECT_THAT(keychain.allKeys(), testing::ElementsAre("a", "b"));
  EXPECT_EQ(
      keychain.description(),
      "[\n"
      "  [\"accessibility\": \"AfterFirstUnlock\", \"class\": "
      "\"GenericPassword\", \"key\": \"a\", \"service\": \"kestrune-cli\", "
      "\"synchronizable\": \"false\"]\n"
      "  [\"accessibility\": \"AfterFirstUnlock\", \"class\": "
      "\"GenericPassword\", \"key\": \"b\", \"service\": \"kestrune-cli\", "
      "\"synchronizable\": \"false\"]\n"
      "]");
  EXPECT_THAT(keychain.debugDescription(),
              testing::HasSubstr("\"kSecAttrAccount\": \"a\""));
}

TEST(KeychainTest, ClassWideEnumerationReadsTheDefaultStore) {
  MemoryItemStore store;
  setDefaultItemStore(&store);
  Keychain("one").set("x", "a");
  Keychain("two").set("y", "b");
  Keychain("sync").synchronizable(true).set("z", "c");
  using Pair = std::pair<std::string, std::string>;
  EXPECT_THAT(Keychain::allKeys(ItemClass::genericPassword),
              testing::ElementsAre(Pair("one", "a"), Pair("two", "b"),
                                   Pair("sync", "c")));
  // Without kSecAttrSynchronizable the query matches unsynchronized items.
  EXPECT_EQ(Keychain::allItems(ItemClass::genericPassword).size(), 2u);
  EXPECT_TRUE(Keychain::allKeys(ItemClass::internetPassword).empty());
  setDefaultItemStore(nullptr);
}

TEST(KeychainTest, PrettifyGivesReadableKeysAndValues) {
  std::vector<Dictionary> raw = {
      {{kSecClass, text(kSecClassInternetPassword)},
       {kSecAttrServer, text("example.com")},
       {kSecAttrProtocol, text(kSecAttrProtocolSSH)},
       {kSecAttrAuthenticationType, text(kSecAttrAuthenticationTypeHTTPBasic)},
       {kSecAttrAccount, text("bob")},
       {kSecAttrAccessGroup, text("grp")},
       {kSecValueData, toBytes("pw")},
       {kSecAttrAccessible, text(kSecAttrAccessibleAlwaysThisDeviceOnly)},
       {kSecAttrSynchronizable, true}},
      {{kSecValueData, toBytes(notUtf8)}}};
  std::vector<Dictionary> pretty =
      Keychain::prettify(ItemClass::internetPassword, raw);
  ASSERT_EQ(pretty.size(), 2u);
  EXPECT_EQ(pretty[0],
            (Dictionary{{"class", text("InternetPassword")},
                        {"server", text("example.com")},
                        {"protocol", text("SSH")},
                        {"authenticationType", text("HTTPBasic")},
                        {"key", text("bob")},
                        {"accessGroup", text("grp")},
                        {"value", text("pw")},
                        {"accessibility", text("AlwaysThisDeviceOnly")},
                        {"synchronizable", text("true")}}));
  EXPECT_EQ(pretty[1], (Dictionary{{"class", text("InternetPassword")},
                                   {"value", toBytes(notUtf8)}}));
}

} // namespace
} // namespace securestore
