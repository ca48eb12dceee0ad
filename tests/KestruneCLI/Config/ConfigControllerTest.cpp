// The account's persistence: what saveToKeychain writes and prints, what
// getCreds reads and in which order, and that one process reads what another
// saved, on the file store and on the Secret Service.

#include "KestruneCLI/Config/ConfigController.h"

#include "NoConsole.h"
#include "Support/MemoryItemStore.h"
#include "SecureStore/SecConstants.h"
#include "Support/TestSupport.h"
#include "Support/PrivateSecretService.h"
#include "Support/ProcessRunner.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>

namespace kestrune {
namespace {

using securestore::Keychain;
using securestore::MemoryItemStore;
using Operation = MemoryItemStore::Operation;
using testsupport::captureStdout;

const ConfigModel account{
    "alice", "s3cret", "API-KEY", "https://cn.example.com", "Org Group", 570};

const std::string savedText =
    "\n🔑Information has been successfully saved into secure macOS "
    "keychain.\n\n";

struct Fixture {
  MemoryItemStore store;
  NoConsole console;
  NoExit exit;
  ConfigController controller{console,
                              makeAccountKeychain().withItemStore(store), exit};
  Keychain keychain() { return makeAccountKeychain().withItemStore(store); }
};

// The accounts that the store was asked to read, in order.
std::vector<std::string> accountsRead(const MemoryItemStore &store) {
  std::vector<std::string> accounts;
  for (const MemoryItemStore::Call &call : store.getCalls())
    if (call.operation == Operation::copyMatching)
      accounts.push_back(
          std::get<std::string>(call.query.at(securestore::kSecAttrAccount)));
  return accounts;
}

TEST(ConfigControllerTest, SavingWritesSixTextItemsInOrder) {
  Fixture f;
  std::string printed = captureStdout(
      [&] { ConfigControllerTestAccess::save(f.controller, account); });
  EXPECT_EQ(printed, savedText);

  std::vector<std::string> added;
  for (const MemoryItemStore::Call &call : f.store.getCalls())
    if (call.operation == Operation::addItem)
      added.push_back(std::get<std::string>(
          call.attributes.at(securestore::kSecAttrAccount)));
  EXPECT_THAT(added, testing::ElementsAre("username", "password", "apiKey",
                                          "hostname", "groupId", "groupIdNum"));
  Keychain keychain = f.keychain();
  EXPECT_EQ(keychain.getData("groupIdNum"),
            (securestore::Bytes{'5', '7', '0'}));
  EXPECT_EQ(keychain.get("username"), "alice");
  EXPECT_EQ(keychain.get("password"), "s3cret");
  EXPECT_EQ(keychain.get("apiKey"), "API-KEY");
  EXPECT_EQ(keychain.get("hostname"), "https://cn.example.com");
  EXPECT_EQ(keychain.get("groupId"), "Org Group");
  EXPECT_EQ(f.controller.getCreds(), account);
}

TEST(ConfigControllerTest, SavingAgainReplacesTheRecord) {
  Fixture f;
  captureStdout(
      [&] { ConfigControllerTestAccess::save(f.controller, account); });
  ConfigModel changed = account;
  changed.groupId = "Other";
  changed.groupIdNum = -12;
  std::string printed = captureStdout(
      [&] { ConfigControllerTestAccess::save(f.controller, changed); });
  EXPECT_EQ(printed, savedText);
  EXPECT_EQ(f.controller.getCreds(), changed);
  EXPECT_EQ(f.keychain().allKeys().size(), 6u);
}

TEST(ConfigControllerTest, SavingWithoutARecordDoesNothing) {
  Fixture f;
  std::string printed = captureStdout(
      [&] { ConfigControllerTestAccess::save(f.controller, std::nullopt); });
  EXPECT_EQ(printed, "");
  EXPECT_TRUE(f.store.getCalls().empty());
}

struct SaveFailure {
  std::string_view failingKey;
  securestore::OSStatus status;
  std::string_view printed;
  std::vector<std::string> kept;
};

const SaveFailure saveFailures[] = {
    {"username",
     -25291,
     "OSStatus error:[-25291] No keychain is available. You may need to "
     "restart your computer.\n"
     "❗️Error: Unable to save user info in macOS Keychain: No keychain is "
     "available. You may need to restart your computer.\n\n",
     {}},
    {"hostname",
     -34,
     "OSStatus error:[-34] The disk is full.\n"
     "❗️Error: Unable to save user info in macOS Keychain: The disk is "
     "full.\n\n",
     {"apiKey", "password", "username"}},
    {"groupIdNum",
     -128,
     "❗️Error: Unable to save user info in macOS Keychain: User canceled "
     "the "
     "operation.\n\n",
     {"apiKey", "groupId", "hostname", "password", "username"}},
};

TEST(ConfigControllerTest, AFailedWriteEndsTheSaveAndKeepsEarlierItems) {
  for (const SaveFailure &c : saveFailures) {
    SCOPED_TRACE(c.failingKey);
    Fixture f;
    f.store.answerForAccount(Operation::addItem, std::string(c.failingKey),
                             c.status);
    std::string printed = captureStdout(
        [&] { ConfigControllerTestAccess::save(f.controller, account); });
    EXPECT_EQ(printed, c.printed);
    f.store.clearAnswers();
    std::vector<std::string> keys = f.keychain().allKeys();
    std::sort(keys.begin(), keys.end());
    EXPECT_EQ(keys, c.kept);
  }
}

TEST(ConfigControllerTest, TextThatIsNotUtf8IsNotSaved) {
  Fixture f;
  ConfigModel broken = account;
  broken.password = "caf\xE9";
  std::string printed = captureStdout(
      [&] { ConfigControllerTestAccess::save(f.controller, broken); });
  EXPECT_EQ(printed,
            "failed to convert string to data\n"
            "❗️Error: Unable to save user info in macOS Keychain: A "
            "conversion error has occurred.\n\n");
  EXPECT_THAT(f.keychain().allKeys(), testing::ElementsAre("username"));
}

struct MissingItem {
  std::string_view key;
  CliError expected;
  std::vector<std::string> read;
};

const MissingItem missingItems[] = {
    {"username", CliError::noUsernameInKeychain(), {"username"}},
    {"groupId", CliError::noGroupIdInKeychain(), {"username", "groupId"}},
    {"groupIdNum",
     CliError::noGroupIdNumInKeyChain(),
     {"username", "groupId", "groupIdNum"}},
    {"hostname",
     CliError::noHostnameInKeychain(),
     {"username", "groupId", "groupIdNum", "hostname"}},
    {"apiKey",
     CliError::noApiKeyInKeychain(),
     {"username", "groupId", "groupIdNum", "hostname", "apiKey"}},
    {"password",
     CliError::noPasswordInKeychain(),
     {"username", "groupId", "groupIdNum", "hostname", "apiKey", "password"}},
};

TEST(ConfigControllerTest, ReadingNamesTheFirstMissingItemAndStopsThere) {
  for (const MissingItem &c : missingItems) {
    SCOPED_TRACE(c.key);
    Fixture f;
    captureStdout(
        [&] { ConfigControllerTestAccess::save(f.controller, account); });
    f.keychain().remove(std::string(c.key));
    f.store.clearCalls();
    std::optional<CliError> thrown;
    try {
      (void)f.controller.getCreds();
    } catch (const CliError &error) {
      thrown = error;
    }
    EXPECT_EQ(thrown, c.expected);
    EXPECT_EQ(accountsRead(f.store), c.read);
  }
}

TEST(ConfigControllerTest, ReadingAnEmptyStoreFailsOnTheUsername) {
  Fixture f;
  std::optional<CliError> thrown;
  try {
    (void)f.controller.getCreds();
  } catch (const CliError &error) {
    thrown = error;
  }
  ASSERT_TRUE(thrown.has_value());
  EXPECT_EQ(*thrown, CliError::noUsernameInKeychain());
  EXPECT_EQ(thrown->code(), 23);
}

TEST(ConfigControllerTest, AFailingKeychainReadsAsAMissingItem) {
  Fixture f;
  captureStdout(
      [&] { ConfigControllerTestAccess::save(f.controller, account); });
  f.store.answerForAccount(Operation::copyMatching, "groupId", -25295);
  std::optional<CliError> thrown;
  std::string printed = captureStdout([&] {
    try {
      (void)f.controller.getCreds();
    } catch (const CliError &error) {
      thrown = error;
    }
  });
  EXPECT_EQ(thrown, CliError::noGroupIdInKeychain());
  EXPECT_EQ(printed, "OSStatus error:[-25295] The specified keychain is not a "
                     "valid keychain file.\n");
}

TEST(ConfigControllerTest, TheStoredNumberParsesAsASignedDecimalOrNotAtAll) {
  struct Case {
    std::string_view stored;
    std::optional<std::int64_t> expected;
  };
  const Case cases[] = {
      {"570", 570},
      {"-12", -12},
      {"+12", 12},
      {"007", 7},
      {"9223372036854775807", INT64_MAX},
      {"-9223372036854775808", INT64_MIN},
      {"9223372036854775808", std::nullopt},
      {"", std::nullopt},
      {"abc", std::nullopt},
      {"12a", std::nullopt},
      {" 12", std::nullopt},
      {"1.5", std::nullopt},
      {"+", std::nullopt},
      {"+-1", std::nullopt},
      {"0x10", std::nullopt},
      {"١٢", std::nullopt},
  };
  for (const Case &c : cases) {
    SCOPED_TRACE(c.stored);
    Fixture f;
    captureStdout(
        [&] { ConfigControllerTestAccess::save(f.controller, account); });
    f.keychain().set(c.stored, "groupIdNum");
    ConfigModel read = f.controller.getCreds();
    EXPECT_EQ(read.groupIdNum, c.expected);
    EXPECT_EQ(read.username, "alice");
  }
}

TEST(ConfigControllerTest, EmptyItemsCountAsPresent) {
  Fixture f;
  ConfigModel empty{"", "", "", "", "", 0};
  captureStdout([&] { ConfigControllerTestAccess::save(f.controller, empty); });
  EXPECT_EQ(f.controller.getCreds(), empty);
}

TEST(ConfigControllerTest, TheAccountKeychainIsBuiltOneWay) {
  MemoryItemStore store;
  securestore::setDefaultItemStore(&store);
  Keychain keychain = makeAccountKeychain();
  EXPECT_EQ(keychain.service(), "kestrune-cli");
  EXPECT_EQ(keychain.accessibility(),
            securestore::Accessibility::afterFirstUnlock);
  EXPECT_EQ(keychain.itemClass(), securestore::ItemClass::genericPassword);
  EXPECT_EQ(&keychain.getItemStore(), &store);
  securestore::setDefaultItemStore(nullptr);
}

std::string accountProbe(const testsupport::Environment &environment,
                         std::vector<std::string> arguments) {
  testsupport::ProcessResult result =
      testsupport::runProcess(ACCOUNT_PROBE_PATH, {arguments, environment});
  EXPECT_EQ(result.exitCode, 0) << result.standardError;
  return result.standardOutput;
}

// Saves in one process and reads in others, on the store that each process
// chooses by itself.
void expectAccountSurvivesTheProcess(const testsupport::Environment &session,
                                     const std::string &expectedStore) {
  EXPECT_EQ(accountProbe(session, {"store"}), expectedStore + "\n");
  EXPECT_EQ(accountProbe(session, {"read"}), "noUsernameInKeychain (23)\n");
  EXPECT_EQ(
      accountProbe(session, {"save", "alice", "s3cret", "API-KEY",
                             "https://cn.example.com", "Org Group", "570"}),
      savedText);
  EXPECT_EQ(accountProbe(session, {"read"}),
            "alice|s3cret|API-KEY|https://cn.example.com|Org Group|570\n");
  EXPECT_EQ(accountProbe(session, {"keys"}),
            "apiKey\ngroupId\ngroupIdNum\nhostname\npassword\nusername\n");
}

TEST(ConfigControllerTest, TheNextProcessReadsTheAccountFromTheFileStore) {
  testsupport::TempDir dataHome;
  expectAccountSurvivesTheProcess(
      {{"XDG_DATA_HOME", dataHome.path().string()},
       {"DBUS_SESSION_BUS_ADDRESS", std::nullopt},
       {"XDG_RUNTIME_DIR", std::nullopt}},
      "file store at " +
          (dataHome.path() / "kestrune-cli" / "keychain").string());
}

TEST(ConfigControllerTest, TheNextProcessReadsTheAccountFromTheSecretService) {
  testsupport::PrivateSecretService service;
  if (!service.isRunning())
    GTEST_SKIP() << service.getProblem();
  testsupport::TempDir dataHome;
  expectAccountSurvivesTheProcess(
      {{"XDG_DATA_HOME", dataHome.path().string()},
       {"DBUS_SESSION_BUS_ADDRESS", service.getBusAddress()},
       {"XDG_RUNTIME_DIR", std::nullopt}},
      "Secret Service (default collection)");
}

} // namespace
} // namespace kestrune
