#include "Platform/TerminalSignals.h"

#include <array>
#include <atomic>
#include <cassert>
#include <cerrno>
#include <csignal>
#include <mutex>

#include <pthread.h>
#include <termios.h>
#include <unistd.h>

namespace platform {

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

namespace {

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

// How many callers have the cursor hidden right now.
std::atomic<int> hiddenCursors{0};
static_assert(std::atomic<int>::is_always_lock_free,
              "read in a signal handler");

constexpr std::string_view showCursor = "\x1b[?25h";

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

// Waits, the way job control makes a process wait for a terminal whose
// foreground it is not in, until this process may change the settings of
// \p fd. tcdrain is checked like tcsetattr (from a background group it stops
// the process by SIGTTOU) but changes nothing. It comes before any signal is
// blocked or handled here, so a process stopped in it has left the terminal
// as it was, and a terminating signal ends it by its default action as soon
// as it goes on (SIGCONT). False when the terminal cannot be reached: an
// orphaned background group, a hung-up line, or no terminal at all.
bool waitUntilSettingsMayChange(int fd) {
  while (::tcdrain(fd) != 0)
    if (errno != EINTR)
      return false;
  return true;
}

// The mask of every handler here: with SIGTTOU blocked, changing the
// terminal's settings never stops the process, even from a background group
// (where the kernel then lets the change through), so a handler always
// gives the echo back.
sigset_t handlerMask() {
  sigset_t mask;
  sigemptyset(&mask);
  sigaddset(&mask, SIGTTOU);
  return mask;
}

void setDefaultAction(int signalNumber) {
  struct sigaction action {};
  action.sa_handler = SIG_DFL;
  sigemptyset(&action.sa_mask);
  ::sigaction(signalNumber, &action, nullptr);
}

extern "C" void onTerminatingSignal(int signalNumber) {
  int savedErrno = errno;
  restoreEcho();
  if (hiddenCursors.load() > 0)
    writeAll(STDOUT_FILENO, showCursor);
  // The signal is blocked while its handler runs, so this one stays pending
  // and ends the process with the default action as soon as we return.
  setDefaultAction(signalNumber);
  ::raise(signalNumber);
  errno = savedErrno;
}

extern "C" void onStopSignal(int) {
  int savedErrno = errno;
  if (echoState.echoIsOff) {
    restoreEcho();
    echoState.stoppedWhileOff = 1;
  }
  // Pending until we return; then the process stops with echo on.
  setDefaultAction(SIGTSTP);
  ::raise(SIGTSTP);
  errno = savedErrno;
}

void installStopHandler() {
  struct sigaction action {};
  action.sa_handler = onStopSignal;
  action.sa_flags = SA_RESTART;
  action.sa_mask = handlerMask();
  ::sigaction(SIGTSTP, &action, nullptr);
}

extern "C" void onContinue(int) {
  int savedErrno = errno;
  if (echoState.ownsStopSignal)
    installStopHandler();
  // Continued in the background, the settings are not ours to change; the
  // read stops us (SIGTTIN), and the continue that brings us to the
  // foreground lands here once more.
  if (echoState.stoppedWhileOff && ::tcgetpgrp(echoState.fd) == ::getpgrp()) {
    echoState.stoppedWhileOff = 0;
    turnEchoOff();
    writeAll(echoState.promptFd,
             std::string_view(echoState.prompt, echoState.promptSize));
  }
  errno = savedErrno;
}

sigset_t handledSignals() {
  sigset_t set = handlerMask();
  for (int signalNumber : terminatingSignals)
    sigaddset(&set, signalNumber);
  sigaddset(&set, SIGTSTP);
  sigaddset(&set, SIGCONT);
  return set;
}

// Blocks the handled signals (and SIGTTOU, see handlerMask) in the calling
// thread for the lifetime of the object, so that no handler runs here while
// settings and handlers change together, and no change of the settings
// stops the process while they are blocked.
class SignalsBlocked {
public:
  SignalsBlocked() {
    sigset_t blocked = handledSignals();
    ::pthread_sigmask(SIG_BLOCK, &blocked, &previousMask);
  }
  ~SignalsBlocked() { ::pthread_sigmask(SIG_SETMASK, &previousMask, nullptr); }
  SignalsBlocked(const SignalsBlocked &) = delete;
  SignalsBlocked &operator=(const SignalsBlocked &) = delete;

private:
  sigset_t previousMask{};
};

using PreviousAction = EchoOff::PreviousAction;

void installIfDefault(int signalNumber, void (*handler)(int),
                      PreviousAction &previous) {
  previous.replaced = false;
  if (::sigaction(signalNumber, nullptr, &previous.action) != 0)
    return;
  // An ignored signal cannot disturb the terminal, and a handler of the
  // program's own takes care of the terminal itself.
  if (previous.action.sa_handler != SIG_DFL ||
      (previous.action.sa_flags & SA_SIGINFO))
    return;
  struct sigaction action {};
  action.sa_handler = handler;
  action.sa_flags = SA_RESTART;
  action.sa_mask = handlerMask();
  previous.replaced = ::sigaction(signalNumber, &action, nullptr) == 0;
}

void restoreAction(int signalNumber, const PreviousAction &previous) {
  if (previous.replaced)
    ::sigaction(signalNumber, &previous.action, nullptr);
}

// The handler of the terminating signals is shared by a waiting prompt and
// a hidden cursor: it is in place while either needs it, and the actions the
// process had before come back when the last one is done.
class TerminatingSignals {
public:
  void hold() {
    std::lock_guard lock(mutex);
    if (holders++ > 0)
      return;
    for (std::size_t i = 0; i < terminatingSignals.size(); ++i)
      installIfDefault(terminatingSignals[i], onTerminatingSignal, previous[i]);
  }

  void release() {
    std::lock_guard lock(mutex);
    assert(holders > 0 && "released more often than held");
    if (--holders > 0)
      return;
    for (std::size_t i = 0; i < terminatingSignals.size(); ++i)
      restoreAction(terminatingSignals[i], previous[i]);
  }

private:
  std::mutex mutex;
  int holders = 0;
  std::array<PreviousAction, terminatingSignals.size()> previous{};
};
TerminatingSignals terminating;

} // namespace

EchoOff::EchoOff(int fd, int promptFd, std::string_view prompt) {
  assert(echoState.fd < 0 && "one prompt at a time");
  termios current{};
  if (!waitUntilSettingsMayChange(fd) || ::tcgetattr(fd, &current) != 0)
    return;
  SignalsBlocked blocked;
  echoState.fd = fd;
  echoState.promptFd = promptFd;
  echoState.saved = current;
  echoState.prompt = prompt.data();
  echoState.promptSize = prompt.size();
  echoState.stoppedWhileOff = 0;
  terminating.hold();
  installIfDefault(SIGTSTP, onStopSignal, previousStop);
  echoState.ownsStopSignal = previousStop.replaced;
  installIfDefault(SIGCONT, onContinue, previousContinue);
  turnEchoOff();
  active = true;
}

EchoOff::~EchoOff() {
  if (!active)
    return;
  // Anything that arrives meanwhile is delivered once the signals are
  // unblocked, to the handlers the process had before.
  SignalsBlocked blocked;
  restoreEcho();
  terminating.release();
  restoreAction(SIGTSTP, previousStop);
  restoreAction(SIGCONT, previousContinue);
  echoState = EchoState{};
}

void noteCursorHidden() {
  SignalsBlocked blocked;
  terminating.hold();
  hiddenCursors.fetch_add(1);
}

void noteCursorShown() {
  SignalsBlocked blocked;
  hiddenCursors.fetch_sub(1);
  terminating.release();
}

} // namespace platform
