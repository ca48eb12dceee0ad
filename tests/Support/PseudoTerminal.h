#ifndef KESTRUNECLI_TESTS_SUPPORT_PSEUDOTERMINAL_H
#define KESTRUNECLI_TESTS_SUPPORT_PSEUDOTERMINAL_H

#include <chrono>
#include <functional>
#include <optional>
#include <ostream>
#include <string>
#include <string_view>
#include <vector>

#include <sys/types.h>

namespace testsupport {

/// How a process ended: with an exit code, or killed by a signal.
struct ProcessEnd {
  bool exited = false;
  int exitCode = 0;
  int signal = 0;

  static ProcessEnd exitedWith(int code) { return {true, code, 0}; }
  static ProcessEnd killedBy(int signal) { return {false, 0, signal}; }

  friend bool operator==(const ProcessEnd &, const ProcessEnd &) = default;
  friend std::ostream &operator<<(std::ostream &out, const ProcessEnd &end);
};

/// A job that runs with a fresh pseudo-terminal as its controlling terminal,
/// the way a user's shell runs a command: a small session leader stands in for
/// the shell, and the job runs in a child of it, in a process group of its own
/// that is the terminal's foreground group, with standard input, output and
/// error on the terminal (80 columns, 24 lines, the terminal's default
/// settings, echo on). So Ctrl-C typed on the terminal interrupts the job,
/// Ctrl-Z stops it for real, and SIGCONT lets it go on.
///
/// The test plays the user: it waits for text to appear, types, and reads the
/// transcript of everything the terminal showed. The terminal translates line
/// breaks on output, so "\n" written by the job shows as "\r\n".
///
/// The job inherits every open descriptor of the test process, so a pipe made
/// beforehand can carry results back without passing through the terminal.
class PseudoTerminal {
public:
  static constexpr std::chrono::milliseconds defaultTimeout{10000};

  /// Runs \p job in the child; its return value is the job's exit code, and
  /// an exception that escapes it ends the job with code 125.
  explicit PseudoTerminal(std::function<int()> job);

  /// Runs the program \p argv[0] (looked up in PATH) with arguments
  /// \p argv[1...], and \p environment ("NAME=value" entries) added to the
  /// test process's environment. A program that cannot be started ends the
  /// job with code 127.
  PseudoTerminal(const std::vector<std::string> &argv,
                 const std::vector<std::string> &environment = {});

  /// Kills whatever still runs and closes the terminal.
  ~PseudoTerminal();

  PseudoTerminal(const PseudoTerminal &) = delete;
  PseudoTerminal &operator=(const PseudoTerminal &) = delete;

  /// Reads what the terminal shows until \p text appears after the point
  /// reached by the previous successful wait; that point then moves past the
  /// text, so waiting twice for the same prompt waits for its second showing.
  /// False when the time runs out or the terminal closes first.
  bool waitFor(std::string_view text,
               std::chrono::milliseconds timeout = defaultTimeout);

  /// Types \p bytes on the keyboard ("\n" is the Return key, "\x03" Ctrl-C,
  /// "\x1a" Ctrl-Z, "\x04" Ctrl-D).
  void type(std::string_view bytes);

  /// Sends \p signal to the job's process.
  void sendSignal(int signal);

  /// Whether the terminal currently echoes what is typed.
  bool isEchoOn() const;

  /// Waits until the job's process is stopped (as by Ctrl-Z). False on
  /// timeout or when it ended instead.
  bool waitUntilStopped(std::chrono::milliseconds timeout = defaultTimeout);

  /// Waits for the job to end, reading the terminal meanwhile, and returns
  /// how it ended; std::nullopt on timeout.
  std::optional<ProcessEnd>
  waitForEnd(std::chrono::milliseconds timeout = defaultTimeout);

  /// Everything the terminal has shown so far.
  const std::string &getTranscript();

  /// The process id of the job.
  pid_t getJobPid() const noexcept { return jobPid; }

private:
  void start(const std::function<int()> &job);
  /// Reads what is there, waiting up to \p timeout for the first bytes.
  /// False once the terminal is closed on the job's side.
  bool readAvailable(std::chrono::milliseconds timeout);

  int masterFd = -1;
  pid_t leaderPid = -1;
  pid_t jobPid = -1;
  std::optional<ProcessEnd> end;
  std::string transcript;
  std::size_t consumed = 0;
};

/// A pipe that carries one optional text from a job back to the test, away
/// from the terminal. Make it before the PseudoTerminal.
class ResultPipe {
public:
  ResultPipe();
  ~ResultPipe();
  ResultPipe(const ResultPipe &) = delete;
  ResultPipe &operator=(const ResultPipe &) = delete;

  /// In the job: sends "some:" and the text, or "none" when it is absent.
  void send(const std::optional<std::string> &value) const;
  /// In the test, once the job has ended: everything the job sent, empty when
  /// it sent nothing.
  std::string receive();

private:
  int readFd = -1;
  int writeFd = -1;
};

} // namespace testsupport

#endif
