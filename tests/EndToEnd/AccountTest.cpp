#include "EndToEnd/Fixture.h"

#include <cstdint>

// `kestrunecli config` and the account it keeps, against the console
// simulator: what the user reads, the exit code, the requests the console
// received and the items left in the store.

namespace {

using e2e::Args;
using e2e::Items;
using mockconsole::Route;

const std::string signedIn = "\n💡-------------------------------------------💡"
                             "\n\tYou have signed in successfully.\n\n"
                             "\n🔑Information has been successfully saved "
                             "into secure macOS keychain.\n\n";
const std::string signedOut = "\n🔐-------------------------------------------"
                              "🔗\n\tYou have signed out successfully.\n\n";
const std::string noUsername =
    "\n❗️Error: Username not found in the keychain. Please login again\n";
const std::string note =
    " \n\n⚠️ Note: To prompt secure sign-in interactive "
    "terminal, please only enter GroupID and Hostname "
    "fields\n";

std::string listing(const std::string &group, const std::string &number) {
  return "\n📖 Account Info:\nUsername:\t\talice\nGroup ID:\t\t" + group +
         "\nGroup ID Number:\t" + number + "\nHostname:\t\t{base}\n\n";
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

TEST(AccountTest, LivesFromSignInToSignOutInOneHome) {
  e2e::Scene scene;
  e2e::writeFile(scene.dir() / "a.pkg", "installer");
  e2e::writeFile(scene.dir() / "a.plist", "metadata");
  const std::string wrongKey = "\n❗️Error: The API key (qm-tenant-code) is "
                               "not valid for this user.\n";
  const Step steps[] = {
      {{"config", "--list"}, noUsername, 23, 0, {}},
      {{"config", "--signout"},
       "\n❗️Error: You have signed out already.\n",
       17,
       0,
       {}},
      {SignIn{.password = "wrong"},
       "\n❗️Error: User credentials are incorrect.\n",
       13,
       1,
       {}},
      {SignIn{.apiKey = "nope"}, wrongKey, 13, 1, {}},
      {SignIn{.group = "NOPE"},
       "\n❗️Error: The url response has no Organization Group details\n",
       15,
       1,
       {}},
      {SignIn{}, signedIn, 0, 1, "Org1"},
      {{"config", "--list"}, listing("Org1", "570"), 0, 0, "Org1"},
      {SignIn{}, "\n❗️ERROR: You have already signed in as: alice \n\n", 20,
       0, "Org1"},
      {{"upload", "-i", "{dir}/a.pkg", "-m", "{dir}/a.plist", "-g", "NOPE"},
       "\n❗️Error: The url response has no Organization Group details\n",
       15,
       1,
       "Org1"},
      {{"upload", "-i", "{dir}/a.pkg", "-m", "{dir}/a.plist", "-g", "Org2"},
       e2e::uploaded({"installer", "metadata"}, "1"),
       0,
       4,
       "Org2"},
      {{"config", "-l"}, listing("Org2", "571"), 0, 0, "Org2"},
      {{"config", "--signout"}, signedOut, 0, 0, {}},
      // The flags run in a fixed order, whatever the order given.
      {SignIn{.before = {"config", "--signout", "--list"}},
       signedIn + signedOut + noUsername,
       23,
       1,
       {}},
      {with(SignIn{}, {"--list"}), signedIn + listing("Org1", "570"), 0, 1,
       "Org1"},
      {{"config", "-t", "-l"}, signedOut + noUsername, 23, 0, {}},
  };
  for (const Step &step : steps) {
    SCOPED_TRACE(testing::PrintToString(step.arguments));
    std::size_t before = scene.requests().size();
    e2e::Run run = scene.run(step.arguments);
    EXPECT_EQ(run.out, step.out);
    EXPECT_EQ(run.err, "");
    EXPECT_EQ(run.code, step.code);
    EXPECT_EQ(scene.requests().size() - before, step.requests);
    Items expected;
    if (step.group)
      expected = scene.account(*step.group);
    EXPECT_EQ(scene.stored(), expected);
  }
}

// Refused before any request: the command line alone decides.
TEST(AccountTest, RefusesIncompleteSignInsBeforeAskingTheConsole) {
  const std::string u = "-u", p = "-p", k = "-k", o = "-o", g = "-g";
  const std::tuple<Args, std::string, int> cases[] = {
      {{"--signin"},
       "❗️Error: Please re-enter credentials. GroupID is missing.\n",
       5},
      {{"--signin", o, "{base}"},
       "❗️Error: Please re-enter credentials. GroupID is missing.\n",
       5},
      {{"--signin", g, "Org1"},
       "❗️Error: Please re-enter credentials. Hostname is missing.\n",
       4},
      {{"--signin", p, "p", k, "k", o, "{base}", g, "Org1"},
       "\n❗️Error: Please re-enter credentials. Username is missing." +
           note,
       1},
      {{"--signin", u, "u", k, "k", o, "{base}", g, "Org1"},
       "\n❗️Error: Please re-enter credentials. Password is missing." +
           note,
       2},
      {{"--signin", u, "u", p, "p", o, "{base}", g, "Org1"},
       "\n❗️Error: Please re-enter credentials. Apikey is missing." + note,
       3},
      {{"--signin", u, "u", p, "p", k, "k", g, "Org1"},
       "❗️Error: Please re-enter credentials. Hostname is missing.\n",
       4},
      {{"--signin", u, "u", p, "p", k, "k", o, "{base}"},
       "❗️Error: Please re-enter credentials. GroupID is missing.\n",
       5},
      {{"--signin", u, "u", p, "p", g, "Org1"},
       "\n❗️Error: Please re-enter credentials. Hostname and ApiKey fields "
       "are missing." +
           note,
       55},
      // An empty value counts as given.
      {{"--signin", "--username", ""},
       "\n❗️Error: Please re-enter credentials. Password, Hostname, ApiKey "
       "and GroupId fields are missing." +
           note,
       55},
      {{"--signin", o, "h", g, "g", k, "k"},
       "\n❗️Error: Please re-enter credentials. Username and Password "
       "fields are missing." +
           note,
       55},
      {{"--signin", o, "a b", g, "g", u, "a", p, "b", k, "c"},
       "❗️Error: Please check if the hostname is valid\n",
       9},
      // The hostname is tested before the missing fields.
      {{"--signin", "--hostname", "a b", u, "a"},
       "❗️Error: Please check if the hostname is valid\n",
       9},
  };
  e2e::Scene scene;
  for (const auto &[arguments, out, code] : cases) {
    SCOPED_TRACE(testing::PrintToString(arguments));
    e2e::Run run = scene.run(with({"config"}, arguments));
    EXPECT_EQ(run.out, out);
    EXPECT_EQ(run.code, code);
  }
  EXPECT_EQ(scene.requests(), Args{});
  EXPECT_EQ(scene.stored(), Items{});
}

// The console's answer to the group lookup of a sign-in.
struct LookupCase {
  int status;
  std::string body;
  std::string out;
  int code;
  // The group number stored when the sign-in succeeds.
  std::string number = "";
};

std::string groups(const std::string &list) {
  return R"({"OrganizationGroups":)" + list + "}";
}

TEST(AccountTest, TellsEachAnswerOfTheGroupLookupApart) {
  const std::string notJson =
      "\n❗️Error: Unable to get a valid JSON response\n";
  const std::string unknown =
      "\n❗️Error: Unknown response while fetching group id\n";
  const std::string noGroup =
      "\n❗️Error: The url response has no Organization Group details\n";
  const std::string noId =
      "\n❗️Error: Unable to fetch the Group ID number\n";
  const LookupCase cases[] = {
      {200, groups(R"([{"Id":9223372036854775807}])"), signedIn, 0,
       "9223372036854775807"},
      {200, groups(R"([{"Id":-9223372036854775808}])"), signedIn, 0,
       "-9223372036854775808"},
      {200, groups(R"([{"Id":7},{"Id":8}])"), signedIn, 0, "7"},
      {200, groups(R"([{"Id":9223372036854775808}])"), noId, 16},
      {200, groups(R"([{}])"), noId, 16},
      {200, groups(R"([{"Id":"42"}])"), noId, 16},
      {200, groups(R"([{"Id":5.5}])"), noId, 16},
      {200, groups(R"([{"Id":true}])"), noId, 16},
      {200, "{}", noGroup, 15},
      {200, groups("[]"), noGroup, 15},
      {200, groups(R"({"Id":1})"), noGroup, 15},
      {200, groups("[1]"), noGroup, 15},
      {200, "<html>Login</html>", notJson, 12},
      {200, "", notJson, 12},
      {204, "", notJson, 12},
      {200, R"([{"Id":42}])", notJson, 12},
      {404, "not found", notJson, 12},
      {500, "{}", unknown, 14},
      {500, R"({"message":5})", unknown, 14},
      {201, groups(R"([{"Id":42}])"), unknown, 14},
      {401, R"({"message":"Access denied"})", "\n❗️Error: Access denied\n",
       13},
  };
  for (const LookupCase &c : cases) {
    SCOPED_TRACE(std::to_string(c.status) + " " + c.body);
    e2e::Scene scene;
    scene.con().scriptAnswer(Route::GroupSearch, e2e::answer(c.status, c.body));
    e2e::Run run = scene.run(SignIn{});
    EXPECT_EQ(run.out, c.out);
    EXPECT_EQ(run.code, c.code);
    EXPECT_EQ(scene.requests().size(), 1u);
    Items expected;
    if (!c.number.empty()) {
      expected = scene.account();
      expected["groupIdNum"] = c.number;
    }
    EXPECT_EQ(scene.stored(), expected);
  }
}

// A group ID with a blank makes the lookup's URL invalid, so the message
// shows the URL built from the normalised hostname, and nothing is sent.
TEST(AccountTest, NormalisesTheHostnameGivenAtSignIn) {
  const std::pair<std::string, std::string> cases[] = {
      {"console.example", "https://console.example"},
      {"http://console.example:8080/base", "http://console.example:8080/base"},
      {"https://console.example/", "https://console.example/"},
      {"ftp://x.example:21/pub", "https://x.example:21/pub"},
      {"HTTP://Uem.Example.com", "http://Uem.Example.com"},
      {"https://[::1]:8443", "https://[::1]:8443"},
      {"//uem.example.com/base", "https://uem.example.com/base"},
      {"uem.example.com:8443", "https://uem.example.com:8443"},
      {"127.0.0.1:8443", "https://127.0.0.1:8443"},
      {"uem.example.com/base/", "https://uem.example.com/base/"},
  };
  e2e::Scene scene;
  for (const auto &[given, used] : cases) {
    SCOPED_TRACE(given);
    e2e::Run run = scene.run(SignIn{.hostname = given, .group = "AC ME"});
    EXPECT_EQ(run.out, "\n❗️Error: Unable to form a valid URL with the "
                       "string " +
                           used + "/api/system/groups/search?groupID=AC ME\n");
    EXPECT_EQ(run.code, 11);
  }
  for (const char *given :
       {"uem.example.com:port", "https://uem.example.com:port", "https://",
        "http:uem.example.com", "/base", "admin@uem.example.com",
        "mailto:admin@uem.example.com", ":8443", "bücher.example", "a%zz"}) {
    SCOPED_TRACE(given);
    e2e::Run run = scene.run(SignIn{.hostname = given});
    EXPECT_EQ(run.out, "❗️Error: Please check if the hostname is valid\n");
    EXPECT_EQ(run.code, 9);
  }
  EXPECT_EQ(scene.requests(), Args{});
}

struct ConsoleCase {
  SignIn signIn;
  // The console's answer to every group lookup, or to the first one only.
  std::optional<mockconsole::Answer> answer;
  bool firstOnly;
  // What the user reads; up to the "(" of a description that varies.
  std::string out;
  int code;
  // Of the last request, on this console or the one it was sent on to.
  mockconsole::Headers headers = {};
};

const std::string search = "/api/system/groups/search?groupID=";

mockconsole::Answer redirect(int status, const std::string &to,
                             const std::string &group = "Org1") {
  return e2e::answer(status, "", {{"Location", to + search + group}});
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

// clang-format off
const ConsoleCase consoleCases[] = {
    {{.username = "Zoë", .password = "pä:ss wörd", .apiKey = "K"}, {}, false, signedIn, 0,
     headers("Basic Wm/Dqzpww6Q6c3Mgd8O2cmQ=", "K")},
    // Another origin gets neither the password nor the API key.
    {{}, redirect(307, "{there}"), true, "\n❗️Error: User credentials are incorrect.\n", 13, headers("", "")},
    {{}, redirect(302, "{base}", "Org2"), true, signedIn, 0, headers("Basic YWxpY2U6czNjcmV0", "tenant-key")},
    {{}, redirect(302, "{base}"), false, "\n❗️Error: There were too many redirects (Number of redirects hit maximum amount)\n", 47},
    {{.apiKey = "K\r\nX-Injected: 1"}, {}, false, "\n❗️Error: The request could not be made (the value of the header 'qm-tenant-code' holds a line break or a NUL byte)\n", 47},
    {{}, e2e::dropped(), false, "\n❗️Error: The network connection was lost (Empty reply from server)\n", 47},
    {{.hostname = "{closed}"}, {}, false, "\n❗️Error: Could not connect to the server (", 47},
    {{.hostname = "{tls}"}, {}, false, "\n❗️Error: A secure connection to the server could not be made (", 47},
};
// clang-format on

// The credentials go to the console named and nowhere else, in these four
// fields alone, as they were typed.
TEST(AccountTest, SendsTheCredentialsToTheConsoleAlone) {
  for (const ConsoleCase &c : consoleCases) {
    SCOPED_TRACE(testing::PrintToString(Args(c.signIn)));
    e2e::Scene scene, closed, there({.bindAddress = "127.0.0.2"});
    scene.con().addAccount({"Zoë", "pä:ss wörd", "K"});
    closed.con().stop();
    auto expand = [&](std::string text) {
      e2e::replaceAll(text, "{there}", there.expand("{base}"));
      e2e::replaceAll(text, "{closed}", closed.expand("{base}"));
      e2e::replaceAll(text, "{tls}",
                      "https" + scene.expand("{base}").substr(4));
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
    e2e::Run run = scene.run(signIn);
    EXPECT_EQ(run.out.substr(0, c.out.back() == '(' ? c.out.size() : -1),
              c.out);
    EXPECT_EQ(run.code, c.code);
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

} // namespace
