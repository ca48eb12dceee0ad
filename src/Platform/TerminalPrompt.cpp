#include "Platform/TerminalPrompt.h"

#include "Platform/TerminalSignals.h"

#include <cerrno>
#include <cstdio>

#include <fcntl.h>
#include <unistd.h>

namespace platform {
namespace {

enum class ReadOutcome { line, endOfInput, failed };

// Reads one line from \p fd into \p line a byte at a time: a terminal in
// canonical mode hands out whole lines anyway, and from a pipe this never
// takes more than the line, so the rest stays for the next reader. The end
// of input before any byte is endOfInput; text cut short by it is a line.
ReadOutcome readLineFrom(int fd, std::string &line) {
  line.clear();
  bool readAnything = false;
  bool sawLineBreak = false;
  for (;;) {
    char byte = 0;
    ssize_t count = ::read(fd, &byte, 1);
    if (count < 0) {
      if (errno == EINTR)
        continue;
      return ReadOutcome::failed;
    }
    if (count == 0)
      break;
    readAnything = true;
    if (byte == '\n') {
      sawLineBreak = true;
      break;
    }
    line.push_back(byte);
  }
  if (!readAnything)
    return ReadOutcome::endOfInput;
  if (sawLineBreak && !line.empty() && line.back() == '\r')
    line.pop_back();
  return ReadOutcome::line;
}

} // namespace

std::optional<std::string> readLineFromStandardInput() {
  std::string line;
  if (readLineFrom(STDIN_FILENO, line) != ReadOutcome::line)
    return std::nullopt;
  return line;
}

std::optional<std::string> readLineWithoutEcho(std::string_view prompt) {
  std::fflush(stdout);
  int terminalFd = ::open("/dev/tty", O_RDWR | O_NOCTTY | O_CLOEXEC);
  int inputFd = terminalFd >= 0 ? terminalFd : STDIN_FILENO;
  int promptFd = terminalFd >= 0 ? terminalFd : STDERR_FILENO;
  std::string line;
  ReadOutcome outcome = ReadOutcome::failed;
  {
    EchoOff echoOff(inputFd, promptFd, prompt);
    writeAll(promptFd, prompt);
    outcome = readLineFrom(inputFd, line);
    if (echoOff.isActive())
      writeAll(promptFd, "\n");
  }
  if (terminalFd >= 0)
    ::close(terminalFd);
  if (outcome == ReadOutcome::failed)
    return std::nullopt;
  return line;
}

} // namespace platform
