#include "KestruneCLI/Helpers/APIAuthManager/AuthUtil.h"

#include "KestruneCLI/Helpers/APIAuthManager/AuthManager.h"
#include "KestruneCLI/Helpers/DarwinWrapper.h"
#include "Support/PseudoTerminal.h"

#include <gtest/gtest.h>

#include <csignal>
#include <cstdio>
#include <string>
#include <vector>

#include <unistd.h>

namespace kestrune {
namespace {

using testsupport::ProcessEnd;
using testsupport::PseudoTerminal;
using testsupport::ResultPipe;

// The user waits for a prompt, then types.
struct Exchange {
  std::string prompt;
  std::string typed;
};

// Plays \p dialog on the terminal, failing the test when a prompt never shows.
void play(PseudoTerminal &terminal, const std::vector<Exchange> &dialog) {
  for (const Exchange &exchange : dialog) {
    ASSERT_TRUE(terminal.waitFor(exchange.prompt))
        << "waiting for " << exchange.prompt << " in "
        << terminal.getTranscript();
    bool hidden = exchange.prompt != "Enter the username: ";
    EXPECT_EQ(terminal.isEchoOn(), !hidden) << exchange.prompt;
    terminal.type(exchange.typed);
  }
}

Exchange username(std::string typed) {
  return {"Enter the username: ", std::move(typed)};
}
Exchange password(std::string typed) {
  return {"Enter the password: ", std::move(typed)};
}
Exchange apiKey(std::string typed) {
  return {"Enter the apiKey: ", std::move(typed)};
}

struct PromptCase {
  const char *name;
  AuthParameters input;
  std::vector<Exchange> dialog;
  std::string sent;
  std::string transcript;
};

TEST(AuthUtilTest, PromptsOnTheTerminal) {
  const PromptCase cases[] = {
      {"username is echoed",
       AuthParameters::username,
       {username("alice\n")},
       "some:alice",
       "Enter the username: alice\r\n"},
      {"username asked again once after an empty answer",
       AuthParameters::username,
       {username("\n"), username("bob\n")},
       "some:bob",
       "Enter the username: \r\n"
       "❗️Error: The entered username is empty. Please enter the "
       "username.\r\n"
       "Enter the username: bob\r\n"},
      {"username at end of input",
       AuthParameters::username,
       {username("\x04")},
       "none",
       "Enter the username: "},
      {"password is hidden",
       AuthParameters::password,
       {password("S3cret-pw\n")},
       "some:S3cret-pw",
       "Enter the password: \r\n"},
      {"password empty twice",
       AuthParameters::password,
       {password("\n"), password("\n")},
       "some:",
       "Enter the password: \r\n"
       "❗️Error: The entered password is empty. Please enter the "
       "password.\r\n"
       "Enter the password: \r\n"},
      {"password at end of input",
       AuthParameters::password,
       {password("\x04")},
       "none",
       "Enter the password: \r\n"},
      {"API key is hidden and named as the field",
       AuthParameters::apiKey,
       {apiKey("\n"), apiKey("K3y-123\n")},
       "some:K3y-123",
       "Enter the apiKey: \r\n"
       "❗️Error: The entered apiKey is empty. Please enter the apiKey.\r\n"
       "Enter the apiKey: \r\n"},
  };
  for (const PromptCase &c : cases) {
    SCOPED_TRACE(c.name);
    ResultPipe result;
    PseudoTerminal terminal([&result, input = c.input] {
      result.send(AuthUtil::shared().getValidInput(input));
      return 0;
    });
    play(terminal, c.dialog);
    EXPECT_EQ(terminal.waitForEnd(), ProcessEnd::exitedWith(0));
    EXPECT_TRUE(terminal.isEchoOn());
    EXPECT_EQ(result.receive(), c.sent);
    EXPECT_EQ(terminal.getTranscript(), c.transcript);
  }
}

// Ends the job the way the tool ends its process, without running the test
// program's exit handlers in the forked job.
class ExitNow final : public DarwinProtocol {
public:
  void exitCode(std::int32_t code) const override {
    std::fflush(stdout);
    ::_exit(code);
  }
};

// The whole secured sign-in as `config --signin` runs it: errors are printed
// and end the process through AuthManager::darwinWrapper.
std::function<int()> signInJob(const ResultPipe &result, std::string hostname) {
  return [&result, hostname] {
    static const ExitNow exitNow;
    AuthManager::darwinWrapper = exitNow;
    AuthManager::configure(
        "Sales", hostname, std::nullopt, std::nullopt, std::nullopt,
        AuthUtil::shared(),
        [&result](std::optional<CliError> error,
                  std::optional<ConfigModel> record) {
          if (error)
            return reportError(*error, AuthManager::darwinWrapper);
          result.send(record->username + "|" + record->password + "|" +
                      record->apiKey + "|" + record->hostname + "|" +
                      record->groupId);
        });
    return 0;
  };
}

struct SignInCase {
  const char *name;
  std::string hostname;
  std::vector<Exchange> dialog;
  ProcessEnd end;
  std::string sent;
  std::string transcript;
};

TEST(AuthUtilTest, SecuredSignInNeverShowsTheSecrets) {
  const std::vector<std::string> secrets = {"S3cr", "K3y"};
  const SignInCase cases[] = {
      {"signed in",
       "uem.example.com",
       {username("alice\n"), password("S3cret-pw\n"), apiKey("K3y-123\n")},
       ProcessEnd::exitedWith(0),
       "some:alice|S3cret-pw|K3y-123|https://uem.example.com|Sales",
       "Enter the username: alice\r\n"
       "Enter the password: \r\n"
       "Enter the apiKey: \r\n"},
      {"empty first password",
       "uem.example.com",
       {username("alice\n"), password("\n"), password("S3cret-pw\n"),
        apiKey("K3y-123\n")},
       ProcessEnd::exitedWith(0),
       "some:alice|S3cret-pw|K3y-123|https://uem.example.com|Sales",
       "Enter the username: alice\r\n"
       "Enter the password: \r\n"
       "❗️Error: The entered password is empty. Please enter the "
       "password.\r\n"
       "Enter the password: \r\n"
       "Enter the apiKey: \r\n"},
      {"end of input at the username",
       "uem.example.com",
       {username("\x04")},
       ProcessEnd::exitedWith(6),
       "",
       "Enter the username: ❗️Error: Exiting as the username entered is "
       "empty. Please try again to sign-in.\r\n"},
      {"password empty twice",
       "uem.example.com",
       {username("alice\n"), password("\n"), password("\n")},
       ProcessEnd::exitedWith(7),
       "",
       "Enter the username: alice\r\n"
       "Enter the password: \r\n"
       "❗️Error: The entered password is empty. Please enter the "
       "password.\r\n"
       "Enter the password: \r\n"
       "❗️Error: Exiting as the password entered is empty. Please try "
       "again "
       "to sign-in.\r\n"},
      {"end of input at the API key",
       "uem.example.com",
       {username("alice\n"), password("S3cret-pw\n"), apiKey("\x04")},
       ProcessEnd::exitedWith(8),
       "",
       "Enter the username: alice\r\n"
       "Enter the password: \r\n"
       "Enter the apiKey: \r\n"
       "❗️Error: Exiting as the apikey entered is empty. Please try again "
       "to "
       "sign-in.\r\n"},
      {"bad hostname after the prompts",
       "a b",
       {username("alice\n"), password("S3cret-pw\n"), apiKey("K3y-123\n")},
       ProcessEnd::exitedWith(9),
       "",
       "Enter the username: alice\r\n"
       "Enter the password: \r\n"
       "Enter the apiKey: \r\n"
       "❗️Error: Please check if the hostname is valid\r\n"},
      {"Ctrl-C half way through the password",
       "uem.example.com",
       {username("alice\n"), password("S3cr\x03")},
       ProcessEnd::killedBy(SIGINT),
       "",
       "Enter the username: alice\r\n"
       "Enter the password: "},
      {"Ctrl-C half way through the API key",
       "uem.example.com",
       {username("alice\n"), password("S3cret-pw\n"), apiKey("K3y\x03")},
       ProcessEnd::killedBy(SIGINT),
       "",
       "Enter the username: alice\r\n"
       "Enter the password: \r\n"
       "Enter the apiKey: "},
  };
  for (const SignInCase &c : cases) {
    SCOPED_TRACE(c.name);
    ResultPipe result;
    PseudoTerminal terminal(signInJob(result, c.hostname));
    play(terminal, c.dialog);
    EXPECT_EQ(terminal.waitForEnd(), c.end);
    EXPECT_TRUE(terminal.isEchoOn());
    EXPECT_EQ(result.receive(), c.sent);
    EXPECT_EQ(terminal.getTranscript(), c.transcript);
    for (const std::string &secret : secrets)
      EXPECT_EQ(terminal.getTranscript().find(secret), std::string::npos)
          << secret;
  }
}

} // namespace
} // namespace kestrune
