#include "EndToEnd/Fixture.h"
#include "Support/PseudoTerminal.h"

// Help texts and command-line errors, compared byte for byte: at 80 columns
// with standard output on a pipe, and at 60 columns on a terminal.

namespace {

using e2e::Args;

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

const std::string rootHelp60 =
    R"TXT(OVERVIEW: Ombrix Varnholt Kestrune Command Line Interface 💡🛠

USAGE: kestrunecli [--version] <subcommand>

OPTIONS:
  -v, --version           Show the version of Kestrune CLI.
  -h, --help              Show help information.

SUBCOMMANDS:
  upload                    Pass a package installer, a
                          metadata file, and an icon file
                          (optional) as arguments and they
                          will be uploaded to Varnholt.

  config                    To sign in, enter the hostname
                          and group ID. You will be
                          prompted to enter the username,
                          password, and API key in
                          subsequent steps. 


  See 'kestrunecli help <subcommand>' for detailed help.
)TXT";
const std::string uploadHelp60 = R"TXT(OVERVIEW: 
 Pass a package installer, a metadata file, and an icon
file (optional) as arguments and they will be uploaded to
Varnholt.


USAGE: kestrunecli upload --installer-path <installer-path> --metadata-path <metadata-path> [--icon-path <icon-path>] [--group-id <group-id>]

OPTIONS:
  -v, --version           Show the version of Kestrune CLI.
  -i, --installer-path <installer-path>
                          (Required) Path to an installer.
                          Valid file types: .pkg, .dmg,
                          .app, .mpkg
  -m, --metadata-path <metadata-path>
                          (Required) Path to a metadata
                          file with .plist as file type
  -l, --icon-path <icon-path>
                          (Optional) Path to an icon file
  -g, --group-id <group-id>
                          (Optional) Change organization
                          group ID for this upload
  -h, --help              Show help information.

)TXT";
const std::string configHelp60 = R"TXT(OVERVIEW: 
 To sign in, enter the hostname and group ID. You will be
prompted to enter the username, password, and API key in
subsequent steps. 


USAGE: kestrunecli config [--signin] [--signout] [--list] [--username <username>] [--password <password>] [--api-key <api-key>] [--hostname <hostname>] [--group-id <group-id>]

OPTIONS:
  -v, --version           Show the version of Kestrune CLI.
  -n, --signin            Sign in with username, password,
                          API key, hostname, and groupId
  -t, --signout           Sign out current account, if
                          already logged in
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

struct Case {
  Args arguments;
  std::string out, err;
  int code;
};

// A parse error: on standard error, with the usage; exit 64.
Case refused(const Args &arguments, const std::string &message,
             const std::string &usage) {
  return {arguments, "", "Error: " + message + "\n" + usage, 64};
}

// clang-format off
const Case cases[] = {
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
    // config without one of its three flags does nothing.
    {{"config"}, "", "", 0},
    {{"config", "--group-id", "X"}, "", "", 0},
    {{"config", "-u", "bob", "--password=secret"}, "", "", 0},
    refused({"upload"}, "Missing expected argument '--installer-path <installer-path>'", uploadUsage),
    refused({"upload", "-i", "a.pkg"}, "Missing expected argument '--metadata-path <metadata-path>'", uploadUsage),
    refused({"upload", "-m", "b.plist", "-i"}, "Missing value for '-i <installer-path>'", uploadUsage),
    refused({"upload", "-i", "a", "-m", "b", "extra"}, "Unexpected argument 'extra'", uploadUsage),
    refused({"config", "--usernme", "x"}, "Unexpected argument 'x'", configUsage),
    refused({"config", "--usernam"}, "Unknown option '--usernam'. Did you mean '--username'?", configUsage),
    // Suggestions reach an edit distance of 3, and no further.
    refused({"config", "--usernamexyz"}, "Unknown option '--usernamexyz'. Did you mean '--username'?", configUsage),
    refused({"config", "--usernamewxyz"}, "Unknown option '--usernamewxyz'", configUsage),
    // Neither help names nor short names are suggested.
    refused({"config", "--hel"}, "Unknown option '--hel'", configUsage),
    refused({"config", "-x"}, "Unknown option '-x'", configUsage),
    refused({"config", "--signin=yes"}, "The option '--signin' does not take any value, but 'yes' was specified.", configUsage),
    refused({"config", "--username"}, "Missing value for '--username <username>'", configUsage),
    refused({"config", "a", "b"}, "2 unexpected arguments: 'a', 'b'", configUsage),
    refused({"---x"}, "Invalid option: ---x", rootUsage),
    refused({"--nope", "upload"}, "Unknown option '--nope'", rootUsage),
    refused({"--versoin"}, "Unknown option '--versoin'. Did you mean '--version'?", rootUsage),
    refused({"-=x"}, "Invalid option: -=x", rootUsage),
};
// clang-format on

TEST(CommandLineTest, PrintsHelpOrTheParseErrorWithItsExitCode) {
  e2e::Scene scene;
  for (const Case &c : cases) {
    SCOPED_TRACE(testing::PrintToString(c.arguments));
    e2e::Run run = scene.run(c.arguments);
    EXPECT_EQ(run.out, c.out);
    EXPECT_EQ(run.err, c.err);
    EXPECT_EQ(run.code, c.code);
  }
  EXPECT_EQ(scene.requests(), Args{});
  EXPECT_EQ(scene.stored(), e2e::Items{});
}

// On a terminal 60 columns wide, help wraps there; usage lines never do.
TEST(CommandLineTest, WrapsHelpToTheTerminalsWidth) {
  const std::pair<Args, std::string> cases[] = {
      {{"--help"}, rootHelp60},
      {{"help", "upload"}, uploadHelp60},
      {{"config", "--help"}, configHelp60},
      {{"config", "-x"}, "Error: Unknown option '-x'\n" + configUsage},
  };
  e2e::Scene scene;
  for (const auto &[arguments, shown] : cases) {
    SCOPED_TRACE(testing::PrintToString(arguments));
    testsupport::PseudoTerminal terminal(scene.job(arguments), 60);
    terminal.waitForEnd();
    std::string expected = shown;
    e2e::replaceAll(expected, "\n", "\r\n");
    EXPECT_EQ(terminal.getTranscript(), expected);
  }
}

} // namespace
