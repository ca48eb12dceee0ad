#include "Platform/StandardOutput.h"

#include <cstdio>
#include <string>
#include <unistd.h>

namespace platform {

void writeOut(std::string_view text) {
  if (!text.empty())
    std::fwrite(text.data(), 1, text.size(), stdout);
}

void flushOut() { std::fflush(stdout); }

void printLine(std::string_view text) {
  std::string line;
  line.reserve(text.size() + 1);
  line.append(text);
  line.push_back('\n');
  writeOut(line);
  flushOut();
}

bool isStandardOutputTerminal() { return ::isatty(STDOUT_FILENO) == 1; }

} // namespace platform
