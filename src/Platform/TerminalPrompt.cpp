#include "Platform/TerminalPrompt.h"

#include <array>
#include <cassert>
#include <cerrno>
#include <csignal>
#include <cstdio>

#include <fcntl.h>
#include <termios.h>
#include <unistd.h>

namespace platform {
namespace {

// Reads one line from \p fd a byte at a time: a terminal in canonical mode
// hands out whole lines anyway, and from a pipe this never takes more than
// the line, so the rest stays for the next reader.
std::optional<std::string> readLineFrom(int fd) {
  std::string line;
  bool readAnything = false;
  bool sawLineBreak = false;
  bool tooLong = false;
  for (;;) {
    char byte = 0;
    ssize_t count = ::read(fd, &byte, 1);
    if (count < 0) {
      if (errno == EINTR)
        continue;
      return std::nullopt;
    }
    if (count == 0)
      break;
    readAnything = true;
    if (byte == '\n') {
      sawLineBreak = true;
      break;
    }
    if (line.size() < maxPromptLineLength)
      line.push_back(byte);
    else
      tooLong = true;
  }
  if (!readAnything || tooLong)
    return std::nullopt;
  if (sawLineBreak && !line.empty() && line.back() == '\r')
    line.pop_back();
  return line;
}

void writeAll(int fd, std::string_view bytes) {
  while (!bytes.empty()) {
    ssize_t count = ::write(fd, bytes.data(), bytes.size());
    if (count < 0 && errno == EINTR)
      continue;
    if (count <= 0)
      return;
    bytes.remove_prefix(static_cast<std::size_t>(count));
  }
}

// What the signal handlers need while a prompt waits. Only one prompt runs at
// a time, and the handlers may only touch plain data and call functions that
// are safe in a handler (tcsetattr, tcgetpgrp, write, sigaction, raise).
struct EchoState {
  int fd = -1;
  int promptFd = -1;
  termios saved{};
  bool ownsStopSignal = false;
  const char *prompt = nullptr;
  std::size_t promptSize = 0;
  volatile std::sig_atomic_t echoIsOff = 0;
  volatile std::sig_atomic_t stoppedWhileOff = 0;
};
EchoState echoState;

constexpr std::array terminatingSignals = {SIGINT, SIGTERM, SIGHUP, SIGQUIT};

void turnEchoOff() {
  termios quiet = echoState.saved;
  quiet.c_lflag &= ~static_cast<tcflag_t>(ECHO | ECHONL);
  // Marked first: a handler that restores settings that were never changed
  // does no harm, whereas one that misses a change leaves echo off.
  echoState.echoIsOff = 1;
  if (::tcsetattr(echoState.fd, TCSAFLUSH, &quiet) != 0)
    echoState.echoIsOff = 0;
}

void restoreEcho() {
  if (!echoState.echoIsOff)
    return;
  ::tcsetattr(echoState.fd, TCSAFLUSH, &echoState.saved);
  echoState.echoIsOff = 0;
}

extern "C" void onTerminatingSignal(int signalNumber) {
  int savedErrno = errno;
  restoreEcho();
  // The signal is blocked while its handler runs, so this one stays pending
  // and ends the process with the default action as soon as we return.
  std::signal(signalNumber, SIG_DFL);
  std::raise(signalNumber);
  errno = savedErrno;
}

extern "C" void onStopSignal(int) {
  int savedErrno = errno;
  if (echoState.echoIsOff) {
    restoreEcho();
    echoState.stoppedWhileOff = 1;
  }
  // Pending until we return; then the process stops with echo on.
  std::signal(SIGTSTP, SIG_DFL);
  std::raise(SIGTSTP);
  errno = savedErrno;
}

void installStopHandler() {
  struct sigaction action {};
  action.sa_handler = onStopSignal;
  action.sa_flags = SA_RESTART;
  sigemptyset(&action.sa_mask);
  ::sigaction(SIGTSTP, &action, nullptr);
}

extern "C" void onContinue(int) {
  int savedErrno = errno;
  if (echoState.ownsStopSignal)
    installStopHandler();
  // Continued in the background, touching the terminal would stop us again;
  // the read does that anyway (SIGTTIN), and the continue that brings us to
  // the foreground lands here once more.
  if (echoState.stoppedWhileOff && ::tcgetpgrp(echoState.fd) == ::getpgrp()) {
    echoState.stoppedWhileOff = 0;
    turnEchoOff();
    writeAll(echoState.promptFd,
             std::string_view(echoState.prompt, echoState.promptSize));
  }
  errno = savedErrno;
}

sigset_t handledSignals() {
  sigset_t set;
  sigemptyset(&set);
  for (int signalNumber : terminatingSignals)
    sigaddset(&set, signalNumber);
  sigaddset(&set, SIGTSTP);
  sigaddset(&set, SIGCONT);
  return set;
}

// Turns echo off on a terminal for the lifetime of the object, with the
// handlers that give the settings back on every way out. Signals are blocked
// while settings and handlers change together, so no handler ever sees half
// of a change.
class EchoOff {
public:
  EchoOff(int fd, int promptFd, std::string_view prompt) {
    assert(echoState.fd < 0 && "one prompt at a time");
    termios current{};
    if (::tcgetattr(fd, &current) != 0)
      return;
    sigset_t blocked = handledSignals();
    ::pthread_sigmask(SIG_BLOCK, &blocked, &previousMask);
    echoState.fd = fd;
    echoState.promptFd = promptFd;
    echoState.saved = current;
    echoState.prompt = prompt.data();
    echoState.promptSize = prompt.size();
    echoState.stoppedWhileOff = 0;
    for (std::size_t i = 0; i < terminatingSignals.size(); ++i)
      installIfDefault(terminatingSignals[i], onTerminatingSignal,
                       previousActions[i]);
    installIfDefault(SIGTSTP, onStopSignal, previousStop);
    echoState.ownsStopSignal = previousStop.replaced;
    installIfDefault(SIGCONT, onContinue, previousContinue);
    turnEchoOff();
    active = true;
    ::pthread_sigmask(SIG_SETMASK, &previousMask, nullptr);
  }

  EchoOff(const EchoOff &) = delete;
  EchoOff &operator=(const EchoOff &) = delete;

  ~EchoOff() {
    if (!active)
      return;
    sigset_t blocked = handledSignals();
    sigset_t unused;
    ::pthread_sigmask(SIG_BLOCK, &blocked, &unused);
    restoreEcho();
    for (std::size_t i = 0; i < terminatingSignals.size(); ++i)
      restoreAction(terminatingSignals[i], previousActions[i]);
    restoreAction(SIGTSTP, previousStop);
    restoreAction(SIGCONT, previousContinue);
    echoState = EchoState{};
    // Anything that arrived meanwhile is delivered now, to the handlers the
    // process had before.
    ::pthread_sigmask(SIG_SETMASK, &previousMask, nullptr);
  }

  /// Whether echo was turned off, so the typed line break was not shown.
  bool isActive() const noexcept { return active; }

private:
  struct Previous {
    struct sigaction action {};
    bool replaced = false;
  };

  static void installIfDefault(int signalNumber, void (*handler)(int),
                               Previous &previous) {
    if (::sigaction(signalNumber, nullptr, &previous.action) != 0)
      return;
    // An ignored signal cannot disturb the read, and a handler of the
    // program's own takes care of the terminal itself.
    if (previous.action.sa_handler != SIG_DFL ||
        (previous.action.sa_flags & SA_SIGINFO))
      return;
    struct sigaction action {};
    action.sa_handler = handler;
    action.sa_flags = SA_RESTART;
    sigemptyset(&action.sa_mask);
    previous.replaced = ::sigaction(signalNumber, &action, nullptr) == 0;
  }

  static void restoreAction(int signalNumber, const Previous &previous) {
    if (previous.replaced)
      ::sigaction(signalNumber, &previous.action, nullptr);
  }

  bool active = false;
  sigset_t previousMask{};
  std::array<Previous, terminatingSignals.size()> previousActions{};
  Previous previousStop;
  Previous previousContinue;
};

} // namespace

std::optional<std::string> readLineFromStandardInput() {
  return readLineFrom(STDIN_FILENO);
}

std::optional<std::string> readLineWithoutEcho(std::string_view prompt) {
  std::fflush(stdout);
  int terminalFd = ::open("/dev/tty", O_RDWR | O_NOCTTY | O_CLOEXEC);
  int inputFd = terminalFd >= 0 ? terminalFd : STDIN_FILENO;
  int promptFd = terminalFd >= 0 ? terminalFd : STDERR_FILENO;
  std::optional<std::string> line;
  {
    EchoOff echoOff(inputFd, promptFd, prompt);
    writeAll(promptFd, prompt);
    line = readLineFrom(inputFd);
    if (echoOff.isActive())
      writeAll(promptFd, "\n");
  }
  if (terminalFd >= 0)
    ::close(terminalFd);
  return line;
}

} // namespace platform
