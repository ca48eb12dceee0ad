// The terminal where the built tool can't be driven into it: a width of
// zero, and the hidden prompt's signal handling after the answer (the
// end-to-end tests try every way out of the prompt itself).
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

// A terminal may report a width of 0 (a serial line, a container's first
// moments): the fallback width applies. Other widths are the end-to-end
// tests' (help at 60 columns on a terminal, at 80 on a pipe).
TEST(TerminalTest, TakesTheFallbackForAWidthOfZero) {
  ResultPipe result;
  PseudoTerminal terminal([&] {
    const winsize size{30, 0, 0, 0};
    if (ioctl(STDOUT_FILENO, TIOCSWINSZ, &size) != 0)
      return 1;
    result.send(std::to_string(getTerminalSize().columns));
    return 0;
  });
  ASSERT_EQ(terminal.waitForEnd(), ProcessEnd::exitedWith(0));
  EXPECT_EQ(result.receive(), "some:" + std::to_string(fallbackColumns));
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
