#ifndef KESTRUNECLI_ARGUMENTPARSER_ARGUMENTHELP_H
#define KESTRUNECLI_ARGUMENTPARSER_ARGUMENTHELP_H

#include <optional>
#include <string>
#include <utility>

namespace argparse {

/// The help of one declared argument. A string literal gives the abstract.
struct ArgumentHelp {
  std::string abstract;
  std::string discussion;
  /// The placeholder of the value in help ("<name>"); derived when absent.
  std::optional<std::string> valueName;
  bool shouldDisplay = true;

  ArgumentHelp() = default;
  ArgumentHelp(const char *abstract) : abstract(abstract) {}
  ArgumentHelp(std::string abstract, std::string discussion = {},
               std::optional<std::string> valueName = {},
               bool shouldDisplay = true)
      : abstract(std::move(abstract)), discussion(std::move(discussion)),
        valueName(std::move(valueName)), shouldDisplay(shouldDisplay) {}

  /// Help that keeps the argument out of usage and help text.
  static ArgumentHelp hidden() {
    ArgumentHelp help;
    help.shouldDisplay = false;
    return help;
  }

  friend bool operator==(const ArgumentHelp &, const ArgumentHelp &) = default;
};

} // namespace argparse

#endif
