#include "EndToEnd/Fixture.h"
#include "Support/PseudoTerminal.h"
#include "Support/Texts.h"

#include <csignal>

#include <unistd.h>

// `kestrunecli config --signin` with only the hostname and the group ID: it
// asks for the username, the password and the API key. On a terminal, the
// test types as the user: the username shows as typed, the secrets never
// do, and the terminal echoes again however the prompts end.

namespace {

using testsupport::ProcessEnd;
using testsupport::PseudoTerminal;

const std::string user = "Enter the username: ", pass = "Enter the password: ",
                  key = "Enter the apiKey: ";

// Pairs of what the user awaits (echo is off once a secret's prompt shows;
// "^T": the job is stopped) and then does: type, or "^Z" (stop, with echo on
// meanwhile, and `fg`), or "^SIG" and the number of a signal to send, which
// SIGCONT follows, as timeout(1) and a shell's kill send it: a stopped
// process takes no other signal before it goes on.
using Steps = std::vector<std::string>;

std::string emptyMessage(const std::string &name) {
  return "❗️Error: The entered " + name + " is empty. Please enter the " +
         name + ".";
}

struct Dialog {
  std::string hostname;
  Steps steps;
  ProcessEnd end;
  // The end of what the terminal shows, with "\r\n" as "\n".
  std::string shownLast;
  // Run as `printf 'alice\n' | timeout 5 kestrunecli ...` runs from a script
  // on a terminal: the username from a pipe, the job in a background group.
  bool inBackground = false;
  // Started with SIGHUP ignored, as under nohup.
  bool hangupIgnored = false;
};

// clang-format off
const Dialog dialogs[] = {
    {"{base}", {user, "alice\n", pass, "s3cret\n", key, "tenant-key\n"}, ProcessEnd::exitedWith(0),
     user + "alice\n" + pass + "\n" + key + "\n" + texts::signedIn + texts::saved},
    // An empty first answer is asked again, with a word.
    {"{base}", {user, "\n", emptyMessage("username"), "", user, "alice\n", pass, "\n", emptyMessage("password"), "",
                pass, "s3cret\n", key, "\n", emptyMessage("apiKey"), "", key, "tenant-key\n"},
     ProcessEnd::exitedWith(0), "keychain.\n\n"},
    // End of input: at the username it ends the sign-in; at a secret
    // prompt it is an empty answer.
    {"{base}", {user, "\x04"}, ProcessEnd::exitedWith(6),
     user + "❗️Error: Exiting as the username entered is empty. Please try again to sign-in.\n"},
    {"{base}", {user, "alice\n", pass, "s3cret\n", key, "\n", key, "\n"}, ProcessEnd::exitedWith(8),
     key + "\n❗️Error: Exiting as the apikey entered is empty. Please try again to sign-in.\n"},
    {"{base}", {user, "alice\n", pass, "\x04", pass, "\x04"}, ProcessEnd::exitedWith(7),
     pass + "\n❗️Error: Exiting as the password entered is empty. Please try again to sign-in.\n"},
    {"{base}", {user, "alice\n", pass, "s3c\x03"}, ProcessEnd::killedBy(SIGINT), pass},
    {"{base}", {user, "alice\n", pass, "s3cret\n", key, "^SIG" + std::to_string(SIGTERM)},
     ProcessEnd::killedBy(SIGTERM), key},
    {"{base}", {user, "alice\n", pass, "^SIG" + std::to_string(SIGHUP)}, ProcessEnd::killedBy(SIGHUP), pass},
    // Ignored from the start, SIGHUP stays ignored; SIGTERM still ends it.
    {"{base}", {user, "alice\n", pass, "^SIG" + std::to_string(SIGHUP), "", "s3cret\n", key, "^SIG" + std::to_string(SIGTERM)},
     ProcessEnd::killedBy(SIGTERM), key, false, true},
    // Ctrl-Z, then `fg`: the prompt shows again, with echo off again.
    {"{base}", {user, "alice\n", pass, "^Z", pass, "s3cret\n", key, "tenant-key\n"}, ProcessEnd::exitedWith(0),
     "keychain.\n\n"},
    // In the background, the password prompt waits until it may change the
    // terminal; a signal ends it there.
    {"{base}", {"^T", "^SIG" + std::to_string(SIGTERM)}, ProcessEnd::killedBy(SIGTERM), user, true},
    {"{base}", {"^T", "^SIG" + std::to_string(SIGINT)}, ProcessEnd::killedBy(SIGINT), user, true},
    {"{base}", {"^T", "^SIG" + std::to_string(SIGHUP)}, ProcessEnd::killedBy(SIGHUP), user, true},
    // A hostname that is no URL is found only after the prompts.
    {"a b", {user, "alice\n", pass, "s3cret\n", key, "tenant-key\n"}, ProcessEnd::exitedWith(9),
     key + "\n❗️Error: Please check if the hostname is valid\n"},
};
// clang-format on

TEST(PromptTest, HidesTheSecretsAndAlwaysGivesTheEchoBack) {
  for (const Dialog &dialog : dialogs) {
    SCOPED_TRACE(testing::PrintToString(dialog.steps));
    e2e::Scene scene;
    std::function<int()> job = scene.job(
        {"config", "--signin", "--hostname", dialog.hostname, "-g", "Org1"});
    if (dialog.inBackground)
      job = [job] {
        int fds[2];
        if (::pipe(fds) != 0 || ::write(fds[1], "alice\n", 6) != 6)
          return 127;
        ::dup2(fds[0], STDIN_FILENO);
        ::close(fds[0]);
        ::close(fds[1]);
        return job();
      };
    if (dialog.hangupIgnored)
      job = [job] {
        ::signal(SIGHUP, SIG_IGN);
        return job();
      };
    PseudoTerminal terminal(job, 80,
                            dialog.inBackground
                                ? PseudoTerminal::Group::background
                                : PseudoTerminal::Group::foreground);
    for (std::size_t i = 0; i + 1 < dialog.steps.size(); i += 2) {
      const std::string &awaited = dialog.steps[i], &act = dialog.steps[i + 1];
      ASSERT_TRUE(awaited == "^T" ? terminal.waitUntilStopped()
                                  : terminal.waitFor(awaited))
          << terminal.getTranscript();
      if (awaited == pass || awaited == key) {
        EXPECT_FALSE(terminal.isEchoOn());
      }
      if (act.rfind("^SIG", 0) == 0) {
        terminal.sendSignal(std::stoi(act.substr(4)));
        terminal.sendSignal(SIGCONT);
      } else if (act == "^Z") {
        terminal.type("\x1a");
        ASSERT_TRUE(terminal.waitUntilStopped());
        EXPECT_TRUE(terminal.isEchoOn());
        terminal.sendSignal(SIGCONT);
      } else {
        terminal.type(act);
      }
    }
    EXPECT_EQ(terminal.waitForEnd(), dialog.end);
    EXPECT_TRUE(terminal.isEchoOn());
    std::string shown = terminal.getTranscript();
    e2e::replaceAll(shown, "\r\n", "\n");
    // On a terminal the spinner's frame has a colour.
    e2e::replaceAll(shown, "\x1b[39m", "");
    e2e::replaceAll(shown, "\x1b[0m", "");
    shown = e2e::withoutSpinner(shown);
    EXPECT_EQ(shown.substr(shown.size() -
                           std::min(shown.size(), dialog.shownLast.size())),
              dialog.shownLast);
    EXPECT_EQ(shown.find("s3c"), std::string::npos);
    EXPECT_EQ(shown.find("tenant-key"), std::string::npos);
    e2e::Items stored;
    if (dialog.end == ProcessEnd::exitedWith(0))
      stored = scene.account();
    EXPECT_EQ(scene.stored(), stored);
  }
}

// With no terminal at all, the answers come from standard input, and the
// prompts for the secrets go to standard error.
TEST(PromptTest, ReadsTheAnswersFromAPipeWithoutATerminal) {
  const std::pair<std::string, e2e::Run> cases[] = {
      {"alice\ns3cret\r\ntenant-key\n",
       {user + texts::signedIn + texts::saved, pass + key, 0}},
      {"",
       {user + "❗️Error: Exiting as the username entered is empty. Please "
               "try again to sign-in.\n",
        "", 6}},
  };
  for (const auto &[input, expected] : cases) {
    SCOPED_TRACE(input);
    e2e::Scene scene;
    e2e::Run run =
        scene.run({"config", "--signin", "-o", "{base}", "-g", "Org1"}, input,
                  {testsupport::findProgram("setsid").value(), "-w"});
    EXPECT_EQ(run.out, expected.out);
    EXPECT_EQ(run.err, expected.err);
    EXPECT_EQ(run.code, expected.code);
    EXPECT_EQ(scene.stored(), run.code ? e2e::Items{} : scene.account());
  }
}

} // namespace
