#include "EndToEnd/Fixture.h"
#include "Support/Texts.h"

#include <cstdint>

// `kestrunecli upload` with alice signed in (her account in the file store),
// against the console simulator: what the user reads, the exit code, and
// the request log with its bodies, byte for byte.

namespace {

using e2e::Args;
using mockconsole::Route;

// Bytes of every value, NULs and line ends of both kinds among them.
std::string binaryBytes(std::size_t size, unsigned seed) {
  std::string bytes(size, '\0');
  for (char &byte : bytes)
    byte = static_cast<char>((seed = seed * 1103515245u + 12345u) >> 16);
  return bytes + "\r\n\n\r";
}

const std::string installerBytes = binaryBytes(40000, 7);
const std::string metadataBytes = "<?xml version=\"1.0\"?>\n<plist><dict>"
                                  "<key>name</key><string>Big App</string>"
                                  "</dict></plist>\n";
const std::string iconBytes = binaryBytes(3000, 11);

// The files are "Big App&Co.pkg", "meta data+=#.plist" and "icon.png" in
// {dir}; the user types a blank escaped for a shell, %41 for a letter and
// %20 for a blank.
const Args typed = {"upload", "-i", "{dir}/Big\\ %41pp&Co.pkg", "-m",
                    "{dir}/meta%20data+=#.plist"};
const Args icon = {"-l", "{dir}/icon.png"};

Args with(Args first, const Args &more) {
  first.insert(first.end(), more.begin(), more.end());
  return first;
}

std::string blob(const std::string &name, std::int64_t group,
                 const std::string &module) {
  return "POST /api/mam/blobs/uploadblob?filename=" + name +
         "&organizationgroupid=" + std::to_string(group) +
         "&moduleType=" + module;
}

std::string app(std::int64_t group) {
  return "POST /api/mam/groups/" + std::to_string(group) + "/macos/apps";
}

// The names as they go out: each one query value.
const std::string installerName = "Big%20App%26Co.pkg",
                  metadataName = "meta%20data%2B%3D%23.plist";
const std::string I = blob(installerName, 570, "Application"),
                  M = blob(metadataName, 570, "General"),
                  C = blob("icon.png", 570, "General"), A = app(570);

constexpr std::int64_t top = INT64_MAX;
const std::string T = std::to_string(top);

// A signed-in scene with the three files; blob numbers start at
// \p firstBlob, application numbers at \p firstApp.
struct UploadScene : e2e::Scene {
  explicit UploadScene(std::int64_t firstBlob = 101,
                       std::int64_t firstApp = 4711)
      : e2e::Scene({.firstBlobId = firstBlob, .firstApplicationId = firstApp}) {
    testsupport::writeFile(dir() / "Big App&Co.pkg", installerBytes);
    testsupport::writeFile(dir() / "meta data+=#.plist", metadataBytes);
    testsupport::writeFile(dir() / "icon.png", iconBytes);
    testsupport::writeFile(dir() / "a%b.pkg", installerBytes);
    std::filesystem::create_directory(dir() / "folder.plist");
    store(account());
    con().mapGroup("Top", top);
    con().mapGroup("Q&u=e+r#y&", 572);
  }
};

struct SuccessCase {
  Args arguments;
  std::int64_t firstBlob, firstApp;
  std::vector<std::string> requests;
  std::string number, application;
  std::string installer = "Big App&Co.pkg";
};

const std::string noIcon = R"({
  "pkgInfoBlobId": 102,
  "isManagedInstall": true,
  "applicationBlobId": 101
})";

// clang-format off
const SuccessCase successCases[] = {
    {with(typed, icon), 101, 4711, {I, M, C, A}, "570", R"({
  "pkgInfoBlobId": 102,
  "isManagedInstall": true,
  "applicationBlobId": 101,
  "applicationIconId":103
})"},
    {typed, 101, 4711, {I, M, A}, "570", noIcon},
    // The group changes first, and for good.
    {with(typed, {"-g", "Org2"}), 5, 6,
     {"GET /api/system/groups/search?groupID=Org2",
      blob(installerName, 571, "Application"),
      blob(metadataName, 571, "General"), app(571)}, "571", R"({
  "pkgInfoBlobId": 6,
  "isManagedInstall": true,
  "applicationBlobId": 5
})"},
    // The group ID is one query value too; an escape typed in it stays.
    {with(typed, {"-g", "Q&u=e+r#y%26"}), 5, 6,
     {"GET /api/system/groups/search?groupID=Q%26u%3De%2Br%23y%26",
      blob(installerName, 572, "Application"),
      blob(metadataName, 572, "General"), app(572)}, "572", R"({
  "pkgInfoBlobId": 6,
  "isManagedInstall": true,
  "applicationBlobId": 5
})"},
    // The largest numbers a console can send go through unchanged.
    {with(typed, {"-l", "{dir}/icon.png", "-g", "Top"}), top - 2, top,
     {"GET /api/system/groups/search?groupID=Top",
      blob(installerName, top, "Application"),
      blob(metadataName, top, "General"),
      blob("icon.png", top, "General"), app(top)}, T, R"({
  "pkgInfoBlobId": 9223372036854775806,
  "isManagedInstall": true,
  "applicationBlobId": 9223372036854775805,
  "applicationIconId":9223372036854775807
})"},
    // A "%" of the file's name, typed "%25", goes out escaped again.
    {{"upload", "-i", "{dir}/a%25b.pkg", "-m", "{dir}/meta%20data+=#.plist"}, 101, 4711,
     {blob("a%25b.pkg", 570, "Application"), M, A}, "570", noIcon, "a%b.pkg"},
};
// clang-format on

TEST(UploadTest, PublishesTheFilesAsTheyAreAndTheApplicationThatTiesThem) {
  for (const SuccessCase &c : successCases) {
    SCOPED_TRACE(testing::PrintToString(c.arguments));
    UploadScene scene(c.firstBlob, c.firstApp == top ? 1 : c.firstApp);
    if (c.firstApp == top) {
      // The simulator counts no further: the icon and the application get
      // the largest numbers from answers of their own.
      scene.con().scriptAnswer(Route::UploadBlob, 3,
                               e2e::answer(200, R"({"Value":)" + T + "}"));
      scene.con().scriptAnswer(Route::CreateApplication,
                               e2e::answer(201, "", {{"Location", "/a/" + T}}));
    }
    e2e::Run run = scene.run(c.arguments);
    bool withIcon = c.application.find("Icon") != std::string::npos;
    std::vector<std::string> names = {"installer", "metadata"};
    if (withIcon)
      names.push_back("icon");
    EXPECT_EQ(run.out, e2e::uploaded(names, std::to_string(c.firstApp)));
    EXPECT_EQ(run.err, "");
    EXPECT_EQ(run.code, 0);
    EXPECT_EQ(scene.requests(), c.requests);
    std::vector<mockconsole::LoggedRequest> log = scene.con().getRequests();
    std::vector<std::string> bodies = {installerBytes, metadataBytes};
    if (withIcon)
      bodies.push_back(iconBytes);
    bodies.push_back(c.application);
    ASSERT_GE(log.size(), bodies.size());
    log.erase(log.begin(), log.end() - bodies.size());
    for (std::size_t i = 0; i < bodies.size(); ++i) {
      EXPECT_EQ(log[i].body, bodies[i]);
      // The four fields of the account, and what HTTP needs, no more.
      EXPECT_EQ(log[i].headers,
                (mockconsole::Headers{
                    {"Accept", "application/json;version=2"},
                    {"Authorization", "Basic YWxpY2U6czNjcmV0"},
                    {"Content-Length", std::to_string(bodies[i].size())},
                    {"Content-Type", "application/json"},
                    {"Host", scene.expand("{base}").substr(7)},
                    {"qm-tenant-code", "tenant-key"}}));
    }
    EXPECT_EQ(scene.stored()["groupIdNum"], c.number);
    // The console keeps each blob under its file's own name.
    const std::string files[] = {c.installer, "meta data+=#.plist", "icon.png"};
    std::vector<mockconsole::StoredBlob> stored = scene.con().getBlobs();
    ASSERT_GE(stored.size(), 2u);
    for (std::size_t i = 0; i < stored.size(); ++i)
      EXPECT_EQ(stored[i].filename, files[i]);
  }
}

using e2e::Changes;

// Runs the upload and compares what the user reads (after \p shown of the
// successful steps), the exit code and the requests.
void expectUpload(UploadScene &scene, const Args &arguments,
                  const std::string &out, int code,
                  const std::vector<std::string> &requests) {
  SCOPED_TRACE(testing::PrintToString(arguments) + " " + out);
  e2e::Run run = scene.run(arguments);
  EXPECT_EQ(run.out, out);
  EXPECT_EQ(run.err, "");
  EXPECT_EQ(run.code, code);
  e2e::expectBoundedMemory(run);
  EXPECT_EQ(scene.requests(), requests);
}

using texts::error;

struct RefusalCase {
  Changes account;
  Args arguments;
  std::string out;
  int code;
  std::vector<std::string> requests = {};
};

const Changes signedOut = {{"username", std::nullopt}};
const std::string noNumber =
    "❗️Error: Unable to fetch the group id while uploading the binary\n";
const std::string badInstaller =
    error("Please enter valid installer files of type .dmg, .pkg or .mpkg");
// The two blobs' lines, before the application's.
const std::string two = e2e::uploaded({"installer", "metadata"}, "");

// clang-format off
const RefusalCase refusalCases[] = {
    {signedOut, typed, error("Not Signed in, please use config subcommand to sign into console.\n"), 46},
    // The group change comes first, and fails on its own terms.
    {signedOut, with(typed, {"-g", "Org2"}), error("Username not found in the keychain. Please login again"), 23},
    {{{"groupIdNum", std::nullopt}}, typed, error("Group ID number not found in the keychain. Please login again"), 25},
    {{{"groupIdNum", "570abc"}}, typed, noNumber, 30},
    {{{"groupIdNum", "9223372036854775808"}}, typed, noNumber, 30},
    {{{"hostname", "http://console:port"}}, typed, "\n\n" + error("Unable to form a valid URL with the string http://console:port/api/mam/blobs/uploadblob?filename=Big App&Co.pkg&organizationgroupid=570&moduleType=Application"), 31},
    // Only the installer is reported when both suffixes are wrong.
    {{}, {"upload", "-i", "{dir}/a.zip", "-m", "{dir}/a.txt"}, badInstaller, 39},
    {{}, {"upload", "-i", "{dir}/Big.app", "-m", "{dir}/a.plist"}, badInstaller, 39},
    {{}, {"upload", "-i", "{dir}/BIG.PKG", "-m", "{dir}/a.plist"}, badInstaller, 39},
    {{}, {"upload", "-i", "{dir}/a.pkg", "-m", "{dir}/a.Plist"}, error("Please enter valid metadata files of type .plist"), 40},
    {{}, {"upload", "-i", "{dir}/100%.pkg", "-m", "{dir}/a.plist"}, error("Unable to fetch the location of the installer file."), 36},
    {{}, {"upload", "-i", "{dir}/a.pkg", "-m", "{dir}/%zz.plist"}, error("Unable to fetch the location of the metadata file."), 37},
    // An icon path found bad only after two uploads: no application.
    {{}, with(typed, {"-l", "{dir}/50%.png"}), two + error("Unable to get the valid icon path."), 43, {I, M}},
    // Every file is opened before anything is sent, after the group change,
    // the installer first, then the metadata, then the icon.
    {{}, {"upload", "-i", "{dir}/none.pkg", "-m", "{dir}/folder.plist", "-l", "{dir}", "-g", "Org2"}, error("Unable to fetch the location of the installer file."), 36, {"GET /api/system/groups/search?groupID=Org2"}},
    {{}, {"upload", "-i", "{dir}/Big App&Co.pkg", "-m", "{dir}/folder.plist", "-l", "{dir}/none.png"}, error("Unable to fetch the location of the metadata file."), 37},
    {{}, with(typed, {"-l", "{dir}"}), error("Unable to get the valid icon path."), 43},
    // A group ID that no URL can hold is shown as typed; nothing is sent.
    {{}, with(typed, {"-g", "G #x"}), error("Unable to form a valid URL with the string {base}/api/system/groups/search?groupID=G #x"), 11},
};
// clang-format on

TEST(UploadTest, RefusesWhatTheAccountOrTheFilesDoNotAllow) {
  for (const RefusalCase &c : refusalCases) {
    UploadScene scene;
    scene.change(c.account);
    expectUpload(scene, c.arguments, c.out, c.code, c.requests);
  }
}

struct AnswerCase {
  Route route;
  int call;
  mockconsole::Answer answer;
  std::string out;
  int code;
};

const Route blobs = Route::UploadBlob, apps = Route::CreateApplication;
using e2e::answer;
// After the spinner of the installer.
const std::string at1 = "\n\n";
const std::string notJson =
    at1 +
    error("Unable to get a valid JSON response while uploading the binary");
const std::string noValue =
    at1 + error("The API response doesn't contain the Blod id value");
const std::string unknownBlob =
    at1 +
    error(
        "The API response error message is unknown while uploading the binary");
const std::string unknownApp =
    two + error("The API response error message is unknown while creating an "
                "application");

// clang-format off
const AnswerCase answerCases[] = {
    {blobs, 1, answer(500, R"({"message":"Quota exceeded"})"), at1 + error("Quota exceeded"), 33},
    {blobs, 1, answer(500, "{}"), unknownBlob, 34},
    {blobs, 1, answer(201, R"({"Value":7})"), unknownBlob, 34},
    {blobs, 1, answer(200, "{}"), noValue, 35},
    {blobs, 1, answer(200, R"({"Value":"7"})"), noValue, 35},
    {blobs, 1, answer(200, R"({"Value":9223372036854775808})"), noValue, 35},
    {blobs, 1, answer(200, "<html/>"), notJson, 32},
    {blobs, 1, answer(204, ""), notJson, 32},
    {blobs, 1, e2e::dropped(installerBytes.size()), at1 + error("The network connection was lost (Empty reply from server)"), 47},
    {blobs, 2, answer(400, R"({"message":"Bad plist"})"), e2e::uploaded({"installer"}, "") + at1 + error("Bad plist"), 33},
    // Whatever the size of the answer, the tool holds at most 4 MiB of it.
    {blobs, 1, {.status = 400, .body = R"({"message":""})", .repeated = {{.text = "Bad ", .at = 12, .bytes = 100'000'000}}},
     at1 + error("The server's answer was too large (it was larger than 4 MiB)"), 47},
    {apps, 1, answer(409, R"({"message":"Exists"})"), two + error("Exists"), 52},
    {apps, 1, answer(200, R"({"message":"Exists"})"), two + error("Exists"), 52},
    // The console's text can't drive the terminal.
    {apps, 1, answer(409, R"({"message":"\u009b2J\u001b[5mExists"})"), two + error("\\x9b2J\\x1b[5mExists"), 52},
    {apps, 1, answer(500, "<html/>"), unknownApp, 53},
    {apps, 1, answer(200, "{}", {{"Location", "/a/1"}}), unknownApp, 53},
    // No connection at all is no network error here.
    {apps, 1, e2e::dropped(), unknownApp, 53},
    // Success without a usable Location shows no link.
    {apps, 1, answer(201, ""), two, 0},
    {apps, 1, answer(201, "", {{"location", "/apps/7/"}}), e2e::uploaded({"installer", "metadata"}, "7"), 0},
    // The identifier is the Location's text, also beyond 64 bits.
    {apps, 1, answer(201, "", {{"Location", "/a/9223372036854775808"}}), e2e::uploaded({"installer", "metadata"}, "9223372036854775808"), 0},
    {apps, 1, answer(201, "", {{"Location", "/a/%1b%5D0;7%07"}}), e2e::uploaded({"installer", "metadata"}, "\\x1b]0;7\\x07"), 0},
    // A 201 tells that the application was made, however long its body.
    {apps, 1, {.status = 201, .headers = {{"Location", "/a/7"}}, .repeated = {{.text = std::string(1024, ' ')}}}, e2e::uploaded({"installer", "metadata"}, "7"), 0},
};
// clang-format on

TEST(UploadTest, TellsWhatTheConsoleAnsweredWithItsCode) {
  for (const AnswerCase &c : answerCases) {
    UploadScene scene;
    scene.con().scriptAnswer(c.route, c.call, c.answer);
    std::vector<std::string> requests = {I, M, A};
    requests.resize(c.route == apps ? 3 : c.call);
    expectUpload(scene, typed, c.out, c.code, requests);
  }
  // A failed icon upload creates no application without its icon.
  UploadScene scene;
  scene.con().scriptAnswer(blobs, 3, answer(400, R"({"message":"Bad"})"));
  expectUpload(scene, with(typed, icon), two + at1 + error("Bad"), 33,
               {I, M, C});
  // A hostname that makes a URL only once escaped: the blobs go out, the
  // application's URL can't be made.
  UploadScene odd;
  odd.change({{"hostname", odd.expand("{base}/a b")}});
  odd.con().scriptAnswer(Route::Other, answer(200, R"({"Value":1})"));
  expectUpload(odd, typed,
               two + error("Unable to form a valid URL with the string "
                           "{base}/a b/api/mam/groups/570/macos/apps"),
               51, {"POST /a%20b" + I.substr(5), "POST /a%20b" + M.substr(5)});
}

} // namespace
