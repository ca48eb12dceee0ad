#include "EndToEnd/Fixture.h"
#include "Support/Texts.h"

#include <algorithm>
#include <future>

// `kestrunecli config` and the account it keeps, against the console
// simulator: what the user reads, the exit code, the requests the console
// received and the items left in the store.

namespace {

using e2e::Args;
using mockconsole::Route;

// clang-format off
const std::string signInText = texts::signedIn;
const std::string signedIn = texts::signedIn + texts::saved;
const std::string signedOut = texts::signedOut;
const std::string noUsername = texts::error("Username not found in the keychain. Please login again");
const std::string badHost = "❗️Error: Please check if the hostname is valid\n";
const std::string note = " \n\n⚠️ Note: To prompt secure sign-in interactive terminal, please only enter GroupID and Hostname fields\n";
// clang-format on

std::string listing(const std::string &group, const std::string &number) {
  return "\n📖 Account Info:\nUsername:\t\talice\nGroup ID:\t\t" + group +
         "\nGroup ID Number:\t" + number + "\nHostname:\t\t{base}\n\n";
}

std::string missing(const std::string &what) {
  return "❗️Error: Please re-enter credentials. " + what + " missing.";
}

std::string notInStore(const std::string &what) {
  return "\n❗️Error: " + what +
         " not found in the keychain. Please login again\n";
}

// The lookup's URL, with a blank in the group ID, is no URL: the message
// shows the hostname as it was normalised.
std::string noUrl(const std::string &hostname) {
  return "\n❗️Error: Unable to form a valid URL with the string " +
         hostname + "/api/system/groups/search?groupID=AC ME\n";
}

Args with(Args first, const Args &more) {
  first.insert(first.end(), more.begin(), more.end());
  return first;
}

// config --signin with every field given, alice's unless told otherwise.
struct SignIn {
  std::string username = "alice", password = "s3cret", apiKey = "tenant-key",
              hostname = "{base}", group = "Org1";
  Args before = {"config"};
  operator Args() const {
    return with(before, {"--signin", "-u", username, "-p", password, "-k",
                         apiKey, "-o", hostname, "-g", group});
  }
};

struct Step {
  Args arguments;
  std::string out;
  int code;
  std::size_t requests;
  // The group of the stored account; none when nothing is stored.
  std::optional<std::string> group;
};

// clang-format off
const Args upload = {"upload", "-i", "{dir}/a.pkg", "-m", "{dir}/a.plist", "-g"};
const Step steps[] = {
    {{"config", "--signout"}, "\n❗️Error: You have signed out already.\n", 17, 0, {}},
    {SignIn{.password = "wrong"}, "\n❗️Error: User credentials are incorrect.\n", 13, 1, {}},
    {SignIn{}, signedIn, 0, 1, "Org1"},
    {{"config", "--list"}, listing("Org1", "570"), 0, 0, "Org1"},
    {SignIn{}, "\n❗️ERROR: You have already signed in as: alice \n\n", 20, 0, "Org1"},
    {with(upload, {"NOPE"}), "\n❗️Error: The url response has no Organization Group details\n", 15, 1, "Org1"},
    {with(upload, {"Org2"}), e2e::uploaded({"installer", "metadata"}, "1"), 0, 4, "Org2"},
    {{"config", "-l"}, listing("Org2", "571"), 0, 0, "Org2"},
    {{"config", "--signout"}, signedOut, 0, 0, {}},
    // The flags run in a fixed order, whatever the order given.
    {SignIn{.before = {"config", "--signout", "--list"}}, signedIn + signedOut + noUsername, 23, 1, {}},
    {with(SignIn{}, {"--list"}), signedIn + listing("Org1", "570"), 0, 1, "Org1"},
    {{"config", "-t", "-l"}, signedOut + noUsername, 23, 0, {}},
};
// clang-format on

TEST(AccountTest, LivesFromSignInToSignOutInOneHome) {
  e2e::Scene scene;
  testsupport::writeFile(scene.dir() / "a.pkg", "installer");
  testsupport::writeFile(scene.dir() / "a.plist", "metadata");
  for (const Step &step : steps) {
    SCOPED_TRACE(testing::PrintToString(step.arguments));
    std::size_t before = scene.requests().size();
    e2e::Run run = scene.run(step.arguments);
    EXPECT_EQ(run.out, step.out);
    EXPECT_EQ(run.err, "");
    EXPECT_EQ(run.code, step.code);
    EXPECT_EQ(scene.requests().size() - before, step.requests);
    EXPECT_EQ(scene.stored(),
              step.group ? scene.account(*step.group) : e2e::Items{});
  }
}

struct LocalCase {
  // Changes to alice's stored account; none when nothing is stored.
  std::optional<e2e::Changes> account;
  Args arguments;
  std::string out;
  int code;
};

// clang-format off
const LocalCase localCases[] = {
    // What the command line lacks is refused before any request.
    {{}, {"config", "--signin"}, missing("GroupID is") + "\n", 5},
    {{}, {"config", "--signin", "-o", "{base}"}, missing("GroupID is") + "\n", 5},
    {{}, {"config", "--signin", "-g", "Org1"}, missing("Hostname is") + "\n", 4},
    {{}, {"config", "--signin", "-p", "p", "-k", "k", "-o", "h", "-g", "g"}, "\n" + missing("Username is") + note, 1},
    {{}, {"config", "--signin", "-u", "u", "-k", "k", "-o", "h", "-g", "g"}, "\n" + missing("Password is") + note, 2},
    {{}, {"config", "--signin", "-u", "u", "-p", "p", "-o", "h", "-g", "g"}, "\n" + missing("Apikey is") + note, 3},
    {{}, {"config", "--signin", "-u", "u", "-p", "p", "-k", "k", "-g", "g"}, missing("Hostname is") + "\n", 4},
    {{}, {"config", "--signin", "-u", "u", "-p", "p", "-k", "k", "-o", "h"}, missing("GroupID is") + "\n", 5},
    {{}, {"config", "--signin", "-u", "u", "-p", "p", "-g", "g"}, "\n" + missing("Hostname and ApiKey fields are") + note, 55},
    // An empty value counts as given.
    {{}, {"config", "--signin", "--username", ""}, "\n" + missing("Password, Hostname, ApiKey and GroupId fields are") + note, 55},
    {{}, {"config", "--signin", "-o", "h", "-g", "g", "-k", "k"}, "\n" + missing("Username and Password fields are") + note, 55},
    // The hostname is tested first.
    {{}, {"config", "--signin", "--hostname", "a b", "-u", "a"}, badHost, 9},
    // Hostnames as given, and as normalised.
    {{}, SignIn{.hostname = "console.example", .group = "AC ME"}, noUrl("https://console.example"), 11},
    {{}, SignIn{.hostname = "http://console.example:8080/base", .group = "AC ME"}, noUrl("http://console.example:8080/base"), 11},
    {{}, SignIn{.hostname = "https://console.example/", .group = "AC ME"}, noUrl("https://console.example/"), 11},
    {{}, SignIn{.hostname = "ftp://x.example:21/pub", .group = "AC ME"}, noUrl("https://x.example:21/pub"), 11},
    {{}, SignIn{.hostname = "HTTP://Uem.Example.com", .group = "AC ME"}, noUrl("http://Uem.Example.com"), 11},
    {{}, SignIn{.hostname = "https://[::1]:8443", .group = "AC ME"}, noUrl("https://[::1]:8443"), 11},
    {{}, SignIn{.hostname = "//uem.example.com/base", .group = "AC ME"}, noUrl("https://uem.example.com/base"), 11},
    {{}, SignIn{.hostname = "uem.example.com:8443", .group = "AC ME"}, noUrl("https://uem.example.com:8443"), 11},
    {{}, SignIn{.hostname = "127.0.0.1:8443", .group = "AC ME"}, noUrl("https://127.0.0.1:8443"), 11},
    {{}, SignIn{.hostname = "a b"}, badHost, 9},
    {{}, SignIn{.hostname = "uem.example.com:port"}, badHost, 9},
    {{}, SignIn{.hostname = "https://"}, badHost, 9},
    {{}, SignIn{.hostname = "/base"}, badHost, 9},
    {{}, SignIn{.hostname = "bücher.example"}, badHost, 9},
    {{}, SignIn{.hostname = "a%zz"}, badHost, 9},
    // The listing shows the stored number when it is one, else nil.
    {e2e::Changes{{"groupIdNum", "+12"}}, {"config", "--list"}, listing("Org1", "12"), 0},
    {e2e::Changes{{"groupIdNum", "007"}}, {"config", "--list"}, listing("Org1", "7"), 0},
    {e2e::Changes{{"groupIdNum", "9223372036854775807"}}, {"config", "--list"}, listing("Org1", "9223372036854775807"), 0},
    {e2e::Changes{{"groupIdNum", "-9223372036854775808"}}, {"config", "--list"}, listing("Org1", "-9223372036854775808"), 0},
    {e2e::Changes{{"groupIdNum", "9223372036854775808"}}, {"config", "--list"}, listing("Org1", "nil"), 0},
    {e2e::Changes{{"groupIdNum", ""}}, {"config", "--list"}, listing("Org1", "nil"), 0},
    {e2e::Changes{{"groupIdNum", "12a"}}, {"config", "--list"}, listing("Org1", "nil"), 0},
    {e2e::Changes{{"groupIdNum", " 12"}}, {"config", "--list"}, listing("Org1", "nil"), 0},
    {e2e::Changes{{"groupIdNum", "0x10"}}, {"config", "--list"}, listing("Org1", "nil"), 0},
    {e2e::Changes{{"groupIdNum", "١٢"}}, {"config", "--list"}, listing("Org1", "nil"), 0},
    {e2e::Changes{{"username", ""}, {"groupId", ""}, {"hostname", ""}}, {"config", "--list"},
     "\n📖 Account Info:\nUsername:\t\t\nGroup ID:\t\t\nGroup ID Number:\t570\nHostname:\t\t\n\n", 0},
    // ... or the first item it misses, in the order of reading.
    {e2e::Changes{}, {"config", "--list"}, listing("Org1", "570"), 0},
    {e2e::Changes{{"username", std::nullopt}, {"groupId", std::nullopt}}, {"config", "--list"}, noUsername, 23},
    {e2e::Changes{{"groupId", std::nullopt}, {"groupIdNum", std::nullopt}}, {"config", "--list"}, notInStore("Group ID"), 24},
    {e2e::Changes{{"groupIdNum", std::nullopt}, {"hostname", std::nullopt}}, {"config", "--list"}, notInStore("Group ID number"), 25},
    {e2e::Changes{{"hostname", std::nullopt}, {"apiKey", std::nullopt}}, {"config", "--list"}, notInStore("Hostname"), 26},
    {e2e::Changes{{"apiKey", std::nullopt}, {"password", std::nullopt}}, {"config", "--list"}, notInStore("ApiKey"), 27},
    {e2e::Changes{{"password", std::nullopt}}, {"config", "--list"}, notInStore("Password"), 28},
};
// clang-format on

TEST(AccountTest, AnswersFromTheCommandLineAndTheStoreAlone) {
  for (const LocalCase &c : localCases) {
    SCOPED_TRACE(testing::PrintToString(c.arguments));
    e2e::Scene scene;
    if (c.account) {
      scene.store(scene.account());
      scene.change(*c.account);
    }
    e2e::Items before = scene.stored();
    e2e::Run run = scene.run(c.arguments);
    EXPECT_EQ(run.out, c.out);
    EXPECT_EQ(run.err, "");
    EXPECT_EQ(run.code, c.code);
    EXPECT_EQ(scene.requests(), Args{});
    EXPECT_EQ(scene.stored(), before);
  }
}

struct ConsoleCase {
  SignIn signIn;
  // The console's answer to every group lookup, or to the first one only.
  std::optional<mockconsole::Answer> answer;
  bool firstOnly;
  // What the user reads; up to the "(" of a description that varies.
  std::string out;
  int code;
  // The group number stored; none when the sign-in fails.
  std::string number = "";
  // Of the last request, on this console or the one it was sent on to.
  mockconsole::Headers headers = {};
  // Where the console listens. A row is skipped when it can't: port 80
  // needs root, "::1" an IPv6 loopback.
  mockconsole::Options console = {};
};

const std::string search = "/api/system/groups/search?groupID=";

mockconsole::Answer redirect(int status, const std::string &to,
                             const std::string &group = "Org1") {
  return e2e::answer(status, "", {{"Location", to + search + group}});
}

mockconsole::Answer groups(int status, const std::string &list) {
  return e2e::answer(status, R"({"OrganizationGroups":)" + list + "}");
}

mockconsole::Headers headers(const std::string &authorization,
                             const std::string &apiKey) {
  mockconsole::Headers headers = {{"Accept", "application/json;version=2"},
                                  {"Content-Type", "application/json"},
                                  {"Host", "{host}"}};
  if (!authorization.empty())
    headers.insert(headers.begin() + 1, {"Authorization", authorization});
  if (!apiKey.empty())
    headers.emplace_back("qm-tenant-code", apiKey);
  return headers;
}

using e2e::answer;
// clang-format off
const std::string notJson = "\n❗️Error: Unable to get a valid JSON response\n";
const std::string unknown = "\n❗️Error: Unknown response while fetching group id\n";
const std::string noGroup = "\n❗️Error: The url response has no Organization Group details\n";
const std::string noId = "\n❗️Error: Unable to fetch the Group ID number\n";
const std::string tooLarge = "\n❗️Error: The server's answer was too large (it was larger than 4 MiB)\n";
const mockconsole::Headers alices = headers("Basic YWxpY2U6czNjcmV0", "tenant-key");
const mockconsole::Options port80{.bindAddress = "127.0.0.3", .port = 80};
const mockconsole::Answer endless{.body = R"({"OrganizationGroups":[]})", .repeated = {{.text = std::string(1024, ' '), .at = 1}}};
const mockconsole::Answer heldThenOrg1{.body = R"({"OrganizationGroups":[{"Id":570}]})", .holdUntilReleased = true};
// An answer of 4 MiB, the most the tool reads, whose message is all DELs:
// the longest text an answer can make it show, four characters a byte.
const mockconsole::Answer dels{.status = 401, .body = R"({"message":""})", .repeated = {{.text = "\x7f", .at = 12, .bytes = (4 << 20) - 14}}};
std::string shownDels() {
  std::string shown;
  for (int i = 0; i < (4 << 20) - 14; ++i)
    shown += "\\x7f";
  return "\n❗️Error: " + shown + "\n";
}
const mockconsole::Answer hundredMegabytes{.status = 401, .body = R"({"message":""})", .repeated = {{.text = "denied ", .at = 12, .bytes = 100'000'000}}};

const ConsoleCase consoleCases[] = {
    // Other users don't see the secrets, in any spelling or repeated, while
    // the console keeps the sign-in waiting: only the rest of the command line.
    {{.before = {"config", "-np", "old-s3cret", "--api-key=old-tenant-key"}}, heldThenOrg1, false, signedIn, 0, "570", alices},
    // The credentials as typed, in these four fields alone.
    {{.username = "Zoë", .password = "pä:ss wörd", .apiKey = "K"}, {}, false, signedIn, 0, "570",
     headers("Basic Wm/Dqzpww6Q6c3Mgd8O2cmQ=", "K")},
    // A redirect to another host or port is not followed: the lookup's
    // table answers it, and the credentials reach the console named alone.
    {{}, redirect(307, "{there}"), true, notJson, 12, "", alices},
    {{}, redirect(307, "{closed}"), true, notJson, 12, "", alices},
    // One to the same scheme, host and port is, whatever their case.
    {{}, redirect(302, "{base}", "Org2"), true, signedIn, 0, "571", alices},
    {{}, redirect(302, "{BASE}", "Org2"), true, signedIn, 0, "571", alices},
    {{}, redirect(308, "", "Org2"), true, signedIn, 0, "571", alices},
    // Port 80 left out of the console's address, or written out.
    {{.hostname = "http://127.0.0.3"}, redirect(302, "http://127.0.0.3:80", "Org2"), true, signedIn, 0, "571", alices, port80},
    {{.hostname = "http://127.0.0.3"}, redirect(302, "http://127.0.0.3", "Org2"), true, signedIn, 0, "571", alices, port80},
    {{}, redirect(302, "{base}"), false, "\n❗️Error: There were too many redirects (Number of redirects hit maximum amount)\n", 47},
    {{.apiKey = "K\r\nX-Injected: 1"}, {}, false, "\n❗️Error: The request could not be made (the value of the header 'qm-tenant-code' holds a line break or a NUL byte)\n", 47},
    // A console at an IPv6 address, its brackets kept.
    {{}, {}, false, signedIn, 0, "570", alices, {.bindAddress = "::1"}},
    {{}, e2e::dropped(), false, "\n❗️Error: The network connection was lost (Empty reply from server)\n", 47},
    // A username that isn't UTF-8 makes no Basic credentials: nothing is sent.
    {{.username = "adm\xffin"}, {}, false, "\n❗️ERROR: Unable to get a base 64 encoded value\n\n❗️Unable to configure request headers. \n\n\n❗️Error: Unable to form a valid URL session while fetching group id\n", 10},
    {{.hostname = "{closed}"}, {}, false, "\n❗️Error: Could not connect to the server (", 47},
    {{.hostname = "{tls}"}, {}, false, "\n❗️Error: A secure connection to the server could not be made (", 47},
    // What the console answered, told apart.
    {{}, groups(200, R"([{"Id":9223372036854775807}])"), false, signedIn, 0, "9223372036854775807"},
    {{}, groups(200, R"([{"Id":-9223372036854775808}])"), false, signedIn, 0, "-9223372036854775808"},
    {{}, groups(200, R"([{"Id":7},{"Id":8}])"), false, signedIn, 0, "7"},
    {{}, groups(200, R"([{"Id":9223372036854775808}])"), false, noId, 16},
    {{}, groups(200, R"([{}])"), false, noId, 16},
    {{}, groups(200, R"([{"Id":"42"}])"), false, noId, 16},
    {{}, groups(200, R"([{"Id":5.5}])"), false, noId, 16},
    {{}, answer(200, "{}"), false, noGroup, 15},
    {{}, groups(200, "[]"), false, noGroup, 15},
    {{}, groups(200, R"({"Id":1})"), false, noGroup, 15},
    {{}, groups(200, "[1]"), false, noGroup, 15},
    {{}, answer(200, "<html>Login</html>"), false, notJson, 12},
    {{}, answer(204, ""), false, notJson, 12},
    {{}, answer(200, R"([{"Id":42}])"), false, notJson, 12},
    {{}, answer(404, "not found"), false, notJson, 12},
    {{}, answer(500, "{}"), false, unknown, 14},
    {{}, answer(500, R"({"message":5})"), false, unknown, 14},
    {{}, groups(201, R"([{"Id":42}])"), false, unknown, 14},
    {{}, answer(401, R"({"message":"Access denied"})"), false, "\n❗️Error: Access denied\n", 13},
    // The console's text can't drive the terminal: no cursor moves, window
    // titles or clipboard writes.
    {{}, answer(401, R"({"message":"\u001b[2J\u001b]0;pwned\u0007\u001b]52;c;eA==\u0007\r\tNo \u00e9\u009b1m\u007f\n"})"), false,
     "\n❗️Error: \\x1b[2J\\x1b]0;pwned\\x07\\x1b]52;c;eA==\\x07\\x0d\tNo é\\x9b1m\\x7f\n\n", 13},
    // Whatever the size of the answer, the tool holds at most 4 MiB of it.
    {{}, endless, false, tooLarge, 47},
    {{}, hundredMegabytes, false, tooLarge, 47},
    {{}, dels, false, shownDels(), 13},
};
// clang-format on

// The credentials go to the console named and nowhere else, and what it
// answers decides the outcome.
TEST(AccountTest, SignsInWithTheConsoleNamedAndTellsItsAnswersApart) {
  for (const ConsoleCase &c : consoleCases) {
    SCOPED_TRACE(testing::PrintToString(Args(c.signIn)) + " " +
                 (c.answer ? c.answer->body : ""));
    std::optional<e2e::Scene> bound;
    try {
      bound.emplace(c.console);
    } catch (const std::runtime_error &error) {
      std::cout << "row skipped: " << error.what() << '\n';
      continue;
    }
    e2e::Scene &scene = *bound;
    e2e::Scene closed, there({.bindAddress = "127.0.0.2"});
    scene.con().addAccount({"Zoë", "pä:ss wörd", "K"});
    closed.con().stop();
    auto expand = [&](std::string text) {
      e2e::replaceAll(text, "{there}", there.expand("{base}"));
      e2e::replaceAll(text, "{closed}", closed.expand("{base}"));
      e2e::replaceAll(text, "{tls}",
                      "https" + scene.expand("{base}").substr(4));
      e2e::replaceAll(text, "{BASE}",
                      "HTTP" + scene.expand("{base}").substr(4));
      return scene.expand(text);
    };
    if (c.answer) {
      mockconsole::Answer answer = *c.answer;
      for (auto &[name, value] : answer.headers)
        value = expand(value);
      c.firstOnly ? scene.con().scriptAnswer(Route::GroupSearch, 1, answer)
                  : scene.con().scriptAnswer(Route::GroupSearch, answer);
    }
    SignIn signIn = c.signIn;
    signIn.hostname = expand(signIn.hostname);
    // The tool's process writes its pid before it becomes the tool.
    const std::string pidFile = (scene.dir() / "pid").string();
    auto running = std::async(std::launch::async, [&] {
      return scene.run(
          signIn, "",
          {"/bin/sh", "-c", "echo $$ >\"$0\"; exec \"$@\"", pidFile});
    });
    if (c.answer && c.answer->holdUntilReleased) {
      EXPECT_TRUE(scene.con().waitForRequests(1, std::chrono::seconds(10)));
      const std::string shown = testsupport::readFile(
          "/proc/" + std::to_string(std::stoi(testsupport::readFile(pidFile))) +
          "/cmdline");
      EXPECT_EQ(shown.find("s3cret"), std::string::npos) << shown;
      EXPECT_EQ(shown.find("tenant-key"), std::string::npos) << shown;
      const Args arguments = signIn;
      EXPECT_EQ(std::count(shown.begin(), shown.end(), '\0'),
                std::ssize(arguments) + 1);
      for (const std::string &argument : arguments) {
        if (argument.find("s3cret") == std::string::npos &&
            argument.find("tenant-key") == std::string::npos) {
          EXPECT_NE(shown.find('\0' + argument + '\0'), std::string::npos);
        }
      }
      // A release that comes before the console holds the answer is lost.
      while (running.wait_for(std::chrono::milliseconds(50)) !=
             std::future_status::ready)
        scene.con().releaseHeldAnswers();
    }
    e2e::Run run = running.get();
    EXPECT_EQ(run.out.substr(0, c.out.back() == '(' ? c.out.size() : -1),
              c.out);
    EXPECT_EQ(run.code, c.code);
    e2e::expectBoundedMemory(run);
    EXPECT_EQ(scene.stored()["groupIdNum"], c.number);
    // Credentials that can't be sent safely are not sent at all.
    if (!c.answer && c.signIn.hostname == "{base}" && c.code) {
      EXPECT_EQ(scene.requests(), Args{});
    }
    auto log = there.con().getRequests();
    if (log.empty())
      log = scene.con().getRequests();
    if (c.headers.empty())
      continue;
    for (auto &[name, value] : log.back().headers)
      if (name == "Host")
        value = "{host}";
    EXPECT_EQ(log.back().headers, c.headers);
  }
}

enum class Fault { notAStore, folderAsStore, fileAsFolder, folderAsLock };

struct StoreCase {
  Fault fault;
  Args arguments;
  std::string out;
  int code;
};

const std::string notAStore = "OSStatus error:[-25295] The specified keychain "
                              "is not a valid keychain file.\n";
const std::string ioError = "OSStatus error:[-36] I/O error (bummers)\n";

// clang-format off
const StoreCase storeCases[] = {
    {Fault::notAStore, {"config", "--list"}, notAStore + noUsername, 23},
    {Fault::notAStore, {"config", "--signout"}, notAStore + "\n❗️Error: You have signed out already.\n", 17},
    // The sign-in's text, then the failed save: the exit code stays 0.
    {Fault::notAStore, SignIn{}, signInText + notAStore + "❗️Error: Unable to save user info in macOS Keychain: The specified keychain is not a valid keychain file.\n\n", 0},
    {Fault::folderAsStore, SignIn{}, signInText + notAStore + "❗️Error: Unable to save user info in macOS Keychain: The specified keychain is not a valid keychain file.\n\n", 0},
    {Fault::fileAsFolder, SignIn{}, signInText + ioError + "❗️Error: Unable to save user info in macOS Keychain: I/O error (bummers)\n\n", 0},
    {Fault::folderAsLock, {"config", "--signout"},
     ioError + "\n❗️Error: Unable to signout - I/O error (bummers)\n", 21},
    // A group change that can't be stored ends the upload before it sends.
    {Fault::folderAsLock, {"upload", "-i", "a.pkg", "-m", "a.plist", "-g", "Org2"},
     ioError + texts::groupNotStored, 19},
};
// clang-format on

// A store that can't be read is never written over; the tool says why.
TEST(AccountTest, ReportsAStoreItCannotUseAndLeavesItAlone) {
  for (const StoreCase &c : storeCases) {
    SCOPED_TRACE(testing::PrintToString(c.arguments));
    e2e::Scene scene;
    const e2e::fs::path store = scene.storePath();
    e2e::fs::create_directories(store.parent_path());
    if (c.fault == Fault::notAStore)
      testsupport::writeFile(store, "not a store");
    if (c.fault == Fault::folderAsStore)
      e2e::fs::create_directories(store);
    if (c.fault == Fault::fileAsFolder) {
      e2e::fs::remove(store.parent_path());
      testsupport::writeFile(store.parent_path(), "not a folder");
    }
    if (c.fault == Fault::folderAsLock) {
      scene.store(scene.account());
      e2e::fs::remove(store.string() + ".lock");
      e2e::fs::create_directory(store.string() + ".lock");
    }
    std::string before = testsupport::readFile(store);
    e2e::Run run = scene.run(c.arguments);
    // Before the sign-in's text, the spinner may draw over a line.
    EXPECT_EQ(run.out.substr(
                  c.out.rfind(signInText, 0) ? 0 : run.out.find(signInText)),
              c.out);
    EXPECT_EQ(run.code, c.code);
    EXPECT_EQ(testsupport::readFile(store), before);
  }
}

} // namespace
