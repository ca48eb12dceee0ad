#include "Platform/TerminalPrompt.h"

#include "Support/PseudoTerminal.h"

#include <gtest/gtest.h>

#include <csignal>
#include <cstdio>
#include <functional>
#include <string>
#include <vector>

#include <fcntl.h>
#include <sys/wait.h>
#include <unistd.h>

namespace platform {
namespace {

using testsupport::ProcessEnd;
using testsupport::PseudoTerminal;
using testsupport::ResultPipe;

constexpr std::string_view prompt = "Enter the password: ";
constexpr std::string_view secret = "Tr0ub4dor&3";

// Runs the prompt as a foreground job and sends back what it read.
std::function<int()> promptJob(const ResultPipe &result) {
  return [&result] {
    result.send(readLineWithoutEcho(prompt));
    return 0;
  };
}

struct WayOut {
  const char *name;
  std::function<void(PseudoTerminal &)> act;
  ProcessEnd end;
  std::string sent;
};

TEST(TerminalPromptTest, EchoIsBackAfterEveryWayOut) {
  const WayOut waysOut[] = {
      {"answer typed",
       [](PseudoTerminal &terminal) {
         terminal.type(std::string(secret) + "\n");
       },
       ProcessEnd::exitedWith(0), "some:" + std::string(secret)},
      {"end of input", [](PseudoTerminal &terminal) { terminal.type("\x04"); },
       ProcessEnd::exitedWith(0), "none"},
      {"end of input after some text",
       [](PseudoTerminal &terminal) { terminal.type("part\x04\x04"); },
       ProcessEnd::exitedWith(0), "some:part"},
      {"Ctrl-C typed half way",
       [](PseudoTerminal &terminal) { terminal.type("Tr0ub\x03"); },
       ProcessEnd::killedBy(SIGINT), ""},
      {"SIGTERM",
       [](PseudoTerminal &terminal) { terminal.sendSignal(SIGTERM); },
       ProcessEnd::killedBy(SIGTERM), ""},
      {"SIGHUP", [](PseudoTerminal &terminal) { terminal.sendSignal(SIGHUP); },
       ProcessEnd::killedBy(SIGHUP), ""},
  };
  for (const WayOut &wayOut : waysOut) {
    SCOPED_TRACE(wayOut.name);
    ResultPipe result;
    PseudoTerminal terminal(promptJob(result));
    ASSERT_TRUE(terminal.waitFor(prompt));
    EXPECT_FALSE(terminal.isEchoOn());
    wayOut.act(terminal);
    EXPECT_EQ(terminal.waitForEnd(), wayOut.end);
    EXPECT_TRUE(terminal.isEchoOn());
    EXPECT_EQ(result.receive(), wayOut.sent);
    EXPECT_EQ(terminal.getTranscript().find("Tr0ub"), std::string::npos)
        << terminal.getTranscript();
  }
}

TEST(TerminalPromptTest, CtrlZStopsWithEchoOnAndContinuesWithEchoOff) {
  ResultPipe result;
  PseudoTerminal terminal(promptJob(result));
  ASSERT_TRUE(terminal.waitFor(prompt));
  for (int round = 0; round < 2; ++round) {
    SCOPED_TRACE(round);
    terminal.type("\x1a");
    ASSERT_TRUE(terminal.waitUntilStopped());
    EXPECT_TRUE(terminal.isEchoOn());
    terminal.sendSignal(SIGCONT);
    // The prompt shows again once echo is off again.
    ASSERT_TRUE(terminal.waitFor(prompt));
    EXPECT_FALSE(terminal.isEchoOn());
  }
  terminal.type(std::string(secret) + "\n");
  EXPECT_EQ(terminal.waitForEnd(), ProcessEnd::exitedWith(0));
  EXPECT_TRUE(terminal.isEchoOn());
  EXPECT_EQ(result.receive(), "some:" + std::string(secret));
  EXPECT_EQ(terminal.getTranscript().find(secret), std::string::npos);
}

TEST(TerminalPromptTest, HandlersAreGoneOnceTheAnswerIsRead) {
  // After the prompt, Ctrl-Z and SIGTERM act as they did before it: the job
  // stops without touching the terminal's settings, then ends.
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
  EXPECT_EQ(terminal.getTranscript().find(prompt, prompt.size()),
            std::string::npos);
  terminal.sendSignal(SIGTERM);
  EXPECT_EQ(terminal.waitForEnd(), ProcessEnd::killedBy(SIGTERM));
}

TEST(TerminalPromptTest, IgnoredSignalsStayIgnored) {
  ResultPipe result;
  PseudoTerminal terminal([&result] {
    std::signal(SIGINT, SIG_IGN);
    result.send(readLineWithoutEcho(prompt));
    return 0;
  });
  ASSERT_TRUE(terminal.waitFor(prompt));
  terminal.sendSignal(SIGINT);
  terminal.type("still here\n");
  EXPECT_EQ(terminal.waitForEnd(), ProcessEnd::exitedWith(0));
  EXPECT_EQ(result.receive(), "some:still here");
  EXPECT_TRUE(terminal.isEchoOn());
}

// What a process without a controlling terminal saw: its prompt read from a
// pipe on standard input, standard output and error sent to files.
struct Detached {
  std::string sent;
  std::string standardOutput;
  std::string standardError;
};

std::string readAll(int fd) {
  std::string text;
  ::lseek(fd, 0, SEEK_SET);
  char buffer[4096];
  ssize_t count;
  while ((count = ::read(fd, buffer, sizeof buffer)) > 0)
    text.append(buffer, static_cast<std::size_t>(count));
  return text;
}

Detached runDetached(const std::string &input) {
  char outName[] = "/tmp/kestrune-prompt-out-XXXXXX";
  char errName[] = "/tmp/kestrune-prompt-err-XXXXXX";
  int outFd = ::mkstemp(outName);
  int errFd = ::mkstemp(errName);
  ::unlink(outName);
  ::unlink(errName);
  int inPipe[2];
  EXPECT_EQ(::pipe(inPipe), 0);
  ResultPipe result;
  std::fflush(nullptr);
  pid_t child = ::fork();
  if (child == 0) {
    ::setsid();
    ::dup2(inPipe[0], STDIN_FILENO);
    ::dup2(outFd, STDOUT_FILENO);
    ::dup2(errFd, STDERR_FILENO);
    ::close(inPipe[1]);
    std::optional<std::string> first = readLineWithoutEcho(prompt);
    std::optional<std::string> second = readLineFromStandardInput();
    result.send((first ? "some:" + *first : "none") + "|" +
                (second ? "some:" + *second : "none"));
    ::_exit(0);
  }
  ::close(inPipe[0]);
  ::write(inPipe[1], input.data(), input.size());
  ::close(inPipe[1]);
  int status = 0;
  ::waitpid(child, &status, 0);
  Detached detached{result.receive(), readAll(outFd), readAll(errFd)};
  ::close(outFd);
  ::close(errFd);
  return detached;
}

TEST(TerminalPromptTest, WithoutTerminalPromptsOnStandardErrorAndReadsInput) {
  struct Case {
    std::string input;
    std::string sent;
  };
  const Case cases[] = {
      {"from-pipe\nnext line\n", "some:from-pipe|some:next line"},
      {"crlf\r\nnext\r\n", "some:crlf|some:next"},
      {"only\n", "some:only|none"},
      {"", "none|none"},
  };
  for (const Case &c : cases) {
    SCOPED_TRACE(c.input);
    Detached detached = runDetached(c.input);
    EXPECT_EQ(detached.sent, "some:" + c.sent);
    EXPECT_EQ(detached.standardOutput, "");
    EXPECT_EQ(detached.standardError, prompt);
  }
}

// Feeds \p input to standard input while \p body runs in this process.
void withStandardInput(const std::string &input,
                       const std::function<void()> &body) {
  char name[] = "/tmp/kestrune-prompt-in-XXXXXX";
  int fd = ::mkstemp(name);
  ASSERT_GE(fd, 0);
  ::unlink(name);
  ASSERT_EQ(::write(fd, input.data(), input.size()),
            static_cast<ssize_t>(input.size()));
  ::lseek(fd, 0, SEEK_SET);
  int saved = ::dup(STDIN_FILENO);
  ::dup2(fd, STDIN_FILENO);
  ::close(fd);
  body();
  ::dup2(saved, STDIN_FILENO);
  ::close(saved);
}

TEST(TerminalPromptTest, ReadsStandardInputLineByLine) {
  const std::string longLine(maxPromptLineLength + 1, 'x');
  const std::string longestLine(maxPromptLineLength, 'y');
  struct Case {
    const char *name;
    std::string input;
    std::vector<std::optional<std::string>> lines;
  };
  const Case cases[] = {
      {"lines", "alice\nbob\n", {"alice", "bob", std::nullopt}},
      {"empty line", "\n\n", {"", "", std::nullopt}},
      {"blanks kept", "  a b  \n", {"  a b  ", std::nullopt}},
      {"carriage return before the break", "a\r\nb\r", {"a", "b\r"}},
      {"last line without a break", "a\nrest", {"a", "rest", std::nullopt}},
      {"too long", longLine + "\nnext\n", {std::nullopt, "next"}},
      {"longest allowed", longestLine + "\n", {longestLine, std::nullopt}},
  };
  for (const Case &c : cases) {
    SCOPED_TRACE(c.name);
    withStandardInput(c.input, [&] {
      for (const std::optional<std::string> &line : c.lines)
        EXPECT_EQ(readLineFromStandardInput(), line);
    });
  }
}

} // namespace
} // namespace platform
