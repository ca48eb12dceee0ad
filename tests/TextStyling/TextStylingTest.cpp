// Styled text as written for each output target, and the target as this
// process decides it from its environment and what standard output is.
#include "TextStyling/TextStyling.h"

#include "Support/PseudoTerminal.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <optional>
#include <string>
#include <string_view>

#include <unistd.h>

namespace {

using styling::OutputTarget;
using styling::TextStyling;

// Styling switched off is written as no target at all.
TEST(TextStylingTest, WritesTheBytesOfEachTarget) {
  const OutputTarget console = OutputTarget::console;
  const OutputTarget xcode = OutputTarget::xcodeColors;
  const std::optional<OutputTarget> off;
  struct Row {
    std::optional<OutputTarget> target;
    std::string (*style)(std::string_view);
    std::string_view input, expected;
  };
  const Row rows[] = {
      {console, styling::red, "x", "\x1b[31mx\x1b[0m"},
      {console, styling::bold, "\x1b[31mx\x1b[0m", "\x1b[31;1mx\x1b[0m"},
      {console, styling::blue, "\x1b[31;1mx\x1b[0m", "\x1b[34;1mx\x1b[0m"},
      // Text behind the reset makes the whole text plain: wrapped anew.
      {console, styling::bold, "\x1b[31mx\x1b[0m!",
       "\x1b[1m\x1b[31mx\x1b[0m!\x1b[0m"},
      {console, styling::raw, "\x1b[31;1mx\x1b[0m", "x"},
      {console, styling::bold, "\x1b[fg0,0,255;x\x1b[;", "\x1b[34;1mx\x1b[0m"},
      {xcode, styling::red, "x", "\x1b[fg255,0,0;x\x1b[;"},
      {xcode, styling::onBlue, "\x1b[fg255,0,0;x\x1b[;",
       "\x1b[fg255,0,0;\x1b[bg0,0,255;x\x1b[;"},
      {OutputTarget::unknown, styling::red, "\x1b[31mx\x1b[0m", "x"},
      {off, styling::red, "x", "x"},
      {off, styling::raw, "\x1b[31;1mx\x1b[0m", "x"},
  };
  for (const Row &row : rows) {
    SCOPED_TRACE(testing::PrintToString(std::string(row.input)));
    TextStyling::setOutputTarget(row.target.value_or(console));
    TextStyling::setEnabled(row.target.has_value());
    EXPECT_EQ(row.style(row.input), row.expected);
  }
  TextStyling::setEnabled(true);
}

// The target is decided by standard output alone, whatever standard error
// is; each row runs on a pseudo-terminal with a pipe put on \p pipeOn.
TEST(TextStylingTest, DecidesTheTargetByStandardOutput) {
  struct Row {
    const char *xcodeColors, *term;
    int pipeOn;
    OutputTarget expected;
  };
  const Row rows[] = {
      {nullptr, "xterm", STDERR_FILENO, OutputTarget::console},
      {nullptr, "xterm", STDOUT_FILENO, OutputTarget::unknown},
      {nullptr, "DUMB", -1, OutputTarget::unknown},
      {nullptr, nullptr, -1, OutputTarget::unknown},
      {"yes", "xterm", -1, OutputTarget::console},
      {"YES", nullptr, STDOUT_FILENO, OutputTarget::xcodeColors},
  };
  for (const Row &row : rows) {
    SCOPED_TRACE(&row - rows);
    testsupport::ResultPipe result;
    testsupport::PseudoTerminal terminal([&] {
      int ends[2];
      if (row.pipeOn >= 0 && (pipe(ends) != 0 || dup2(ends[1], row.pipeOn) < 0))
        return 1;
      for (auto [name, value] :
           {std::pair{"XcodeColors", row.xcodeColors}, {"TERM", row.term}})
        value ? setenv(name, value, 1) : unsetenv(name);
      result.send(
          std::to_string(static_cast<int>(styling::currentOutputTarget())));
      return 0;
    });
    ASSERT_EQ(terminal.waitForEnd(), testsupport::ProcessEnd::exitedWith(0));
    EXPECT_EQ(result.receive(),
              "some:" + std::to_string(static_cast<int>(row.expected)));
  }
}

} // namespace
