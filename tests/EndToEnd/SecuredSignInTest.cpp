#include "MockConsole/MockConsole.h"
#include "SecureStore/FileItemStore.h"
#include "SecureStore/Keychain.h"
#include "Support/PseudoTerminal.h"
#include "Support/TestSupport.h"

#include <gtest/gtest.h>

#include <csignal>
#include <cstdlib>
#include <filesystem>
#include <functional>
#include <string>
#include <vector>

#include <unistd.h>

// `kestrunecli config --signin` with only the hostname and the group ID, in
// a pseudo-terminal, with the test typing as the user: the username shows as
// typed, the password and the API key never do, and the terminal echoes
// again however the prompts end.

namespace {

using testsupport::ProcessEnd;
using testsupport::PseudoTerminal;

constexpr const char *password = "s3cr3t-Pw";
constexpr const char *apiKey = "K3Y-4pi";

/// One thing the user does, or sees.
struct Action {
  enum class Kind { waitFor, type, signal, waitUntilStopped, echoIs };
  Kind kind;
  std::string text;
  int number = 0;
};

Action see(std::string text) { return {Action::Kind::waitFor, text}; }
Action type(std::string bytes) { return {Action::Kind::type, bytes}; }
Action send(int signal) { return {Action::Kind::signal, "", signal}; }
Action stopped() { return {Action::Kind::waitUntilStopped, ""}; }
Action echoIs(bool on) { return {Action::Kind::echoIs, "", on}; }

const std::string usernamePrompt = "Enter the username: ";
const std::string passwordPrompt = "Enter the password: ";
const std::string apiKeyPrompt = "Enter the apiKey: ";

struct Dialog {
  const char *name;
  /// The value of --hostname; "{base}" is the console's address.
  std::string hostname;
  std::vector<Action> actions;
  ProcessEnd end;
  /// Texts the terminal must show, in this order.
  std::vector<std::string> shown;
  /// Whether the account is stored afterwards.
  bool signedIn;
};

class SecuredSignInTest : public testing::Test {
protected:
  void SetUp() override {
    console.addAccount({"admin", password, apiKey});
    console.mapGroup("ACME", 570);
    console.start();
  }

  /// The binary with HOME in the test's directory and no D-Bus session, so
  /// that it keeps the account in the file store there.
  std::function<int()> job(const std::string &hostname) {
    std::string home = directory.path().string();
    return [home, hostname] {
      ::unsetenv("DBUS_SESSION_BUS_ADDRESS");
      ::unsetenv("XDG_RUNTIME_DIR");
      ::unsetenv("XDG_DATA_HOME");
      ::setenv("HOME", home.c_str(), 1);
      const char *argv[] = {KESTRUNECLI_PATH, "config",         "--signin",
                            "--hostname",     hostname.c_str(), "--group-id",
                            "ACME",           nullptr};
      ::execv(argv[0], const_cast<char *const *>(argv));
      return 127;
    };
  }

  std::size_t storedItemCount() {
    securestore::FileItemStore store(directory.path() / ".local" / "share" /
                                     "kestrune-cli" / "keychain");
    return securestore::Keychain("kestrune-cli")
        .withItemStore(store)
        .allKeys()
        .size();
  }

  mockconsole::MockConsole console;
  testsupport::TempDir directory;
};

TEST_F(SecuredSignInTest, PromptsHideTheSecretsAndAlwaysGiveEchoBack) {
  const std::string signedIn = "You have signed in successfully.";
  const std::vector<Action> goodAnswers = {see(usernamePrompt),
                                           type("admin\n"),
                                           see(passwordPrompt),
                                           echoIs(false),
                                           type(std::string(password) + "\n"),
                                           see(apiKeyPrompt),
                                           echoIs(false),
                                           type(std::string(apiKey) + "\n")};
  auto then = [](std::vector<Action> first, const std::vector<Action> &more) {
    first.insert(first.end(), more.begin(), more.end());
    return first;
  };
  const std::vector<Dialog> dialogs = {
      {"three answers",
       "{base}",
       goodAnswers,
       ProcessEnd::exitedWith(0),
       {usernamePrompt + "admin\r\n", passwordPrompt + "\r\n",
        apiKeyPrompt + "\r\n", signedIn},
       true},
      {"an empty first password",
       "{base}",
       {see(usernamePrompt), type("admin\n"), see(passwordPrompt), type("\n"),
        see(passwordPrompt), type(std::string(password) + "\n"),
        see(apiKeyPrompt), type(std::string(apiKey) + "\n")},
       ProcessEnd::exitedWith(0),
       {"❗️Error: The entered password is empty. Please enter the "
        "password.",
        passwordPrompt, signedIn},
       true},
      {"an empty password twice",
       "{base}",
       {see(usernamePrompt), type("admin\n"), see(passwordPrompt), type("\n"),
        see(passwordPrompt), type("\n")},
       ProcessEnd::exitedWith(7),
       {"❗️Error: Exiting as the password entered is empty. Please try "
        "again "
        "to sign-in."},
       false},
      {"end of input at the username",
       "{base}",
       {see(usernamePrompt), type("\x04")},
       ProcessEnd::exitedWith(6),
       {"❗️Error: Exiting as the username entered is empty. Please try "
        "again "
        "to sign-in."},
       false},
      {"end of input at the API key",
       "{base}",
       {see(usernamePrompt), type("admin\n"), see(passwordPrompt),
        type(std::string(password) + "\n"), see(apiKeyPrompt), type("\x04")},
       ProcessEnd::exitedWith(8),
       {"❗️Error: Exiting as the apikey entered is empty. Please try again "
        "to "
        "sign-in."},
       false},
      {"Ctrl-C at the password",
       "{base}",
       {see(usernamePrompt), type("admin\n"), see(passwordPrompt),
        type("\x03")},
       ProcessEnd::killedBy(SIGINT),
       {},
       false},
      {"SIGTERM at the API key",
       "{base}",
       {see(usernamePrompt), type("admin\n"), see(passwordPrompt),
        type(std::string(password) + "\n"), see(apiKeyPrompt), send(SIGTERM)},
       ProcessEnd::killedBy(SIGTERM),
       {},
       false},
      {"Ctrl-Z at the password, then on in the foreground",
       "{base}",
       then({see(usernamePrompt), type("admin\n"), see(passwordPrompt),
             type("\x1a"), stopped(), echoIs(true), send(SIGCONT)},
            {see(passwordPrompt), echoIs(false),
             type(std::string(password) + "\n"), see(apiKeyPrompt),
             type(std::string(apiKey) + "\n")}),
       ProcessEnd::exitedWith(0),
       {signedIn},
       true},
      {"a hostname that is no URL, found after the prompts",
       "a b",
       goodAnswers,
       ProcessEnd::exitedWith(9),
       {apiKeyPrompt, "❗️Error: Please check if the hostname is valid"},
       false},
  };
  for (const Dialog &dialog : dialogs) {
    SCOPED_TRACE(dialog.name);
    std::string hostname =
        dialog.hostname == "{base}" ? console.getBaseUrl() : dialog.hostname;
    PseudoTerminal terminal(job(hostname));

    for (const Action &action : dialog.actions) {
      switch (action.kind) {
      case Action::Kind::waitFor:
        ASSERT_TRUE(terminal.waitFor(action.text)) << action.text << " in\n"
                                                   << terminal.getTranscript();
        break;
      case Action::Kind::type:
        terminal.type(action.text);
        break;
      case Action::Kind::signal:
        terminal.sendSignal(action.number);
        break;
      case Action::Kind::waitUntilStopped:
        ASSERT_TRUE(terminal.waitUntilStopped());
        break;
      case Action::Kind::echoIs:
        EXPECT_EQ(terminal.isEchoOn(), action.number != 0);
        break;
      }
    }
    EXPECT_EQ(terminal.waitForEnd(), dialog.end);
    EXPECT_TRUE(terminal.isEchoOn());

    const std::string &transcript = terminal.getTranscript();
    EXPECT_EQ(transcript.find(password), std::string::npos) << transcript;
    EXPECT_EQ(transcript.find(apiKey), std::string::npos) << transcript;
    std::size_t at = 0;
    for (const std::string &text : dialog.shown) {
      at = transcript.find(text, at);
      ASSERT_NE(at, std::string::npos) << text << " in\n" << transcript;
      at += text.size();
    }
    EXPECT_EQ(storedItemCount(), dialog.signedIn ? 6u : 0u);
    std::filesystem::remove_all(directory.path() / ".local");
  }
}

} // namespace
