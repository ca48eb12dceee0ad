// The terminal as the platform layer sees it: its size, and the hidden
// prompt's signal handling after the answer, where the built tool can't be
// driven (the end-to-end tests try every way out of the prompt itself).
#include "Platform/TerminalPrompt.h"
#include "Platform/TerminalSize.h"

#include "Support/PseudoTerminal.h"

#include <gtest/gtest.h>

#include <csignal>
#include <cstdio>
#include <string>

#include <sys/ioctl.h>
#include <unistd.h>

namespace platform {
namespace {

using testsupport::ProcessEnd;
using testsupport::PseudoTerminal;
using testsupport::ResultPipe;

constexpr std::string_view prompt = "Enter the password: ";

TEST(TerminalTest, MeasuresTheTerminalOnStandardOutput) {
  struct Row {
    unsigned short rows, columns;
    bool pipeOnStandardOutput;
    std::string expected;
  };
  const Row rows[] = {
      {40, 100, false, "100x40"},
      {0, 0, false, "80x25"},
      {30, 0, false, "80x30"},
      {40, 100, true, "80x25"},
  };
  for (const Row &row : rows) {
    SCOPED_TRACE(row.expected);
    ResultPipe result;
    PseudoTerminal terminal([&] {
      const winsize size{row.rows, row.columns, 0, 0};
      int ends[2];
      if (ioctl(STDOUT_FILENO, TIOCSWINSZ, &size) != 0 ||
          (row.pipeOnStandardOutput &&
           (pipe(ends) != 0 || dup2(ends[1], STDOUT_FILENO) < 0)))
        return 1;
      const TerminalSize measured = getTerminalSize();
      result.send(std::to_string(measured.columns) + "x" +
                  std::to_string(measured.rows));
      return 0;
    });
    ASSERT_EQ(terminal.waitForEnd(), ProcessEnd::exitedWith(0));
    EXPECT_EQ(result.receive(), "some:" + row.expected);
  }
}

// Once the answer is read, Ctrl-Z and SIGTERM act as before the prompt: the
// job stops without the prompt showing again or echo changing, then ends.
TEST(TerminalTest, PromptHandlersAreGoneOnceTheAnswerIsRead) {
  ResultPipe result;
  PseudoTerminal terminal([&result] {
    result.send(readLineWithoutEcho(prompt));
    std::fputs("done\n", stdout);
    std::fflush(stdout);
    ::pause();
    return 0;
  });
  ASSERT_TRUE(terminal.waitFor(prompt));
  terminal.type("x\n");
  ASSERT_TRUE(terminal.waitFor("done"));
  terminal.type("\x1a");
  ASSERT_TRUE(terminal.waitUntilStopped());
  terminal.sendSignal(SIGCONT);
  EXPECT_TRUE(terminal.isEchoOn());
  terminal.sendSignal(SIGTERM);
  EXPECT_EQ(terminal.waitForEnd(), ProcessEnd::killedBy(SIGTERM));
  EXPECT_EQ(terminal.getTranscript().find(prompt, prompt.size()),
            std::string::npos);
  EXPECT_EQ(result.receive(), "some:x");
}

} // namespace
} // namespace platform
