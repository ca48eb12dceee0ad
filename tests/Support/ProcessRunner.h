#ifndef KESTRUNECLI_TESTS_SUPPORT_PROCESSRUNNER_H
#define KESTRUNECLI_TESTS_SUPPORT_PROCESSRUNNER_H

#include <chrono>
#include <filesystem>
#include <map>
#include <optional>
#include <string>
#include <vector>

namespace testsupport {

/// How to run a program: its arguments (without the program itself), the
/// environment changes, the bytes on its standard input, and a time limit.
struct ProcessOptions {
  std::vector<std::string> arguments;
  /// Variables to set (a value) or to remove (std::nullopt); all others are
  /// inherited.
  std::map<std::string, std::optional<std::string>> environment;
  /// Written to the program's standard input, which is then closed.
  std::string standardInput;
  /// The program's working directory; the caller's when absent.
  std::optional<std::filesystem::path> workingDirectory;
  /// The program is killed when it runs longer.
  std::chrono::milliseconds timeout = std::chrono::seconds(60);
};

/// What a run of a program left.
struct ProcessResult {
  std::string standardOutput;
  std::string standardError;
  /// The exit status; -1 when the program ended by a signal.
  int exitCode = -1;
  /// The signal that ended the program, or 0.
  int signal = 0;
  bool timedOut = false;
};

/// Runs \p program directly (no shell) and collects its output and exit
/// status. Throws std::runtime_error when the program can't be started.
ProcessResult runProcess(const std::filesystem::path &program,
                         const ProcessOptions &options = {});

} // namespace testsupport

#endif
