#include "MockConsole/MockConsole.h"
#include "SecureStore/FileItemStore.h"
#include "SecureStore/Keychain.h"
#include "Support/ProcessRunner.h"
#include "Support/TestSupport.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <map>
#include <string>
#include <vector>

// `kestrunecli upload` as a user runs it: the built binary, its account in
// the file store of a throwaway HOME, against the console simulator on a
// loopback port. Standard output, the exit code and the simulator's request
// log are compared exactly.

namespace {

namespace fs = std::filesystem;
using Text = std::optional<std::string>;

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

std::string uploaded(std::string_view blobType) {
  return "\n\n\n✅ " + std::string(blobType) +
         " file successfully uploaded. \n\n";
}

std::string applicationCreated(std::int64_t id) {
  std::string text = std::to_string(id);
  return "\n💡Application has been uploaded to the console successfully. "
         "\n\n Please check: https://"
         "\x1b[3;31myour_uem_hostname.example\x1b[0;0m\x1b[0;0m\x1b[0;0m"
         "/Quellmark/#/Quellmark/Apps/Details/Internal/" +
         text + "/Summary \n\n The Application ID : " + text + " \n";
}

std::string blobTarget(std::string_view filename, std::int64_t group,
                       std::string_view module) {
  return "/api/mam/blobs/uploadblob?filename=" + std::string(filename) +
         "&organizationgroupid=" + std::to_string(group) +
         "&moduleType=" + std::string(module);
}

std::string applicationTarget(std::int64_t group) {
  return "/api/mam/groups/" + std::to_string(group) + "/macos/apps";
}

// Bytes of every value, NULs and line ends of both kinds among them: the
// console must get them unchanged.
std::string binaryBytes(std::size_t size, unsigned seed) {
  std::string bytes(size, '\0');
  for (std::size_t i = 0; i < size; ++i) {
    seed = seed * 1103515245u + 12345u;
    bytes[i] = static_cast<char>(seed >> 16);
  }
  return bytes + "\r\n\n\r";
}

const std::string installerBytes = binaryBytes(40000, 7);
const std::string metadataBytes =
    "<?xml version=\"1.0\"?>\n<plist version=\"1.0\"><dict>"
    "<key>name</key><string>Big App</string></dict></plist>\n";
const std::string iconBytes = binaryBytes(3000, 11);

// The names the files have on disk; the command lines below type them with a
// shell escape and percent escapes.
constexpr const char *installerName = "Big App&Co.pkg";
constexpr const char *metadataName = "meta data.plist";
constexpr const char *iconName = "icon.png";

enum class Account { signedIn, none, withoutGroupNumber, unreadableNumber };

// One run of the binary in a fresh HOME with a fresh console.
class Scene {
public:
  explicit Scene(Account account) {
    mockconsole::Options options;
    options.firstBlobId = 101;
    options.firstApplicationId = 4711;
    console = std::make_unique<mockconsole::MockConsole>(options);
    console->addAccount({"alice", "s3cret", "tenant-key"});
    console->mapGroup("Org1", 570);
    console->mapGroup("Org2", 571);
    console->start();
    fs::create_directories(files());
    testsupport::writeFile(files() / installerName, installerBytes);
    testsupport::writeFile(files() / metadataName, metadataBytes);
    testsupport::writeFile(files() / iconName, iconBytes);
    storeAccount(account);
  }

  fs::path files() const { return home.path() / "files"; }
  mockconsole::MockConsole &getConsole() { return *console; }

  securestore::Keychain keychain() {
    return securestore::Keychain("kestrune-cli")
        .accessibility(securestore::Accessibility::afterFirstUnlock)
        .withItemStore(store);
  }

  testsupport::ProcessResult run(std::vector<std::string> arguments) {
    for (std::string &argument : arguments) {
      if (auto at = argument.find("{dir}"); at != std::string::npos)
        argument.replace(at, 5, files().string());
    }
    arguments.insert(arguments.begin(), "upload");
    testsupport::ProcessOptions options;
    options.arguments = std::move(arguments);
    // No session bus: the binary keeps its account in the file store of
    // this HOME.
    options.environment = {{"HOME", home.path().string()},
                           {"XDG_DATA_HOME", std::nullopt},
                           {"DBUS_SESSION_BUS_ADDRESS", std::nullopt},
                           {"XDG_RUNTIME_DIR", std::nullopt},
                           {"LANG", "C.UTF-8"}};
    return testsupport::runProcess(KESTRUNECLI_PATH, options);
  }

  std::vector<std::string> targets() const {
    std::vector<std::string> result;
    for (const mockconsole::LoggedRequest &request : console->getRequests())
      result.push_back(request.method + " " + request.target);
    return result;
  }

private:
  void storeAccount(Account account) {
    if (account == Account::none)
      return;
    std::map<std::string, std::string> items = {
        {"username", "alice"},    {"password", "s3cret"},
        {"apiKey", "tenant-key"}, {"hostname", console->getBaseUrl()},
        {"groupId", "Org1"},      {"groupIdNum", "570"}};
    if (account == Account::withoutGroupNumber)
      items.erase("groupIdNum");
    if (account == Account::unreadableNumber)
      items["groupIdNum"] = "570abc";
    securestore::Keychain chain = keychain();
    for (const auto &[key, value] : items)
      chain.set(value, key);
  }

  testsupport::TempDir home;
  securestore::FileItemStore store{home.path() / ".local" / "share" /
                                   "kestrune-cli" / "keychain"};
  std::unique_ptr<mockconsole::MockConsole> console;
};

// What the user types for the files above: a blank escaped for a shell, a
// letter as %41, and a blank as %20.
const std::vector<std::string> typedFiles = {"-i", "{dir}/Big\\ %41pp&Co.pkg",
                                             "-m", "{dir}/meta%20data.plist"};

const std::string installerTarget =
    "POST " + blobTarget("Big%20App&Co.pkg", 570, "Application");
const std::string metadataTarget =
    "POST " + blobTarget("meta%20data.plist", 570, "General");
const std::string iconTarget = "POST " + blobTarget("icon.png", 570, "General");
const std::string appTarget = "POST " + applicationTarget(570);

TEST(UploadCommandTest, PublishesAnApplicationWithItsIcon) {
  Scene scene(Account::signedIn);
  std::vector<std::string> arguments = typedFiles;
  arguments.insert(arguments.end(), {"--icon-path", "{dir}/icon.png"});
  testsupport::ProcessResult result = scene.run(arguments);

  EXPECT_EQ(result.exitCode, 0);
  EXPECT_EQ(withoutSpinner(result.standardOutput),
            uploaded("installer") + uploaded("metadata") + uploaded("icon") +
                applicationCreated(4711));
  EXPECT_EQ(result.standardError, "");

  std::vector<mockconsole::LoggedRequest> requests =
      scene.getConsole().getRequests();
  EXPECT_EQ(scene.targets(),
            (std::vector<std::string>{installerTarget, metadataTarget,
                                      iconTarget, appTarget}));
  ASSERT_EQ(requests.size(), 4u);
  EXPECT_EQ(requests[0].body, installerBytes);
  EXPECT_EQ(requests[1].body, metadataBytes);
  EXPECT_EQ(requests[2].body, iconBytes);
  EXPECT_EQ(requests[3].body, "{\n"
                              "  \"pkgInfoBlobId\": 102,\n"
                              "  \"isManagedInstall\": true,\n"
                              "  \"applicationBlobId\": 101,\n"
                              "  \"applicationIconId\":103\n"
                              "}");
}

TEST(UploadCommandTest, PublishesWithoutAnIconInThreeRequests) {
  Scene scene(Account::signedIn);
  testsupport::ProcessResult result = scene.run(typedFiles);

  EXPECT_EQ(result.exitCode, 0);
  EXPECT_EQ(withoutSpinner(result.standardOutput),
            uploaded("installer") + uploaded("metadata") +
                applicationCreated(4711));
  EXPECT_EQ(scene.targets(), (std::vector<std::string>{
                                 installerTarget, metadataTarget, appTarget}));
  std::vector<mockconsole::LoggedRequest> requests =
      scene.getConsole().getRequests();
  ASSERT_EQ(requests.size(), 3u);
  EXPECT_EQ(requests[2].body, "{\n"
                              "  \"pkgInfoBlobId\": 102,\n"
                              "  \"isManagedInstall\": true,\n"
                              "  \"applicationBlobId\": 101\n"
                              "}");
}

TEST(UploadCommandTest, ChangesTheStoredGroupBeforeUploading) {
  Scene scene(Account::signedIn);
  std::vector<std::string> arguments = typedFiles;
  arguments.insert(arguments.end(), {"-l", "{dir}/icon.png", "-g", "Org2"});
  testsupport::ProcessResult result = scene.run(arguments);

  EXPECT_EQ(result.exitCode, 0);
  EXPECT_EQ(withoutSpinner(result.standardOutput),
            uploaded("installer") + uploaded("metadata") + uploaded("icon") +
                applicationCreated(4711));
  EXPECT_EQ(scene.targets(),
            (std::vector<std::string>{
                "GET /api/system/groups/search?groupID=Org2",
                "POST " + blobTarget("Big%20App&Co.pkg", 571, "Application"),
                "POST " + blobTarget("meta%20data.plist", 571, "General"),
                "POST " + blobTarget("icon.png", 571, "General"),
                "POST " + applicationTarget(571)}));
  // The change outlasts this upload.
  securestore::Keychain keychain = scene.keychain();
  EXPECT_EQ(keychain.get("groupId"), Text("Org2"));
  EXPECT_EQ(keychain.get("groupIdNum"), Text("571"));
}

// The console's answer \p status with the JSON \p body.
mockconsole::Answer answer(int status, std::string body) {
  mockconsole::Answer result;
  result.status = status;
  result.body = std::move(body);
  return result;
}

struct FailureCase {
  const char *what;
  Account account;
  std::vector<std::string> arguments;
  // The blob or application route's answer to one call.
  std::optional<std::pair<int, mockconsole::Answer>> blobAnswer;
  std::optional<mockconsole::Answer> appAnswer;
  std::string output;
  int exitCode;
  std::vector<std::string> targets;
};

std::vector<std::string> with(std::vector<std::string> arguments,
                              std::initializer_list<std::string> more) {
  arguments.insert(arguments.end(), more);
  return arguments;
}

const std::string notSignedIn =
    "\n❗️Error: Not Signed in, please use config subcommand to sign into "
    "console.\n\n";

const FailureCase failureCases[] = {
    {"not signed in",
     Account::none,
     typedFiles,
     std::nullopt,
     std::nullopt,
     notSignedIn,
     46,
     {}},
    {"not signed in, with a group change: the change fails first",
     Account::none,
     with(typedFiles, {"-g", "Org2"}),
     std::nullopt,
     std::nullopt,
     "\n❗️Error: Username not found in the keychain. Please login again\n",
     23,
     {}},
    {"both suffixes wrong: only the installer is reported",
     Account::signedIn,
     {"-i", "{dir}/App.zip", "-m", "{dir}/App.txt"},
     std::nullopt,
     std::nullopt,
     "\n❗️Error: Please enter valid installer files of type .dmg, .pkg or "
     ".mpkg\n",
     39,
     {}},
    {"an application bundle is no installer",
     Account::signedIn,
     {"-i", "{dir}/Big.app", "-m", "{dir}/meta%20data.plist"},
     std::nullopt,
     std::nullopt,
     "\n❗️Error: Please enter valid installer files of type .dmg, .pkg or "
     ".mpkg\n",
     39,
     {}},
    {"an installer suffix in capitals",
     Account::signedIn,
     {"-i", "{dir}/BIG.PKG", "-m", "{dir}/meta%20data.plist"},
     std::nullopt,
     std::nullopt,
     "\n❗️Error: Please enter valid installer files of type .dmg, .pkg or "
     ".mpkg\n",
     39,
     {}},
    {"a metadata suffix in capitals",
     Account::signedIn,
     {"-i", "{dir}/Big.pkg", "-m", "{dir}/meta.Plist"},
     std::nullopt,
     std::nullopt,
     "\n❗️Error: Please enter valid metadata files of type .plist\n",
     40,
     {}},
    {"a percent sign that is no escape",
     Account::signedIn,
     {"-i", "{dir}/100%.pkg", "-m", "{dir}/meta%20data.plist"},
     std::nullopt,
     std::nullopt,
     "\n❗️Error: Unable to fetch the location of the installer file.\n",
     36,
     {}},
    {"an icon path that can't be decoded: two uploads, no application",
     Account::signedIn,
     with(typedFiles, {"-l", "{dir}/50%.png"}),
     std::nullopt,
     std::nullopt,
     uploaded("installer") + uploaded("metadata") +
         "\n❗️Error: Unable to get the valid icon path.\n",
     43,
     {installerTarget, metadataTarget}},
    {"the console answers the installer with 500 and a message",
     Account::signedIn,
     typedFiles,
     std::pair{1, answer(500, R"({"message":"Storage quota exceeded"})")},
     std::nullopt,
     "\n\n\n❗️Error: Storage quota exceeded\n",
     33,
     {installerTarget}},
    {"the console answers the installer with 500 and no message",
     Account::signedIn,
     typedFiles,
     std::pair{1, answer(500, "{}")},
     std::nullopt,
     "\n\n\n❗️Error: The API response error message is unknown while "
     "uploading the binary\n",
     34,
     {installerTarget}},
    {"a failed icon upload: no application without its icon",
     Account::signedIn,
     with(typedFiles, {"-l", "{dir}/icon.png"}),
     std::pair{3, answer(400, R"({"message":"Bad icon"})")},
     std::nullopt,
     uploaded("installer") + uploaded("metadata") +
         "\n\n\n❗️Error: Bad icon\n",
     33,
     {installerTarget, metadataTarget, iconTarget}},
    {"the application is refused",
     Account::signedIn,
     typedFiles,
     std::nullopt,
     answer(409, R"({"message":"Application exists"})"),
     uploaded("installer") + uploaded("metadata") +
         "\n❗️Error: Application exists\n",
     52,
     {installerTarget, metadataTarget, appTarget}},
    {"a stored account without its group number",
     Account::withoutGroupNumber,
     typedFiles,
     std::nullopt,
     std::nullopt,
     "\n❗️Error: Group ID number not found in the keychain. Please login "
     "again\n",
     25,
     {}},
    {"a stored group number that isn't one fails at the first upload",
     Account::unreadableNumber,
     typedFiles,
     std::nullopt,
     std::nullopt,
     "❗️Error: Unable to fetch the group id while uploading the binary\n",
     30,
     {}},
};

TEST(UploadCommandTest, EachFailureEndsWithItsMessageCodeAndRequests) {
  for (const FailureCase &c : failureCases) {
    SCOPED_TRACE(c.what);
    Scene scene(c.account);
    if (c.blobAnswer)
      scene.getConsole().scriptAnswer(mockconsole::Route::UploadBlob,
                                      c.blobAnswer->first,
                                      c.blobAnswer->second);
    if (c.appAnswer)
      scene.getConsole().scriptAnswer(mockconsole::Route::CreateApplication,
                                      *c.appAnswer);
    testsupport::ProcessResult result = scene.run(c.arguments);
    EXPECT_EQ(withoutSpinner(result.standardOutput), c.output);
    EXPECT_EQ(result.exitCode, c.exitCode);
    EXPECT_EQ(result.standardError, "");
    EXPECT_EQ(scene.targets(), c.targets);
  }
}

} // namespace
