#include "Support/ProcessRunner.h"
#include "Support/TestSupport.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

// Help texts and command-line errors of the built kestrunecli, compared
// byte for byte. Standard output is a pipe here, so help wraps at 80 columns.

namespace {

using testsupport::ProcessOptions;
using testsupport::ProcessResult;
using testsupport::runProcess;

const std::string rootHelp =
    R"TXT(OVERVIEW: Ombrix Varnholt Kestrune Command Line Interface 💡🛠

USAGE: kestrunecli [--version] <subcommand>

OPTIONS:
  -v, --version           Show the version of Kestrune CLI.
  -h, --help              Show help information.

SUBCOMMANDS:
  upload                    Pass a package installer, a metadata file, and an
                          icon file (optional) as arguments and they will be
                          uploaded to Varnholt.

  config                    To sign in, enter the hostname and group ID. You
                          will be prompted to enter the username, password, and
                          API key in subsequent steps. 


  See 'kestrunecli help <subcommand>' for detailed help.)TXT";

const std::string uploadHelp = R"TXT(OVERVIEW: 
 Pass a package installer, a metadata file, and an icon file (optional) as
arguments and they will be uploaded to Varnholt.


USAGE: kestrunecli upload --installer-path <installer-path> --metadata-path <metadata-path> [--icon-path <icon-path>] [--group-id <group-id>]

OPTIONS:
  -v, --version           Show the version of Kestrune CLI.
  -i, --installer-path <installer-path>
                          (Required) Path to an installer. Valid file types:
                          .pkg, .dmg, .app, .mpkg
  -m, --metadata-path <metadata-path>
                          (Required) Path to a metadata file with .plist as
                          file type
  -l, --icon-path <icon-path>
                          (Optional) Path to an icon file
  -g, --group-id <group-id>
                          (Optional) Change organization group ID for this
                          upload
  -h, --help              Show help information.
)TXT";

const std::string configHelp = R"TXT(OVERVIEW: 
 To sign in, enter the hostname and group ID. You will be prompted to enter the
username, password, and API key in subsequent steps. 


USAGE: kestrunecli config [--signin] [--signout] [--list] [--username <username>] [--password <password>] [--api-key <api-key>] [--hostname <hostname>] [--group-id <group-id>]

OPTIONS:
  -v, --version           Show the version of Kestrune CLI.
  -n, --signin            Sign in with username, password, API key, hostname,
                          and groupId
  -t, --signout           Sign out current account, if already logged in
  -l, --list              List the current account info
  -u, --username <username>
                          Username of Varnholt UEM admin
  -p, --password <password>
                          Password
  -k, --api-key <api-key> API Key
  -o, --hostname <hostname>
                          Hostname of UEM API Server (e.g.
                          https://uem.example.com)
  -g, --group-id <group-id>
                          Organization group ID
  -h, --help              Show help information.
)TXT";

const std::string rootUsage =
    R"TXT(Usage: kestrunecli [--version] <subcommand>
  See 'kestrunecli --help' for more information.
)TXT";

const std::string uploadUsage =
    R"TXT(Usage: kestrunecli upload --installer-path <installer-path> --metadata-path <metadata-path> [--icon-path <icon-path>] [--group-id <group-id>]
  See 'kestrunecli upload --help' for more information.
)TXT";

const std::string configUsage =
    R"TXT(Usage: kestrunecli config [--signin] [--signout] [--list] [--username <username>] [--password <password>] [--api-key <api-key>] [--hostname <hostname>] [--group-id <group-id>]
  See 'kestrunecli config --help' for more information.
)TXT";

struct CommandLineCase {
  std::vector<std::string> arguments;
  std::string standardOutput;
  std::string standardError;
  int exitCode;
};

std::string describe(const std::vector<std::string> &arguments) {
  std::string text = "kestrunecli";
  for (const std::string &argument : arguments)
    text += " [" + argument + "]";
  return text;
}

void expectRun(const CommandLineCase &c) {
  SCOPED_TRACE(describe(c.arguments));
  // A throwaway home, so that nothing reads or writes the user's account.
  testsupport::TempDir home;
  ProcessOptions options;
  options.arguments = c.arguments;
  options.environment = {{"HOME", home.path().string()},
                         {"XDG_DATA_HOME", std::nullopt},
                         {"DBUS_SESSION_BUS_ADDRESS", std::nullopt}};
  ProcessResult result = runProcess(KESTRUNECLI_PATH, options);
  EXPECT_EQ(result.standardOutput, c.standardOutput);
  EXPECT_EQ(result.standardError, c.standardError);
  EXPECT_EQ(result.exitCode, c.exitCode);
}

TEST(CommandLineTest, PrintsEveryHelpTextAndExitsZero) {
  const CommandLineCase cases[] = {
      {{}, "\n" + rootHelp + "\n", "", 0},
      {{"--help"}, rootHelp + "\n", "", 0},
      {{"-h"}, rootHelp + "\n", "", 0},
      {{"help"}, rootHelp + "\n", "", 0},
      {{"help", "nosuch"}, rootHelp + "\n", "", 0},
      {{"help", "upload"}, uploadHelp + "\n", "", 0},
      {{"upload", "--help"}, uploadHelp + "\n", "", 0},
      {{"upload", "-i", "a.pkg", "-h"}, uploadHelp + "\n", "", 0},
      {{"help", "config"}, configHelp + "\n", "", 0},
      {{"config", "-h"}, configHelp + "\n", "", 0},
  };
  for (const CommandLineCase &c : cases)
    expectRun(c);
}

TEST(CommandLineTest, ReportsEveryParseErrorWithUsageOnStandardError) {
  const CommandLineCase cases[] = {
      {{"upload"},
       "",
       "Error: Missing expected argument '--installer-path "
       "<installer-path>'\n" +
           uploadUsage,
       64},
      {{"upload", "-i", "a.pkg"},
       "",
       "Error: Missing expected argument '--metadata-path "
       "<metadata-path>'\n" +
           uploadUsage,
       64},
      {{"upload", "-i", "a.pkg", "-m", "b.plist", "extra"},
       "",
       "Error: Unexpected argument 'extra'\n" + uploadUsage,
       64},
      {{"config", "--usernme", "x"},
       "",
       "Error: Unexpected argument 'x'\n" + configUsage,
       64},
      {{"config", "--usernam"},
       "",
       "Error: Unknown option '--usernam'. Did you mean '--username'?\n" +
           configUsage,
       64},
      {{"config", "-x"}, "", "Error: Unknown option '-x'\n" + configUsage, 64},
      {{"config", "--signin=yes"},
       "",
       "Error: The option '--signin' does not take any value, but 'yes' was "
       "specified.\n" +
           configUsage,
       64},
      {{"config", "--username"},
       "",
       "Error: Missing value for '--username <username>'\n" + configUsage,
       64},
      {{"config", "a", "b"},
       "",
       "Error: 2 unexpected arguments: 'a', 'b'\n" + configUsage,
       64},
      {{"---x"}, "", "Error: Invalid option: ---x\n" + rootUsage, 64},
      {{"--nope", "upload"},
       "",
       "Error: Unknown option '--nope'\n" + rootUsage,
       64},
      {{"--versoin"},
       "",
       "Error: Unknown option '--versoin'. Did you mean '--version'?\n" +
           rootUsage,
       64},
      {{"-=x"}, "", "Error: Invalid option: -=x\n" + rootUsage, 64},
  };
  for (const CommandLineCase &c : cases)
    expectRun(c);
}

TEST(CommandLineTest, ConfigWithoutItsFlagsDoesNothing) {
  const CommandLineCase cases[] = {
      {{"config"}, "", "", 0},
      {{"config", "--group-id", "X"}, "", "", 0},
      {{"config", "-u", "bob", "--password=secret"}, "", "", 0},
  };
  for (const CommandLineCase &c : cases)
    expectRun(c);
}

} // namespace
