#include "KestruneCLI/Config/ConfigController.h"

#include "KestruneCLI/Config/SpinnerTranscript.h"
#include "KestruneCLI/UrlSessionManager/UrlSessionManager.h"
#include "MockConsole/MockConsole.h"
#include "Support/MemoryItemStore.h"
#include "Support/TestSupport.h"

#include <gtest/gtest.h>

#include <functional>
#include <map>
#include <optional>
#include <string>
#include <utility>
#include <vector>

// The account operations where the built tool can't show them: failures of
// the store and a console client that gives nothing at all, and the way each
// operation goes on when the process exit returns (it records its code here).
// The console is the simulator over loopback; the items are in memory. The
// usual paths are tested on the built binary, in tests/EndToEnd.

namespace {

using kestrune::ConfigController;
using kestrune::ConfigModel;
using Items = std::map<std::string, std::string>;
using Operation = securestore::MemoryItemStore::Operation;

constexpr const char *password = "s3cr3t-Pw";
constexpr const char *apiKey = "K3Y-4pi";
constexpr securestore::OSStatus ioError = -36;
const char *const accountKeys[] = {"username", "password", "apiKey",
                                   "hostname", "groupId",  "groupIdNum"};

const std::string signedIn = "\n💡-------------------------------------------💡"
                             "\n\tYou have signed in successfully.\n\n";
const std::string saved = "\n🔑Information has been successfully saved into "
                          "secure macOS keychain.\n\n";
const std::string signedOut = "\n🔐-------------------------------------------"
                              "🔗\n\tYou have signed out successfully.\n\n";
const std::string ioFailure = "OSStatus error:[-36] I/O error (bummers)\n";

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

/// A console that knows the account admin with the password and API key
/// above and the groups ACME (570) and OTHER (571), the account's items in
/// memory, and the exit codes asked for. One per case.
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

  ConfigController makeController(bool silent) {
    if (silent)
      return ConfigController(silentConsole, keychain(), darwin);
    return ConfigController(kestrune::UrlSessionManager::shared(), keychain(),
                            darwin);
  }

  Items fullAccount() {
    return {{"username", "admin"}, {"password", password},
            {"apiKey", apiKey},    {"hostname", console.getBaseUrl()},
            {"groupId", "ACME"},   {"groupIdNum", "570"}};
  }

  /// Stores the account as a sign-in would, with \p changes; an empty value
  /// leaves its item out.
  void storeAccount(const Items &changes) {
    Items items = fullAccount();
    for (const auto &[key, value] : changes)
      items[key] = value;
    for (const auto &[key, value] : items)
      if (!value.empty())
        keychain().set(value, key);
  }

  Items storedItems() {
    Items items;
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
    for (auto at = transcript.find(base); at != std::string::npos;
         at = transcript.find(base, at))
      transcript.replace(at, base.size(), "{base}");
    return transcript;
  }

  mockconsole::MockConsole console;
  securestore::MemoryItemStore store;
  RecordingDarwin darwin;
  SilentConsole silentConsole;
};

struct OperationCase {
  const char *name;
  /// Items stored beforehand: the full account with these changes, or
  /// nothing when absent.
  std::optional<Items> stored;
  std::function<void(Scene &)> arrange;
  bool silentConsole;
  std::function<void(ConfigController &, Scene &)> operation;
  std::string printed;
  std::vector<int> exitCodes;
  std::size_t requests;
  /// The items afterwards: the full account with these changes.
  std::optional<Items> storedAfter;
};

void signInAsAdmin(ConfigController &controller, Scene &scene) {
  controller.signIn({"admin", password, apiKey, scene.console.getBaseUrl(),
                     "ACME", std::nullopt});
}

void runCases(const std::vector<OperationCase> &cases) {
  for (const OperationCase &c : cases) {
    SCOPED_TRACE(c.name);
    Scene scene;
    if (c.stored)
      scene.storeAccount(*c.stored);
    if (c.arrange)
      c.arrange(scene);
    ConfigController controller = scene.makeController(c.silentConsole);

    std::string printed = scene.run([&] { c.operation(controller, scene); });

    EXPECT_EQ(printed, c.printed);
    EXPECT_EQ(scene.darwin.codes, c.exitCodes);
    std::vector<mockconsole::LoggedRequest> requests =
        scene.console.getRequests();
    EXPECT_EQ(requests.size(), c.requests);
    scene.store.clearAnswers();
    Items expected;
    if (c.storedAfter) {
      expected = scene.fullAccount();
      for (const auto &[key, value] : *c.storedAfter)
        expected[key] = value;
      std::erase_if(expected,
                    [](const auto &item) { return item.second.empty(); });
    }
    EXPECT_EQ(scene.storedItems(), expected);
  }
}

TEST(AccountOperationsTest, SignInWhereOnlyAFakeGetsIn) {
  runCases({
      {"already signed in, and the exit returns: the refusal, then the "
       "sign-in goes on",
       Items{{"username", "someone"}},
       nullptr,
       false,
       signInAsAdmin,
       "<hide><clear><show><cr>\n❗️ERROR: You have already signed in as: "
       "someone \n\n<show>" +
           signedIn + saved,
       {20},
       1,
       Items{}},
      {"a lookup that gives nothing at all",
       std::nullopt,
       nullptr,
       true,
       signInAsAdmin,
       "<hide>\n❗️ERROR: Unknown error while fetching group id\n<show>",
       {18},
       0,
       std::nullopt},
      {"a store that can't be read counts as nobody signed in",
       std::nullopt,
       [](Scene &scene) {
         scene.store.answerNext(Operation::copyMatching, ioError);
       },
       false,
       signInAsAdmin,
       "<hide>" + ioFailure + "<clear><show><cr><show>" + signedIn + saved,
       {},
       1,
       Items{}},
      {"a save that fails at the last item is only reported",
       std::nullopt,
       [](Scene &scene) {
         scene.store.answerForAccount(Operation::addItem, "groupIdNum",
                                      ioError);
       },
       false,
       signInAsAdmin,
       std::string(configtest::clearedSpinner) + signedIn + ioFailure +
           "❗️Error: Unable to save user info in macOS Keychain: I/O error "
           "(bummers)\n\n",
       {},
       1,
       Items{{"groupIdNum", ""}}},
  });
}

TEST(AccountOperationsTest, SignOutWhereOnlyAFakeGetsIn) {
  auto signOut = [](ConfigController &controller, Scene &) {
    controller.signOut();
  };
  runCases({
      {"signed out already, and the exit returns: the removals run all the "
       "same",
       std::nullopt,
       nullptr,
       false,
       signOut,
       "\n❗️Error: You have signed out already.\n" + signedOut,
       {17},
       0,
       std::nullopt},
      {"a removal that fails leaves the later items",
       Items{},
       [](Scene &scene) {
         scene.store.answerForAccount(Operation::deleteItems, "hostname",
                                      ioError);
       },
       false,
       signOut,
       ioFailure + "\n❗️Error: Unable to signout - I/O error (bummers)\n",
       {21},
       0,
       Items{{"username", ""}, {"password", ""}, {"apiKey", ""}}},
  });
}

TEST(AccountOperationsTest, ListInfoTellsWhetherItListed) {
  std::optional<bool> listed;
  auto list = [&](ConfigController &controller, Scene &) {
    listed = controller.listInfo();
  };
  runCases({{"a group number that doesn't parse shows as nil",
             Items{{"groupIdNum", "57O"}},
             nullptr,
             false,
             list,
             "\n📖 Account Info:\nUsername:\t\tadmin\nGroup ID:\t\tACME\n"
             "Group ID Number:\tnil\nHostname:\t\t{base}\n\n",
             {},
             0,
             Items{{"groupIdNum", "57O"}}}});
  EXPECT_EQ(listed, true);
  runCases({{"an item missing",
             Items{{"apiKey", ""}},
             nullptr,
             false,
             list,
             "\n❗️Error: ApiKey not found in the keychain. Please login "
             "again\n",
             {27},
             0,
             Items{{"apiKey", ""}}}});
  EXPECT_EQ(listed, false);
}

TEST(AccountOperationsTest, EditGroupIdStoresOnlyAGroupTheConsoleKnows) {
  auto editTo = [](std::string group) {
    return [group](ConfigController &controller, Scene &) {
      controller.editGroupId(group);
    };
  };
  runCases({
      {"a known group",
       Items{},
       nullptr,
       false,
       editTo("OTHER"),
       "",
       {},
       1,
       Items{{"groupId", "OTHER"}, {"groupIdNum", "571"}}},
      {"a group the console doesn't know",
       Items{},
       nullptr,
       false,
       editTo("NOPE"),
       "\n❗️Error: The url response has no Organization Group details\n",
       {15},
       1,
       Items{}},
      {"a lookup that gives nothing at all",
       Items{},
       nullptr,
       true,
       editTo("OTHER"),
       "\n❗️ERROR: Unknown error while editing the group id\n",
       {19},
       0,
       Items{}},
      {"nobody signed in",
       Items{{"username", ""}},
       nullptr,
       false,
       editTo("OTHER"),
       "\n❗️Error: Username not found in the keychain. Please login "
       "again\n",
       {23},
       0,
       Items{{"username", ""}}},
  });
}

TEST(AccountOperationsTest, EditGroupIdAsksWithTheStoredCredentials) {
  Scene scene;
  scene.storeAccount({});
  ConfigController controller = scene.makeController(false);
  scene.run([&] { controller.editGroupId("OTHER"); });

  std::vector<mockconsole::LoggedRequest> requests =
      scene.console.getRequests();
  ASSERT_EQ(requests.size(), 1u);
  EXPECT_EQ(requests[0].target, "/api/system/groups/search?groupID=OTHER");
  EXPECT_EQ(requests[0].getHeader("Authorization"),
            "Basic YWRtaW46czNjcjN0LVB3"); // admin:s3cr3t-Pw
  EXPECT_EQ(requests[0].getHeader("qm-tenant-code"), apiKey);
}

} // namespace
