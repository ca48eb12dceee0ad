#ifndef KESTRUNECLI_TESTS_SUPPORT_PROCESSRUNNER_H
#define KESTRUNECLI_TESTS_SUPPORT_PROCESSRUNNER_H

#include <chrono>
#include <cstdio>
#include <filesystem>
#include <functional>
#include <map>
#include <optional>
#include <string>
#include <sys/types.h>
#include <thread>
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

/// A program that runs (directly, no shell) while the test reads its
/// standard output line by line and sends it signals. Its standard error is
/// kept aside; its standard input is fed by a thread of its own. Killed with
/// SIGKILL when still running at the end. Throws std::runtime_error when the
/// program can't be started.
class ChildProcess {
public:
  explicit ChildProcess(const std::filesystem::path &program,
                        const ProcessOptions &options = {});
  ~ChildProcess();
  ChildProcess(const ChildProcess &) = delete;
  ChildProcess &operator=(const ChildProcess &) = delete;

  /// One line of output without its line break, or std::nullopt at the end
  /// of output or when \p timeout passes first.
  std::optional<std::string> readLine(std::chrono::milliseconds timeout);
  void sendSignal(int signal);
  /// Waits for the end: the exit code, or 128 + the signal that ended it.
  int wait();
  /// Reads the output not read yet until the child closes it (killing the
  /// child when \p timeout passes first), waits for the end, and tells all.
  ProcessResult
  finish(std::chrono::milliseconds timeout = std::chrono::minutes(2));

private:
  bool readMore(std::chrono::steady_clock::time_point deadline);

  pid_t child = -1;
  int output = -1;
  std::FILE *errors = nullptr;
  std::thread feeder;
  std::string buffered;
  bool ended = false;
  std::optional<int> status;
};

/// Runs \p program to its end and collects its output and exit status.
ProcessResult runProcess(const std::filesystem::path &program,
                         const ProcessOptions &options = {});

/// The full path of \p program found on PATH, or std::nullopt.
std::optional<std::filesystem::path> findProgram(const std::string &program);

/// Runs \p body in a forked child without root's privileges (as nobody when
/// the test runs as root) and returns the text that \p body returned.
std::string runUnprivileged(const std::function<std::string()> &body);

/// The user that runUnprivileged runs as (in the group of the same number).
uid_t unprivilegedUser();

} // namespace testsupport

#endif
