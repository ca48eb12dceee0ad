#ifndef KESTRUNECLI_PLATFORM_STANDARDOUTPUT_H
#define KESTRUNECLI_PLATFORM_STANDARDOUTPUT_H

#include "Platform/Terminal.h"

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

/// Standard output as a Terminal: writes go through writeOut and flushOut,
/// the one writer of standard output; the width is that of getTerminalSize.
/// The one object, made at first use and never destroyed.
[[nodiscard]] Terminal &standardOutput();

} // namespace platform

#endif
