#ifndef KESTRUNECLI_SECURESTORE_FILEITEMSTORE_H
#define KESTRUNECLI_SECURESTORE_FILEITEMSTORE_H

#include "SecureStore/ItemStore.h"

#include <filesystem>

namespace securestore {

class ItemTable;

/// Items kept in one file that only its owner can read: the file is 0600
/// and its directory 0700 whatever the umask (the directory is created when
/// missing, and group and other bits are taken off it at each write). A
/// store or directory that is not the user's own, or that its group or
/// others may write, is not trusted: calls answer io.
///
/// Each change (one call, or every call of a transact) takes an exclusive
/// flock on "<file>.lock" beside the store, reads the store, writes the new
/// store to a new temporary file, fsyncs it and renames it over the store.
/// So processes that change it at once take turns and lose nothing, and a
/// crash leaves the old store or the new one. Reads take no lock: a rename
/// is atomic.
///
/// A missing file is an empty store. A store that can't be read or parsed
/// is never overwritten: calls answer invalidKeychain (not a store, or a
/// directory in its place), wrongSecVersion (a later format) or io; writes
/// that the file system refuses answer readOnly, or diskFull.
class FileItemStore final : public ItemStore {
public:
  /// The store at \p storePath (made absolute).
  explicit FileItemStore(std::filesystem::path storePath);

  const std::filesystem::path &getStorePath() const noexcept {
    return storePath;
  }

  OSStatus copyMatching(const Dictionary &query, CopyResult *result) override;
  OSStatus addItem(const Dictionary &attributes) override;
  OSStatus updateItems(const Dictionary &query,
                       const Dictionary &attributesToUpdate) override;
  OSStatus deleteItems(const Dictionary &query) override;
  /// Gives an object for an empty policy only: a file can't make anyone
  /// authenticate.
  AccessControlResult createAccessControl(const std::string &protection,
                                          std::uint64_t flags) override;
  std::string describe() const override;
  /// Reads the store once and writes it at most once, under one lock.
  OSStatus
  transact(const std::function<OSStatus(ItemStore &)> &change) override;
  /// Reads the store once and answers every call from that reading.
  void readSnapshot(const std::function<void(ItemStore &)> &read) override;

private:
  OSStatus load(ItemTable &table) const;

  std::filesystem::path storePath;
};

} // namespace securestore

#endif
