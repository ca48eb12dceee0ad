#include "Platform/TerminalSize.h"

#include "Support/TestSupport.h"

#include <gtest/gtest.h>

#include <cstdio>
#include <optional>

#include <fcntl.h>
#include <pty.h>
#include <unistd.h>

namespace platform {
namespace {

// Measures with file descriptor 1 on a terminal of the given size, or on a
// plain file when none is given.
TerminalSize measureWith(std::optional<winsize> size) {
  std::fflush(stdout);
  int saved = dup(1);
  int master = -1;
  int slave = -1;
  testsupport::TempDir dir;
  if (size) {
    winsize wanted = *size;
    if (openpty(&master, &slave, nullptr, nullptr, &wanted) != 0) {
      close(saved);
      throw std::runtime_error("no pseudo-terminal");
    }
  } else {
    slave = open((dir.path() / "out").c_str(), O_CREAT | O_WRONLY, 0600);
  }
  dup2(slave, 1);
  TerminalSize measured = getTerminalSize();
  dup2(saved, 1);
  close(saved);
  close(slave);
  if (master >= 0)
    close(master);
  return measured;
}

TEST(TerminalSizeTest, ReadsTheWidthOfTheTerminalOnStandardOutput) {
  struct Case {
    std::optional<winsize> size;
    std::size_t columns, rows;
  };
  const Case cases[] = {
      {winsize{40, 100, 0, 0}, 100, 40},
      {winsize{0, 0, 0, 0}, 80, 25},
      {winsize{30, 0, 0, 0}, 80, 30},
      {std::nullopt, 80, 25},
  };
  for (const Case &c : cases) {
    SCOPED_TRACE(c.columns);
    TerminalSize size = measureWith(c.size);
    EXPECT_EQ(size.columns, c.columns);
    EXPECT_EQ(size.rows, c.rows);
  }
}

} // namespace
} // namespace platform
