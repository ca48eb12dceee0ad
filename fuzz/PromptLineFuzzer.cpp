// The reading of lines typed at a prompt, fed through a pipe as standard
// input: reading until the end gives the input's lines in order, each
// without its "\n" or "\r\n", the last one as it stands when no line break
// ends it, and nothing is lost or read ahead of its line. The hidden read
// (without a controlling terminal it reads standard input the same way)
// gives the empty text at the end of input, where the plain read gives none.

#include "FuzzSupport.h"
#include "Platform/TerminalPrompt.h"

#include <cstdint>
#include <string>
#include <vector>

#include <fcntl.h>
#include <unistd.h>

using fuzzsupport::require;

namespace {

std::vector<std::string> expectedLines(const std::string &text) {
  std::vector<std::string> lines;
  std::size_t start = 0;
  for (std::size_t end; (end = text.find('\n', start)) != std::string::npos;
       start = end + 1) {
    std::string line = text.substr(start, end - start);
    if (line.ends_with('\r'))
      line.pop_back();
    lines.push_back(line);
  }
  if (start < text.size())
    lines.push_back(text.substr(start));
  return lines;
}

// Whether this process can open its controlling terminal, which the hidden
// read would use instead of standard input.
bool hasControllingTerminal() {
  int fd = ::open("/dev/tty", O_RDWR | O_CLOEXEC);
  if (fd < 0)
    return false;
  ::close(fd);
  return true;
}

bool hiddenReadUsesStandardInput = false;

} // namespace

extern "C" int LLVMFuzzerInitialize(int *, char ***) {
  ::setsid(); // leaves the controlling terminal, where it can
  hiddenReadUsesStandardInput = !hasControllingTerminal();
  return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data,
                                      std::size_t size) {
  if (size == 0 || size > 60000) // within a pipe's buffer
    return 0;
  const bool hidden = data[0] & 1 && hiddenReadUsesStandardInput;
  const std::string text(reinterpret_cast<const char *>(data) + 1, size - 1);
  int ends[2];
  if (::pipe(ends) != 0)
    fuzzsupport::violated("pipe");
  if (::write(ends[1], text.data(), text.size()) !=
      static_cast<ssize_t>(text.size()))
    fuzzsupport::violated("write");
  ::close(ends[1]);
  int saved = ::dup(STDIN_FILENO);
  ::dup2(ends[0], STDIN_FILENO);
  ::close(ends[0]);

  const std::vector<std::string> expected = expectedLines(text);
  std::vector<std::string> lines;
  if (hidden) {
    // The hidden read can't tell an empty line from the end of input: it
    // reads as many lines as there are, then the empty text at the end.
    for (std::size_t i = 0; i < expected.size(); ++i)
      if (std::optional<std::string> line = platform::readLineWithoutEcho(""))
        lines.push_back(*line);
    require(platform::readLineWithoutEcho("") == "",
            "the hidden read gives the empty text at the end");
  } else {
    while (std::optional<std::string> line =
               platform::readLineFromStandardInput())
      lines.push_back(*line);
  }
  ::dup2(saved, STDIN_FILENO);
  ::close(saved);
  require(lines == expectedLines(text), "the input's lines, in order");
  return 0;
}
