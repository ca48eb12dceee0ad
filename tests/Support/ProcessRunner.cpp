#include "Support/ProcessRunner.h"

#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <stdexcept>
#include <utility>

#include <fcntl.h>
#include <grp.h>
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

std::vector<char *> pointersTo(std::vector<std::string> &strings) {
  std::vector<char *> pointers;
  for (std::string &s : strings)
    pointers.push_back(s.data());
  pointers.push_back(nullptr);
  return pointers;
}

// Starts \p program with \p input, \p output and \p error (-1: /dev/null) as
// its standard descriptors.
pid_t spawn(const std::filesystem::path &program, const ProcessOptions &options,
            int input, int output, int error) {
  posix_spawn_file_actions_t actions;
  posix_spawn_file_actions_init(&actions);
  posix_spawn_file_actions_adddup2(&actions, input, 0);
  posix_spawn_file_actions_adddup2(&actions, output, 1);
  if (error < 0)
    posix_spawn_file_actions_addopen(&actions, 2, "/dev/null", O_WRONLY, 0);
  else if (error != 2)
    posix_spawn_file_actions_adddup2(&actions, error, 2);
  if (options.workingDirectory)
    posix_spawn_file_actions_addchdir_np(&actions,
                                         options.workingDirectory->c_str());

  std::vector<std::string> argv{program.string()};
  argv.insert(argv.end(), options.arguments.begin(), options.arguments.end());
  std::vector<std::string> envp;
  for (char **entry = environ; entry && *entry; ++entry) {
    std::string text(*entry);
    if (!options.environment.count(text.substr(0, text.find('='))))
      envp.push_back(text);
  }
  for (const auto &[name, value] : options.environment)
    if (value)
      envp.push_back(name + "=" + *value);
  std::vector<char *> argvPointers = pointersTo(argv);
  std::vector<char *> envpPointers = pointersTo(envp);

  pid_t pid = 0;
  int failed = posix_spawn(&pid, program.c_str(), &actions, nullptr,
                           argvPointers.data(), envpPointers.data());
  posix_spawn_file_actions_destroy(&actions);
  if (failed != 0)
    throw std::runtime_error("cannot start " + program.string() + ": " +
                             std::strerror(failed));
  // A child that has already gone must not kill the test with SIGPIPE.
  signal(SIGPIPE, SIG_IGN);
  return pid;
}

int waitFor(pid_t pid) {
  int status = 0;
  while (waitpid(pid, &status, 0) < 0 && errno == EINTR) {
  }
  return status;
}

} // namespace

ProcessResult runProcess(const std::filesystem::path &program,
                         const ProcessOptions &options) {
  Pipe in, out, err;
  pid_t pid = spawn(program, options, in.ends[0], out.ends[1], err.ends[1]);
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
      if (n > 0)
        sink.append(buffer, static_cast<std::size_t>(n));
      else if (n == 0 || errno != EINTR)
        (fd.fd == out.ends[0] ? out : err).closeEnd(0);
    }
  }
  in.closeEnd(1);

  int status = waitFor(pid);
  if (WIFEXITED(status))
    result.exitCode = WEXITSTATUS(status);
  else if (WIFSIGNALED(status))
    result.signal = WTERMSIG(status);
  return result;
}

std::optional<std::filesystem::path> findProgram(const std::string &program) {
  const char *path = std::getenv("PATH");
  std::string directories = path ? path : "/usr/bin:/bin";
  std::size_t start = 0;
  while (start <= directories.size()) {
    std::size_t end = directories.find(':', start);
    if (end == std::string::npos)
      end = directories.size();
    std::filesystem::path candidate =
        std::filesystem::path(directories.substr(start, end - start)) / program;
    if (access(candidate.c_str(), X_OK) == 0)
      return candidate;
    start = end + 1;
  }
  return std::nullopt;
}

ChildProcess::ChildProcess(const std::filesystem::path &program,
                           const ProcessOptions &options, bool quiet) {
  Pipe in, out;
  child = spawn(program, options, in.ends[0], out.ends[1], quiet ? -1 : 2);
  in.closeEnd(0);
  out.closeEnd(1);
  std::size_t written = 0;
  const std::string &input = options.standardInput;
  while (written < input.size()) {
    ssize_t n =
        write(in.ends[1], input.data() + written, input.size() - written);
    if (n <= 0)
      break;
    written += static_cast<std::size_t>(n);
  }
  std::swap(output, out.ends[0]);
}

ChildProcess::~ChildProcess() {
  if (!status) {
    kill(child, SIGKILL);
    wait();
  }
  close(output);
}

std::optional<std::string>
ChildProcess::readLine(std::chrono::milliseconds timeout) {
  auto deadline = std::chrono::steady_clock::now() + timeout;
  for (;;) {
    std::size_t newline = buffered.find('\n');
    if (newline != std::string::npos) {
      std::string line = buffered.substr(0, newline);
      buffered.erase(0, newline + 1);
      return line;
    }
    auto left = std::chrono::duration_cast<std::chrono::milliseconds>(
        deadline - std::chrono::steady_clock::now());
    if (left.count() <= 0)
      return std::nullopt;
    pollfd ready{output, POLLIN, 0};
    int polled = poll(&ready, 1, static_cast<int>(left.count()));
    if (polled < 0 && errno == EINTR)
      continue;
    char chunk[4096];
    ssize_t n = polled > 0 ? read(output, chunk, sizeof chunk) : -1;
    if (n <= 0)
      return std::nullopt;
    buffered.append(chunk, static_cast<std::size_t>(n));
  }
}

std::string ChildProcess::readAll() {
  std::string all;
  while (std::optional<std::string> line = readLine(std::chrono::minutes(2)))
    all += *line + "\n";
  return all + std::exchange(buffered, {});
}

void ChildProcess::sendSignal(int signal) {
  if (!status)
    kill(child, signal);
}

int ChildProcess::wait() {
  if (!status) {
    int raw = waitFor(child);
    status = WIFSIGNALED(raw) ? 128 + WTERMSIG(raw) : WEXITSTATUS(raw);
  }
  return *status;
}

uid_t unprivilegedUser() { return geteuid() == 0 ? 65534 : geteuid(); }
gid_t unprivilegedGroup() { return geteuid() == 0 ? 65534 : getegid(); }

std::string runUnprivileged(const std::function<std::string()> &body) {
  Pipe channel;
  std::fflush(nullptr);
  pid_t pid = fork();
  if (pid < 0)
    throw std::runtime_error("cannot fork");
  if (pid == 0) {
    if (geteuid() == 0 &&
        (setgroups(0, nullptr) != 0 || setgid(unprivilegedGroup()) != 0 ||
         setuid(unprivilegedUser()) != 0))
      _exit(2);
    std::string result;
    try {
      result = body();
    } catch (const std::exception &error) {
      result = std::string("exception: ") + error.what();
    }
    for (std::size_t written = 0; written < result.size();) {
      ssize_t n = write(channel.ends[1], result.data() + written,
                        result.size() - written);
      if (n <= 0)
        break;
      written += static_cast<std::size_t>(n);
    }
    _exit(0);
  }
  channel.closeEnd(1);
  std::string result;
  char chunk[4096];
  ssize_t n;
  while ((n = read(channel.ends[0], chunk, sizeof chunk)) > 0)
    result.append(chunk, static_cast<std::size_t>(n));
  int status = waitFor(pid);
  if (!WIFEXITED(status) || WEXITSTATUS(status) != 0)
    return "child failed with status " + std::to_string(status);
  return result;
}

} // namespace testsupport
