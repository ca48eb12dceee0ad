#include "Support/TestSupport.h"

#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <iterator>
#include <memory>
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
  std::unique_ptr<std::FILE, int (*)(std::FILE *)> file(std::tmpfile(),
                                                        std::fclose);
  if (!file)
    throw std::runtime_error("cannot create a capture file");
  std::fflush(stdout);
  // Standard output comes back however body ends.
  struct Restore {
    int saved = dup(1);
    ~Restore() {
      std::fflush(stdout);
      dup2(saved, 1);
      close(saved);
    }
  };
  {
    Restore restore;
    dup2(fileno(file.get()), 1);
    body();
  }
  return readFrom(file.get());
}

std::string readFrom(std::FILE *file) {
  std::string bytes;
  std::rewind(file);
  char chunk[4096];
  while (std::size_t n = std::fread(chunk, 1, sizeof chunk, file))
    bytes.append(chunk, n);
  return bytes;
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
