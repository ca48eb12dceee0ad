#ifndef KESTRUNECLI_PLATFORM_STANDARDOUTPUT_H
#define KESTRUNECLI_PLATFORM_STANDARDOUTPUT_H

#include <string_view>

namespace platform {

/// Writes \p text to standard output through C stdio, in one call, so that
/// writes of other threads never land inside it. No flush.
void writeOut(std::string_view text);

/// Flushes standard output.
void flushOut();

/// Writes \p text and one line break in one call, then flushes: the print of
/// every message of the tool.
void printLine(std::string_view text);

/// Whether standard output is a terminal.
[[nodiscard]] bool isStandardOutputTerminal();

} // namespace platform

#endif
