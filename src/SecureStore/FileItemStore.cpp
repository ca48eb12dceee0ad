#include "SecureStore/FileItemStore.h"

#include "SecureStore/ItemCodec.h"
#include "SecureStore/ItemTable.h"

#include <cerrno>
#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

namespace securestore {

namespace {

OSStatus statusOf(Status::Case errorCase) {
  return Status(errorCase).rawValue();
}

// The status of a write that the file system refused with \p error.
OSStatus writeFailure(int error) {
  switch (error) {
  case EACCES:
  case EPERM:
  case EROFS:
    return statusOf(Status::Case::readOnly);
  case ENOSPC:
  case EDQUOT:
    return statusOf(Status::Case::diskFull);
  default:
    return statusOf(Status::Case::io);
  }
}

class Descriptor {
public:
  explicit Descriptor(int fd) noexcept : fd(fd) {}
  ~Descriptor() {
    if (fd >= 0)
      ::close(fd);
  }
  Descriptor(const Descriptor &) = delete;
  Descriptor &operator=(const Descriptor &) = delete;
  int get() const noexcept { return fd; }
  bool isOpen() const noexcept { return fd >= 0; }
  /// Closes now and reports whether the close went well.
  bool close() noexcept {
    int closing = fd;
    fd = -1;
    return ::close(closing) == 0;
  }

private:
  int fd;
};

// Creates the missing directories of \p directory, each 0700 whatever the
// umask.
OSStatus ensureDirectory(const std::filesystem::path &directory) {
  struct stat info {};
  if (::stat(directory.c_str(), &info) == 0)
    return S_ISDIR(info.st_mode) ? 0 : statusOf(Status::Case::io);
  if (errno != ENOENT)
    return writeFailure(errno);
  if (directory.has_parent_path() && directory.parent_path() != directory)
    if (OSStatus status = ensureDirectory(directory.parent_path()))
      return status;
  if (::mkdir(directory.c_str(), 0700) != 0 && errno != EEXIST)
    return writeFailure(errno);
  if (::chmod(directory.c_str(), 0700) != 0)
    return writeFailure(errno);
  return 0;
}

// The store's directory is only ever its owner's: group and other bits come
// off. Owner bits are left alone, so a directory made read-only stays so.
OSStatus restrictDirectory(const std::filesystem::path &directory) {
  struct stat info {};
  if (::stat(directory.c_str(), &info) != 0)
    return writeFailure(errno);
  if ((info.st_mode & 077) == 0)
    return 0;
  if (::chmod(directory.c_str(), info.st_mode & 0700) != 0)
    return writeFailure(errno);
  return 0;
}

bool writeAll(int fd, const std::string &bytes) {
  std::size_t written = 0;
  while (written < bytes.size()) {
    ssize_t n = ::write(fd, bytes.data() + written, bytes.size() - written);
    if (n < 0 && errno == EINTR)
      continue;
    if (n <= 0)
      return false;
    written += static_cast<std::size_t>(n);
  }
  return true;
}

// Writes \p bytes to a sibling of \p storePath, fsyncs it and renames it
// over the store: a crash leaves the old store or the new one, never half.
OSStatus replaceFile(const std::filesystem::path &storePath,
                     const std::string &bytes) {
  std::filesystem::path directory = storePath.parent_path();
  std::filesystem::path temporary =
      directory / ("." + storePath.filename().string() + ".new");
  Descriptor file(::open(temporary.c_str(),
                         O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC | O_NOFOLLOW,
                         0600));
  if (!file.isOpen())
    return writeFailure(errno);
  auto fail = [&](int error) {
    ::unlink(temporary.c_str());
    return writeFailure(error);
  };
  if (::fchmod(file.get(), 0600) != 0)
    return fail(errno);
  if (!writeAll(file.get(), bytes))
    return fail(errno);
  if (::fsync(file.get()) != 0)
    return fail(errno);
  if (!file.close())
    return fail(errno);
  if (::rename(temporary.c_str(), storePath.c_str()) != 0)
    return fail(errno);
  // Make the rename itself durable. Some file systems refuse to sync a
  // directory; the new store is in place all the same.
  Descriptor parent(
      ::open(directory.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
  if (parent.isOpen())
    ::fsync(parent.get());
  return 0;
}

} // namespace

FileItemStore::FileItemStore(std::filesystem::path storePath)
    : storePath(std::filesystem::absolute(storePath)) {}

std::string FileItemStore::describe() const {
  return "file store at " + storePath.string();
}

OSStatus FileItemStore::load(ItemTable &table) const {
  Descriptor file(::open(storePath.c_str(), O_RDONLY | O_CLOEXEC));
  if (!file.isOpen()) {
    if (errno == ENOENT) {
      table.items.clear();
      return 0;
    }
    return statusOf(Status::Case::io);
  }
  struct stat info {};
  if (::fstat(file.get(), &info) != 0)
    return statusOf(Status::Case::io);
  if (!S_ISREG(info.st_mode))
    return statusOf(Status::Case::invalidKeychain);
  std::string text;
  char buffer[8192];
  for (;;) {
    ssize_t n = ::read(file.get(), buffer, sizeof buffer);
    if (n < 0 && errno == EINTR)
      continue;
    if (n < 0)
      return statusOf(Status::Case::io);
    if (n == 0)
      break;
    text.append(buffer, static_cast<std::size_t>(n));
  }
  return decodeStore(text, table.items);
}

template <typename Change> OSStatus FileItemStore::change(Change &&apply) {
  std::filesystem::path directory = storePath.parent_path();
  if (OSStatus status = ensureDirectory(directory))
    return status;
  if (OSStatus status = restrictDirectory(directory))
    return status;

  std::filesystem::path lockPath = storePath;
  lockPath += ".lock";
  Descriptor lock(::open(lockPath.c_str(),
                         O_RDWR | O_CREAT | O_CLOEXEC | O_NOFOLLOW, 0600));
  if (!lock.isOpen())
    return writeFailure(errno);
  ::fchmod(lock.get(), 0600);
  while (::flock(lock.get(), LOCK_EX) != 0)
    if (errno != EINTR)
      return statusOf(Status::Case::io);

  ItemTable table;
  if (OSStatus status = load(table))
    return status;
  if (OSStatus status = apply(table))
    return status;
  return replaceFile(storePath, encodeStore(table.items));
}

OSStatus FileItemStore::copyMatching(const Dictionary &query,
                                     CopyResult *result) {
  ItemTable table;
  if (OSStatus status = load(table))
    return status;
  return table.copyMatching(query, result);
}

OSStatus FileItemStore::addItem(const Dictionary &attributes) {
  return change([&](ItemTable &table) {
    return table.addItem(attributes, std::chrono::system_clock::now(),
                         makeItemId());
  });
}

OSStatus FileItemStore::updateItems(const Dictionary &query,
                                    const Dictionary &attributesToUpdate) {
  return change([&](ItemTable &table) {
    return table.updateItems(query, attributesToUpdate,
                             std::chrono::system_clock::now());
  });
}

OSStatus FileItemStore::deleteItems(const Dictionary &query) {
  // Deleting what isn't there creates no folder, lock or file.
  if (OSStatus status = copyMatching(query, nullptr);
      status == statusOf(Status::Case::itemNotFound))
    return status;
  return change([&](ItemTable &table) { return table.deleteItems(query); });
}

AccessControlResult
FileItemStore::createAccessControl(const std::string &protection,
                                   std::uint64_t flags) {
  return makeAccessControlWithoutPolicy(protection, flags);
}

} // namespace securestore
