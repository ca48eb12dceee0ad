#include "TestProcess.h"

#include <cerrno>
#include <csignal>
#include <cstdlib>
#include <cstring>
#include <fcntl.h>
#include <filesystem>
#include <grp.h>
#include <poll.h>
#include <spawn.h>
#include <stdexcept>
#include <sys/wait.h>
#include <unistd.h>

extern char **environ;

namespace testprocess {

namespace {

std::vector<std::string> buildEnvironment(const Environment &changes) {
  std::map<std::string, std::string> merged;
  for (char **entry = environ; *entry; ++entry) {
    std::string text = *entry;
    std::size_t equals = text.find('=');
    if (equals != std::string::npos)
      merged[text.substr(0, equals)] = text.substr(equals + 1);
  }
  for (const auto &[name, value] : changes) {
    if (value)
      merged[name] = *value;
    else
      merged.erase(name);
  }
  std::vector<std::string> entries;
  for (const auto &[name, value] : merged)
    entries.push_back(name + "=" + value);
  return entries;
}

std::vector<char *> pointersTo(std::vector<std::string> &texts) {
  std::vector<char *> pointers;
  for (std::string &text : texts)
    pointers.push_back(text.data());
  pointers.push_back(nullptr);
  return pointers;
}

int decodeStatus(int raw) {
  if (WIFEXITED(raw))
    return WEXITSTATUS(raw);
  if (WIFSIGNALED(raw))
    return 128 + WTERMSIG(raw);
  return -1;
}

} // namespace

std::optional<std::string> findProgram(const std::string &program) {
  const char *path = std::getenv("PATH");
  std::string directories = path ? path : "/usr/bin:/bin";
  std::size_t start = 0;
  while (start <= directories.size()) {
    std::size_t end = directories.find(':', start);
    if (end == std::string::npos)
      end = directories.size();
    std::filesystem::path candidate =
        std::filesystem::path(directories.substr(start, end - start)) / program;
    if (::access(candidate.c_str(), X_OK) == 0)
      return candidate.string();
    start = end + 1;
  }
  return std::nullopt;
}

ChildProcess::ChildProcess(const std::vector<std::string> &arguments,
                           const Environment &environment,
                           const std::string &input, bool quiet) {
  int outputPipe[2];
  int inputPipe[2];
  if (::pipe2(outputPipe, O_CLOEXEC) != 0 || ::pipe2(inputPipe, O_CLOEXEC) != 0)
    throw std::runtime_error("cannot make a pipe");
  posix_spawn_file_actions_t actions;
  posix_spawn_file_actions_init(&actions);
  posix_spawn_file_actions_adddup2(&actions, inputPipe[0], 0);
  posix_spawn_file_actions_adddup2(&actions, outputPipe[1], 1);
  if (quiet)
    posix_spawn_file_actions_addopen(&actions, 2, "/dev/null", O_WRONLY, 0);
  std::vector<std::string> argumentTexts = arguments;
  std::vector<std::string> environmentTexts = buildEnvironment(environment);
  std::vector<char *> argv = pointersTo(argumentTexts);
  std::vector<char *> envp = pointersTo(environmentTexts);
  int failed =
      ::posix_spawn(&pid, argv[0], &actions, nullptr, argv.data(), envp.data());
  posix_spawn_file_actions_destroy(&actions);
  ::close(outputPipe[1]);
  ::close(inputPipe[0]);
  output = outputPipe[0];
  if (failed != 0) {
    ::close(inputPipe[1]);
    ::close(output);
    throw std::runtime_error("cannot start " + arguments[0] + ": " +
                             std::strerror(failed));
  }
  // A child that has already gone must not kill the test with SIGPIPE.
  std::signal(SIGPIPE, SIG_IGN);
  std::size_t written = 0;
  while (written < input.size()) {
    ssize_t n =
        ::write(inputPipe[1], input.data() + written, input.size() - written);
    if (n <= 0)
      break;
    written += static_cast<std::size_t>(n);
  }
  ::close(inputPipe[1]);
}

ChildProcess::~ChildProcess() {
  if (!status) {
    ::kill(pid, SIGKILL);
    wait();
  }
  if (output >= 0)
    ::close(output);
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
    int polled = ::poll(&ready, 1, static_cast<int>(left.count()));
    if (polled < 0 && errno == EINTR)
      continue;
    if (polled <= 0)
      return std::nullopt;
    char chunk[4096];
    ssize_t n = ::read(output, chunk, sizeof chunk);
    if (n <= 0)
      return std::nullopt;
    buffered.append(chunk, static_cast<std::size_t>(n));
  }
}

std::string ChildProcess::readAll() {
  std::string all = std::move(buffered);
  buffered.clear();
  char chunk[4096];
  ssize_t n;
  while ((n = ::read(output, chunk, sizeof chunk)) != 0) {
    if (n < 0 && errno == EINTR)
      continue;
    if (n < 0)
      break;
    all.append(chunk, static_cast<std::size_t>(n));
  }
  return all;
}

void ChildProcess::sendSignal(int signal) {
  if (!status)
    ::kill(pid, signal);
}

int ChildProcess::wait() {
  if (status)
    return *status;
  int raw = 0;
  while (::waitpid(pid, &raw, 0) < 0 && errno == EINTR) {
  }
  status = decodeStatus(raw);
  return *status;
}

std::pair<int, std::string>
runProgram(const std::vector<std::string> &arguments,
           const Environment &environment, const std::string &input,
           bool quiet) {
  ChildProcess child(arguments, environment, input, quiet);
  std::string output = child.readAll();
  return {child.wait(), output};
}

uid_t unprivilegedUser() { return ::geteuid() == 0 ? 65534 : ::geteuid(); }
gid_t unprivilegedGroup() { return ::geteuid() == 0 ? 65534 : ::getegid(); }

std::string runUnprivileged(const std::function<std::string()> &body) {
  int channel[2];
  if (::pipe(channel) != 0)
    throw std::runtime_error("cannot make a pipe");
  std::fflush(stdout);
  pid_t child = ::fork();
  if (child < 0)
    throw std::runtime_error("cannot fork");
  if (child == 0) {
    ::close(channel[0]);
    if (::geteuid() == 0 &&
        (::setgroups(0, nullptr) != 0 || ::setgid(unprivilegedGroup()) != 0 ||
         ::setuid(unprivilegedUser()) != 0))
      ::_exit(2);
    std::string result;
    try {
      result = body();
    } catch (const std::exception &error) {
      result = std::string("exception: ") + error.what();
    }
    std::size_t written = 0;
    while (written < result.size()) {
      ssize_t n =
          ::write(channel[1], result.data() + written, result.size() - written);
      if (n <= 0)
        break;
      written += static_cast<std::size_t>(n);
    }
    ::_exit(0);
  }
  ::close(channel[1]);
  std::string result;
  char chunk[4096];
  ssize_t n;
  while ((n = ::read(channel[0], chunk, sizeof chunk)) > 0)
    result.append(chunk, static_cast<std::size_t>(n));
  ::close(channel[0]);
  int raw = 0;
  ::waitpid(child, &raw, 0);
  if (decodeStatus(raw) != 0)
    return "child failed with status " + std::to_string(decodeStatus(raw));
  return result;
}

} // namespace testprocess
