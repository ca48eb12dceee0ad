#include "SecureStore/FileItemStore.h"

#include "SecureStore/ItemCodec.h"
#include "SecureStore/ItemTable.h"
#include "SecureStore/StoreLock.h"

#include <cerrno>
#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

namespace securestore {

namespace {

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

// The store's directory must be the user's own, and nobody else may write
// it: whoever can put files there can put a store of theirs in place of the
// user's. Group and other bits that only allow reading come off. Owner bits
// are left alone, so a directory made read-only stays so.
OSStatus restrictDirectory(const std::filesystem::path &directory) {
  struct stat info {};
  if (::stat(directory.c_str(), &info) != 0)
    return statusOfWriteError(errno);
  if (!isPrivateToUser(info.st_uid, info.st_mode))
    return statusOf(Status::Case::io);
  if ((info.st_mode & 077) == 0)
    return 0;
  if (::chmod(directory.c_str(), info.st_mode & 0700) != 0)
    return statusOfWriteError(errno);
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

// Writes \p bytes to a new sibling of \p storePath, fsyncs it and renames it
// over the store: a crash leaves the old store or the new one, never half.
// The sibling's name can't be guessed, and it is created afresh (never
// through a link or over a file that is there), so nobody can have it
// written elsewhere or read it while it is written.
OSStatus replaceFile(const std::filesystem::path &storePath,
                     const std::string &bytes) {
  std::filesystem::path directory = storePath.parent_path();
  std::filesystem::path temporary =
      directory / ("." + storePath.filename().string() + "." + makeItemId());
  Descriptor file(::open(temporary.c_str(),
                         O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC | O_NOFOLLOW,
                         0600));
  if (!file.isOpen())
    return statusOfWriteError(errno);
  auto fail = [&](int error) {
    ::unlink(temporary.c_str());
    return statusOfWriteError(error);
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

// The items of one reading of the store, for the calls of a transaction or
// a snapshot. Every call answers \p failure when the reading failed; writes
// are kept in the table, for the transaction to store at its end.
class TableItemStore final : public ItemStore {
public:
  TableItemStore(ItemTable &table, OSStatus failure, std::string description)
      : table(table), failure(failure), description(std::move(description)) {}

  bool isChanged() const noexcept { return changed; }

  OSStatus copyMatching(const Dictionary &query, CopyResult *result) override {
    return failure ? failure : table.copyMatching(query, result);
  }
  OSStatus addItem(const Dictionary &attributes) override {
    return noteChange(failure ? failure
                              : table.addItem(attributes,
                                              std::chrono::system_clock::now(),
                                              makeItemId()));
  }
  OSStatus updateItems(const Dictionary &query,
                       const Dictionary &attributesToUpdate) override {
    return noteChange(
        failure ? failure
                : table.updateItems(query, attributesToUpdate,
                                    std::chrono::system_clock::now()));
  }
  OSStatus deleteItems(const Dictionary &query) override {
    return noteChange(failure ? failure : table.deleteItems(query));
  }
  AccessControlResult createAccessControl(const std::string &protection,
                                          std::uint64_t flags) override {
    return makeAccessControlWithoutPolicy(protection, flags);
  }
  std::string describe() const override { return description; }

private:
  OSStatus noteChange(OSStatus status) {
    changed = changed || status == 0;
    return status;
  }

  ItemTable &table;
  OSStatus failure;
  std::string description;
  bool changed = false;
};

} // namespace

FileItemStore::FileItemStore(std::filesystem::path storePath)
    : storePath(std::filesystem::absolute(storePath)) {}

std::string FileItemStore::describe() const {
  return "file store at " + storePath.string();
}

OSStatus FileItemStore::load(ItemTable &table) const {
  table.items.clear();
  struct stat folder {};
  if (::stat(storePath.parent_path().c_str(), &folder) != 0)
    return errno == ENOENT ? 0 : statusOf(Status::Case::io);
  if (!isPrivateToUser(folder.st_uid, folder.st_mode))
    return statusOf(Status::Case::io);
  Descriptor file(::open(storePath.c_str(), O_RDONLY | O_CLOEXEC));
  if (!file.isOpen())
    return errno == ENOENT ? 0 : statusOf(Status::Case::io);
  struct stat info {};
  if (::fstat(file.get(), &info) != 0)
    return statusOf(Status::Case::io);
  if (!S_ISREG(info.st_mode))
    return statusOf(Status::Case::invalidKeychain);
  if (!isPrivateToUser(info.st_uid, info.st_mode))
    return statusOf(Status::Case::io);
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

OSStatus
FileItemStore::transact(const std::function<OSStatus(ItemStore &)> &change) {
  std::filesystem::path directory = storePath.parent_path();
  if (OSStatus status = ensureDirectory(directory))
    return status;
  if (OSStatus status = restrictDirectory(directory))
    return status;
  std::filesystem::path lockPath = storePath;
  lockPath += ".lock";
  StoreLock lock;
  if (OSStatus status = lock.acquire(lockPath, StoreLock::Mode::exclusive))
    return status;

  // From the first read to the rename, the lock keeps every other change
  // out: what the change read is what it replaces.
  ItemTable table;
  OSStatus loaded = load(table);
  TableItemStore view(table, loaded, describe());
  if (OSStatus status = change(view))
    return status;
  if (!view.isChanged())
    return 0;
  return replaceFile(storePath, encodeStore(table.items));
}

void FileItemStore::readSnapshot(const std::function<void(ItemStore &)> &read) {
  // One reading serves every call: a rename replaces the store whole, so it
  // is one state of the store, whatever changes come after it.
  ItemTable table;
  OSStatus loaded = load(table);
  TableItemStore view(table, loaded, describe());
  read(view);
}

OSStatus FileItemStore::copyMatching(const Dictionary &query,
                                     CopyResult *result) {
  ItemTable table;
  if (OSStatus status = load(table))
    return status;
  return table.copyMatching(query, result);
}

OSStatus FileItemStore::addItem(const Dictionary &attributes) {
  return transact([&](ItemStore &store) { return store.addItem(attributes); });
}

OSStatus FileItemStore::updateItems(const Dictionary &query,
                                    const Dictionary &attributesToUpdate) {
  return transact([&](ItemStore &store) {
    return store.updateItems(query, attributesToUpdate);
  });
}

OSStatus FileItemStore::deleteItems(const Dictionary &query) {
  // Deleting what isn't there creates no folder, lock or file.
  if (OSStatus status = copyMatching(query, nullptr);
      status == statusOf(Status::Case::itemNotFound))
    return status;
  return transact([&](ItemStore &store) { return store.deleteItems(query); });
}

AccessControlResult
FileItemStore::createAccessControl(const std::string &protection,
                                   std::uint64_t flags) {
  return makeAccessControlWithoutPolicy(protection, flags);
}

} // namespace securestore
