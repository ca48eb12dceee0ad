#include "EndToEnd/Fixture.h"
#include "MockConsole/MockConsole.h"
#include "SecureStore/FileItemStore.h"
#include "SecureStore/Keychain.h"
#include "Support/PseudoTerminal.h"
#include "Support/TestSupport.h"

#include <gtest/gtest.h>

#include <csignal>
#include <filesystem>
#include <optional>
#include <sstream>
#include <string>
#include <vector>

#include <unistd.h>

// The built kestrunecli on a terminal as a shell runs it: what the terminal
// shows, how the tool ends, and that it leaves the terminal as it found it.

namespace {

using testsupport::ProcessEnd;
using testsupport::PseudoTerminal;
using namespace std::string_literals;

// Option rows at a wrap width of 0: each word of the abstract on a line of
// its own in column 26, from the label's line if the label leaves room.
std::string wordPerLine(const std::string &label, const std::string &text) {
  std::string shown = "  " + label + (label.size() > 23 ? "\n" : "");
  std::size_t column = label.size() > 23 ? 0 : label.size() + 2;
  std::istringstream words(text);
  for (std::string word; words >> word; column = 0)
    shown += std::string(26 - column, ' ') + word + "\n";
  return shown;
}

const std::string narrowHelp =
    "OVERVIEW: \n Pass a package\ninstaller, a metadata\nfile, and an icon "
    "file\n(optional) as arguments\nand they will be uploaded\nto Varnholt."
    "\n\n\nUSAGE: kestrunecli upload --installer-path <installer-path> "
    "--metadata-path <metadata-path> [--icon-path <icon-path>] [--group-id "
    "<group-id>]\n\nOPTIONS:\n" +
    wordPerLine("-v, --version", "Show the version of Kestrune CLI.") +
    wordPerLine("-i, --installer-path <installer-path>",
                "(Required) Path to an installer. Valid file types: .pkg, "
                ".dmg, .app, .mpkg") +
    wordPerLine("-m, --metadata-path <metadata-path>",
                "(Required) Path to a metadata file with .plist as file type") +
    wordPerLine("-l, --icon-path <icon-path>",
                "(Optional) Path to an icon file") +
    wordPerLine("-g, --group-id <group-id>",
                "(Optional) Change organization group ID for this upload") +
    wordPerLine("-h, --help", "Show help information.") + "\n";

// The transcript from the last cursor sequence on, without the spinner's
// frames (each drawn after a "\r") and with "\n" for the terminal's "\r\n".
std::string seen(const std::string &transcript) {
  std::size_t at = transcript.rfind("\x1b[?25");
  std::string text;
  for (at = at == std::string::npos ? 0 : at; at < transcript.size();)
    if (transcript[at] == '\r')
      at = transcript.find_first_of("\r\n", at + 1);
    else
      text += transcript[at++];
  return text;
}

using Steps = std::vector<std::string>;

struct Case {
  const char *name;
  std::string commandLine; // for sh -c, standard input from the long line
  Steps steps;             // text to wait for, keys or "^SIG" + a signal, ...
  ProcessEnd end;
  std::string shown;
};

const std::string password = "Enter the password: ";
const std::string apiKey = "Enter the apiKey: ";
const std::string emptySecrets =
    "Enter the username: " + password +
    "\n❗️Error: The entered password is empty. Please enter the "
    "password.\n" +
    password + "\n" + apiKey +
    "\n❗️Error: The entered apiKey is empty. Please enter the apiKey.\n" +
    apiKey +
    "\n❗️Error: Exiting as the apikey entered is empty. Please try "
    "again to sign-in.\n";

TEST(TerminalTest, ShowsWhatTheUserAwaitsAndGivesTheTerminalBack) {
  mockconsole::MockConsole console;
  mockconsole::Answer held;
  held.holdUntilReleased = true; // the spinner turns until the test ends
  console.scriptAnswer(mockconsole::Route::UploadBlob, held);
  console.start();
  testsupport::TempDir home, work;
  securestore::FileItemStore store(home.path() /
                                   ".local/share/kestrune-cli/keychain");
  std::istringstream items("username alice password s3cret apiKey tenant-key "
                           "groupId Org1 groupIdNum 570 hostname " +
                           console.getBaseUrl());
  for (std::string key, value; items >> key >> value;)
    securestore::Keychain("kestrune-cli").withItemStore(store).set(value, key);
  const std::string dir = home.path().string(), tool = e2e::toolPath();
  testsupport::writeFile(dir + "/App.pkg", "installer");
  testsupport::writeFile(dir + "/App.plist", "<plist/>");
  testsupport::writeFile(work.path() / "input", std::string(100000, 'u'));

  const Case cases[] = {
      {"a long username, then Ctrl-D at each secret prompt",
       "exec " + tool + " config --signin --group-id ACME --hostname h",
       Steps{password, "\x04", password, "pw\n", apiKey, "\x04", apiKey,
             "\x04"},
       ProcessEnd::exitedWith(8), emptySecrets},
      {"help 26 columns wide", "stty cols 26; exec " + tool + " upload --help",
       Steps(), ProcessEnd::exitedWith(0), narrowHelp},
      {"Ctrl-C while the spinner turns",
       "exec " + tool + " upload -i " + dir + "/App.pkg -m " + dir +
           "/App.plist",
       Steps{"\x1b[?25l", "\x03"}, ProcessEnd::killedBy(SIGINT), "\x1b[?25h"},
      // SIGHUP ignored from the start stays ignored; SIGTERM still ends it.
      {"SIGHUP, then SIGTERM, while the spinner turns under nohup",
       "trap '' HUP; exec " + tool + " upload -i " + dir + "/App.pkg -m " +
           dir + "/App.plist",
       Steps{"\x1b[?25l", "^SIG" + std::to_string(SIGHUP), "minutes", "",
             "minutes", "", "minutes", "^SIG" + std::to_string(SIGTERM)},
       ProcessEnd::killedBy(SIGTERM), "\x1b[?25h"},
  };
  for (const Case &c : cases) {
    SCOPED_TRACE(c.name);
    const std::string line =
        "unset DBUS_SESSION_BUS_ADDRESS XDG_RUNTIME_DIR XDG_DATA_HOME; HOME=" +
        dir + "; " + c.commandLine + " <" + (work.path() / "input").string();
    PseudoTerminal terminal(
        [&] { return ::execl("/bin/sh", "sh", "-c", line.c_str(), nullptr); });
    for (std::size_t i = 0; i + 1 < c.steps.size(); i += 2) {
      ASSERT_TRUE(terminal.waitFor(c.steps[i])) << terminal.getTranscript();
      const std::string &act = c.steps[i + 1];
      if (act.rfind("^SIG", 0) == 0)
        terminal.sendSignal(std::stoi(act.substr(4)));
      else
        terminal.type(act);
    }
    const std::optional<ProcessEnd> end = terminal.waitForEnd();
    EXPECT_EQ(end, c.end);
    EXPECT_TRUE(terminal.isEchoOn());
    EXPECT_EQ(seen(terminal.getTranscript()), c.shown);
  }
}

} // namespace
