#include "Platform/HttpMessage.h"

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

bool equalsIgnoringCase(std::string_view a, std::string_view b) {
  if (a.size() != b.size())
    return false;
  for (std::size_t i = 0; i < a.size(); ++i) {
    auto lower = [](char c) {
      return (c >= 'A' && c <= 'Z') ? static_cast<char>(c - 'A' + 'a') : c;
    };
    if (lower(a[i]) != lower(b[i]))
      return false;
  }
  return true;
}

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

// The file stays open for as long as a body refers to it; reads go by
// offset, so a request that is sent again after a redirect starts over.
class FileContent final : public HttpBody::Content {
public:
  FileContent(int descriptor, std::uint64_t size, std::string path)
      : descriptor(descriptor), size(size), path(std::move(path)) {}
  ~FileContent() override { ::close(descriptor); }
  FileContent(const FileContent &) = delete;
  FileContent &operator=(const FileContent &) = delete;

  std::uint64_t getSize() const noexcept override { return size; }

  std::size_t readAt(std::uint64_t offset, char *buffer,
                     std::size_t count) const override {
    if (offset >= size)
      return 0;
    count = std::min<std::uint64_t>(count, size - offset);
    for (;;) {
      ssize_t n =
          ::pread(descriptor, buffer, count, static_cast<off_t>(offset));
      if (n > 0)
        return static_cast<std::size_t>(n);
      if (n < 0 && errno == EINTR)
        continue;
      if (n == 0)
        throw std::runtime_error("the file '" + path +
                                 "' became shorter while it was being sent");
      throw std::runtime_error("the file '" + path +
                               "' could not be read: " + std::strerror(errno));
    }
  }

private:
  int descriptor;
  std::uint64_t size;
  std::string path;
};

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
  if (::fstat(descriptor, &status) != 0 || !S_ISREG(status.st_mode)) {
    ::close(descriptor);
    return std::nullopt;
  }
  // The file is read once from start to end.
  ::posix_fadvise(descriptor, 0, 0, POSIX_FADV_SEQUENTIAL);
  return HttpBody(std::make_shared<FileContent>(
      descriptor, static_cast<std::uint64_t>(status.st_size), path.string()));
}

std::uint64_t HttpBody::getSize() const noexcept {
  return content ? content->getSize() : 0;
}

std::size_t HttpBody::readAt(std::uint64_t offset, char *buffer,
                             std::size_t size) const {
  return content ? content->readAt(offset, buffer, size) : 0;
}

} // namespace platform
