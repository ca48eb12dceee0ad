#include "MockConsole/Exchange.h"
#include "Platform/UrlText.h"
#include "Support/TestSupport.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <csignal>
#include <cstdio>
#include <string>
#include <vector>

#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

extern char **environ;

namespace {

using mockconsoletest::exchange;
using mockconsoletest::makeRequest;

/// kestrune-mock-console running as a child, its standard output on a pipe.
class ConsoleProcess {
public:
  explicit ConsoleProcess(std::vector<std::string> arguments) {
    arguments.insert(arguments.begin(), MOCK_CONSOLE_PATH);
    std::vector<char *> argv;
    for (std::string &argument : arguments)
      argv.push_back(argument.data());
    argv.push_back(nullptr);
    int pipeEnds[2];
    if (pipe(pipeEnds) != 0)
      throw std::runtime_error("pipe");
    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    posix_spawn_file_actions_adddup2(&actions, pipeEnds[1], 1);
    posix_spawn_file_actions_addclose(&actions, pipeEnds[0]);
    int failure =
        posix_spawn(&child, argv[0], &actions, nullptr, argv.data(), environ);
    posix_spawn_file_actions_destroy(&actions);
    close(pipeEnds[1]);
    if (failure != 0)
      throw std::runtime_error("cannot start " + arguments[0]);
    output = fdopen(pipeEnds[0], "r");
  }

  ~ConsoleProcess() {
    if (child > 0) {
      kill(child, SIGKILL);
      waitpid(child, nullptr, 0);
    }
    if (output)
      fclose(output);
  }

  std::string readLine() {
    char line[4096];
    if (!fgets(line, sizeof line, output))
      return {};
    std::string text(line);
    if (!text.empty() && text.back() == '\n')
      text.pop_back();
    return text;
  }

  /// Sends \p signal and returns the exit status.
  int end(int signal) {
    kill(child, signal);
    int status = 0;
    waitpid(child, &status, 0);
    child = -1;
    return status;
  }

private:
  pid_t child = -1;
  FILE *output = nullptr;
};

TEST(StandaloneTest, ServesOnThePrintedUrlUntilTerminated) {
  for (int signal : {SIGTERM, SIGINT}) {
    SCOPED_TRACE(signal);
    testsupport::TempDir directory;
    ConsoleProcess process({"--account", "admin:secret:KEY", "--group",
                            "ACME=42", "--log",
                            (directory.path() / "log").string()});
    std::string url = process.readLine();
    ASSERT_THAT(url, testing::StartsWith("http://127.0.0.1:"));

    platform::HttpSessionConfiguration configuration;
    configuration.additionalHeaders = {
        {"Authorization", "Basic " + platform::encodeBase64("admin:secret")},
        {"qm-tenant-code", "KEY"}};
    auto outcome =
        exchange(platform::HttpSession(configuration),
                 makeRequest(url + "/api/system/groups/search?groupID=ACME"));
    ASSERT_TRUE(outcome.response.has_value());
    EXPECT_EQ(outcome.response->statusCode, 200);
    EXPECT_THAT(outcome.data.value_or(""), testing::HasSubstr("\"Id\":42"));

    int status = process.end(signal);
    EXPECT_TRUE(WIFEXITED(status));
    EXPECT_EQ(WEXITSTATUS(status), 0);
    EXPECT_THAT(testsupport::readFile(directory.path() / "log"),
                testing::HasSubstr("\"route\":\"groups\""));
  }
}

TEST(StandaloneTest, ExplainsItsOptionsAndRefusesUnknownOnes) {
  ConsoleProcess help({"--help"});
  EXPECT_EQ(help.readLine(), "Usage: kestrune-mock-console [options]");
  int status = help.end(0);
  EXPECT_EQ(WEXITSTATUS(status), 0);

  ConsoleProcess wrong({"--frobnicate", "1"});
  EXPECT_EQ(wrong.readLine(), "");
  EXPECT_EQ(WEXITSTATUS(wrong.end(0)), 64);
}

} // namespace
