#ifndef KESTRUNECLI_TOOLS_MANPAGE_MODEL_H
#define KESTRUNECLI_TOOLS_MANPAGE_MODEL_H

#include <optional>
#include <string>
#include <vector>

namespace manpage {

/// One option or flag of a command, as its declaration gives it.
struct Option {
  /// "-i", "--installer-path": in the order help shows them.
  std::vector<std::string> names;
  /// The value's placeholder without brackets; absent for a flag.
  std::optional<std::string> valueName;
  std::string abstract;
  bool required = false;

  /// An option whose value is a path completes file names.
  bool takesPath() const {
    return valueName && valueName->ends_with("path");
  }
  /// The long name, else the first.
  const std::string &preferredName() const { return names.back(); }
};

/// A command with its own options (help last).
struct Command {
  std::string name;
  std::string abstract;
  std::vector<Option> options;
};

/// One row of the exit status table.
struct ExitStatus {
  int code;
  /// The failure's name in the code ("networkError"); empty for codes that
  /// are no failure of the tool's own.
  std::string caseName;
  /// The message with the payload's label written as <label>.
  std::string meaning;
};

/// The whole tool: the root, its subcommands and its exit codes.
struct Tool {
  Command root;
  std::vector<Command> subcommands;
  std::vector<ExitStatus> exitStatuses;
  /// The code of a failure that reaches the argument parser unreported.
  int otherFailureCode = 0;
  /// Where the account and the version are read from.
  std::string fileStoreUnderDataHome;
  std::string fileStoreUnderHome;
  std::string accountService;
  std::string bundlePlist;
};

/// The tool as its declarations and error catalogue describe it.
Tool describeTool();

/// \p text on one line: runs of white space become one blank, pictographs
/// (emoji and dingbats) are left out, and the ends are trimmed.
std::string plainText(const std::string &text);

/// The manual page, dated \p date (YYYY-MM-DD).
std::string manualPage(const Tool &tool, const std::string &version,
                       const std::string &date);
std::string bashCompletion(const Tool &tool);
std::string zshCompletion(const Tool &tool);
std::string fishCompletion(const Tool &tool);

} // namespace manpage

#endif
