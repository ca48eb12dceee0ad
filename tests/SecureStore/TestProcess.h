#ifndef KESTRUNECLI_TESTS_SECURESTORE_TESTPROCESS_H
#define KESTRUNECLI_TESTS_SECURESTORE_TESTPROCESS_H

#include <chrono>
#include <functional>
#include <map>
#include <optional>
#include <string>
#include <sys/types.h>
#include <vector>

namespace testprocess {

/// Environment changes for a child: a value sets the variable, std::nullopt
/// removes it.
using Environment = std::map<std::string, std::optional<std::string>>;

/// The full path of \p program found on PATH, or std::nullopt.
std::optional<std::string> findProgram(const std::string &program);

/// A child process whose standard output the test reads.
class ChildProcess {
public:
  /// Starts \p arguments[0] with the rest as arguments; \p input goes to its
  /// standard input, which is then closed. With \p quiet its standard error
  /// goes nowhere, else to the test's.
  ChildProcess(const std::vector<std::string> &arguments,
               const Environment &environment = {},
               const std::string &input = {}, bool quiet = false);
  ~ChildProcess();
  ChildProcess(const ChildProcess &) = delete;
  ChildProcess &operator=(const ChildProcess &) = delete;

  pid_t getPid() const noexcept { return pid; }
  /// Reads one line of output (without its line break), or std::nullopt at
  /// the end of output or when \p timeout passes first.
  std::optional<std::string> readLine(std::chrono::milliseconds timeout);
  /// Reads everything the child writes until it closes its output.
  std::string readAll();
  void sendSignal(int signal);
  /// Waits for the end: the exit code, or 128 + the signal that ended it.
  int wait();

private:
  pid_t pid = -1;
  int output = -1;
  std::string buffered;
  std::optional<int> status;
};

/// Runs a program to its end: its exit status (as ChildProcess::wait) and
/// its standard output.
std::pair<int, std::string>
runProgram(const std::vector<std::string> &arguments,
           const Environment &environment = {}, const std::string &input = {},
           bool quiet = false);

/// Runs \p body in a forked child without root's privileges (as nobody when
/// the test runs as root) and returns the text that \p body returned.
std::string runUnprivileged(const std::function<std::string()> &body);

/// The user and group that runUnprivileged runs as.
uid_t unprivilegedUser();
gid_t unprivilegedGroup();

} // namespace testprocess

#endif
