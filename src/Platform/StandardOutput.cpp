#include "Platform/StandardOutput.h"

#include "Platform/TerminalSize.h"

#include <cstdio>
#include <string>
#include <unistd.h>

namespace platform {
namespace {

class StandardOutputTerminal final : public Terminal {
public:
  bool isInteractive() const override { return isStandardOutputTerminal(); }
  std::size_t getColumns() const override { return getTerminalSize().columns; }
  void write(std::string_view bytes) override { writeOut(bytes); }
  void flush() override { flushOut(); }
};

} // namespace

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

Terminal &standardOutput() {
  // Never destroyed: threads may still write through it while the process
  // ends.
  static Terminal *terminal = new StandardOutputTerminal;
  return *terminal;
}

} // namespace platform
