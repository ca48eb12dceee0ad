#ifndef KESTRUNECLI_PLATFORM_TERMINALPROMPT_H
#define KESTRUNECLI_PLATFORM_TERMINALPROMPT_H

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>

namespace platform {

/// The longest line the prompts accept, line break excluded. A longer line is
/// read to its end and then refused, so that no input can exhaust memory.
constexpr std::size_t maxPromptLineLength = 64 * 1024;

/// Reads one line from standard input, as typed, without a prompt. The line
/// break ("\n" or "\r\n") is removed; text cut short by the end of input is
/// returned as it stands.
///
/// Standard input is read byte by byte from its descriptor, never through a
/// stdio buffer, so whatever follows the line stays there for the next read
/// (another prompt, or a secret read from a pipe).
///
/// Returns std::nullopt at the end of input with nothing read, on a read
/// error, and for a line longer than maxPromptLineLength.
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
///   are then raised again with their default action. SIGTSTP (Ctrl-Z)
///   restores the settings and stops the process; when it is continued in the
///   foreground, echo is turned off again, the prompt is shown again and the
///   read goes on. Signals that the process ignores or handles itself are left
///   alone.
/// - When echo was turned off, one line break is written to the terminal after
///   the answer, since the typed one was not shown.
///
/// The line break is removed as in readLineFromStandardInput. Returns
/// std::nullopt when the end of input comes before any character, on a read
/// error, and for a line longer than maxPromptLineLength.
[[nodiscard]] std::optional<std::string>
readLineWithoutEcho(std::string_view prompt);

} // namespace platform

#endif
