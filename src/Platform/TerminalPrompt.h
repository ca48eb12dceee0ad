#ifndef KESTRUNECLI_PLATFORM_TERMINALPROMPT_H
#define KESTRUNECLI_PLATFORM_TERMINALPROMPT_H

#include <optional>
#include <string>
#include <string_view>

namespace platform {

/// Reads one line from standard input, as typed, without a prompt. The line
/// break ("\n" or "\r\n") is removed; text cut short by the end of input is
/// returned as it stands.
///
/// Standard input is read byte by byte from its descriptor, never through a
/// stdio buffer, so whatever follows the line stays there for the next read
/// (another prompt, or a secret read from a pipe).
///
/// A line of any length is read whole. Returns std::nullopt at the end of
/// input with nothing read, and on a read error.
[[nodiscard]] std::optional<std::string> readLineFromStandardInput();

/// Shows \p prompt and reads one line with echo turned off, the way the C
/// library's getpass does:
///
/// - Standard output is flushed first, so that what the tool printed comes
///   before the prompt.
/// - The controlling terminal (/dev/tty) is used for both the prompt and the
///   answer. When the process has none, the prompt goes to standard error and
///   the line is read from standard input (byte by byte, as in
///   readLineFromStandardInput); if standard input is a terminal, its echo is
///   turned off just the same. Standard output never carries the prompt.
/// - Echo is turned off (with any typed-ahead input discarded) before the
///   prompt is shown, and the terminal's previous settings come back on every
///   way out: after the line, at the end of input, on a read error, and when
///   SIGINT, SIGTERM, SIGHUP or SIGQUIT arrives while waiting; those signals
///   are then raised again with their default action (see also
///   noteCursorHidden in TerminalSignals.h, which shares these handlers).
///   SIGTSTP (Ctrl-Z) restores the settings and stops the process; when it is
///   continued in the foreground, echo is turned off again, the prompt is shown
///   again and the read goes on. Signals that the process ignores or handles
///   itself are left alone.
/// - In a background process group of its terminal, the prompt first waits,
///   stopped by SIGTTOU as job control stops any process that would change a
///   terminal it does not own, with the settings untouched and no handler in
///   place: brought to the foreground, it goes on; sent SIGINT, SIGTERM or
///   SIGHUP, it ends by that signal as soon as it is continued (timeout and
///   a shell's kill send SIGCONT along). When the terminal cannot be reached
///   at all (an orphaned group, a hung-up line), its settings are left alone.
///   Changing the settings never stops the process (SIGTTOU is blocked
///   meanwhile), so echo comes back wherever the terminal can be reached.
/// - When echo was turned off, one line break is written to the terminal after
///   the answer, since the typed one was not shown.
///
/// The line break is removed as in readLineFromStandardInput, and a line of
/// any length is read whole. As with getpass, the end of input before any
/// character (Ctrl-D on an empty line) gives the empty text: the user
/// answered nothing. Returns std::nullopt only on a read error.
[[nodiscard]] std::optional<std::string>
readLineWithoutEcho(std::string_view prompt);

} // namespace platform

#endif
