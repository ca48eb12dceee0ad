#ifndef KESTRUNECLI_SECURESTORE_STORELOCK_H
#define KESTRUNECLI_SECURESTORE_STORELOCK_H

// Private to SecureStore: the lock by which processes of one user take turns
// in changing the account, and the statuses of the file system's refusals.

#include "SecureStore/Status.h"

#include <filesystem>

namespace securestore {

/// The status of a write that the file system refused with \p error:
/// readOnly for a refusal of access, diskFull for no room, io otherwise.
OSStatus statusOfWriteError(int error);

/// Creates the missing directories of \p directory, each 0700 whatever the
/// umask; io when something other than a directory stands in the way.
OSStatus ensureDirectory(const std::filesystem::path &directory);

/// Whether a file or folder with the owner \p owner and the mode \p mode can
/// be trusted with the account: it is the user's own, and neither its group
/// nor anyone else may write it.
bool isPrivateToUser(unsigned owner, unsigned mode);

/// An flock on a file of its own, held until the object goes away.
class StoreLock {
public:
  enum class Mode { exclusive, shared };

  StoreLock() noexcept = default;
  StoreLock(StoreLock &&other) noexcept;
  StoreLock &operator=(StoreLock &&other) noexcept;
  StoreLock(const StoreLock &) = delete;
  StoreLock &operator=(const StoreLock &) = delete;
  ~StoreLock();

  /// Waits for the lock on \p path and answers 0, or the status of why it
  /// can't be had: the file can't be made (see statusOfWriteError), or it is
  /// a link, not a regular file or not the user's (io). An exclusive lock's
  /// file is created (0600, its folders 0700) when missing; a shared lock is
  /// only taken on a file that is there (itemNotFound otherwise).
  OSStatus acquire(const std::filesystem::path &path, Mode mode);

private:
  int descriptor = -1;
};

} // namespace securestore

#endif
