#ifndef KESTRUNECLI_TESTS_SUPPORT_PSEUDOTERMINAL_H
#define KESTRUNECLI_TESTS_SUPPORT_PSEUDOTERMINAL_H

#include <chrono>
#include <functional>
#include <optional>
#include <string>

namespace testsupport {

/// How a process ended: with an exit code, or killed by a signal.
struct ProcessEnd {
  bool exited = false;
  int exitCode = 0;
  int signal = 0;

  static ProcessEnd exitedWith(int code) { return {true, code, 0}; }
  static ProcessEnd killedBy(int signal) { return {false, 0, signal}; }
  friend bool operator==(const ProcessEnd &, const ProcessEnd &) = default;
};

/// A job run the way a shell runs a command on a fresh pseudo-terminal (its
/// controlling terminal, \p columns wide, 24 lines, echo on): a session
/// leader stands in for the shell, and the job runs in a child of it, in a
/// process group of its own that is the terminal's foreground group, with
/// standard input, output and error on the terminal. So Ctrl-C typed on the
/// terminal interrupts the job, Ctrl-Z stops it, and SIGCONT lets it go on.
/// A job started in the background (as with "&", or under timeout) stays
/// out of the foreground: reading the terminal or changing its settings
/// stops it.
///
/// The test plays the user: it waits for text, types, and reads the
/// transcript of what the terminal showed ("\n" written shows as "\r\n").
/// The job inherits the test's open descriptors, so a pipe made beforehand
/// can carry results back past the terminal.
class PseudoTerminal {
public:
  using Timeout = std::chrono::milliseconds;

  enum class Group { foreground, background };

  /// Runs \p job in the child; its return value is the job's exit code.
  explicit PseudoTerminal(std::function<int()> job, unsigned short columns = 80,
                          Group group = Group::foreground);
  /// Kills whatever still runs and closes the terminal.
  ~PseudoTerminal();
  PseudoTerminal(const PseudoTerminal &) = delete;
  PseudoTerminal &operator=(const PseudoTerminal &) = delete;

  /// Reads the terminal until \p text shows after the end of the text found
  /// by the previous successful wait. False on time-out, or when the
  /// terminal closes first.
  bool waitFor(std::string_view text, Timeout timeout = Timeout(10000));
  /// Types \p bytes ("\n" Return, "\x03" Ctrl-C, "\x1a" Ctrl-Z, "\x04"
  /// Ctrl-D).
  void type(std::string_view bytes);
  void sendSignal(int signal);
  /// Whether the terminal echoes what is typed.
  bool isEchoOn() const;
  /// Waits until the job is stopped (as by Ctrl-Z); false on time-out or
  /// when it ended instead.
  bool waitUntilStopped(Timeout timeout = Timeout(10000));
  /// Waits for the job to end, reading the terminal meanwhile;
  /// std::nullopt on time-out.
  std::optional<ProcessEnd> waitForEnd(Timeout timeout = Timeout(10000));
  /// Everything the terminal has shown so far.
  const std::string &getTranscript();

private:
  /// Reads what is there, waiting up to \p timeout for the first bytes.
  /// False once the job's side of the terminal is closed.
  bool readAvailable(Timeout timeout);

  int masterFd = -1;
  int newsFd = -1;
  int leaderPid = -1;
  int jobPid = -1;
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
  /// In the test, once the job has ended: all that the job sent.
  std::string receive();

private:
  int fds[2] = {-1, -1};
};

} // namespace testsupport

#endif
