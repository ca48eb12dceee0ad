#ifndef KESTRUNECLI_KESTRUNECLI_H
#define KESTRUNECLI_KESTRUNECLI_H

#include "ArgumentParser/ArgumentParser.h"
#include "KestruneCLI/Helpers/TivrelOSXUtils.h"

#include <optional>
#include <string>

namespace kestrune {

/// The root command `kestrunecli`: prints its help, or with --version the
/// version of the installed graphical application.
struct KestruneCLI : argparse::ParsableCommand<KestruneCLI> {
  static constexpr std::string_view typeName = "KestruneCLI";
  static argparse::CommandConfiguration configuration();
  static argparse::Arguments<KestruneCLI> arguments();

  bool version = false;

  void run() override;
  /// run() with \p utils as the source of the version.
  void run(const TivrelOSXUtils &utils);

  struct Config;
  struct Upload;
};

/// `kestrunecli config`: sign in, sign out and list the account.
struct KestruneCLI::Config : argparse::ParsableCommand<Config> {
  static constexpr std::string_view typeName = "Config";
  static argparse::CommandConfiguration configuration();
  static argparse::Arguments<Config> arguments();

  bool signin = false;
  bool signout = false;
  bool list = false;
  std::optional<std::string> username;
  std::optional<std::string> password;
  std::optional<std::string> apiKey;
  std::optional<std::string> hostname;
  std::optional<std::string> groupId;

  void run() override;
};

/// `kestrunecli upload`: publish an installer, its metadata and an icon.
struct KestruneCLI::Upload : argparse::ParsableCommand<Upload> {
  static constexpr std::string_view typeName = "Upload";
  static argparse::CommandConfiguration configuration();
  static argparse::Arguments<Upload> arguments();

  std::string installerPath;
  std::string metadataPath;
  std::optional<std::string> iconPath;
  std::optional<std::string> groupId;

  void run() override;
};

} // namespace kestrune

#endif
