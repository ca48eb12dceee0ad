#include "KestruneCLI/Config/SpinnerTranscript.h"
#include "MockConsole/MockConsole.h"
#include "SecureStore/FileItemStore.h"
#include "SecureStore/Keychain.h"
#include "Support/ProcessRunner.h"
#include "Support/TestSupport.h"

#include <gtest/gtest.h>

#include <map>
#include <optional>
#include <string>
#include <vector>

// `kestrunecli config` as a user runs it: the built binary, a HOME of its
// own with the file store in it (no D-Bus session, so no Secret Service),
// and the console simulator on a loopback port. Standard output is a pipe,
// so the spinner draws plain frames; configtest::readSpinnerTranscript makes
// its sequences readable and drops its timed redraws.

namespace {

using Items = std::map<std::string, std::string>;

constexpr const char *password = "s3cr3t-Pw";
constexpr const char *apiKey = "K3Y-4pi";
const char *const accountKeys[] = {"username", "password", "apiKey",
                                   "hostname", "groupId",  "groupIdNum"};

const std::string cleared(configtest::clearedSpinner);
const std::string signedIn = "\n💡-------------------------------------------💡"
                             "\n\tYou have signed in successfully.\n\n"
                             "\n🔑Information has been successfully saved "
                             "into secure macOS keychain.\n\n";
const std::string signedOut = "\n🔐-------------------------------------------"
                              "🔗\n\tYou have signed out successfully.\n\n";
const std::string listing =
    "\n📖 Account Info:\nUsername:\t\tadmin\nGroup ID:\t\tACME\n"
    "Group ID Number:\t570\nHostname:\t\t{base}\n\n";
const std::string noUsername =
    "\n❗️Error: Username not found in the keychain. Please login again\n";
const std::string inlineNote = " \n\n⚠️ Note: To prompt secure sign-in "
                               "interactive terminal, please only "
                               "enter GroupID and Hostname fields\n";

/// A HOME with the file store, and a console that knows the account admin
/// with the password and API key above, and the group ACME (570).
class ConfigCommandTest : public testing::Test {
protected:
  void SetUp() override {
    console.addAccount({"admin", password, apiKey});
    console.mapGroup("ACME", 570);
    console.start();
  }

  struct Run {
    /// Standard output, readable; the console's address as "{base}".
    std::string output;
    int exitCode = -1;
    /// Requests the console received during the run.
    std::size_t requests = 0;
  };

  /// Runs `kestrunecli config` with \p arguments ("{base}" stands for the
  /// console's address). Neither secret may appear in any output.
  Run config(std::vector<std::string> arguments) {
    const std::string base = console.getBaseUrl();
    for (std::string &argument : arguments)
      replaceAll(argument, "{base}", base);
    arguments.insert(arguments.begin(), "config");
    testsupport::ProcessOptions options;
    options.arguments = arguments;
    options.environment = {{"HOME", home.path().string()},
                           {"XDG_DATA_HOME", std::nullopt},
                           {"DBUS_SESSION_BUS_ADDRESS", std::nullopt},
                           {"XDG_RUNTIME_DIR", std::nullopt}};
    std::size_t before = console.getRequests().size();
    testsupport::ProcessResult result =
        testsupport::runProcess(KESTRUNECLI_PATH, options);
    EXPECT_FALSE(result.timedOut);
    EXPECT_EQ(result.standardError, "");
    for (const std::string &output :
         {result.standardOutput, result.standardError}) {
      EXPECT_EQ(output.find(password), std::string::npos) << output;
      EXPECT_EQ(output.find(apiKey), std::string::npos) << output;
    }
    Run run;
    run.output = configtest::readSpinnerTranscript(result.standardOutput);
    replaceAll(run.output, base, "{base}");
    run.exitCode = result.exitCode;
    run.requests = console.getRequests().size() - before;
    return run;
  }

  securestore::Keychain keychain() {
    return securestore::Keychain("kestrune-cli").withItemStore(fileStore);
  }

  /// The account's items that the run left in the file store of the HOME.
  Items storedItems() {
    Items items;
    for (const char *key : accountKeys)
      if (auto value = keychain()[key].read())
        items[key] = *value;
    return items;
  }

  Items fullAccount() {
    return {{"username", "admin"}, {"password", password},
            {"apiKey", apiKey},    {"hostname", console.getBaseUrl()},
            {"groupId", "ACME"},   {"groupIdNum", "570"}};
  }

  static void replaceAll(std::string &text, const std::string &from,
                         const std::string &to) {
    for (std::size_t at = text.find(from); at != std::string::npos;
         at = text.find(from, at + to.size()))
      text.replace(at, from.size(), to);
  }

  mockconsole::MockConsole console;
  testsupport::TempDir home;
  securestore::FileItemStore fileStore{home.path() / ".local" / "share" /
                                       "kestrune-cli" / "keychain"};
};

struct Step {
  const char *name;
  /// Arguments of a run; "{base}" is the console's address.
  std::vector<std::string> arguments;
  std::string output;
  int exitCode;
  std::size_t requests;
  /// Whether the whole account is stored afterwards (else nothing is).
  bool signedIn;
};

TEST_F(ConfigCommandTest, AccountLifeInOneHome) {
  const std::vector<std::string> signin = {"--signin", "-u", "admin", "-p",
                                           password,   "-k", apiKey,  "-o",
                                           "{base}",   "-g", "ACME"};
  auto with = [&](std::vector<std::string> before,
                  std::vector<std::string> after = {}) {
    before.insert(before.end(), signin.begin(), signin.end());
    before.insert(before.end(), after.begin(), after.end());
    return before;
  };
  const std::vector<Step> steps = {
      {"nothing asked", {}, "", 0, 0, false},
      {"a group ID alone changes nothing",
       {"--group-id", "ACME"},
       "",
       0,
       0,
       false},
      {"listing while signed out", {"--list"}, noUsername, 23, 0, false},
      {"signing out while signed out",
       {"--signout"},
       "\n❗️Error: You have signed out already.\n",
       17,
       0,
       false},
      {"a wrong password",
       {"--signin", "-u", "admin", "-p", "wrong", "-k", apiKey, "-o", "{base}",
        "-g", "ACME"},
       "<hide>\n❗️Error: User credentials are incorrect.\n",
       13,
       1,
       false},
      {"a wrong API key",
       {"--signin", "-u", "admin", "-p", password, "-k", "nope", "-o", "{base}",
        "-g", "ACME"},
       "<hide>\n❗️Error: The API key (qm-tenant-code) is not valid for "
       "this "
       "user.\n",
       13,
       1,
       false},
      {"a group the console doesn't know",
       {"--signin", "-u", "admin", "-p", password, "-k", apiKey, "-o", "{base}",
        "-g", "NOPE"},
       "<hide>\n❗️Error: The url response has no Organization Group "
       "details\n",
       15,
       1,
       false},
      {"signing in", with({}), cleared + signedIn, 0, 1, true},
      {"listing", {"--list"}, listing, 0, 0, true},
      {"signing in again", with({}),
       "<hide><clear><show><cr>\n❗️ERROR: You have already signed in as: "
       "admin \n\n",
       20, 0, true},
      {"signing out", {"--signout"}, signedOut, 0, 0, false},
      {"sign-out comes after the sign-in, whatever the order given",
       with({"--signout"}), cleared + signedIn + signedOut, 0, 1, false},
      {"signing in and listing", with({}, {"--list"}),
       cleared + signedIn + listing, 0, 1, true},
      {"signing out and listing",
       {"--signout", "--list"},
       signedOut + noUsername,
       23,
       0,
       false},
  };
  for (const Step &step : steps) {
    SCOPED_TRACE(step.name);
    Run run = config(step.arguments);
    EXPECT_EQ(run.output, step.output);
    EXPECT_EQ(run.exitCode, step.exitCode);
    EXPECT_EQ(run.requests, step.requests);
    EXPECT_EQ(storedItems(), step.signedIn ? fullAccount() : Items{});
  }
}

TEST_F(ConfigCommandTest, SignInAsksTheConsoleWithTheGivenCredentials) {
  ASSERT_EQ(config({"--signin", "--username", "admin", "--password", password,
                    "--api-key", apiKey, "--hostname", "{base}", "--group-id",
                    "ACME"})
                .exitCode,
            0);
  std::vector<mockconsole::LoggedRequest> requests = console.getRequests();
  ASSERT_EQ(requests.size(), 1u);
  EXPECT_EQ(requests[0].method, "GET");
  EXPECT_EQ(requests[0].target, "/api/system/groups/search?groupID=ACME");
  EXPECT_EQ(requests[0].getHeader("Authorization"),
            "Basic YWRtaW46czNjcjN0LVB3"); // admin:s3cr3t-Pw
  EXPECT_EQ(requests[0].getHeader("qm-tenant-code"), apiKey);
  EXPECT_EQ(requests[0].getHeader("Content-Type"), "application/json");
  EXPECT_EQ(requests[0].getHeader("Accept"), "application/json;version=2");
}

struct MissingItemCase {
  const char *key;
  std::string output;
  int exitCode;
};

// The order of reading is the store's affair, tested with it; here the
// listing of the built tool ends with the code of the missing item.
TEST_F(ConfigCommandTest, ListingEndsWithTheCodeOfAMissingItem) {
  const std::vector<MissingItemCase> cases = {
      {"username", noUsername, 23},
      {"hostname",
       "\n❗️Error: Hostname not found in the keychain. Please login "
       "again\n",
       26},
      {"password",
       "\n❗️Error: Password not found in the keychain. Please login "
       "again\n",
       28},
  };
  for (const MissingItemCase &c : cases) {
    SCOPED_TRACE(c.key);
    for (const auto &[key, value] : fullAccount())
      keychain().set(value, key);
    keychain().remove(c.key);
    Run run = config({"--list"});
    EXPECT_EQ(run.output, c.output);
    EXPECT_EQ(run.exitCode, c.exitCode);
  }
}

struct RefusedCase {
  const char *name;
  std::vector<std::string> arguments;
  std::string output;
  int exitCode;
};

TEST_F(ConfigCommandTest, IncompleteSignInsAreRefusedBeforeTheConsole) {
  const std::string note = inlineNote;
  const std::vector<RefusedCase> cases = {
      {"--signin alone asks for prompts, but the group ID is missing",
       {"--signin"},
       "❗️Error: Please re-enter credentials. GroupID is missing.\n",
       5},
      {"only the hostname",
       {"--signin", "-o", "{base}"},
       "❗️Error: Please re-enter credentials. GroupID is missing.\n",
       5},
      {"only the group ID",
       {"--signin", "-g", "ACME"},
       "❗️Error: Please re-enter credentials. Hostname is missing.\n",
       4},
      {"inline without the username",
       {"--signin", "-p", "p", "-k", "k", "-o", "{base}", "-g", "ACME"},
       "\n❗️Error: Please re-enter credentials. Username is missing." +
           note,
       1},
      {"inline without the password",
       {"--signin", "-u", "u", "-k", "k", "-o", "{base}", "-g", "ACME"},
       "\n❗️Error: Please re-enter credentials. Password is missing." +
           note,
       2},
      {"inline without the API key",
       {"--signin", "-u", "u", "-p", "p", "-o", "{base}", "-g", "ACME"},
       "\n❗️Error: Please re-enter credentials. Apikey is missing." + note,
       3},
      {"inline without the hostname",
       {"--signin", "-u", "u", "-p", "p", "-k", "k", "-g", "ACME"},
       "❗️Error: Please re-enter credentials. Hostname is missing.\n",
       4},
      {"inline without the group ID",
       {"--signin", "-u", "u", "-p", "p", "-k", "k", "-o", "{base}"},
       "❗️Error: Please re-enter credentials. GroupID is missing.\n",
       5},
      {"inline with two missing",
       {"--signin", "-u", "u", "-p", "p", "-g", "ACME"},
       "\n❗️Error: Please re-enter credentials. Hostname and ApiKey fields "
       "are missing." +
           note,
       55},
      {"inline with the username alone",
       {"--signin", "--username", "a"},
       "\n❗️Error: Please re-enter credentials. Password, Hostname, ApiKey "
       "and GroupId fields are missing." +
           note,
       55},
      {"a hostname that is no URL",
       {"--signin", "-o", "a b", "-g", "g", "-u", "a", "-p", "b", "-k", "c"},
       "❗️Error: Please check if the hostname is valid\n",
       9},
      {"a hostname that is no URL comes before the missing fields",
       {"--signin", "--hostname", "a b", "-u", "a"},
       "❗️Error: Please check if the hostname is valid\n",
       9},
  };
  for (const RefusedCase &c : cases) {
    SCOPED_TRACE(c.name);
    Run run = config(c.arguments);
    EXPECT_EQ(run.output, c.output);
    EXPECT_EQ(run.exitCode, c.exitCode);
    EXPECT_EQ(run.requests, 0u);
    EXPECT_EQ(storedItems(), Items{});
  }
}

struct HostnameCase {
  const char *given;
  const char *used;
};

// A group ID with a blank makes the lookup's URL invalid, and the message
// shows the URL as it was built from the normalised hostname; nothing is
// sent.
TEST_F(ConfigCommandTest, HostnamesAreNormalisedBeforeTheLookup) {
  const std::vector<HostnameCase> cases = {
      {"console.example", "https://console.example"},
      {"http://console.example:8080/base", "http://console.example:8080/base"},
      {"https://console.example/", "https://console.example/"},
      {"ftp://console.example", "https://console.example"},
  };
  for (const HostnameCase &c : cases) {
    SCOPED_TRACE(c.given);
    Run run = config({"--signin", "-u", "admin", "-p", password, "-k", apiKey,
                      "-o", c.given, "-g", "AC ME"});
    EXPECT_EQ(run.output,
              "<hide>\n❗️Error: Unable to form a valid URL with "
              "the string " +
                  std::string(c.used) +
                  "/api/system/groups/search?groupID=AC ME\n");
    EXPECT_EQ(run.exitCode, 11);
    EXPECT_EQ(storedItems(), Items{});
  }
  EXPECT_TRUE(console.getRequests().empty());
}

} // namespace
