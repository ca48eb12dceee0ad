#include "SecureStore/ItemStore.h"

#include "SecureStore/FileItemStore.h"
#include "SecureStore/ItemTable.h"
#include "SecureStore/SecretServiceItemStore.h"

#include <atomic>
#include <cstdlib>
#include <memory>
#include <pwd.h>
#include <unistd.h>

namespace securestore {

ItemStore::~ItemStore() = default;

namespace {

std::atomic<ItemStore *> chosenStore{nullptr};

std::filesystem::path homeDirectory() {
  if (const char *home = std::getenv("HOME"); home && *home)
    return home;
  long size = ::sysconf(_SC_GETPW_R_SIZE_MAX);
  std::string buffer(size > 0 ? static_cast<std::size_t>(size) : 16384, '\0');
  struct passwd entry {};
  struct passwd *found = nullptr;
  if (::getpwuid_r(::getuid(), &entry, buffer.data(), buffer.size(), &found) ==
          0 &&
      found && found->pw_dir && *found->pw_dir)
    return found->pw_dir;
  return std::filesystem::temp_directory_path();
}

// One copy of the account: every call goes to the store chosen for the run,
// and once it has written or deleted an item of a service there, the other
// store keeps no item of that service: the items of a service make up one
// account, and a copy left behind would be a stale one, its password among
// them. The other store is only read until it holds such items, so it is
// never created for nothing, and what goes wrong there leaves them where
// they are without failing the call.
class OneAccountItemStore final : public ItemStore {
public:
  OneAccountItemStore(std::unique_ptr<ItemStore> chosen,
                      std::unique_ptr<ItemStore> other)
      : chosen(std::move(chosen)), other(std::move(other)) {}

  OSStatus copyMatching(const Dictionary &query, CopyResult *result) override {
    return chosen->copyMatching(query, result);
  }

  OSStatus addItem(const Dictionary &attributes) override {
    OSStatus status = chosen->addItem(attributes);
    if (status == 0)
      removeOtherCopy(attributes);
    return status;
  }

  OSStatus updateItems(const Dictionary &query,
                       const Dictionary &attributesToUpdate) override {
    OSStatus status = chosen->updateItems(query, attributesToUpdate);
    if (status == 0)
      removeOtherCopy(query);
    return status;
  }

  OSStatus deleteItems(const Dictionary &query) override {
    OSStatus status = chosen->deleteItems(query);
    if (status != 0 && status != Status(Status::Case::itemNotFound).rawValue())
      return status;
    return removeOtherCopy(query) ? 0 : status;
  }

  AccessControlResult createAccessControl(const std::string &protection,
                                          std::uint64_t flags) override {
    return chosen->createAccessControl(protection, flags);
  }

  std::string describe() const override { return chosen->describe(); }

private:
  bool removeOtherCopy(const Dictionary &dictionary) {
    Dictionary service = sameServiceQuery(dictionary);
    return other->copyMatching(service, nullptr) == 0 &&
           other->deleteItems(service) == 0;
  }

  std::unique_ptr<ItemStore> chosen;
  std::unique_ptr<ItemStore> other;
};

// The one place where the process's store is chosen: the Secret Service
// when it runs, the file store otherwise. With the Secret Service, the file
// store is where a stale copy may lie.
// The store lives until the process ends and is never destroyed, so no
// D-Bus teardown runs inside exit().
ItemStore &automaticStore() {
  static ItemStore *store = [] {
    auto fileStore = std::make_unique<FileItemStore>(defaultFileStorePath());
    std::unique_ptr<ItemStore> secretService = openSecretServiceItemStore();
    if (secretService)
      return static_cast<ItemStore *>(new OneAccountItemStore(
          std::move(secretService), std::move(fileStore)));
    return static_cast<ItemStore *>(fileStore.release());
  }();
  return *store;
}

} // namespace

std::filesystem::path defaultFileStorePath() {
  std::filesystem::path dataHome;
  if (const char *xdg = std::getenv("XDG_DATA_HOME");
      xdg && *xdg && std::filesystem::path(xdg).is_absolute())
    dataHome = xdg;
  else
    dataHome = homeDirectory() / ".local" / "share";
  return dataHome / "kestrune-cli" / "keychain";
}

ItemStore &defaultItemStore() {
  if (ItemStore *store = chosenStore.load())
    return *store;
  return automaticStore();
}

void setDefaultItemStore(ItemStore *store) { chosenStore.store(store); }

} // namespace securestore
