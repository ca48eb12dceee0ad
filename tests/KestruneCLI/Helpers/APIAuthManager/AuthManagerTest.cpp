#include "KestruneCLI/Helpers/APIAuthManager/AuthManager.h"

#include <gtest/gtest.h>

#include <map>
#include <string_view>
#include <vector>

namespace kestrune {
namespace {

using Text = std::optional<std::string>;

// Answers the prompts from a script and records which were asked.
class ScriptedAuthUtil final : public AuthUtilProtocol {
public:
  explicit ScriptedAuthUtil(std::map<AuthParameters, Text> answers = {})
      : answers(std::move(answers)) {}

  Text getValidInput(AuthParameters input) const override {
    asked.push_back(input);
    auto found = answers.find(input);
    return found == answers.end() ? std::nullopt : found->second;
  }

  std::map<AuthParameters, Text> answers;
  mutable std::vector<AuthParameters> asked;
};

// The command line's sign-in fields.
struct Given {
  Text groupId = std::nullopt;
  Text hostname = std::nullopt;
  Text username = std::nullopt;
  Text password = std::nullopt;
  Text apikey = std::nullopt;
};

struct Result {
  int calls = 0;
  std::optional<CliError> error;
  std::optional<ConfigModel> record;
  std::vector<AuthParameters> asked;
};

Result configure(const Given &given,
                 const std::map<AuthParameters, Text> &answers = {}) {
  ScriptedAuthUtil authUtil(answers);
  Result result;
  AuthManager::configure(given.groupId, given.hostname, given.username,
                         given.password, given.apikey, authUtil,
                         [&result](std::optional<CliError> error,
                                   std::optional<ConfigModel> record) {
                           ++result.calls;
                           result.error = std::move(error);
                           result.record = std::move(record);
                         });
  result.asked = authUtil.asked;
  return result;
}

const std::map<AuthParameters, Text> goodAnswers = {
    {AuthParameters::username, "alice"},
    {AuthParameters::password, "pw"},
    {AuthParameters::apiKey, "key"}};

using enum AuthParameters;
const std::vector<AuthParameters> noPrompt;
const std::vector<AuthParameters> allPrompts = {username, password, apiKey};

constexpr std::string_view secureSignInNote =
    " \n\n⚠️ Note: To prompt secure sign-in interactive terminal, please "
    "only "
    "enter GroupID and Hostname fields";

std::string withNote(std::string_view head) {
  return std::string(head) + std::string(secureSignInNote);
}

struct FailureCase {
  const char *name;
  Given given;
  std::map<AuthParameters, Text> answers;
  std::vector<AuthParameters> asked;
  std::string message;
  int code;
};

TEST(AuthManagerTest, ReportsEachFailureWithItsTextAndCode) {
  const FailureCase cases[] = {
      // Secured: neither username, password nor API key on the command line.
      {"secured, nothing given",
       {},
       goodAnswers,
       noPrompt,
       "❗️Error: Please re-enter credentials. GroupID is missing.",
       5},
      {"secured, only the hostname",
       {.hostname = "h"},
       goodAnswers,
       noPrompt,
       "❗️Error: Please re-enter credentials. GroupID is missing.",
       5},
      {"secured, no hostname",
       {.groupId = "g"},
       goodAnswers,
       noPrompt,
       "❗️Error: Please re-enter credentials. Hostname is missing.",
       4},
      {"secured, username absent",
       {.groupId = "g", .hostname = "h"},
       {{username, std::nullopt}, {password, "pw"}, {apiKey, "key"}},
       {username},
       "❗️Error: Exiting as the username entered is empty. Please try "
       "again "
       "to sign-in.",
       6},
      {"secured, username empty",
       {.groupId = "g", .hostname = "h"},
       {{username, ""}, {password, "pw"}, {apiKey, "key"}},
       {username},
       "❗️Error: Exiting as the username entered is empty. Please try "
       "again "
       "to sign-in.",
       6},
      {"secured, password absent",
       {.groupId = "g", .hostname = "h"},
       {{username, "alice"}, {password, std::nullopt}, {apiKey, "key"}},
       {username, password},
       "❗️Error: Exiting as the password entered is empty. Please try "
       "again "
       "to sign-in.",
       7},
      {"secured, password empty",
       {.groupId = "g", .hostname = "h"},
       {{username, "alice"}, {password, ""}, {apiKey, "key"}},
       {username, password},
       "❗️Error: Exiting as the password entered is empty. Please try "
       "again "
       "to sign-in.",
       7},
      {"secured, API key absent",
       {.groupId = "g", .hostname = "h"},
       {{username, "alice"}, {password, "pw"}, {apiKey, std::nullopt}},
       allPrompts,
       "❗️Error: Exiting as the apikey entered is empty. Please try again "
       "to "
       "sign-in.",
       8},
      {"secured, API key empty",
       {.groupId = "g", .hostname = "h"},
       {{username, "alice"}, {password, "pw"}, {apiKey, ""}},
       allPrompts,
       "❗️Error: Exiting as the apikey entered is empty. Please try again "
       "to "
       "sign-in.",
       8},
      {"secured, bad hostname found after the prompts",
       {.groupId = "g", .hostname = "a b"},
       goodAnswers,
       allPrompts,
       "❗️Error: Please check if the hostname is valid",
       9},
      // Inline: any of username, password, API key given.
      {"inline, bad hostname",
       {"g", "a b", "a", "b", "c"},
       goodAnswers,
       noPrompt,
       "❗️Error: Please check if the hostname is valid",
       9},
      {"inline, bad hostname comes before missing fields",
       {.hostname = "a b", .username = "a"},
       goodAnswers,
       noPrompt,
       "❗️Error: Please check if the hostname is valid",
       9},
      {"inline, only the username missing",
       {"g", "h", std::nullopt, "p", "k"},
       goodAnswers,
       noPrompt,
       withNote(
           "\n❗️Error: Please re-enter credentials. Username is missing."),
       1},
      {"inline, only the password missing",
       {"g", "h", "u", std::nullopt, "k"},
       goodAnswers,
       noPrompt,
       withNote(
           "\n❗️Error: Please re-enter credentials. Password is missing."),
       2},
      {"inline, only the API key missing",
       {"g", "h", "u", "p", std::nullopt},
       goodAnswers,
       noPrompt,
       withNote(
           "\n❗️Error: Please re-enter credentials. Apikey is missing."),
       3},
      {"inline, only the hostname missing",
       {"g", std::nullopt, "u", "p", "k"},
       goodAnswers,
       noPrompt,
       "❗️Error: Please re-enter credentials. Hostname is missing.",
       4},
      {"inline, only the group ID missing",
       {std::nullopt, "h", "u", "p", "k"},
       goodAnswers,
       noPrompt,
       "❗️Error: Please re-enter credentials. GroupID is missing.",
       5},
      {"inline, only the username given",
       {.username = "a"},
       goodAnswers,
       noPrompt,
       withNote(
           "\n❗️Error: Please re-enter credentials. Password, Hostname, "
           "ApiKey and GroupId fields are missing."),
       55},
      {"inline, an empty username counts as given",
       {.username = ""},
       goodAnswers,
       noPrompt,
       withNote(
           "\n❗️Error: Please re-enter credentials. Password, Hostname, "
           "ApiKey and GroupId fields are missing."),
       55},
      {"inline, username and password missing",
       {"g", "h", std::nullopt, std::nullopt, "k"},
       goodAnswers,
       noPrompt,
       withNote("\n❗️Error: Please re-enter credentials. Username and "
                "Password fields are missing."),
       55},
  };
  for (const FailureCase &c : cases) {
    SCOPED_TRACE(c.name);
    Result result = configure(c.given, c.answers);
    EXPECT_EQ(result.calls, 1);
    ASSERT_TRUE(result.error);
    EXPECT_EQ(result.error->errorDescription(), c.message);
    EXPECT_EQ(result.error->code(), c.code);
    EXPECT_FALSE(result.record);
    EXPECT_EQ(result.asked, c.asked);
  }
}

struct SuccessCase {
  const char *name;
  Given given;
  std::map<AuthParameters, Text> answers;
  std::vector<AuthParameters> asked;
  ConfigModel record;
};

TEST(AuthManagerTest, BuildsTheRecordWithoutGroupNumber) {
  const SuccessCase cases[] = {
      {"inline",
       {"Sales", "uem.example.com", "admin", "pw", "key"},
       goodAnswers,
       noPrompt,
       {"admin", "pw", "key", "https://uem.example.com", "Sales",
        std::nullopt}},
      {"inline values are not tested",
       {"", "uem.example.com", "", "", ""},
       goodAnswers,
       noPrompt,
       {"", "", "", "https://uem.example.com", "", std::nullopt}},
      {"secured asks username, password and API key in order",
       {.groupId = "Sales", .hostname = "http://uem.example.com"},
       goodAnswers,
       allPrompts,
       {"alice", "pw", "key", "http://uem.example.com", "Sales", std::nullopt}},
      {"secured answers are kept as typed",
       {.groupId = "Sales", .hostname = "uem.example.com"},
       {{username, " alice "}, {password, "p w "}, {apiKey, "\tkey"}},
       allPrompts,
       {" alice ", "p w ", "\tkey", "https://uem.example.com", "Sales",
        std::nullopt}},
      {"secured does not test an empty group ID or hostname",
       {.groupId = "", .hostname = ""},
       goodAnswers,
       allPrompts,
       {"alice", "pw", "key", "https://", "", std::nullopt}},
  };
  for (const SuccessCase &c : cases) {
    SCOPED_TRACE(c.name);
    Result result = configure(c.given, c.answers);
    EXPECT_EQ(result.calls, 1);
    EXPECT_FALSE(result.error) << result.error->errorDescription();
    EXPECT_EQ(result.record, c.record);
    EXPECT_EQ(result.asked, c.asked);
  }
}

// How a typed console address is stored; std::nullopt means the sign-in ends
// in incorrectHostname.
struct HostnameCase {
  std::string typed;
  Text stored;
};

TEST(AuthManagerTest, NormalisesTheHostname) {
  const HostnameCase cases[] = {
      // A bare name gets the https scheme and no path.
      {"uem.example.com", "https://uem.example.com"},
      // http and https stay, with host, port, path and trailing slash.
      {"http://uem.example.com", "http://uem.example.com"},
      {"https://uem.example.com:8443/base/",
       "https://uem.example.com:8443/base/"},
      {"https://[::1]:8443", "https://[::1]:8443"},
      {"HTTP://Uem.Example.com", "http://Uem.Example.com"},
      // Any other scheme is replaced by https.
      {"ftp://x.example", "https://x.example"},
      {"ftp://x.example:21/pub", "https://x.example:21/pub"},
      {"//uem.example.com/base", "https://uem.example.com/base"},
      // A name with a port reads as a scheme and a path, and a numeric
      // address with a port as no reference at all: both mean the host.
      {"uem.example.com:8443", "https://uem.example.com:8443"},
      {"127.0.0.1:8443", "https://127.0.0.1:8443"},
      {"uem.example.com/base/", "https://uem.example.com/base/"},
      // Empty: a scheme with an empty authority, so that an absent
      // hostname is reported as missing, not as invalid.
      {"", "https://"},
      // Not an address.
      {"a b", std::nullopt},
      {"uem.example.com\n", std::nullopt},
      {"a%zz", std::nullopt},
      {"bücher.example", std::nullopt},
      {"uem.example.com:port", std::nullopt},
      {"https://uem.example.com:port", std::nullopt},
      {"https://", std::nullopt},
      {"http:uem.example.com", std::nullopt},
      {"/base", std::nullopt},
      {"admin@uem.example.com", std::nullopt},
      {"mailto:admin@uem.example.com", std::nullopt},
      {":8443", std::nullopt},
      {std::string("uem\0.example.com", 16), std::nullopt},
  };
  for (const HostnameCase &c : cases) {
    SCOPED_TRACE(c.typed);
    Result result = configure({"g", c.typed, "u", "p", "k"});
    ASSERT_EQ(result.calls, 1);
    if (!c.stored) {
      ASSERT_TRUE(result.error);
      EXPECT_EQ(*result.error, CliError::incorrectHostname());
      continue;
    }
    ASSERT_TRUE(result.record);
    EXPECT_EQ(result.record->hostname, *c.stored);
  }
}

} // namespace
} // namespace kestrune
