#include "Support/Doubles.h"

#include <algorithm>

namespace testsupport {

std::string readSpinnerTranscript(std::string_view output, bool marks) {
  std::string result;
  auto mark = [&](std::string_view text) {
    if (marks)
      result += text;
  };
  for (std::size_t at = 0; at < output.size();) {
    std::string_view rest = output.substr(at);
    if (rest.starts_with("\x1b[?25l") || rest.starts_with("\x1b[?25h")) {
      mark(rest[5] == 'l' ? "<hide>" : "<show>");
      at += 6;
      continue;
    }
    if (rest.front() != '\r') {
      result += rest.front();
      ++at;
      continue;
    }
    std::string_view line = rest.substr(
        1, std::min(rest.find_first_of("\r\n\x1b", 1), rest.size()) - 1);
    bool redraw = line.size() > 2 && line[1] == ' ' &&
                  std::string_view("-\\|/").find(line[0]) != std::string::npos;
    if (redraw) {
      // Every spinner text of the tool ends in "...", then blanks may pad
      // it; what follows on the same line was printed while it turned.
      std::size_t end = line.find("...");
      end = end == line.npos ? line.size()
                             : std::min(line.find_first_not_of(' ', end + 3),
                                        line.size());
      at += 1 + end;
    } else if (!line.empty() && line.find_first_not_of(' ') == line.npos) {
      mark("<clear>");
      at += 1 + line.size();
    } else {
      mark("<cr>");
      ++at;
    }
  }
  return result;
}

} // namespace testsupport
