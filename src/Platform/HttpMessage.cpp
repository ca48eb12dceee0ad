#include "Platform/HttpMessage.h"

#include "Platform/AsciiText.h"

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <stdexcept>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace platform {

class HttpBody::Content {
public:
  virtual ~Content() = default;
  virtual std::uint64_t getSize() const noexcept = 0;
  virtual std::size_t readAt(std::uint64_t offset, char *buffer,
                             std::size_t size) const = 0;
};

namespace {

class BytesContent final : public HttpBody::Content {
public:
  explicit BytesContent(std::string bytes) : bytes(std::move(bytes)) {}
  std::uint64_t getSize() const noexcept override { return bytes.size(); }
  std::size_t readAt(std::uint64_t offset, char *buffer,
                     std::size_t size) const override {
    if (offset >= bytes.size())
      return 0;
    std::size_t count = std::min<std::uint64_t>(size, bytes.size() - offset);
    std::memcpy(buffer, bytes.data() + offset, count);
    return count;
  }

private:
  std::string bytes;
};

// What fstat tells of an open file that any write to it alters: its size,
// its modification time, and its status-change time, which a write moves
// even when the modification time is set back afterwards.
struct FileVersion {
  dev_t device;
  ino_t inode;
  off_t size;
  timespec modified;
  timespec changed;
  nlink_t links;

  explicit FileVersion(const struct stat &status)
      : device(status.st_dev), inode(status.st_ino), size(status.st_size),
        modified(status.st_mtim), changed(status.st_ctim),
        links(status.st_nlink) {}

  bool isSameAs(const FileVersion &opened) const {
    auto equal = [](const timespec &a, const timespec &b) {
      return a.tv_sec == b.tv_sec && a.tv_nsec == b.tv_nsec;
    };
    // Linking or unlinking the file, as replacing it by rename does, moves
    // its status-change time but leaves the bytes the descriptor reads.
    bool relinked = links != opened.links;
    return device == opened.device && inode == opened.inode &&
           size == opened.size && equal(modified, opened.modified) &&
           (relinked || equal(changed, opened.changed));
  }
};

// A regular file, read from disk while it is sent: the file stays open for
// as long as a body refers to it, and reads go by offset, so a request that
// is sent again after a redirect starts over. What is sent must be the file
// as it was at one instant, so every read must bring what the size promised
// and, once the last byte is in, the file must still be the one that was
// opened, unwritten since.
class FileContent final : public HttpBody::Content {
public:
  FileContent(int descriptor, const struct stat &status, std::string path)
      : descriptor(descriptor), opened(status),
        size(static_cast<std::uint64_t>(status.st_size)),
        path(std::move(path)) {}
  ~FileContent() override { ::close(descriptor); }
  FileContent(const FileContent &) = delete;
  FileContent &operator=(const FileContent &) = delete;

  std::uint64_t getSize() const noexcept override { return size; }

  std::size_t readAt(std::uint64_t offset, char *buffer,
                     std::size_t count) const override {
    if (offset >= size)
      return 0;
    count = std::min<std::uint64_t>(count, size - offset);
    std::size_t n = readSome(offset, buffer, count);
    if (n == 0)
      throw changedWhileSent();
    if (offset + n == size)
      checkUnchanged();
    return n;
  }

private:
  std::size_t readSome(std::uint64_t offset, char *buffer,
                       std::size_t count) const {
    for (;;) {
      ssize_t n =
          ::pread(descriptor, buffer, count, static_cast<off_t>(offset));
      if (n >= 0)
        return static_cast<std::size_t>(n);
      if (errno != EINTR)
        throw std::runtime_error("the file '" + path + "' could not be read: " +
                                 std::strerror(errno));
    }
  }

  // A byte past the promised end, or a stat that differs from the one taken
  // at opening, means the file was written while it was being read.
  void checkUnchanged() const {
    char beyond = 0;
    struct stat status {};
    if (readSome(size, &beyond, 1) != 0 || ::fstat(descriptor, &status) != 0 ||
        !FileVersion(status).isSameAs(opened))
      throw changedWhileSent();
  }

  std::runtime_error changedWhileSent() const {
    return std::runtime_error("the file '" + path +
                              "' changed while it was being sent");
  }

  int descriptor;
  FileVersion opened;
  std::uint64_t size;
  std::string path;
};

/// Everything that \p descriptor yields up to its end; absent when a read
/// fails.
std::optional<std::string> readToEnd(int descriptor) {
  std::string bytes;
  char buffer[64 * 1024];
  for (;;) {
    ssize_t n = ::read(descriptor, buffer, sizeof buffer);
    if (n > 0)
      bytes.append(buffer, static_cast<std::size_t>(n));
    else if (n == 0)
      return bytes;
    else if (errno != EINTR)
      return std::nullopt;
  }
}

} // namespace

std::optional<std::string> findHeader(const HttpHeaders &headers,
                                      std::string_view name) {
  std::optional<std::string> value;
  for (const auto &[fieldName, fieldValue] : headers) {
    if (!equalsIgnoringCase(fieldName, name))
      continue;
    if (value)
      value->append(", ").append(fieldValue);
    else
      value = fieldValue;
  }
  return value;
}

HttpBody::HttpBody() = default;

HttpBody::HttpBody(std::shared_ptr<const Content> content)
    : content(std::move(content)) {}

HttpBody HttpBody::fromBytes(std::string bytes) {
  return HttpBody(std::make_shared<BytesContent>(std::move(bytes)));
}

std::optional<HttpBody> HttpBody::openFile(const std::filesystem::path &path) {
  int descriptor = ::open(path.c_str(), O_RDONLY | O_CLOEXEC);
  if (descriptor < 0)
    return std::nullopt;
  struct stat status {};
  if (::fstat(descriptor, &status) != 0) {
    ::close(descriptor);
    return std::nullopt;
  }
  // Only a regular file's size tells how much it holds. A pipe, a device or
  // a file of /proc (whose size reads 0) is read to its end first, and those
  // bytes are the body.
  if (!S_ISREG(status.st_mode) || status.st_size == 0) {
    std::optional<std::string> bytes = readToEnd(descriptor);
    ::close(descriptor);
    if (!bytes)
      return std::nullopt;
    return fromBytes(std::move(*bytes));
  }
  // The file is read once from start to end.
  ::posix_fadvise(descriptor, 0, 0, POSIX_FADV_SEQUENTIAL);
  return HttpBody(
      std::make_shared<FileContent>(descriptor, status, path.string()));
}

std::uint64_t HttpBody::getSize() const noexcept {
  return content ? content->getSize() : 0;
}

std::size_t HttpBody::readAt(std::uint64_t offset, char *buffer,
                             std::size_t size) const {
  return content ? content->readAt(offset, buffer, size) : 0;
}

} // namespace platform
