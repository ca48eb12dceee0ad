#ifndef KESTRUNECLI_TESTS_SUPPORT_TESTSUPPORT_H
#define KESTRUNECLI_TESTS_SUPPORT_TESTSUPPORT_H

#include <cstdio>
#include <filesystem>
#include <functional>
#include <string>

namespace testsupport {

/// A fresh directory under \p parent (the system's temporary directory by
/// default), removed with everything in it when the object goes away.
class TempDir {
public:
  explicit TempDir(const std::filesystem::path &parent =
                       std::filesystem::temp_directory_path());
  ~TempDir();
  TempDir(const TempDir &) = delete;
  TempDir &operator=(const TempDir &) = delete;
  const std::filesystem::path &path() const noexcept { return root; }

private:
  std::filesystem::path root;
};

/// Runs \p body with file descriptor 1 sent to a file and returns every byte
/// written to standard output meanwhile (stdio is flushed around it).
std::string captureStdout(const std::function<void()> &body);

/// Everything in \p file, read from its start.
std::string readFrom(std::FILE *file);

/// Writes \p bytes to \p path, replacing the file.
void writeFile(const std::filesystem::path &path, const std::string &bytes);

/// Reads the whole file at \p path; empty when it can't be read.
std::string readFile(const std::filesystem::path &path);

} // namespace testsupport

#endif
