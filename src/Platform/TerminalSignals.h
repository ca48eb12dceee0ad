#ifndef KESTRUNECLI_PLATFORM_TERMINALSIGNALS_H
#define KESTRUNECLI_PLATFORM_TERMINALSIGNALS_H

// The signal handling that gives the terminal back: while a prompt has echo
// off or a spinner has the cursor hidden, a signal that stops or ends the
// process first undoes that. Prompt and cursor share one handler of the
// terminating signals and one record of what there is to undo.

#include <string_view>

#include <signal.h>

namespace platform {

/// Tells that the tool is about to hide the cursor on standard output (a
/// spinner starts). Until the matching noteCursorShown, SIGINT, SIGTERM,
/// SIGHUP and SIGQUIT, when the process leaves them to their default action,
/// first show the cursor again ("\x1b[?25h" on standard output, and echo
/// back on when a prompt has it off) and then end the process by the same
/// signal, so the user's shell gets its terminal back as it was and sees the
/// usual status. Calls nest and may come from any thread.
void noteCursorHidden();

/// Tells that the cursor hidden since the matching noteCursorHidden has been
/// shown again.
void noteCursorShown();

/// Turns echo off on the terminal \p fd for the lifetime of the object, with
/// the handlers that give the settings back on every way out, as
/// readLineWithoutEcho describes: SIGINT, SIGTERM, SIGHUP and SIGQUIT restore
/// them and end the process by the same signal; SIGTSTP restores them and
/// stops it; SIGCONT in the foreground turns echo off again and writes
/// \p prompt to \p promptFd once more. Signals that the process ignores or
/// handles itself are left alone. When \p fd is no terminal, or one that
/// can't be reached, nothing changes and isActive() is false. One object at a
/// time; \p prompt must outlive it.
class EchoOff {
public:
  EchoOff(int fd, int promptFd, std::string_view prompt);
  ~EchoOff();

  EchoOff(const EchoOff &) = delete;
  EchoOff &operator=(const EchoOff &) = delete;

  /// Whether echo was turned off, so the typed line break was not shown.
  bool isActive() const noexcept { return active; }

  /// A signal's action from before one of ours took its place.
  struct PreviousAction {
    struct sigaction action {};
    bool replaced = false;
  };

private:
  bool active = false;
  PreviousAction previousStop;
  PreviousAction previousContinue;
};

/// Writes all of \p bytes to \p fd, going on after an interrupted or short
/// write and giving up on an error. Safe in a signal handler.
void writeAll(int fd, std::string_view bytes);

} // namespace platform

#endif
