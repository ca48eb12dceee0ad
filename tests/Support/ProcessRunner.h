#ifndef KESTRUNECLI_TESTS_SUPPORT_PROCESSRUNNER_H
#define KESTRUNECLI_TESTS_SUPPORT_PROCESSRUNNER_H

#include <chrono>
#include <filesystem>
#include <functional>
#include <map>
#include <optional>
#include <string>
#include <sys/types.h>
#include <vector>

namespace testsupport {

/// Environment changes for a child: a value sets the variable, std::nullopt
/// removes it; all others are inherited.
using Environment = std::map<std::string, std::optional<std::string>>;

/// How to run a program: its arguments (without the program itself), the
/// environment changes, the bytes on its standard input, and a time limit.
struct ProcessOptions {
  std::vector<std::string> arguments{};
  Environment environment{};
  /// Written to the program's standard input, which is then closed.
  std::string standardInput{};
  /// The program's working directory; the caller's when absent.
  std::optional<std::filesystem::path> workingDirectory{};
  /// runProcess kills the program when it runs longer.
  std::chrono::milliseconds timeout = std::chrono::seconds(60);
};

/// What a run of a program left.
struct ProcessResult {
  std::string standardOutput{};
  std::string standardError{};
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

/// The full path of \p program found on PATH, or std::nullopt.
std::optional<std::filesystem::path> findProgram(const std::string &program);

/// A program that runs while the test reads its standard output line by
/// line and sends it signals. Its standard error goes to the test's, or
/// nowhere when \p quiet. Killed with SIGKILL when still running at the end.
class ChildProcess {
public:
  explicit ChildProcess(const std::filesystem::path &program,
                        const ProcessOptions &options = {}, bool quiet = false);
  ~ChildProcess();
  ChildProcess(const ChildProcess &) = delete;
  ChildProcess &operator=(const ChildProcess &) = delete;

  pid_t pid() const noexcept { return child; }
  /// One line of output without its line break, or std::nullopt at the end
  /// of output or when \p timeout passes first.
  std::optional<std::string> readLine(std::chrono::milliseconds timeout);
  /// Everything the child writes until it closes its output.
  std::string readAll();
  void sendSignal(int signal);
  /// Waits for the end: the exit code, or 128 + the signal that ended it.
  int wait();

private:
  pid_t child = -1;
  int output = -1;
  std::string buffered;
  std::optional<int> status;
};

/// Runs \p body in a forked child without root's privileges (as nobody when
/// the test runs as root) and returns the text that \p body returned.
std::string runUnprivileged(const std::function<std::string()> &body);

/// The user and group that runUnprivileged runs as.
uid_t unprivilegedUser();
gid_t unprivilegedGroup();

} // namespace testsupport

#endif
