#include "KestruneCLI/Upload/UploadController.h"

#include "KestruneCLI/UrlSessionManager/UrlSessionManager.h"
#include "KestruneCLI/UrlSessionManager/UrlSessionUtil.h"
#include "MockConsole/MockConsole.h"
#include "Support/MemoryItemStore.h"
#include "Support/TestSupport.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <map>
#include <vector>

namespace kestrune {
namespace {

using Text = std::optional<std::string>;
using testsupport::captureStdout;

// Records the exit codes asked for and returns, so that the test sees where
// the controller goes on after each failure.
class RecordingDarwin final : public DarwinProtocol {
public:
  void exitCode(std::int32_t code) const override { codes.push_back(code); }
  mutable std::vector<std::int32_t> codes;
};

// What a user reads once the spinner is gone: the spinner hides and shows
// the cursor, and draws each frame, and the blanks that clear it, after a
// carriage return. It may draw once more after a failure's message, before
// the process ends, so every such piece goes wherever it stands.
std::string withoutSpinner(const std::string &out) {
  std::string text;
  for (std::size_t at = 0; at < out.size();) {
    if (out.compare(at, 5, "\x1b[?25") == 0 && at + 5 < out.size()) {
      at += 6;
    } else if (out[at] == '\r') {
      at = std::min(out.find_first_of("\r\n", at + 1), out.size());
    } else {
      text += out[at++];
    }
  }
  return text;
}

const std::map<std::string, std::string> signedIn = {
    {"username", "alice"}, {"password", "pw"},    {"apiKey", "key"},
    {"groupId", "Org1"},   {"groupIdNum", "570"}, {"hostname", ""}};

constexpr std::string_view uploaded[] = {
    "\n\n\n✅ installer file successfully uploaded. \n\n",
    "\n\n\n✅ metadata file successfully uploaded. \n\n"};

std::string applicationCreated(int id) {
  std::string text = std::to_string(id);
  return "\n💡Application has been uploaded to the console successfully. "
         "\n\n Please check: https://"
         "\x1b[3;31myour_uem_hostname.example\x1b[0;0m\x1b[0;0m\x1b[0;0m"
         "/Quellmark/#/Quellmark/Apps/Details/Internal/" +
         text + "/Summary \n\n The Application ID : " + text + " \n";
}

// The console's answer \p status with the JSON \p body.
mockconsole::Answer answer(int status, std::string body) {
  mockconsole::Answer result;
  result.status = status;
  result.body = std::move(body);
  return result;
}

struct PipelineCase {
  const char *what;
  // Items of the stored account that differ from signedIn; nullopt removes.
  std::map<std::string, Text> account;
  std::string installer = "App.pkg";
  std::string metadata = "App.plist";
  Text icon = "icon.png";
  // Answers of the blob route by call number.
  std::map<int, mockconsole::Answer> blobAnswers;
  std::string output;
  std::vector<std::int32_t> codes;
  // Route names of the requests, in order.
  std::vector<std::string> routes;
};

const PipelineCase pipelineCases[] = {
    {"an empty username counts as signed out",
     {{"username", ""}},
     "App.pkg",
     "App.plist",
     "icon.png",
     {},
     "\n❗️Error: Not Signed in, please use config subcommand to sign into "
     "console.\n\n",
     {46},
     {}},
    {"an undecodable installer path leaves no model",
     {},
     "100%.pkg",
     "App.plist",
     std::nullopt,
     {},
     "\n❗️Error: Unable to fetch the location of the installer file.\n"
     "\n❗️Error: Unable to create an Upload Model\n",
     {36, 38},
     {}},
    {"a failed installer still lets the metadata go, then stops",
     {},
     "App.pkg",
     "App.plist",
     "icon.png",
     {{1, answer(500, R"({"message":"disk full"})")}},
     "\n\n\n❗️Error: disk full\n" + std::string(uploaded[1]),
     {33},
     {"blobs", "blobs"}},
    {"a failed icon: the application goes without it",
     {},
     "App.pkg",
     "App.plist",
     "icon.png",
     {{3, answer(500, "{}")}},
     std::string(uploaded[0]) + std::string(uploaded[1]) +
         "\n\n\n❗️Error: The API response error message is unknown while "
         "uploading the binary\n" +
         applicationCreated(1),
     {34},
     {"blobs", "blobs", "blobs", "apps"}},
    {"a stored group number that isn't one fails at each upload",
     {{"groupIdNum", "570x"}},
     "App.pkg",
     "App.plist",
     "icon.png",
     {},
     "❗️Error: Unable to fetch the group id while uploading the binary\n"
     "❗️Error: Unable to fetch the group id while uploading the binary\n",
     {30, 30},
     {}},
};

// With an exit that returns, each failure leaves the pipeline in its defined
// place; the built binary's own tests cover the real exits.
TEST(UploadControllerTest, GoesOnAsDefinedWhenTheExitReturns) {
  testsupport::TempDir dir;
  testsupport::writeFile(dir.path() / "App.pkg", "installer bytes");
  testsupport::writeFile(dir.path() / "App.plist", "<plist/>");
  testsupport::writeFile(dir.path() / "icon.png", "png");
  for (const PipelineCase &c : pipelineCases) {
    SCOPED_TRACE(c.what);
    mockconsole::MockConsole console;
    console.addAccount({"alice", "pw", "key"});
    console.mapGroup("Org1", 570);
    for (const auto &[call, answer] : c.blobAnswers)
      console.scriptAnswer(mockconsole::Route::UploadBlob, call, answer);
    console.start();

    securestore::MemoryItemStore store;
    securestore::Keychain keychain = makeAccountKeychain().withItemStore(store);
    std::map<std::string, Text> account(signedIn.begin(), signedIn.end());
    account["hostname"] = console.getBaseUrl();
    for (const auto &[key, value] : c.account)
      account[key] = value;
    for (const auto &[key, value] : account)
      if (value)
        keychain.set(*value, key);

    RecordingDarwin darwin;
    UploadController controller(darwin, keychain, UrlSessionManager::shared(),
                                UrlSessionUtil::shared());
    auto path = [&](const std::string &name) {
      return (dir.path() / name).string();
    };
    std::string out = captureStdout([&] {
      controller.upload(path(c.installer), path(c.metadata),
                        c.icon ? Text(path(*c.icon)) : std::nullopt);
    });

    EXPECT_EQ(withoutSpinner(out), c.output);
    EXPECT_EQ(darwin.codes, c.codes);
    std::vector<std::string> routes;
    for (const mockconsole::LoggedRequest &request : console.getRequests())
      routes.emplace_back(mockconsole::getRouteName(request.route));
    EXPECT_EQ(routes, c.routes);
  }
}

// A console client that answers from a script, for answers the real one
// never gives: a blob upload with neither a number nor an error.
class ScriptedClient final : public URLSessionManagerProtocol {
public:
  void fetchGroupIdNum(const ConfigModel &, const std::string &,
                       const std::string &, const UrlSessionUtilProtocol &,
                       const NumberCompletion &completion) const override {
    completion(std::nullopt, std::nullopt);
  }
  void doUploadBlob(const ConfigModel &, const std::string &,
                    const std::string &binaryName,
                    const UrlSessionUtilProtocol &, BlobType,
                    const NumberCompletion &completion) const override {
    calls.push_back(binaryName);
    auto found = blobIds.find(binaryName);
    completion(found == blobIds.end() ? std::nullopt : found->second,
               std::nullopt);
  }
  void doFinalUpload(const ConfigModel &, std::int64_t metadataValue,
                     std::int64_t installerValue,
                     std::optional<std::int64_t> iconValue,
                     const UrlSessionUtilProtocol &,
                     const ErrorCompletion &completion) const override {
    calls.push_back("app " + std::to_string(metadataValue) + " " +
                    std::to_string(installerValue) + " " +
                    (iconValue ? std::to_string(*iconValue) : "none"));
    completion(finalError);
  }

  std::map<std::string, std::optional<std::int64_t>> blobIds;
  std::optional<CliError> finalError;
  mutable std::vector<std::string> calls;
};

struct SilentCase {
  const char *what;
  std::map<std::string, std::optional<std::int64_t>> blobIds;
  std::optional<CliError> finalError;
  std::string output;
  std::vector<std::int32_t> codes;
  std::vector<std::string> calls;
};

const SilentCase silentCases[] = {
    {"no answer for the installer and the metadata",
     {},
     std::nullopt,
     "\n❗️Error: Unexpected error while uploading the installer\n"
     "\n❗️Error: Unexpected error while uploading the metadata\n",
     {41, 42},
     {"App.pkg", "App.plist"}},
    {"no answer for the icon",
     {{"App.pkg", 7}, {"App.plist", 8}},
     std::nullopt,
     "\n❗️Error: Unexpected error while uploading the icon\n",
     {45},
     {"App.pkg", "App.plist", "icon.png", "app 8 7 none"}},
    {"the blob numbers go to their places, zero included",
     {{"App.pkg", 7}, {"App.plist", 8}, {"icon.png", 0}},
     CliError::errorCreatingApplicationWithMessage("no room"),
     "\n❗️Error: no room\n",
     {52},
     {"App.pkg", "App.plist", "icon.png", "app 8 7 0"}},
};

TEST(UploadControllerTest, ReportsStagesThatEndWithoutAnAnswer) {
  securestore::MemoryItemStore store;
  securestore::Keychain keychain = makeAccountKeychain().withItemStore(store);
  for (const auto &[key, value] : signedIn)
    keychain.set(value, key);
  for (const SilentCase &c : silentCases) {
    SCOPED_TRACE(c.what);
    ScriptedClient client;
    client.blobIds = c.blobIds;
    client.finalError = c.finalError;
    RecordingDarwin darwin;
    UploadController controller(darwin, keychain, client,
                                UrlSessionUtil::shared());
    std::string out = captureStdout(
        [&] { controller.upload("App.pkg", "App.plist", "icon.png"); });
    EXPECT_EQ(out, c.output);
    EXPECT_EQ(darwin.codes, c.codes);
    EXPECT_EQ(client.calls, c.calls);
  }
}

} // namespace
} // namespace kestrune
