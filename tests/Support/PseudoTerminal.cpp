#include "Support/PseudoTerminal.h"

#include <algorithm>
#include <cerrno>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <iterator>
#include <stdexcept>

#include <fcntl.h>
#include <poll.h>
#include <sys/ioctl.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <termios.h>
#include <unistd.h>

namespace testsupport {
namespace {

using Clock = std::chrono::steady_clock;

void writeAll(int fd, std::string_view bytes) {
  while (!bytes.empty()) {
    ssize_t count = ::write(fd, bytes.data(), bytes.size());
    if (count < 0 && errno == EINTR)
      continue;
    if (count <= 0)
      return;
    bytes.remove_prefix(static_cast<std::size_t>(count));
  }
}

int remainingMilliseconds(Clock::time_point deadline) {
  auto left = std::chrono::duration_cast<std::chrono::milliseconds>(
      deadline - Clock::now());
  return left.count() > 0 ? static_cast<int>(left.count()) : 0;
}

ProcessEnd toProcessEnd(int status) {
  if (WIFSIGNALED(status))
    return ProcessEnd::killedBy(WTERMSIG(status));
  return ProcessEnd::exitedWith(WEXITSTATUS(status));
}

// The process state letter of /proc/<pid>/stat; '\0' when it is gone.
char processState(pid_t pid) {
  std::ifstream stat("/proc/" + std::to_string(pid) + "/stat");
  std::string text((std::istreambuf_iterator<char>(stat)),
                   std::istreambuf_iterator<char>());
  std::size_t close = text.rfind(')');
  if (close == std::string::npos || close + 2 >= text.size())
    return '\0';
  return text[close + 2];
}

// Runs in the job's process: take the terminal as the foreground group, the
// way a shell hands it to the command it starts.
void becomeForegroundJob() {
  ::setpgid(0, 0);
  std::signal(SIGTTOU, SIG_IGN);
  ::tcsetpgrp(STDIN_FILENO, ::getpgrp());
  for (int signalNumber : {SIGINT, SIGTERM, SIGHUP, SIGQUIT, SIGTSTP, SIGTTIN,
                           SIGTTOU, SIGCONT, SIGPIPE})
    std::signal(signalNumber, SIG_DFL);
  sigset_t none;
  sigemptyset(&none);
  ::sigprocmask(SIG_SETMASK, &none, nullptr);
  // Tests that kill a job with a core-dumping signal leave no core file.
  rlimit noCore{0, 0};
  ::setrlimit(RLIMIT_CORE, &noCore);
}

// Runs in the session leader: wait for the job and end the same way.
[[noreturn]] void endLikeJob(pid_t job) {
  int status = 0;
  while (::waitpid(job, &status, 0) < 0 && errno == EINTR) {
  }
  if (WIFSIGNALED(status)) {
    int signalNumber = WTERMSIG(status);
    rlimit noCore{0, 0};
    ::setrlimit(RLIMIT_CORE, &noCore);
    std::signal(signalNumber, SIG_DFL);
    sigset_t only;
    sigemptyset(&only);
    sigaddset(&only, signalNumber);
    ::sigprocmask(SIG_UNBLOCK, &only, nullptr);
    ::raise(signalNumber);
    ::_exit(128 + signalNumber);
  }
  ::_exit(WEXITSTATUS(status));
}

} // namespace

std::ostream &operator<<(std::ostream &out, const ProcessEnd &end) {
  if (end.exited)
    return out << "exited with code " << end.exitCode;
  return out << "killed by signal " << end.signal << " ("
             << strsignal(end.signal) << ")";
}

PseudoTerminal::PseudoTerminal(std::function<int()> job) { start(job); }

PseudoTerminal::PseudoTerminal(const std::vector<std::string> &argv,
                               const std::vector<std::string> &environment) {
  if (argv.empty())
    throw std::invalid_argument("no program to run");
  start([&argv, &environment] {
    for (const std::string &entry : environment) {
      std::size_t equals = entry.find('=');
      if (equals != std::string::npos)
        ::setenv(entry.substr(0, equals).c_str(),
                 entry.substr(equals + 1).c_str(), 1);
    }
    std::vector<char *> arguments;
    for (const std::string &argument : argv)
      arguments.push_back(const_cast<char *>(argument.c_str()));
    arguments.push_back(nullptr);
    ::execvp(arguments[0], arguments.data());
    return 127;
  });
}

void PseudoTerminal::start(const std::function<int()> &job) {
  masterFd = ::posix_openpt(O_RDWR | O_NOCTTY | O_CLOEXEC);
  if (masterFd < 0 || ::grantpt(masterFd) != 0 || ::unlockpt(masterFd) != 0)
    throw std::runtime_error("cannot open a pseudo-terminal");
  const char *slaveName = ::ptsname(masterFd);
  if (!slaveName)
    throw std::runtime_error("cannot name the pseudo-terminal");
  std::string slavePath = slaveName;
  winsize size{};
  size.ws_row = 24;
  size.ws_col = 80;
  ::ioctl(masterFd, TIOCSWINSZ, &size);

  int pidPipe[2];
  if (::pipe2(pidPipe, O_CLOEXEC) != 0)
    throw std::runtime_error("cannot make a pipe");
  std::fflush(nullptr);
  leaderPid = ::fork();
  if (leaderPid < 0)
    throw std::runtime_error("cannot fork");
  if (leaderPid == 0) {
    ::close(pidPipe[0]);
    ::setsid();
    int slaveFd = ::open(slavePath.c_str(), O_RDWR);
    if (slaveFd < 0)
      ::_exit(126);
    ::ioctl(slaveFd, TIOCSCTTY, 0);
    for (int fd = 0; fd <= 2; ++fd)
      ::dup2(slaveFd, fd);
    if (slaveFd > 2)
      ::close(slaveFd);
    pid_t child = ::fork();
    if (child == 0) {
      ::close(pidPipe[1]);
      becomeForegroundJob();
      int code = 125;
      try {
        code = job();
      } catch (...) {
      }
      std::fflush(nullptr);
      ::_exit(code);
    }
    ::setpgid(child, child);
    writeAll(
        pidPipe[1],
        std::string_view(reinterpret_cast<const char *>(&child), sizeof child));
    ::close(pidPipe[1]);
    endLikeJob(child);
  }
  ::close(pidPipe[1]);
  pid_t child = -1;
  ssize_t count;
  while ((count = ::read(pidPipe[0], &child, sizeof child)) < 0 &&
         errno == EINTR) {
  }
  ::close(pidPipe[0]);
  if (count != static_cast<ssize_t>(sizeof child) || child <= 0)
    throw std::runtime_error("the job did not start");
  jobPid = child;
}

PseudoTerminal::~PseudoTerminal() {
  if (leaderPid > 0 && !end) {
    ::kill(jobPid, SIGKILL);
    // The leader reaps the job and ends; kill it too if it lingers.
    auto deadline = Clock::now() + std::chrono::seconds(2);
    int status = 0;
    while (::waitpid(leaderPid, &status, WNOHANG) == 0) {
      if (Clock::now() > deadline) {
        ::kill(leaderPid, SIGKILL);
        ::waitpid(leaderPid, &status, 0);
        break;
      }
      readAvailable(std::chrono::milliseconds(10));
    }
  }
  if (masterFd >= 0)
    ::close(masterFd);
}

bool PseudoTerminal::readAvailable(std::chrono::milliseconds timeout) {
  pollfd poller{masterFd, POLLIN, 0};
  int wait = static_cast<int>(timeout.count());
  for (;;) {
    int ready = ::poll(&poller, 1, wait);
    if (ready < 0 && errno == EINTR)
      continue;
    if (ready <= 0)
      return true;
    char buffer[4096];
    ssize_t count = ::read(masterFd, buffer, sizeof buffer);
    if (count < 0 && errno == EINTR)
      continue;
    // A pseudo-terminal's master reads EIO once no one holds the other side.
    if (count <= 0)
      return false;
    transcript.append(buffer, static_cast<std::size_t>(count));
    wait = 0;
  }
}

bool PseudoTerminal::waitFor(std::string_view text,
                             std::chrono::milliseconds timeout) {
  auto deadline = Clock::now() + timeout;
  for (;;) {
    std::size_t found = transcript.find(text, consumed);
    if (found != std::string::npos) {
      consumed = found + text.size();
      return true;
    }
    if (Clock::now() >= deadline)
      return false;
    if (!readAvailable(std::chrono::milliseconds(
            std::min(remainingMilliseconds(deadline), 50)))) {
      found = transcript.find(text, consumed);
      if (found == std::string::npos)
        return false;
      consumed = found + text.size();
      return true;
    }
  }
}

void PseudoTerminal::type(std::string_view bytes) { writeAll(masterFd, bytes); }

void PseudoTerminal::sendSignal(int signal) { ::kill(jobPid, signal); }

bool PseudoTerminal::isEchoOn() const {
  termios settings{};
  if (::tcgetattr(masterFd, &settings) != 0)
    throw std::runtime_error("cannot read the terminal's settings");
  return (settings.c_lflag & ECHO) != 0;
}

bool PseudoTerminal::waitUntilStopped(std::chrono::milliseconds timeout) {
  auto deadline = Clock::now() + timeout;
  for (;;) {
    char state = processState(jobPid);
    if (state == 'T' || state == 't')
      return true;
    if (state == '\0' || state == 'Z' || Clock::now() >= deadline)
      return false;
    readAvailable(std::chrono::milliseconds(10));
  }
}

std::optional<ProcessEnd>
PseudoTerminal::waitForEnd(std::chrono::milliseconds timeout) {
  if (end)
    return end;
  auto deadline = Clock::now() + timeout;
  for (;;) {
    int status = 0;
    pid_t done = ::waitpid(leaderPid, &status, WNOHANG);
    if (done == leaderPid) {
      end = toProcessEnd(status);
      readAvailable(std::chrono::milliseconds(0));
      return end;
    }
    if (Clock::now() >= deadline)
      return std::nullopt;
    readAvailable(std::chrono::milliseconds(10));
  }
}

const std::string &PseudoTerminal::getTranscript() {
  readAvailable(std::chrono::milliseconds(0));
  return transcript;
}

ResultPipe::ResultPipe() {
  int fds[2];
  if (::pipe(fds) != 0)
    throw std::runtime_error("cannot make a pipe");
  readFd = fds[0];
  writeFd = fds[1];
}

ResultPipe::~ResultPipe() {
  if (readFd >= 0)
    ::close(readFd);
  if (writeFd >= 0)
    ::close(writeFd);
}

void ResultPipe::send(const std::optional<std::string> &value) const {
  writeAll(writeFd, value ? "some:" + *value : std::string("none"));
}

std::string ResultPipe::receive() {
  if (writeFd >= 0) {
    ::close(writeFd);
    writeFd = -1;
  }
  std::string received;
  char buffer[4096];
  for (;;) {
    ssize_t count = ::read(readFd, buffer, sizeof buffer);
    if (count < 0 && errno == EINTR)
      continue;
    if (count <= 0)
      break;
    received.append(buffer, static_cast<std::size_t>(count));
  }
  return received;
}

} // namespace testsupport
