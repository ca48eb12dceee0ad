#ifndef KESTRUNECLI_TOOLS_MOCKCONSOLE_COMMANDLINE_H
#define KESTRUNECLI_TOOLS_MOCKCONSOLE_COMMANDLINE_H

#include "MockConsole/MockConsole.h"

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace mockconsole {

/// What the options of kestrune-mock-console ask for.
struct CommandLine {
  /// One --answer or --drop.
  struct ScriptedCall {
    Route route = Route::Other;
    /// The call it applies to; absent for every call.
    std::optional<int> call;
    Answer answer;
  };

  Options options;
  std::vector<Account> accounts;
  std::vector<std::pair<std::string, std::int64_t>> groups;
  std::vector<ScriptedCall> scriptedCalls;
  bool showHelp = false;

  /// Registers the accounts, groups and scripted answers with \p console.
  void applyTo(MockConsole &console) const;
};

/// Reads the options \p arguments (without the program name). Throws
/// std::invalid_argument with a message that names the bad option.
CommandLine parseCommandLine(const std::vector<std::string> &arguments);

/// The text of --help.
std::string_view getHelpText();

} // namespace mockconsole

#endif
