#include "Support/ProcessRunner.h"

#include "Support/TestSupport.h"

#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <sstream>
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

std::vector<char *> pointersTo(std::vector<std::string> &strings) {
  std::vector<char *> pointers;
  for (std::string &s : strings)
    pointers.push_back(s.data());
  pointers.push_back(nullptr);
  return pointers;
}

void writeAll(int fd, const std::string &bytes) {
  for (std::size_t written = 0; written < bytes.size();) {
    ssize_t n = write(fd, bytes.data() + written, bytes.size() - written);
    if (n <= 0 && errno != EINTR)
      return;
    written += n > 0 ? static_cast<std::size_t>(n) : 0;
  }
}

} // namespace

ChildProcess::ChildProcess(const std::filesystem::path &program,
                           const ProcessOptions &options) {
  int in[2], out[2];
  errors = std::tmpfile();
  if (!errors || pipe2(in, O_CLOEXEC) != 0 || pipe2(out, O_CLOEXEC) != 0)
    throw std::runtime_error("cannot create a pipe");
  fcntl(fileno(errors), F_SETFD, FD_CLOEXEC);
  posix_spawn_file_actions_t actions;
  posix_spawn_file_actions_init(&actions);
  posix_spawn_file_actions_adddup2(&actions, in[0], 0);
  posix_spawn_file_actions_adddup2(&actions, out[1], 1);
  posix_spawn_file_actions_adddup2(&actions, fileno(errors), 2);
  std::vector<std::string> argv{program.string()}, envp;
  argv.insert(argv.end(), options.arguments.begin(), options.arguments.end());
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
  int failed = posix_spawn(&child, program.c_str(), &actions, nullptr,
                           argvPointers.data(), envpPointers.data());
  posix_spawn_file_actions_destroy(&actions);
  close(in[0]);
  close(out[1]);
  output = out[0];
  if (failed != 0) {
    close(in[1]);
    close(output);
    std::fclose(errors);
    throw std::runtime_error("cannot start " + program.string() + ": " +
                             std::strerror(failed));
  }
  // A child that has already gone must not kill the test with SIGPIPE; one
  // that writes much before it reads must not block on a full pipe.
  signal(SIGPIPE, SIG_IGN);
  feeder = std::thread([input = options.standardInput, fd = in[1]] {
    writeAll(fd, input);
    close(fd);
  });
}

ChildProcess::~ChildProcess() {
  if (!status) {
    kill(child, SIGKILL);
    wait();
  }
  if (feeder.joinable())
    feeder.join();
  close(output);
  std::fclose(errors);
}

bool ChildProcess::readMore(std::chrono::steady_clock::time_point deadline) {
  char chunk[65536];
  ssize_t n = -1;
  do {
    auto left = std::chrono::duration_cast<std::chrono::milliseconds>(
                    deadline - std::chrono::steady_clock::now())
                    .count();
    pollfd ready{output, POLLIN, 0};
    errno = 0;
    n = left > 0 && poll(&ready, 1, static_cast<int>(left)) > 0
            ? read(output, chunk, sizeof chunk)
            : -1;
  } while (n < 0 && errno == EINTR);
  if (n > 0)
    buffered.append(chunk, static_cast<std::size_t>(n));
  ended = ended || n == 0;
  return n > 0;
}

std::optional<std::string>
ChildProcess::readLine(std::chrono::milliseconds timeout) {
  auto deadline = std::chrono::steady_clock::now() + timeout;
  std::size_t newline;
  while ((newline = buffered.find('\n')) == std::string::npos)
    if (!readMore(deadline))
      return std::nullopt;
  std::string line = buffered.substr(0, newline);
  buffered.erase(0, newline + 1);
  return line;
}

void ChildProcess::sendSignal(int signal) {
  if (!status)
    kill(child, signal);
}

int ChildProcess::wait() {
  int raw = 0;
  while (!status && waitpid(child, &raw, 0) < 0 && errno == EINTR) {
  }
  status = status.value_or(raw);
  return WIFSIGNALED(*status) ? 128 + WTERMSIG(*status) : WEXITSTATUS(*status);
}

ProcessResult ChildProcess::finish(std::chrono::milliseconds timeout) {
  auto deadline = std::chrono::steady_clock::now() + timeout;
  while (readMore(deadline)) {
  }
  ProcessResult result;
  if ((result.timedOut = !ended))
    sendSignal(SIGKILL);
  wait();
  if (WIFSIGNALED(*status))
    result.signal = WTERMSIG(*status);
  else
    result.exitCode = WEXITSTATUS(*status);
  result.standardOutput = std::exchange(buffered, {});
  result.standardError = readFrom(errors);
  return result;
}

ProcessResult runProcess(const std::filesystem::path &program,
                         const ProcessOptions &options) {
  return ChildProcess(program, options).finish(options.timeout);
}

std::optional<std::filesystem::path> findProgram(const std::string &program) {
  const char *path = std::getenv("PATH");
  std::istringstream directories(path ? path : "/usr/bin:/bin");
  for (std::string directory; std::getline(directories, directory, ':');)
    if (access((std::filesystem::path(directory) / program).c_str(), X_OK) == 0)
      return std::filesystem::path(directory) / program;
  return std::nullopt;
}

uid_t unprivilegedUser() { return geteuid() == 0 ? 65534 : geteuid(); }

std::string runUnprivileged(const std::function<std::string()> &body) {
  std::unique_ptr<std::FILE, int (*)(std::FILE *)> file(std::tmpfile(),
                                                        std::fclose);
  std::fflush(nullptr);
  pid_t pid = file ? fork() : -1;
  if (pid == 0) {
    if (geteuid() == 0 &&
        (setgroups(0, nullptr) != 0 || setgid(unprivilegedUser()) != 0 ||
         setuid(unprivilegedUser()) != 0))
      _exit(2);
    try {
      writeAll(fileno(file.get()), body());
    } catch (const std::exception &error) {
      writeAll(fileno(file.get()), std::string("exception: ") + error.what());
    }
    _exit(0);
  }
  int status = 0;
  while (pid > 0 && waitpid(pid, &status, 0) < 0 && errno == EINTR) {
  }
  if (pid < 0 || !WIFEXITED(status) || WEXITSTATUS(status) != 0)
    return "child failed with status " + std::to_string(status);
  return readFrom(file.get());
}

} // namespace testsupport
