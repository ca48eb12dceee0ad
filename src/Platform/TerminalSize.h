#ifndef KESTRUNECLI_PLATFORM_TERMINALSIZE_H
#define KESTRUNECLI_PLATFORM_TERMINALSIZE_H

#include <cstddef>

namespace platform {

/// The width used when standard output is not a terminal.
constexpr std::size_t fallbackColumns = 80;
/// The height used when standard output is not a terminal.
constexpr std::size_t fallbackRows = 25;

struct TerminalSize {
  std::size_t columns;
  std::size_t rows;
};

/// The size of the terminal on file descriptor 1. When it is no terminal the
/// fallback size; a reported width or height of 0 takes its fallback too.
TerminalSize getTerminalSize();

} // namespace platform

#endif
