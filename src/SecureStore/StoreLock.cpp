#include "SecureStore/StoreLock.h"

#include <cerrno>
#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>
#include <utility>

namespace securestore {

OSStatus statusOfWriteError(int error) {
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

OSStatus ensureDirectory(const std::filesystem::path &directory) {
  struct stat info {};
  if (::stat(directory.c_str(), &info) == 0)
    return S_ISDIR(info.st_mode) ? 0 : statusOf(Status::Case::io);
  if (errno != ENOENT)
    return statusOfWriteError(errno);
  if (directory.has_parent_path() && directory.parent_path() != directory)
    if (OSStatus status = ensureDirectory(directory.parent_path()))
      return status;
  if (::mkdir(directory.c_str(), 0700) != 0 && errno != EEXIST)
    return statusOfWriteError(errno);
  if (::chmod(directory.c_str(), 0700) != 0)
    return statusOfWriteError(errno);
  return 0;
}

bool isPrivateToUser(unsigned owner, unsigned mode) {
  return owner == ::geteuid() && (mode & 022) == 0;
}

StoreLock::StoreLock(StoreLock &&other) noexcept
    : descriptor(std::exchange(other.descriptor, -1)) {}

StoreLock &StoreLock::operator=(StoreLock &&other) noexcept {
  std::swap(descriptor, other.descriptor);
  return *this;
}

StoreLock::~StoreLock() {
  if (descriptor >= 0)
    ::close(descriptor);
}

OSStatus StoreLock::acquire(const std::filesystem::path &path, Mode mode) {
  bool exclusive = mode == Mode::exclusive;
  if (exclusive)
    if (OSStatus status = ensureDirectory(path.parent_path()))
      return status;
  int opened = ::open(path.c_str(),
                      exclusive ? O_RDWR | O_CREAT | O_CLOEXEC | O_NOFOLLOW
                                : O_RDONLY | O_CLOEXEC | O_NOFOLLOW,
                      0600);
  if (opened < 0 && !exclusive && errno == ENOENT)
    return statusOf(Status::Case::itemNotFound);
  if (opened < 0)
    return errno == ELOOP ? statusOf(Status::Case::io)
                          : statusOfWriteError(errno);
  StoreLock held;
  held.descriptor = opened;
  struct stat info {};
  if (::fstat(opened, &info) != 0 || !S_ISREG(info.st_mode) ||
      info.st_uid != ::geteuid())
    return statusOf(Status::Case::io);
  // A lock file guards no data, so one with other modes (another umask, or
  // others allowed to write) is made private rather than refused.
  if ((info.st_mode & 07777) != 0600)
    ::fchmod(opened, 0600);
  while (::flock(opened, exclusive ? LOCK_EX : LOCK_SH) != 0)
    if (errno != EINTR)
      return statusOf(Status::Case::io);
  *this = std::move(held);
  return 0;
}

} // namespace securestore
