#include "KestruneCLI/Config/ConfigController.h"

#include "KestruneCLI/Config/SpinnerTranscript.h"
#include "KestruneCLI/UrlSessionManager/UrlSessionManager.h"
#include "MockConsole/MockConsole.h"
#include "SecureStore/MemoryItemStore.h"
#include "SecureStore/SecConstants.h"
#include "Support/TestSupport.h"

#include <gtest/gtest.h>

#include <functional>
#include <map>
#include <optional>
#include <set>
#include <string>
#include <utility>
#include <vector>

// The account operations against the console simulator over loopback, with
// the items in memory and a process exit that records its code and returns.

namespace {

using kestrune::ConfigController;
using kestrune::ConfigModel;
using securestore::Dictionary;
using securestore::OSStatus;

constexpr const char *password = "s3cr3t-Pw";
constexpr const char *apiKey = "K3Y-4pi";
const char *const accountKeys[] = {"username",   "hostname", "groupId",
                                   "groupIdNum", "password", "apiKey"};

const std::string signedInText =
    "\n💡-------------------------------------------💡\n"
    "\tYou have signed in successfully.\n\n";
const std::string savedText = "\n🔑Information has been successfully saved "
                              "into secure macOS keychain.\n\n";
const std::string signedOutText =
    "\n🔐-------------------------------------------🔗\n"
    "\tYou have signed out successfully.\n\n";
const std::string ioFailureLine = "OSStatus error:[-36] I/O error (bummers)\n";

/// Records the exit codes it is given, and returns.
class RecordingDarwin final : public kestrune::DarwinProtocol {
public:
  void exitCode(std::int32_t code) const override { codes.push_back(code); }
  mutable std::vector<int> codes;
};

/// A console client whose lookup gives neither a number nor an error.
class SilentConsole final : public kestrune::URLSessionManagerProtocol {
public:
  void
  fetchGroupIdNum(const ConfigModel &, const std::string &, const std::string &,
                  const kestrune::UrlSessionUtilProtocol &,
                  const kestrune::NumberCompletion &completion) const override {
    completion(std::nullopt, std::nullopt);
  }
  void doUploadBlob(const ConfigModel &, const std::string &,
                    const std::string &,
                    const kestrune::UrlSessionUtilProtocol &,
                    kestrune::BlobType,
                    const kestrune::NumberCompletion &) const override {}
  void doFinalUpload(const ConfigModel &, std::int64_t, std::int64_t,
                     std::optional<std::int64_t>,
                     const kestrune::UrlSessionUtilProtocol &,
                     const kestrune::ErrorCompletion &) const override {}
};

/// Items in memory, with chosen keys whose writes or removals fail with an
/// I/O error, and whose next read fails so.
class FailingItemStore final : public securestore::ItemStore {
public:
  std::set<std::string> failedWrites, failedRemovals;
  std::set<std::string> failedNextRead;

  OSStatus copyMatching(const Dictionary &query,
                        securestore::CopyResult *result) override {
    if (auto key = accountOf(query); key && failedNextRead.erase(*key))
      return ioError;
    return items.copyMatching(query, result);
  }
  OSStatus addItem(const Dictionary &attributes) override {
    if (names(attributes, failedWrites))
      return ioError;
    return items.addItem(attributes);
  }
  OSStatus updateItems(const Dictionary &query,
                       const Dictionary &attributesToUpdate) override {
    if (names(query, failedWrites))
      return ioError;
    return items.updateItems(query, attributesToUpdate);
  }
  OSStatus deleteItems(const Dictionary &query) override {
    if (names(query, failedRemovals))
      return ioError;
    return items.deleteItems(query);
  }
  securestore::AccessControlResult
  createAccessControl(const std::string &protection,
                      std::uint64_t flags) override {
    return items.createAccessControl(protection, flags);
  }
  std::string describe() const override { return "failing store"; }

private:
  static constexpr OSStatus ioError = -36;

  static std::optional<std::string> accountOf(const Dictionary &dictionary) {
    auto account = dictionary.find(securestore::kSecAttrAccount);
    if (account == dictionary.end())
      return std::nullopt;
    if (const auto *key = std::get_if<std::string>(&account->second))
      return *key;
    return std::nullopt;
  }
  static bool names(const Dictionary &dictionary,
                    const std::set<std::string> &keys) {
    auto key = accountOf(dictionary);
    return key && keys.contains(*key);
  }

  securestore::MemoryItemStore items;
};

/// A console that knows the account admin with the password and API key
/// above, and the groups ACME (570) and OTHER (571); an account store in
/// memory; the exit codes asked for. One per case.
struct Scene {
  Scene() {
    console.addAccount({"admin", password, apiKey});
    console.mapGroup("ACME", 570);
    console.mapGroup("OTHER", 571);
    console.start();
  }

  securestore::Keychain keychain() {
    return kestrune::makeAccountKeychain().withItemStore(store);
  }

  ConfigController makeController(bool silent = false) {
    if (silent)
      return ConfigController(silentConsole, keychain(), darwin);
    return ConfigController(kestrune::UrlSessionManager::shared(), keychain(),
                            darwin);
  }

  ConfigModel account(std::string accountPassword = password,
                      std::string accountKey = apiKey,
                      std::string groupId = "ACME") {
    return {"admin",
            std::move(accountPassword),
            std::move(accountKey),
            console.getBaseUrl(),
            std::move(groupId),
            std::nullopt};
  }

  /// The items a sign-in stores.
  std::map<std::string, std::string> fullAccount() {
    return {{"username", "admin"}, {"password", password},
            {"apiKey", apiKey},    {"hostname", console.getBaseUrl()},
            {"groupId", "ACME"},   {"groupIdNum", "570"}};
  }

  /// Stores the account as a sign-in would, with \p changes; an empty value
  /// leaves its item out.
  void storeAccount(const std::map<std::string, std::string> &changes = {}) {
    std::map<std::string, std::string> items = fullAccount();
    for (const auto &[key, value] : changes)
      items[key] = value;
    for (const auto &[key, value] : items)
      if (!value.empty())
        keychain().set(value, key);
  }

  /// Every item of the account that is stored, by key.
  std::map<std::string, std::string> storedItems() {
    std::map<std::string, std::string> items;
    for (const char *key : accountKeys)
      if (auto value = keychain()[key].read())
        items[key] = *value;
    return items;
  }

  /// Runs \p body and gives what it printed, with the spinner made readable
  /// and the console's address as "{base}". Neither secret may appear in it,
  /// on any path.
  std::string run(const std::function<void()> &body) {
    std::string printed = testsupport::captureStdout(body);
    EXPECT_EQ(printed.find(password), std::string::npos) << printed;
    EXPECT_EQ(printed.find(apiKey), std::string::npos) << printed;
    std::string transcript = configtest::readSpinnerTranscript(printed);
    const std::string base = console.getBaseUrl();
    for (std::size_t at = transcript.find(base); at != std::string::npos;
         at = transcript.find(base, at))
      transcript.replace(at, base.size(), "{base}");
    return transcript;
  }

  mockconsole::MockConsole console;
  FailingItemStore store;
  RecordingDarwin darwin;
  SilentConsole silentConsole;
};

mockconsole::Answer answerWith(int status, std::string body) {
  mockconsole::Answer answer;
  answer.status = status;
  answer.body = std::move(body);
  return answer;
}

const std::string cleared(configtest::clearedSpinner);

struct SignInCase {
  const char *name;
  std::function<void(Scene &)> arrange;
  std::string password, apiKey, groupId;
  bool silentConsole;
  std::string transcript;
  std::vector<int> exitCodes;
  std::size_t requests;
  /// Stored afterwards: the full account, or nothing at all.
  bool stored;
};

TEST(AccountOperationsTest, SignInProvesTheCredentialsBeforeAnythingIsSaved) {
  auto nothing = [](Scene &) {};
  // On a failed lookup the message lands behind the spinner's line, which
  // stays: a real process ends right there. The exit here returns, and the
  // spinner going away shows the cursor.
  const std::vector<SignInCase> cases = {
      {"good credentials",
       nothing,
       password,
       apiKey,
       "ACME",
       false,
       cleared + signedInText + savedText,
       {},
       1,
       true},
      {"a wrong password",
       nothing,
       "wrong",
       apiKey,
       "ACME",
       false,
       "<hide>\n❗️Error: User credentials are incorrect.\n<show>",
       {13},
       1,
       false},
      {"a wrong API key",
       nothing,
       password,
       "nope",
       "ACME",
       false,
       "<hide>\n❗️Error: The API key (qm-tenant-code) is not valid for "
       "this "
       "user.\n<show>",
       {13},
       1,
       false},
      {"a group the console doesn't know",
       nothing,
       password,
       apiKey,
       "NOPE",
       false,
       "<hide>\n❗️Error: The url response has no Organization Group "
       "details\n<show>",
       {15},
       1,
       false},
      {"a group ID that makes no URL",
       nothing,
       password,
       apiKey,
       "AC ME",
       false,
       "<hide>\n❗️Error: Unable to form a valid URL with the string "
       "{base}/api/system/groups/search?groupID=AC ME\n<show>",
       {11},
       0,
       false},
      {"a console answering HTML",
       [](Scene &scene) {
         scene.console.scriptAnswer(mockconsole::Route::GroupSearch,
                                    answerWith(500, "<html>down</html>"));
       },
       password,
       apiKey,
       "ACME",
       false,
       "<hide>\n❗️Error: Unable to get a valid JSON response\n<show>",
       {12},
       1,
       false},
      {"a lookup that gives nothing at all",
       nothing,
       password,
       apiKey,
       "ACME",
       true,
       "<hide>\n❗️ERROR: Unknown error while fetching group id\n<show>",
       {18},
       0,
       false},
      {"a store that can't be read counts as nobody signed in",
       [](Scene &scene) { scene.store.failedNextRead = {"username"}; },
       password,
       apiKey,
       "ACME",
       false,
       "<hide>" + ioFailureLine + cleared.substr(6) + signedInText + savedText,
       {},
       1,
       true},
  };
  for (const SignInCase &c : cases) {
    SCOPED_TRACE(c.name);
    Scene scene;
    c.arrange(scene);
    ConfigController controller = scene.makeController(c.silentConsole);
    ConfigModel config = scene.account(c.password, c.apiKey, c.groupId);

    std::string transcript = scene.run([&] { controller.signIn(config); });

    EXPECT_EQ(transcript, c.transcript);
    EXPECT_EQ(scene.darwin.codes, c.exitCodes);
    EXPECT_EQ(scene.console.getRequests().size(), c.requests);
    const std::map<std::string, std::string> noItems;
    EXPECT_EQ(scene.storedItems(), c.stored ? scene.fullAccount() : noItems);
  }
}

TEST(AccountOperationsTest, SignInSendsTheGivenCredentialsToTheGroupSearch) {
  Scene scene;
  ConfigController controller = scene.makeController();
  scene.run([&] { controller.signIn(scene.account()); });

  std::vector<mockconsole::LoggedRequest> requests =
      scene.console.getRequests();
  ASSERT_EQ(requests.size(), 1u);
  EXPECT_EQ(requests[0].method, "GET");
  EXPECT_EQ(requests[0].target, "/api/system/groups/search?groupID=ACME");
  EXPECT_EQ(requests[0].getHeader("Authorization"),
            "Basic YWRtaW46czNjcjN0LVB3"); // admin:s3cr3t-Pw
  EXPECT_EQ(requests[0].getHeader("qm-tenant-code"), apiKey);
}

TEST(AccountOperationsTest, SignInWhileSignedInIsRefusedBeforeAnyRequest) {
  Scene scene;
  scene.storeAccount({{"username", "someone"}});
  ConfigController controller = scene.makeController();

  std::string transcript =
      scene.run([&] { controller.signIn(scene.account()); });

  // The refusal comes first, with the spinner cleared. A process exit that
  // returns lets the sign-in go on, and then it signs in over the account.
  EXPECT_EQ(
      transcript,
      "<hide><clear><show><cr>\n❗️ERROR: You have already signed in as: "
      "someone \n\n<show>" +
          signedInText + savedText);
  EXPECT_EQ(scene.darwin.codes, std::vector<int>{20});
  EXPECT_EQ(scene.storedItems(), scene.fullAccount());
}

TEST(AccountOperationsTest, AFailedSaveAfterAGoodLookupIsOnlyReported) {
  Scene scene;
  scene.store.failedWrites = {"groupIdNum"};
  ConfigController controller = scene.makeController();

  std::string transcript =
      scene.run([&] { controller.signIn(scene.account()); });

  EXPECT_EQ(transcript, cleared + signedInText + ioFailureLine +
                            "❗️Error: Unable to save user info in macOS "
                            "Keychain: I/O error (bummers)\n\n");
  EXPECT_TRUE(scene.darwin.codes.empty());
  std::map<std::string, std::string> fiveItems = scene.fullAccount();
  fiveItems.erase("groupIdNum");
  EXPECT_EQ(scene.storedItems(), fiveItems);
}

struct SignOutCase {
  const char *name;
  bool signedIn;
  std::set<std::string> failedRemovals;
  std::string transcript;
  std::vector<int> exitCodes;
  std::set<std::string> itemsLeft;
};

TEST(AccountOperationsTest, SignOutRemovesEveryItemOfTheAccount) {
  const std::vector<SignOutCase> cases = {
      {"signed in", true, {}, signedOutText, {}, {}},
      // A process exit that returns lets the removals run all the same.
      {"signed out already",
       false,
       {},
       "\n❗️Error: You have signed out already.\n" + signedOutText,
       {17},
       {}},
      {"a removal that fails",
       true,
       {"hostname"},
       ioFailureLine +
           "\n❗️Error: Unable to signout - I/O error (bummers)\n",
       {21},
       {"hostname", "groupId", "groupIdNum"}},
  };
  for (const SignOutCase &c : cases) {
    SCOPED_TRACE(c.name);
    Scene scene;
    if (c.signedIn)
      scene.storeAccount();
    scene.store.failedRemovals = c.failedRemovals;
    ConfigController controller = scene.makeController();

    std::string transcript = scene.run([&] { controller.signOut(); });

    EXPECT_EQ(transcript, c.transcript);
    EXPECT_EQ(scene.darwin.codes, c.exitCodes);
    std::set<std::string> left;
    for (const auto &item : scene.storedItems())
      left.insert(item.first);
    EXPECT_EQ(left, c.itemsLeft);
    EXPECT_TRUE(scene.console.getRequests().empty());
  }
}

struct ListCase {
  const char *name;
  std::map<std::string, std::string> changes;
  bool listed;
  std::string printed;
  std::vector<int> exitCodes;
};

TEST(AccountOperationsTest, ListInfoShowsTheAccountWithoutItsSecrets) {
  const std::vector<ListCase> cases = {
      {"the whole account",
       {},
       true,
       "\n📖 Account Info:\nUsername:\t\tadmin\nGroup ID:\t\tACME\n"
       "Group ID Number:\t570\nHostname:\t\t{base}\n\n",
       {}},
      {"a number with a sign and zeros, a group ID beyond ASCII",
       {{"groupIdNum", "+0012"}, {"groupId", "Ünï cødé"}},
       true,
       "\n📖 Account Info:\nUsername:\t\tadmin\nGroup ID:\t\tÜnï cødé\n"
       "Group ID Number:\t12\nHostname:\t\t{base}\n\n",
       {}},
      {"a number that doesn't parse",
       {{"groupIdNum", "57O"}},
       true,
       "\n📖 Account Info:\nUsername:\t\tadmin\nGroup ID:\t\tACME\n"
       "Group ID Number:\tnil\nHostname:\t\t{base}\n\n",
       {}},
      {"no hostname",
       {{"hostname", ""}},
       false,
       "\n❗️Error: Hostname not found in the keychain. Please login "
       "again\n",
       {26}},
      {"nothing stored",
       {{"username", ""},
        {"password", ""},
        {"apiKey", ""},
        {"hostname", ""},
        {"groupId", ""},
        {"groupIdNum", ""}},
       false,
       "\n❗️Error: Username not found in the keychain. Please login "
       "again\n",
       {23}},
  };
  for (const ListCase &c : cases) {
    SCOPED_TRACE(c.name);
    Scene scene;
    scene.storeAccount(c.changes);
    ConfigController controller = scene.makeController();
    bool listed = !c.listed;

    std::string printed = scene.run([&] { listed = controller.listInfo(); });

    EXPECT_EQ(listed, c.listed);
    EXPECT_EQ(printed, c.printed);
    EXPECT_EQ(scene.darwin.codes, c.exitCodes);
  }
}

struct EditCase {
  const char *name;
  std::map<std::string, std::string> stored;
  bool silentConsole;
  std::string newGroup;
  std::string printed;
  std::vector<int> exitCodes;
  std::size_t requests;
  std::pair<std::string, std::string> groupAfter;
};

TEST(AccountOperationsTest, EditGroupIdStoresOnlyAGroupTheConsoleKnows) {
  const std::pair<std::string, std::string> unchanged = {"ACME", "570"};
  const std::vector<EditCase> cases = {
      {"a known group", {}, false, "OTHER", "", {}, 1, {"OTHER", "571"}},
      {"a group the console doesn't know",
       {},
       false,
       "NOPE",
       "\n❗️Error: The url response has no Organization Group details\n",
       {15},
       1,
       unchanged},
      {"stored credentials the console refuses",
       {{"password", "outdated"}},
       false,
       "OTHER",
       "\n❗️Error: User credentials are incorrect.\n",
       {13},
       1,
       unchanged},
      {"a lookup that gives nothing at all",
       {},
       true,
       "OTHER",
       "\n❗️ERROR: Unknown error while editing the group id\n",
       {19},
       0,
       unchanged},
      {"nobody signed in",
       {{"username", ""}},
       false,
       "OTHER",
       "\n❗️Error: Username not found in the keychain. Please login "
       "again\n",
       {23},
       0,
       unchanged},
      {"no group number stored",
       {{"groupIdNum", ""}},
       false,
       "OTHER",
       "\n❗️Error: Group ID number not found in the keychain. Please login "
       "again\n",
       {25},
       0,
       {"ACME", ""}},
  };
  for (const EditCase &c : cases) {
    SCOPED_TRACE(c.name);
    Scene scene;
    scene.storeAccount(c.stored);
    ConfigController controller = scene.makeController(c.silentConsole);

    std::string printed =
        scene.run([&] { controller.editGroupId(c.newGroup); });

    EXPECT_EQ(printed, c.printed);
    EXPECT_EQ(scene.darwin.codes, c.exitCodes);
    EXPECT_EQ(scene.console.getRequests().size(), c.requests);
    EXPECT_EQ(scene.keychain()["groupId"].read().value_or(""),
              c.groupAfter.first);
    EXPECT_EQ(scene.keychain()["groupIdNum"].read().value_or(""),
              c.groupAfter.second);
  }
}

TEST(AccountOperationsTest, EditGroupIdAsksWithTheStoredCredentials) {
  Scene scene;
  scene.storeAccount();
  ConfigController controller = scene.makeController();
  scene.run([&] { controller.editGroupId("OTHER"); });

  std::vector<mockconsole::LoggedRequest> requests =
      scene.console.getRequests();
  ASSERT_EQ(requests.size(), 1u);
  EXPECT_EQ(requests[0].target, "/api/system/groups/search?groupID=OTHER");
  EXPECT_EQ(requests[0].getHeader("Authorization"),
            "Basic YWRtaW46czNjcjN0LVB3");
  EXPECT_EQ(requests[0].getHeader("qm-tenant-code"), apiKey);
}

} // namespace
