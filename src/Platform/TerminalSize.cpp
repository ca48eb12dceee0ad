#include "Platform/TerminalSize.h"

#include <sys/ioctl.h>
#include <unistd.h>

namespace platform {

TerminalSize getTerminalSize() {
  winsize size{};
  if (ioctl(STDOUT_FILENO, TIOCGWINSZ, &size) != 0)
    return {fallbackColumns, fallbackRows};
  return {size.ws_col == 0 ? fallbackColumns : size.ws_col,
          size.ws_row == 0 ? fallbackRows : size.ws_row};
}

} // namespace platform
