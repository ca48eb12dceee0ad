#include "Support/PseudoTerminal.h"

#include <csignal>
#include <fstream>
#include <stdexcept>

#include <fcntl.h>
#include <poll.h>
#include <sys/ioctl.h>
#include <sys/wait.h>
#include <termios.h>
#include <unistd.h>

namespace testsupport {
namespace {

using Clock = std::chrono::steady_clock;

void writeAll(int fd, std::string_view bytes) {
  for (ssize_t count; !bytes.empty(); bytes.remove_prefix(count))
    if ((count = ::write(fd, bytes.data(), bytes.size())) <= 0)
      return;
}

} // namespace

PseudoTerminal::PseudoTerminal(std::function<int()> job, unsigned short columns,
                               Group group) {
  // The leader sends the job's pid, and later its wait status, on a pipe.
  int news[2];
  if (::pipe2(news, O_CLOEXEC) != 0 ||
      (masterFd = ::posix_openpt(O_RDWR | O_NOCTTY | O_CLOEXEC)) < 0 ||
      ::grantpt(masterFd) != 0 || ::unlockpt(masterFd) != 0)
    throw std::runtime_error("cannot open a pseudo-terminal");
  winsize size{24, columns, 0, 0};
  ::ioctl(masterFd, TIOCSWINSZ, &size);
  std::fflush(nullptr);
  leaderPid = ::fork();
  if (leaderPid == 0) {
    ::setsid();
    int slaveFd = ::open(::ptsname(masterFd), O_RDWR | O_CLOEXEC);
    ::ioctl(slaveFd, TIOCSCTTY, 0);
    for (int fd = 0; fd <= 2; ++fd)
      ::dup2(slaveFd, fd);
    pid_t child = ::fork();
    if (child == 0) {
      // Take the terminal as the foreground group, as a shell hands it on,
      // with every signal at its default.
      ::setpgid(0, 0);
      std::signal(SIGTTOU, SIG_IGN);
      if (group == Group::foreground)
        ::tcsetpgrp(STDIN_FILENO, ::getpgrp());
      for (int number = 1; number < NSIG; ++number)
        std::signal(number, SIG_DFL);
      int code = job();
      std::fflush(nullptr);
      ::_exit(code);
    }
    int status = 0;
    writeAll(news[1], {reinterpret_cast<char *>(&child), sizeof child});
    ::waitpid(child, &status, 0);
    writeAll(news[1], {reinterpret_cast<char *>(&status), sizeof status});
    ::_exit(0);
  }
  ::close(news[1]);
  newsFd = news[0];
  if (leaderPid < 0 || ::read(newsFd, &jobPid, sizeof jobPid) <= 0)
    throw std::runtime_error("the job did not start");
}

PseudoTerminal::~PseudoTerminal() {
  if (!end)
    ::kill(jobPid, SIGKILL);
  waitForEnd(Timeout(5000));
  ::close(masterFd);
  ::close(newsFd);
}

bool PseudoTerminal::readAvailable(Timeout timeout) {
  pollfd poller{masterFd, POLLIN, 0};
  for (int wait = static_cast<int>(timeout.count());; wait = 0) {
    if (::poll(&poller, 1, wait) <= 0)
      return true;
    char buffer[4096];
    ssize_t count = ::read(masterFd, buffer, sizeof buffer);
    // The master reads EIO once no one holds the other side.
    if (count <= 0)
      return false;
    transcript.append(buffer, static_cast<std::size_t>(count));
  }
}

bool PseudoTerminal::waitFor(std::string_view text, Timeout timeout) {
  auto deadline = Clock::now() + timeout;
  for (bool open = true;; open = readAvailable(Timeout(20))) {
    std::size_t found = transcript.find(text, consumed);
    if (found != std::string::npos) {
      consumed = found + text.size();
      return true;
    }
    if (!open || Clock::now() >= deadline)
      return false;
  }
}

void PseudoTerminal::type(std::string_view bytes) { writeAll(masterFd, bytes); }

void PseudoTerminal::sendSignal(int signal) { ::kill(jobPid, signal); }

bool PseudoTerminal::isEchoOn() const {
  termios settings{};
  ::tcgetattr(masterFd, &settings);
  return (settings.c_lflag & ECHO) != 0;
}

bool PseudoTerminal::waitUntilStopped(Timeout timeout) {
  for (auto deadline = Clock::now() + timeout; Clock::now() < deadline;
       readAvailable(Timeout(10))) {
    // The state letter follows the name in /proc/<pid>/stat.
    std::string stat;
    std::getline(std::ifstream("/proc/" + std::to_string(jobPid) + "/stat"),
                 stat);
    if (stat.find(") T ") != std::string::npos)
      return true;
    if (stat.empty() || stat.find(") Z ") != std::string::npos)
      return false;
  }
  return false;
}

std::optional<ProcessEnd> PseudoTerminal::waitForEnd(Timeout timeout) {
  for (auto deadline = Clock::now() + timeout; !end;
       readAvailable(Timeout(10))) {
    int status = 0;
    if (::waitpid(leaderPid, nullptr, WNOHANG) == leaderPid &&
        ::read(newsFd, &status, sizeof status) == sizeof status)
      end = WIFSIGNALED(status) ? ProcessEnd::killedBy(WTERMSIG(status))
                                : ProcessEnd::exitedWith(WEXITSTATUS(status));
    else if (Clock::now() >= deadline)
      return std::nullopt;
  }
  return end;
}

const std::string &PseudoTerminal::getTranscript() {
  readAvailable(Timeout(0));
  return transcript;
}

ResultPipe::ResultPipe() {
  if (::pipe(fds) != 0)
    throw std::runtime_error("cannot make a pipe");
}

ResultPipe::~ResultPipe() {
  ::close(fds[0]);
  ::close(fds[1]);
}

void ResultPipe::send(const std::optional<std::string> &value) const {
  writeAll(fds[1], value ? "some:" + *value : std::string("none"));
}

std::string ResultPipe::receive() {
  ::close(fds[1]);
  fds[1] = -1;
  std::string received;
  char buffer[4096];
  for (ssize_t count; (count = ::read(fds[0], buffer, sizeof buffer)) > 0;)
    received.append(buffer, static_cast<std::size_t>(count));
  return received;
}

} // namespace testsupport
