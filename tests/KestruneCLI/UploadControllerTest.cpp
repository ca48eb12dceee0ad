#include "KestruneCLI/Upload/UploadController.h"

#include "KestruneCLI/UrlSessionManager/UrlSessionManager.h"
#include "KestruneCLI/UrlSessionManager/UrlSessionUtil.h"
#include "MockConsole/MockConsole.h"
#include "Support/Doubles.h"
#include "Support/MemoryItemStore.h"
#include "Support/TestSupport.h"

#include <gtest/gtest.h>

#include <chrono>
#include <future>
#include <map>

// The upload where the built tool can't be driven: a client that gives
// neither a number nor an error, a store that fails, and an exit that
// returns, after which nothing may be sent that the failure forbids. The
// usual paths run on the built binary (tests/EndToEnd).

namespace {

using Blobs = std::map<std::string, std::optional<std::int64_t>>;
using Items = std::map<std::string, std::string>;

const Items account = {{"username", "alice"}, {"password", "pw"},
                       {"apiKey", "key"},     {"hostname", "https://h"},
                       {"groupId", "Org1"},   {"groupIdNum", "570"}};
const Blobs allThree = {{"App.pkg", 7}, {"App.plist", 8}, {"icon.png", 0}};
const Blobs refusedInstaller = {{"App.pkg", {}}, {"App.plist", 8}};
const Blobs refusedMetadata = {{"App.pkg", 7}, {"App.plist", {}}};
const Blobs refusedIcon = {{"App.pkg", 7}, {"App.plist", 8}, {"icon.png", {}}};
const Blobs noIcon = {{"App.pkg", 7}, {"App.plist", 8}};

struct Case {
  const char *name;
  const char *username; // stored, with the rest of the account
  bool unreadableStore;
  const char *installer;
  Blobs blobs;
  std::optional<std::string> appRefusal;
  std::string printed;
  std::vector<int> exitCodes;
  std::string calls;
};

const std::string notSignedIn =
    "\n❗️Error: Not Signed in, please use config "
    "subcommand to sign into console.\n\n";
const std::string uploadedAll = "blob App.pkg; blob App.plist; blob icon.png";

TEST(UploadControllerTest, StopsWhereEachFailureSaysWhenTheExitReturns) {
  testsupport::TempDir files;
  for (const char *name : {"App.pkg", "App.plist", "icon.png"})
    testsupport::writeFile(files.path() / name, name);
  const std::string dir = files.path().string() + "/";
  const Case cases[] = {
      {"an empty username: nothing is sent", "", false, "App.pkg", allThree,
       std::nullopt, notSignedIn, std::vector{46}, ""},
      {"a store that can't be read: not signed in", "alice", true, "App.pkg",
       allThree, std::nullopt,
       "OSStatus error:[-36] I/O error (bummers)\n" + notSignedIn,
       std::vector{46}, ""},
      {"an undecodable installer path: no model, nothing sent", "alice", false,
       "100%.pkg", allThree, std::nullopt,
       "\n❗️Error: Unable to fetch the location of the installer file.\n"
       "\n❗️Error: Unable to create an Upload Model\n",
       std::vector{36, 38}, ""},
      {"a missing installer: nothing sent", "alice", false, "none.pkg",
       allThree, std::nullopt,
       "\n❗️Error: Unable to fetch the location of the installer file.\n",
       std::vector{36}, ""},
      {"a refused installer: the metadata goes, then nothing", "alice", false,
       "App.pkg", refusedInstaller, std::nullopt, "\n❗️Error: refused\n",
       std::vector{33}, "blob App.pkg; blob App.plist"},
      {"a refused metadata: no application", "alice", false, "App.pkg",
       refusedMetadata, std::nullopt, "\n❗️Error: refused\n",
       std::vector{33}, "blob App.pkg; blob App.plist"},
      {"no answer for installer and metadata", "alice", false, "App.pkg",
       Blobs(), std::nullopt,
       "\n❗️Error: Unexpected error while uploading the installer\n"
       "\n❗️Error: Unexpected error while uploading the metadata\n",
       std::vector{41, 42}, "blob App.pkg; blob App.plist"},
      {"a refused icon: the application goes without it", "alice", false,
       "App.pkg", refusedIcon, std::nullopt, "\n❗️Error: refused\n",
       std::vector{33}, uploadedAll + "; app 8 7 none"},
      {"no answer for the icon: the application goes without it", "alice",
       false, "App.pkg", noIcon, std::nullopt,
       "\n❗️Error: Unexpected error while uploading the icon\n",
       std::vector{45}, uploadedAll + "; app 8 7 none"},
      {"the numbers go to their places, an icon of 0 included", "alice", false,
       "App.pkg", allThree, "no room", "\n❗️Error: no room\n",
       std::vector{52}, uploadedAll + "; app 8 7 0"},
  };
  for (const Case &c : cases) {
    SCOPED_TRACE(c.name);
    securestore::MemoryItemStore store;
    securestore::Keychain keychain =
        kestrune::makeAccountKeychain().withItemStore(store);
    for (const auto &[key, value] : account)
      keychain.set(key == "username" ? c.username : value, key);
    if (c.unreadableStore)
      store.answerAlways(securestore::MemoryItemStore::Operation::copyMatching,
                         -36);
    testsupport::ScriptedConsole console;
    console.blobIds = c.blobs;
    console.appRefusal = c.appRefusal;
    testsupport::RecordingExit exit;
    kestrune::UploadController controller(exit, keychain, console,
                                          kestrune::UrlSessionUtil::shared());

    std::string printed = testsupport::captureStdout([&] {
      controller.upload(dir + c.installer, dir + "App.plist", dir + "icon.png");
    });

    EXPECT_EQ(printed, c.printed);
    EXPECT_EQ(exit.codes, c.exitCodes);
    EXPECT_EQ(console.calls, c.calls);
  }
}

// The client sets no time limit of its own: a console that takes its time
// is waited for, however long.
TEST(UploadControllerTest, WaitsForAConsoleThatTakesItsTime) {
  using namespace std::chrono_literals;
  mockconsole::MockConsole console;
  console.addAccount({"alice", "pw", "key"});
  console.mapGroup("Org1", 570);
  mockconsole::Answer held;
  held.body = R"({"OrganizationGroups":[{"Id":571}]})";
  held.holdUntilReleased = true;
  console.scriptAnswer(mockconsole::Route::GroupSearch, held);
  console.start();
  kestrune::ConfigModel config{"alice", "pw", "key", console.getBaseUrl(),
                               "Org1",  570};
  std::future<std::optional<std::int64_t>> found =
      std::async(std::launch::async, [&] {
        std::optional<std::int64_t> number;
        kestrune::UrlSessionManager::shared().fetchGroupIdNum(
            config,
            config.hostname + "/api/system/groups/search?groupID=", "Org1",
            kestrune::UrlSessionUtil::shared(),
            [&](auto value, auto) { number = value; });
        return number;
      });
  ASSERT_TRUE(console.waitForRequests(1, 10s));
  EXPECT_EQ(found.wait_for(2s), std::future_status::timeout);
  console.releaseHeldAnswers();
  EXPECT_EQ(found.get(), 571);
}

} // namespace
