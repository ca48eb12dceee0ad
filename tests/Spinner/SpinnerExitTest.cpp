#include "Support/TestSupport.h"

#include <gtest/gtest.h>

#include <chrono>
#include <csignal>
#include <cstring>
#include <fcntl.h>
#include <spawn.h>
#include <string>
#include <string_view>
#include <sys/wait.h>
#include <thread>
#include <unistd.h>
#include <vector>

extern char **environ;

namespace {

struct ProbeRun {
  bool finished = false;
  int status = 0;
  std::string output;
};

// Runs the probe with standard output in a file, an environment without
// XcodeColors (so its frames are plain), and at most 20 seconds to end.
ProbeRun runProbe(const char *mode) {
  testsupport::TempDir dir;
  const std::string outputPath = (dir.path() / "stdout").string();
  posix_spawn_file_actions_t actions;
  posix_spawn_file_actions_init(&actions);
  posix_spawn_file_actions_addopen(&actions, 1, outputPath.c_str(),
                                   O_WRONLY | O_CREAT | O_TRUNC, 0600);
  std::vector<char *> environment;
  for (char **variable = environ; *variable; ++variable)
    if (std::strncmp(*variable, "XcodeColors=", 12) != 0)
      environment.push_back(*variable);
  environment.push_back(nullptr);
  std::string path = SPINNER_EXIT_PROBE_PATH;
  std::string argument = mode;
  char *arguments[] = {path.data(), argument.data(), nullptr};
  pid_t child = 0;
  ProbeRun run;
  const int spawned = posix_spawn(&child, path.c_str(), &actions, nullptr,
                                  arguments, environment.data());
  posix_spawn_file_actions_destroy(&actions);
  if (spawned != 0) {
    ADD_FAILURE() << "cannot start " << path << ": " << std::strerror(spawned);
    return run;
  }
  const auto deadline =
      std::chrono::steady_clock::now() + std::chrono::seconds(20);
  while (true) {
    const pid_t done = waitpid(child, &run.status, WNOHANG);
    if (done == child) {
      run.finished = true;
      break;
    }
    if (std::chrono::steady_clock::now() > deadline) {
      kill(child, SIGKILL);
      waitpid(child, &run.status, 0);
      break;
    }
    std::this_thread::sleep_for(std::chrono::milliseconds(5));
  }
  run.output = testsupport::readFile(outputPath);
  return run;
}

// The probe's output less its one printed line must be: hide the cursor,
// whole redraws of the line pattern, then \p ending.
void expectWholeOutput(std::string output, std::string_view ending) {
  const std::string line = "Leaving now\n";
  const std::size_t at = output.find(line);
  ASSERT_NE(at, std::string::npos) << output;
  output.erase(at, line.size());
  EXPECT_EQ(output.find(line), std::string::npos) << "printed twice";

  std::string_view rest = output;
  ASSERT_TRUE(rest.starts_with("\x1b[?25l")) << output;
  ASSERT_TRUE(rest.ends_with(ending)) << output;
  rest.remove_prefix(6);
  rest.remove_suffix(ending.size());
  const std::string_view frames[] = {"-", "\\", "|", "/"};
  std::size_t redraws = 0;
  while (!rest.empty()) {
    const std::string expected =
        "\r" + std::string(frames[redraws % 4]) + " Working";
    ASSERT_TRUE(rest.starts_with(expected))
        << "redraw " << redraws << " is torn in: " << output;
    rest.remove_prefix(expected.size());
    ++redraws;
  }
  EXPECT_GE(redraws, 1u);
}

TEST(SpinnerExitTest, ExitWhileTurningLeavesTheLastWholeRedraw) {
  struct ExitCase {
    const char *mode;
    // A spinner of automatic storage is never destroyed: its last redraw
    // stays as it is. One of static storage is destroyed at exit and shows
    // the cursor then.
    std::string_view ending;
  };
  const ExitCase cases[] = {{"automatic", ""}, {"static", "\x1b[?25h"}};
  for (const ExitCase &c : cases) {
    for (int attempt = 0; attempt < 6; ++attempt) {
      SCOPED_TRACE(std::string(c.mode) + " #" + std::to_string(attempt));
      const ProbeRun run = runProbe(c.mode);
      ASSERT_TRUE(run.finished) << "the probe hung";
      ASSERT_TRUE(WIFEXITED(run.status)) << "the probe crashed";
      EXPECT_EQ(WEXITSTATUS(run.status), 3);
      expectWholeOutput(run.output, c.ending);
    }
  }
}

} // namespace
