#include "Support/ProcessRunner.h"

#include <cerrno>
#include <cstring>
#include <stdexcept>

#include <fcntl.h>
#include <poll.h>
#include <signal.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

extern char **environ;

namespace testsupport {
namespace {

// A pipe whose ends close themselves.
struct Pipe {
  int ends[2] = {-1, -1};
  Pipe() {
    if (pipe2(ends, O_CLOEXEC) != 0)
      throw std::runtime_error("cannot create a pipe");
  }
  ~Pipe() {
    closeEnd(0);
    closeEnd(1);
  }
  void closeEnd(int which) {
    if (ends[which] >= 0)
      close(ends[which]);
    ends[which] = -1;
  }
};

std::vector<std::string> environmentFor(
    const std::map<std::string, std::optional<std::string>> &changes) {
  std::vector<std::string> entries;
  for (char **entry = environ; entry && *entry; ++entry) {
    std::string text(*entry);
    std::string name = text.substr(0, text.find('='));
    if (!changes.count(name))
      entries.push_back(text);
  }
  for (const auto &[name, value] : changes)
    if (value)
      entries.push_back(name + "=" + *value);
  return entries;
}

std::vector<char *> pointersTo(std::vector<std::string> &strings) {
  std::vector<char *> pointers;
  for (std::string &s : strings)
    pointers.push_back(s.data());
  pointers.push_back(nullptr);
  return pointers;
}

} // namespace

ProcessResult runProcess(const std::filesystem::path &program,
                         const ProcessOptions &options) {
  Pipe in, out, err;
  posix_spawn_file_actions_t actions;
  posix_spawn_file_actions_init(&actions);
  posix_spawn_file_actions_adddup2(&actions, in.ends[0], 0);
  posix_spawn_file_actions_adddup2(&actions, out.ends[1], 1);
  posix_spawn_file_actions_adddup2(&actions, err.ends[1], 2);
  if (options.workingDirectory)
    posix_spawn_file_actions_addchdir_np(&actions,
                                         options.workingDirectory->c_str());

  std::vector<std::string> argv{program.string()};
  argv.insert(argv.end(), options.arguments.begin(), options.arguments.end());
  std::vector<std::string> envp = environmentFor(options.environment);
  std::vector<char *> argvPointers = pointersTo(argv);
  std::vector<char *> envpPointers = pointersTo(envp);

  pid_t pid = 0;
  int spawnError = posix_spawn(&pid, program.c_str(), &actions, nullptr,
                               argvPointers.data(), envpPointers.data());
  posix_spawn_file_actions_destroy(&actions);
  if (spawnError != 0)
    throw std::runtime_error("cannot start " + program.string() + ": " +
                             std::strerror(spawnError));
  in.closeEnd(0);
  out.closeEnd(1);
  err.closeEnd(1);

  // Feed standard input and drain both outputs together, so that a program
  // that writes much before it reads never blocks on a full pipe.
  ProcessResult result;
  std::size_t written = 0;
  if (options.standardInput.empty())
    in.closeEnd(1);
  else
    fcntl(in.ends[1], F_SETFL, O_NONBLOCK);
  signal(SIGPIPE, SIG_IGN);

  const auto deadline = std::chrono::steady_clock::now() + options.timeout;
  while (out.ends[0] >= 0 || err.ends[0] >= 0) {
    std::vector<pollfd> fds;
    if (out.ends[0] >= 0)
      fds.push_back({out.ends[0], POLLIN, 0});
    if (err.ends[0] >= 0)
      fds.push_back({err.ends[0], POLLIN, 0});
    if (in.ends[1] >= 0)
      fds.push_back({in.ends[1], POLLOUT, 0});
    auto left = std::chrono::duration_cast<std::chrono::milliseconds>(
        deadline - std::chrono::steady_clock::now());
    if (left.count() <= 0) {
      result.timedOut = true;
      kill(pid, SIGKILL);
      break;
    }
    int ready = poll(fds.data(), fds.size(), static_cast<int>(left.count()));
    if (ready < 0 && errno == EINTR)
      continue;
    if (ready < 0)
      break;
    for (const pollfd &fd : fds) {
      if (fd.revents == 0)
        continue;
      if (fd.fd == in.ends[1]) {
        ssize_t n = write(fd.fd, options.standardInput.data() + written,
                          options.standardInput.size() - written);
        if (n > 0)
          written += static_cast<std::size_t>(n);
        if (n < 0 || written == options.standardInput.size())
          in.closeEnd(1);
        continue;
      }
      char buffer[65536];
      ssize_t n = read(fd.fd, buffer, sizeof buffer);
      std::string &sink =
          fd.fd == out.ends[0] ? result.standardOutput : result.standardError;
      if (n > 0) {
        sink.append(buffer, static_cast<std::size_t>(n));
      } else if (n == 0 || errno != EINTR) {
        if (fd.fd == out.ends[0])
          out.closeEnd(0);
        else
          err.closeEnd(0);
      }
    }
  }
  in.closeEnd(1);

  int status = 0;
  while (waitpid(pid, &status, 0) < 0 && errno == EINTR) {
  }
  if (WIFEXITED(status)) {
    result.exitCode = WEXITSTATUS(status);
  } else if (WIFSIGNALED(status)) {
    result.signal = WTERMSIG(status);
  }
  return result;
}

} // namespace testsupport
