#include "Support/TestSupport.h"

#include <cstdio>
#include <cstdlib>
#include <fcntl.h>
#include <fstream>
#include <iterator>
#include <sstream>
#include <stdexcept>
#include <unistd.h>

namespace testsupport {

TempDir::TempDir(const std::filesystem::path &parent) {
  std::string pattern = (parent / "kestrune-test-XXXXXX").string();
  if (!mkdtemp(pattern.data()))
    throw std::runtime_error("cannot create a temporary directory");
  root = pattern;
}

TempDir::~TempDir() {
  std::error_code ignored;
  std::filesystem::permissions(root, std::filesystem::perms::owner_all,
                               std::filesystem::perm_options::add, ignored);
  std::filesystem::remove_all(root, ignored);
}

std::string captureStdout(const std::function<void()> &body) {
  std::fflush(stdout);
  char name[] = "/tmp/kestrune-stdout-XXXXXX";
  int fd = mkstemp(name);
  if (fd < 0)
    throw std::runtime_error("cannot create a capture file");
  unlink(name);
  int saved = dup(1);
  dup2(fd, 1);
  try {
    body();
  } catch (...) {
    std::fflush(stdout);
    dup2(saved, 1);
    close(saved);
    close(fd);
    throw;
  }
  std::fflush(stdout);
  dup2(saved, 1);
  close(saved);
  std::string captured;
  lseek(fd, 0, SEEK_SET);
  char buffer[4096];
  ssize_t n;
  while ((n = read(fd, buffer, sizeof buffer)) > 0)
    captured.append(buffer, static_cast<std::size_t>(n));
  close(fd);
  return captured;
}

void writeFile(const std::filesystem::path &path, const std::string &bytes) {
  std::ofstream out(path, std::ios::binary | std::ios::trunc);
  out.write(bytes.data(), static_cast<std::streamsize>(bytes.size()));
}

std::string readFile(const std::filesystem::path &path) {
  std::error_code ignored;
  if (!std::filesystem::is_regular_file(path, ignored))
    return {};
  std::ifstream in(path, std::ios::binary);
  return std::string(std::istreambuf_iterator<char>(in),
                     std::istreambuf_iterator<char>());
}

} // namespace testsupport
