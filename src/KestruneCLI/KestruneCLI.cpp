#include "KestruneCLI/KestruneCLI.h"

#include "KestruneCLI/Helpers/CliError.h"
#include "Platform/StandardOutput.h"

#include <cstdlib>

namespace kestrune {

using namespace argparse;

CommandConfiguration KestruneCLI::configuration() {
  return {
      .commandName = "kestrunecli",
      .abstract = "Ombrix Varnholt Kestrune Command Line Interface 💡🛠",
      .subcommands = {&commandType<Upload>(), &commandType<Config>()},
  };
}

Arguments<KestruneCLI> KestruneCLI::arguments() {
  return {
      flag(&KestruneCLI::version, "version")
          .name(shortAndLong)
          .help("Show the version of Kestrune CLI."),
  };
}

CommandConfiguration KestruneCLI::Config::configuration() {
  return {
      .abstract = "\n To sign in, enter the hostname and group ID. You will be "
                  "prompted to enter the username, password, and API key in "
                  "subsequent steps. \n",
  };
}

Arguments<KestruneCLI::Config> KestruneCLI::Config::arguments() {
  return {
      flag(&Config::signin, "signin")
          .name({longName, customShort("n")})
          .help("Sign in with username, password, API key, hostname, and "
                "groupId"),
      flag(&Config::signout, "signout")
          .name({longName, customShort("t")})
          .help("Sign out current account, if already logged in"),
      flag(&Config::list, "list")
          .name(shortAndLong)
          .help("List the current account info"),
      option(&Config::username, "username")
          .name(shortAndLong)
          .help("Username of Varnholt UEM admin"),
      option(&Config::password, "password")
          .name(shortAndLong)
          .secret()
          .help("Password"),
      option(&Config::apiKey, "apiKey")
          .name({longName, customShort("k")})
          .secret()
          .help("API Key"),
      option(&Config::hostname, "hostname")
          .name({longName, customShort("o")})
          .help("Hostname of UEM API Server (e.g. https://uem.example.com)"),
      option(&Config::groupId, "groupId")
          .name(shortAndLong)
          .help("Organization group ID"),
  };
}

CommandConfiguration KestruneCLI::Upload::configuration() {
  return {
      .abstract = "\n Pass a package installer, a metadata file, and an icon "
                  "file (optional) as arguments and they will be uploaded to "
                  "Varnholt.\n",
  };
}

Arguments<KestruneCLI::Upload> KestruneCLI::Upload::arguments() {
  return {
      option(&Upload::installerPath, "installerPath")
          .name(shortAndLong)
          .help("(Required) Path to an installer. Valid file types: .pkg, "
                ".dmg, .app, .mpkg"),
      option(&Upload::metadataPath, "metadataPath")
          .name(shortAndLong)
          .help("(Required) Path to a metadata file with .plist as file type"),
      option(&Upload::iconPath, "iconPath")
          .name({longName, customShort("l")})
          .help("(Optional) Path to an icon file"),
      option(&Upload::groupId, "groupId")
          .name(shortAndLong)
          .help("(Optional) Change organization group ID for this upload"),
  };
}

void KestruneCLI::run() { run(TivrelOSXUtils()); }

void KestruneCLI::run(const TivrelOSXUtils &utils) {
  if (!version) {
    platform::printLine("\n" + helpMessage());
    return;
  }
  if (std::optional<std::string> found = utils.getAdminToolVersion()) {
    platform::printLine("\nVersion: " + *found + "\n");
    return;
  }
  // The one exit that does not go through DarwinWrapper.
  const CliError error = CliError::unableToGetVersion();
  platform::printLine(error.errorDescription());
  std::exit(error.code());
}

} // namespace kestrune
